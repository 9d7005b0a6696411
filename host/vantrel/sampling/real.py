"""Makes rows as real rows are: combinations as frequent, and people who agree with them."""

from __future__ import annotations

from collections.abc import Sequence
from typing import Any

import msgspec
import numpy as np
import pandas as pd
from faker import Faker

from vantrel.errors import SamplingError, raised_by_model
from vantrel.genders import AMBIGUOUS, KEYS, keys_of
from vantrel.model.models.histogram import Drawn
from vantrel.model.models.person import PersonModel
from vantrel.rows import ANY, DrawnRows, Rows, Ways, draw_rows
from vantrel.rows.drawing import Places
from vantrel.sampling.addresses import Names
from vantrel.sampling.latin import LatinNames
from vantrel.sampling.names import (
    gendered,
    give,
    has_gendered_last_names,
    names_model,
    order_of_names,
    order_of_table,
)
from vantrel.sampling.phones import Numbers, number_formats, region_of
from vantrel.sampling.places import with_names_of
from vantrel.sampling.seeding import OwnSources
from vantrel.util.locale.locale import (
    Provider,
    get_country_to_provder_map,
    locale_of,
    told_before,
    unknown_places,
)

_KEYS = list(KEYS)


class RealRows:
    """Makes rows from what a model has learnt of combinations.

    The parts of a row are drawn together; a model of names alone is then given the genders and
    places. So the module makes whole frames at once, from sources of the sample's own.

    Args:
        model: A fitted model that has learnt rows.
        conditions: What is given for any of the rows, as ``prepare_conditions`` made it.
    """

    def __init__(self, model: PersonModel, conditions: pd.DataFrame | None) -> None:
        self._model = model
        rows: Rows = model.meta.rows
        labels = model.labels
        self._given: dict[str, Places] = {}
        for part in ("gender", "country"):
            column = getattr(labels, part)
            if conditions is not None and column in conditions:
                rows, self._given[part] = _with_values(rows, part, conditions[column], model)
        self._rows = rows
        self._keys = _keys(rows.gender, model, "gender")
        self._title_keys = _keys(rows.title, model, "title")
        self._ways: Ways = model.meta.ways or Ways()
        self._places = _Places(model, rows, self._ways)
        self._accounts = Names(self._places.languages, self._places.plain)
        self._latin = LatinNames(self._places.plain) if self._ways.latin else None
        self._numbers = {
            attribute: Numbers(formats)
            for attribute, formats in number_formats(model, self._places.regions).items()
            if any(formats)
        }
        self._sources = OwnSources(names_model(model, self._places.fakers))

    def block(self, seed: np.random.SeedSequence, numbers: range) -> pd.DataFrame:
        """Makes the rows of some numbers in the whole sample, from a seed of their own."""
        names = self._sources.seeded(seed)
        rng = names._rng
        n = len(numbers)
        given = {part: own[numbers.start : numbers.stop] for part, own in self._given.items()}
        drawn = draw_rows(self._rows, n, rng, self._keys, given)
        keys = self._name_keys(drawn, rng)
        places = self._places.of(drawn.country, rng)
        give(names, *self._places.settled(keys, places, rng))
        with told_before(), raised_by_model(SamplingError, "The model cannot make such rows"):
            people = names.sample(n)
        self._finish(people, places, rng)
        return self._with_gaps(self._framed(drawn, people), drawn)

    def _name_keys(self, drawn: DrawnRows, rng: np.random.Generator) -> Places:
        """The gender of each name: that of the gender, or else of the title, or else any."""
        labels = self._model.labels
        if not (labels.gender or labels.title):
            genders = [_KEYS.index(key) for key in self._model.config.genders]
            return rng.choice(genders, size=len(drawn.gender))
        by_gender, by_title = (
            np.array([_KEYS.index(key) if key else ANY for key in keys])
            for keys in (self._keys, [*self._title_keys, ""])
        )
        keys = by_gender[drawn.gender]
        keys = np.where(keys == ANY, by_title[drawn.title], keys)
        return np.where(keys == ANY, _KEYS.index(AMBIGUOUS), keys)

    def _finish(self, people: pd.DataFrame, places: Places, rng: np.random.Generator) -> None:
        """Rewrites what must suit the place of each row."""
        if self._latin:
            for name in ("firstname", "lastname"):
                people[name] = self._latin.written(people[name], places)
        people["fullname"] = self._places.full_names(
            people["firstname"], people["lastname"], places
        )
        for attribute, domain in (("username", None), ("email", self._ways.email_domain)):
            if attribute in self._model.params:
                people[attribute] = self._accounts.accounts(people[attribute], places, domain)
        for attribute, numbers in self._numbers.items():
            people[attribute] = numbers.made(places, rng, people[attribute])

    def _framed(self, drawn: DrawnRows, people: pd.DataFrame) -> pd.DataFrame:
        columns = {}
        for attribute, column in self._model.params.items():
            if attribute in ("gender", "title", "country"):
                values = getattr(self._rows, attribute)
                columns[column] = Drawn(values, getattr(drawn, attribute)).series()
            else:
                columns[column] = people[attribute]
        frame = pd.DataFrame(columns)
        return frame[self._model.meta.ordered_columns(list(frame.columns))]

    def _with_gaps(self, people: pd.DataFrame, drawn: DrawnRows) -> pd.DataFrame:
        """Takes out what is missing; what the table did not have, where all the rest is missing."""
        for column, missing in drawn.missing.items():
            people[column] = people[column].mask(missing)
        learnt = self._model.meta.columns or []
        if made := [column for column in people.columns.tolist() if column not in learnt]:
            blank = people[learnt].isna().all(axis="columns")
            if learnt and blank.any():
                people[made] = people[made].mask(blank)
        return people


class _Places:
    """Where people of each country of a model get their names from.

    People of no known country get those of the others, as often as these are.

    Attributes:
        fakers: What makes the names, of each gender where Faker tells last names by it.
        plain: What makes the names of each place by its number, of whatever gender.
        languages: The language of each place.
        regions: The two-letter code of each place's country.
    """

    def __init__(self, model: PersonModel, rows: Rows, ways: Ways) -> None:
        known = list(model.locales or ())
        weights = [1.0] * len(known)
        self._of_country = np.full(len(rows.country), ANY)
        if model.labels.country:
            unknown = {None, *unknown_places(each for each in rows.country if each is not None)}
            known = [each for each in rows.country if each is not None and each not in unknown]
            for place, country in enumerate(known):
                self._of_country[rows.country.index(country)] = place
            weights = [_rows_of(rows, rows.country.index(country)) for country in known]
        if not sum(weights):  # of given countries no row was seen
            known, weights = known or [model.default_locale], [1.0] * (len(known) or 1)
        self._weights = np.array(weights) / sum(weights)
        named = with_names_of(known, ways.locales)
        with told_before():
            made = get_country_to_provder_map(named, Provider.PERSON)
        plain = {place: made[name] for place, name in zip(known, named, strict=True)}
        self.plain = list(plain.values())
        self.languages = [locale_of(name)[0].partition("_")[0] for name in named]
        self.regions = [region_of(place) for place in known]
        self._orders = [
            order_of_table(ways.full_names)
            if ways.full_names
            else order_of_names(faker, in_latin=ways.latin)
            for faker in self.plain
        ]
        self._has_capitals = "LAST" in (ways.full_names or "")
        self.fakers: dict[str, Faker] = {}
        # By place and key the number of what makes the names.
        self._variants = np.zeros((len(known), len(_KEYS)), dtype=np.int64)
        self._is_gendered = np.array([has_gendered_last_names(plain[each]) for each in known])
        for place, country in enumerate(known):
            twins = (
                [gendered(plain[country], key) for key in "FM"] if self._is_gendered[place] else []
            )
            self._variants[place] = len(self.fakers)
            self.fakers[country] = plain[country]
            for key, twin in zip("FM", twins, strict=False):
                self._variants[place, _KEYS.index(key)] = len(self.fakers)
                self.fakers[f"{country}\n{key}"] = twin

    def of(self, countries: Places, rng: np.random.Generator) -> Places:
        """Gives each row's place, and draws one where its country is not known."""
        places = self._of_country[countries]
        unknown = places == ANY
        places[unknown] = rng.choice(len(self._weights), size=int(unknown.sum()), p=self._weights)
        return places

    def full_names(self, first: pd.Series, last: pd.Series, places: Places) -> pd.Series:
        """Joins names in the order and with the separator of each row's place."""
        is_last_first = np.array([each.is_last_first for each in self._orders])[places]
        separators = pd.Series([each.separator for each in self._orders]).array.take(places)
        last = _in_capitals(last) if self._has_capitals else last
        start, end = first, last
        if is_last_first.any():
            start, end = last.where(is_last_first, first), first.where(is_last_first, last)
        between = separators if len(set(self._orders)) > 1 else self._orders[0].separator
        return start + between + end

    def settled(
        self, keys: Places, places: Places, rng: np.random.Generator
    ) -> tuple[Drawn, Drawn]:
        """Gives keys and places as a model of names takes them.

        Where last names tell a woman from a man, so does the first name of whoever is of any other
        gender, or else the two might not agree.
        """
        others = self._is_gendered[places] & (keys > 1)
        keys = keys.copy()
        keys[others] = rng.integers(0, 2, size=int(others.sum()))
        return Drawn(_KEYS, keys), Drawn(list(self.fakers), self._variants[places, keys])


def _in_capitals(names: pd.Series) -> pd.Series:
    """Writes names in capitals as Python does; pyarrow would leave "ß" one letter."""
    codes, distinct = names.factorize()
    capitals = np.array([str(name).upper() for name in distinct], dtype=object)
    return pd.Series(capitals[codes], index=names.index, dtype=names.dtype)


def _rows_of(rows: Rows, place: int) -> float:
    """How many rows have a country."""
    known = sum(count for *_, at, _, count in rows.combinations if at == place)
    apart = sum(count for *_, at, _, count in rows.combinations if at == ANY)
    return known + apart * rows.any_country[place] / sum(rows.any_country)


def _keys(values: Sequence[Any], model: PersonModel, attribute: str) -> list[str]:
    keys = keys_of(values, model.config, attribute)
    return [keys.get(value, "") for value in values]


def _with_values(
    rows: Rows, part: str, given: pd.Series, model: PersonModel
) -> tuple[Rows, Places]:
    """Adds what is given to the values of a part, and tells the place of each.

    A gender that is only written in another way than in the table is written as there.
    """
    codes, distinct = given.factorize(use_na_sentinel=True)
    values = [str(value) for value in distinct] + [None]  # the last has the code -1
    learnt = getattr(rows, part)
    if part == "gender":
        usual = _usual_spellings(rows, model)
        keys = keys_of(values, model.config, "gender")
        values = [
            value if value in learnt else usual.get(keys.get(value, ""), value) for value in values
        ]
    new = list(dict.fromkeys(value for value in values if value not in learnt))
    counts = getattr(rows, f"any_{part}") + [0] * len(new)
    more = msgspec.structs.replace(rows, **{part: learnt + new, f"any_{part}": counts})
    places = {value: place for place, value in enumerate(learnt + new)}
    return more, np.array([places[value] for value in values])[codes]


def _usual_spellings(rows: Rows, model: PersonModel) -> dict[str, Any]:
    """The most frequent way to write each gender."""
    counts = [0] * len(rows.gender)
    for gender, *_, count in rows.combinations:
        if gender != ANY:
            counts[gender] += count
    keys = _keys(rows.gender, model, "gender")
    ranked = sorted(range(len(counts)), key=lambda place: counts[place])
    return {keys[place]: rows.gender[place] for place in ranked if keys[place]}

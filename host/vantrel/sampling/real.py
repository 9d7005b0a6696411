"""Makes rows as real rows are: combinations as frequent, and people who agree with them."""

from __future__ import annotations

from collections import Counter
from collections.abc import Iterable, Mapping, Sequence
from typing import Any

import msgspec
import numpy as np
import pandas as pd
from faker import Faker

from vantrel.attributes import LEARNT
from vantrel.errors import SamplingError, raised_by_model
from vantrel.genders import AMBIGUOUS, KEYS, keys_of
from vantrel.model.models.histogram import Drawn
from vantrel.model.models.person import PersonModel
from vantrel.rows import (
    ANY,
    PARTS,
    RESERVED,
    Combinations,
    DrawnRows,
    Rows,
    Ways,
    shares_of_countries,
)
from vantrel.rows.drawing import Places
from vantrel.sampling.addresses import Accounts, name_nobody, told_apart
from vantrel.sampling.latin import LatinNames
from vantrel.sampling.names import (
    Order,
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
from vantrel.sampling.texts import Column, replaced
from vantrel.util.locale.locale import (
    Provider,
    get_country_to_provder_map,
    locale_of,
    recognise,
    told_before,
    unknown_places,
)

_KEYS = list(KEYS)


class RealRows:
    """Makes rows from what a model has learnt of combinations.

    The parts of a row are drawn together; a model of names alone is then given the genders and
    places. So the module makes whole frames at once, from sources of the sample's own.

    Args:
        model: A fitted model that has learnt rows; is not held, so that it may be freed before.
        conditions: What is given for any of the rows, as ``prepare_conditions`` made it.
    """

    def __init__(self, model: PersonModel, conditions: pd.DataFrame | None) -> None:
        rows: Rows = model.meta.rows
        labels = model.labels
        self._given: dict[str, Places] = {}
        for part in ("gender", "country"):
            column = getattr(labels, part)
            if conditions is not None and column in conditions:
                rows, self._given[part] = _with_values(rows, part, conditions[column], model)
        keys, title_keys = (_keys(getattr(rows, part), model, part) for part in ("gender", "title"))
        self._params, self._learnt = model.params, model.meta.columns or []
        made_up = [
            column
            for attribute, column in self._params.items()
            if attribute not in LEARNT and column in self._learnt
        ]
        self._combinations = Combinations(rows, keys, title_keys, made_up)
        # The last one is of rows without a title.
        self._by_gender, self._by_title = _numbers_of(keys), _numbers_of([*title_keys, ""])
        self._any_keys: list[int] = []
        if not (labels.gender or labels.title):
            self._any_keys = [_KEYS.index(key) for key in model.config.genders]
        ways: Ways = model.meta.ways or Ways()
        self._places = _Places(model, rows, ways)
        self._accounts = Accounts(self._places.languages, self._places.plain, ways.email_domain)
        self._latin = LatinNames(self._places.languages, self._places.plain) if ways.latin else None
        self._numbers = {
            attribute: Numbers(formats)
            for attribute, formats in number_formats(model, self._places.regions).items()
            if any(formats)
        }
        others = [each for each, numbers in self._numbers.items() if numbers.is_for_all]
        made = [each for each in model.params if each not in (*LEARNT, *others)]
        self._sources = OwnSources(names_model(model, self._places.fakers, made))
        self._values = {part: pd.Series(getattr(rows, part)).array for part in LEARNT}
        self._columns = model.meta.ordered_columns(list(model.params.values()))

    def block(self, seed: np.random.SeedSequence, numbers: range) -> pd.DataFrame:
        """Makes the rows of some numbers in the whole sample, from a seed of their own."""
        if not numbers:  # what is made of nothing has not the types of what is made of something
            return self._people(seed, 1, {}).iloc[:0]
        given = {part: own[numbers.start : numbers.stop] for part, own in self._given.items()}
        return self._people(seed, len(numbers), given)

    def _people(
        self, seed: np.random.SeedSequence, n: int, given: Mapping[str, Places]
    ) -> pd.DataFrame:
        names = self._sources.seeded(seed)
        rng = names._rng
        drawn = self._combinations.draw(n, rng, given)
        places = self._places.of(drawn.country, rng)
        give(names, *self._places.settled(self._name_keys(drawn, rng), places, rng))
        with told_before(), raised_by_model(SamplingError, "The model cannot make such rows"):
            people = names.sample(n)
        made = {str(attribute): column.array for attribute, column in people.items()}
        self._suit(made, places, rng)
        columns = _of_one_type(self._by_column(made, drawn))
        return self._framed(self._with_gaps(columns, drawn))

    def _name_keys(self, drawn: DrawnRows, rng: np.random.Generator) -> Places:
        """The gender of each name: that of the gender, or else of the title, or else any."""
        if self._any_keys:
            return rng.choice(self._any_keys, size=len(drawn.gender))
        keys = self._by_gender[drawn.gender]
        keys = np.where(keys == ANY, self._by_title[drawn.title], keys)
        return np.where(keys == ANY, _KEYS.index(AMBIGUOUS), keys)

    def _suit(self, made: dict[str, Column], places: Places, rng: np.random.Generator) -> None:
        """Rewrites or makes what must suit the place of each row."""
        if self._latin:
            for name in ("firstname", "lastname"):
                made[name] = self._latin.written(made[name], places)
        if "fullname" in made:
            made["fullname"] = self._places.full_names(made, places)
        if "username" in made:
            written = self._accounts.usernames(made["username"], places)
            if written is not made["username"]:  # the model's are told apart already
                made["username"] = told_apart(written)
        if "email" in made:
            made["email"] = self._accounts.addresses(made["email"], places)
        for attribute, numbers in self._numbers.items():
            texts, dtype = made.get(attribute), made["firstname"].dtype
            made[attribute] = numbers.made(places, rng, texts, dtype)

    def _by_column(self, made: dict[str, Column], drawn: DrawnRows) -> dict[str, Column]:
        # A title that there is none of is missing.
        parts = {
            part: values.take(getattr(drawn, part), allow_fill=True)
            for part, values in self._values.items()
            if part in self._params
        }
        return {column: (made | parts)[attribute] for attribute, column in self._params.items()}

    def _with_gaps(self, columns: dict[str, Column], drawn: DrawnRows) -> dict[str, Column]:
        """Takes out what is missing; what the table did not have, where all the rest is missing."""
        gaps = dict(drawn.missing)
        if self._learnt:
            gaps |= {column: drawn.blank for column in columns if column not in self._learnt}
        return {
            column: pd.Series(texts).mask(gaps[column]).array
            if column in gaps and gaps[column].any()
            else texts
            for column, texts in columns.items()
        }

    def _framed(self, columns: dict[str, Column]) -> pd.DataFrame:
        return pd.DataFrame({column: columns[column] for column in self._columns}, copy=False)


def _of_one_type(columns: Mapping[str, Column]) -> dict[str, Column]:
    """Gives all texts the type that pandas gives texts; the module makes them of several."""
    dtype = pd.Series([""]).dtype
    return {
        column: texts if texts.dtype == dtype else texts.astype(dtype)
        for column, texts in columns.items()
    }


def _numbers_of(keys: Sequence[str]) -> Places:
    """The numbers of keys, :data:`ANY` for an empty one."""
    return np.array([_KEYS.index(key) if key else ANY for key in keys])


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
            shares = shares_of_countries(rows)
            unknown = set(unknown_places(shares))
            known = [country for country in shares if country not in unknown]
            places = {country: place for place, country in enumerate(known)}
            self._of_country = np.array([places.get(each or "", ANY) for each in rows.country])
            weights = [shares[country] for country in known]
        if not sum(weights):  # of given countries no row was seen
            known, weights = known or [model.default_locale], [1.0] * (len(known) or 1)
        self._weights = np.array(weights) / sum(weights)
        named = with_names_of(known, ways.locales)
        with told_before():
            made = get_country_to_provder_map(named, Provider.PERSON)
        plain = {place: made[name] for place, name in zip(known, named, strict=True)}
        self.plain = list(plain.values())
        if ways.email_domain == RESERVED:
            for faker in self.plain:
                name_nobody(faker)
        self.languages = [locale_of(name)[0].partition("_")[0] for name in named]
        self.regions = [region_of(place) for place in known]
        orders = [
            order_of_table(ways.full_names)
            if ways.full_names
            else order_of_names(faker, in_latin=ways.latin)
            for faker in self.plain
        ]
        self._orders = list(dict.fromkeys(orders))
        self._order_of = np.array([self._orders.index(order) for order in orders])
        self._has_capitals = "LAST" in (ways.full_names or "")
        # The module joins names in the usual order, as it makes them.
        self._joined = None if ways.latin or self._has_capitals else Order()
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

    def full_names(self, names: Mapping[str, Column], places: Places) -> Column:
        """Joins names in the order and with the separator of each row's place.

        Args:
            names: First and last names, and full names as the module joins them.
            places: The place of each row.
        """
        full_names, last = names["fullname"], names["lastname"]
        last = _in_capitals(last) if self._has_capitals else last
        order_of = self._order_of[places]
        for number, order in enumerate(self._orders):
            members = np.flatnonzero(order_of == number)
            if order == self._joined or not len(members):
                continue
            parts = (pd.Series(each.take(members)) for each in (names["firstname"], last))
            start, end = reversed(list(parts)) if order.is_last_first else parts
            own = (start + order.separator + end).astype(full_names.dtype)
            full_names = replaced(full_names, members, own.array)
        return full_names

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


def _in_capitals(names: Column) -> Column:
    """Writes names in capitals as Python does; pyarrow would leave "ß" one letter."""
    codes, distinct = names.factorize()
    capitals = [name.upper() for name in distinct.tolist()]
    return pd.array(capitals, dtype=names.dtype).take(codes)


def _keys(values: Sequence[Any], model: PersonModel, attribute: str) -> list[str]:
    keys = keys_of(values, model.config, attribute)
    return [keys.get(value, "") for value in values]


def _with_values(
    rows: Rows, part: str, given: pd.Series, model: PersonModel
) -> tuple[Rows, Places]:
    """Adds what is given to the values of a part, and tells the place of each.

    A gender or country that is only written in another way than in the table is written as there.
    """
    codes, distinct = given.factorize(use_na_sentinel=True)
    values = [str(value) for value in distinct] + [None]  # the last has the code -1
    learnt = getattr(rows, part)
    usual = _usual_spellings(rows, part, model)
    meanings = _meanings(part, values, model)
    values = [
        value if value in learnt else usual.get(meanings.get(value), value) for value in values
    ]
    new = list(dict.fromkeys(value for value in values if value not in learnt))
    counts = getattr(rows, f"any_{part}") + [0] * len(new)
    more = msgspec.structs.replace(rows, **{part: learnt + new, f"any_{part}": counts})
    places = {value: place for place, value in enumerate(learnt + new)}
    return more, np.array([places[value] for value in values])[codes]


def _usual_spellings(rows: Rows, part: str, model: PersonModel) -> dict[Any, Any]:
    """The most frequent way to write each gender or country."""
    learnt = getattr(rows, part)
    counts: Counter[Any] = Counter()
    for *places, count in rows.combinations:
        if (place := places[PARTS.index(part)]) != ANY:
            counts[learnt[place]] += count
    meanings = _meanings(part, learnt, model)
    ranked = sorted(meanings, key=lambda value: counts[value])
    return {meanings[value]: value for value in ranked}


def _meanings(part: str, values: Iterable[Any], model: PersonModel) -> dict[Any, Any]:
    """What values stand for, however they are written; those that are not known are left out."""
    if part == "gender":
        return keys_of(values, model.config, part)
    found = {value: recognise(value) for value in values if value is not None}
    return {value: place for value, place in found.items() if place}

"""Makes rows as real rows are: combinations as frequent, and people who agree with them."""

from __future__ import annotations

from collections.abc import Mapping, Sequence
from typing import Any

import msgspec
import numpy as np
import pandas as pd
from faker import Faker
from pandas.api.extensions import ExtensionArray

from vantrel.attributes import LEARNT
from vantrel.errors import SamplingError, raised_by_model
from vantrel.genders import AMBIGUOUS, KEYS, keys_of
from vantrel.model.models.histogram import Drawn
from vantrel.model.models.person import PersonModel
from vantrel.rows import ANY, RESERVED, Combinations, DrawnRows, Rows, Ways
from vantrel.rows.drawing import Places
from vantrel.sampling.addresses import Accounts, name_nobody
from vantrel.sampling.names import (
    Order,
    gendered,
    give,
    has_gendered_last_names,
    names_model,
    order_of_names,
)
from vantrel.sampling.phones import KIND, Numbers, has_usual_format
from vantrel.sampling.seeding import OwnSources
from vantrel.sampling.texts import replaced
from vantrel.util.locale.locale import (
    Provider,
    get_country_to_provder_map,
    locale_of,
    recognise_known,
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
        self._rows = rows
        keys, title_keys = (_keys(getattr(rows, part), model, part) for part in ("gender", "title"))
        self._combinations = Combinations(rows, keys)
        # The last one is of rows without a title.
        self._by_gender, self._by_title = _numbers_of(keys), _numbers_of([*title_keys, ""])
        self._any_keys: list[int] = []
        if not (labels.gender or labels.title):
            self._any_keys = [_KEYS.index(key) for key in model.config.genders]
        ways: Ways = model.meta.ways or Ways()
        self._places = _Places(model, rows, ways)
        self._accounts = Accounts(self._places.languages, self._places.plain, ways.email_domain)
        self._numbers = _numbers(model, self._places.regions, ways)
        made = [each for each in model.params if each not in (*LEARNT, *self._numbers)]
        self._sources = OwnSources(names_model(model, self._places.fakers, made))
        self._params, self._learnt = model.params, model.meta.columns or []
        self._columns = model.meta.ordered_columns(list(model.params.values()))

    def block(self, seed: np.random.SeedSequence, numbers: range) -> pd.DataFrame:
        """Makes the rows of some numbers in the whole sample, from a seed of their own."""
        names = self._sources.seeded(seed)
        rng = names._rng
        n = len(numbers)
        given = {part: own[numbers.start : numbers.stop] for part, own in self._given.items()}
        drawn = self._combinations.draw(n, rng, given)
        places = self._places.of(drawn.country, rng)
        give(names, *self._places.settled(self._name_keys(drawn, rng), places, rng))
        with told_before(), raised_by_model(SamplingError, "The model cannot make such rows"):
            people = names.sample(n)
        made = {attribute: column.array for attribute, column in people.items()}
        self._suit(made, places, rng)
        return self._framed(self._with_gaps(self._by_column(made, drawn), drawn))

    def _name_keys(self, drawn: DrawnRows, rng: np.random.Generator) -> Places:
        """The gender of each name: that of the gender, or else of the title, or else any."""
        if self._any_keys:
            return rng.choice(self._any_keys, size=len(drawn.gender))
        keys = self._by_gender[drawn.gender]
        keys = np.where(keys == ANY, self._by_title[drawn.title], keys)
        return np.where(keys == ANY, _KEYS.index(AMBIGUOUS), keys)

    def _suit(
        self, made: dict[str, ExtensionArray], places: Places, rng: np.random.Generator
    ) -> None:
        """Rewrites or makes what must suit the place of each row."""
        if "fullname" in made:
            made["fullname"] = self._places.in_order(made, places)
        if "username" in made:
            made["username"] = self._accounts.usernames(made["username"], places)
        if "email" in made:
            made["email"] = self._accounts.addresses(made["email"], places)
        for attribute, numbers in self._numbers.items():
            made[attribute] = numbers.made(places, rng, made["firstname"].dtype)

    def _by_column(
        self, made: dict[str, ExtensionArray], drawn: DrawnRows
    ) -> dict[str, ExtensionArray]:
        return {
            column: Drawn(getattr(self._rows, attribute), getattr(drawn, attribute)).series().array
            if attribute in LEARNT
            else made[attribute]
            for attribute, column in self._params.items()
        }

    def _with_gaps(
        self, columns: dict[str, ExtensionArray], drawn: DrawnRows
    ) -> dict[str, ExtensionArray]:
        """Takes out what is missing; what the table did not have, where all the rest is missing."""
        gaps = dict(drawn.missing)
        if self._learnt:
            blank = self._blank(drawn)
            gaps |= {column: blank for column in columns if column not in self._learnt}
        return {
            column: pd.Series(texts).mask(gaps[column]).array
            if column in gaps and gaps[column].any()
            else texts
            for column, texts in columns.items()
        }

    def _blank(self, drawn: DrawnRows) -> np.ndarray[Any, np.dtype[np.bool_]]:
        """Tells the rows in which all columns of the table are missing."""
        blank = np.ones(len(drawn.gender), dtype=bool)
        for attribute, column in self._params.items():
            if column not in self._learnt:
                continue
            if attribute in LEARNT:  # the last one is of rows without a title
                is_missing = [value is None for value in (*getattr(self._rows, attribute), None)]
                blank &= np.array(is_missing)[getattr(drawn, attribute)]
            else:
                blank &= drawn.missing.get(column, False)
        return blank

    def _framed(self, columns: dict[str, ExtensionArray]) -> pd.DataFrame:
        return pd.DataFrame({column: columns[column] for column in self._columns}, copy=False)


def _numbers(model: PersonModel, regions: Sequence[str], ways: Ways) -> dict[str, Numbers]:
    """What makes numbers of the people's countries, where nobody has set a format."""
    return {
        attribute: Numbers(
            regions,
            kind,
            getattr(model.config, f"{attribute}_format"),
            is_valid=ways.phone_numbers == "valid",
        )
        for attribute, kind in KIND.items()
        if attribute in model.params and has_usual_format(model, attribute)
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
            unknown = {None, *unknown_places(each for each in rows.country if each is not None)}
            known = [each for each in rows.country if each is not None and each not in unknown]
            for place, country in enumerate(known):
                self._of_country[rows.country.index(country)] = place
            weights = [_rows_of(rows, rows.country.index(country)) for country in known]
        if not sum(weights):  # of given countries no row was seen
            known, weights = known or [model.default_locale], [1.0] * (len(known) or 1)
        self._weights = np.array(weights) / sum(weights)
        own = {recognise_known(place): locale for place, locale in ways.locales.items()}
        named = [own.get(recognise_known(place), place) for place in known]
        with told_before():
            made = get_country_to_provder_map(named, Provider.PERSON)
        plain = {place: made[name] for place, name in zip(known, named, strict=True)}
        self.plain = list(plain.values())
        if ways.email_domain == RESERVED:
            for faker in self.plain:
                name_nobody(faker)
        self.languages = [locale_of(name)[0].partition("_")[0] for name in named]
        self.regions = [_region(place) for place in known]
        orders = [order_of_names(faker) for faker in self.plain]
        self._orders = list(dict.fromkeys([Order(), *orders]))
        self._order_of = np.array([self._orders.index(order) for order in orders])
        self.fakers: dict[str, Faker] = {}
        # By place and key the number of what makes the names.
        self._variants = np.zeros((len(known), len(_KEYS)), dtype=np.int64)
        self._is_gendered = np.array([has_gendered_last_names(plain[each]) for each in known])
        for place, country in enumerate(known):
            ways = (
                [gendered(plain[country], key) for key in "FM"] if self._is_gendered[place] else []
            )
            self._variants[place] = len(self.fakers)
            self.fakers[country] = plain[country]
            for key, way in zip("FM", ways, strict=False):
                self._variants[place, _KEYS.index(key)] = len(self.fakers)
                self.fakers[f"{country}\n{key}"] = way

    def of(self, countries: Places, rng: np.random.Generator) -> Places:
        """Gives each row's place, and draws one where its country is not known."""
        places = self._of_country[countries]
        unknown = places == ANY
        places[unknown] = rng.choice(len(self._weights), size=int(unknown.sum()), p=self._weights)
        return places

    def in_order(self, names: Mapping[str, ExtensionArray], places: Places) -> ExtensionArray:
        """Gives full names, joined as in each row's place.

        Args:
            names: First and last names, and full names as the module joins them.
            places: The place of each row.
        """
        full_names = names["fullname"]
        order_of = self._order_of[places]
        for number, order in enumerate(self._orders[1:], start=1):
            members = np.flatnonzero(order_of == number)
            if not len(members):
                continue
            parts = [names[part].take(members) for part in ("firstname", "lastname")]
            start, end = reversed(parts) if order.is_last_first else parts
            joined = pd.Series(start) + order.separator + pd.Series(end)
            full_names = replaced(full_names, members, joined.astype(full_names.dtype).array)
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


def _region(place: str) -> str:
    found = recognise_known(place)
    return found.country or found.locale.partition("_")[2]


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

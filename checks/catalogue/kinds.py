"""Calls with columns, tables and Faker instances of each kind that the module tells apart."""

from __future__ import annotations

import random
from collections.abc import Callable
from functools import cache
from typing import Any

import numpy as np
import pandas as pd

from support.people import people
from support.whole_columns import new_faker
from vantrel.config import PersonModelConfig
from vantrel.metadata.value import Person
from vantrel.model.models import person
from vantrel.model.models.person import PersonModel

from .call import Function, Prepared, bad, good, replace
from .generating import method, replacing
from .numbers import COLLECTIONS, PATTERNS, TITLES
from .parts import (
    FEW,
    LENGTHS,
    MANY,
    NAME_LABELS,
    calling,
    cycle,
    drawing,
    fakers,
    first_names,
    genders,
    last_names,
    learnt,
)

# More rows than are made without letting signals in.
LONG = 70_000

faker = cache(new_faker)


# --- columns


def _of_objects(prepare: Prepared) -> Prepared:
    """The call where pandas keeps texts as Python's objects, as it does without pyarrow."""

    def prepared() -> Function:
        call = prepare()

        def among_objects() -> object:
            with pd.option_context("mode.string_storage", "python"):
                return call()

        return among_objects

    return prepared


def _with_gaps(rows: int) -> pd.Series:
    return cycle(["Ada", float("nan"), pd.NA, None, "Émile"], rows)


def _same_name(rows: int) -> Prepared:
    return method("generate_usernames", cycle(["Ada"], rows), cycle(["B"], rows))


def _randint_of_others() -> Callable[[int, int], int]:
    """A function that draws as the one of `random` does, though it is another one."""
    usual = random.randint
    return lambda least, most: usual(least, most)


USERNAMES = [
    good(
        "PersonModel.generate_usernames that clash, by single calls",
        replacing(random, "randint", _randint_of_others(), _same_name(12)),
        10,
    ),
    good("PersonModel.generate_usernames of one name, many times", _same_name(248), 10),
    bad(
        "PersonModel.generate_usernames: a number among them",
        TypeError,
        method("generate_usernames", cycle(["Ada", 3], MANY), last_names(MANY)),
    ),
]

OBJECTS = [
    good(
        f"PersonModel.{name} of objects",
        _of_objects(method(name, *columns)),
        10,
    )
    for name, columns in {
        "generate_usernames": (first_names(MANY), last_names(MANY)),
        "generate_last_names": (_with_gaps(MANY), cycle(["en_GB", "de_DE"], MANY)),
        "generate_first_names": (genders(MANY), cycle(["en_GB", "de_DE"], MANY)),
        "generate_emails": (first_names(MANY), last_names(MANY), cycle(["en_GB"], MANY)),
        "generate_passwords": (_with_gaps(MANY),),
        "generate_phone_numbers": (_with_gaps(MANY).isna(),),
        "generate_values_from_collections": (genders(MANY), COLLECTIONS),
    }.items()
]

COLUMNS = [
    good(
        "PersonModel.map_to_gender_keys by single calls",
        method("map_to_gender_keys", cycle(TITLES, FEW).astype("category"), PATTERNS),
        5,
    ),
    good(
        "PersonModel.map_to_gender_keys of half a character",
        method("map_to_gender_keys", cycle(["Mr", "\ud800"], MANY), PATTERNS),
        5,
    ),
    good(
        "PersonModel.generate_values_from_collections of a long column",
        method("generate_values_from_collections", genders(LONG), COLLECTIONS),
        10,
    ),
    good(
        "PersonModel.generate_phone_numbers of a long column",
        method("generate_phone_numbers", pd.Series(np.zeros(LONG, bool))),
        10,
    ),
]


# --- Faker instances


def _model_of(*locales: str, **settings: Any) -> Callable[[], PersonModel]:
    """A model whose countries are named like the locales of their Faker instances."""
    return lambda: drawing({locale: faker(locale, **settings) for locale in locales})


def _names_of(model: Callable[[], PersonModel], *countries: str) -> dict[str, Prepared]:
    places = cycle(list(countries), MANY)
    return {
        "generate_first_names": method("generate_first_names", genders(MANY), places, model=model),
        "generate_last_names": method(
            "generate_last_names", first_names(MANY), places, model=model
        ),
        "generate_emails": method(
            "generate_emails", first_names(MANY), last_names(MANY), places, model=model
        ),
    }


def _with_odd_pair(pair: tuple[Any, ...], proper: int) -> Callable[[], PersonModel]:
    """A model one of whose Faker instances has so many proper names, and one that is none."""

    def model() -> PersonModel:
        japanese = faker("ja_JP").provider("faker.providers.person")
        pairs = (*tuple(japanese.last_name_pairs)[:proper], pair)
        replace(japanese, "last_name_pairs", pairs)
        return _model_of("ja_JP", "en_GB")()

    return model


# What the Faker instances of these locales make in a way of their own.
WAYS = {
    "names by calls of Faker": ("ja_JP", "en_GB"),
    "domains of formats": ("zh_CN",),
    "companies of acronyms": ("es_ES",),
    "names for all genders": ("lt_LT",),
    "domains of other letters": ("uk_UA",),
    "domains of Greek letters": ("el_GR",),
    "domains of two words": ("es_CL",),
    "domains of last names": ("zh_TW",),
}

FAKERS = [
    *[
        good(f"PersonModel.{name}, {way}", prepare, 10)
        for way, locales in WAYS.items()
        for name, prepare in _names_of(_model_of(*locales), *locales).items()
    ],
    *[
        good(f"PersonModel.{name}, no weights", prepare, 10)
        for name, prepare in _names_of(_model_of("en_GB", use_weighting=False), "en_GB").items()
    ],
    good(
        "PersonModel.generate_last_names, no text from Faker",
        method(
            "generate_last_names",
            first_names(MANY),
            cycle(["ja_JP", "en_GB"], MANY),
            model=_with_odd_pair((5, "a", "b"), 3),
        ),
        10,
    ),
    bad(
        "PersonModel.generate_last_names: no pair from Faker",
        IndexError,
        method(
            "generate_last_names",
            first_names(MANY),
            cycle(["ja_JP", "en_GB"], MANY),
            model=_with_odd_pair((), 0),
        ),
        10,
    ),
]


# --- rows


class Nowhere(PersonModel):
    """Its rows all have the default locale."""

    locales: Any = None


def _nowhere() -> PersonModel:
    british = fakers()["en_GB"]
    replace(person, "get_country_to_provder_map", lambda names, _: dict.fromkeys(names, british))
    return Nowhere(Person("person", NAME_LABELS)).fit(people())


def _with_title_like_a_key() -> PersonModel:
    """A title reads like the key of titles that tell no gender, in whose place one is drawn."""
    config = PersonModelConfig(title_female_regex="^(mrs|a)$")
    return learnt(table=people().assign(title=["A", "Mrs", "Mr"] * 4), config=config)


def _without_country_model() -> PersonModel:
    model = learnt()
    vars(model)["hidden_model_country"] = None
    return model


def _rows_nowhere(rows: int) -> Prepared:
    return lambda: calling(_nowhere().sample, rows)


ROWS = [
    *[
        good(f"PersonModel.sample of the default locale {how}", _rows_nowhere(rows), 10)
        for how, rows in LENGTHS.items()
    ],
    bad(
        "PersonModel.sample: no country model",
        ValueError,
        lambda: calling(_without_country_model().sample, FEW),
        10,
    ),
    good(
        "PersonModel._sample_conditional with a title like a key",
        lambda: calling(
            _with_title_like_a_key()._sample_conditional,
            MANY,
            genders(MANY),
            cycle(["GB", "US"], MANY),
        ),
        10,
    ),
    good(
        "PersonModel.sample of objects",
        _of_objects(lambda: calling(learnt().sample, MANY)),
        10,
    ),
]

CALLS = [*USERNAMES, *OBJECTS, *COLUMNS, *FAKERS, *ROWS]

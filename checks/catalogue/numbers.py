"""Calls of the generators of phone numbers and category values, and of the gender keys."""

from __future__ import annotations

import random
import re
from functools import partial
from typing import Any

import pandas as pd

from vantrel.model.models import person
from vantrel.model.models.person import PersonModel

from .call import Prepared, bad, fail_with, good
from .generating import both, breaking_off, method, replacing
from .parts import FEW, MANY, OddCollections, cycle, first_names_and_gaps, genders

PATTERNS = {"M": "^m", "F": "^f", "NB": "^nb"}
COLLECTIONS = {"F": ["Mrs", "Ms"], "M": ["Mr"], "A": ["Dr"]}
ODD_COLLECTION: Any = {"F": 3}
TITLES = ["Mrs", "Mr", "Mx", "Dr", "?"]


def _flags(rows: int) -> pd.Series:
    return first_names_and_gaps(rows).isna()


NUMBERS = [
    *both("generate_phone_numbers", 5, lambda rows: (_flags(rows),)),
    good(
        "PersonModel.generate_phone_numbers of a format",
        method("generate_phone_numbers", _flags(FEW), "+44 (x) é"),
        5,
    ),
    bad(
        "PersonModel.generate_phone_numbers: no column",
        TypeError,
        method("generate_phone_numbers", 3),
    ),
    bad(
        "PersonModel.generate_phone_numbers: odd flag",
        TypeError,
        method("generate_phone_numbers", [pd.NA]),
    ),
    bad(
        "PersonModel.generate_phone_numbers: random fails",
        LookupError,
        replacing(
            random,
            "randint",
            fail_with(LookupError),
            method("generate_phone_numbers", _flags(MANY)),
        ),
    ),
    bad(
        "PersonModel.generate_phone_numbers: interrupted",
        KeyboardInterrupt,
        method("generate_phone_numbers", breaking_off(_flags(FEW))),
    ),
]


def _values(conditions: Any, collections: dict[Any, Any]) -> Prepared:
    return method("generate_values_from_collections", conditions, collections)


COLLECTING = [
    *both("generate_values_from_collections", 5, lambda rows: (genders(rows), COLLECTIONS)),
    bad(
        "PersonModel.generate_values_from_collections: no column",
        AttributeError,
        _values(3, COLLECTIONS),
    ),
    bad(
        "PersonModel.generate_values_from_collections: odd collection",
        TypeError,
        _values(genders(MANY), ODD_COLLECTION),
        5,
    ),
    good(
        "PersonModel.generate_from_collections",
        lambda: partial(PersonModel.generate_from_collections, "F", COLLECTIONS),
        3,
    ),
    good(
        "PersonModel.generate_from_collections of no key",
        lambda: partial(PersonModel.generate_from_collections, "X", COLLECTIONS),
    ),
    bad(
        "PersonModel.generate_from_collections: odd collection",
        TypeError,
        lambda: partial(PersonModel.generate_from_collections, "F", ODD_COLLECTION),
    ),
    *both("map_to_gender_keys", 5, lambda rows: (cycle(TITLES, rows), PATTERNS)),
    bad(
        "PersonModel.map_to_gender_keys: no column",
        TypeError,
        method("map_to_gender_keys", 3, PATTERNS),
    ),
    bad(
        "PersonModel.map_to_gender_keys: bad pattern",
        re.error,
        method("map_to_gender_keys", cycle(TITLES, FEW), {"F": "("}),
        10,
    ),
    bad(
        "PersonModel.map_to_gender_keys: host fails",
        LookupError,
        replacing(
            person,
            "collections_from_mapping",
            fail_with(LookupError),
            method("map_to_gender_keys", cycle(TITLES, FEW), PATTERNS),
        ),
    ),
    bad(
        "PersonModel.map_to_gender_keys: odd collections",
        ValueError,
        replacing(
            person,
            "collections_from_mapping",
            lambda *_: OddCollections(),
            method("map_to_gender_keys", cycle(TITLES, FEW), PATTERNS),
        ),
    ),
]

CALLS = [*NUMBERS, *COLLECTING]

"""Calls of the generators of names."""

from __future__ import annotations

from typing import Any

from support.people import person_model
from vantrel.model.exceptions import ModelNotFittedError

from .call import bad, good
from .generating import Ending, FailingFaker, Interrupted, both, breaking_off, half_way, method
from .parts import (
    FEW,
    MANY,
    countries,
    cycle,
    drawing,
    first_names,
    first_names_and_gaps,
    genders,
)


def _genders_and_countries(rows: int) -> tuple[Any, ...]:
    return cycle(["F", "M", "NB", "A", None], rows), countries(rows)


def _of_neutral_gender(rows: int) -> tuple[Any, ...]:
    return cycle(["NB"], rows), countries(rows)


FIRST_NAMES = [
    *both("generate_first_names", 10, _genders_and_countries),
    bad(
        "PersonModel.generate_first_names: no providers",
        ModelNotFittedError,
        method("generate_first_names", *_genders_and_countries(FEW), model=person_model),
    ),
    bad(
        "PersonModel.generate_first_names: unknown country",
        KeyError,
        method("generate_first_names", genders(MANY), cycle(["en_GB", "XX"], MANY)),
        2,
    ),
    bad(
        "PersonModel.generate_first_names: gender X",
        ValueError,
        method("generate_first_names", cycle(["F", "X"], MANY), countries(MANY)),
        2,
    ),
    bad(
        "PersonModel.generate_first_names: no column",
        TypeError,
        method("generate_first_names", 3, countries(FEW)),
    ),
    bad(
        "PersonModel.generate_first_names: half-way",
        LookupError,
        method("generate_first_names", *_of_neutral_gender(FEW), model=half_way(FailingFaker)),
        2,
    ),
    bad(
        "PersonModel.generate_first_names: half-way at once",
        LookupError,
        method("generate_first_names", *_of_neutral_gender(MANY), model=half_way(FailingFaker)),
        2,
    ),
    bad(
        "PersonModel.generate_first_names: StopIteration",
        RuntimeError,
        method("generate_first_names", *_of_neutral_gender(FEW), model=half_way(Ending)),
        2,
    ),
    bad(
        "PersonModel.generate_first_names: Ctrl-C",
        KeyboardInterrupt,
        method("generate_first_names", *_of_neutral_gender(FEW), model=half_way(Interrupted)),
        2,
    ),
    bad(
        "PersonModel.generate_first_names: interrupted",
        KeyboardInterrupt,
        method("generate_first_names", breaking_off(genders(FEW)), countries(FEW)),
        2,
    ),
    *[
        good(
            f"PersonModel.generate_random_first_name of {gender}",
            method("generate_random_first_name", gender, "en_GB"),
            2,
        )
        for gender in ("F", "M", "NB", "A", None)
    ],
    bad(
        "PersonModel.generate_random_first_name: gender X",
        ValueError,
        method("generate_random_first_name", "X", "en_GB"),
    ),
    bad(
        "PersonModel.generate_random_first_name: unknown country",
        KeyError,
        method("generate_random_first_name", "F", "XX"),
    ),
    bad(
        "PersonModel.generate_random_first_name: no text",
        TypeError,
        method(
            "generate_random_first_name", None, "n", model=lambda: drawing({"n": NumberFaker()})
        ),
    ),
]


class NumberFaker:
    """No Faker at all: its names are numbers."""

    def first_name(self) -> int:
        return 3


LAST_NAMES = [
    *both("generate_last_names", 10, lambda rows: (first_names_and_gaps(rows), countries(rows))),
    bad(
        "PersonModel.generate_last_names: no providers",
        ModelNotFittedError,
        method("generate_last_names", first_names(FEW), countries(FEW), model=person_model),
    ),
    bad(
        "PersonModel.generate_last_names: unknown country",
        KeyError,
        method("generate_last_names", first_names(MANY), cycle(["XX"], MANY)),
        2,
    ),
    bad(
        "PersonModel.generate_last_names: half-way",
        LookupError,
        method(
            "generate_last_names", first_names(FEW), countries(FEW), model=half_way(FailingFaker)
        ),
        2,
    ),
    bad(
        "PersonModel.generate_last_names: Ctrl-C",
        KeyboardInterrupt,
        method(
            "generate_last_names", first_names(FEW), countries(FEW), model=half_way(Interrupted)
        ),
        2,
    ),
    bad(
        "PersonModel.generate_last_names: interrupted",
        KeyboardInterrupt,
        method("generate_last_names", first_names(FEW), breaking_off(countries(FEW))),
        2,
    ),
    bad(
        "PersonModel.generate_last_names: no column of first names",
        AttributeError,
        method("generate_last_names", 3, countries(FEW)),
        5,
    ),
]

CALLS = [*FIRST_NAMES, *LAST_NAMES]

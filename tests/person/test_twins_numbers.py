"""Whole columns against single calls: passwords and phone numbers."""

import random
from typing import Any

import numpy as np
import pandas as pd
import pytest

from support.people import ALL_LABELS, fitted_model
from support.twins import made_both_ways, same_both_ways
from support.whole_columns import Text, in_turn, model_with, names, new_fakers, usual_model
from vantrel.config import PersonModelConfig
from vantrel.model.models.person import PersonModel


class Whole(int):
    """A whole number of another type."""


LENGTHS: list[Any] = [
    (8, 16),
    (0, 0),
    (0, 1),
    (5, 5),
    (16, 8),
    (-3, -1),
    (-3, 3),
    (-1, -1),
    (1, 5000),
    (-(2**70), -(2**69)),
    (-(2**31) - 1, 0),
    (-(2**63), 5),
    [8, 16],
    [4, 4],
    "ab",
    "a",
    {3: 1, 5: 1},
    range(3, 5),
    (8,),
    (),
    (1, 2, 3),
    (8, None),
    (None, 8),
    (1.0, 4.0),
    (8, 12.5),
    (True, 4),
    (np.int64(4), np.int64(6)),
    (Whole(4), 6),
    ("4", "6"),
    (16, 15),
    None,
    8,
]


@pytest.mark.parametrize("rows", [0, 1, 2, 40])
@pytest.mark.parametrize("lengths", LENGTHS, ids=repr)
def test_lengths_of_passwords(lengths: Any, rows: int) -> None:
    model = usual_model()
    before = model.pwd_length

    def draw() -> Any:
        model.pwd_length = lengths
        try:
            return model.generate_passwords(names(rows))
        finally:
            model.pwd_length = before

    same_both_ways(draw, model)


class Counted:
    """A pair that tells how often it was unpacked."""

    def __init__(self) -> None:
        self.times = 0

    def __iter__(self) -> Any:
        self.times += 1
        return iter((self.times % 5, 9))


def test_lengths_that_change_from_row_to_row() -> None:
    model = model_with(new_fakers())

    def draw() -> Any:
        counted = Counted()
        model.__dict__["pwd_length"] = counted
        return [model.generate_passwords(names(20)), counted.times]

    made_both_ways(draw, model)


def test_lengths_from_a_property() -> None:
    class Changing(PersonModel):
        asked = 0

        @property
        def pwd_length(self) -> tuple[int, int]:
            self.asked += 1
            return (self.asked % 5, 9)

        @pwd_length.setter
        def pwd_length(self, value: Any) -> None:
            self.asked = 0

    model = model_with(new_fakers(), Changing)

    def draw() -> Any:
        model.pwd_length = (0, 0)
        return [model.generate_passwords(names(20)), model.asked]

    made_both_ways(draw, model)


@pytest.mark.parametrize(
    "firstnames",
    [
        [],
        [1, 2, 3],
        "abc",
        np.array(["a"]),
        {"a": 1},
        pd.DataFrame({"a": [1, 2]}),
        None,
        5,
        iter("ab"),
    ],
    ids=lambda value: type(value).__name__,
)
def test_passwords_for_what_is_no_series(firstnames: Any) -> None:
    model = usual_model()
    same_both_ways(lambda: model.generate_passwords(firstnames), model)


@pytest.mark.parametrize("seed", range(3))
def test_many_passwords(seed: int) -> None:
    model = usual_model()
    passwords = made_both_ways(lambda: model.generate_passwords(range(3000)), model, seed)
    assert passwords.str.len().between(8, 16).all()


@pytest.mark.parametrize("bounds", [(), (3,), (3, 9), (9, 3), (0, 0)])
def test_one_password(bounds: tuple[int, ...]) -> None:
    same_both_ways(lambda: PersonModel.generate_password(*bounds))


FORMATS = [
    "07xxxxxxxx",
    "",
    "x",
    "X",
    "none",
    "x" * 200,
    "+44 xxxx xxxxxx",
    "XX-xx",
    "é李\U0001f600x",
    "xx\0xx",
    "\ud800x",
    "\\1x\\g<0>x",
    "×xｘ",
    "x\nx\u2028x",
]


@pytest.mark.parametrize("rows", [0, 1, 2, 40])
@pytest.mark.parametrize("number_format", FORMATS, ids=ascii)
def test_formats_of_numbers(number_format: str, rows: int) -> None:
    isna = in_turn([False, False, True], rows, dtype="bool")
    same_both_ways(lambda: PersonModel.generate_phone_numbers(isna, number_format))


@pytest.mark.parametrize(
    "number_format", [None, 5, b"x", Text("0x"), np.str_("0x"), ["x"]], ids=repr
)
def test_formats_of_other_types(number_format: Any) -> None:
    run = same_both_ways(lambda: PersonModel.generate_phone_numbers(names(3), number_format))
    assert run.error is not None


FLAGS: dict[str, Any] = {
    "truth values": pd.Series([True, False, True]),
    "objects": pd.Series([0, "", "a", None, [], [0], True], dtype="object"),
    "numbers": pd.Series([0, 1, 2.5, float("nan")]),
    "nullable": pd.Series([True, False, True], dtype="boolean"),
    "nullable with a missing one": pd.Series([False, True, None], dtype="boolean"),
    "all missing": pd.Series([True, True]),
    "an array": np.array([False, True]),
    "numpy's own": [np.True_, np.False_, np.bool_(0)],
    "a list": [False, True],
    "a tuple": (0, 1, None),
    "a text": "ab",
    "nothing": None,
    "arrays": pd.Series([[], np.array([1, 2])], dtype="object"),
    "arrays after a number": pd.Series([False, np.array([1, 2]), False], dtype="object"),
    "other index": pd.Series([False, True, False], index=["a", "a", "b"], name="isna"),
    "categories": pd.Series([False, True, False], dtype="category"),
    "frame": pd.DataFrame({"a": [True], "": [False]}),
    "sparse": pd.Series(pd.arrays.SparseArray([False, True, False])),
}


@pytest.mark.parametrize("flags", FLAGS)
def test_flags_of_missing_numbers(flags: str) -> None:
    same_both_ways(lambda: PersonModel.generate_phone_numbers(FLAGS[flags], "0xx X"))


class Undecided:
    """An object that draws a number whenever its truth is asked."""

    def __bool__(self) -> bool:
        return random.random() < 0.5


def test_flags_that_draw_themselves() -> None:
    flags = pd.Series([Undecided() for _ in range(30)], dtype="object")
    column = made_both_ways(lambda: PersonModel.generate_phone_numbers(flags, "0xx"))
    assert 0 < column.isna().sum() < 30


@pytest.mark.parametrize("seed", range(3))
def test_many_numbers(seed: int) -> None:
    isna = in_turn([False, True, False, False], 3000, dtype="bool")
    made_both_ways(lambda: PersonModel.generate_phone_numbers(isna), seed=seed)


def test_formats_of_a_model() -> None:
    config = PersonModelConfig(
        mobile_number_format="X", home_number_format="", work_number_format="x" * 30
    )
    model = fitted_model(ALL_LABELS, config=config)
    frame = made_both_ways(lambda: model.sample(40, produce_nans=False), model)
    assert set(frame["home"]) == {""}
    assert set(frame["mobile"]) == {"X"}

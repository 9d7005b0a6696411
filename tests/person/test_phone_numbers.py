"""Phone numbers: a template with a digit for every x, or a missing value."""

import random
import re
from types import SimpleNamespace
from typing import Any

import numpy as np
import pandas as pd
import pytest
from hypothesis import given
from hypothesis import strategies as st

from support import readings_generators as readings
from support.comparing import assert_same_outcome
from support.sources import seed_sources, source_states
from vantrel.model.models import person
from vantrel.model.models.person import PersonModel

generate = PersonModel.generate_phone_numbers


def assert_reads_alike(*arguments: Any, seed: int = 1) -> Any:
    return assert_same_outcome(
        lambda: generate(*arguments), lambda: readings.phone_numbers(*arguments), seed
    )


def flags(rows: int) -> pd.Series:
    return pd.Series([i % 5 == 1 for i in range(rows)], dtype=bool)


# --- templates ------------------------------------------------------------------------------


def test_the_default_template_gives_07_and_8_digits() -> None:
    numbers = assert_reads_alike(pd.Series([False] * 50))
    assert all(re.fullmatch("07[0-9]{8}", number) for number in numbers)
    assert {type(number) for number in numbers} == {str}


def test_an_international_template_keeps_its_prefix_and_the_blank() -> None:
    numbers = assert_reads_alike(pd.Series([False] * 20), "+44 xxxx xxxxxx")
    assert all(re.fullmatch(r"\+44 [0-9]{4} [0-9]{6}", number) for number in numbers)


def test_an_upper_case_x_stays() -> None:
    numbers = assert_reads_alike(pd.Series([False] * 20), "XX-xx")
    assert all(re.fullmatch("XX-[0-9]{2}", number) for number in numbers)


@pytest.mark.parametrize("template", ["", "999", "XX", "+()-. ", "×х"])
def test_a_template_without_x_is_returned_unchanged_and_draws_nothing(template: str) -> None:
    states = source_states()
    assert list(generate(pd.Series([False, False]), template)) == [template] * 2
    assert states == source_states()


@pytest.mark.parametrize(
    "template",
    ["x", "xx", r"\x", r"\g<0>x\1", "x\nx\0x", "éx😀x", "x" * 200, "[x]*{x}", "x\u0301"],
    ids=ascii,
)
def test_any_template_is_filled_from_left_to_right(template: str) -> None:
    numbers = assert_reads_alike(pd.Series([False] * 3), template)
    pattern = re.escape(template).replace("x", "[0-9]")
    assert all(re.fullmatch(pattern, number) for number in numbers)


def test_every_digit_occurs_in_every_place() -> None:
    random.seed(1)
    numbers = generate(pd.Series([False] * 300), "xx")
    for place in (0, 1):
        assert {number[place] for number in numbers} == set("0123456789")


@pytest.mark.parametrize(
    ("template", "given"), [(None, "NoneType"), (np.str_("x"), "str_"), (b"x", "bytes"), (7, "int")]
)
def test_a_template_that_is_not_a_str_is_refused(template: Any, given: str) -> None:
    with pytest.raises(TypeError) as caught:
        generate(pd.Series([False]), number_format=template)
    assert str(caught.value) == (
        f"Argument 'number_format' has incorrect type (expected str, got {given})"
    )


def test_a_call_without_an_argument_is_refused() -> None:
    with pytest.raises(TypeError) as caught:
        generate()
    assert str(caught.value) == (
        "generate_phone_numbers() takes at least 1 positional argument (0 given)"
    )


def test_a_call_with_three_arguments_is_refused() -> None:
    with pytest.raises(TypeError) as caught:
        generate(pd.Series([False]), "x", "y")
    assert str(caught.value) == (
        "generate_phone_numbers() takes at most 2 positional arguments (3 given)"
    )


def test_the_arguments_are_taken_by_keyword_too() -> None:
    numbers = generate(number_format="5", isna=[False, True])
    assert numbers[0] == "5"
    assert numbers.isna()[1]


# --- rows -----------------------------------------------------------------------------------


def test_rows_flagged_as_missing_get_na() -> None:
    numbers = assert_reads_alike(pd.Series([False, True, False]))
    assert list(numbers.index) == [0, 1, 2]
    assert list(numbers.isna()) == [False, True, False]
    assert numbers[1] is pd.Series(["0", pd.NA])[1]


def test_an_empty_series_of_flags_gives_an_empty_series() -> None:
    numbers = assert_reads_alike(pd.Series([], dtype=bool))
    assert isinstance(numbers, pd.Series)
    assert numbers.empty


@pytest.mark.parametrize("rows", [0, 1, 2, 300])
@pytest.mark.parametrize("seed", [0, 2026])
@pytest.mark.parametrize("template", ["07xxxxxxxx", "+44 xxxx xxxxxx", "none"])
def test_a_column_is_drawn_as_the_reading_draws_it(rows: int, seed: int, template: str) -> None:
    assert len(assert_reads_alike(flags(rows), template, seed=seed)) == rows


def test_a_column_of_missing_rows_alone_draws_nothing() -> None:
    states = source_states()
    assert generate(pd.Series([True] * 9)).isna().all()
    assert states == source_states()


def test_seeding_random_reproduces_the_numbers() -> None:
    made = []
    for seed in (4, 4, 5):
        random.seed(seed)
        made.append(list(generate(pd.Series([False] * 5))))
    assert made[0] == made[1] != made[2]


def test_the_result_has_an_index_of_its_own_and_no_name() -> None:
    isna = pd.Series([False, True], index=["b", "a"], name="missing")
    numbers = assert_reads_alike(isna, "5")
    assert type(numbers.index) is pd.RangeIndex
    assert (list(numbers.index), numbers.name) == ([0, 1], None)


@pytest.mark.parametrize(
    "isna",
    [
        pd.Series([True, False], dtype="object"),
        pd.Series([True, False], dtype="boolean"),
        pd.Series([True, False], dtype="category"),
        pd.Series([0, 1, 2]),
        pd.Series([0.0, float("nan")]),
        pd.Series(["", "a", None], dtype="object"),
        pd.Series([[], [0], (), {}], dtype="object"),
        [False, True],
        (np.False_, np.True_),
        {False: 1, True: 2},
    ],
    ids=lambda isna: f"{type(isna).__name__}-{getattr(isna, 'dtype', '')}",
)
def test_flags_are_tested_for_truth_as_python_tests_it(isna: Any) -> None:
    numbers = assert_reads_alike(isna, "xxx")
    assert list(numbers.isna()) == [bool(flag) for flag in isna]


def test_flags_may_come_from_any_iterator() -> None:
    numbers = generate((flag for flag in (False, True)), "5")
    assert (numbers[0], numbers.isna()[1], len(numbers)) == ("5", True, 2)


@pytest.mark.parametrize(
    "bad", [np.array([True, False]), pd.Series([True, False]), pd.NA], ids=["array", "series", "NA"]
)
def test_a_flag_without_a_truth_value_raises_what_its_truth_test_raises(bad: Any) -> None:
    with pytest.raises((ValueError, TypeError)) as expected:
        bool(bad)
    seed_sources(2)
    with pytest.raises(type(expected.value)) as caught:
        generate([False, True, False, bad, False])
    assert str(caught.value) == str(expected.value)
    states = source_states()
    seed_sources(2)
    generate([False, True, False])
    assert states == source_states()


def test_flags_that_cannot_be_iterated_raise_what_python_raises() -> None:
    with pytest.raises(TypeError, match=r"^'int' object is not iterable$"):
        generate(7)


def test_an_error_raised_while_iterating_propagates() -> None:
    def failing() -> Any:
        yield False
        raise LookupError("no more flags")

    with pytest.raises(LookupError, match="no more flags"):
        generate(failing())


@given(
    isna=st.lists(st.booleans(), max_size=12),
    template=st.text(st.characters(exclude_categories=["Cs"]) | st.just("x"), max_size=20),
    seed=st.integers(0, 2**32 - 1),
)
def test_any_flags_and_templates_read_alike(isna: list[bool], template: str, seed: int) -> None:
    numbers = assert_reads_alike(pd.Series(isna, dtype=bool), template, seed=seed)
    assert list(numbers.isna()) == isna


# --- replaced names -------------------------------------------------------------------------


def test_the_substitution_goes_through_the_modules_re(monkeypatch: pytest.MonkeyPatch) -> None:
    calls: list[Any] = []

    def sub(*args: Any, **kwargs: Any) -> str:
        calls.append((args, kwargs))
        return "filled"

    monkeypatch.setattr(person, "re", SimpleNamespace(sub=sub))
    assert list(generate(pd.Series([False, True, False]), "0x").dropna()) == ["filled"] * 2
    assert len(calls) == 2
    for args, kwargs in calls:
        pattern, digit, template = args
        assert (pattern, template, kwargs) == ("x", "0x", {})
        assert digit.__qualname__ == "PersonModel.generate_phone_numbers.<locals>.<lambda>"
        assert re.fullmatch("[0-9]", digit("anything at all"))


def test_digits_come_from_the_modules_random(monkeypatch: pytest.MonkeyPatch) -> None:
    calls: list[Any] = []

    def randint(*bounds: int) -> int:
        calls.append(bounds)
        return len(calls)

    monkeypatch.setattr(person, "random", SimpleNamespace(randint=randint))
    states = source_states()
    numbers = generate([False, True, False], "x-x")
    assert list(numbers.dropna()) == ["1-2", "3-4"]
    assert calls == [(0, 9)] * 4
    assert states == source_states()


def test_randint_replaced_in_place_is_used(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(random, "randint", lambda low, high: high)
    assert list(assert_reads_alike([False], "xx")) == ["99"]


def test_whatever_randint_gives_becomes_text(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(random, "randint", lambda low, high: "ab")
    assert list(assert_reads_alike([False], "x1x")) == ["ab1ab"]


def test_an_error_of_a_draw_propagates_and_ends_the_column(monkeypatch: pytest.MonkeyPatch) -> None:
    drawn = iter([1, 2, 3])
    monkeypatch.setattr(random, "randint", lambda low, high: next(drawn))
    with pytest.raises(StopIteration):
        generate([False, False, False], "xx")
    assert list(drawn) == []


def test_the_series_and_the_missing_value_come_from_the_modules_pandas(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    calls: list[Any] = []

    def make_series(*args: Any, **kwargs: Any) -> str:
        calls.append((args, kwargs))
        return "made"

    monkeypatch.setattr(person, "pd", SimpleNamespace(Series=make_series, NA="gone"))
    assert generate([True, False], "5") == "made"
    assert calls == [((["gone", "5"],), {})]

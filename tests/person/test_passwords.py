"""Passwords: letters and digits, as many as chance says, for every row."""

import random
import re
import string
from collections.abc import Callable
from types import SimpleNamespace
from typing import Any

import numpy as np
import pandas as pd
import pytest
from hypothesis import given
from hypothesis import strategies as st

from support import readings_generators as readings
from support.comparing import assert_same_outcome
from support.people import person_model
from support.providers import DTYPES
from support.sources import seed_sources, source_states
from vantrel.config import PersonModelConfig
from vantrel.model.models import person
from vantrel.model.models.person import PersonModel

CHARACTERS = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"


def assert_one_reads_alike(*bounds: Any, seed: int = 1) -> Any:
    return assert_same_outcome(
        lambda: PersonModel.generate_password(*bounds), lambda: readings.password(*bounds), seed
    )


def assert_reads_alike(model: PersonModel, firstnames: Any, seed: int = 1) -> Any:
    return assert_same_outcome(
        lambda: model.generate_passwords(firstnames),
        lambda: readings.passwords(model, firstnames),
        seed,
        model,
    )


def model_of(cls: type[PersonModel]) -> PersonModel:
    return cls(meta=person_model().meta)


# --- one password ---------------------------------------------------------------------------


@pytest.mark.parametrize("seed", range(5))
def test_bounds_of_8_and_8_give_8_letters_or_digits(seed: int) -> None:
    password = assert_one_reads_alike(8, 8, seed=seed)
    assert type(password) is str
    assert re.fullmatch("[A-Za-z0-9]{8}", password)


def test_bounds_of_0_and_0_give_nothing() -> None:
    assert assert_one_reads_alike(0, 0) == ""


def test_without_arguments_lengths_range_over_8_to_16() -> None:
    random.seed(1)
    lengths = {len(PersonModel.generate_password()) for _ in range(400)}
    assert lengths == set(range(8, 17))


def test_bounds_may_be_given_by_keyword() -> None:
    assert len(PersonModel.generate_password(pwd_length_max=3, pwd_length_min=3)) == 3
    assert 8 <= len(PersonModel.generate_password(pwd_length_max=9)) <= 9
    assert 15 <= len(PersonModel.generate_password(15)) <= 16


def test_every_character_of_the_alphabet_occurs_and_no_other() -> None:
    random.seed(1)
    assert set(PersonModel.generate_password(5000, 5000)) == set(CHARACTERS)


def test_seeding_random_reproduces_the_password() -> None:
    made = []
    for seed in (4, 4, 5):
        random.seed(seed)
        made.append(PersonModel.generate_password())
    assert made[0] == made[1] != made[2]


@pytest.mark.parametrize("bounds", [(9, 8), (0, -1), (17, 16)])
def test_a_minimum_above_the_maximum_raises_what_randint_raises(bounds: tuple[int, int]) -> None:
    with pytest.raises(ValueError) as expected:
        random.randint(*bounds)
    states = source_states()
    with pytest.raises(ValueError) as caught:
        PersonModel.generate_password(*bounds)
    assert str(caught.value) == str(expected.value)
    assert states == source_states()


@pytest.mark.parametrize("bounds", [(-1, -1), (-9, -3)])
def test_a_negative_length_gives_nothing_and_one_draw(bounds: tuple[int, int]) -> None:
    assert assert_one_reads_alike(*bounds) == ""


@pytest.mark.parametrize("bounds", [(-3, 2), (0, 1), (1, 64), (-(2**70), 0), (300, 300)])
def test_any_bounds_draw_as_the_reading_draws(bounds: tuple[int, int]) -> None:
    for seed in range(6):
        assert_one_reads_alike(*bounds, seed=seed)


def test_more_than_two_arguments_are_refused() -> None:
    with pytest.raises(TypeError) as caught:
        PersonModel.generate_password(1, 2, 3)
    assert str(caught.value) == (
        "generate_password() takes at most 2 positional arguments (3 given)"
    )


class RecordingRandom:
    """A stand-in for the module `random`."""

    def __init__(self, length: int = 3) -> None:
        self.length = length
        self.calls: list[Any] = []

    def randint(self, *bounds: int) -> int:
        self.calls.append(("randint", *bounds))
        return self.length

    def choice(self, characters: str) -> str:
        self.calls.append(("choice", characters))
        return characters[len(self.calls) % len(characters)]


def test_the_length_is_drawn_first_and_then_each_character(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    stand_in = RecordingRandom()
    monkeypatch.setattr(person, "random", stand_in)
    states = source_states()
    assert PersonModel.generate_password(5, 7) == "cde"
    assert stand_in.calls == [("randint", 5, 7), *[("choice", CHARACTERS)] * 3]
    assert states == source_states()


def test_another_source_in_the_place_of_random_is_used(monkeypatch: pytest.MonkeyPatch) -> None:
    random.seed(9)
    expected = PersonModel.generate_password()
    monkeypatch.setattr(person, "random", random.Random(9))
    random.seed(10)
    state = random.getstate()
    assert PersonModel.generate_password() == expected
    assert random.getstate() == state


def test_the_characters_come_from_the_modules_string(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(person, "string", SimpleNamespace(ascii_letters="x", digits="7"))
    stand_in = RecordingRandom(length=1)
    monkeypatch.setattr(person, "random", stand_in)
    PersonModel.generate_password()
    assert stand_in.calls[1] == ("choice", "x7")


def test_string_constants_replaced_in_place_are_used(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(string, "ascii_letters", "")
    monkeypatch.setattr(string, "digits", "9")
    assert assert_one_reads_alike(6, 6) == "999999"


@pytest.mark.parametrize(
    ("function", "stand_in"),
    [("randint", lambda low, high: low), ("choice", lambda characters: characters[-1])],
)
def test_functions_of_random_replaced_in_place_are_used(
    monkeypatch: pytest.MonkeyPatch, function: str, stand_in: Callable[..., Any]
) -> None:
    monkeypatch.setattr(random, function, stand_in)
    password = assert_one_reads_alike(4, 9)
    assert len(password) == 4 if function == "randint" else set(password) == {"9"}


@pytest.mark.parametrize("length", [2.0, "2", None])
def test_a_drawn_length_that_is_no_integer_raises_what_range_raises(
    monkeypatch: pytest.MonkeyPatch, length: Any
) -> None:
    monkeypatch.setattr(random, "randint", lambda low, high: length)
    assert assert_one_reads_alike() is None


@pytest.mark.parametrize("character", [7, b"a", None])
def test_a_drawn_character_that_is_no_text_raises_what_join_raises(
    monkeypatch: pytest.MonkeyPatch, character: Any
) -> None:
    monkeypatch.setattr(random, "choice", lambda characters: character)
    assert assert_one_reads_alike() is None


def test_a_stop_iteration_of_the_choice_is_not_taken_for_the_end(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    def stop(characters: str) -> str:
        raise StopIteration("enough")

    monkeypatch.setattr(random, "choice", stop)
    with pytest.raises(RuntimeError, match=r"^generator raised StopIteration$"):
        PersonModel.generate_password()


@given(bounds=st.tuples(st.integers(-5, 40), st.integers(-5, 40)), seed=st.integers(0, 2**64 - 1))
def test_passwords_are_drawn_as_the_reading_draws_them(bounds: tuple[int, int], seed: int) -> None:
    assert_one_reads_alike(*bounds, seed=seed % 2**32)


# --- a column -------------------------------------------------------------------------------


def test_rows_without_a_first_name_get_passwords_too() -> None:
    passwords = assert_reads_alike(person_model(), pd.Series(["Ann", None, "Bo"]))
    assert passwords.notna().all()
    assert list(passwords.index) == [0, 1, 2]
    assert passwords.dtype == "string"


def test_an_empty_series_gives_an_empty_series_of_dtype_string() -> None:
    passwords = assert_reads_alike(person_model(), pd.Series([], dtype="object"))
    assert (len(passwords), str(passwords.dtype)) == (0, "string")


@pytest.mark.parametrize("rows", [0, 1, 2, 300])
@pytest.mark.parametrize("seed", [0, 1, 2026])
def test_a_column_is_drawn_as_the_reading_draws_it(rows: int, seed: int) -> None:
    passwords = assert_reads_alike(person_model(), pd.Series(["Ann"] * rows, dtype="object"), seed)
    assert len(passwords) == rows


@pytest.mark.parametrize("bounds", [(0, 0), (1, 1), (3, 40), (-2, 1)])
def test_the_bounds_are_the_models(bounds: tuple[int, int]) -> None:
    model = person_model(config=PersonModelConfig(pwd_length=bounds))
    passwords = assert_reads_alike(model, pd.Series(["Ann"] * 50))
    assert all(max(bounds[0], 0) <= len(password) <= bounds[1] for password in passwords)


@pytest.mark.parametrize("dtype", DTYPES, ids=str)
def test_only_the_length_of_the_first_names_counts(dtype: Any) -> None:
    firstnames = pd.Series(["Ann", None, "Bo"], index=["a", "b", "c"], name="n", dtype=dtype)
    model = person_model()
    seed_sources(3, model)
    expected = list(model.generate_passwords(range(3)))
    seed_sources(3, model)
    passwords = model.generate_passwords(firstnames)
    assert list(passwords) == expected
    assert (list(passwords.index), passwords.name) == ([0, 1, 2], None)
    assert type(passwords.index) is pd.RangeIndex


def test_the_length_is_asked_for_once() -> None:
    class Sized:
        asked = 0

        def __len__(self) -> int:
            self.asked += 1
            return 4

    firstnames = Sized()
    passwords = person_model().generate_passwords(firstnames)
    assert (len(passwords), firstnames.asked) == (4, 1)


def test_seeding_random_reproduces_the_column() -> None:
    made = []
    for seed in (4, 4, 5):
        random.seed(seed)
        made.append(list(person_model().generate_passwords(pd.Series(["Ann"] * 5))))
    assert made[0] == made[1] != made[2]


def test_a_minimum_above_the_maximum_in_the_model_raises_what_randint_raises() -> None:
    model = person_model()
    model.pwd_length = (9, 8)
    assert assert_reads_alike(model, pd.Series(["Ann"])) is None


def test_too_many_bounds_raise_the_type_error_of_the_call() -> None:
    model = person_model()
    model.pwd_length = (8, 9, 10)
    with pytest.raises(TypeError) as caught:
        model.generate_passwords(pd.Series(["Ann"]))
    assert str(caught.value) == (
        "generate_password() takes at most 2 positional arguments (3 given)"
    )


def test_too_few_bounds_raise_the_type_error_of_a_call_that_needs_both() -> None:
    class NeedsBoth(PersonModel):
        @staticmethod
        def generate_password(low: int, high: int) -> str:
            return ""

    model = model_of(NeedsBoth)
    model.pwd_length = (8,)
    with pytest.raises(TypeError) as caught:
        model.generate_passwords(pd.Series(["Ann"]))
    assert str(caught.value).endswith("missing 1 required positional argument: 'high'")


def test_one_bound_is_the_minimum_as_in_the_call_itself() -> None:
    model = person_model()
    model.pwd_length = (16,)
    assert [len(p) for p in assert_reads_alike(model, pd.Series(["Ann"] * 5))] == [16] * 5


@pytest.mark.parametrize("bounds", [8, None, 8.5])
def test_bounds_that_cannot_be_unpacked_raise_a_type_error_before_any_draw(bounds: Any) -> None:
    model = person_model()
    model.pwd_length = bounds
    states = source_states()
    with pytest.raises(TypeError, match="iterable"):
        model.generate_passwords(pd.Series(["Ann"]))
    assert states == source_states()


@pytest.mark.parametrize(
    ("bounds", "name", "given"),
    [
        ((8.0, 16), "pwd_length_min", "float"),
        ((8, None), "pwd_length_max", "NoneType"),
        ((True, 16), "pwd_length_min", "bool"),
        ((8, np.int64(16)), "pwd_length_max", "int64"),
        ("ab", "pwd_length_min", "str"),
    ],
)
def test_bounds_of_another_type_are_refused_by_the_call(bounds: Any, name: str, given: str) -> None:
    model = person_model()
    model.pwd_length = bounds
    with pytest.raises(TypeError) as caught:
        model.generate_passwords(pd.Series(["Ann"]))
    assert str(caught.value) == f"Argument '{name}' has incorrect type (expected int, got {given})"


@pytest.mark.parametrize(
    "bounds", [[8, 9], {8: "a", 9: "b"}, range(8, 10), np.array([8, 9]).tolist()]
)
def test_bounds_may_be_any_iterable(bounds: Any) -> None:
    model = person_model()
    model.pwd_length = bounds
    assert all(8 <= len(p) <= 9 for p in assert_reads_alike(model, pd.Series(["Ann"] * 9)))


def test_bad_bounds_do_not_matter_without_rows() -> None:
    model = person_model()
    model.pwd_length = None
    assert len(assert_reads_alike(model, [])) == 0


def test_the_bounds_are_looked_up_for_every_row() -> None:
    class Growing(PersonModel):
        reads = 0

        @property
        def pwd_length(self) -> tuple[int, int]:
            Growing.reads += 1
            return Growing.reads, Growing.reads

        @pwd_length.setter
        def pwd_length(self, value: Any) -> None:
            """The constructor assigns it."""

    model = model_of(Growing)
    assert [len(p) for p in model.generate_passwords(range(4))] == [1, 2, 3, 4]


def test_an_override_is_called_through_the_model_with_both_bounds_by_position() -> None:
    class Overriding(PersonModel):
        def generate_password(self, *args: Any, **kwargs: Any) -> str:
            return f"{type(self).__name__}{args}{kwargs}"

    model = model_of(Overriding)
    model.pwd_length = (3, 4)
    assert list(model.generate_passwords(range(2))) == ["Overriding(3, 4){}"] * 2


def test_an_override_on_the_instance_is_called(monkeypatch: pytest.MonkeyPatch) -> None:
    model = person_model()
    monkeypatch.setattr(model, "generate_password", lambda low, high: "secret")
    assert list(model.generate_passwords(range(2))) == ["secret"] * 2


@pytest.mark.parametrize("value", [None, pd.NA, 7, np.str_("a")])
def test_what_an_override_gives_is_made_a_string_as_pandas_does(value: Any) -> None:
    class Overriding(PersonModel):
        def generate_password(self, low: int, high: int) -> Any:
            return value

    assert_reads_alike(model_of(Overriding), range(2))


@pytest.mark.parametrize("error", [LookupError("no"), StopIteration("enough")], ids=repr)
def test_a_failing_row_ends_the_column_where_the_draws_before_it_end(error: Exception) -> None:
    class Failing(PersonModel):
        made = 0

        def generate_password(self, *bounds: int) -> str:
            self.made += 1
            if self.made == 4:
                raise error
            return super().generate_password(*bounds)

    seed_sources(6)
    with pytest.raises(type(error)) as caught:
        model_of(Failing).generate_passwords(range(6))
    assert caught.value is error
    states = source_states()
    seed_sources(6)
    person_model().generate_passwords(range(3))
    assert states == source_states()


def test_the_series_is_made_of_a_list_with_the_dtype_string(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    calls: list[Any] = []

    def make_series(*args: Any, **kwargs: Any) -> str:
        calls.append((args, kwargs))
        return "made"

    model = person_model()
    model.pwd_length = (0, 0)
    monkeypatch.setattr(person, "pd", SimpleNamespace(Series=make_series))
    assert model.generate_passwords(range(2)) == "made"
    assert calls == [((["", ""],), {"dtype": "string"})]

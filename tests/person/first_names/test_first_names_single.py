"""One first name: which method of which Faker draws it, and what is refused."""

from types import SimpleNamespace
from typing import Any

import numpy as np
import pandas as pd
import pytest

from support import readings_generators as readings
from support.first_names import KEYS
from support.providers import KINDS, StandInFaker, model_of_kind, model_with
from support.sources import seed_sources, source_states
from vantrel.model.models import person
from vantrel.model.models.person import GenderModel

MISSING = [None, float("nan"), pd.NA]
MISSING_IDS = ["None", "NaN", "NA"]


@pytest.mark.parametrize("gender", MISSING, ids=MISSING_IDS)
def test_a_missing_gender_gives_a_neutral_name(gender: Any) -> None:
    faker = StandInFaker()
    name = model_with({"GB": faker}).generate_random_first_name(gender, "GB")
    assert (name, faker.calls) == ("first1", ["first"])


@pytest.mark.parametrize(
    ("gender", "method"), [("NB", "first"), ("A", "first"), ("M", "male"), ("F", "female")]
)
def test_each_gender_key_has_its_method(gender: str, method: str) -> None:
    faker = StandInFaker()
    name = model_with({"GB": faker}).generate_random_first_name(gender, "GB")
    assert (name, faker.calls) == (method + "1", [method])


@pytest.mark.parametrize(("gender", "method"), [("NB", "first"), ("M", "male"), ("F", "female")])
def test_a_numpy_string_matches_its_key(gender: str, method: str) -> None:
    faker = StandInFaker()
    model_with({"GB": faker}).generate_random_first_name(np.str_(gender), "GB")
    assert faker.calls == [method]


@pytest.mark.parametrize("gender", ["X", "f", "", 0, True])
def test_another_gender_is_refused_with_the_braces_in_the_message(gender: Any) -> None:
    faker = StandInFaker()
    with pytest.raises(ValueError) as caught:
        model_with({"GB": faker}).generate_random_first_name(gender, "GB")
    assert type(caught.value) is ValueError
    assert caught.value.args == ("Unrecognised gender: {gender}",)
    assert faker.calls == []


@pytest.mark.parametrize(
    ("country", "given"),
    [
        (None, "NoneType"),
        (float("nan"), "float"),
        (pd.NA, "NAType"),
        (np.str_("GB"), "str_"),
        (7, "int"),
    ],
)
def test_a_country_that_is_not_a_str_is_refused(country: Any, given: str) -> None:
    model = model_with({"GB": StandInFaker(), country: StandInFaker()})
    with pytest.raises(TypeError) as caught:
        model.generate_random_first_name("F", country)
    assert str(caught.value) == (
        f"Argument 'country' has incorrect type (expected str, got {given})"
    )


def test_an_unknown_country_raises_the_key_error_of_the_map() -> None:
    with pytest.raises(KeyError) as caught:
        model_with({"GB": StandInFaker()}).generate_random_first_name("F", "XX")
    assert caught.value.args == ("XX",)


def test_the_country_is_looked_up_before_the_gender_is_looked_at() -> None:
    with pytest.raises(KeyError):
        model_with({"GB": StandInFaker()}).generate_random_first_name("X", "XX")


@pytest.mark.parametrize(
    ("result", "given"),
    [(7, "int"), (b"Ann", "bytes"), (np.str_("Ann"), "str_"), (pd.NA, "NAType")],
)
@pytest.mark.parametrize(
    ("gender", "method"),
    [("A", "first_name"), ("M", "first_name_male"), ("F", "first_name_female")],
)
def test_a_name_that_is_no_str_is_refused(
    gender: str, method: str, result: Any, given: str
) -> None:
    model = model_with({"GB": SimpleNamespace(**{method: lambda: result})})
    with pytest.raises(TypeError) as caught:
        model.generate_random_first_name(gender, "GB")
    assert str(caught.value) == f"Expected unicode, got {given}"


def test_a_faker_may_return_none() -> None:
    model = model_with({"GB": SimpleNamespace(first_name=lambda: None)})
    assert model.generate_random_first_name("A", "GB") is None


def test_an_error_of_the_faker_propagates_unchanged() -> None:
    error = LookupError("no names today")

    def fail() -> str:
        raise error

    with pytest.raises(LookupError) as caught:
        model_with({"GB": SimpleNamespace(first_name=fail)}).generate_random_first_name("A", "GB")
    assert caught.value is error


def test_the_keys_are_read_from_the_gender_model_at_each_call(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    faker = StandInFaker()
    model = model_with({"GB": faker})
    monkeypatch.setattr(GenderModel, "key_male", "X")
    model.generate_random_first_name("X", "GB")
    with pytest.raises(ValueError, match="Unrecognised gender"):
        model.generate_random_first_name("M", "GB")
    assert faker.calls == ["male"]


def test_the_gender_model_is_looked_up_in_the_module(monkeypatch: pytest.MonkeyPatch) -> None:
    faker = StandInFaker()
    model = model_with({"GB": faker})
    keys = SimpleNamespace(key_non_binary="n", key_ambiguous="a", key_male="m", key_female="f")
    monkeypatch.setattr(person, "GenderModel", keys)
    for gender in "namf":
        model.generate_random_first_name(gender, "GB")
    assert faker.calls == ["first", "first", "male", "female"]


class Recorded:
    """A gender that writes down what it is compared with, and equals one key."""

    def __init__(self, equal_to: str) -> None:
        self.equal_to = equal_to
        self.compared: list[str] = []

    def __eq__(self, other: object) -> bool:
        self.compared.append(str(other))
        return other == self.equal_to


@pytest.mark.parametrize(
    ("key", "compared"),
    [
        ("NB", ["NB"]),
        ("A", ["NB", "A"]),
        ("M", ["NB", "A", "M"]),
        ("F", ["NB", "A", "M", "F"]),
    ],
)
def test_the_keys_are_compared_in_order_and_no_further_than_needed(
    key: str, compared: list[str]
) -> None:
    gender = Recorded(key)
    model_with({"GB": StandInFaker()}).generate_random_first_name(gender, "GB")
    assert gender.compared == compared


def test_a_missing_gender_is_compared_with_no_key(monkeypatch: pytest.MonkeyPatch) -> None:
    gender = Recorded("M")
    asked: list[Any] = []

    def isna(value: Any) -> bool:
        asked.append(value)
        return True

    monkeypatch.setattr(person, "pd", SimpleNamespace(isna=isna))
    faker = StandInFaker()
    model_with({"GB": faker}).generate_random_first_name(gender, "GB")
    (found,) = asked
    assert found is gender
    assert (gender.compared, faker.calls) == ([], ["first"])


def test_a_gender_that_cannot_be_truth_tested_raises_what_the_test_raises() -> None:
    model = model_with({"GB": StandInFaker()})
    gender = np.array(["F", "M"])
    with pytest.raises(ValueError) as caught:
        model.generate_random_first_name(gender, "GB")
    with pytest.raises(ValueError) as expected:
        bool(pd.isna(gender))
    assert str(caught.value) == str(expected.value)


@pytest.mark.parametrize("gender", KEYS, ids=repr)
@pytest.mark.parametrize("kind", KINDS)
def test_single_names_are_drawn_as_the_reading_draws_them(kind: str, gender: Any) -> None:
    model = model_of_kind(kind)
    for country in model.country_to_provider_map:
        seed_sources(5, model)
        got = [model.generate_random_first_name(gender, country) for _ in range(5)]
        states = source_states(model)
        seed_sources(5, model)
        assert got == [readings.random_first_name(model, gender, country) for _ in range(5)]
        assert states == source_states(model)
        assert {type(name) for name in got} == {str}

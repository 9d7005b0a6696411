"""Whole columns against single calls: a row in the middle that fails, and where it leaves the sources."""

from collections.abc import Callable
from typing import Any

import numpy as np
import pandas as pd
import pytest
from faker.providers import BaseProvider

from support.twins import refused_both_ways, same_both_ways
from support.whole_columns import (
    COLLECTIONS,
    COUNTRIES,
    in_turn,
    model_after_use,
    model_with,
    new_fakers,
    usual_model,
)
from vantrel.model.models.person import PersonModel

ROWS = 40
PLACES_OF_FAILURE = [0, 1, 20, 39]
UNKNOWN = ["XX", None, float("nan"), pd.NA, 5, "", "gb", "GB ", ("GB",)]


def genders() -> pd.Series:
    return in_turn(["F", "M", "NB", "A", None], ROWS)


def places(failing: int, value: Any) -> pd.Series:
    series = in_turn(COUNTRIES, ROWS)
    series[failing] = value
    return series


@pytest.mark.parametrize("failing", PLACES_OF_FAILURE)
@pytest.mark.parametrize("value", UNKNOWN, ids=repr)
def test_an_unknown_country(value: Any, failing: int) -> None:
    model = usual_model()
    countries = places(failing, value)
    names = in_turn(["Ann", "Bo"], ROWS)
    calls: list[Callable[[], Any]] = [
        lambda: model.generate_first_names(genders(), countries),
        lambda: model.generate_last_names(names, countries),
        lambda: model.generate_emails(names, names, countries),
        lambda: model._sample_conditional(ROWS, genders(), countries),
    ]
    for call in calls:
        assert isinstance(refused_both_ways(call, model), KeyError | TypeError)


def test_a_country_that_is_no_key() -> None:
    model = usual_model()
    error = refused_both_ways(
        lambda: model.generate_last_names(genders(), places(20, ["GB"])), model
    )
    assert isinstance(error, TypeError)


@pytest.mark.parametrize("failing", PLACES_OF_FAILURE)
@pytest.mark.parametrize("gender", ["X", "f", "", " F", "male", 5, ("F",), b"F"], ids=repr)
def test_an_unknown_gender(gender: Any, failing: int) -> None:
    model = usual_model()
    keys = genders()
    keys[failing] = gender
    countries = in_turn(COUNTRIES, ROWS)
    refused_both_ways(lambda: model.generate_first_names(keys, countries), model)
    refused_both_ways(lambda: model._sample_conditional(ROWS, keys, countries), model)
    same_both_ways(lambda: model.generate_values_from_collections(keys, COLLECTIONS), model)


@pytest.mark.parametrize("gender", [["F"], np.array(["F", "M"]), np.array([]), {"F": 1}], ids=str)
def test_a_gender_that_is_no_text(gender: Any) -> None:
    model = usual_model()
    keys = pd.Series(["F", "M", gender, "NB"], dtype="object")
    countries = pd.Series(["GB", "US", "DE", "CN"])
    same_both_ways(lambda: model.generate_first_names(keys, countries), model)


def test_an_unknown_country_and_an_unknown_gender_in_one_row() -> None:
    model = usual_model()
    keys = genders()
    keys[20] = "X"
    error = refused_both_ways(lambda: model.generate_first_names(keys, places(20, "XX")), model)
    assert isinstance(error, KeyError)


@pytest.mark.parametrize("order", [(10, 30), (30, 10)], ids=str)
def test_an_unknown_country_and_an_unknown_gender_in_two_rows(order: tuple[int, int]) -> None:
    model = usual_model()
    keys = genders()
    keys[order[0]] = "X"
    countries = places(order[1], "XX")
    error = refused_both_ways(lambda: model.generate_first_names(keys, countries), model)
    assert isinstance(error, ValueError if order[0] < order[1] else KeyError)


class Raising(BaseProvider):
    """Raises now and then, after a draw."""

    error: Exception = RuntimeError("out of names")

    def last_name(self) -> str:
        if self.generator.random.random() < 0.4:
            raise self.error
        return "Lee"

    first_name = first_name_male = first_name_female = last_name

    def domain_name(self) -> str:
        return self.last_name() + ".test"


@pytest.mark.parametrize(
    "error", [RuntimeError("out"), KeyError("k"), StopIteration("s")], ids=repr
)
def test_a_provider_that_raises(error: Exception, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(Raising, "error", error)
    model = model_after_use()
    model.country_to_provider_map["US"].add_provider(Raising)
    countries = in_turn(COUNTRIES, ROWS)
    names = in_turn(["Ann", "Bo"], ROWS)
    calls: list[Callable[[], Any]] = [
        lambda: model.generate_first_names(genders(), countries),
        lambda: model.generate_last_names(names, countries),
        lambda: model.generate_emails(names, names, countries),
    ]
    for call in calls:
        refused_both_ways(call, model)


@pytest.mark.parametrize("attribute", ["first_names", "first_names_female", "last_names"])
def test_a_table_without_entries_in_one_country(attribute: str) -> None:
    model = model_with(new_fakers())
    person = model.country_to_provider_map["DE"].provider("faker.providers.person")
    setattr(person, attribute, [])
    countries = in_turn(COUNTRIES, ROWS)
    refused_both_ways(lambda: model._sample_conditional(ROWS, genders(), countries), model)


@pytest.mark.parametrize("last", [0, 7, 39])
def test_flags_that_have_no_truth(last: int) -> None:
    flags = pd.Series([False] * ROWS, dtype="object")
    flags[last] = pd.NA
    refused_both_ways(lambda: PersonModel.generate_phone_numbers(flags, "0xx"))


@pytest.mark.parametrize("failing", PLACES_OF_FAILURE)
def test_a_missing_name_among_usernames(failing: int) -> None:
    names = in_turn(["Ann", "Bo", "Cy"], ROWS)
    names[failing] = None
    same_both_ways(lambda: PersonModel.generate_usernames(names, names))


@pytest.mark.parametrize("failing", PLACES_OF_FAILURE)
@pytest.mark.parametrize("values", [[], None, [["a"], ["b", "c"]], 5, "ab"], ids=repr)
def test_a_collection_that_cannot_be_drawn_from(values: Any, failing: int) -> None:
    keys = in_turn(["F"], ROWS)
    keys[failing] = "M"
    model = usual_model()
    collections = {"F": ["Mrs", "Ms"], "M": values}
    same_both_ways(lambda: model.generate_values_from_collections(keys, collections), model)


@pytest.mark.parametrize("failing", [0, 3])
def test_a_value_without_a_hash_among_category_values(failing: int) -> None:
    column = pd.Series(["Mr", "Mrs", "Mr", "Mrs"], dtype="object")
    column[failing] = ["Mr"]
    model = usual_model()
    same_both_ways(lambda: model.map_to_gender_keys(column, {"M": "^mr$", "F": "mrs"}), model)


def test_passwords_whose_bounds_fail_after_some_rows() -> None:
    model = model_with(new_fakers())

    class Bounds:
        def __init__(self) -> None:
            self.left = 5

        def __iter__(self) -> Any:
            self.left -= 1
            return iter((8, 16) if self.left else (16, 8))

    def draw() -> Any:
        model.__dict__["pwd_length"] = Bounds()
        return model.generate_passwords(range(9))

    assert isinstance(refused_both_ways(draw, model), ValueError)


def test_no_countries_for_a_country_column() -> None:
    model = usual_model()
    error = refused_both_ways(lambda: model._sample_conditional(9, genders()[:9], None), model)
    assert str(error) == "Got country label but no country conditions or country model."

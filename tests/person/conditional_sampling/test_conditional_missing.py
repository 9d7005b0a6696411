"""Rows without a gender: missing in every column where that is asked for."""

from typing import Any

import pytest

from support import readings_sampling as readings
from support.comparing import assert_identical, assert_same_outcome
from support.conditional_sampling import countries, genders, model_of, only, sampled
from vantrel.model.models import person


def test_rows_without_a_gender_are_missing_in_every_column() -> None:
    made = sampled(model_of(), 10, produce_nans=True)
    assert made.isna().all(axis="columns").tolist() == [False, False, False, False, True] * 2


def test_missing_rows_are_the_default() -> None:
    made = sampled(model_of(), 5)
    assert made.iloc[4].isna().all()


@pytest.mark.parametrize("produce_nans", [1, "yes", [0]])
def test_any_true_value_asks_for_missing_rows(produce_nans: Any) -> None:
    assert sampled(model_of(), 5, produce_nans=produce_nans).iloc[4].isna().all()


@pytest.mark.parametrize("produce_nans", [False, 0, None, ""])
def test_otherwise_generated_values_stay_where_the_gender_is_missing(produce_nans: Any) -> None:
    made = sampled(model_of(), 10, produce_nans=produce_nans)
    generated = made[["country", "first", "last", "full", "email", "user", "password", "mobile"]]
    assert generated.notna().all(axis=None)
    assert made["gender"].isna().tolist() == [False, False, False, True, True] * 2


def test_the_missing_value_is_numpys_when_sampling(monkeypatch: pytest.MonkeyPatch) -> None:
    class Numpy:
        nan = "gone"

    model = model_of(only("firstname"))
    monkeypatch.setattr(person, "np", Numpy)
    assert sampled(model, 5)["first"].tolist()[4] == "gone"


def test_a_label_beyond_the_known_ones_is_blanked_too_and_so_becomes_a_column() -> None:
    labels = only("firstname")
    vars(labels)["nickname"] = "nick"
    model = model_of(labels)
    given = (5, genders(5), countries(5))
    assert_same_outcome(
        lambda: model._sample_conditional(*given),
        lambda: readings.sample_conditional(model, *given),
        8,
        model,
    )
    assert sampled(model, produce_nans=False).columns.tolist() == ["first"]
    made = sampled(model)
    assert made.columns.tolist() == ["first", "nick"]
    assert made["nick"].isna().all()


def test_the_conditions_are_left_alone() -> None:
    gender, country = genders(10), countries(10)
    sampled(model_of(), 10, gender_conditions=gender, country_conditions=country)
    assert_identical(gender, genders(10))
    assert_identical(country, countries(10))

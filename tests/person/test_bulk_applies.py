"""Whole columns are made at once, which shows in how seldom Python functions are called."""

import pandas as pd
import pytest

from support.counting import FAKER, calls_of
from support.twins import call_by_call
from support.whole_columns import MAKERS, making, usual_model

ROWS = 2000


def test_a_sample_calls_faker_less_often_than_it_has_rows() -> None:
    model = usual_model()
    assert calls_of(making("sample", model, ROWS), FAKER) < ROWS


def test_a_sample_made_call_by_call_calls_faker_for_each_row() -> None:
    with call_by_call():
        assert calls_of(making("sample", usual_model(), ROWS), FAKER) > 3 * ROWS


@pytest.mark.parametrize("maker", MAKERS)
def test_more_rows_hardly_call_more_functions(maker: str) -> None:
    model = usual_model()
    few, many = (calls_of(making(maker, model, rows)) for rows in (ROWS, 2 * ROWS))
    assert many - few < ROWS / 10


@pytest.mark.parametrize("dtype", ["object", "str", "string"])
def test_keys_and_countries_of_every_dtype(dtype: str) -> None:
    model = usual_model()
    genders = pd.Series(["F", "M"] * ROWS, dtype=dtype)
    countries = pd.Series(["GB", "US"] * ROWS, dtype=dtype)
    calls = {
        "first": lambda: model.generate_first_names(genders, countries),
        "last": lambda: model.generate_last_names(genders, countries),
        "emails": lambda: model.generate_emails(genders, genders, countries),
    }
    for call in calls.values():
        assert calls_of(call) < ROWS

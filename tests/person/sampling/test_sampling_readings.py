"""The sampling entry against the reading: rows, conditions of every kind, seeds."""

from typing import Any

import numpy as np
import pandas as pd
import pytest

from support import readings_sampling as readings
from support.comparing import assert_identical, assert_same_outcome
from support.people import ALL_LABELS, fitted_model, people, person_model
from support.recording import Calls
from support.sampling import GIVEN, LABEL_SETS, LEARNT, NAMES
from support.sources import seed_sources
from vantrel.config import PersonLabels
from vantrel.model.models.person import PersonModel


@pytest.mark.parametrize("labels", LABEL_SETS.values(), ids=LABEL_SETS)
@pytest.mark.parametrize("produce_nans", [True, False])
@pytest.mark.parametrize("seed", [1, 2])
def test_rows_equal_the_reading(labels: PersonLabels, produce_nans: bool, seed: int) -> None:
    table = people()
    table.loc[::4, "gender"] = None
    model = fitted_model(labels, table)
    made = assert_same_outcome(
        lambda: model.sample(n=12, produce_nans=produce_nans),
        lambda: readings.sample(model, n=12, produce_nans=produce_nans),
        seed,
        model,
    )
    assert made is not None


@pytest.mark.parametrize("rows", [0, 1, 2, 3_000])
@pytest.mark.parametrize("labels", [LABEL_SETS["names"], LEARNT], ids=["names", "learnt"])
def test_any_number_of_rows_equals_the_reading(rows: int, labels: PersonLabels) -> None:
    model = fitted_model(labels)
    made = assert_same_outcome(
        lambda: model.sample(n=rows), lambda: readings.sample(model, n=rows), rows, model
    )
    assert len(made) == rows


@pytest.mark.parametrize("labels", LABEL_SETS.values(), ids=LABEL_SETS)
@pytest.mark.parametrize(
    "columns",
    [["gender"], ["country"], ["gender", "country"], ["age"], [], ["age", "country", "gender"]],
    ids=" ".join,
)
@pytest.mark.parametrize("rows", [0, 5])
def test_conditions_equal_the_reading(labels: PersonLabels, columns: list[str], rows: int) -> None:
    model = fitted_model(labels)
    conditions = GIVEN[columns].head(rows)
    made = assert_same_outcome(
        lambda: model.sample(conditions=conditions),
        lambda: readings.sample(model, conditions=conditions),
        3,
        model,
    )
    assert len(made) == rows


@pytest.mark.parametrize(
    "index", [[5, 6, 7, 8, 9], [4, 3, 2, 1, 0], [0, 0, 1, 1, 2], list("abcde")]
)
@pytest.mark.parametrize("columns", [["gender"], ["country"], ["gender", "country"], ["age"]])
@pytest.mark.parametrize("table", [people(), people(2)], ids=["", "no nb"])
def test_conditions_with_another_index_do_as_the_reading_does(
    index: list[Any], columns: list[str], table: pd.DataFrame
) -> None:
    model = fitted_model(ALL_LABELS, table)
    conditions = GIVEN[columns].set_axis(index)
    assert_same_outcome(
        lambda: model.sample(conditions=conditions),
        lambda: readings.sample(model, conditions=conditions),
        4,
        model,
    )


@pytest.mark.parametrize("missing", [None, np.nan, pd.NA])
@pytest.mark.parametrize("columns", [["gender"], ["country"], ["gender", "country"]])
@pytest.mark.parametrize("produce_nans", [True, False])
def test_conditions_with_missing_values_do_as_the_reading_does(
    missing: Any, columns: list[str], produce_nans: bool
) -> None:
    model = fitted_model()
    conditions = GIVEN.astype(object)
    conditions.loc[2, columns] = missing
    assert_same_outcome(
        lambda: model.sample(produce_nans=produce_nans, conditions=conditions),
        lambda: readings.sample(model, produce_nans=produce_nans, conditions=conditions),
        5,
        model,
    )


def test_a_column_named_none_is_the_gender_where_no_gender_is_labelled() -> None:
    model = fitted_model(PersonLabels(**NAMES))
    conditions = pd.DataFrame({None: ["female", "male"]})
    calls = Calls()
    model.map_to_gender_keys = calls.recorder("keys", model.map_to_gender_keys)
    assert_same_outcome(
        lambda: model.sample(conditions=conditions),
        lambda: readings.sample(model, conditions=conditions),
        6,
        model,
    )
    assert calls.names() == ["keys"]


@pytest.mark.parametrize("seed", [1, 2])
def test_without_a_hidden_gender_model_rows_equal_the_reading(seed: int) -> None:
    model = fitted_model(LABEL_SETS["names"], locales=["de_DE", "en_US"])
    model.hidden_model_gender = None
    made = assert_same_outcome(
        lambda: model.sample(n=20), lambda: readings.sample(model, n=20), seed, model
    )
    assert made is not None


def test_without_locales_rows_equal_the_reading() -> None:
    class Placeless(PersonModel):
        locales = None

    model = Placeless(person_model(LABEL_SETS["names"]).meta).fit(people())
    made = assert_same_outcome(
        lambda: model.sample(n=6), lambda: readings.sample(model, n=6), 1, model
    )
    assert made is not None


def test_the_same_seed_gives_the_same_rows() -> None:
    model = fitted_model()
    seed_sources(9, model)
    first = model.sample(n=30)
    seed_sources(9, model)
    assert_identical(model.sample(n=30), first)


def test_another_seed_gives_other_rows() -> None:
    model = fitted_model()
    seed_sources(9, model)
    first = model.sample(n=30)
    seed_sources(10, model)
    assert not model.sample(n=30).equals(first)

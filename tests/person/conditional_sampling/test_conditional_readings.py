"""Conditional sampling against the reading: rows, conditions of every kind, seeds."""

from typing import Any

import numpy as np
import pandas as pd
import pytest

from support import readings_sampling as readings
from support.comparing import assert_identical, assert_same_outcome
from support.conditional_sampling import (
    KEYS,
    LABEL_SETS,
    countries,
    genders,
    model_of,
    only,
    sampled,
)
from support.sources import seed_sources, source_states
from vantrel.config import PersonLabels


@pytest.mark.parametrize("labels", LABEL_SETS.values(), ids=LABEL_SETS)
@pytest.mark.parametrize("produce_nans", [True, False])
@pytest.mark.parametrize("seed", [1, 2])
def test_rows_equal_the_reading(labels: PersonLabels, produce_nans: bool, seed: int) -> None:
    model = model_of(labels)
    given = (12, genders(12), countries(12), produce_nans)
    made = assert_same_outcome(
        lambda: model._sample_conditional(*given),
        lambda: readings.sample_conditional(model, *given),
        seed,
        model,
    )
    assert made is not None


@pytest.mark.parametrize("rows", [0, 1, 2, 3_000])
@pytest.mark.parametrize("produce_nans", [True, False])
def test_any_number_of_rows_equals_the_reading(rows: int, produce_nans: bool) -> None:
    model = model_of()
    given = (rows, genders(rows), countries(rows), produce_nans)
    made = assert_same_outcome(
        lambda: model._sample_conditional(*given),
        lambda: readings.sample_conditional(model, *given),
        rows,
        model,
    )
    assert len(made) == rows


@pytest.mark.parametrize("missing", [None, np.nan, pd.NA])
@pytest.mark.parametrize("produce_nans", [True, False])
@pytest.mark.parametrize("keys", [[], ["F"], ["M", "NB"]])
def test_missing_genders_of_every_kind_equal_the_reading(
    missing: Any, produce_nans: bool, keys: list[str]
) -> None:
    model = model_of()
    given = (6, genders(6, [missing, *keys]), countries(6), produce_nans)
    made = assert_same_outcome(
        lambda: model._sample_conditional(*given),
        lambda: readings.sample_conditional(model, *given),
        3,
        model,
    )
    assert made is not None


@pytest.mark.parametrize("dtype", ["string", "category", "str"])
@pytest.mark.parametrize("produce_nans", [True, False])
def test_conditions_of_every_dtype_equal_the_reading(dtype: str, produce_nans: bool) -> None:
    # Rows are compared, or the error where this pandas refuses such a column.
    model = model_of()
    given = (6, genders(6).astype(dtype), countries(6).astype(dtype), produce_nans)
    assert_same_outcome(
        lambda: model._sample_conditional(*given),
        lambda: readings.sample_conditional(model, *given),
        4,
        model,
    )


@pytest.mark.parametrize(
    "index", [[5, 6, 7, 8, 9], [4, 3, 2, 1, 0], [0, 0, 1, 1, 2], list("abcde")]
)
@pytest.mark.parametrize("both", [True, False])
@pytest.mark.parametrize("keys", [KEYS, ["F", "M"]])
def test_conditions_with_another_index_do_as_the_reading_does(
    index: list[Any], both: bool, keys: list[Any]
) -> None:
    model = model_of()
    placed = countries(5).set_axis(index) if both else countries(5)
    given = (5, genders(5, keys).set_axis(index), placed)
    assert_same_outcome(
        lambda: model._sample_conditional(*given),
        lambda: readings.sample_conditional(model, *given),
        5,
        model,
    )


@pytest.mark.parametrize("rows", [3, 8])
def test_conditions_of_another_length_do_as_the_reading_does(rows: int) -> None:
    model = model_of()
    given = (5, genders(rows), countries(rows))
    assert_same_outcome(
        lambda: model._sample_conditional(*given),
        lambda: readings.sample_conditional(model, *given),
        6,
        model,
    )


def test_conditions_with_a_reversed_index_are_aligned_by_label() -> None:
    placed = countries(3).set_axis([2, 1, 0])
    made = sampled(model_of(only("country")), 3, country_conditions=placed, produce_nans=False)
    assert made["country"].tolist() == ["DE", "US", "GB"]


def test_the_same_seed_gives_the_same_rows() -> None:
    model = model_of()
    seed_sources(9, model)
    first = sampled(model, 30)
    seed_sources(9, model)
    assert_identical(sampled(model, 30), first)


def test_another_seed_gives_other_rows() -> None:
    model = model_of()
    seed_sources(9, model)
    first = sampled(model, 30)
    seed_sources(10, model)
    assert not sampled(model, 30).equals(first)


def test_the_models_own_generators_are_not_drawn_from() -> None:
    model = model_of()
    seed_sources(1, model)
    before = source_states(model)
    sampled(model, 30)
    after = source_states(model)
    drawn_from = [name for name in before if before[name] != after[name]]
    assert drawn_from == ["random", "numpy", "faker", "providers"]

"""Tells whether two runs made the same table and left every random source alike."""

from collections.abc import Callable
from typing import Any

import pandas as pd

from support.columns import assert_same_column, outcome
from support.sources import seed_sources, source_states
from vantrel.model.models.person import PersonModel


def assert_identical(got: Any, expected: Any) -> None:
    """Compares values, the types of the elements, dtypes, indexes and names."""
    if isinstance(expected, pd.Series):
        assert_same_column(got, expected)
    elif isinstance(expected, pd.DataFrame):
        assert type(got) is type(expected)
        pd.testing.assert_index_equal(got.index, expected.index, exact=True)
        assert got.columns.tolist() == expected.columns.tolist()
        for position in range(len(expected.columns)):
            assert_same_column(got.iloc[:, position], expected.iloc[:, position])
    else:
        assert type(got) is type(expected)
        assert repr(got) == repr(expected)


def assert_same_outcome(
    call: Callable[[], Any],
    reading: Callable[[], Any],
    seed: int,
    model: PersonModel | None = None,
) -> Any:
    """Runs both from one seed: same result or same error, and every source left alike.

    Returns:
        The result, or None where both raised.
    """
    seed_sources(seed, model)
    got, error = outcome(call)
    states = source_states(model)
    seed_sources(seed, model)
    expected, expected_error = outcome(reading)
    assert (type(error), str(error)) == (type(expected_error), str(expected_error))
    assert states == source_states(model)
    assert_identical(got, expected)
    return got

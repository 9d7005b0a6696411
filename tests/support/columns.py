"""Comparing two columns, and catching what a call does."""

from collections.abc import Callable
from typing import Any

import pandas as pd

Call = Callable[[], Any]


def assert_same_column(got: Any, expected: Any) -> None:
    """Same values of the same types, in the same dtype, with the same index and name."""
    assert type(got) is type(expected)
    assert got.dtype == expected.dtype
    assert repr(got.dtype) == repr(expected.dtype)
    assert got.name == expected.name
    pd.testing.assert_index_equal(got.index, expected.index, exact=True)
    assert [type(value) for value in got] == [type(value) for value in expected]
    assert [repr(value) for value in got] == [repr(value) for value in expected]


def outcome(call: Callable[[], Any]) -> tuple[Any, Exception | None]:
    """What a call returned, or what it raised."""
    try:
        return call(), None
    except Exception as error:  # noqa: BLE001 - whatever it is, it is what the caller compares
        return None, error

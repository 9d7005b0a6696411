"""Columns of usernames: names of every kind, and errors of pandas."""

from typing import Any

import numpy as np
import pandas as pd
import pytest

from support.providers import DTYPES, LOCALES, countries_of, model_of_kind
from support.usernames import assert_reads_alike


@pytest.mark.parametrize("rows", [0, 1, 2, 300])
@pytest.mark.parametrize("seed", [0, 2026])
@pytest.mark.parametrize("names", ["different", "few", "one"])
def test_a_column_is_made_as_the_reading_makes_it(rows: int, seed: int, names: str) -> None:
    distinct = {"different": 1000, "few": 7, "one": 1}[names]
    firstnames = pd.Series([f"Ann{i % distinct}" for i in range(rows)], dtype="object")
    lastnames = pd.Series([f"O Lee{i % distinct}" for i in range(rows)], dtype="object")
    usernames = assert_reads_alike(firstnames, lastnames, seed)
    assert usernames.nunique() == rows


@pytest.mark.parametrize("locale", LOCALES)
def test_names_of_every_locale_read_alike(locale: str) -> None:
    model = model_of_kind("separate")
    countries = pd.Series([locale] * 40)
    firstnames = model.generate_first_names(pd.Series(["F", "M"] * 20), countries)
    assert_reads_alike(firstnames, model.generate_last_names(firstnames, countries))


@pytest.mark.parametrize("dtype", DTYPES, ids=str)
@pytest.mark.parametrize("last_dtype", ["object", "string", "category"])
def test_names_may_have_any_dtype(dtype: Any, last_dtype: str) -> None:
    firstnames = pd.Series(["Ann", "Bo", "Ann", "Mary Ann"] * 5, dtype=dtype)
    lastnames = pd.Series(["Lee", "Cho", "Lee", "Li"] * 5, dtype=last_dtype)
    assert assert_reads_alike(firstnames, lastnames) is not None


@pytest.mark.parametrize(
    "others", [["Lee", "Cho"], ("Lee", "Cho"), np.array(["Lee", "Cho"], object)]
)
def test_last_names_may_be_what_pandas_can_join(others: Any) -> None:
    assert_reads_alike(pd.Series(["Ann", "Bo"]), others)


@pytest.mark.parametrize(
    ("firstnames", "lastnames"),
    [
        (pd.Series(["Ann", "Bo"]), ["Lee"]),
        (pd.Series(["Ann", "Bo"]), 7),
        (pd.Series(["Ann", "Bo"]), None),
        (pd.Series(["Ann", "Bo"]), pd.Series([1, 2])),
        (pd.Series([1, 2]), pd.Series(["Lee", "Cho"])),
        (pd.Series([["Ann"]]), pd.Series(["Lee"])),
        (pd.Series(["Ann", "Bo"]), pd.Series(["Lee", "Cho"], index=[0, 0])),
    ],
    ids=["short", "int", "none", "int last", "int first", "list", "repeated labels"],
)
def test_errors_of_pandas_propagate_unchanged(firstnames: Any, lastnames: Any) -> None:
    assert assert_reads_alike(firstnames, lastnames) is None


@pytest.mark.parametrize("index", [[0, 0, 1, 1], [5, 5, 5, 5], [3, 2, 1, 0]])
@pytest.mark.parametrize("names", [["Ann"] * 4, ["Ann", "Ann", "Bo", "Cy"]])
def test_clashes_on_any_index_do_what_pandas_does(index: list[int], names: list[str]) -> None:
    assert_reads_alike(pd.Series(names, index=index), pd.Series(["Lee"] * 4, index=index))


def test_names_of_a_mixed_table_read_alike() -> None:
    model = model_of_kind("shared")
    countries = countries_of(model, 120)
    firstnames = model.generate_first_names(pd.Series(["F", "M", "NB"] * 40), countries)
    lastnames = model.generate_last_names(firstnames, countries)
    assert assert_reads_alike(firstnames, lastnames) is not None

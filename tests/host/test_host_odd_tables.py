"""Odd tables, read cell by cell, and what is written read again."""

from __future__ import annotations

import csv
import gzip
import io
from collections.abc import Callable
from pathlib import Path
from typing import Any

import pandas as pd
import pytest
from backports import zstd
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

from vantrel.tables import open_table, read_table, write_table

Cell = str | None
Rows = list[list[Cell]]

settings_of_all = settings(
    max_examples=60,
    deadline=None,
    derandomize=True,
    suppress_health_check=[HealthCheck.function_scoped_fixture],
)

# Signs that CSV, its readers or the engine give a meaning to, among others.
_ODD = list(",;\t|\"'\r\n #\\0=NULLnaé€😀\ufeff\u2028\x00\x1a")
texts = st.text(st.sampled_from(_ODD), max_size=6) | st.text(
    st.characters(codec="utf-8", exclude_categories=["Cs"]), max_size=6
)
cells: st.SearchStrategy[Cell] = st.none() | texts


def tables_of(cell: st.SearchStrategy[Any], name: st.SearchStrategy[str] = texts) -> Any:
    """Names of columns, and rows of as many cells."""
    names = st.lists(name.filter(lambda text: text.strip()), min_size=1, max_size=4, unique=True)
    return names.flatmap(
        lambda columns: st.tuples(
            st.just(columns),
            st.lists(
                st.lists(cell, min_size=len(columns), max_size=len(columns)), min_size=1, max_size=8
            ),
        )
    )


def written(
    names: list[str], rows: Rows, *, separator: str = ",", end: str = "\n", quoted: bool = False
) -> str:
    """Writes CSV as its definition says: a missing value without quotes, an empty one with."""

    def cell(value: Cell) -> str:
        if value is None:
            return ""
        asks = quoted or not value or any(sign in value for sign in f'{separator}"\r\n')
        return '"' + value.replace('"', '""') + '"' if asks else value

    return "".join(separator.join(map(cell, row)) + end for row in [names, *rows])


def cells_of(df: pd.DataFrame) -> Rows:
    values: Rows = df.astype(object).where(df.notna(), None).to_numpy().tolist()
    return values


def check(path: Path, names: list[str], rows: Rows, **options: Any) -> None:
    """Reads a table as a whole and in parts."""
    with open_table(path, **options) as table:
        assert table.columns == names
        assert cells_of(table.frame()) == rows
        assert cells_of(pd.concat(list(table.batches(rows=2048)))) == rows


@settings_of_all
@given(tables_of(cells), st.sampled_from(["\n", "\r\n"]), st.booleans())
def test_every_cell_of_csv_is_read_as_it_was_written(
    tmp_path: Path, table: tuple[list[str], Rows], end: str, quoted: bool
) -> None:
    names, rows = table
    path = tmp_path / "t.csv"
    path.write_bytes(written(names, rows, end=end, quoted=quoted).encode())
    check(path, names, rows, separator=",")

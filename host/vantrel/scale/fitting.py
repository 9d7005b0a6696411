"""Fits a model on a table in parts, each of which is counted where it is."""

from __future__ import annotations

from pathlib import Path
from typing import Any, Unpack

import dask.dataframe as dd
import pandas as pd
from dask.base import compute
from dask.delayed import delayed

from vantrel import fitting as whole
from vantrel.errors import TableError
from vantrel.fitting import FitKeywords
from vantrel.hints import named
from vantrel.model.models.person import PersonModel
from vantrel.tables import TableCounts, count_frame, merged, open_table


def fit(table: dd.DataFrame | str | Path, **asked: Unpack[FitKeywords]) -> PersonModel:
    """Learns from a table of people that need not fit into memory.

    The model is that of :func:`vantrel.fit` on the whole table, to the bit, however the table is
    cut into partitions. The first pass looks for columns and ends where enough was seen; the
    second counts each partition for itself.

    Args:
        table: A Dask frame, or a folder of Parquet files.
        asked: What :func:`vantrel.fit` takes by name.

    Raises:
        VantrelError: As :func:`vantrel.fit` raises them.
        TableError: The folder cannot be read.
    """
    parts = _Folder(Path(table)) if isinstance(table, str | Path) else _Frame(table)
    return whole.fit(parts, **asked)


class _Frame:
    """A Dask frame."""

    def __init__(self, frame: dd.DataFrame) -> None:
        self._frame = frame

    def excerpt(self, rows: int) -> pd.DataFrame:
        """The first values of each column, from as many partitions as have enough of them."""
        found = self._frame.partitions[0].compute()
        for number in range(1, self._frame.npartitions):
            if all(found.notna().sum() >= rows):
                break
            more = self._frame.partitions[number].compute()
            found = pd.concat([_first_values(found, rows), _first_values(more, rows)])
        return _first_values(found, rows)

    def count(self, columns: list[str], labelled: list[str]) -> TableCounts:
        """Counts each partition where it is, and adds up."""
        parts = self._frame[list(dict.fromkeys([*columns, *labelled]))].to_delayed()
        count = delayed(count_frame)
        return _merged([count(part, columns, labelled) for part in parts])


class _Folder:
    """A folder of Parquet files, the rows of which come in the order of the files' names."""

    def __init__(self, folder: Path) -> None:
        self._folder = folder
        self._files = sorted(folder.glob("*.parquet"))
        if not self._files:
            raise TableError(
                f"Folder {named(folder)} holds no Parquet files: name a folder of them."
            )

    def excerpt(self, rows: int) -> pd.DataFrame:
        """The first values of each column."""
        with open_table(self._folder) as table:
            return table.excerpt(rows)

    def count(self, columns: list[str], labelled: list[str]) -> TableCounts:
        """Counts each file for itself, and adds up."""
        count = delayed(_count_file)
        return _merged([count(file, columns, labelled) for file in self._files])


def _merged(tasks: list[Any]) -> TableCounts:
    return merged(compute(*tasks))


def _count_file(file: Path, columns: list[str], labelled: list[str]) -> TableCounts:
    with open_table(file, may_be_empty=True) as table:
        return table.count(columns, labelled)


def _first_values(df: pd.DataFrame, rows: int) -> pd.DataFrame:
    """Moves the values of each column to its top, and cuts off what need not be seen."""
    values = {column: df[column].dropna().iloc[:rows].reset_index(drop=True) for column in df}
    return pd.DataFrame(values, columns=df.columns)

"""Fits a model on a table in parts, each of which is counted where it is."""

from __future__ import annotations

from collections.abc import Iterable, Sequence
from pathlib import Path
from typing import TYPE_CHECKING, Any

import pandas as pd

from vantrel.config import PersonModelConfig
from vantrel.counted import fit_counts, learnt_columns
from vantrel.detect import detect_columns
from vantrel.detect.values import SAMPLE_SIZE
from vantrel.fitting import (
    FittingError,
    check_columns,
    check_countries,
    make_person,
    refuse_unknown_attribute,
)
from vantrel.tables import TableCounts, TableError, count_frame, merged, open_table
from vantrel.util.arguments import refuse_text

try:
    import dask.dataframe as dd
    from dask.base import compute
    from dask.delayed import delayed
except ImportError as error:
    raise ImportError("vantrel.scale.fit needs Dask: pip install 'dask[dataframe]'.") from error

if TYPE_CHECKING:
    from vantrel.model.models.person import PersonModel


def fit(
    table: dd.DataFrame | str | Path,
    *,
    generate: Iterable[str] = (),
    locales: Sequence[str] | None = None,
    config: PersonModelConfig | None = None,
    **columns: str,
) -> PersonModel:
    """Learns from a table of people that need not fit into memory.

    The model is that of :func:`vantrel.fit` on the whole table, to the bit, however the table is
    cut into partitions. The first pass looks for columns and ends where enough was seen; the
    second counts each partition for itself.

    Args:
        table: A Dask frame, or a folder of Parquet files.
        generate: As :func:`vantrel.fit` takes it.
        locales: As :func:`vantrel.fit` takes it.
        config: As :func:`vantrel.fit` takes it.
        columns: The column of each attribute. If there are none, the columns are found.

    Raises:
        FittingError: An attribute or a column is not known, holds missing values only or unknown
            countries, or no column was found.
        TableError: The folder cannot be read.
    """
    refuse_text(generate, "generate", "attributes")
    refuse_text(locales, "locales", "locales")
    generated = list(generate)
    parts = _Folder(Path(table)) if isinstance(table, str | Path) else _Frame(table)
    for attribute in (*columns, *generated):
        refuse_unknown_attribute(attribute)
    first = parts.excerpt()
    columns = columns or detect_columns(first)
    if not columns:
        raise FittingError(
            f"No columns of people were found among {', '.join(map(repr, first.columns))}: name"
            " them."
        )
    check_columns(first, columns, "The table")
    meta = make_person(columns, generated, locales)
    labelled = [column for column in first.columns if column in meta.params.values()]
    counts = merged(parts.counts(learnt_columns(meta), labelled))
    if country := meta.params.get("country"):
        check_countries(counts.values[country], country)
    return fit_counts(counts, list(first.columns), meta, config or PersonModelConfig())


class _Frame:
    """A Dask frame."""

    def __init__(self, frame: dd.DataFrame) -> None:
        self._frame = frame

    def excerpt(self) -> pd.DataFrame:
        """The first values of each column, from as many partitions as have enough of them."""
        found = self._frame.partitions[0].compute()
        for number in range(1, self._frame.npartitions):
            if all(found.notna().sum() >= SAMPLE_SIZE):
                break
            more = self._frame.partitions[number].compute()
            found = pd.concat([_first_values(found), _first_values(more)])
        return _first_values(found)

    def counts(self, columns: list[str], labelled: list[str]) -> Sequence[TableCounts]:
        parts = self._frame[list(dict.fromkeys([*columns, *labelled]))].to_delayed()
        count = delayed(count_frame)
        return _computed([count(part, columns, labelled) for part in parts])


class _Folder:
    """A folder of Parquet files, the rows of which come in the order of the files' names."""

    def __init__(self, folder: Path) -> None:
        self._folder = folder
        self._files = sorted(folder.glob("*.parquet"))
        if not self._files:
            raise TableError(f"Folder {folder} holds no Parquet files: name a folder of them.")

    def excerpt(self) -> pd.DataFrame:
        """The first values of each column."""
        with open_table(self._folder) as table:
            return table.excerpt(SAMPLE_SIZE)

    def counts(self, columns: list[str], labelled: list[str]) -> Sequence[TableCounts]:
        count = delayed(_count_file)
        return _computed([count(file, columns, labelled) for file in self._files])


def _computed(tasks: list[Any]) -> Sequence[TableCounts]:
    counts: tuple[TableCounts, ...] = compute(*tasks)
    return counts


def _count_file(file: Path, columns: list[str], labelled: list[str]) -> TableCounts:
    with open_table(file, may_be_empty=True) as table:
        return table.count(columns, labelled)


def _first_values(df: pd.DataFrame) -> pd.DataFrame:
    """Moves the values of each column to its top, and cuts off what need not be seen."""
    values = {
        column: df[column].dropna().iloc[:SAMPLE_SIZE].reset_index(drop=True) for column in df
    }
    return pd.DataFrame(values, columns=df.columns)

"""Between tables as users have them and batches of Arrow, with types and missing values kept."""

from __future__ import annotations

import sys
from collections.abc import Iterable, Mapping
from typing import Any

import numpy as np
import pandas as pd
import pyarrow as pa
import pyarrow.compute as pc

from vantrel.detection.values import SAMPLE_SIZE
from vantrel.replacing.values.gaps import GAPS
from vantrel.replacing.values.keys import as_texts, is_text
from vantrel.wording import cell_text


def excerpt(table: pd.DataFrame | pa.Table) -> pd.DataFrame:
    """Gives as much of a table as tells what its columns are."""
    if isinstance(table, pd.DataFrame):
        return table
    columns = zip(table.column_names, table.columns, strict=True)
    return excerpt_of({name: beginning(column, SAMPLE_SIZE) for name, column in columns})


def excerpt_of(columns: Mapping[str, pa.ChunkedArray]) -> pd.DataFrame:
    """The same of columns of texts, which need not have equally many values."""
    return pd.DataFrame({name: pd.Series(_values(column)) for name, column in columns.items()})


def beginning(column: Any, rows: int) -> pa.ChunkedArray:
    """Gives the texts of the first rows, beside those of other columns, and then values alone."""
    first = as_texts(_joined(column[:rows]))
    first = pc.if_else(pc.equal(first, ""), pa.scalar(None, pa.string()), first)
    wanted = max(SAMPLE_SIZE - count_of(first), 0)
    further = _joined(without_gaps(column[rows:])[:wanted] if wanted else column[:0])
    return pa.chunked_array([first, as_texts(further)])


def count_of(column: Any) -> int:
    """The number of values that are not missing."""
    return len(column) - int(column.null_count)


def without_gaps(column: Any) -> Any:
    """Gives an array without what is missing or a text that stands for nothing."""
    column = column.drop_null()
    if not is_text(column.type):
        return column
    texts = column.cast(pa.string())
    return texts.filter(pc.invert(pc.is_in(texts, GAPS)))


def arrow_of(table: pd.DataFrame | pa.Table, columns: Iterable[str] | None = None) -> pa.Table:
    """Gives columns of a table as Arrow, all if None."""
    if not isinstance(table, pd.DataFrame):
        return table if columns is None else table.select(list(columns))
    names = list(table.columns) if columns is None else list(columns)
    return pa.Table.from_arrays(
        [_array(table[name]) for name in names], names=list(map(str, names))
    )


def with_columns(table: pd.DataFrame | pa.Table, made: Mapping[str, pa.ChunkedArray]) -> Any:
    """Gives a table of the same kind in which some columns have new values."""
    if isinstance(table, pd.DataFrame):
        return table.assign(**{name: _series(made[name], table[name]) for name in made})
    for name, column in made.items():
        place = table.column_names.index(name)
        field = table.schema.field(place).with_type(column.type)  # more values, wider indices
        table = table.set_column(place, field, column)
    return table


def like(made: pa.Table, given: Any) -> Any:
    """Gives an Arrow table as what was given: of pyarrow or polars, or else a frame of pandas."""
    if isinstance(given, pa.Table):
        return made
    if type(given).__module__.partition(".")[0] == "polars":
        return sys.modules["polars"].from_arrow(made)
    return made.to_pandas()


def _array(series: pd.Series) -> pa.Array:
    try:
        return _joined(pa.array(series, from_pandas=True))
    except (pa.ArrowException, TypeError, ValueError, OverflowError):  # of several types
        texts = np.full(len(series), None, dtype=object)
        is_there = series.notna().to_numpy()
        texts[is_there] = [cell_text(value) for value in series[is_there]]
        return pa.array(texts, pa.string())


def _joined(column: pa.Array | pa.ChunkedArray) -> pa.Array:
    """Gives a column as one array."""
    if not isinstance(column, pa.ChunkedArray):
        return column
    joined = column.combine_chunks()
    if isinstance(joined, pa.ChunkedArray):  # none, or more than one can hold
        joined = pa.concat_arrays(joined.chunks) if joined.num_chunks else pa.array([], column.type)
    return joined


def _values(column: pa.Array | pa.ChunkedArray) -> Any:
    values = np.empty(len(column), dtype=object)
    values[:] = column.to_pylist()
    return values


def _series(made: pa.ChunkedArray, like: pd.Series) -> pd.Series:
    """Gives new values as a column of the type of the old one, with the old missing values."""
    values = like.to_numpy(dtype=object, copy=True)
    is_there = like.notna().to_numpy()
    values[is_there] = _values(made)[is_there]
    if isinstance(like.dtype, pd.CategoricalDtype):
        texts = pd.Categorical(values, ordered=like.dtype.ordered)
        return pd.Series(texts, index=like.index, name=like.name)
    dtype = like.dtype
    if made.null_count and dtype.kind in "biu":  # of NumPy, which knows no missing ones of these
        dtype = like.iloc[:0].convert_dtypes().dtype
    return pd.Series(values, index=like.index, name=like.name, dtype=dtype)

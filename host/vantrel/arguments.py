"""Takes tables, models and lists from a caller, and says in one line what is wanted instead."""

from __future__ import annotations

import os
from typing import TYPE_CHECKING, Any

import pandas as pd

from vantrel.errors import ArgumentError, ArgumentTypeError, MissingPackageError
from vantrel.hints import argument, listed
from vantrel.model.models.person import PersonModel

if TYPE_CHECKING:
    import pyarrow as pa


def as_frame(table: Any, what: str = "A table") -> pd.DataFrame:
    """Gives a table as a frame of pandas, and refuses what is none or has two columns of one name.

    Args:
        table: A frame of pandas, which comes back as it is, or anything that offers itself as an
            Arrow stream (a frame of polars, a relation of DuckDB, a table of pyarrow), whose values
            become texts.
        what: What an error calls it.
    """
    if isinstance(table, pd.DataFrame):
        frame = table
    elif hasattr(table, "__arrow_c_stream__") and not isinstance(table, pd.Series):
        frame = _from_arrow(table, what)
    else:
        raise _no_table(table, what)
    if frame.columns.nlevels > 1:
        raise ArgumentError(
            f"{what} has columns of {frame.columns.nlevels} levels: give each one name, as in"
            " df.columns = df.columns.map('_'.join)."
        )
    doubled = frame.columns[frame.columns.duplicated()].unique()
    if len(doubled):
        raise ArgumentError(
            f"Columns are there twice: {listed(doubled)}. Give each one name of its own."
        )
    return _without_views(frame)


def _without_views(frame: pd.DataFrame) -> pd.DataFrame:
    """Gives a frame without Arrow's views of texts, with which pandas can do little."""
    is_view = (frame.dtypes.astype(str) == "string_view[pyarrow]").to_numpy()
    if not is_view.any():
        return frame
    import pyarrow as pa

    texts: dict[Any, Any] = {
        name: _as_text(pa.chunked_array([pa.array(frame[name].array)])).set_axis(frame.index)
        for name in frame.columns[is_view]
    }
    kept = {name: texts.get(name, frame[name]) for name in frame}
    return pd.DataFrame(kept, index=frame.index, columns=frame.columns)


def _from_arrow(table: Any, what: str) -> pd.DataFrame:
    try:
        import pyarrow as pa
    except ModuleNotFoundError as error:
        raise MissingPackageError.of(f"{what} that comes by Arrow", "pyarrow", "parquet") from error
    try:
        return _text_frame(pa.table(table))
    except (pa.ArrowException, TypeError, ValueError) as error:  # a stream of one column, perhaps
        raise _no_table(table, what) from error


def _text_frame(table: pa.Table) -> pd.DataFrame:
    """Gives an Arrow table as a frame in which every value is a text or missing."""
    texts = [_as_text(column) for column in table.columns]
    made = pd.DataFrame(dict(enumerate(texts)), index=pd.RangeIndex(table.num_rows))
    return made.set_axis(table.column_names, axis="columns")


def _as_text(column: pa.ChunkedArray) -> pd.Series:
    import pyarrow as pa

    try:
        texts = column.cast(pa.string())
    except (pa.ArrowNotImplementedError, pa.ArrowInvalid):  # lists, bytes and the like
        written = [None if value is None else str(value) for value in column.to_pylist()]
        texts = pa.array(written, pa.string())
    series: pd.Series = texts.to_pandas()
    return series


def _no_table(table: object, what: str) -> ArgumentTypeError:
    remedy = " Read a file first, as with pandas.read_csv." if isinstance(table, str) else ""
    return ArgumentTypeError(
        f"{what} is a pandas DataFrame, or of polars, DuckDB or pyarrow; this is"
        f" {kind_of(table)}.{remedy}"
    )


def check_model(model: object) -> None:
    """Refuses what is given for a model and is none."""
    if not isinstance(model, PersonModel):
        raise ArgumentTypeError(
            f"A model is what vantrel.fit makes or vantrel.load reads; this is {kind_of(model)}."
        )


def check_path(path: object) -> None:
    """Refuses what is given for a path and is none."""
    if not isinstance(path, (str, os.PathLike)):
        raise ArgumentTypeError(f"A path is a str or a pathlib.Path; this is {kind_of(path)}.")


def refuse_text(value: object, name: str, items: str) -> None:
    """Refuses a text in the place of several, which would be taken for its single characters.

    Args:
        value: The argument of a call.
        name: Its name.
        items: What it should be several of.
    """
    if isinstance(value, str):
        raise ArgumentTypeError(f"{name!r} is a list of {items}: write {argument(name, [value])}.")


def kind_of(value: object) -> str:
    """Names the type of a value, and nothing of what it holds."""
    if value is None:
        return "None"
    name = type(value).__name__
    return f"{'an' if name[0].lower() in 'aeiou' else 'a'} {name}"

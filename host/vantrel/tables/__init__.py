"""Reads and writes tables of people, as CSV or as Parquet by the end of the file's name."""

from __future__ import annotations

from collections.abc import Iterable
from pathlib import Path
from typing import TYPE_CHECKING

from vantrel.storage.files import replacing
from vantrel.tables.csv_files import read_csv, write_csv
from vantrel.tables.errors import TableError
from vantrel.tables.names import refuse_to_read, refuse_to_write
from vantrel.tables.parquet_files import read_parquet, require_pyarrow, write_parquet

if TYPE_CHECKING:
    import pandas as pd

__all__ = ["TableError", "is_parquet", "read_table", "write_csv", "write_table"]


def is_parquet(path: Path) -> bool:
    """Tells by its name whether a table is a Parquet file; a folder is one of Parquet files."""
    return path.suffix.lower() in (".parquet", ".pq") or path.is_dir()


def read_table(path: Path) -> pd.DataFrame:
    """Reads a table with a header, every value as text.

    Only an empty cell of a CSV table is a missing value: the country code NA and leading zeros
    stay.

    Returns:
        A frame of at least one row.

    Raises:
        TableError: The file cannot be read, is no such table or has no rows.
    """
    if not path.is_dir():
        refuse_to_read(path)
    df = read_parquet(path) if is_parquet(path) else read_csv(path)
    if df.empty:
        raise TableError(f"Table {path} has a header but no rows: give it at least one.")
    return df


def write_table(
    frames: Iterable[pd.DataFrame], path: Path, *, spreadsheet_safe: bool = False
) -> None:
    """Writes a table that comes in parts, whole or not at all.

    What is written depends on the rows alone, not on the parts they come in.

    Args:
        frames: At least one part; all have the same columns, of text.
        path: A Parquet file if its name ends so, else CSV.
        spreadsheet_safe: Whether cells of CSV are guarded that a spreadsheet would run.

    Raises:
        OSError: The file cannot be written.
        TableError: It is Parquet and pyarrow is not installed, or its name is of a compressed file
            or of a spreadsheet's.
    """
    refuse_to_write(path)
    if is_parquet(path):
        require_pyarrow(path)
        with replacing(path, binary=True) as file:
            write_parquet(frames, file)
    else:
        with replacing(path) as file:
            write_csv(frames, file, spreadsheet_safe=spreadsheet_safe)

"""Reads and writes tables of people."""

import csv
from contextlib import suppress
from pathlib import Path
from typing import TextIO

import pandas as pd
from pandas.errors import EmptyDataError, ParserError

from vantrel.files import replacing


class TableError(ValueError):
    """A table cannot be read, or holds nothing to learn from."""


def read_table(path: Path) -> pd.DataFrame:
    """Reads a CSV table with a header, every value as text.

    Only an empty cell is a missing value: the country code NA and leading zeros stay.

    Returns:
        A frame of at least one row.

    Raises:
        TableError: The file cannot be read, is no such table or has no rows.
    """
    try:
        df = pd.read_csv(path, dtype=str, keep_default_na=False, na_values=[""])
    except EmptyDataError:
        raise TableError(f"Table {path} is empty: give it a header and at least one row.") from None
    except OSError as error:
        raise TableError(f"Table {path} cannot be read: {error.strerror or error}.") from error
    except UnicodeDecodeError as error:
        raise TableError(f"Table {path} is not in UTF-8: save it in that encoding.") from error
    except ParserError as error:
        reason = _ragged_row(path) or " ".join(str(error).split())
        raise TableError(f"Table {path} is no CSV table: {reason}") from error
    if not isinstance(df.index, pd.RangeIndex):  # pandas made the surplus an index
        reason = _ragged_row(path) or "it has rows with more values than its header has names."
        raise TableError(f"Table {path} is no CSV table: {reason}")
    if df.empty:
        raise TableError(f"Table {path} has a header but no rows: give it at least one.")
    return df


def _ragged_row(path: Path) -> str | None:
    """Tells the first row that is longer than the header, if the file can be read again."""
    if not path.is_file():
        return None
    with path.open(encoding="utf-8-sig", newline="") as file:
        rows = csv.reader(file)
        with suppress(csv.Error, UnicodeDecodeError):
            width = len(next(filter(None, rows), []))
            for row in rows:
                if len(row) > width:
                    return f"line {rows.line_num} has {len(row)} values, the header {width}."
    return None


def write_table(df: pd.DataFrame, path: Path) -> None:
    """Writes a table as CSV, missing values as empty cells, whole or not at all.

    Raises:
        OSError: The file cannot be written.
    """
    with replacing(path) as file:
        write_csv(df, file)


def write_csv(df: pd.DataFrame, file: TextIO) -> None:
    """Writes a table as CSV to an open file, missing values as empty cells.

    Raises:
        OSError: The file cannot be written.
    """
    df.to_csv(file, index=False, lineterminator="\n")
    file.flush()

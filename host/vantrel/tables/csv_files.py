"""CSV tables."""

from __future__ import annotations

import csv
import shlex
from collections.abc import Iterable
from io import BytesIO
from pathlib import Path
from typing import IO, Any, Literal

import pandas as pd
from pandas.errors import EmptyDataError, ParserError

from vantrel.tables.csv_rows import doubled_names, is_utf_16, last_row, ragged_row, read_header
from vantrel.tables.errors import TableError
from vantrel.tables.guard import guarded


def read_csv(path: Path) -> pd.DataFrame:
    """Reads a table, every value as text, empty cells as missing.

    Raises:
        TableError: The file cannot be read or is no such table.
    """
    try:
        with path.open("rb") as raw:
            file = raw if raw.seekable() else BytesIO(raw.read())
            if is_utf_16(file):
                raise _not_in_utf_8(path, "is in UTF-16", "utf-16")
            return _parsed(file, path)
    except OSError as error:
        raise TableError.unreadable(path, error) from error
    except UnicodeDecodeError as error:
        raise _not_in_utf_8(path, "is not in UTF-8", "cp1252") from error


def _not_in_utf_8(path: Path, finding: str, likely: str) -> TableError:
    converted = path.with_name(f"{path.stem}.utf-8.csv")
    files = f"{shlex.quote(str(path))} > {shlex.quote(str(converted))}"
    return TableError(
        f"Table {path} {finding}: save it as CSV UTF-8, or convert it, as in"
        f" iconv -f {likely} -t utf-8 {files}"
    )


def _parsed(file: IO[bytes], path: Path) -> pd.DataFrame:
    header = read_header(file)
    if doubled := doubled_names(header):
        raise TableError(
            f"Table {path} has several columns of one name: {', '.join(map(repr, doubled))}. Give"
            " each a name of its own."
        )
    one_column = len(header.names) == 1
    try:
        df = pd.read_csv(
            file,
            dtype=str,
            keep_default_na=False,
            na_values=[""],
            # In a table of one column a blank line is a missing value.
            skip_blank_lines=not one_column,
            skiprows=header.blank_lines if one_column else 0,
        )
    except EmptyDataError:
        raise TableError(f"Table {path} is empty: give it a header and at least one row.") from None
    except ParserError as error:
        raise TableError(f"Table {path} is no CSV table: {_reason(file, str(error))}") from error
    if not isinstance(df.index, pd.RangeIndex):  # pandas made the surplus an index
        reason = ragged_row(file) or "it has rows with more values than its header has names."
        raise TableError(f"Table {path} is no CSV table: {reason}")
    return df


def _reason(file: IO[bytes], error: str) -> str:
    if "EOF inside string" in error:
        line = last_row(file)
        return f"the row that begins in line {line} has a quotation mark that is never closed."
    return ragged_row(file) or " ".join(error.split())


def write_csv(
    frames: Iterable[pd.DataFrame], file: IO[str], *, spreadsheet_safe: bool = False
) -> None:
    """Writes a table that comes in parts to an open file, missing values as empty cells.

    Args:
        frames: At least one part; all have the same columns.
        file: Where to write to.
        spreadsheet_safe: Whether to put an apostrophe before each cell that a spreadsheet would
            run as a formula, and quotes around every cell, so that none is split where other
            characters than commas separate.

    Raises:
        OSError: The file cannot be written.
    """
    quoting: Literal[0, 1] = csv.QUOTE_ALL if spreadsheet_safe else csv.QUOTE_MINIMAL
    lines: Any = _Lines(file)  # pandas calls nothing but write
    end = _Lines.END
    for number, frame in enumerate(frames):
        part = guarded(frame) if spreadsheet_safe else frame
        part.to_csv(lines, index=False, header=number == 0, lineterminator=end, quoting=quoting)
    file.flush()


class _Lines:
    """Ends lines in a line feed alone.

    They come with a carriage return before it: only then are values quoted that hold one, which
    readers would take for the end of a line.
    """

    END = "\r\n"

    def __init__(self, file: IO[str]) -> None:
        self._file = file

    def write(self, line: str) -> int:
        return self._file.write(line.removesuffix(self.END) + "\n")

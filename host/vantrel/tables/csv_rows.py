"""Looks at a CSV file row by row, for what pandas does not tell."""

from __future__ import annotations

import csv
from collections.abc import Iterator
from contextlib import contextmanager, suppress
from io import TextIOWrapper
from typing import IO, NamedTuple


class Header(NamedTuple):
    """The first row of a file that is not blank.

    Attributes:
        names: The names of the columns; none where all rows are blank.
        blank_lines: How many there are before it.
    """

    names: list[str]
    blank_lines: int


def read_header(file: IO[bytes]) -> Header:
    """Reads the first row of a file and goes back to its start.

    Raises:
        UnicodeDecodeError: The row, or what was read with it, is not in UTF-8.
    """
    with _texts(file) as text, suppress(csv.Error):
        for above, row in enumerate(csv.reader(text)):
            if row and not "".join(row).isspace():
                return Header(row, above)
    return Header([], 0)


def ragged_row(file: IO[bytes]) -> str | None:
    """Tells the first row that is longer than the header, and goes back to the file's start."""
    with _texts(file) as text, suppress(csv.Error, UnicodeDecodeError):
        rows = csv.reader(text)
        width = len(next(filter(None, rows), []))
        for row in rows:
            if len(row) > width:
                return f"line {rows.line_num} has {len(row)} values, the header {width}."
    return None


@contextmanager
def _texts(file: IO[bytes]) -> Iterator[TextIOWrapper]:
    file.seek(0)
    text = TextIOWrapper(file, encoding="utf-8-sig", newline="")
    try:
        yield text
    finally:
        text.detach()
        file.seek(0)

"""Looks at a CSV file row by row, for what pandas does not tell."""

from __future__ import annotations

import csv
from codecs import BOM_UTF16_BE, BOM_UTF16_LE
from collections import Counter
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


def last_row(file: IO[bytes]) -> int:
    """Tells in which line, from 1 on, the last row begins, and goes back to the file's start."""
    last = following = 1
    with _texts(file) as text:
        rows = csv.reader(text)
        try:
            for _ in rows:
                last, following = following, rows.line_num + 1
        except csv.Error:  # a cell of more than 131,072 characters
            return following
    return last


def doubled_names(header: Header) -> list[str]:
    """Lists the names, each once, that several columns bear."""
    return [name for name, columns in Counter(header.names).items() if name and columns > 1]


def is_utf_16(file: IO[bytes]) -> bool:
    """Tells by a file's first bytes whether it is in UTF-16, and goes back to its start."""
    start = file.read(2)
    file.seek(0)
    return start in (BOM_UTF16_LE, BOM_UTF16_BE)


@contextmanager
def _texts(file: IO[bytes]) -> Iterator[TextIOWrapper]:
    file.seek(0)
    text = TextIOWrapper(file, encoding="utf-8-sig", newline="")
    try:
        yield text
    finally:
        text.detach()
        file.seek(0)

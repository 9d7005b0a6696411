"""Looks at a CSV file row by row: for its header at first, and for what is wrong with it."""

from __future__ import annotations

import codecs
import csv
from collections.abc import Iterable, Iterator
from contextlib import contextmanager
from io import StringIO, TextIOWrapper
from pathlib import Path
from typing import Any, NamedTuple, cast

from vantrel.tables.files import open_bytes
from vantrel.tables.kinds import Kind

# What is looked at to find out what separates the cells.
_CHARACTERS = 100_000
_SEPARATORS = (",", ";", "\t", "|")


class Header(NamedTuple):
    """The first row of a file that is not blank.

    Attributes:
        names: The names of the columns; none where all rows are blank.
        blank_lines: How many there are before it.
        separator: What separates the cells.
        is_plain: Whether it and what is before it is one line each, of one kind of end, that the
            engine reads alike.
    """

    names: list[str]
    blank_lines: int
    separator: str
    is_plain: bool


def read_header(path: Path, kind: Kind) -> Header:
    """Reads the first row of a file, and finds what separates its cells if ``kind`` has it not."""
    with _lines(path, kind) as text:
        start = text.read(_CHARACTERS)
    separator = kind.separator or _separator(start)
    lines: list[str] = []
    with _lines(path, kind) as text:
        rows = csv.reader(_noting(text, lines), delimiter=separator)
        for above, row in enumerate(rows):
            if not _is_blank(row):
                ends = {line.removeprefix(line.rstrip("\r\n")) for line in lines}
                # Behind the mark of UTF-8 the engine takes a quotation mark for a letter.
                is_misread = separator in row[0] and is_marked(path, kind)
                is_plain = len(lines) == above + 1 and len(ends) == 1 and not is_misread
                return Header(row, above, separator, is_plain)
    return Header([], 0, separator, is_plain=True)


def is_marked(path: Path, kind: Kind) -> bool:
    """Whether a file begins with the mark of UTF-8."""
    with open_bytes(path, kind.compression) as raw:
        return raw.read(3) == codecs.BOM_UTF8


def _noting(lines: Iterable[str], seen: list[str]) -> Iterator[str]:
    for line in lines:
        seen.append(line)
        yield line


def _separator(start: str) -> str:
    """Finds what cuts the first rows into as many cells each, the more the better.

    Where the rows do not agree on any, it is what cuts the header into the most.
    """
    whole = start if len(start) < _CHARACTERS else start[: start.rfind("\n") + 1]
    lines = whole.splitlines(keepends=True)

    def rank(separator: str) -> tuple[bool, int]:
        widths: list[int] = []
        is_sound = True
        try:
            rows = csv.reader(lines, delimiter=separator, strict=True)
            widths.extend(len(row) for row in rows if not _is_blank(row))
        except csv.Error as error:  # what is looked at may end within a cell
            is_sound = "unexpected end" in str(error)
        width = widths[0] if widths else 0
        return is_sound and width > 1 and len(set(widths)) == 1, width

    return max(_SEPARATORS, key=rank)


def fault(path: Path, kind: Kind, header: Header) -> str | None:
    """Tells what is the first thing wrong with a file's rows; None where they are all sound."""
    width = len(header.names)
    last = 1
    with _lines(path, kind) as text:
        rows = csv.reader(text, delimiter=header.separator, strict=True)
        try:
            for row in rows:
                if len(row) != width and not _is_blank(row):
                    values = f"{len(row)} value{'' if len(row) == 1 else 's'}"
                    return f"line {rows.line_num} has {values}, the header {width}."
                last = rows.line_num + 1
        except csv.Error as error:
            reason = f"cannot be read: {error}"
            if "unexpected end" in str(error):
                reason = "has a quotation mark that is never closed"
            elif "field larger" in str(error):
                most = f"{csv.field_size_limit():,} characters"
                reason = f"has a cell of more than {most}, or a quotation mark that is never closed"
            return f"the row that begins in line {last} {reason}."
    return None


def header_line(names: Iterable[str], separator: str, *, quoting: bool) -> str:
    """Writes the names of columns as the first line of a CSV file."""
    line = StringIO(newline="")
    # Only before an end of line that has a carriage return are names quoted that have one.
    row = csv.writer(
        line,
        delimiter=separator,
        lineterminator="\r\n",
        quoting=csv.QUOTE_ALL if quoting else csv.QUOTE_MINIMAL,
    )
    row.writerow(names)
    return line.getvalue().removesuffix("\r\n") + "\n"


def write_sound_rows(path: Path, kind: Kind, header: Header, copy: Path) -> None:
    """Writes the rows of a file that has no fault to lines of one end, below another header."""
    one_column = len(header.names) == 1
    with _lines(path, kind) as text, copy.open("x", encoding="utf-8", newline="") as file:
        file.write(header.separator.join(map(str, range(len(header.names)))) + "\n")
        lines: list[str] = []
        for number, row in enumerate(csv.reader(_noting(text, lines), delimiter=header.separator)):
            if number > header.blank_lines and (one_column or not _is_blank(row)):
                file.write("".join(lines).rstrip("\r\n") + "\n")
            lines.clear()


def _is_blank(row: list[str]) -> bool:
    return not row or (len(row) == 1 and row[0].isspace())


@contextmanager
def _lines(path: Path, kind: Kind) -> Iterator[TextIOWrapper]:
    with (
        open_bytes(path, kind.compression) as raw,
        TextIOWrapper(cast(Any, raw), encoding="utf-8-sig", newline="") as text,
    ):
        yield text

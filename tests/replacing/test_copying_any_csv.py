"""Whatever table Python's csv module writes is read as it reads it, and copied to the letter."""

from __future__ import annotations

import csv
from io import StringIO
from pathlib import Path
from tempfile import TemporaryDirectory
from typing import NamedTuple

import pytest
from hypothesis import given
from hypothesis import strategies as st

from support.copying import Cells, copied_as_it_is, read, written

pytest.importorskip("pyarrow", reason="tables are copied with pyarrow")

SIGNS = 'ab",;\t|\r\n \N{NO-BREAK SPACE}é李😀ß\\'


class Csv(NamedTuple):
    """A table as it is written, and its rows."""

    content: str
    names: list[str]
    rows: list[list[str]]
    separator: str


def line(row: list[str], separator: str, *, quotes_all: bool) -> str:
    """A row without the end of its line, whatever that will be."""
    text = StringIO(newline="")
    writer = csv.writer(
        text, delimiter=separator, quoting=csv.QUOTE_ALL if quotes_all else csv.QUOTE_MINIMAL
    )
    writer.writerow(row)
    return text.getvalue().removesuffix("\r\n")


@st.composite
def tables(draw: st.DrawFn) -> Csv:
    """Tables of any cells and any dialect."""
    separator = draw(st.sampled_from(",;\t|"))
    width = draw(st.integers(1, 4))
    cells = st.text(SIGNS, max_size=5)
    names = [f"c{place}" + draw(cells) for place in range(width)]
    rows = draw(st.lists(st.lists(cells, min_size=width, max_size=width), max_size=6))
    ends = draw(st.sampled_from([["\n"], ["\r\n"], ["\r"], ["\n", "\r\n", "\r"]]))
    # Of one column, a cell that becomes empty between a return and a line feed would join them.
    ends = ends if width > 1 else ends[:1]
    content = ""
    for row in (names, *rows):
        content += line(row, separator, quotes_all=draw(st.booleans())) + draw(
            st.sampled_from(ends)
        )
        if width > 1:
            content += draw(st.sampled_from(["", "", "", ends[0], " " + ends[0]]))
    if draw(st.booleans()) and rows and width > 1:
        content = content.rstrip("\r\n ")
    return Csv(draw(st.sampled_from(["", "\ufeff"])) + content, names, rows, separator)


def as_python_reads(table: Csv) -> list[list[str]]:
    reader = csv.reader(
        StringIO(table.content.removeprefix("\ufeff"), newline=""), delimiter=table.separator
    )
    rows = [row for row in reader if len(row) == len(table.names)]
    return rows[1:]


def columns(rows: list[list[str]], width: int) -> list[Cells]:
    return [[row[place] for row in rows] for place in range(width)]


@given(tables(), st.integers(1, 60))
def test_cells_and_bytes(table: Csv, block: int) -> None:
    with TemporaryDirectory() as folder:
        path = Path(folder, "table.csv")
        path.write_bytes(table.content.encode())
        assert copied_as_it_is(path, block, separator=table.separator) == path.read_bytes()
        cells = read(path, block, separator=table.separator)
    assert list(cells) == table.names
    texts = [[cell or "" for cell in column] for column in cells.values()]
    assert texts == columns(as_python_reads(table), len(table.names))


@given(tables(), st.integers(1, 60), st.data())
def test_changed_cells(table: Csv, block: int, data: st.DataObject) -> None:
    with TemporaryDirectory() as folder:
        path = Path(folder, "table.csv")
        path.write_bytes(table.content.encode())
        cells = read(path, separator=table.separator)
        new = st.none() | st.text(SIGNS, max_size=5)
        names = data.draw(st.lists(st.sampled_from(table.names), unique=True))
        changes = {
            name: data.draw(st.lists(new, min_size=(n := len(cells[name])), max_size=n))
            for name in names
        }
        path.write_bytes(written(path, changes, block, separator=table.separator))
        assert read(path, block, separator=table.separator) == cells | changes

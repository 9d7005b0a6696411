"""Odd tables, read cell by cell, and what is written read again."""

from __future__ import annotations

import csv
import gzip
import io
import os
from collections.abc import Callable
from pathlib import Path
from typing import Any

import pandas as pd
import pytest
from backports import zstd
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

from vantrel.errors import TableError
from vantrel.tables import Table, open_table, read_table, write_table

Cell = str | None
Rows = list[list[Cell]]

settings_of_all = settings(
    max_examples=60,
    suppress_health_check=[HealthCheck.function_scoped_fixture],
)

# Signs that CSV, its readers or the engine give a meaning to, among others.
_ODD = list(",;\t|\"'\r\n #\\0=NULLnaé€😀\ufeff\u2028\x00\x1a")
texts = st.text(st.sampled_from(_ODD), max_size=6) | st.text(
    st.characters(codec="utf-8", exclude_categories=["Cs"]), max_size=6
)
cells: st.SearchStrategy[Cell] = st.none() | texts


def tables_of(cell: st.SearchStrategy[Any], name: st.SearchStrategy[str] = texts) -> Any:
    """Names of columns, and rows of as many cells.

    A name is no blank, and begins with no sign that is taken for the mark of UTF-8.
    """
    named = name.filter(lambda text: text.strip() and not text.startswith("\ufeff"))
    names = st.lists(named, min_size=1, max_size=4, unique=True)
    return names.flatmap(
        lambda columns: st.tuples(
            st.just(columns),
            st.lists(
                st.lists(cell, min_size=len(columns), max_size=len(columns)), min_size=1, max_size=8
            ),
        )
    )


def written(
    names: list[str], rows: Rows, *, separator: str = ",", end: str = "\n", quoted: bool = False
) -> str:
    """Writes CSV as its definition says: a missing value without quotes, an empty one with."""

    def cell(value: Cell) -> str:
        if value is None:
            return ""
        asks = quoted or not value or any(sign in value for sign in f'{separator}"\r\n')
        return '"' + value.replace('"', '""') + '"' if asks else value

    header: list[Cell] = [*names]
    return "".join(separator.join(map(cell, row)) + end for row in [header, *rows])


def cells_of(df: pd.DataFrame) -> Rows:
    values: Rows = df.astype(object).where(df.notna(), None).to_numpy().tolist()
    return values


def check(path: Path, names: list[str], rows: Rows, **options: Any) -> None:
    """Reads a table."""
    with open_table(path, **options) as table:
        assert table.columns == names
        assert cells_of(table.frame()) == rows


@settings_of_all
@given(tables_of(cells), st.sampled_from(["\n", "\r\n"]), st.booleans())
def test_every_cell_of_csv_is_read_as_it_was_written(
    tmp_path: Path, table: tuple[list[str], Rows], end: str, quoted: bool
) -> None:
    names, rows = table
    path = tmp_path / "t.csv"
    path.write_bytes(written(names, rows, end=end, quoted=quoted).encode())
    check(path, names, rows, separator=",")


@settings_of_all
@given(tables_of(cells), st.sampled_from([";", "\t", "|", ","]))
def test_cells_may_hold_what_separates_elsewhere(
    tmp_path: Path, table: tuple[list[str], Rows], separator: str
) -> None:
    names, rows = table
    path = tmp_path / "t.csv"
    path.write_bytes(written(names, rows, separator=separator).encode())
    check(path, names, rows, separator=separator)


words = st.text("abcé ,", min_size=1, max_size=5).filter(lambda text: text.strip(" ,"))


@settings_of_all
@given(
    tables_of(st.none() | words, words).filter(lambda table: len(table[0]) > 1),
    st.sampled_from([",", ";", "\t", "|"]),
)
def test_the_separator_is_found_where_cells_hold_commas(
    tmp_path: Path, table: tuple[list[str], Rows], separator: str
) -> None:
    names, rows = table
    path = tmp_path / "t.csv"
    path.write_bytes(written(names, rows, separator=separator, quoted=True).encode())
    check(path, names, rows)


# Each makes the bytes of a file from its text.
FORMS: dict[str, tuple[str, Callable[[str], bytes]]] = {
    "with a mark": ("t.csv", lambda text: b"\xef\xbb\xbf" + text.encode()),
    "without an end": ("t.csv", lambda text: text.encode().removesuffix(b"\n")),
    "gzip": ("t.csv.gz", lambda text: gzip.compress(text.encode())),
    "zstd": ("t.csv.zst", lambda text: zstd.compress(text.encode())),
    "UTF-16 LE": ("t.csv", lambda text: b"\xff\xfe" + text.encode("utf-16-le")),
    "UTF-16 BE": ("t.csv", lambda text: b"\xfe\xff" + text.encode("utf-16-be")),
    "UTF-16, gzip": ("t.csv.gz", lambda text: gzip.compress(text.encode("utf-16"))),
    "blank lines above": ("t.csv", lambda text: b"\n  \n\n" + text.encode()),
}


@pytest.mark.parametrize("form", FORMS)
@settings(parent=settings_of_all, max_examples=20)
@given(table=tables_of(st.none() | st.text("aé\n\",'", min_size=1, max_size=4), words))
def test_every_form_of_a_file_is_read(
    tmp_path: Path, table: tuple[list[str], Rows], form: str
) -> None:
    names, rows = table
    if form == "without an end" and rows[-1] == [None]:
        return  # there the last line would be no row
    name, encoded = FORMS[form]
    (tmp_path / name).write_bytes(encoded(written(names, rows)))
    check(tmp_path / name, names, rows, separator=",")


@pytest.mark.parametrize("packed", [bytes, gzip.compress])
def test_a_mark_before_a_name_in_quotes_loses_no_rows(
    tmp_path: Path, packed: Callable[[bytes], bytes]
) -> None:
    path = tmp_path / ("t.csv.gz" if packed is gzip.compress else "t.csv")
    path.write_bytes(packed(b'\xef\xbb\xbf"name,"\n"Roe, Jo"\nDoe\n'))
    check(path, ["name,"], [["Roe, Jo"], ["Doe"]])


@pytest.mark.parametrize("encoding", ["latin-1", "cp1252", "utf-16-le", "mac-roman", "shift-jis"])
def test_an_encoding_that_is_named(tmp_path: Path, encoding: str) -> None:
    value = "表" if encoding == "shift-jis" else "Müller"
    (tmp_path / "t.csv").write_bytes(f"a,b\r\n{value},1\r\n".encode(encoding))
    check(tmp_path / "t.csv", ["a", "b"], [[value, "1"]], encoding=encoding)


@settings_of_all
@given(tables_of(cells), st.sampled_from(["csv", "tsv", "csv.gz", "csv.zst", "jsonl", "jsonl.gz"]))
def test_what_was_written_is_read_again(
    tmp_path: Path, table: tuple[list[str], Rows], end: str
) -> None:
    names, rows = table
    path = tmp_path / f"t.{end}"
    df = pd.DataFrame(rows, columns=names, dtype="object")
    write_table([df.iloc[:1], df.iloc[1:]], path)
    separator = None if "jsonl" in end else "\t" if end == "tsv" else ","
    check(path, names, rows, separator=separator)


@settings_of_all
@given(tables_of(cells), st.booleans())
def test_csv_is_written_with_as_few_quotes_as_can_be(
    tmp_path: Path, table: tuple[list[str], Rows], safe: bool
) -> None:
    names, rows = table
    path = tmp_path / "t.csv"
    df = pd.DataFrame(rows, columns=names, dtype="object")
    write_table([df], path, csv_safe=safe)
    read = list(csv.reader(io.StringIO(path.read_bytes().decode(), newline="")))
    if not safe:
        expected = [names, *([cell or "" for cell in row] for row in rows)]
        assert [row or [""] for row in read] == expected
    assert len(read) == len(rows) + 1


def test_three_hundred_columns(tmp_path: Path) -> None:
    names = [f"column {number}" for number in range(300)]
    rows: Rows = [[f"{row}.{number}" for number in range(300)] for row in range(50)]
    (tmp_path / "t.csv").write_text(written(names, rows))
    check(tmp_path / "t.csv", names, rows)


def test_names_that_differ_in_case_alone_are_two(tmp_path: Path) -> None:
    df = pd.DataFrame({"a": ["1"], "A": ["2"], "a_1": ["3"]})
    for name in ("t.csv", "t.jsonl"):
        write_table([df], tmp_path / name)
        check(tmp_path / name, ["a", "A", "a_1"], [["1", "2", "3"]])


# Lines that end otherwise than the first one, blank ones, and marks in the middle of a cell.
@pytest.mark.parametrize(
    ("content", "rows"),
    [
        ("a,b\r\n1,2\n3,4\r\n", [["1", "2"], ["3", "4"]]),
        ("a,b\n1,2\r\n3,4\n", [["1", "2"], ["3", "4"]]),
        ("a,b\r1,2\r3,4\r", [["1", "2"], ["3", "4"]]),
        ('"a",b\n1,"x\r"\n3,4\n', [["1", "x\r"], ["3", "4"]]),
        ("a,b\n1,2\n  \n\n3,4\n", [["1", "2"], ["3", "4"]]),
        ('a,b\n1,5" pipe\n', [["1", '5" pipe']]),
        ('\n"a","b"\r\n"",\n', [["", None]]),
    ],
)
def test_what_is_nearly_csv_is_read_all_the_same(tmp_path: Path, content: str, rows: Rows) -> None:
    (tmp_path / "t.csv").write_bytes(content.encode())
    check(tmp_path / "t.csv", ["a", "b"], rows)


@pytest.mark.parametrize("at", [0, 60_000, 119_999])
def test_rows_that_are_read_otherwise_only_later_are_read_once_each(
    tmp_path: Path, at: int
) -> None:
    ends = ["\n"] * 120_000
    ends[at] = "\r\n"
    lines = "".join(f"{number},x{end}" for number, end in enumerate(ends))
    (tmp_path / "t.csv").write_bytes(f"a,b\n{lines}".encode())
    with open_table(tmp_path / "t.csv") as table:
        read = table.frame(["a"])["a"]
    assert read.tolist() == [str(number) for number in range(120_000)]


@pytest.mark.parametrize(
    ("row", "message"),
    [
        (b"1", "is no CSV table: line 100002 has 1 value, the header 2."),
        (b"1,2,3", "is no CSV table: line 100002 has 3 values, the header 2."),
        (b'1,"', "is no CSV table: the row that begins in line 100002 has a quotation mark that"),
        (b'"1"2,3', "is no CSV table: the row that begins in line 100002 cannot be read: ',' expe"),
        (b"2,\xff", "is not in UTF-8: name its encoding, cp1252 most likely, or save it as CSV"),
    ],
)
def test_a_late_fault_is_told_with_its_line(tmp_path: Path, row: bytes, message: str) -> None:
    path = tmp_path / "t.csv"
    path.write_bytes(b"a,b\n" + b"x,\n" * 100_000 + row + b"\nx,y\n")
    reads: list[Callable[[Table], object]] = [
        Table.frame,
        lambda table: table.excerpt(1_000),  # of which the second column has too few
        lambda table: table.count(["a", "b"], []),
    ]
    for read in reads:
        with pytest.raises(TableError) as caught, open_table(path) as table:
            read(table)
        assert str(caught.value).startswith(f"Table {path} {message}")
        assert "\n" not in str(caught.value)


@pytest.mark.parametrize(
    ("name", "content", "message"),
    [
        ("t.csv.gz", b"a\nx\n", "cannot be read: Not a gzipped file (b'a\\n')."),
        (
            "t.csv.gz",
            gzip.compress(b"a\nx\n" * 99, mtime=0)[:-9],
            "is cut off or damaged: compress it anew.",
        ),
        ("t.csv.zst", b"a\nx\n", "is cut off or damaged: compress it anew."),
        ("t.jsonl", b'{"a":1}\n[1]\n', "is no table of JSON Lines: object 2 is none, or names a"),
        ("t.jsonl", b'{"a":1,"a":2}\n', "is no table of JSON Lines: object 1 is none, or names a"),
        ("t.jsonl", b'{"a":1}\n{"a"\n', "is no table of JSON Lines: line 3 holds no JSON object."),
        ("t.jsonl", b"\n", "is empty: give it at least one row."),
        (
            "t.json",
            b"{}",
            "is by its name no table: give a .csv, .tsv, .jsonl or .parquet file, or",
        ),
        (
            "t.pdf",
            b"%PDF",
            "is by its name no table: give a .csv, .tsv, .jsonl or .parquet file, or",
        ),
    ],
)
def test_what_is_no_table_is_refused(
    tmp_path: Path, name: str, content: bytes, message: str
) -> None:
    path = tmp_path / name
    path.write_bytes(content)
    with pytest.raises(TableError) as caught:
        read_table(path)
    assert str(caught.value).startswith(f"Table {path} {message}")


@pytest.mark.parametrize("name", ["a*.csv", "[x].csv", "it's.csv", "a b?.csv", "{rows}.csv"])
def test_a_file_of_any_name_is_read(tmp_path: Path, name: str) -> None:
    (tmp_path / "ab.csv").write_text("no\nno\n")
    (tmp_path / name).write_text("a\nx\n")
    check(tmp_path / name, ["a"], [["x"]])


@pytest.mark.parametrize("content", [b"a;b\nx;y\n", b'{"a": "x", "b": "y"}\n'])
@pytest.mark.parametrize("packed", [bytes, gzip.compress, zstd.compress])
def test_a_pipe_is_told_by_how_it_begins(content: bytes, packed: Callable[[bytes], bytes]) -> None:
    read, write = os.pipe()
    try:
        os.write(write, packed(content))
        os.close(write)
        check(Path(f"/dev/fd/{read}"), ["a", "b"], [["x", "y"]])
    finally:
        os.close(read)


@pytest.mark.parametrize(("told", "value"), [(False, ""), (True, None)])
def test_an_empty_text_in_quotes_is_missing_if_it_is_said(
    tmp_path: Path, told: bool, value: Cell
) -> None:
    (tmp_path / "t.csv").write_text('a,b\n"",x\n')
    check(tmp_path / "t.csv", ["a", "b"], [[value, "x"]], empty_is_missing=told)


def test_an_excerpt_has_the_first_values_of_each_column(tmp_path: Path) -> None:
    rows: Rows = [[str(n), str(n) if n % 3 == 0 else None, None] for n in range(60_000)]
    (tmp_path / "t.csv").write_text(written(["a", "b", "c"], rows))
    with open_table(tmp_path / "t.csv") as table:
        first = table.excerpt(1000)
    assert first["a"].tolist() == [str(n) for n in range(1000)]
    assert first["b"].tolist() == [str(3 * n) for n in range(1000)]
    assert first["c"].isna().all()

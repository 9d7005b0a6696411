"""What the database engine reads: the rows of a file as columns of text."""

from __future__ import annotations

import csv
import re
from collections import Counter
from collections.abc import Sequence
from dataclasses import dataclass, replace
from pathlib import Path

import duckdb

from vantrel.errors import TableError
from vantrel.hints import listed, named
from vantrel.tables.csv_rows import Header, fault, read_header, write_sound_rows
from vantrel.tables.database import quoted, rows_of
from vantrel.tables.errors import telling
from vantrel.tables.files import linked
from vantrel.tables.kinds import Kind
from vantrel.wording import shown

# The bytes of the longest row that is read, and of what is read of a file at a time.
LONGEST_ROW = 4_000_000
_BUFFER = 2 * LONGEST_ROW

# The line above the header by which some spreadsheets know what separates the cells.
_OF_SPREADSHEETS = re.compile(r"sep=\W", re.IGNORECASE)

_NOT_OF_THE_FILE = (
    duckdb.OutOfMemoryException,
    duckdb.InterruptException,
    duckdb.BinderException,
    duckdb.CatalogException,
    duckdb.ParserException,
)


@dataclass(frozen=True)
class Source:
    """The rows of a table.

    Attributes:
        names: The names of the columns.
        rows: What stands in SQL for the rows: columns ``c0``, ``c1`` and so on, all of text.
    """

    names: list[str]
    rows: str


@dataclass(frozen=True)
class CsvSource(Source):
    """The rows of a CSV file, with what is needed to tell what is wrong with them."""

    file: Path
    kind: Kind
    header: Header
    quoted_nulls: bool
    is_copy: bool = False


def csv_source(
    path: Path,
    file: Path,
    kind: Kind,
    folder: Path,
    *,
    separator: str | None,
    empty_is_missing: bool,
) -> Source:
    """Reads the header of a CSV file.

    Args:
        path: What the user calls the file.
        file: What to read; compressed as ``kind`` says, and in UTF-8.
        kind: What the name tells.
        folder: Where a copy may go.
        separator: What separates the cells; found if None, and if the name does not tell.
        empty_is_missing: Whether an empty cell in quotation marks is a missing value, too.
    """
    told = kind._replace(separator=separator or kind.separator)
    header = csv_header(path, file, told)
    rows = _csv_rows(file, told, header, empty_is_missing, header.blank_lines)
    source = CsvSource(header.names, rows, file, told, header, empty_is_missing)
    # Below any other header the engine may lose rows without a word.
    return source if header.is_plain else _sound(source, path, folder)


def csv_header(path: Path, file: Path, kind: Kind) -> Header:
    """Reads the header of a CSV file, and gives the columns names that have none.

    Args:
        path: What the user calls the file.
        file: What to read, in UTF-8.
        kind: What it holds; what separates the cells is found where it is not told.
    """
    try:
        with telling(path):
            header = read_header(file, kind)
    except csv.Error as error:
        raise TableError(
            f"Table {named(path)} has no header: a name in it has more than"
            f" {csv.field_size_limit():,} characters, or a quotation mark is never closed."
        ) from error
    if not header.names:
        raise TableError(f"Table {named(path)} is empty: give it a header and at least one row.")
    first = header.separator.join(header.names)
    if _OF_SPREADSHEETS.fullmatch(first):
        raise TableError(
            f"Table {named(path)} begins with the line {shown(repr(first))}, which only tells"
            " spreadsheets what separates the cells: take that line out."
        )
    refuse_doubled(path, [name for name in header.names if name])
    names = [name or f"Unnamed: {place}" for place, name in enumerate(header.names)]
    return header._replace(names=names)


def _csv_rows(file: Path, kind: Kind, header: Header, quoted_nulls: bool, skip: int) -> str:
    columns = ", ".join(f"c{place}: 'VARCHAR'" for place in range(len(header.names)))
    # Nothing is left to be found out by the engine: where it errs, rows are lost without a word.
    return (
        f"read_csv({quoted(str(file))}, auto_detect=false, columns={{{columns}}}, header=true,"
        f" skip={skip}, delim={quoted(header.separator)}, quote='\"', escape='\"', nullstr='',"
        f" allow_quoted_nulls={str(quoted_nulls).lower()}, strict_mode=true, null_padding=false,"
        f" compression='{kind.compression or 'none'}', max_line_size={LONGEST_ROW},"
        f" buffer_size={_BUFFER})"
    )


def mended(source: Source, path: Path, error: duckdb.Error, folder: Path) -> Source:
    """Says what is wrong with the rows of a table, or makes a sound copy where nothing is.

    The engine does not read all that is CSV: not where lines end in different ways, for example.
    """
    if isinstance(error, _NOT_OF_THE_FILE):
        raise error
    if not isinstance(source, CsvSource):
        raise broken(path, error) from error
    if source.is_copy:
        raise TableError(f"Table {named(path)} is no CSV table: {_told(error)}") from error
    return _sound(source, path, folder)


def _sound(source: CsvSource, path: Path, folder: Path) -> Source:
    """Makes a copy that the engine is sure to read, if the rows are sound."""
    copy = folder / "sound"
    with telling(path):
        if reason := fault(source.file, source.kind, source.header):
            raise TableError(f"Table {named(path)} is no CSV table: {reason}")
        write_sound_rows(source.file, source.kind, source.header, copy)
    rows = _csv_rows(copy, Kind("csv"), source.header, source.quoted_nulls, 0)
    return replace(source, rows=rows, is_copy=True)


def refuse_doubled(path: Path, names: Sequence[str]) -> None:
    """Refuses columns of one name, each of which is told."""
    if doubled := [name for name, columns in Counter(names).items() if columns > 1]:
        raise TableError(
            f"Table {named(path)} has several columns of one name:"
            f" {listed(doubled)}. Give each a name of its own."
        )


def jsonl_source(path: Path, file: Path, kind: Kind, con: duckdb.DuckDBPyConnection) -> Source:
    """Reads the names of all objects of a file of JSON Lines."""
    lines = f"read_ndjson_objects({quoted(str(file))}, compression='{kind.compression or 'none'}')"
    numbered = f"(SELECT json, row_number() OVER () AS line FROM {lines})"
    try:
        odd = rows_of(
            con,
            f"SELECT min(line) FROM {numbered} WHERE json_type(json) <> 'OBJECT'"
            " OR len(json_keys(json)) > len(list_distinct(json_keys(json)))",
        )[0][0]
        keys = rows_of(
            con,
            "SELECT name FROM (SELECT unnest(json_keys(json)) AS name,"
            f" generate_subscripts(json_keys(json), 1) AS place, line FROM {numbered})"
            " GROUP BY name ORDER BY min(line), min(place)",
        )
    except duckdb.Error as error:
        line = re.search(r"in line (\d+)", str(error))
        where = f": line {line[1]} holds no JSON object." if line else f": {_told(error)}"
        raise TableError(f"Table {named(path)} is no table of JSON Lines{where}") from error
    if odd is not None:
        raise TableError(
            f"Table {named(path)} is no table of JSON Lines: object {odd} is none, or names a"
            " value twice."
        )
    names = [name for (name,) in keys]
    if not names:
        raise TableError(f"Table {named(path)} is empty: give it at least one row.")
    values = ", ".join(
        f"json_extract_string(json, {quoted(_pointer(name))}) AS c{place}"
        for place, name in enumerate(names)
    )
    return Source(names, f"(SELECT {values} FROM {lines})")


def _pointer(name: str) -> str:
    return "/" + name.replace("~", "~0").replace("/", "~1")


def parquet_source(path: Path, file: Path, folder: Path, con: duckdb.DuckDBPyConnection) -> Source:
    """Reads the names of the columns of a Parquet file, or of all in a folder, sorted by name."""
    files = parts_of(file)
    if not files:
        raise TableError(f"Folder {named(path)} holds no Parquet files: name a table.")
    try:
        with telling(path):
            for part in files:
                part.open("rb").close()  # tells in a word why not
            links = [linked(part, folder / f"{number}") for number, part in enumerate(files)]
            of_files = [_parquet_names(link, con) for link in links]
    except duckdb.Error as error:
        raise broken(path, error) from error
    names = of_files[0]
    for part, others in zip(files, of_files, strict=True):
        if other := set(names) ^ set(others):
            raise TableError(
                f"Folder {named(path)} holds more than one table: {named(part.name)} differs from"
                f" the first file in {listed(sorted(other))}. Give each a folder."
            )
    refuse_doubled(path, names)
    read_from = ", ".join(quoted(str(link)) for link in links)
    columns = [f"c{place}" for place in range(len(names))]
    texts = ", ".join(f"CAST({column} AS VARCHAR) AS {column}" for column in columns)
    read = f"read_parquet([{read_from}], union_by_name={str(len(files) > 1).lower()})"
    return Source(names, f"(SELECT {texts} FROM {read} AS t({', '.join(columns)}))")


def parts_of(path: Path) -> list[Path]:
    """The files of a table of Parquet: all in a folder, sorted by name, or the only one."""
    return sorted(path.glob("*.parquet")) if path.is_dir() else [path]


def broken(path: Path, error: Exception) -> TableError:
    """The error of what is no Parquet file, with what the library says that cannot read it."""
    return TableError(
        f"Table {named(path)} is no Parquet table or a broken one: write it anew. ({_told(error)})"
    )


def _parquet_names(file: Path, con: duckdb.DuckDBPyConnection) -> list[str]:
    """The names of the outermost columns, to the letter: the engine changes some that are alike."""
    found = rows_of(con, f"SELECT name, num_children FROM parquet_schema({quoted(str(file))})")
    names, inner = [], 0
    for name, children in found[1:]:
        if inner == 0:
            names.append(name)
        else:
            inner -= 1
        inner += children or 0
    return names


def _told(error: Exception) -> str:
    """What a library says, on one line and without its advice."""
    return " ".join(str(error).partition("\n")[0].split())

"""Tables in files, of which no more is in memory than is asked for."""

from __future__ import annotations

import weakref
from collections.abc import Callable, Collection, Iterator, Mapping, Sequence
from contextlib import ExitStack, contextmanager
from dataclasses import replace
from itertools import chain, count
from pathlib import Path
from tempfile import TemporaryDirectory
from typing import Any

import duckdb
import pandas as pd

from vantrel.databases.address import Address
from vantrel.errors import TableError
from vantrel.hints import named
from vantrel.tables.counts import Found, TableCounts
from vantrel.tables.database import connect, frame_of, quoted, rows_of
from vantrel.tables.files import readable
from vantrel.tables.guard import unguarded, unguarded_in_sql
from vantrel.tables.sources import Source, csv_source, jsonl_source, mended, parquet_source

# Rows that are compressed together where columns are kept: fewer take less memory.
_KEPT_TOGETHER = 30_000

_NUMBERS = count()  # of files, that several tables may have in one folder


class Table:
    """A table, every value of it as text. Reading it fails with a ``TableError``.

    Attributes:
        path: What the user calls it.
    """

    def __init__(
        self,
        path: Path,
        source: Source,
        connection: duckdb.DuckDBPyConnection,
        folder: Path,
        cell: Callable[[str], str] = str,
    ) -> None:
        """Takes what :func:`open_table` has opened; ``cell`` makes a value of a column in SQL."""
        self.path = path
        self._source = source
        self._connection = connection
        self._folder = folder
        self._cell = cell
        self._computed: dict[str, str] = {}

    @property
    def columns(self) -> list[str]:
        """The names of the columns, in their order."""
        return list(self._source.names)

    def named(self, column: str) -> str:
        """What a column is in SQL."""
        return self._cell(f"c{self._source.names.index(column)}")

    def query(self, sql: str, other: Table | None = None) -> list[tuple[Any, ...]]:
        """Runs a query, in which ``{rows}`` stands for the rows and the columns are as `named`.

        Args:
            sql: The query.
            other: A table that was kept, for whose rows ``{other}`` stands.
        """
        if other is not None:
            sql = sql.replace("{other}", other._source.rows)
        return self._read(lambda: rows_of(self._cursor(), self._of_rows(sql)))

    def function(self, name: str, function: Callable[[str], str]) -> None:
        """Gives queries a function of texts; a missing one stays so."""
        self._connection.create_function(name, function, ["VARCHAR"], "VARCHAR")

    def unguarded(self) -> Table:
        """The same table without the apostrophes that keep spreadsheets from running cells."""
        source = replace(self._source, names=list(map(unguarded, self._source.names)))
        return Table(self.path, source, self._connection, self._folder, unguarded_in_sql)

    def kept(
        self,
        columns: Collection[str],
        beside: Table | None = None,
        sorted_by: Sequence[str] = (),
    ) -> Table:
        """Reads columns once and keeps them where they are read quickly again and again.

        Args:
            columns: Those to keep, in whatever order.
            beside: A table whose share of memory this one shall use from then on.
            sorted_by: The columns that tell the order of the rows, where it is not theirs.
        """
        names = [column for column in self.columns if column in columns]
        kept = self._folder / "kept.parquet"
        cells = [f"{self.named(name)} AS c{place}" for place, name in enumerate(names)]
        listed = ", ".join(cells) or "NULL AS nothing"
        order = f" ORDER BY {', '.join(map(self.named, sorted_by))}" if sorted_by else ""
        self.query(
            f"COPY (SELECT {listed} FROM {{rows}}{order}) TO {quoted(str(kept))}"
            f" (FORMAT parquet, ROW_GROUP_SIZE {_KEPT_TOGETHER})"
        )
        source = Source(names, f"read_parquet({quoted(str(kept))})")
        connection = (beside or self)._connection
        return Table(self.path, source, connection, self._folder)

    def computed(self, *cells: str) -> list[str]:
        """Computes cells of each row once, however often they are asked for.

        Args:
            cells: What to compute, in SQL.

        Returns:
            What they are in SQL from then on.
        """
        new = [each for each in dict.fromkeys(cells) if each not in self._computed]
        if new:
            file = quoted(str(self._folder / f"computed-{next(_NUMBERS)}.parquet"))
            names = {each: f"x{len(self._computed) + at}" for at, each in enumerate(new)}
            listed = ", ".join(f"{each} AS {name}" for each, name in names.items())
            self.query(
                f"COPY (SELECT *, {listed} FROM {{rows}}) TO {file}"
                f" (FORMAT parquet, ROW_GROUP_SIZE {_KEPT_TOGETHER})"
            )
            self._source = Source(self.columns, f"read_parquet({file})")
            self._computed |= names
        return [self._computed[each] for each in cells]

    def several_of_each(self, layouts: Sequence[Mapping[str, str]]) -> Table:
        """Makes several rows of each, one after the other, whose columns have other names.

        Args:
            layouts: The columns of each of these rows, by their new names; one that only others
                have is missing.
        """
        names = list(dict.fromkeys(chain.from_iterable(layouts)))
        rows = [
            ", ".join(
                f"'c{place}': {self.named(layout[name]) if name in layout else 'NULL'}"
                for place, name in enumerate(names)
            )
            for layout in layouts
        ]
        listed = ", ".join(f"{{{row}}}" for row in rows)
        made = f"(SELECT unnest([{listed}], recursive := true) FROM {self._source.rows})"
        return Table(self.path, Source(names, made), self._connection, self._folder)

    def frame(self, columns: Sequence[str] | None = None, rows: int | None = None) -> pd.DataFrame:
        """Reads columns, all if None, and the first rows, all if None."""
        limit = "" if rows is None else f" LIMIT {rows}"
        names = self.columns if columns is None else list(columns)
        frame = self._read(
            lambda: frame_of(self._cursor(), self._of_rows(self._select(names) + limit))
        )
        return frame.iloc[:, : len(names)].set_axis(names, axis="columns")

    def count(self, columns: Collection[str], labelled: Collection[str]) -> TableCounts:
        """Counts the combinations of the values of columns and the gaps of the labelled ones."""
        bits = [
            f"(CAST({self.named(column)} IS NULL AS HUGEINT) << {bit})"
            for bit, column in enumerate(labelled)
        ]
        cells = [*map(self.named, columns), " + ".join(bits) or "0"]
        named = ", ".join(f"{cell} AS v{place}" for place, cell in enumerate(cells))
        found = self.query(
            f"SELECT * EXCLUDE (row), count(*), min(row) AS first"
            f" FROM (SELECT {named}, row_number() OVER () AS row FROM {{rows}})"
            " GROUP BY ALL ORDER BY first"
        )
        combinations = {tuple(cells): Found(rows, first) for *cells, rows, first in found}
        return TableCounts(tuple(columns), tuple(labelled), combinations)

    def excerpt(self, rows: int) -> pd.DataFrame:
        """Gives the first values that each column has, at most so many of each.

        Every column has its values first; what it has too few of is missing.
        """
        first = self.frame(rows=rows)
        short = [each for each in self.columns if first[each].count() < rows == len(first)]
        if short:
            lists = ", ".join(
                f"arg_min({cell}, row, {rows}) FILTER ({cell} IS NOT NULL)"
                for cell in map(self.named, short)
            )
            (found,) = self.query(
                f"SELECT {lists} FROM (SELECT *, row_number() OVER () AS row FROM {{rows}})"
            )
            for column, values in zip(short, found, strict=True):
                first[column] = pd.Series(values or [], dtype=first[column].dtype)
        return first

    def _select(self, names: Sequence[str]) -> str:
        return f"SELECT {', '.join(map(self.named, names)) or 'NULL'} FROM {{rows}}"

    def _cursor(self) -> duckdb.DuckDBPyConnection:
        return self._connection.cursor()

    def _of_rows(self, sql: str) -> str:
        return sql.replace("{rows}", self._source.rows)

    def _read[ResultT](self, read: Callable[[], ResultT]) -> ResultT:
        """Reads, from a sound copy if the table cannot be read as it is."""
        try:
            return read()
        except duckdb.Error as error:
            self._source = mended(self._source, self.path, error, self._folder)
            return read()


@contextmanager
def open_table(
    path: Path | Address,
    *,
    separator: str | None = None,
    encoding: str | None = None,
    empty_is_missing: bool = False,
    may_be_empty: bool = False,
) -> Iterator[Table]:
    """Opens a table: CSV, JSON Lines or Parquet by the end of its name, or that of a database.

    Args:
        path: The address of a table of a database, or the file; a folder is one of Parquet files,
            and ``-`` is standard input. The name may end in .gz or .zst. What has no name, such as
            a pipe, is told by how it begins.
        separator: What separates the cells of CSV; found if None.
        encoding: The encoding of CSV or JSON Lines, as Python names it. If None it is UTF-8, or
            UTF-16 where the file begins with its mark.
        empty_is_missing: Whether an empty text in quotation marks is a missing value of CSV, too,
            as an empty cell without them always is.
        may_be_empty: Whether a table without rows will do.

    Raises:
        TableError: The file cannot be read, is no such table or has no rows.
        DatabaseError: The database cannot be read.
    """
    with ExitStack() as stack:
        folder = Path(stack.enter_context(TemporaryDirectory(prefix="vantrel-")))
        connection = stack.enter_context(connect(folder))
        if isinstance(path, Path):
            source = _file_source(path, connection, folder, separator, encoding, empty_is_missing)
        else:
            from vantrel.tables.from_database import database_source

            source = database_source(path, folder, empty_is_missing=empty_is_missing)
            path = Path(path.table or "")
        table = Table(path, source, connection, folder)
        if not may_be_empty and not table.query("SELECT 1 FROM {rows} LIMIT 1"):
            raise TableError(f"Table {named(path)} has a header but no rows: give it at least one.")
        yield table


def _file_source(
    path: Path,
    connection: duckdb.DuckDBPyConnection,
    folder: Path,
    separator: str | None,
    encoding: str | None,
    empty_is_missing: bool,
) -> Source:
    file, kind = readable(path, encoding, folder)
    if kind.format == "parquet":
        return parquet_source(path, file, folder, connection)
    if kind.format == "jsonl":
        return jsonl_source(path, file, kind, connection)
    return csv_source(
        path, file, kind, folder, separator=separator, empty_is_missing=empty_is_missing
    )


def frame_table(df: pd.DataFrame) -> Table:
    """Makes a table of a frame, whose values become texts. It lasts as long as it is held."""
    folder = TemporaryDirectory(prefix="vantrel-")
    connection = connect(Path(folder.name))
    texts = {
        f"c{place}": df.iloc[:, place].map(str, na_action="ignore").astype(object)
        for place in range(df.shape[1])
    }
    connection.register("frame", pd.DataFrame(texts, index=df.index).assign(row=0))
    cells = [f"CAST({column} AS VARCHAR) AS {column}" for column in texts]
    kept = quoted(f"{folder.name}/frame.parquet")
    listed = ", ".join([*cells, "row"])
    rows_of(connection, f"COPY (SELECT {listed} FROM frame) TO {kept} (FORMAT parquet)")
    connection.unregister("frame")
    source = Source(list(df.columns), f"read_parquet({kept})")
    table = Table(Path("frame"), source, connection, Path(folder.name))
    weakref.finalize(table, _closed, connection, folder)
    return table


def _closed(connection: duckdb.DuckDBPyConnection, folder: TemporaryDirectory[str]) -> None:
    connection.close()
    folder.cleanup()


def read_table(path: Path, columns: Sequence[str] | None = None, **options: Any) -> pd.DataFrame:
    """Reads a whole table; the options are those of :func:`open_table`."""
    with open_table(path, **options) as table:
        return table.frame(columns)

"""SQLite, by way of the standard library."""

from __future__ import annotations

import re
import sqlite3
from collections.abc import Iterator, Mapping, Sequence
from contextlib import closing
from pathlib import Path
from typing import Any
from urllib.parse import quote

import pyarrow as pa
from sqlalchemy import Engine as Connector
from sqlalchemy import NullPool, String, create_engine

from vantrel.databases.address import Address
from vantrel.databases.engine import Kind, Reference
from vantrel.databases.fetching import fetched
from vantrel.errors import DatabaseError
from vantrel.hints import did_you_mean_path, named

_SECONDS = 10

_UPDATE = re.compile(r"\bUPDATE\b", re.IGNORECASE)
_BODY = re.compile(r"\bBEGIN\b", re.IGNORECASE)

# Foreign keys name tables and columns in any case, which need not be there, nor as many as refer to
# them; where they name no columns, they mean those of the primary key.
_REFERENCES = """
    SELECT own.schema, own.name, key."from",
           own.schema, coalesce(other.name, key."table"), coalesce(told.name, key."to")
    FROM pragma_table_list AS own
    JOIN pragma_foreign_key_list(own.name, own.schema) AS key
    LEFT JOIN pragma_table_list AS other ON other.schema = own.schema AND other.type = 'table'
      AND other.name = key."table" COLLATE NOCASE
    LEFT JOIN pragma_table_xinfo(other.name, other.schema) AS told
      ON coalesce(told.name = key."to" COLLATE NOCASE, told.pk = key.seq + 1)
    WHERE own.schema = ? AND own.type = 'table'
"""


class Sqlite:
    """A file of SQLite."""

    def __init__(self, address: Address) -> None:
        self._file = Path(address.file)
        self._driver: Any = None

    def connector(self, *, is_changing: bool) -> Connector:
        """What opens the file, which must be there."""
        if not self._file.is_file():
            near = did_you_mean_path(self._file)
            raise DatabaseError(f"There is no database {named(self._file)}.{near}")
        mode = "rw" if is_changing else "ro"
        uri = f"file:{quote(str(self._file.absolute()))}?mode={mode}"

        def opened() -> sqlite3.Connection:
            # Without a level the driver begins no transaction by itself.
            driver = sqlite3.connect(uri, uri=True, timeout=_SECONDS, isolation_level=None)
            driver.text_factory = lambda text: text.decode(errors="replace")
            return driver

        return create_engine("sqlite+pysqlite://", creator=opened, poolclass=NullPool)

    def begin(self, driver: Any, *, is_changing: bool) -> None:
        """Begins the transaction; one that changes keeps all others from doing so."""
        self._driver = driver
        driver.execute("BEGIN IMMEDIATE" if is_changing else "BEGIN")

    def settle(self) -> None:
        """Checks nothing: SQLite defers nothing that is changed here."""

    def kinds(self, schema: str) -> Mapping[str, Kind]:
        """What there is, by name, but for what SQLite itself keeps."""
        rows = self._driver.execute(
            "SELECT name, type FROM pragma_table_list WHERE schema = ?", [schema]
        )
        kinds: dict[str, Kind] = {"table": "table", "view": "view", "virtual": "virtual table"}
        return {name: kinds[kind] for name, kind in rows if kind in kinds and name[:7] != "sqlite_"}

    def references(self, schema: str) -> Sequence[Reference]:
        """Which columns refer to others, or are referred to: a file refers to none of another."""
        return [Reference(*row) for row in self._driver.execute(_REFERENCES, [schema])]

    def lock(self, tables: Sequence[str]) -> None:
        """Does nothing: the transaction has locked the whole file."""

    def hindrance(self, table: str, *, is_changing: bool) -> None:
        """Nothing: whoever can open the file to write may change all that is in it."""

    def side_effects(self, schema: str, table: str) -> list[str]:
        """The triggers that run where rows are changed."""
        del schema  # of a file there is one
        rows = self._driver.execute(
            "SELECT name, sql FROM sqlite_master"
            " WHERE type = 'trigger' AND tbl_name = ? COLLATE NOCASE ORDER BY name",
            [table],
        )
        return [f"trigger {name!r}" for name, sql in rows if _UPDATE.search(_BODY.split(sql)[0])]

    def is_whole(self, table: str, column: str, declared: Any) -> bool:
        """Whether a column has integers alone: types are those of values, not of columns."""
        if isinstance(declared, String):
            return False
        return not self._has(table, f"typeof({column}) NOT IN ('integer', 'null')")

    def holds_bytes(self, table: str, column: str, declared: Any) -> bool:
        """Whether some value is a BLOB."""
        del declared  # types are those of values
        return self._has(table, f"typeof({column}) = 'blob'")

    def lengths(self, table: str) -> Mapping[str, int]:
        """Nothing besides the types."""
        del table
        return {}

    def as_text(self, column: str, declared: Any = None) -> str:
        """A column in SQL as a text; bytes by their hexadecimal digits."""
        del declared  # types are those of values
        return (
            f"CASE typeof({column}) WHEN 'blob' THEN hex({column}) ELSE CAST({column} AS TEXT) END"
        )

    def _has(self, table: str, condition: str) -> bool:
        query = f"SELECT EXISTS (SELECT 1 FROM {table} WHERE {condition})"
        return bool(self._driver.execute(query).fetchone()[0])

    def key(self, column: str) -> str:
        """How a value is written in SQL, since values of different types are never equal.

        Nothing for NULL, which a primary key may have here in many rows: it finds none of them.
        """
        return f"nullif(quote({column}), 'NULL')"

    def read(self, table: str, cells: Mapping[pa.Field, str]) -> Iterator[pa.RecordBatch]:
        """Reads row by row."""
        schema = pa.schema(list(cells))
        with closing(self._driver.cursor()) as cursor:
            cursor.execute(f"SELECT {', '.join(cells.values())} FROM {table}")
            for rows in fetched(cursor):
                values = zip(schema.types, zip(*rows, strict=True), strict=True)
                columns = [pa.array(own, kind) for kind, own in values]
                yield pa.RecordBatch.from_arrays(columns, schema=schema)

    def becoming(self, old: str, made: str) -> str:
        """What was made, unless it is the old value as a text, which may be a number in truth."""
        return f"CASE WHEN {made} IS {self.as_text(old)} THEN {old} ELSE {made} END"

    def put(self, table: str, columns: Mapping[str, pa.Array]) -> None:
        """Adds rows one by one."""
        self._driver.executemany(
            f"INSERT INTO {table} ({', '.join(columns)}) VALUES ({', '.join('?' * len(columns))})",
            zip(*(column.to_pylist() for column in columns.values()), strict=True),
        )

    def refused_cell(self, error: Exception) -> None:
        """Nothing: the temporary table, of no types of its own, takes whatever there is."""

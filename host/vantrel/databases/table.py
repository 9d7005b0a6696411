"""A table of a database, read in batches of rows."""

from __future__ import annotations

from collections.abc import Iterator, Sequence
from dataclasses import dataclass
from functools import cached_property
from pathlib import Path
from typing import Any

import pyarrow as pa
from sqlalchemy import String

from vantrel.databases.database import Database
from vantrel.databases.engine import quoted
from vantrel.errors import DatabaseError

# The rows that are read at first, and then as many as take about so many bytes.
_FIRST_ROWS = 1_000
_MOST_ROWS = 50_000
_BYTES = 16_000_000
_MEASURED_ROWS = 200


@dataclass(frozen=True)
class Column:
    """A column.

    Attributes:
        name: Its name.
        is_whole: Whether it is read as whole numbers; else its values are texts.
        is_nullable: Whether values may be missing.
        most: How many characters a value may have, if not as many as it likes.
        is_generated: Whether the database makes its values.
        declared: Its type in SQL, as SQLAlchemy has it.
    """

    name: str
    is_whole: bool
    is_nullable: bool
    most: int | None
    is_generated: bool
    declared: Any

    @property
    def field(self) -> pa.Field:
        """The column in Arrow."""
        return pa.field(self.name, pa.int64() if self.is_whole else pa.string(), self.is_nullable)


@dataclass(frozen=True)
class DatabaseTable:
    """A table, or a view, of an open database.

    Attributes:
        database: The database.
        name: The name of the table.
    """

    database: Database
    name: str

    @property
    def path(self) -> Path:
        """What the user calls it."""
        return Path(self.name)

    @property
    def sql(self) -> str:
        """What SQL calls it."""
        return quoted(self.database.schema, self.name)

    @cached_property
    def told(self) -> dict[str, Column]:
        """Its columns, by their names."""
        found = self.database.inspector.get_columns(self.name, schema=self.database.schema)
        return {each["name"]: self._column(each) for each in found}

    @property
    def columns(self) -> tuple[str, ...]:
        """The names of its columns."""
        return tuple(self.told)

    @cached_property
    def key(self) -> tuple[str, ...]:
        """The columns of its primary key."""
        database = self.database
        found = database.inspector.get_pk_constraint(self.name, schema=database.schema)
        return tuple(found["constrained_columns"])

    def batches(self, columns: Sequence[str]) -> Iterator[pa.RecordBatch]:
        """Reads columns: whole numbers as such, all else as texts."""
        if columns:
            for cells in self.fetched([self._read(column) for column in columns]):
                yield self.batch(columns, cells)

    def batch(self, columns: Sequence[str], cells: Sequence[tuple[Any, ...]]) -> pa.RecordBatch:
        """Makes a batch of columns that were fetched as :meth:`batches` reads them."""
        schema = pa.schema([self.told[column].field for column in columns])
        arrays = [pa.array(values, field.type) for field, values in zip(schema, cells, strict=True)]
        return pa.RecordBatch.from_arrays(arrays, schema=schema)

    def with_keys(self) -> Iterator[tuple[pa.RecordBatch, list[tuple[Any, ...]]]]:
        """Reads all columns, and beside them the values of the key as the database takes them."""
        cells = [self._read(column) for column in self.columns]
        keys = [self.database.engine.as_key(quoted(column)) for column in self.key]
        for fetched in self.fetched([*cells, *keys]):
            yield self.batch(self.columns, fetched[: len(cells)]), fetched[len(cells) :]

    def fetched(self, cells: Sequence[str]) -> Iterator[list[tuple[Any, ...]]]:
        """Reads columns of SQL in parts that take about as much memory, whatever rows hold."""
        with self.database.engine.cursor() as cursor:
            cursor.execute(f"SELECT {', '.join(cells)} FROM {self.sql}")
            rows = cursor.fetchmany(_FIRST_ROWS)
            while rows:
                yield list(zip(*rows, strict=True))
                wanted = _BYTES // _bytes_of_a_row(rows)
                rows = cursor.fetchmany(min(max(1, wanted), _MOST_ROWS))

    def _read(self, column: str) -> str:
        name = quoted(column)
        return name if self.told[column].is_whole else self.database.engine.as_text(name)

    def _column(self, found: Any) -> Column:
        declared = found["type"]
        identity = found.get("identity") or {}
        return Column(
            found["name"],
            self.database.engine.is_whole(self.sql, quoted(found["name"]), declared),
            found["nullable"],
            declared.length if isinstance(declared, String) else None,
            bool(found.get("computed") or identity.get("always")),
            declared,
        )


def _bytes_of_a_row(rows: Sequence[tuple[Any, ...]]) -> int:
    """About how many bytes a row takes, as told by some of them."""
    some = rows[:: 1 + len(rows) // _MEASURED_ROWS]
    lengths = (len(cell) if isinstance(cell, str | bytes) else 8 for row in some for cell in row)
    return 1 + sum(lengths) // len(some)


def opened_table(database: Database, name: str) -> DatabaseTable:
    """Gives a table or view of a database, which must be there and have a name of one part."""
    database.refuse_unknown(name)
    if Path(name).name != name:
        raise DatabaseError(f"Table {name!r} cannot be read: its name has a slash in it.")
    return DatabaseTable(database, name)

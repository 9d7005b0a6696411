"""A table of a database, read in batches of rows."""

from __future__ import annotations

import warnings
from collections.abc import Iterator, Mapping, Sequence
from dataclasses import dataclass
from functools import cached_property
from pathlib import Path
from typing import Any

import pyarrow as pa
from sqlalchemy import String
from sqlalchemy.dialects.postgresql import DOMAIN
from sqlalchemy.exc import SAWarning

from vantrel.databases.database import Database
from vantrel.databases.engine import quoted
from vantrel.errors import DatabaseError


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
        with warnings.catch_warnings():  # values of types that are not known are texts, too
            warnings.filterwarnings("ignore", "Did not recognize type", SAWarning)
            found = self.database.inspector.get_columns(self.name, schema=self.database.schema)
        return {each["name"]: self._column(each) for each in found}

    @cached_property
    def _lengths(self) -> Mapping[str, int]:
        return self.database.engine.lengths(self.sql)

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

    def holds_bytes(self, column: str) -> bool:
        """Whether a column has bytes in some rows, which are read as their digits."""
        told = self.told[column]
        return self.database.engine.holds_bytes(self.sql, quoted(column), told.declared)

    def batches(self, columns: Sequence[str]) -> Iterator[pa.RecordBatch]:
        """Reads columns: whole numbers as such, all else as texts."""
        if columns:
            cells = {self.told[column].field: self._read(column) for column in columns}
            yield from self.database.engine.read(self.sql, cells)

    def with_keys(self) -> Iterator[tuple[pa.RecordBatch, list[pa.Array]]]:
        """Reads all columns, and beside them what their rows are found by, as texts."""
        engine = self.database.engine
        cells = {column.field: self._read(name) for name, column in self.told.items()}
        for place, name in enumerate(self.key):
            cells[pa.field(f"key {place}", pa.string())] = engine.as_text(engine.key(quoted(name)))
        for batch in engine.read(self.sql, cells):
            yield batch.select(list(self.columns)), batch.columns[len(self.columns) :]

    def _read(self, column: str) -> str:
        name, told = quoted(column), self.told[column]
        return name if told.is_whole else self.database.engine.as_text(name, told.declared)

    def _column(self, found: Any) -> Column:
        declared = found["type"]
        while isinstance(declared, DOMAIN):
            declared = declared.data_type
        length = declared.length if isinstance(declared, String) else None
        identity = found.get("identity") or {}
        return Column(
            found["name"],
            self.database.engine.is_whole(self.sql, quoted(found["name"]), declared),
            found["nullable"],
            self._lengths.get(found["name"], length),
            bool(found.get("computed") or identity.get("always")),
            declared,
        )


def opened_table(database: Database, name: str) -> DatabaseTable:
    """Gives a table or view of a database, which must be there and have a name of one part."""
    database.refuse_unknown(name)
    if Path(name).name != name:
        raise DatabaseError(f"Table {name!r} cannot be read: its name has a slash in it.")
    return DatabaseTable(database, name)

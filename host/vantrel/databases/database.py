"""An open database, in one transaction that ends with its changes or without."""

from __future__ import annotations

import sqlite3
from collections.abc import Iterator, Mapping
from contextlib import contextmanager
from dataclasses import dataclass
from functools import cached_property
from importlib.util import find_spec
from typing import Any

from sqlalchemy import Inspector, inspect
from sqlalchemy.exc import DBAPIError, SQLAlchemyError

from vantrel.databases.address import Address
from vantrel.databases.engine import Engine, Kind
from vantrel.databases.sqlite import Sqlite
from vantrel.errors import DatabaseError
from vantrel.hints import argument, did_you_mean, listed

_ERRORS: tuple[type[Exception], ...] = (SQLAlchemyError, sqlite3.Error)
if find_spec("psycopg") is not None:  # SQLite does without
    import psycopg

    _ERRORS += (psycopg.Error,)

_UNIQUE = "23505"
_OF_CONSTRAINTS = "23"
_IN_USE = "55P03"


@dataclass(frozen=True)
class Database:
    """An open database.

    Attributes:
        address: Where it is.
        engine: What it does in its own way.
        inspector: What tells of its tables.
        driver: The connection of the driver.
        schema: The schema of the tables.
    """

    address: Address
    engine: Engine
    inspector: Inspector
    driver: Any
    schema: str

    @cached_property
    def kinds(self) -> Mapping[str, Kind]:
        """What there is in the schema, by name."""
        return self.engine.kinds(self.schema)

    @property
    def tables(self) -> list[str]:
        """The names of the tables in the schema, which hold their own rows."""
        return sorted(name for name, kind in self.kinds.items() if kind in ("table", "parent"))

    def refuse_unknown(self, table: str) -> None:
        """Refuses a table that is not there."""
        if table not in self.kinds:
            known = self.kinds.keys()
            there = f" Its tables are: {listed(sorted(known))}." if known else " It has none."
            hint = self._with_schema(table) or did_you_mean(table, known)
            raise DatabaseError(
                f"{self.address} has no table {table!r} in schema {self.schema!r}.{hint}{there}"
            )

    def _with_schema(self, table: str) -> str:
        """Asks whether a table is meant whose schema stands before it; "" if there is none."""
        schema, dot, name = table.partition(".")
        if not dot or schema not in self.inspector.get_schema_names():
            return ""
        if self.address.table:
            return f" Is it ?table={name}&schema={schema}?"
        return f" Is it {argument('schema', schema)} {argument('table', name)}?"

    def commit(self) -> None:
        """Makes all changes at once."""
        self.driver.commit()


@contextmanager
def opened_database(address: Address, *, is_changing: bool = False) -> Iterator[Database]:
    """Opens a database for one transaction, which is rolled back unless it is committed.

    Raises:
        DatabaseError: The database cannot be used, or refuses what is asked of it.
    """
    with _telling(address):
        engine = _engine(address)
        connector = engine.connector(is_changing=is_changing)
        with connector.connect() as connection:
            driver = connection.connection.driver_connection
            try:
                engine.begin(driver, is_changing=is_changing)
                inspector = inspect(connection)
                schema = _schema(address, inspector)
                yield Database(address, engine, inspector, driver, schema)
            finally:  # what was not committed ends with the connection, whatever state it is in
                connection.invalidate()


def _engine(address: Address) -> Engine:
    if address.is_sqlite:
        return Sqlite(address)
    from vantrel.databases.postgresql import Postgresql

    return Postgresql(address)


def _schema(address: Address, inspector: Inspector) -> str:
    known = inspector.get_schema_names()
    schema = address.schema or inspector.default_schema_name
    if schema not in known:
        told = f"has no schema {schema!r}" if schema else "has no schema of its own"
        raise DatabaseError(
            f"{address} {told}.{did_you_mean(schema, known)} Schemas are: {listed(known)}."
        )
    return schema


@contextmanager
def _telling(address: Address) -> Iterator[None]:
    """Turns what the driver raises into one line without values of rows and without passwords."""
    try:
        yield
    except _ERRORS as error:
        cause = error.orig if isinstance(error, DBAPIError) else error
        # The cause is not shown: its text may have the address in it.
        raise DatabaseError(f"{address}: {_told(address, cause)}") from None


def _told(address: Address, error: Any) -> str:
    state = getattr(error, "sqlstate", None)
    said = getattr(getattr(error, "diag", None), "message_primary", None) or str(error)
    said = address.hidden(" ".join(said.split())).rstrip(".")
    if state == _IN_USE or "database is locked" in said:
        return "a table is in use by another connection: try again when that has ended."
    if (state or "").startswith(_OF_CONSTRAINTS) or "constraint failed" in said:
        hint = " Where it is DEFERRABLE, rows may change places." if state == _UNIQUE else ""
        return f"{said}: nothing was changed.{hint}"
    return said if said.endswith("?") else f"{said}."

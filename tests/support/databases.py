"""Databases to try things on, and the tables of a shop to put into them."""

from __future__ import annotations

import sqlite3
from collections.abc import Sequence
from contextlib import closing
from dataclasses import dataclass
from pathlib import Path
from typing import Any, Protocol, Self

import pytest

pytest.importorskip("pyarrow", reason="tables of databases are read by way of Arrow")
pytest.importorskip("sqlalchemy", reason="databases need SQLAlchemy")
pytest.importorskip("psycopg", reason="PostgreSQL needs psycopg")

import psycopg

from examples import shop as shop_of_examples
from support.command import fail

CUSTOMERS = """
CREATE TABLE customers (
    id integer PRIMARY KEY, sex varchar(1), first_name varchar(40), last_name varchar(40),
    email varchar(80) UNIQUE, mobile text, country char(2), born date, note text{more}
)
"""
OF_CUSTOMERS = "id sex first_name last_name email mobile country born note".split()
OF_ORDERS = "number customer_id full_name total".split()
ORDERS = """
CREATE TABLE orders (
    number integer PRIMARY KEY, customer_id integer REFERENCES customers, full_name text, total numeric(9, 2)
)
"""
KEYS = "--key customers.id --key orders.customer_id --secret s"
COUNTRIES = ("GB", "DE", "FR")


def customers(rows: int = 30) -> list[tuple[Any, ...]]:
    """Rows of customers, whose names are no names, so that none is made up."""
    return [
        (
            number,
            "fm"[number % 2],
            f"Qa{number}",
            f"Qb{number}",
            f"qa{number}@qb.org",
            f"+44 20 {7_000_000 + number}",
            COUNTRIES[number % 3],
            f"19{40 + number % 50}-05-06",
            None if number % 3 else f"Qa{number} Qb{number} called",
        )
        for number in range(1, rows + 1)
    ]


def orders(rows: int = 60) -> list[tuple[Any, ...]]:
    """Rows of orders, two of each of thirty customers."""
    return [
        (number, customer, f"Qa{customer} Qb{customer}", f"{number}.50")
        for number in range(1, rows + 1)
        for customer in [1 + number % 30]
    ]


class Trial(Protocol):
    """A database to try things on."""

    @property
    def address(self) -> str:
        """Where it is."""

    def run(self, sql: str) -> None:
        """Runs statements."""

    def add(self, table: str, rows: Sequence[tuple[Any, ...]]) -> None:
        """Adds whole rows to a table."""

    def rows(self, sql: str) -> list[tuple[Any, ...]]:
        """The rows of a query."""


def shop(trial: Trial, more: str = "") -> None:
    """Makes the tables of a shop, the customers' with more columns."""
    trial.run(CUSTOMERS.format(more=f", {more}" if more else ""))
    trial.run(ORDERS)
    trial.add(f"customers ({', '.join(OF_CUSTOMERS)})", customers())
    trial.add("orders", orders())


def example(trial: Trial) -> list[str]:
    """Makes the shop of the examples, and names its tables."""
    trial.run(shop_of_examples.TABLES)
    tables = shop_of_examples.tables()
    for name, rows in tables.items():
        trial.add(name, list(rows))
    return [*tables]


def contents(trial: Trial, *tables: str) -> list[list[tuple[Any, ...]]]:
    """All rows of tables."""
    return [
        trial.rows(f"SELECT * FROM {table} ORDER BY 1")
        for table in tables or ("customers", "orders")
    ]


@dataclass(frozen=True)
class Lite:
    """A file of SQLite."""

    file: Path

    @property
    def address(self) -> str:
        return f"sqlite:///{self.file}"

    def run(self, sql: str) -> None:
        with closing(sqlite3.connect(self.file)) as connection:
            connection.executescript(sql)

    def add(self, table: str, rows: Sequence[tuple[Any, ...]]) -> None:
        with closing(sqlite3.connect(self.file)) as connection:
            marks = ", ".join("?" * len(rows[0]))
            connection.executemany(f"INSERT INTO {table} VALUES ({marks})", rows)
            connection.commit()

    def rows(self, sql: str) -> list[tuple[Any, ...]]:
        with closing(sqlite3.connect(self.file)) as connection:
            return connection.execute(sql).fetchall()


@dataclass(frozen=True)
class Post:
    """A database of a server of PostgreSQL."""

    folder: Path
    name: str

    @classmethod
    def made(cls, folder: Path, name: str) -> Self:
        """Makes an empty one."""
        with psycopg.connect(
            f"host={folder} user=postgres dbname=postgres", autocommit=True
        ) as server:
            server.execute(f'CREATE DATABASE "{name}"')
        return cls(folder, name)

    @property
    def address(self) -> str:
        return self.address_of("postgres")

    def address_of(self, user: str) -> str:
        """Where somebody finds it."""
        return f"postgresql://{user}@/{self.name}?host={self.folder}"

    def connect(self) -> psycopg.Connection[Any]:
        """A connection that commits each statement."""
        return psycopg.connect(
            f"host={self.folder} user=postgres dbname={self.name}", autocommit=True
        )

    def run(self, sql: str) -> None:
        with self.connect() as connection:
            connection.execute(sql)

    def add(self, table: str, rows: Sequence[tuple[Any, ...]]) -> None:
        with self.connect() as connection, connection.cursor() as cursor:
            marks = ", ".join(["%s"] * len(rows[0]))
            cursor.executemany(f"INSERT INTO {table} VALUES ({marks})", rows)

    def rows(self, sql: str) -> list[tuple[Any, ...]]:
        with self.connect() as connection:
            return connection.execute(sql).fetchall()


def refused(trial: Trial, options: str) -> str:
    """The one line of a run that changes nothing, without what differs between databases."""
    before = contents(trial)
    line = fail(f"replace '{trial.address}' {options}", 1)
    assert contents(trial) == before
    assert not Path("s").exists()
    return (
        line.replace(shown(trial), "ADDRESS")
        .replace("'public'", "SCHEMA")
        .replace("'main'", "SCHEMA")
    )


def shown(trial: Trial) -> str:
    """Its address as messages have it."""
    return trial.address.partition("?")[0]

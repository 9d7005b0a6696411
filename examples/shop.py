"""Makes the database of a small shop: customers, their addresses, orders and payments.

    python examples/shop.py build/shop.db

The customers and orders are those of the two CSV files here; what Faker adds to them, such as
account numbers, is made up as well and the same each time.
"""

from __future__ import annotations

import sqlite3
import sys
from collections.abc import Iterator
from contextlib import closing
from datetime import date
from pathlib import Path

from faker import Faker

from vantrel.tables import read_table

FOLDER = Path(__file__).resolve().parent
SEED = 7

# Enough of it is in their languages for a demonstration.
FAKED_IN = "en_GB"

TABLES = """
CREATE TABLE customers (
    id integer PRIMARY KEY, title text, first_name varchar(40), last_name varchar(40),
    gender char(1), country char(2), email varchar(80) UNIQUE, mobile varchar(30),
    date_of_birth date, notes text
);
CREATE TABLE addresses (
    id integer PRIMARY KEY, customer_id integer NOT NULL REFERENCES customers,
    street varchar(40), postcode varchar(10), city varchar(40)
);
CREATE TABLE orders (
    id integer PRIMARY KEY, customer_id integer NOT NULL REFERENCES customers,
    name varchar(80), email varchar(80), ordered date, total numeric(9, 2), payment text,
    recipient_id integer REFERENCES customers, recipient_name varchar(80)
);
CREATE TABLE payments (
    id integer PRIMARY KEY, order_id integer NOT NULL REFERENCES orders,
    customer_id integer NOT NULL REFERENCES customers,
    account_holder varchar(80), iban varchar(34), paid date
);
"""

type Row = tuple[object, ...]


def main(path: Path) -> None:
    path.unlink(missing_ok=True)
    with closing(sqlite3.connect(path)) as database:
        database.executescript(TABLES)
        for table, rows in tables().items():
            for row in rows:
                marks = ", ".join("?" * len(row))
                database.execute(f"INSERT INTO {table} VALUES ({marks})", row)
        database.commit()


def tables() -> dict[str, Iterator[Row]]:
    """The rows of each table, in an order in which each refers to rows before it."""
    return {
        "customers": customers(),
        "addresses": addresses(),
        "orders": orders(),
        "payments": payments(),
    }


def customers() -> Iterator[Row]:
    """The customers, with dates of birth in the place of the days on which they joined."""
    faker = seeded()
    for row in rows_of("customers"):
        *known, mobile, _, notes = row
        born = faker.date_between(date(1940, 1, 1), date(2006, 12, 31))
        yield (*known, mobile, born.isoformat(), notes)


def addresses() -> Iterator[Row]:
    """An address of each customer."""
    faker = seeded()
    for number, (customer, *_) in enumerate(rows_of("customers"), 1):
        street = faker.street_address().replace("\n", ", ")
        yield number, customer, street, faker.postcode(), faker.city()


def orders() -> Iterator[Row]:
    """The orders, of which each third is a gift for another customer."""
    friends = [(number, f"{first} {last}") for number, _, first, last, *_ in rows_of("customers")]
    for place, row in enumerate(rows_of("orders")):
        yield (*row, *(friends[place % len(friends)] if place % 3 == 0 else (None, None)))


def payments() -> Iterator[Row]:
    """A payment of each order that was paid by invoice."""
    faker = seeded()
    for order, customer, name, _, ordered, _, payment in rows_of("orders"):
        if payment == "invoice":
            yield order, order, customer, name, faker.iban(), ordered


def rows_of(table: str) -> Iterator[Row]:
    frame = read_table(FOLDER / f"{table}.csv")
    yield from frame.astype(object).where(frame.notna(), None).itertuples(index=False, name=None)


def seeded() -> Faker:
    faker = Faker(FAKED_IN)
    faker.seed_instance(SEED)
    return faker


if __name__ == "__main__":
    main(Path(sys.argv[1]))

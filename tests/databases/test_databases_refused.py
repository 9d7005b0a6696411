"""What is refused of databases, in one line and before anything is changed."""

from __future__ import annotations

import sqlite3
from contextlib import closing

import pytest

from support.command import fail, succeed
from support.databases import (
    KEYS,
    Lite,
    Post,
    Trial,
    contents,
    refused,
    shop,
)
from vantrel.databases import postgresql, sqlite

REFUSED = [
    (
        "--table custmers --secret s",
        "ADDRESS has no table 'custmers' in schema SCHEMA. Did you mean 'customers'? Its tables"
        " are: 'customers', 'lonely', 'orders', 'shown'.",
    ),
    (
        "--schema publik --table customers --secret s",
        "ADDRESS has no schema 'publik'.",
    ),
    (
        "--table lonely --secret s",
        "Table 'lonely' has no primary key, by which its rows would be found again: give it one.",
    ),
    (
        "--table shown --secret s",
        "Table 'shown' is a view: name the tables that it shows.",
    ),
    (
        "--table customers --key id --other id=hash --secret s",
        "Column 'id' of table 'customers' cannot be changed: rows are found by it, as a part of the"
        " primary key. --other id=keep keeps it.",
    ),
    (
        "--table orders --key customer_id --other customer_id=hash --secret s",
        "Column 'customer_id' of table 'orders' cannot be changed: it refers to customers.id."
        " --other customer_id=keep keeps it.",
    ),
    (
        "--table customers --key id --column password=twice --secret s",
        "Column 'twice' of table 'customers' cannot be changed: the database makes its values."
        " --keep password keeps it.",
    ),
    (
        "--table customers --key id --column username=code --secret s",
        "Column 'code' of table 'customers' cannot be changed: lonely.code refers to it."
        " --keep username keeps it.",
    ),
    (
        "--table customers --key id --other born=hash --secret s",
        "Column 'born' of table 'customers' is of type DATE: only texts and whole numbers can be"
        " hashed.",
    ),
    (
        "--table customers --key id --column mobile_number=short --secret s",
        "Column 'short' holds 4 characters, and what is made for it has up to ",
    ),
    (
        "--table customers --key idd --secret s",
        "Table customers has no column 'idd' for the key. Did you mean 'id'? Its columns are: ",
    ),
    (
        "--table customers --key id --other sex=fake:sentence --secret s",
        "Column 'sex' tells the gender of people, which made-up ones have, too: keep or blank it.",
    ),
]


@pytest.fixture
def full(trial: Trial) -> Trial:
    """A shop with things that cannot be changed."""
    shop(
        trial,
        "code varchar(9) UNIQUE, short varchar(4) DEFAULT '1234',"
        " twice integer GENERATED ALWAYS AS (7) STORED",
    )
    trial.run(
        "CREATE TABLE lonely (full_name text, code varchar(9) REFERENCES customers (code));"
        "CREATE VIEW shown AS SELECT * FROM customers;"
        "UPDATE customers SET code = 'n' || id"
    )
    return trial


@pytest.mark.parametrize(("options", "message"), REFUSED, ids=[each[0] for each in REFUSED])
def test_what_cannot_be_done(full: Trial, options: str, message: str) -> None:
    told = refused(full, options)
    assert told.startswith(message)


def test_people_who_are_still_named(trial: Trial) -> None:
    shop(trial)
    before = contents(trial)
    told = fail(f"replace '{trial.address}' --table customers {KEYS} --fail-on-leak", 3)
    assert told.startswith(
        "Nothing was written, as people are still named. customers: Column 'note':"
    )
    assert contents(trial) == before


IN_USE = "ADDRESS: a table is in use by another connection: try again when that has ended."


def test_a_table_in_use(post: Post, monkeypatch: pytest.MonkeyPatch) -> None:
    shop(post)
    quick = postgresql._SETTINGS.replace("10s", "100ms")
    monkeypatch.setattr(postgresql, "_SETTINGS", quick)
    with post.connect() as other, other.transaction():
        other.execute("UPDATE customers SET note = note")
        assert refused(post, f"--table customers {KEYS}") == IN_USE


def test_a_file_in_use(lite: Lite, monkeypatch: pytest.MonkeyPatch) -> None:
    shop(lite)
    monkeypatch.setattr(sqlite, "_SECONDS", 0.1)
    with closing(sqlite3.connect(lite.file, isolation_level=None)) as other:
        other.execute("BEGIN IMMEDIATE")
        assert refused(lite, f"--table customers {KEYS}") == IN_USE


def test_rights(post: Post) -> None:
    shop(post)
    post.run(
        "DROP ROLE IF EXISTS clerk; CREATE ROLE clerk LOGIN; GRANT SELECT ON customers TO clerk"
    )
    line = f"replace '{post.address_of('clerk')}' --table customers {KEYS}"
    assert fail(line, 1) == (
        "Table 'customers' cannot be changed: the user of the address lacks the right UPDATE on it."
    )
    post.run("GRANT UPDATE ON customers TO clerk")
    post.run(
        "ALTER TABLE customers ENABLE ROW LEVEL SECURITY; CREATE POLICY own ON customers USING (id < 9)"
    )
    assert fail(line, 1) == (
        "Table 'customers' cannot be changed: row level security hides rows from the user of the"
        " address. Its owner sees all, unless that is forced, and so does a user with BYPASSRLS."
    )
    post.run("ALTER TABLE customers DISABLE ROW LEVEL SECURITY")
    succeed(line)


def test_parts_of_tables(post: Post) -> None:
    columns = "(id integer PRIMARY KEY, email text)"
    post.run(
        f"CREATE TABLE whole {columns} PARTITION BY RANGE (id);"
        "CREATE TABLE part PARTITION OF whole FOR VALUES FROM (0) TO (9);"
        f"CREATE TABLE heirs {columns}; CREATE TABLE heir () INHERITS (heirs);"
        "CREATE MATERIALIZED VIEW seen AS SELECT * FROM heirs"
    )
    post.add("whole", [(1, "a@b.org")])
    line = f"replace '{post.address}' --secret s"
    assert fail(f"{line} --table part", 1) == (
        "Table 'part' is a part of another table: name the whole table."
    )
    assert fail(f"{line} --table heirs", 1) == (
        "Table 'heirs' has tables that inherit from it, whose rows are no rows of its key."
    )
    assert fail(f"{line} --table seen", 1) == (
        "Table 'seen' is a view: name the tables that it shows."
    )
    post.run("DROP TABLE heirs CASCADE")
    assert succeed(line).stdout.count("in place") == 1
    ((email,),) = post.rows("SELECT email FROM part")
    assert email.endswith(".example")


def test_what_refers_from_another_schema(post: Post) -> None:
    shop(post)
    post.run(
        "CREATE SCHEMA more;"
        "CREATE TABLE more.mails (id integer PRIMARY KEY, mail text REFERENCES customers (email))"
    )
    assert refused(post, f"--table customers {KEYS}") == (
        "Column 'email' of table 'customers' cannot be changed: mails.mail refers to it."
        " --keep email keeps it."
    )


def test_what_is_referred_to_in_another_case(lite: Lite) -> None:
    shop(lite)
    lite.run("CREATE TABLE mails (id integer PRIMARY KEY, mail text REFERENCES Customers (EMAIL))")
    assert refused(lite, f"--table customers {KEYS}") == (
        "Column 'email' of table 'customers' cannot be changed: mails.mail refers to it."
        " --keep email keeps it."
    )


@pytest.mark.parametrize(
    ("key", "other"),
    [
        ("(full_name) REFERENCES nobody", "nobody"),
        ("(full_name) REFERENCES nobody (name)", "nobody.name"),
        ("(number, full_name) REFERENCES customers", "customers"),
    ],
)
def test_keys_that_refer_to_nothing_hinder_nothing_else(lite: Lite, key: str, other: str) -> None:
    shop(lite)
    lite.run(
        "CREATE TABLE bills (number integer PRIMARY KEY, full_name text, username text,"
        f" FOREIGN KEY {key})"
    )
    lite.add("bills", [(1, "Qa1 Qb1", "qa1")])
    assert refused(lite, "--table bills --key number --secret s") == (
        "Column 'full_name' of table 'bills' cannot be changed: it refers to"
        f" {other}. --keep fullname keeps it."
    )
    done = succeed(
        f"replace '{lite.address}' --table bills --key number --keep fullname --secret s"
    )
    assert "WARNING" not in done.stderr
    assert lite.rows("SELECT username FROM bills") != [("qa1",)]


def test_what_another_schema_of_the_search_path_refers_to(post: Post) -> None:
    post.run("CREATE SCHEMA aa; CREATE SCHEMA bb")
    post.run(
        "CREATE TABLE bb.customers (id integer PRIMARY KEY, email text UNIQUE);"
        "CREATE TABLE aa.orders (id integer PRIMARY KEY,"
        " mail text REFERENCES bb.customers (email) ON UPDATE CASCADE)"
    )
    post.add("bb.customers", [(1, "qa1@qb.org")])
    address = f"{post.address}&options=-csearch_path%3Daa,bb"
    message = fail(f"replace '{address}' --schema bb --table customers --key id --secret s", 1)
    assert message == (
        "Column 'email' of table 'customers' cannot be changed: orders.mail refers to it."
        " --keep email keeps it."
    )

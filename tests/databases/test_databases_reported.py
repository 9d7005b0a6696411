"""Reports of tables of databases in which people were replaced in place."""

from __future__ import annotations

import json
from pathlib import Path

import pandas as pd
import pytest

from support.command import fail, succeed
from support.databases import KEYS, OF_CUSTOMERS, Trial, customers, shop

RUN = f"replace '{{}}' --table customers --table orders {KEYS} --secret s --record made.json"


def table_of(trial: Trial, table: str) -> str:
    return f"'{trial.address}{'&' if '?' in trial.address else '?'}table={table}'"


@pytest.fixture
def replaced(trial: Trial) -> Trial:
    """A database whose people were replaced, and what was in it before, in any order."""
    shop(trial)
    before = pd.DataFrame(customers(), columns=OF_CUSTOMERS)
    before.sample(frac=1, random_state=1).to_csv("customers.csv", index=False)
    succeed(RUN.format(trial.address))
    return trial


def looks(trial: Trial) -> set[str]:
    """What asks for a look in the table of customers."""
    line = f"report customers.csv {table_of(trial, 'customers')} --record made.json -o r.html"
    succeed(f"{line} --json r.json --force")
    form = json.loads(Path("r.json").read_text())
    assert form["compared"] == "copy"
    return {each["about"] for each in form["verdicts"] if each["state"] == "look"}


def test_a_table_is_compared_with_what_it_was(replaced: Trial) -> None:
    named = {"People who are still named"}  # in the notes, which were not scrubbed
    assert looks(replaced) == named
    replaced.run("UPDATE customers SET born = '1900-01-01' WHERE id = 7")
    assert looks(replaced) == {"Cells that had to stay", *named}
    replaced.run("DELETE FROM orders; DELETE FROM customers WHERE id = 7")
    assert looks(replaced) == {"Rows", *named}


def test_a_table_without_its_record_is_told(replaced: Trial) -> None:
    told = succeed(f"report customers.csv {table_of(replaced, 'customers')} -o r.html").stderr
    assert told.startswith(
        "vantrel: note: customers has no record and was compared as a sample. If 'vantrel replace'"
        " made it from customers.csv, as its rows and columns suggest, name what its --record has"
        " written, by --record.\n"
    )


def test_a_record_of_other_tables_is_refused(replaced: Trial) -> None:
    replaced.run("CREATE TABLE customer (id INTEGER PRIMARY KEY, sex TEXT)")
    assert fail(
        f"report customers.csv {table_of(replaced, 'customer')} --record made.json -o r.html", 1
    ) == (
        "made.json tells of no table 'customer'. Did you mean 'customers'? Its tables are:"
        " 'customers', 'orders'."
    )


def test_what_is_no_record_of_a_database_is_refused(replaced: Trial) -> None:
    line = f"report customers.csv {table_of(replaced, 'customers')} -o r.html --record"
    assert fail(f"{line} absent.json", 1) == (
        "absent.json cannot be read: No such file or directory."
    )
    Path("made.json").write_text('{"format": "vantrel-replace"}')
    assert fail(f"{line} made.json", 1) == (
        "made.json is no record of a database whose people were replaced (its format is"
        " 'vantrel-replace'): move it away."
    )


def test_the_record_of_a_file_is_not_named() -> None:
    Path("a.csv").write_text("sex\nf\n")
    Path("b.csv").write_text("sex\nm\n")
    assert fail("report a.csv b.csv --record made.json -o r.html", 2) == (
        "The record of a file stands beside it, and b.csv is one: leave --record out."
    )

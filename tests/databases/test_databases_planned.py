"""Plans of databases: what cannot be changed stays in them, so that they run as they are written."""

from __future__ import annotations

from pathlib import Path

import pytest

from support.command import succeed
from support.databases import Trial, contents, refused, shop

KEYS = "--key customers.id --key orders.customer_id"


def planned(trial: Trial, options: str) -> str:
    """The plan that is written, and runs."""
    succeed(f"replace '{trial.address}' {options} --write-plan plan.toml")
    succeed(f"replace '{trial.address}' --plan plan.toml --secret s")
    return Path("plan.toml").read_text()


def test_columns_that_cannot_be_changed_are_planned_to_stay(trial: Trial) -> None:
    shop(
        trial,
        "full_name text GENERATED ALWAYS AS (first_name || ' ' || last_name) STORED,"
        " ssn varchar(20) UNIQUE",
    )
    trial.run(
        "UPDATE customers SET ssn = '219-09-' || (1000 + id);"
        "CREATE TABLE mails (number integer PRIMARY KEY, email varchar(80) REFERENCES customers (email),"
        " fiscal varchar(20) REFERENCES customers (ssn), first_name text);"
        "INSERT INTO mails SELECT id, email, ssn, first_name FROM customers"
    )
    before = trial.rows("SELECT id, email, ssn FROM customers ORDER BY 1")
    plan = planned(trial, KEYS)
    assert trial.rows("SELECT id, email, ssn FROM customers ORDER BY 1") == before
    assert not [name for (name,) in trial.rows("SELECT full_name FROM customers") if "Qa" in name]
    assert 'email = "keep" # cannot be changed: mails.email refers to it\n' in plan
    assert 'email = "keep" # the key; cannot be changed: it refers to customers.email\n' in plan
    assert 'full_name = "keep" # cannot be changed: the database makes its values\n' in plan
    assert 'ssn = "keep" # cannot be changed: mails.fiscal refers to it\n' in plan
    assert 'id = "keep" # the key\n' in plan
    assert 'customer_id = "keep" # the key\n' in plan


def test_people_who_are_planned_to_stay_are_told(trial: Trial) -> None:
    shop(trial)
    trial.run("CREATE TABLE readers (email varchar(80) PRIMARY KEY, username text, since integer)")
    trial.add("readers", [(f"qa{number}@qb.org", f"qa{number}", number) for number in range(9)])
    told = succeed(f"replace '{trial.address}' {KEYS} --write-plan plan.toml").stderr
    assert told == (
        "vantrel: note: readers: Columns of people that cannot be changed are planned to stay:"
        " 'email'.\n"
    )


def test_a_table_of_which_nothing_can_be_changed(trial: Trial) -> None:
    shop(trial)
    trial.run("CREATE TABLE readers (email varchar(80) PRIMARY KEY, since integer)")
    trial.add("readers", [(f"qa{number}@qb.org", number) for number in range(9)])
    before = contents(trial, "readers")
    plan = planned(trial, KEYS)
    assert contents(trial, "readers") == before
    shown = succeed(f"replace '{trial.address}' --plan plan.toml --secret s --dry-run").stdout
    assert shown.count(", the first rows") == 2
    reason = "rows are found by it, as a part of the primary key"
    assert f'email = "keep" # the key; cannot be changed: {reason}\nsince = "keep"\n' in plan


def test_a_column_that_still_names_people_is_to_be_decided(trial: Trial) -> None:
    shop(trial)
    named = "10 cells still name the row's person (rows 3, 6, 9)"
    assert refused(trial, f"{KEYS} --secret s --other born=keep --strict") == (
        "Nothing was written, as columns look personal and are not decided. customers: Column"
        f" 'note': {named}: add --scrub note."
    )
    assert f'note = "undecided" # {named}\n' in planned(trial, KEYS)


@pytest.mark.parametrize(
    ("options", "message"),
    [
        (
            "--table orders --key customer_id --other customer_id=hash",
            "Column 'customer_id' of table 'orders' cannot be changed: it refers to customers.id."
            " --other customer_id=keep keeps it.",
        ),
        (
            "--table customers --key id --column username=id",
            "Column 'id' of table 'customers' cannot be changed: rows are found by it, as a part of"
            " the primary key. --keep username keeps it.",
        ),
        (
            "--table customers --key id --other born=hash",
            "Column 'born' of table 'customers' is of type DATE: only texts and whole numbers can be"
            " hashed.",
        ),
        (
            "--table lonely",
            "Table 'lonely' has no primary key, by which its rows would be found again: give it"
            " one.",
        ),
    ],
)
def test_what_is_asked_and_cannot_be_done_is_not_planned(
    trial: Trial, options: str, message: str
) -> None:
    shop(trial)
    trial.run("CREATE TABLE lonely (full_name text)")
    assert refused(trial, f"{options} --write-plan plan.toml") == message
    assert not Path("plan.toml").exists()


def test_a_table_that_the_plan_names_otherwise(trial: Trial) -> None:
    shop(trial)
    succeed(f"replace '{trial.address}' {KEYS} --write-plan plan.toml")
    plan = Path("plan.toml")
    plan.write_text(plan.read_text().replace("tables.customers", "tables.customer"))
    assert refused(trial, "--plan plan.toml --secret s") == (
        "Plan plan.toml: ADDRESS has no table 'customer' in schema SCHEMA. Did you mean"
        " 'customers'? Its tables are: 'customers', 'orders'."
    )

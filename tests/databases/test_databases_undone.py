"""Runs in databases that fail on the way, after which nothing is changed."""

from __future__ import annotations

import re
import signal
import subprocess
import time
from collections.abc import Callable
from pathlib import Path

import pytest

from support.command import command_line, succeed
from support.databases import (
    KEYS,
    Lite,
    Post,
    Trial,
    contents,
    refused,
    shop,
)


def test_values_that_change_places(trial: Trial) -> None:
    """Of a column of few values each is the new one of some other row."""
    shop(trial, "digit varchar(1) UNIQUE")
    trial.run(
        "DELETE FROM orders; DELETE FROM customers WHERE id > 9; UPDATE customers SET digit = id"
    )
    options = f"--table customers {KEYS} --other digit=hash"
    told = refused(trial, options)
    if isinstance(trial, Lite):
        assert told == "ADDRESS: UNIQUE constraint failed: customers.digit: nothing was changed."
        return
    assert told == (
        'ADDRESS: duplicate key value violates unique constraint "customers_digit_key": nothing was'
        " changed. Where it is DEFERRABLE, rows may change places."
    )
    trial.run(
        "ALTER TABLE customers DROP CONSTRAINT customers_digit_key;"
        "ALTER TABLE customers ADD UNIQUE (digit) DEFERRABLE"
    )
    succeed(f"replace '{trial.address}' {options}")
    assert len({digit for (digit,) in trial.rows("SELECT digit FROM customers")}) == 9


def test_what_is_checked_at_the_end_is_checked_before_anything_is_written(post: Post) -> None:
    shop(post, "town text, UNIQUE (town) DEFERRABLE INITIALLY DEFERRED")
    post.run("UPDATE customers SET town = id::text")
    options = f"--table customers {KEYS} --record r.json --other town=fake:prefix"
    assert refused(post, options) == (
        'ADDRESS: duplicate key value violates unique constraint "customers_town_key": nothing was'
        " changed. Where it is DEFERRABLE, rows may change places."
    )
    assert not Path("r.json").exists()


def test_a_failure_in_the_second_table_leaves_the_first_as_it_was(trial: Trial) -> None:
    shop(trial)
    if isinstance(trial, Post):
        trial.run(
            "CREATE FUNCTION no() RETURNS trigger LANGUAGE plpgsql AS"
            " 'BEGIN RAISE EXCEPTION ''not here''; END';"
            "CREATE TRIGGER no BEFORE UPDATE ON orders FOR EACH ROW EXECUTE FUNCTION no()"
        )
    else:
        trial.run(
            "CREATE TRIGGER no BEFORE UPDATE ON orders WHEN OLD.number = 50"
            " BEGIN SELECT RAISE(FAIL, 'not here'); END"
        )
    assert refused(trial, f"--table customers --table orders {KEYS}") == "ADDRESS: not here."


def test_rows_that_are_kept_from_being_changed(trial: Trial) -> None:
    shop(trial)
    if isinstance(trial, Post):
        trial.run(
            "CREATE FUNCTION no() RETURNS trigger LANGUAGE plpgsql AS"
            " 'BEGIN RETURN CASE WHEN OLD.id <> 7 THEN NEW END; END';"
            "CREATE TRIGGER no BEFORE UPDATE ON customers FOR EACH ROW EXECUTE FUNCTION no()"
        )
    else:
        trial.run(
            "CREATE TRIGGER no BEFORE UPDATE ON customers WHEN OLD.id = 7"
            " BEGIN SELECT RAISE(IGNORE); END"
        )
    assert refused(trial, f"--table customers {KEYS}") == (
        "Table 'customers': of 30 rows the database changed 29, so nothing was changed. A trigger or"
        " a rule may keep the others, or they have no primary key."
    )


def test_what_a_constraint_forbids(trial: Trial) -> None:
    shop(trial, "CHECK (email LIKE '%@qb.org')")
    told = refused(trial, f"--table customers {KEYS}")
    assert told.startswith("ADDRESS: ")
    assert told.endswith("nothing was changed.")
    assert "check constraint" in told.lower()


def test_nothing_is_left_of_a_killed_run(post: Post) -> None:
    shop(post)
    before = contents(post)
    post.run(
        "CREATE FUNCTION slow() RETURNS trigger LANGUAGE plpgsql AS"
        " 'BEGIN PERFORM pg_sleep(0.05); RETURN NEW; END';"
        "CREATE TRIGGER slow BEFORE UPDATE ON orders FOR EACH ROW EXECUTE FUNCTION slow()"
    )
    line = f"replace '{post.address}' --table customers --table orders {KEYS}"
    with subprocess.Popen(
        command_line(line), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL
    ) as process:
        _until(lambda: bool(_updates(post)))
        process.kill()
    _until(lambda: not _updates(post))
    assert contents(post) == before
    assert process.returncode == -signal.SIGKILL


def _updates(post: Post) -> list[tuple[object, ...]]:
    return post.rows(
        f"SELECT 1 FROM pg_stat_activity WHERE datname = '{post.name}' AND state = 'active'"
        ' AND query LIKE \'UPDATE "public"."orders"%\''
    )


def _until(is_so: Callable[[], bool]) -> None:
    for _ in range(600):
        if is_so():
            return
        time.sleep(0.05)
    raise AssertionError("It did not come about")


def test_rows_without_a_primary_key(lite: Lite) -> None:
    """SQLite takes them, in any number, where a key is not of integers alone."""
    shop(lite)
    lite.run("CREATE TABLE people (id text PRIMARY KEY, first_name text, last_name text)")
    lite.add("people", [(None, "Anna", "Abel"), (None, "Bert", "Beck"), ("NULL", "Cleo", "Cox")])
    assert refused(lite, "--table people --secret s") == (
        "Table 'people': of 3 rows the database changed 1, so nothing was changed. A trigger or a"
        " rule may keep the others, or they have no primary key."
    )


@pytest.mark.parametrize(
    ("declared", "value", "why"),
    [
        ("integer", "207946000", 'value "..." is out of range for type integer'),
        ("json", "1", "invalid input syntax for type json"),
    ],
)
def test_a_column_that_cannot_hold_what_is_made_is_named(
    post: Post, declared: str, value: str, why: str
) -> None:
    shop(post, f'"second phone" {declared}')
    post.run(f"UPDATE customers SET \"second phone\" = '{value}', mobile = NULL")
    options = f"--table customers {KEYS} --column 'mobile_number=second phone'"
    told = re.sub('".*"', '"..."', refused(post, options))
    assert told == (
        f"Column 'second phone' of table 'customers' cannot hold what is made for it: {why}."
    )

"""Columns that hold bytes, which are no texts of people."""

from __future__ import annotations

from pathlib import Path

import pytest

from support.command import fail, succeed
from support.databases import Post, Trial

ROWS = [(1, "Ann", b"Lee", b"\xff\xd8"), (2, "Bo", b"Ray", None)]


@pytest.fixture
def full(trial: Trial) -> Trial:
    """A table of people with names and pictures of bytes."""
    kind = "bytea" if isinstance(trial, Post) else "text"
    trial.run(
        "CREATE TABLE people"
        f" (id integer PRIMARY KEY, first_name text, last_name {kind}, picture {kind})"
    )
    trial.add("people", ROWS)
    return trial


def test_bytes_are_not_replaced_by_texts(full: Trial) -> None:
    line = f"replace '{full.address}' --table people --key id --secret s"
    assert fail(line, 1) == (
        "Column 'last_name' of table 'people' cannot be changed: it holds bytes. --keep lastname"
        " keeps it."
    )
    assert fail(f"{line} --keep lastname --other picture=hash", 1) == (
        "Column 'picture' of table 'people' cannot be changed: it holds bytes. --other picture=keep"
        " keeps it."
    )
    assert full.rows("SELECT * FROM people ORDER BY id") == ROWS


def test_bytes_stay_or_are_blanked(full: Trial) -> None:
    line = f"replace '{full.address}' --key people.id --other people.picture=blank"
    succeed(f"{line} --write-plan plan.toml")
    assert (
        'last_name = "keep" # cannot be changed: it holds bytes\n' in Path("plan.toml").read_text()
    )
    succeed(f"replace '{full.address}' --plan plan.toml --secret s")
    found = full.rows("SELECT * FROM people ORDER BY id")
    assert [(row[0], *row[2:]) for row in found] == [(1, b"Lee", None), (2, b"Ray", None)]
    assert not {row[1] for row in found} & {"Ann", "Bo"}

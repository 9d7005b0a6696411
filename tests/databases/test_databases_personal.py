"""Tables in which nobody is named, but columns look personal."""

from __future__ import annotations

import tomllib
from pathlib import Path

import pytest

from support.command import fail, succeed
from support.databases import KEYS, Trial, shop

WITHOUT_SECRET = KEYS.removesuffix(" --secret s")
UNDECIDED = "Nothing was written, as columns look personal and are not decided. "


def accounts(trial: Trial) -> None:
    trial.run(
        "CREATE TABLE accounts (customer_id integer PRIMARY KEY, iban varchar(34), date_of_birth date)"
    )
    trial.add(
        "accounts",
        [
            (number, f"GB{98 - check}WEST{account}", f"19{40 + number}-05-06")
            for number in range(1, 31)
            for account in [f"12345698{700_000 + number}"]
            # W, E, S and T count as 32, 14, 28 and 29, and G and B as 16 and 11.
            for check in [int(f"32142829{account}161100") % 97]
            if 98 - check > 9  # one digit would need a zero before it
        ],
    )


def other_of(plan: str) -> dict[str, str]:
    other: dict[str, str] = tomllib.loads(Path(plan).read_text())["tables"]["accounts"]["other"]
    return other


@pytest.mark.parametrize("tables", ["", "--table customers --table accounts"])
def test_a_plan_has_them_with_columns_that_are_undecided(trial: Trial, tables: str) -> None:
    shop(trial)
    accounts(trial)
    key = "--key customers.id --key accounts.customer_id"
    succeed(f"replace '{trial.address}' {tables} {key} --write-plan plan.toml")
    wanted = {"customer_id": "keep", "iban": "undecided", "date_of_birth": "undecided"}
    assert other_of("plan.toml") == wanted
    before = trial.rows("SELECT iban FROM accounts ORDER BY customer_id")
    by_plan = f"replace '{trial.address}' {tables} --plan plan.toml --secret s"
    assert "accounts: Column 'iban' looks personal (bank account)" in fail(f"{by_plan} --strict", 1)
    assert trial.rows("SELECT iban FROM accounts ORDER BY customer_id") == before
    decided = Path("plan.toml").read_text().replace('"undecided"', '"blank"')
    Path("plan.toml").write_text(decided)
    succeed(by_plan)
    assert trial.rows("SELECT DISTINCT iban, date_of_birth FROM accounts") == [(None, None)]


def test_strict_refuses_them_while_they_are_undecided(trial: Trial) -> None:
    shop(trial)
    accounts(trial)
    strict = f"replace '{trial.address}' {KEYS} --other born=keep --other note=keep --strict"
    told = fail(strict, 1)
    assert told.startswith(f"{UNDECIDED}accounts: Column 'iban' looks personal (bank account)")
    assert "accounts: Column 'date_of_birth' looks personal (date of birth)" in told
    succeed(f"{strict} --other iban=keep --other accounts.date_of_birth=keep")


def test_a_run_without_a_plan_tells_of_them(trial: Trial) -> None:
    shop(trial)
    accounts(trial)
    note = (
        "vantrel: note: Nobody is named in these tables, but columns look personal, and stay:"
        " 'accounts'. A plan, which --write-plan writes, decides about them.\n"
    )
    line = f"replace '{trial.address}' {KEYS} --dry-run"
    assert succeed(line).stderr.count(note) == 1
    assert note not in succeed(f"{line} --table customers --table orders").stderr


def test_a_new_one_is_not_left_out_of_a_plan(trial: Trial) -> None:
    shop(trial)
    succeed(f"replace '{trial.address}' {WITHOUT_SECRET} --write-plan plan.toml")
    accounts(trial)
    by_plan = f"replace '{trial.address}' --plan plan.toml --secret s"
    assert fail(by_plan, 1) == (
        "There are columns that look personal in tables that are not in the plan: 'accounts'. Write"
        " a plan of all tables, with --write-plan, name those to change, by --table, or let new"
        ' ones stay: new_columns = "keep".'
    )
    plan = Path("plan.toml").read_text()
    Path("plan.toml").write_text(plan.replace('"refuse"', '"keep"', 1))
    succeed(by_plan)


def test_a_table_with_nothing_personal_is_left_out(trial: Trial) -> None:
    shop(trial)
    trial.run("CREATE TABLE colours (id integer PRIMARY KEY, colour text)")
    trial.add("colours", [(1, "red"), (2, "blue")])
    told = succeed(f"replace '{trial.address}' {WITHOUT_SECRET} --write-plan plan.toml").stderr
    assert "colours" not in told + Path("plan.toml").read_text()
    assert "colours" not in succeed(f"replace '{trial.address}' {KEYS} --dry-run").stderr

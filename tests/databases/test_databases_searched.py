"""Databases that are searched for people, with tables in them that cannot be read or changed."""

from __future__ import annotations

from itertools import pairwise
from pathlib import Path

from support.command import fail, succeed
from support.databases import Post, Trial, contents, shop

CUSTOMERS = "--key customers.id --key orders.customer_id"
KEYS = f"{CUSTOMERS} --secret s"


def in_place(told: str) -> list[str]:
    """The tables that were changed, as they are told."""
    lines = told.splitlines()
    return [before for before, line in pairwise(lines) if line.startswith("Attribute")]


def test_tables_that_cannot_be_read_are_named_and_passed_over(post: Post) -> None:
    shop(post)
    post.run(
        "CREATE TABLE hidden (id integer PRIMARY KEY, email text);"
        "CREATE TABLE owned (id integer PRIMARY KEY, email text);"
        "INSERT INTO hidden VALUES (1, 'a@b.org'); INSERT INTO owned SELECT * FROM hidden;"
        "DROP ROLE IF EXISTS scribe; CREATE ROLE scribe LOGIN;"
        "GRANT SELECT, UPDATE ON customers, orders, owned TO scribe;"
        "ALTER TABLE owned ENABLE ROW LEVEL SECURITY"
    )
    before = contents(post, "hidden", "owned")
    line = f"replace '{post.address_of('scribe')}' {KEYS}"
    note = (
        "vantrel: note: Nobody was looked for in these tables, as the user of the address cannot"
        " read all of their rows: 'hidden', 'owned'.\n"
    )
    planned = succeed(f"{line.removesuffix(' --secret s')} --write-plan plan.toml")
    assert planned.stderr.count(note) == 1
    by_plan = succeed(
        f"replace '{post.address_of('scribe')}' --plan plan.toml --secret s --dry-run"
    )
    assert by_plan.stderr.count(note) == 1
    told = succeed(line)
    assert told.stderr.count(note) == 1
    assert in_place(told.stdout) == ["customers", "orders"]
    assert contents(post, "hidden", "owned") == before
    lacking = (
        "Table 'hidden' cannot be changed: the user of the address lacks the right SELECT on it."
    )
    assert fail(f"{line} --table hidden", 1) == lacking
    post.run("ALTER TABLE owned DISABLE ROW LEVEL SECURITY")
    assert fail(f"{line} --key hidden.id", 1) == (
        f"{lacking} Or leave it as it is: --table customers --table orders --table owned names the"
        " others."
    )


def test_a_table_that_cannot_be_changed_does_not_hide_which_can(trial: Trial) -> None:
    shop(trial)
    trial.run("CREATE TABLE lonely (email text); INSERT INTO lonely VALUES ('a@b.org')")
    refusal = (
        "Table 'lonely' has no primary key, by which its rows would be found again: give it one."
    )
    hint = " Or leave it as it is: --table customers --table orders names the others."
    line = f"replace '{trial.address}' {KEYS}"
    assert fail(line, 1) == refusal + hint
    assert fail(f"{line} --table lonely --table orders", 1) == refusal
    trial.run("DROP TABLE orders; DROP TABLE customers")
    assert fail(f"replace '{trial.address}' --secret s", 1) == refusal


def test_a_table_without_a_key_is_planned_to_stay(trial: Trial) -> None:
    shop(trial)
    trial.run(
        "CREATE TABLE lonely (email text, ip text);"
        "CREATE TABLE visits (seen integer, ip text, email_note text);"
        "INSERT INTO lonely VALUES ('a@b.org', '10.0.0.1');"
        "INSERT INTO visits VALUES (1, '10.0.0.1', NULL)"
    )
    before = contents(trial, "lonely", "visits")
    planned = succeed(f"replace '{trial.address}' {CUSTOMERS} --write-plan plan.toml")
    lacking = "has no primary key, by which its rows would be found again: give it one."
    for name in ("lonely", "visits"):
        assert f"vantrel: note: {name} is planned to stay: it {lacking}\n" in planned.stderr
    of_lonely = Path("plan.toml").read_text().partition("[tables.lonely.other]\n")[2]
    assert of_lonely.splitlines()[:2] == [
        'email = "keep" # the key; cannot be changed: its table has no primary key',
        'ip = "keep" # cannot be changed: its table has no primary key',
    ]
    told = succeed(f"replace '{trial.address}' --plan plan.toml --secret s")
    assert told.stdout.count("Replaced nobody in 1 row in place.\n") == 2
    assert contents(trial, "lonely", "visits") == before
    assert not trial.rows("SELECT 1 FROM customers WHERE first_name LIKE 'Qa%'")
    assert fail(f"replace '{trial.address}' --plan plan.toml --other lonely:ip=blank", 1) == (
        f"Table 'lonely' {lacking}"
    )


def test_personal_columns_of_a_table_without_a_key_are_to_be_decided(trial: Trial) -> None:
    shop(trial)
    trial.run("CREATE TABLE visits (seen integer, ip text); INSERT INTO visits VALUES (1, '::1')")
    line = f"replace '{trial.address}' {KEYS} --scrub customers:note --other customers:born=blank"
    assert fail(f"{line} --strict", 1) == (
        "Nothing was written, as columns look personal and are not decided. visits: Column 'ip'"
        " looks personal (IP address): its name says so. It stays; --other ip=fake:ipv4 decides."
    )
    assert (
        "Replaced nobody in 1 row in place.\n"
        in succeed(f"{line} --strict --other visits:ip=keep").stdout
    )

"""Databases that are searched for people, with tables in them that cannot be read or changed."""

from __future__ import annotations

from itertools import pairwise

from support.command import fail, succeed
from support.databases import Post, Trial, contents, shop

KEYS = "--key customers.id --key orders.customer_id --secret s"


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
    assert fail(f"{line.removesuffix(' --secret s')} --write-plan plan.toml", 1) == refusal + hint
    assert fail(f"{line} --table lonely --table orders", 1) == refusal
    trial.run("DROP TABLE orders; DROP TABLE customers")
    assert fail(f"replace '{trial.address}' --secret s", 1) == refusal

"""People of tables of databases, replaced where they are."""

from __future__ import annotations

import csv
import json
from pathlib import Path

import pandas as pd
import pytest

from support.command import fail, succeed
from support.databases import (
    KEYS,
    OF_CUSTOMERS,
    OF_ORDERS,
    Post,
    Trial,
    contents,
    customers,
    orders,
    shop,
)
from vantrel.databases import fetching
from vantrel.databases.address import read_address
from vantrel.databases.database import opened_database
from vantrel.databases.table import opened_table

RUN = f"replace '{{}}' --table customers --table orders {KEYS}"


def in_files(options: str) -> list[list[list[str]]]:
    """The rows of the tables of the shop as they come out of files."""
    pd.DataFrame(customers(), columns=OF_CUSTOMERS).to_csv("customers.csv", index=False)
    pd.DataFrame(orders(), columns=OF_ORDERS).to_csv("orders.csv", index=False)
    succeed(
        "replace customers.csv orders.csv -o out --key customers:id --key orders:customer_id"
        f" --secret s {options}"
    )
    found = []
    for name in ("customers", "orders"):
        with Path("out", f"{name}.csv").open() as file:
            found.append([*csv.reader(file)][1:])
    return found


def texts(tables: list[list[tuple[object, ...]]]) -> list[list[list[str]]]:
    """Cells as CSV has them; SQLite's numbers have no zeros at their end."""
    return [
        [["" if cell is None else str(cell) for cell in row] for row in table] for table in tables
    ]


@pytest.mark.parametrize(
    "options", ["", "--scrub note --other born=shift:90", "--keep email --other note=blank"]
)
def test_people_become_who_they_become_in_files(trial: Trial, options: str) -> None:
    shop(trial)
    wanted = in_files(options)
    succeed(f"{RUN.format(trial.address)} {options}")
    found = texts(contents(trial))
    assert found[0] == wanted[0]
    assert [row[:3] for row in found[1]] == [row[:3] for row in wanted[1]]
    assert [float(row[3]) for row in found[1]] == [float(row[3]) for row in wanted[1]]


def test_what_is_told(trial: Trial) -> None:
    shop(trial)
    told = succeed(RUN.format(trial.address))
    assert told.stdout.startswith("\ncustomers\nAttribute")
    assert "Other columns stay: 'id', 'born', 'note'.\n" in told.stdout
    assert told.stdout.endswith(
        "Other columns stay: 'number', 'customer_id', 'total'.\n"
        "Replaced the people of 60 rows in place.\n"
    )
    assert (
        "vantrel: note: customers: Column 'note': 10 cells still name the row's person (rows 3, 6,"
        " 9): add --scrub note.\n"
    ) in told.stderr


def test_a_dry_run_shows_ten_rows_and_changes_nothing(trial: Trial) -> None:
    shop(trial)
    before = contents(trial)
    told = succeed(f"{RUN.format(trial.address)} --dry-run")
    assert contents(trial) == before
    assert not Path("s").exists()
    lines = told.stdout.splitlines()
    assert [line for line in lines if "first rows" in line] == [
        "customers, the first rows",
        "orders, the first rows",
    ]
    assert [line.split()[1:3] for line in lines if line.startswith("before")][:10] == [
        [str(number), f"Qa{number}"] for number in range(1, 11)
    ]
    assert sum(line.startswith("after") for line in lines) == 20
    assert lines[-1] == "Would replace the people of 60 rows; nothing was changed."
    assert "No secret was kept: another one decides when this is done.\n" in told.stderr


def test_a_dry_run_tells_who_it_will_be(trial: Trial) -> None:
    shop(trial)
    succeed(f"replace '{trial.address}' --table orders {KEYS} --record record.json")
    shown = succeed(f"{RUN.format(trial.address)} --dry-run").stdout.splitlines()
    succeed(RUN.format(trial.address))
    after = next(line for line in shown if line.startswith("after"))
    (first, *_), _ = contents(trial)
    assert " ".join(first[2:4]) in " ".join(after.split())


def test_tables_in_which_people_are_found(trial: Trial) -> None:
    shop(trial)
    trial.run("CREATE TABLE colours (id integer PRIMARY KEY, colour text)")
    trial.add("colours", [(1, "red"), (2, "blue")])
    told = succeed(f"replace '{trial.address}' {KEYS}").stdout
    assert [line for line in told.splitlines() if line in ("customers", "orders", "colours")] == [
        "customers",
        "orders",
    ]


def test_a_table_of_which_something_is_asked_is_one_of_them(trial: Trial) -> None:
    shop(trial)
    trial.run("CREATE TABLE colours (id integer PRIMARY KEY, colour text)")
    trial.add("colours", [(1, "red"), (2, "blue")])
    succeed(f"replace '{trial.address}' {KEYS} --other colours.colour=blank")
    assert trial.rows("SELECT * FROM colours ORDER BY 1") == [(1, None), (2, None)]


def test_a_plan_is_written_and_run(trial: Trial) -> None:
    shop(trial)
    before = contents(trial)
    succeed(f"replace '{trial.address}' {KEYS.rpartition(' --secret')[0]} --write-plan plan.toml")
    assert contents(trial) == before
    plan = Path("plan.toml").read_text()
    assert '[[tables.customers.people]]\nkey = ["id"] # named' in plan
    assert 'born = "undecided"' in plan
    Path("plan.toml").write_text(plan.replace('born = "undecided"', 'born = "blank"'))
    wanted = in_files("--other born=blank")
    succeed(f"replace '{trial.address}' --plan plan.toml --secret s")
    assert texts(contents(trial, "customers")) == wanted[:1]


def test_a_new_table_with_people_is_not_left_out_of_a_plan(trial: Trial) -> None:
    shop(trial)
    succeed(f"replace '{trial.address}' {KEYS.rpartition(' --secret')[0]} --write-plan plan.toml")
    trial.run("CREATE TABLE staff (id integer PRIMARY KEY, first_name text, last_name text)")
    trial.add("staff", [(1, "Ann", "Lee")])
    by_plan = f"replace '{trial.address}' --plan plan.toml --secret s"
    assert fail(by_plan, 1) == (
        "There are people in tables that are not in the plan: 'staff'. Write a plan of all tables,"
        " with --write-plan, name those to change, by --table, or let new ones stay: new_columns ="
        ' "keep".'
    )
    plan = Path("plan.toml").read_text()
    Path("plan.toml").write_text(plan.replace('"refuse"', '"keep"', 1))
    succeed(by_plan)


def test_a_record_tells_how_it_was_made_but_not_where(trial: Trial) -> None:
    shop(trial)
    succeed(f"{RUN.format(trial.address)} --record record.json")
    record = json.loads(Path("record.json").read_text())
    assert record["format"] == "vantrel-replace-database"
    assert [(each["table"], each["rows"]) for each in record["tables"]] == [
        ("customers", 30),
        ("orders", 60),
    ]
    assert "shop" not in Path("record.json").read_text()


def test_many_rows_in_several_batches(trial: Trial, monkeypatch: pytest.MonkeyPatch) -> None:
    rows = customers(3_000)
    shop(trial)
    trial.run("DELETE FROM orders; DELETE FROM customers")
    trial.add("customers", rows)
    whole = f"replace '{trial.address}' --table customers --key id --secret s --dry-run"
    Path("s").write_text("secret: " + "5" * 64 + "\n")
    Path("s").chmod(0o600)
    at_once = succeed(whole).stdout
    monkeypatch.setattr(fetching, "_FIRST_ROWS", 7)
    monkeypatch.setattr(fetching, "_BYTES", 5_000)
    assert succeed(whole).stdout == at_once
    succeed(whole.removesuffix(" --dry-run"))
    found = trial.rows("SELECT first_name, email FROM customers")
    assert len({email for _, email in found}) == 3_000
    assert not [name for name, _ in found if name.startswith("Qa")]


def test_tables_without_rows(trial: Trial) -> None:
    shop(trial)
    trial.run("DELETE FROM orders; DELETE FROM customers")
    told = succeed(f"replace '{trial.address}' --table customers --secret s").stdout
    assert told.endswith("Replaced the people of 0 rows in place.\n")


def test_rows_without_a_key_are_people_of_their_own(trial: Trial) -> None:
    trial.run(
        "CREATE TABLE visits (number integer PRIMARY KEY, visitor integer, first_name text, last_name text)"
    )
    trial.add("visits", [(n, None if n % 2 else 1, "Ann", "Lee") for n in range(6)])
    told = succeed(f"replace '{trial.address}' --table visits --key visitor --secret s")
    assert "3 rows without a key: each is a person of its own." in told.stderr
    names = [
        tuple(row) for row in trial.rows("SELECT first_name, last_name FROM visits ORDER BY number")
    ]
    assert len(set(names[::2])) == 1
    assert len(set(names)) == 4


def test_triggers_are_named(trial: Trial) -> None:
    shop(trial)
    if isinstance(trial, Post):
        trial.run(
            "CREATE FUNCTION noted() RETURNS trigger LANGUAGE plpgsql AS 'BEGIN RETURN NEW; END';"
            "CREATE TRIGGER audit AFTER UPDATE ON customers EXECUTE FUNCTION noted();"
            "CREATE TRIGGER born AFTER INSERT ON customers EXECUTE FUNCTION noted();"
        )
    else:
        trial.run(
            "CREATE TRIGGER audit AFTER UPDATE OF email ON customers BEGIN SELECT 1; END;"
            "CREATE TRIGGER born AFTER INSERT ON customers BEGIN"
            " UPDATE customers SET note = '' WHERE id = 0; END;"
        )
    assert (
        "vantrel: note: customers: trigger 'audit' runs where rows are changed, and may keep what"
        " was there.\n"
    ) in succeed(RUN.format(trial.address)).stderr


def test_rules_and_triggers_of_partitions_are_named(post: Post) -> None:
    columns = "id integer PRIMARY KEY, email text"
    post.run(
        f"""
        CREATE TABLE people ({columns}) PARTITION BY RANGE (id);
        CREATE TABLE few PARTITION OF people FOR VALUES FROM (0) TO (9) PARTITION BY RANGE (id);
        CREATE TABLE fewest PARTITION OF few FOR VALUES FROM (0) TO (5);
        CREATE TABLE log ({columns});
        CREATE FUNCTION noted() RETURNS trigger LANGUAGE plpgsql AS 'BEGIN RETURN NEW; END';
        CREATE TRIGGER all_rows AFTER UPDATE ON people FOR EACH ROW EXECUTE FUNCTION noted();
        CREATE TRIGGER each_row AFTER UPDATE ON fewest FOR EACH ROW EXECUTE FUNCTION noted();
        CREATE TRIGGER never AFTER UPDATE ON fewest EXECUTE FUNCTION noted();
        CREATE TRIGGER off AFTER UPDATE ON few FOR EACH ROW EXECUTE FUNCTION noted();
        ALTER TABLE few DISABLE TRIGGER off;
        CREATE RULE kept AS ON UPDATE TO people DO ALSO INSERT INTO log VALUES (OLD.id, OLD.email);
        CREATE RULE gone AS ON DELETE TO people DO INSTEAD NOTHING;
        INSERT INTO people VALUES (1, 'ann@b.org')
        """
    )
    assert (
        "vantrel: note: people: trigger 'all_rows', trigger 'each_row' of 'fewest' and rule 'kept' run"
        " where rows are changed, and may keep what was there.\n"
    ) in succeed(f"replace '{post.address}' --table people --secret s").stderr
    assert post.rows("SELECT email FROM log") == [("ann@b.org",)]


ODD = [
    "",
    " ",
    "a,b",
    'say "x"',
    "back\\slash\\\\",
    "(x)",
    "two\nlines",
    "\r\n",
    "\\N",
    "\\.",
    "é\u00a0ö",
    "NULL",
    None,
]


def test_odd_texts_stay_to_the_letter(trial: Trial) -> None:
    trial.run(
        "CREATE TABLE odd (key varchar(20) PRIMARY KEY, text text, alone text, last_name text)"
    )
    rows = [(f"{number}{text or ''}", text, None, "Lee") for number, text in enumerate(ODD)]
    trial.add("odd", rows)
    succeed(
        f"replace '{trial.address}' --table odd --key key --secret s --column lastname=last_name"
        " --column username=text --keep username --scrub alone --other text=keep"
    )
    found = trial.rows("SELECT key, text, alone FROM odd")
    assert sorted(found) == sorted(row[:3] for row in rows)
    assert "Lee" not in {name for (name,) in trial.rows("SELECT last_name FROM odd")}


def test_odd_texts_come_as_they_are(post: Post) -> None:
    post.run("CREATE TABLE odd (text text)")
    post.add("odd", [(text,) for text in ODD])
    with opened_database(read_address(post.address)) as database:
        table = opened_table(database, "odd")
        found = [cell for batch in table.batches(["text"]) for cell in batch.column(0).to_pylist()]
    assert found == ODD


def test_names_that_need_quotation_marks(trial: Trial) -> None:
    trial.run(
        'CREATE TABLE "My ""Own"" %Table" ("the id" integer PRIMARY KEY, "First name" text,'
        ' "Last %name" text)'
    )
    trial.add(
        '"My ""Own"" %Table"'.replace("%", "%%" if isinstance(trial, Post) else "%"),
        [(1, "Ann", "Lee")],
    )
    succeed(
        f"replace '{trial.address}' --table 'My \"Own\" %Table' --key 'the id' --secret s"
        " --column 'firstname=First name' --column 'lastname=Last %name'"
    )
    ((number, *names),) = trial.rows('SELECT * FROM "My ""Own"" %Table"')
    assert number == 1
    assert not {*names} & {"Ann", "Lee"}


def test_keys_of_several_columns_and_of_texts(trial: Trial) -> None:
    trial.run(
        "CREATE TABLE people (shop varchar(5), number integer, email text,"
        " PRIMARY KEY (shop, number))"
    )
    rows = [
        (shop_name, number, f"a{number}@b.org")
        for shop_name in ("x", "x y", "ö")
        for number in range(4)
    ]
    trial.add("people", rows)
    succeed(f"replace '{trial.address}' --table people --key shop,number --secret s")
    found = trial.rows("SELECT * FROM people ORDER BY number, shop")
    assert sorted(row[:2] for row in found) == sorted(row[:2] for row in rows)
    assert len({row[2] for row in found}) == 12


def test_a_schema(post: Post) -> None:
    post.run(
        "CREATE SCHEMA elsewhere; SET search_path = elsewhere; CREATE TABLE staff (id integer PRIMARY KEY, email text)"
    )
    post.add("elsewhere.staff", [(1, "ann@b.org")])
    succeed(f"replace '{post.address}' --schema elsewhere --table staff --secret s")
    ((email,),) = post.rows("SELECT email FROM elsewhere.staff")
    assert email.endswith(".example")


def test_columns_that_the_database_makes_follow(trial: Trial) -> None:
    shop(trial, "label text GENERATED ALWAYS AS (first_name || '!' || last_name) STORED")
    run = f"replace '{trial.address}' --table customers {KEYS} --keep fullname --other note=blank"
    told = succeed(f"{run} --fail-on-leak")
    assert "label" not in told.stderr
    assert not trial.rows("SELECT 1 FROM customers WHERE label <> first_name || '!' || last_name")


def test_a_name_that_begins_as_that_of_another_table(trial: Trial) -> None:
    shop(trial)
    trial.run(
        'CREATE TABLE "customers.old" (id integer PRIMARY KEY, first_name text, note text);'
        """INSERT INTO "customers.old" VALUES (1, 'Qa1', 'as it was')"""
    )
    tables = "--table customers --table customers.old"
    succeed(f"replace '{trial.address}' {tables} {KEYS} --other customers.note=blank")
    assert trial.rows('SELECT note FROM "customers.old"') == [("as it was",)]

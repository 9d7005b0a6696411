"""Tables of databases to learn from, to compare, and to fill."""

from __future__ import annotations

import stat
from pathlib import Path

import pandas as pd
import pytest

from support.command import fail, run, succeed
from support.databases import OF_CUSTOMERS, Lite, Post, Trial, customers, shop


def table_of(trial: Trial, table: str, schema: str = "") -> str:
    sign = "&" if "?" in trial.address else "?"
    return f"'{trial.address}{sign}table={table}{f'&schema={schema}' if schema else ''}'"


def shown(trial: Trial, table: str) -> str:
    return f"{trial.address.partition('?')[0]}?table={table}"


@pytest.fixture
def filled(trial: Trial) -> Trial:
    shop(trial)
    pd.DataFrame(customers(), columns=OF_CUSTOMERS).to_csv("customers.csv", index=False)
    return trial


def test_a_model_is_that_of_the_same_rows_in_a_file(filled: Trial) -> None:
    succeed("fit customers.csv -o file.json")
    told = succeed(f"fit {table_of(filled, 'customers')} -o database.json")
    assert Path("database.json").read_text() == Path("file.json").read_text()
    assert told.stdout.endswith(
        f"Learnt from 30 rows of {shown(filled, 'customers')}; wrote database.json.\n"
    )


def test_a_view_will_do_to_learn_from(filled: Trial) -> None:
    filled.run("CREATE VIEW shown AS SELECT * FROM customers WHERE country = 'DE'")
    assert "Learnt from 10 rows" in succeed(f"fit {table_of(filled, 'shown')} -o m.json").stdout


def test_gaps_and_empty_texts_are_missing(filled: Trial) -> None:
    rows = [(n, (None, "", sex)[min(n // 9, 2)], *rest) for n, sex, *rest in customers()]
    filled.run("DELETE FROM orders; DELETE FROM customers")
    filled.add("customers", rows)
    pd.DataFrame(rows, columns=OF_CUSTOMERS).to_csv("gaps.csv", index=False)
    succeed("fit gaps.csv -o file.json")
    succeed(f"fit {table_of(filled, 'customers')} -o database.json")
    assert Path("database.json").read_text() == Path("file.json").read_text()


def test_a_report_compares_tables_of_databases(filled: Trial) -> None:
    succeed("fit customers.csv -o m.json")
    succeed("sample m.json -n 50 --seed 7 -o people.csv")
    succeed("report customers.csv people.csv -o files.html")
    told = succeed(f"report {table_of(filled, 'customers')} people.csv -o report.html").stdout
    assert told.startswith("Compared 30 real rows with 50 sampled rows: ")
    assert stat.S_IMODE(Path("report.html").stat().st_mode) == 0o600
    page = Path("files.html").read_text().replace("customers.csv", "customers")
    assert Path("report.html").read_text() == page
    assert fail(
        f"report {table_of(filled, 'customers')} {table_of(filled, 'customers')} -o r.html", 2
    ) == (
        f"{shown(filled, 'customers')} and {shown(filled, 'customers')} are the same table: name the"
        " real table, then a sample of it."
    )


SAMPLED = "sex first_name last_name email mobile country".split()


def test_a_sample_fills_a_table(filled: Trial) -> None:
    succeed("fit customers.csv -o m.json")
    succeed("sample m.json -n 60000 --seed 7 -o people.csv")
    columns = ", ".join(f"{name} text" for name in SAMPLED)
    filled.run(f"CREATE TABLE made (number integer DEFAULT 7, {columns})")
    told = succeed(f"sample m.json -n 60000 --seed 7 -o {table_of(filled, 'made')} --append")
    assert told.stdout == (
        f"Made 60,000 people with the seed 7; added them to {shown(filled, 'made')}.\n"
    )
    wanted = pd.read_csv("people.csv", dtype=str, keep_default_na=False)[SAMPLED]
    found = filled.rows(f"SELECT number, {', '.join(SAMPLED)} FROM made")
    assert {row[0] for row in found} == {7}
    rows = [tuple("" if cell is None else cell for cell in row[1:]) for row in found]
    assert sorted(rows) == sorted(map(tuple, wanted.to_numpy().tolist()))


def test_a_table_gets_all_people_or_none(filled: Trial) -> None:
    succeed("fit customers.csv -o m.json")
    columns = ", ".join(f"{name} text" for name in SAMPLED)
    filled.run(f"CREATE TABLE made ({columns}, CHECK (first_name < 'Zac'))")
    before = filled.rows("SELECT count(*) FROM made")
    told = run(f"sample m.json -n 120000 --seed 7 -o {table_of(filled, 'made')} --append")
    assert told.exit_code == 1
    *_, error = told.stderr.splitlines()
    assert error.startswith(f"vantrel: error: {shown(filled, 'made')}: ")
    assert "constraint" in error.lower()
    assert filled.rows("SELECT count(*) FROM made") == before


REFUSED = [
    ("made", "", 2, "{} would get more rows: add --append."),
    ("mad", "--append", 1, "{where} has no table 'mad' in schema '{schema}'. Did you mean 'made'?"),
    (
        "made",
        "--append",
        1,
        "Table 'made' has no column 'sex' for the sample's. Its columns are: 'first'.",
    ),
    ("made", "--append --csv-safe", 2, "A database makes no use of --csv-safe: leave that out."),
    ("made", "--append --dask", 2, "A database makes no use of --dask: leave that out."),
    ("shown", "--append", 1, "{} is no table that rows are added to, but a view."),
]


@pytest.mark.parametrize(("table", "options", "status", "message"), REFUSED)
def test_what_cannot_be_filled(
    filled: Trial, table: str, options: str, status: int, message: str
) -> None:
    succeed("fit customers.csv -o m.json")
    filled.run("CREATE TABLE made (first text); CREATE VIEW shown AS SELECT * FROM made")
    told = fail(f"sample m.json -n 5 --seed 7 -o {table_of(filled, table)} {options}", status)
    schema = "main" if isinstance(filled, Lite) else "public"
    where = filled.address.partition("?")[0] + f"?table={table}"
    assert told.startswith(message.format(where, where=where, schema=schema))


def test_files_are_not_added_to(filled: Trial) -> None:
    succeed("fit customers.csv -o m.json")
    assert fail("sample m.json -n 5 -o people.csv --append", 2) == (
        "Only tables of databases get more rows: leave --append out."
    )


def test_an_address_names_a_table_here(filled: Trial) -> None:
    assert fail(f"fit '{filled.address}' -o m.json", 1) == (
        f"{filled.address.partition('?')[0]} names no table: add '?table=NAME'."
    )


def test_a_table_without_rows(filled: Trial) -> None:
    filled.run("DELETE FROM orders; DELETE FROM customers")
    assert fail(f"fit {table_of(filled, 'customers')} -o m.json", 1) == (
        "Table customers has a header but no rows: give it at least one."
    )


def test_a_schema_in_an_address(post: Post) -> None:
    post.run(
        "CREATE SCHEMA elsewhere; SET search_path = elsewhere; CREATE TABLE t (sex text, country text)"
    )
    post.add("elsewhere.t", [("f", "DE"), ("m", "GB")] * 10)
    told = succeed(f"fit {table_of(post, 't', 'elsewhere')} -o m.json").stdout
    assert "Learnt from 20 rows of " in told

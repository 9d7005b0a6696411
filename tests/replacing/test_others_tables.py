"""Other columns of whole tables, in memory and in files."""

from __future__ import annotations

import json
from pathlib import Path

import numpy as np
import pandas as pd
import pytest

pytest.importorskip("pyarrow", reason="other columns are changed by way of Arrow")

import pyarrow as pa
import pyarrow.parquet as pq

import vantrel
from support.command import fail, succeed
from support.replacing import SECRET, customers
from vantrel.errors import ReplaceError
from vantrel.replacing.columns.roles import find_roles
from vantrel.replacing.others.action import read_action
from vantrel.replacing.people.people import People
from vantrel.replacing.replacer import Replacer
from vantrel.replacing.runs.passing import Passing

ACTIONS = {
    "customer_id": "hash",
    "born": "shift:180",
    "iban": "fake:iban",
    "points": "blank",
    "note": "keep",
}
OPTIONS = " ".join(f"--other {column}={action}" for column, action in ACTIONS.items())


def with_others(people: int = 60) -> pd.DataFrame:
    table = customers(people)
    number = np.arange(people)
    return table.assign(
        born=(pd.Timestamp("1980-01-15") + pd.to_timedelta(number * 37, "D")).strftime("%Y-%m-%d"),
        iban=("GB" + table["customer_id"].astype(str)).where(number % 5 > 0, None),
        points=number * 2,
    )


def payments(of: pd.DataFrame) -> pd.DataFrame:
    return pd.DataFrame({"number": range(2 * len(of)), "buyer": [*of["customer_id"]] * 2})


@pytest.fixture(autouse=True)
def folder(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.chdir(tmp_path)
    monkeypatch.setenv("VANTREL_SECRET", SECRET.hex().zfill(64))


def as_texts(path: str) -> pd.DataFrame:
    return pd.read_csv(path, dtype=str)


def test_csv_and_parquet_are_alike() -> None:
    table = with_others()
    table.to_csv("c.csv", index=False)
    table.to_parquet("c.parquet", index=False)
    for kind in ("csv", "parquet"):
        succeed(f"replace c.{kind} -o copy.{kind} --key customer_id {OPTIONS}")
    csv, parquet = as_texts("copy.csv"), pd.read_parquet("copy.parquet")
    assert pq.read_schema("copy.parquet").types == pq.read_schema("c.parquet").types
    assert csv["points"].isna().all()
    assert parquet["points"].isna().all()
    for column in set(csv) - {"points"}:
        assert (
            csv[column].fillna("").tolist()
            == parquet[column].astype(str).where(parquet[column].notna(), "").tolist()
        )
    memory = vantrel.replace(table, "customer_id", bytes.fromhex(SECRET.hex()), others=ACTIONS)
    pd.testing.assert_frame_equal(memory.drop(columns="points"), parquet.drop(columns="points"))


def test_blank_cells_of_csv_are_empty() -> None:
    Path("c.csv").write_text('first_name,last_name,x\nAnn,Lee,"1, 2"\nBob,Ray,\nCat,Fox,""\n')
    succeed("replace c.csv -o copy.csv --other x=blank")
    lines = Path("copy.csv").read_text().splitlines()
    assert [line.rpartition(",")[2] for line in lines] == ["x", "", "", ""]


def test_keys_still_join() -> None:
    table = with_others()
    table.to_csv("customers.csv", index=False)
    payments(table).to_parquet("payments.parquet", index=False)
    succeed(
        "replace customers.csv payments.parquet -o copy --key customers:customer_id"
        " --key payments:buyer --other customers:customer_id=hash --other payments:buyer=hash"
    )
    made, paid = as_texts("copy/customers.csv"), pd.read_parquet("copy/payments.parquet")
    assert paid["buyer"].astype(str).tolist() == [*made["customer_id"]] * 2
    assert made["customer_id"].is_unique
    assert not made["customer_id"].isin(table["customer_id"].astype(str)).all()
    assert paid["number"].tolist() == list(range(2 * len(table)))


def test_what_is_told_and_recorded() -> None:
    Path("c.csv").write_text(
        "id,first_name,last_name,d,x\n1,Ann,Lee,2020-01-31,a\n2,Bo,Ray,tba,b\n"
    )
    result = succeed("replace c.csv -o copy.csv --key id --other d=shift:9 --other c:x=keep")
    assert result.stdout.splitlines()[3:] == [
        "firstname  first_name  name      replaced",
        "lastname   last_name   name      replaced",
        "           d           --other   shift:9:YYYY-MM-DD",
        "           x           --other   keep",
        "Other columns stay: 'id'.",
        "Replaced the people of 2 rows; wrote copy.csv.",
    ]
    assert (
        "vantrel: note: Column 'd': 1 cell without a date of the form YYYY-MM-DD that could be"
        " moved, now empty (row 2)."
    ) in result.stderr.splitlines()
    record = json.loads(Path("copy.csv.made.json").read_text())
    assert record["others"] == {"d": "shift:9:YYYY-MM-DD", "x": "keep"}


def test_a_column_with_an_action_is_not_told_to_stay() -> None:
    table = with_others().assign(billing_email=[f"x{each}@y.org" for each in range(60)])
    for others, is_told in (({}, True), ({"billing_email": "hash"}, False)):
        replacer = Replacer(SECRET)
        replacer.replace(table, "customer_id", others=others)
        assert any("looks like email, too, and stays" in each for each in replacer.notes) is is_told


def test_changed_columns_are_searched_as_they_are_now() -> None:
    table = with_others().assign(nickname=lambda each: each["first_name"] + " " + each["last_name"])
    for action, is_told in (("keep", True), ("blank", False), ("fake:bs", False)):
        replacer = Replacer(SECRET)
        replacer.replace(
            table, "customer_id", columns={"fullname": []}, others={"nickname": action}
        )
        assert any("still name" in note for note in replacer.notes) is is_told


def test_a_table_without_people_of_its_own() -> None:
    table = with_others()
    replacer = Replacer(SECRET)
    made = replacer.replace(table, "customer_id", others={"customer_id": "hash"})
    paid = replacer.replace(payments(table), "buyer", others={"buyer": "hash"})
    assert paid["buyer"].tolist() == [*made["customer_id"]] * 2
    assert replacer.notes[0] == "Replaced: 'buyer' (hash)."
    with pytest.raises(ReplaceError):
        replacer.replace(payments(table), "buyer")


def test_batches_do_not_matter() -> None:
    table = with_others()
    roles = find_roles(table, key="customer_id")
    actions = {column: read_action(action, column) for column, action in ACTIONS.items()}
    made = []
    for rows in (7, 60):
        batches = pa.Table.from_pandas(table, preserve_index=False).to_batches(rows)
        people = People(SECRET)
        for batch in batches:
            people.learn(batch, roles)
        people.settle()
        passing = Passing(people, roles, others=actions)
        made.append(
            pa.Table.from_pylist(
                [row for batch in batches for row in pa.table(passing(batch)).to_pylist()]
            )
        )
    assert made[0].equals(made[1])
    assert "note" not in made[0].column_names


def test_no_rows() -> None:
    table = with_others()
    none = vantrel.replace(table.head(0), "customer_id", SECRET, others=ACTIONS)
    assert none.shape == (0, table.shape[1])
    table.head(0).to_csv("c.csv", index=False)
    table.head(0).to_parquet("c.parquet", index=False)
    succeed(f"replace c.csv c.parquet -o copy --key customer_id {OPTIONS}")
    assert Path("copy/c.csv").read_bytes() == Path("c.csv").read_bytes()


def test_types_of_pandas_stay_but_for_numbers_that_are_blank() -> None:
    table = with_others().assign(
        kind=pd.Categorical(["a"] * 60), is_new=True, born=pd.Timestamp("2000-01-01")
    )
    others = {"kind": "hash", "born": "shift:9", "is_new": "blank", "points": "blank"}
    made = vantrel.replace(table, "customer_id", SECRET, others=others)
    assert made.dtypes["points"] == "Int64"
    assert made.dtypes["is_new"] == "boolean"
    assert made.dtypes["born"] == table.dtypes["born"]
    assert isinstance(made.dtypes["kind"], pd.CategoricalDtype)


def test_a_column_that_must_not_be_missing() -> None:
    table = pa.Table.from_pandas(with_others(), preserve_index=False)
    place = table.schema.get_field_index("points")
    strict = table.schema.set(place, table.schema.field(place).with_nullable(False))
    with pytest.raises(ReplaceError) as caught:
        vantrel.replace(table.cast(strict), "customer_id", SECRET, others={"points": "blank"})
    assert str(caught.value) == (
        "Column 'points' may not have missing values, so it cannot be blank: take 'fake', 'shift'"
        " or 'hash', or leave it out of the table."
    )


@pytest.mark.parametrize(
    ("options", "status", "message"),
    [
        ("--other born", 2, "'born' is not of the form [TABLE:]COLUMN=ACTION."),
        ("--other =hash", 2, "'=hash' is not of the form [TABLE:]COLUMN=ACTION."),
        (
            "--other iban=hash --other iban=blank",
            2,
            "There are two actions of column 'iban': name one.",
        ),
        (
            "--other d:iban=hash",
            1,
            "No table has a column 'd:iban' to change. Did you mean 'iban'? Columns are:",
        ),
        (
            "--other email=hash",
            1,
            "Column 'email' is replaced, as email: it has no action besides. Without --other"
            " email=hash it is replaced; --keep email keeps it.",
        ),
        ("--other iban=hsh", 1, "Column 'iban': 'hsh' is no action. Did you mean 'hash'?"),
    ],
)
def test_options_that_are_refused(options: str, status: int, message: str) -> None:
    with_others().to_csv("c.csv", index=False)
    result = fail(f"replace c.csv -o copy.csv --key customer_id {options}", status)
    assert message in result
    assert not Path("copy.csv").exists()


def _of_countries(name: str, *countries: str) -> None:
    rows = (f"{name}{row},Ann,{country},x" for row, country in enumerate(countries))
    Path(f"{name}.csv").write_text("\n".join(["id,first_name,country,unit", *rows, ""]))


def test_what_faker_cannot_make_is_told_before_the_first_row(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    monkeypatch.setattr("vantrel.replacing.runs.files.Passing", None)  # nothing can be made
    line = "replace a.csv b.csv -o copy --key id --other b:unit=fake:military_apo"
    refusal = (
        "Column 'unit': Faker has no method 'military_apo' in the language 'de_DE', which some rows"
        " need: name another one."
    )
    _of_countries("a", "US")
    _of_countries("b", "US", "US", "DE")
    assert fail(line, 1) == refusal


@pytest.mark.parametrize(("person", "is_refused"), [("a0", False), ("a1", True)])
def test_what_faker_cannot_make_is_no_matter_of_people_of_other_tables(
    person: str, *, is_refused: bool
) -> None:
    _of_countries("a", "US", "DE")
    Path("b.csv").write_text(f"id,unit\n{person},x\n")  # whose rows tell no country
    line = "replace a.csv b.csv -o copy --key id --other b:unit=fake:military_apo"
    if is_refused:
        assert "in the language 'de_DE'" in fail(line, 1)
    else:
        succeed(line)
    assert Path("copy", "b.csv").exists() != is_refused


def test_what_faker_can_make_of_the_people_of_a_table_is_made() -> None:
    _of_countries("a", "DE", "FR")
    _of_countries("b", "US", "")
    line = "replace a.csv b.csv -o copy --key id --other b:unit=fake:military_apo"
    succeed(f"{line} --locale en_US")
    assert not set(as_texts("copy/b.csv")["unit"]) & {"x"}

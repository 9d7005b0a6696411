"""The shop of the examples, replaced by its plan, in databases of both kinds."""

from __future__ import annotations

from pathlib import Path

import pytest

pytest.importorskip("sqlalchemy", reason="databases need SQLAlchemy")
pytest.importorskip("pyarrow", reason="tables of databases are read by way of Arrow")

from support.command import succeed
from support.databases import Trial, contents, example

PLAN = Path(__file__).parents[2] / "examples" / "shop.toml"


def test_people_are_the_same_in_all_tables_and_rows_with_two_of_them(trial: Trial) -> None:
    tables = example(trial)
    before = dict(zip(tables, contents(trial, *tables), strict=True))
    succeed(f"replace '{trial.address}' --plan {PLAN} --secret s")
    after = dict(zip(tables, contents(trial, *tables), strict=True))

    assert {name: [row[0] for row in rows] for name, rows in after.items()} == {
        name: [row[0] for row in rows] for name, rows in before.items()
    }
    people = {row[0]: f"{row[2]} {row[3]}" for row in after["customers"]}
    real = {row[0]: f"{row[2]} {row[3]}" for row in before["customers"]}
    assert not [key for key in real if people[key] == real[key]]
    assert [row[2] for row in after["orders"]] == [people[row[1]] for row in before["orders"]]
    recipients = [row[-2] for row in before["orders"]]
    assert sum(each is not None for each in recipients) > 100
    assert [row[-1] for row in after["orders"]] == [people.get(each) for each in recipients]
    assert [row[3] for row in after["payments"]] == [people[row[2]] for row in before["payments"]]
    for table, column in (("addresses", 2), ("payments", 4)):
        pairs = zip(before[table], after[table], strict=True)
        assert not [was for was, now in pairs if was[column] == now[column]]

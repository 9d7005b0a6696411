"""``vantrel report`` on copies some columns of which had an action of their own."""

import json
from pathlib import Path
from typing import Any

import pandas as pd
import pytest

from support.command import run, succeed
from support.reports import shown_page

ROWS = 120
REPORT = "report real.csv copy.csv -o report.html --json report.json --force"
ABOUT = "Columns that had an action"


@pytest.fixture(autouse=True)
def copied(monkeypatch: pytest.MonkeyPatch) -> None:
    """A copy that has a column of each action."""
    pytest.importorskip("pyarrow")
    monkeypatch.setenv("VANTREL_SECRET", "ab" * 32)  # what few digits become is chance
    columns: dict[str, list[Any]] = {
        "id": [1000 + number // 2 for number in range(ROWS)],
        "email": [f"somebody{number // 2}@shop.example" for number in range(ROWS)],
        "iban": [f"DE{number * 7**20 % 10**20:020}" for number in range(ROWS)],
        "points": [number % 3 for number in range(ROWS)],
        "rank": ["-"] * ROWS,
        "joined": [
            f"2{number % 10}.0{number % 9 + 1}.20{number // 2}" for number in range(20, 140)
        ],
        "memo": ["called", ""] * (ROWS // 2),
        "town": ["York", "Leeds", "Ely", "Bath"] * (ROWS // 4),
    }
    columns["joined"][5] = "unknown"
    pd.DataFrame(columns).to_csv("real.csv", index=False)
    succeed(
        "replace real.csv -o copy.csv --key id --other iban=hash"
        " --other points=hash --other rank=hash --other joined=shift:180:DD.MM.YYYY"
        " --other memo=blank --other town=fake:city"
    )


def reported() -> tuple[dict[str, Any], dict[str, Any]]:
    """The verdict on actions, and the figures of each column that had one."""
    run(REPORT)
    form = json.loads(Path("report.json").read_text())
    (verdict,) = (each for each in form["verdicts"] if each["about"] == ABOUT)
    return verdict, {each["column"]: each for each in form["figures"]["acted"]}


def read(path: str) -> pd.DataFrame:
    return pd.read_csv(path, dtype=str, keep_default_na=False)


def test_a_good_copy_is_as_expected() -> None:
    verdict, columns = reported()
    assert (verdict["state"], verdict["words"]) == (
        "fine",
        "No value is still there but those that chance explains.",
    )
    assert {name: (each["action"], each["cells"]) for name, each in columns.items()} == {
        "iban": ("hash", 120),
        "points": ("hash", 80),  # the number 0 stays
        "rank": ("hash", 0),
        "joined": ("shift", 120),
        "memo": ("blank", 60),
        "town": ("fake", 120),
    }
    assert columns["points"]["chance"] == pytest.approx(80 / 9)
    assert columns["points"]["at_once"] == 40
    assert columns["iban"]["chance"] < 1e-9
    assert {name for name, each in columns.items() if each["same"]} <= {"points"}
    assert "What had an action" in shown_page()


@pytest.mark.parametrize("column", ["iban", "points", "joined", "memo", "town"])
def test_a_column_with_its_real_values_asks_for_a_look(column: str) -> None:
    read("copy.csv").assign(**{column: read("real.csv")[column]}).to_csv("copy.csv", index=False)
    verdict, columns = reported()
    assert verdict["state"] == "look"
    assert verdict["words"] == (
        f"Values that had to go are still in {column}. Make the copy anew, and do not hand this one"
        " on."
    )
    assert columns[column]["same"] == columns[column]["cells"]
    assert verdict["figure"] == f"{columns[column]['cells']} as before"


@pytest.mark.parametrize(
    ("column", "value"), [("iban", None), ("joined", None), ("memo", None), ("memo", "anything")]
)
def test_one_cell_is_enough_where_chance_explains_none(column: str, value: str | None) -> None:
    copy = read("copy.csv")
    copy.loc[4, column] = value or read("real.csv")[column][4]
    copy.to_csv("copy.csv", index=False)
    verdict, _ = reported()
    assert (verdict["state"], verdict["figure"]) == ("look", "1 as before")


def test_a_column_that_is_all_as_before_is_never_by_chance() -> None:
    real, copy = read("real.csv"), read("copy.csv")
    for table, path in ((real, "real.csv"), (copy, "copy.csv")):
        table.assign(points="7", town="York").to_csv(path, index=False)
    verdict, _ = reported()
    assert "points and town" in verdict["words"]


def test_a_column_that_is_kept_has_no_action() -> None:
    succeed("replace real.csv -o copy.csv --key id --other memo=keep --force")
    run(REPORT)
    assert ABOUT not in Path("report.json").read_text()
    assert "What had an action" not in shown_page()

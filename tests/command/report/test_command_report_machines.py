"""``vantrel report`` in pipelines: figures and statuses."""

import json
from pathlib import Path

import pandas as pd
import pytest

from support.command import run, succeed
from support.reports import REPORT


@pytest.mark.usefixtures("recorded")
def test_figures_are_written_for_machines() -> None:
    result = succeed(f"{REPORT} --json report.json")
    assert result.stdout.endswith("; wrote report.html and report.json.\n")
    form = json.loads(Path("report.json").read_text(encoding="utf-8"))
    assert (form["format"], form["schema_version"]) == ("vantrel-report", 1)
    assert (form["compared"], form["real"], form["sample"]) == (
        "sample",
        "people.csv",
        "made-up.csv",
    )
    assert form["asks_for_look"] == any(each["state"] == "look" for each in form["verdicts"])
    assert form["figures"]["real_rows"] == 50
    assert {"about", "figure", "state", "words", "section"} == form["verdicts"][0].keys()


def test_a_pipeline_is_stopped_by_what_asks_for_a_look(people: pd.DataFrame) -> None:
    people.head(45).to_csv("made-up.csv", index=False)
    people.assign(sex="f").to_csv("people.csv", index=False)
    line = f"{REPORT} --json report.json --force"
    succeed(line)
    Path("report.html").unlink()
    Path("report.json").unlink()
    result = run(f"{line} --fail-on look")
    assert result.exit_code == 4
    assert result.stderr.startswith("vantrel: error: ")
    assert "verdicts ask for a look: Gender shares; " in result.stderr
    assert Path("report.html").is_file()
    assert json.loads(Path("report.json").read_text())["asks_for_look"]
    assert "End with status 4 if a verdict asks for a look" in " ".join(
        succeed("report --help").stdout.split()
    )


@pytest.mark.usefixtures("recorded")
def test_a_good_sample_passes_a_pipeline() -> None:
    succeed(f"{REPORT} --fail-on look")

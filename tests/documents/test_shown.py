"""What the documents show is what comes out: people before and after, and figures."""

import re
from pathlib import Path

import pandas as pd
import pytest

import vantrel

ROOT = Path(__file__).parents[2]

SECRET = b"thirty-two bytes of no meaning.."


def tables(document: str) -> list[pd.DataFrame]:
    """The tables of a document of Markdown."""
    text = (ROOT / document).read_text(encoding="utf-8")
    found = []
    for lines in re.findall(r"(?:^\|.*\n)+", text, re.MULTILINE):
        head, _, *rows = (
            [cell.strip() for cell in line.split("|")[1:-1]] for line in lines.splitlines()
        )
        found.append(pd.DataFrame(rows, columns=head))
    return found


@pytest.mark.parametrize("document", ["README.md", "docs/index.md"])
def test_the_people_before_and_after(document: str) -> None:
    pytest.importorskip("pyarrow", reason="replacing people needs pyarrow")
    before, after, *_ = tables(document)
    made = vantrel.replace(before, key="id", secret=SECRET, scrub=["notes"])
    pd.testing.assert_frame_equal(made, after)


def test_the_figures_of_the_readme_are_measured() -> None:
    results = (ROOT / "benchmarks/RESULTS.md").read_text(encoding="utf-8")
    (figures,) = (table for table in tables("README.md") if "A row" in table)
    assert len(figures) == 4
    for row in figures["A row"]:
        assert f" {row} |" in results, row
    measured = [float(each) for each in re.findall(r"\| +([\d.]+) \|", results)]
    for times in figures["Against ours"][1:]:
        assert any(round(each) == int(times.removesuffix(" times")) for each in measured), times


def test_the_figures_in_the_words_of_the_readme_are_measured() -> None:
    results = (ROOT / "benchmarks/RESULTS.md").read_text(encoding="utf-8")
    readme = " ".join((ROOT / "README.md").read_text(encoding="utf-8").split())

    def measured(work: str, column: int) -> float:
        (line,) = re.findall(rf"^\| {re.escape(work)} +\|.*$", results, re.MULTILINE)
        return float(line.split("|")[column].removesuffix(" µs "))

    growth, costs, times = re.findall(
        r"costs (\d+) % more than .* takes ([\d.]+) µs a row, ([\d.]+) times", readme
    )[0]
    assert int(growth) == round(100 * measured("a row of 400,000, of 20,000", 4) - 100)
    assert float(costs) == round(measured("replace, 1,000,000 rows, copy of each cell", 3), 1)
    assert float(times) == round(measured("replace, 1,000,000 rows, copy of each cell", 4), 1)


def test_the_figures_of_what_scale_costs_are_measured() -> None:
    results = (ROOT / "benchmarks/RESULTS.md").read_text(encoding="utf-8")
    scale = (ROOT / "docs/scale.md").read_text(encoding="utf-8")
    costs = scale[scale.index("## What it costs") :]
    shown = re.findall(r"\*\*([\d.,]+(?: µs)?)\*\*", costs)
    assert len(shown) == 6
    for figure in shown:
        assert f" {figure} |" in results, figure
    plan = next(table for table in tables("docs/scale.md") if "reckoned as" in table)
    reckoned = re.findall(r"(\d[\d,.]*(?: µs)?) (?:/|×) workers", " ".join(plan["reckoned as"]))
    assert {"5,000", *shown} > {*reckoned} > {"5,000"}


@pytest.mark.parametrize(("column", "workers"), [("2 cores each", 100), ("16 cores each", 800)])
def test_the_plan_for_a_billion_people_is_reckoned_as_it_says(column: str, workers: int) -> None:
    plan = next(table for table in tables("docs/scale.md") if "reckoned as" in table)
    names = {"⁹": "e8", "×": "*", "µs": "* 1e-6", ",": "", "workers": str(workers)}
    for formula, cell in zip(plan["reckoned as"][1:], plan[column][1:], strict=True):
        for name, value in names.items():
            formula = formula.replace(name, value)
        figure = cell.removesuffix(" s").replace(",", "")
        digits = len(figure.partition(".")[2])
        assert round(eval(formula), digits) == float(figure), formula

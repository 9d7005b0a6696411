"""``vantrel report``, as a shell runs it: what is compared and shown."""

import os
import shlex
import shutil
import subprocess
import sys
from pathlib import Path

import pandas as pd
import pytest

from support.command import fail, succeed
from support.reports import LABELS, REPORT, shown_page


@pytest.mark.usefixtures("recorded")
def test_from_table_and_sample_to_report() -> None:
    result = succeed(REPORT)
    assert result.stderr == ""
    (line,) = result.stdout.splitlines()
    assert line.startswith("Compared 50 real rows with 1,500 sampled rows: distance of gender 0.0")
    assert line.endswith("; wrote report.html.")
    html = shown_page()
    assert "<title>People report: people.csv</title>" in html
    assert "There is no record" not in html
    for column in ("sex", "title", "surname", "land", "firstname", "email"):
        assert f"<bdi>{column}</bdi>" in html


@pytest.mark.usefixtures("recorded")
def test_the_shell_finds_the_command() -> None:
    command = shutil.which("vantrel", path=str(Path(sys.executable).parent))
    assert command
    subprocess.run([command, *REPORT.split()], check=True, capture_output=True)
    assert Path("report.html").is_file()


@pytest.mark.usefixtures("recorded")
def test_the_same_tables_give_the_same_bytes() -> None:
    for name in ("a.html", "b.html"):
        succeed(f"report people.csv made-up.csv -o {name}")
    assert Path("a.html").read_bytes() == Path("b.html").read_bytes()


@pytest.mark.usefixtures("made_up")
def test_without_a_record_the_columns_are_named() -> None:
    result = succeed(f"{REPORT} --column gender=sex --column title=title --column lastname=surname")
    assert result.stdout == (
        "Compared 50 real rows with 4 sampled rows: distance of gender 0.250; wrote report.html.\n"
    )
    html = shown_page()
    assert "There is no record beside the sample of how it was made." in html
    assert "Not compared: the sample has no such column." in html


@pytest.mark.usefixtures("recorded")
def test_a_named_column_comes_before_the_record() -> None:
    succeed(f"{REPORT} --column lastname=firstname --column firstname=surname")
    html = shown_page()
    assert 'Last name <small class="column"><bdi>firstname</bdi>' in html
    assert 'First name <small class="column"><bdi>surname</bdi>' in html


@pytest.mark.usefixtures("made_up")
def test_without_a_record_or_columns_they_are_found() -> None:
    succeed(REPORT)
    html = shown_page()
    assert 'Gender <small class="column"><bdi>sex</bdi>' in html
    assert 'Last name <small class="column"><bdi>surname</bdi>' in html


def names_in_the_sample(html: str) -> str:
    return html.split("Real full names in the sample")[1].split("</li>", maxsplit=1)[0]


@pytest.fixture
def named() -> None:
    """A real table of names, and a sample of the same people that names the columns otherwise."""
    real = pd.DataFrame({"sex": ["m", "f"], "first_name": ["Bo", "Ann"], "last_name": ["Ray"] * 2})
    real.to_csv("people.csv", index=False)
    real.set_axis(["sex", "firstname", "lastname"], axis="columns").to_csv(
        "made-up.csv", index=False
    )


@pytest.mark.usefixtures("named")
def test_real_names_are_found_in_columns_that_are_named_otherwise() -> None:
    succeed(REPORT)
    html = shown_page()
    assert "2 rows" in names_in_the_sample(html)
    assert 'First name <small class="column"><bdi>first_name / firstname</bdi>' in html


@pytest.mark.usefixtures("named")
def test_real_names_are_found_beside_the_columns_of_a_record() -> None:
    succeed(
        "fit people.csv --min-count 1 -o m.json --no-detect --column gender=sex"
        " --generate firstname,lastname"
    )
    succeed("sample m.json -n 20 --seed 7 -o made-up.csv --force")
    made = pd.read_csv("made-up.csv")
    plain = made[made["lastname"].str.isalpha()]  # a page writes an apostrophe in its own way
    first, last = plain.iloc[0][["firstname", "lastname"]]
    Path("people.csv").write_text(f"sex,first_name,last_name\nm,{first},{last}\n")
    succeed(REPORT)
    html = shown_page()
    assert "1 row" in names_in_the_sample(html)
    assert f"<bdi>{first} {last}</bdi>" in html


@pytest.mark.usefixtures("named")
def test_names_in_columns_that_are_not_known_are_said_to_be_unchecked() -> None:
    real = pd.read_csv("people.csv").set_axis(["sex", "n1", "n2"], axis="columns")
    real.to_csv("people.csv", index=False)
    succeed(REPORT)
    words = names_in_the_sample(shown_page())
    assert "not checked" in words
    assert "No verdict" in words
    assert "--column firstname=COLUMN and --column lastname=COLUMN" in words


@pytest.mark.usefixtures("named")
def test_a_column_may_be_named_that_only_one_table_has() -> None:
    real = pd.read_csv("people.csv").set_axis(["sex", "n1", "n2"], axis="columns")
    real.to_csv("people.csv", index=False)
    succeed(f"{REPORT} --column firstname=n1 --column lastname=n2")
    html = shown_page()
    assert "2 rows" in names_in_the_sample(html)


@pytest.mark.usefixtures("made_up")
def test_a_table_that_is_separated_otherwise_is_read() -> None:
    Path("people.csv").write_text("sex;title\nm;Mr\n")
    succeed(f"{REPORT} --column gender=sex")


@pytest.mark.usefixtures("recorded")
def test_a_sample_of_a_sample_is_compared() -> None:
    succeed("fit made-up.csv -o m.json --force")
    succeed("sample m.json -n 100 --seed 7 -o again.csv")
    succeed("report made-up.csv again.csv -o report.html")


def test_the_sample_is_an_input() -> None:
    assert fail("report people.csv", 2) == "Missing argument 'SAMPLE'."


def test_the_help_has_an_example() -> None:
    assert "vantrel report people.csv made-up.csv -o report.html" in succeed("report --help").stdout


@pytest.mark.parametrize("columns", ["60", "80"])
def test_the_help_is_not_cut_in_a_narrow_terminal(columns: str) -> None:
    assert (
        "report   Compare a real table with a sample.\n"
        in succeed("--help", COLUMNS=columns).stdout
    )
    shown = succeed("report --help", COLUMNS=columns).stdout
    assert "Usage: vantrel report [OPTIONS] TABLE SAMPLE\n" in shown
    assert "    vantrel report people.csv made-up.csv -o report.html\n" in shown


def test_a_file_of_any_name_is_reported(people: pd.DataFrame) -> None:
    name = os.fsdecode(b"odd \xff<b>.csv")
    people.head(45).to_csv(name, index=False)
    succeed(f"report {shlex.quote(name)} people.csv -o report.html --column gender=sex")
    html = shown_page()
    assert "<title>People report: odd \ufffd&lt;b&gt;.csv</title>" in html


def test_a_sample_that_is_safe_for_spreadsheets_is_compared_as_it_was_made() -> None:
    real = pd.DataFrame({"=sex": ["-m", "-f", "'x"] * 50})
    real.to_csv("people.csv", index=False)
    Path("c.toml").write_text(
        'gender_male_regex = "^-m$"\ngender_female_regex = "^-f$"\n'
        'gender_non_binary_regex = "^\'x$"\n'
    )
    succeed(
        "fit people.csv --min-count 1 -o m.json --config c.toml --no-detect --column gender==sex"
    )
    succeed("sample m.json -n 600 --seed 7 --csv-safe --allow-patterns -o made-up.csv")
    assert Path("made-up.csv").read_text().startswith('"\'=sex"')
    result = succeed(REPORT)
    assert "distance of gender 0.0" in result.stdout
    html = shown_page()
    assert 'Gender <small class="column"><bdi>=sex</bdi>' in html
    assert "<bdi>&#39;x</bdi>" in html
    assert "&#39;-m" not in html


def test_a_sample_of_given_people_has_their_shares_by_design() -> None:
    succeed(f"fit people.csv --min-count 1 -o m.json {LABELS}")
    Path("given.csv").write_text("sex\n" + "f\n" * 200)
    succeed("sample m.json --conditions given.csv --seed 7 -o made-up.csv")
    succeed(REPORT)
    html = shown_page()
    card = html.split("<h3>Gender shares</h3>")[1].split("</li>", maxsplit=1)[0]
    assert "By design" in card
    assert "made for given genders or countries" in card

"""``vantrel report``, as a shell runs it."""

import json
import os
import re
import shlex
import shutil
import subprocess
import sys
from pathlib import Path

import pandas as pd
import pytest

from support.command import fail, run, succeed

REPORT = "report people.csv made-up.csv -o report.html"
LABELS = "--column gender=sex --column title=title --column lastname=surname --column country=land"


@pytest.fixture
def made_up(people: pd.DataFrame) -> None:
    """A sample without a record."""
    people.drop(columns="title").head(4).to_csv("made-up.csv", index=False)


@pytest.fixture
def recorded() -> None:
    """A sample that the command made, with its record."""
    succeed(f"fit people.csv --min-count 1 -o m.json {LABELS} --generate firstname,email")
    succeed("sample m.json -n 1500 --seed 7 -o made-up.csv")


def shown_page() -> str:
    """The page, without what keeps words whole."""
    page = Path("report.html").read_text(encoding="utf-8")
    return re.sub(r'<span class="word">(.*?)</span>', r"\1", page.replace("<wbr>", ""))


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


@pytest.mark.usefixtures("recorded")
def test_a_named_column_that_is_recorded_for_another_attribute_is_refused() -> None:
    assert fail(f"{REPORT} --column fullname=surname", 2) == (
        "Column 'surname' is labelled 'lastname' and 'fullname': give each attribute a column of its"
        " own."
    )


@pytest.mark.usefixtures("made_up")
def test_without_a_record_or_columns_they_are_found() -> None:
    succeed(REPORT)
    html = shown_page()
    assert 'Gender <small class="column"><bdi>sex</bdi>' in html
    assert 'Last name <small class="column"><bdi>surname</bdi>' in html


def test_where_no_columns_are_found_they_are_asked_for() -> None:
    Path("people.csv").write_text("a,b\n1,2\n")
    Path("made-up.csv").write_text("c\n3\n")
    assert fail(REPORT, 1) == (
        "Nothing can be compared: no attribute of a person is known to have a column in both tables."
        " Name columns, as in --column gender=COLUMN. The columns of the real table are: 'a',"
        " 'b'. The columns of the sample are: 'c'."
    )


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
def test_a_column_that_is_nowhere_is_refused() -> None:
    assert fail(f"{REPORT} --column gender=sexe", 1) == (
        "Neither the real table nor the sample has a column 'sexe' for 'gender'. Did you mean 'sex'?"
        " Their columns are: 'land', 'surname', 'title', 'sex'."
    )


@pytest.mark.usefixtures("made_up")
def test_tables_without_a_column_in_common_are_refused() -> None:
    assert fail(f"{REPORT} --column title=title", 1) == (
        "Nothing can be compared: no attribute of a person is known to have a column in both tables."
        " Name columns, as in --column gender=COLUMN. The columns of the real table are: 'land',"
        " 'surname', 'title', 'sex'. The columns of the sample are: 'land', 'surname', 'sex'."
    )


@pytest.mark.usefixtures("made_up")
def test_a_table_that_is_separated_otherwise_is_read() -> None:
    Path("people.csv").write_text("sex;title\nm;Mr\n")
    succeed(f"{REPORT} --column gender=sex")


@pytest.mark.usefixtures("made_up")
def test_two_attributes_do_not_share_a_column() -> None:
    assert fail(f"{REPORT} --column gender=sex --column title=sex", 2) == (
        "Column 'sex' is labelled 'gender' and 'title': give each attribute a column of its own."
    )


@pytest.mark.usefixtures("made_up")
def test_an_unknown_attribute_is_refused() -> None:
    assert fail(f"{REPORT} --column sex=sexe", 2).startswith("'sex' is no attribute of a person.")


@pytest.mark.usefixtures("made_up")
def test_a_report_that_is_there_is_overwritten_by_force_only() -> None:
    Path("report.html").write_text("mine")
    assert fail(f"{REPORT} --column gender=sex", 2) == (
        "report.html is there already: add --force to overwrite it."
    )
    succeed(f"{REPORT} --column gender=sex --force")
    assert "<!doctype html>" in shown_page()


@pytest.mark.usefixtures("made_up")
@pytest.mark.parametrize("table", ["people.csv", "made-up.csv"])
def test_a_table_is_never_overwritten(table: str) -> None:
    line = f"report people.csv made-up.csv -o {table} --column gender=sex --force"
    assert fail(line, 2) == f"{table} is the file to read: write to another one."


@pytest.mark.parametrize("other", ["people.csv", "./people.csv"])
def test_a_table_is_not_compared_with_itself(other: str) -> None:
    assert fail(f"report people.csv {other} -o report.html", 2) == (
        "people.csv and people.csv are the same file: name the real table, then a sample of it."
    )


@pytest.mark.usefixtures("recorded")
def test_a_sample_does_not_come_first() -> None:
    assert fail("report made-up.csv people.csv -o report.html", 2) == (
        "made-up.csv is a sample, as its record says: the real table comes first."
    )


@pytest.mark.usefixtures("recorded")
def test_a_sample_of_a_sample_is_compared() -> None:
    succeed("fit made-up.csv -o m.json --force")
    succeed("sample m.json -n 100 --seed 7 -o again.csv")
    succeed("report made-up.csv again.csv -o report.html")


@pytest.mark.usefixtures("made_up")
def test_a_report_is_not_written_to_standard_output() -> None:
    assert fail("report people.csv made-up.csv -o -", 2) == (
        "A report is not written to standard output: name a file for -o."
    )


@pytest.mark.parametrize("line", ["report absent.csv people.csv", "report people.csv absent.csv"])
def test_a_table_that_is_not_there_is_told(line: str) -> None:
    assert fail(f"{line} -o report.html --column gender=sex", 1) == (
        "Table absent.csv cannot be read: No such file or directory."
    )


@pytest.mark.usefixtures("made_up")
def test_a_folder_that_is_not_there_is_told() -> None:
    line = "report people.csv made-up.csv -o absent/report.html --column gender=sex"
    assert fail(line, 1) == "absent/report.html: folder 'absent' does not exist."


@pytest.mark.usefixtures("made_up")
def test_what_is_no_record_is_told() -> None:
    Path("made-up.csv.made.json").write_text("{}")
    assert fail(REPORT, 1).startswith("made-up.csv.made.json is no record of a sample")


def test_a_sample_without_rows_is_told() -> None:
    Path("made-up.csv").write_text("sex\n")
    assert fail(f"{REPORT} --column gender=sex", 1) == (
        "Table made-up.csv has a header but no rows: give it at least one."
    )


@pytest.mark.parametrize("line", ["report", "report people.csv", "report people.csv made-up.csv"])
def test_what_is_left_out_is_told(line: str) -> None:
    assert fail(line, 2).startswith("Missing ")


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
    people.to_csv(name, index=False)
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


@pytest.mark.usefixtures("made_up")
def test_a_report_is_no_more_public_than_its_table() -> None:
    Path("people.csv").chmod(0o600)
    succeed(REPORT)
    assert Path("report.html").stat().st_mode & 0o777 == 0o600


@pytest.mark.usefixtures("made_up")
def test_a_report_that_came_meanwhile_is_not_lost(monkeypatch: pytest.MonkeyPatch) -> None:
    def another_run(*_: object, **__: object) -> None:
        Path("report.html").write_text("of another run")

    monkeypatch.setattr("vantrel.sampling.record.read_record", another_run)
    result = run(REPORT)
    assert (result.exit_code, result.stdout) == (2, "")
    assert result.stderr == (
        "vantrel: error: report.html is there already: add --force to overwrite it.\n"
    )
    assert Path("report.html").read_text() == "of another run"


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
    people.to_csv("made-up.csv", index=False)
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


@pytest.mark.usefixtures("made_up")
@pytest.mark.parametrize(
    ("option", "message"),
    [
        ("-", "Figures are not written to standard output: name a file for --json."),
        ("report.html", "The page and the figures are two files: name another one for --json."),
        ("people.csv", "people.csv is the file to read: write to another one."),
    ],
)
def test_figures_have_a_file_of_their_own(option: str, message: str) -> None:
    assert fail(f"{REPORT} --json {option} --force", 2) == message


@pytest.mark.usefixtures("recorded")
def test_a_record_that_does_not_belong_is_told() -> None:
    Path("made-up.csv").write_text("a,b\n1,2\n")
    assert fail(REPORT, 1) == (
        "The record beside the sample tells of none of its columns, but of 'sex', 'title',"
        " 'firstname', 'surname', 'email', 'land': it belongs to another table. Move it away."
    )


@pytest.fixture
def copied() -> None:
    """A copy in which people were replaced."""
    pytest.importorskip("pyarrow")
    names = [f"{first},{last}" for first in ("Ann", "Bo", "Cy") for last in ("Lee", "Orr", "Ray")]
    rows = "".join(f"{number},{name},GB,{number}\n" for number, name in enumerate(names))
    Path("real.csv").write_text(f"id,first_name,last_name,country,total\n{rows}")
    succeed("replace real.csv -o copy.csv --key id --secret s.secret")


@pytest.mark.usefixtures("copied")
def test_a_copy_is_compared_with_its_original() -> None:
    result = succeed("report real.csv copy.csv -o report.html --fail-on look")
    assert result.stdout == "Compared 9 rows with 9 rows of a copy; wrote report.html.\n"
    assert "What had to stay" in shown_page()
    Path("copy.csv").write_text(Path("copy.csv").read_text().replace("GB,3", "GB,33"))
    result = run("report real.csv copy.csv -o report.html --fail-on look --force")
    assert (result.exit_code, result.stderr) == (
        4,
        "vantrel: error: 1 verdict asks for a look: Cells that had to stay.\n",
    )


@pytest.mark.usefixtures("copied")
def test_a_copy_has_the_columns_of_its_record_and_does_not_come_first() -> None:
    assert fail("report real.csv copy.csv -o r.html --column lastname=last_name", 2) == (
        "The columns of a copy are those that its record tells: leave --column out."
    )
    assert fail("report copy.csv real.csv -o r.html", 2) == (
        "copy.csv is a copy, as its record says: the real table comes first."
    )

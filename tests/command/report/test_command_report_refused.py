"""``vantrel report``: what is refused, and what is not overwritten."""

from pathlib import Path

import pandas as pd
import pytest

from support.command import fail, run, succeed
from support.reports import REPORT, shown_page


@pytest.mark.usefixtures("recorded")
def test_a_named_column_that_is_recorded_for_another_attribute_is_refused() -> None:
    assert fail(f"{REPORT} --column fullname=surname", 2) == (
        "Column 'surname' is labelled 'lastname' and 'fullname': give each attribute a column of its"
        " own."
    )


def test_where_no_columns_are_found_they_are_asked_for() -> None:
    Path("people.csv").write_text("a,b\n1,2\n")
    Path("made-up.csv").write_text("c\n3\n")
    assert fail(REPORT, 1) == (
        "Nothing can be compared: no attribute of a person is known to have a column in both tables."
        " Name columns, as in --column gender=COLUMN. The columns of the real table are: 'a',"
        " 'b'. The columns of the sample are: 'c'."
    )


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


def test_equal_tables_are_not_compared() -> None:
    Path("made-up.csv").write_bytes(Path("people.csv").read_bytes())
    assert fail(REPORT, 2) == (
        "people.csv and made-up.csv have the same content: name the real table, then a sample of"
        " it."
    )


def test_tables_that_are_only_as_long_are_compared(people: pd.DataFrame) -> None:
    people[::-1].to_csv("made-up.csv", index=False)
    assert Path("made-up.csv").stat().st_size == Path("people.csv").stat().st_size
    succeed(REPORT)


@pytest.mark.usefixtures("recorded")
def test_a_sample_does_not_come_first() -> None:
    assert fail("report made-up.csv people.csv -o report.html", 2) == (
        "made-up.csv is a sample, as its record says: the real table comes first."
    )


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
@pytest.mark.parametrize(
    ("columns", "absent"),
    [
        ("a,b", "'sex', 'title', 'firstname', 'surname', 'email', 'land'"),
        ("sex,title,firstname,email,land", "'surname'"),
    ],
)
def test_a_record_that_does_not_belong_is_told(columns: str, absent: str) -> None:
    Path("made-up.csv").write_text(f"{columns}\n" + "1," * columns.count(",") + "2\n")
    assert fail(REPORT, 1) == (
        f"The record beside the sample tells of columns that the sample has not: {absent}. It"
        " belongs to another table, or the sample was changed. Move the record away."
    )

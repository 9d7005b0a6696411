"""``vantrel report`` on copies in which people were replaced."""

import json
from pathlib import Path

import pytest

from support.command import fail, run, succeed
from support.reports import shown_page


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
        "vantrel: error: 2 verdicts ask for a look: Cells that had to stay; How it was made.\n",
    )


@pytest.mark.usefixtures("copied")
def test_a_copy_of_what_has_a_record_itself_does_not_come_first() -> None:
    succeed("replace copy.csv -o second.csv --key id --secret s.secret")
    succeed("report copy.csv second.csv -o report.html")
    assert fail("report second.csv copy.csv -o r.html", 2) == (
        "second.csv is a copy of copy.csv, as its record says: the real table comes first."
    )


@pytest.mark.usefixtures("copied")
def test_a_copy_that_was_changed_where_no_other_verdict_tells_is_told() -> None:
    succeed("report real.csv copy.csv -o report.html --fail-on look")
    page = shown_page()
    assert "The copy is to the byte as it was made." in page
    Path("copy.csv").write_text(Path("copy.csv").read_text().replace("GB,3", '"GB",3'))
    result = run("report real.csv copy.csv -o report.html --force --fail-on look")
    assert result.stderr == ("vantrel: error: 1 verdict asks for a look: How it was made.\n")
    assert "it was changed since. Make it anew." in shown_page()


@pytest.mark.usefixtures("copied")
def test_what_may_be_a_copy_without_its_record_is_told() -> None:
    Path("copy.csv.made.json").unlink()
    note = (
        "vantrel: note: copy.csv has no record and was compared as a sample. If 'vantrel replace'"
        " made it from real.csv, as its rows and columns suggest, put copy.csv.made.json back"
        " beside it.\n"
    )
    assert note in succeed("report real.csv copy.csv -o report.html").stderr
    rows = Path("copy.csv").read_text().splitlines()
    Path("copy.csv").write_text("\n".join(rows[:-1]))
    assert "no record" not in succeed("report real.csv copy.csv -o report.html --force").stderr


@pytest.mark.usefixtures("copied")
def test_a_record_that_does_not_tell_the_hash_has_no_verdict_on_it() -> None:
    path = Path("copy.csv.made.json")
    record = json.loads(path.read_text())
    del record["file_sha256"]
    path.write_text(json.dumps(record))
    succeed("report real.csv copy.csv -o report.html --fail-on look")
    assert "as it was made" not in shown_page()


@pytest.mark.usefixtures("copied")
def test_a_copy_has_the_columns_of_its_record_and_does_not_come_first() -> None:
    assert fail("report real.csv copy.csv -o r.html --column lastname=last_name", 2) == (
        "The columns of a copy are those that its record tells: leave --column out."
    )
    assert fail("report copy.csv real.csv -o r.html", 2) == (
        "copy.csv is a copy of real.csv, as its record says: the real table comes first."
    )
    Path("real.csv").rename("other.csv")
    assert fail("report copy.csv other.csv -o r.html", 2) == (
        "copy.csv is a copy, as its record says: the real table comes first."
    )

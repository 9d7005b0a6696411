"""``vantrel show``, as a shell runs it."""

import json
import os
import re
import sys
from importlib.metadata import version
from pathlib import Path

import pandas as pd
import pytest

from support.command import fail, shell, succeed, terminal

PEOPLE = "land,sex,t,last\nGB,m,Mr,A\nGB,f,Mrs,B\nAU,f,Dr,C\nDE,,Ms,D\n,x,Mx,E\n"


@pytest.fixture(autouse=True)
def _other_people(folder: Path) -> None:
    (folder / "people.csv").write_text(PEOPLE)


def fit(options: str = "--column title=t --generate email,password,mobile_number") -> None:
    succeed(f"fit people.csv --min-count 1 -o m.json {options}")


def test_all_that_is_learnt_is_shown() -> None:
    fit()
    versions = {
        "Faker": version("faker"),
        "numpy": version("numpy"),
        "pandas": pd.__version__,
        "Python": "{}.{}".format(*sys.version_info),
        "vantrel": version("vantrel"),
    }
    lines = succeed("show m.json").stdout.splitlines()
    size = f"{Path('m.json').stat().st_size:,}"
    assert lines[0] == f"Model            m.json ({size} bytes)"
    assert lines[1].startswith("Fitted with      ")
    assert all(f"{name} {number}" in lines[1] for name, number in versions.items())
    assert lines[2:] == [
        "Without gender   20.0% of the rows",
        "Without country  20.0% of the rows",
        "",
        "Columns",
        "Attribute      Column         In samples",
        "gender         sex            learnt: drawn with the other columns, as real rows have them",
        "title          t              learnt: drawn with the other columns, as real rows have them",
        "lastname       last           made up by gender and country",
        "email          email          made from the row's name; domain: reserved",
        "password       password       8 to 16 random characters",
        "mobile_number  mobile_number  a number of the row's country",
        "country        land           learnt: drawn with the other columns, as real rows have them",
        "",
        "Genders",
        "Key              Share  Values of 'sex'  Titles of 't'",
        "F (female)       50.0%  f                Mrs, Ms",
        "M (male)         25.0%  m                Mr",
        "NB (non-binary)  25.0%  x                Mx",
        "A (ambiguous)    -      -                Dr",
        "",
        "Countries",
        "Value  Share  Names of",
        "GB     50.0%  en_GB",
        "AU     25.0%  en_GB (borrowed)",
        "DE     25.0%  de_DE",
        "",
        "Rows of the table",
        "Combinations                       5",
        "Columns that are missing together  0 ways",
    ]


def test_settings_that_are_not_the_default() -> None:
    Path("c.toml").write_text('genders = ["NB", "F"]\nmobile_number_format = "é xx"\n')
    fit("--no-detect --column lastname=last --config c.toml --locale de_DE --locale AU")
    shown = succeed("show m.json").stdout
    assert (
        "\n\nGenders\nKey              Share\nF (female)       50.0%\nNB (non-binary)  50.0%\n"
        in shown
    )
    assert (
        "\n\nLocales\nValue  Share  Names of\nde_DE  50.0%  de_DE\nAU     50.0%  en_GB (borrowed)\n"
        in shown
    )
    assert shown.endswith(
        "\nSettings that are not the default\n"
        'genders               ["NB", "F"]\n'
        'mobile_number_format  "é xx"\n'
    )


def test_values_that_are_not_understood_are_shown() -> None:
    Path("people.csv").write_text("sex,t\n" + "m,Mr\nf,X-files\nf,Firma\nnone,Mrs\n" * 5)
    fit("--column title=t")
    lines = succeed("show m.json").stdout.partition("\nGenders\n")[2].splitlines()
    assert lines[:4] == [
        "Key             Share  Values of 'sex'  Titles of 't'",
        "F (female)      66.7%  f                Mrs",
        "M (male)        33.3%  m                Mr",
        "not understood  -      none             X-files, Firma",
    ]
    fit("--no-detect --column title=t --force")
    lines = succeed("show m.json").stdout.partition("\nGenders\n")[2].splitlines()
    assert lines[3] == "not understood  -      X-files, Firma"


def test_all_that_a_model_file_keeps_of_columns_is_shown() -> None:
    Path("people.csv").write_text(
        "sex,t,land\n" + "m,Mr,DE\nf,X-files,FR\nQuark,Dr,GB\n,Mx,AT\n" * 5
    )
    fit("--column title=t")
    shown = succeed("show m.json").stdout
    children = json.loads(Path("m.json").read_text())["model"]["meta"]["children"]
    kept = [value for child in children.values() for value in child["categories"]]
    assert {"X-files", "Quark", "Dr", "AT"} <= set(kept)
    assert all(re.search(rf"(?<!\w){value}(?!\w)", shown) for value in kept)


def test_values_of_rows_alone_and_the_number_of_gaps_are_shown() -> None:
    Path("people.csv").write_text(
        "land,last,first\n" + "DE,A,B\nFR,,\nn/a,A,\nother,A,B\nGB,,B\n" * 5
    )
    fit("")
    assert succeed("show m.json").stdout.partition("\nRows of the table\n")[2] == (
        "Combinations                       5\n"
        "Columns that are missing together  3 ways\n"
        "More values of 'land'              n/a, other\n"
    )


def test_what_is_too_rare_is_shown_by_its_number() -> None:
    Path("people.csv").write_text("sex,t\n" + "m,Mr\nf,Ms\n" * 9 + "m,Sir\nm,Lord\nm,Sir\n")
    succeed("fit people.csv -o m.json --force --column title=t")
    assert succeed("show m.json").stdout.partition("\nLeft out as too rare\n")[2] == (
        "Column  Values  Rows\nt       2       3\n"
    )


def test_genders_learnt_from_titles() -> None:
    fit("--no-detect --column title=t")
    lines = succeed("show m.json").stdout.partition("\nGenders\n")[2].splitlines()
    assert lines[:5] == [
        "Key              Share  Titles of 't'",
        "F (female)       40.0%  Mrs, Ms",
        "M (male)         20.0%  Mr",
        "NB (non-binary)  20.0%  Mx",
        "A (ambiguous)    20.0%  Dr",
    ]


def test_small_shares_are_not_shown_as_none() -> None:
    Path("people.csv").write_text("sex\nx\n" + "m\n" * 9999)
    fit("")
    assert "NB (non-binary)  <0.1%   x\n" in succeed("show m.json").stdout


def test_a_model_of_an_older_version_says_nothing_of_versions() -> None:
    fit()
    form = json.loads(Path("m.json").read_text())
    del form["versions"]
    Path("m.json").write_text(json.dumps(form))
    lines = succeed("show m.json").stdout.splitlines()
    assert lines[1].startswith("Without gender")


def test_a_model_from_a_pipe() -> None:
    fit()
    read, write = os.pipe()
    try:
        os.write(write, Path("m.json").read_bytes())
        os.close(write)
        shown = succeed(f"show /dev/fd/{read}").stdout
    finally:
        os.close(read)
    assert shown == succeed("show m.json").stdout.replace("m.json", f"/dev/fd/{read}")


def test_what_a_terminal_would_obey_is_escaped() -> None:
    Path("people.csv").write_text("sex,t\nm,[red]Mr\nf,Mr\x1b[2J\n")
    Path("c.toml").write_text('title_male_regex = "Mr"\n')
    fit("--column title=t --config c.toml")
    shown = succeed("show m.json --allow-patterns").stdout
    assert "  [red]Mr, Mr\\x1b[2J\n" in shown
    assert "\x1b" not in shown


def test_the_shell_shows_a_model_plainly_and_unfolded() -> None:
    Path("people.csv").write_text("sex,t\n" + "".join(f"m,Mr {i}\n" for i in range(100)))
    Path("c.toml").write_text('title_male_regex = "^Mr"\n')
    fit("--column title=t --config c.toml")
    result = shell("show m.json --allow-patterns")
    assert (result.returncode, result.stderr) == (0, "")
    assert "\x1b" not in result.stdout
    assert ", ".join(f"Mr {i}" for i in range(100)) in result.stdout
    assert not re.search(r"[ \t]\n", result.stdout)
    failed = shell("show people.csv")
    assert failed.returncode == 1
    assert len(failed.stderr.splitlines()) == 1


@pytest.mark.parametrize("width", [60, 200])
def test_in_a_terminal(width: int) -> None:
    fit()
    coloured = terminal("show m.json", width)
    assert "\x1b[1;36m" in coloured
    plain = re.sub(r"\x1b\[[\d;]*m", "", coloured)
    assert max(map(len, plain.splitlines())) <= width
    if width == 200:
        assert re.sub(" +\n", "\n", plain) == succeed("show m.json").stdout
    else:
        assert "learnt: drawn with the" in plain


def test_in_a_terminal_without_colours() -> None:
    fit()
    assert "36m" not in terminal("show m.json", 80, NO_COLOR="1")


def test_colours_can_be_forced_into_a_pipe() -> None:
    fit()
    assert "\x1b[1;36m" in shell("show m.json", FORCE_COLOR="1", COLUMNS="60").stdout


@pytest.mark.parametrize(
    ("line", "status", "message"),
    [
        ("show", 2, "Missing argument 'MODEL.json'."),
        ("show no.json", 1, "Model file no.json cannot be read: No such file or directory."),
        ("show m.json people.csv", 2, "Got unexpected extra argument (people.csv)"),
    ],
)
def test_bad_calls(line: str, status: int, message: str) -> None:
    assert fail(line, status) == message


def test_a_file_that_is_no_model() -> None:
    assert fail("show people.csv", 1).startswith("Model file people.csv is not JSON (")


def test_help_has_an_example() -> None:
    assert "Example:\n    vantrel show model.json\n" in succeed("show --help").stdout

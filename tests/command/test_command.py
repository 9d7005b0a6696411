"""The command, as a shell runs it."""

import json
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

import pytest

from support.command import fail, run, succeed
from vantrel.tables import read_table

ATTRIBUTES = (
    "gender, title, firstname, lastname, fullname, email, username, password, mobile_number,"
    " home_number, work_number, country"
)


def names_here() -> set[str]:
    return {path.name for path in Path().iterdir()}


FIT = "fit people.csv --min-count 1 -o m.json --no-detect --column gender=sex"


def test_from_table_to_model_to_table() -> None:
    fitted = succeed(f"{FIT} --column lastname=surname --column country=land")
    assert fitted.stdout == "Learnt from 50 rows of people.csv; wrote m.json.\n"
    sampled = succeed("sample m.json -n 1200 --seed 7 -o out.csv")
    assert sampled.stdout == "Made 1,200 people with the seed 7; wrote out.csv.\n"
    out = read_table(Path("out.csv"))
    assert list(out) == ["land", "surname", "sex"]
    assert len(out) == 1200
    assert set(out["land"]) == {"GB", "US", "DE"}
    assert names_here() == {"people.csv", "m.json", "out.csv", "out.csv.made.json"}


def test_the_shell_finds_the_command() -> None:
    command = shutil.which("vantrel", path=str(Path(sys.executable).parent))
    assert command
    for line in (FIT, "sample m.json -n 3 --seed 1 -o out.csv"):
        subprocess.run([command, *line.split()], check=True, capture_output=True)
    assert len(read_table(Path("out.csv"))) == 3
    failed = subprocess.run(
        [command, "sample", "people.csv", "-n", "1", "-o", "x"], capture_output=True, text=True
    )
    assert failed.returncode == 1
    assert "Traceback" not in failed.stderr
    assert len(failed.stderr.splitlines()) == 1


def test_the_same_seed_gives_the_same_file() -> None:
    succeed(f"{FIT} --column title=title --generate fullname,firstname")
    for seed, out in ((7, "a"), (7, "b"), (8, "c")):
        succeed(f"sample m.json -n 50 --seed {seed} -o {out}")
    assert Path("a").read_bytes() == Path("b").read_bytes()
    assert Path("a").read_bytes() != Path("c").read_bytes()


def test_without_a_seed_each_run_differs() -> None:
    succeed(f"{FIT} --generate fullname")
    for out in ("a", "b"):
        succeed(f"sample m.json -n 50 -o {out}")
    assert Path("a").read_bytes() != Path("b").read_bytes()


def test_generated_attributes_are_named_after_themselves() -> None:
    succeed(f"{FIT} --generate fullname,firstname")
    succeed("sample m.json -n 2 -o out.csv")
    assert list(read_table(Path("out.csv"))) == ["sex", "firstname", "fullname"]


def test_no_rows_give_a_header() -> None:
    succeed(FIT)
    succeed("sample m.json -n 0 -o out.csv")
    assert Path("out.csv").read_text() == "sex\n"


def test_a_table_goes_to_standard_output_alone() -> None:
    succeed(FIT)
    succeed("sample m.json -n 20 --seed 7 -o out.csv")
    result = succeed("sample m.json -n 20 --seed 7 -o -")
    assert result.stdout == Path("out.csv").read_text()
    assert result.stderr == ""
    assert names_here() == {"people.csv", "m.json", "out.csv", "out.csv.made.json"}


def test_standard_output_that_is_closed_early_ends_the_command_quietly() -> None:
    succeed(FIT)
    command = [sys.executable, "-c", "from vantrel.cli import main; main()"]
    read, write = os.pipe()
    os.close(read)
    try:
        result = subprocess.run(
            [*command, "sample", "m.json", "-n", "9", "-o", "-"],
            stdout=write,
            stderr=subprocess.PIPE,
            text=True,
        )
    finally:
        os.close(write)
    assert result.returncode == 1
    assert result.stderr == ""


def test_the_help_tells_of_standard_output() -> None:
    assert "- is standard output" in succeed("sample --help").stdout


def test_missing_values_are_empty_cells() -> None:
    Path("people.csv").write_text("sex\nm\n" + '""\n' * 9)
    succeed(f"{FIT} --generate fullname")
    succeed("sample m.json -n 20 --seed 1 -o out.csv")
    assert "\n,\n" in Path("out.csv").read_text()


def test_namibia_is_learnt_and_warned_of_in_a_plain_line() -> None:
    Path("people.csv").write_text("sex,land\nm,NA\nf,NA\n")
    result = succeed(f"{FIT} --column country=land")
    assert result.stderr == (
        "vantrel: warning: Faker has no person names of its own for these; they get those of the"
        " locale in brackets: NA (en_GB).\n"
    )
    assert succeed("sample m.json -n 3 -o out.csv").stderr == ""
    assert set(read_table(Path("out.csv"))["land"]) == {"NA"}


def test_a_locale_is_kept_and_used() -> None:
    succeed(f"{FIT} --locale ru_RU --generate lastname")
    succeed("sample m.json -n 20 -o out.csv")
    assert not any(name.isascii() for name in read_table(Path("out.csv"))["lastname"])


def test_an_existing_model_is_replaced_only_by_a_good_one() -> None:
    succeed(FIT)
    before = Path("m.json").read_bytes()
    message = fail(FIT, 2)
    assert message == "m.json is there already: add --force to overwrite it."
    fail("fit people.csv --min-count 1 -o m.json --force --column gender=land", 1)
    assert Path("m.json").read_bytes() == before
    succeed("fit people.csv --min-count 1 -o m.json --force --no-detect --column title=title")
    assert Path("m.json").read_bytes() != before


@pytest.mark.parametrize(
    ("line", "message"),
    [
        (
            "fit people.csv --min-count 1 -o m.json --column gender=zz",
            "The table has no column 'zz' for 'gender'. Its columns are: 'land', 'surname',"
            " 'title', 'sex'.",
        ),
        (
            "fit zz.csv -o m.json --column gender=sex",
            "Table zz.csv cannot be read: No such file or directory.",
        ),
        (
            "fit people.csv --min-count 1 -o m.json --column gender=land",
            "Column 'land' has nothing to learn from: each of its 50 values is missing or not"
            " understood.",
        ),
        (
            f"{FIT} --locale zzzzzz",
            "'zzzzzz' is neither a country nor a locale. Write a country as its ISO code, its"
            " English name or its name in its own language, a locale as 'en_GB'.",
        ),
        (
            "fit people.csv --min-count 1 -o no/m.json --column gender=sex",
            "no/m.json: folder 'no' does not exist.",
        ),
        (
            "sample zz.json -n 1 -o x",
            "Model file zz.json cannot be read: No such file or directory.",
        ),
    ],
)
def test_bad_data_is_one_line(line: str, message: str) -> None:
    assert fail(line, 1) == message


@pytest.mark.parametrize(
    ("line", "message"),
    [
        (
            "fit peopl.csv -o n.json",
            "Table peopl.csv cannot be read: No such file or directory. Did you mean 'people.csv'?",
        ),
        (
            "fit no/people.csv -o n.json",
            "Table no/people.csv cannot be read: No such file or directory.",
        ),
        (
            "sample M.jsn -n 1 -o x",
            "Model file M.jsn cannot be read: No such file or directory. Did you mean 'm.json'?",
        ),
        (
            "show sub/m.json",
            "Model file sub/m.json cannot be read: No such file or directory. Did you mean"
            " 'sub/m2.json'?",
        ),
    ],
)
def test_a_mistyped_file_names_the_nearest(line: str, message: str) -> None:
    Path("m.json").write_text("{}")
    Path("sub").mkdir()
    Path("sub/m2.json").write_text("{}")
    assert fail(line, 1) == message


@pytest.mark.parametrize("attribute", ["gender", "lastname", "country"])
def test_a_column_of_missing_values_only(attribute: str) -> None:
    Path("people.csv").write_text("sex,empty\nm,\nf,\n")
    assert fail(f"fit people.csv --min-count 1 -o m.json --column {attribute}=empty", 1) == (
        f"Column 'empty' holds missing values only: leave {attribute!r} out."
    )


@pytest.mark.parametrize("content", ["", "a\n", "a\n1\n1,2,3\n"])
def test_a_table_that_is_none(content: str) -> None:
    Path("people.csv").write_text(content)
    assert fail(FIT, 1).startswith("Table people.csv ")


def test_a_wrong_column_names_the_nearest() -> None:
    message = fail("fit people.csv --min-count 1 -o m.json --column gender=SEX", 1)
    assert " for 'gender'. Did you mean 'sex'? Its columns are: " in message


def test_unknown_countries_name_the_nearest_and_their_rows() -> None:
    Path("people.csv").write_text("sex,land\nm,Germny\nf,\nf,Germny\nf,Narnia\n")
    assert fail(f"{FIT} --show-values --column country=land", 1) == (
        "Column 'land': These are neither countries nor locales: 'Germny' (did you mean 'Germany'?),"
        " 'Narnia'. Write a country as its ISO code, its English name or its name in its own"
        " language, a locale as 'en_GB'. Such rows: 3 of 4. Correct or empty these cells, or leave"
        " the column out: --ignore land."
    )
    succeed(f"{FIT} --ignore land")


@pytest.mark.parametrize(
    ("content", "message"),
    [
        ("{", " is not JSON ("),
        ("{}", " cannot be used: it is no model;"),
        ({"schema_version": 3}, " cannot be used: its schema version is 3,"),
        ({"model": {}}, " cannot be used: Object missing required field `meta` - at `$.model`."),
    ],
)
def test_a_model_file_that_is_none(content: str | dict[str, object], message: str) -> None:
    succeed(FIT)
    if isinstance(content, dict):
        content = json.dumps(json.loads(Path("m.json").read_text()) | content)
    Path("m.json").write_text(content)
    assert fail("sample m.json -n 1 -o x", 1).startswith(f"Model file m.json{message}")


@pytest.mark.parametrize(
    ("line", "message"),
    [
        (
            "fit people.csv --min-count 1 -o m.json --column gendr=sex",
            f"'gendr' is no attribute of a person. Did you mean 'gender'? Known are: {ATTRIBUTES}.",
        ),
        (
            "fit people.csv --min-count 1 -o m.json --column sex",
            "Invalid value for '--column': 'sex' is not of the form ATTRIBUTE=COLUMN.",
        ),
        (
            "fit people.csv --min-count 1 -o m.json --column sex=gender",
            "Invalid value for '--column': 'sex=gender' is the wrong way round: write gender=sex.",
        ),
        (f"{FIT} --column gender=title", "Invalid value for '--column': 'gender' is given twice."),
        (
            f"{FIT} --column title=sex",
            "Column 'sex' is labelled 'gender' and 'title': give each attribute a column of its"
            " own.",
        ),
        (
            f"{FIT} --generate title",
            "'title' must be learnt from a column: name it, as in --column title=COLUMN.",
        ),
        (
            f"{FIT} --generate zz",
            f"'zz' is no attribute of a person. Known are: {ATTRIBUTES}.",
        ),
        (
            f"{FIT} --column fullname=title --generate fullname",
            "'fullname' is both named and to be generated: a column that is named is generated"
            " anyway.",
        ),
        (
            "fit people.csv --min-count 1 -o m.json --no-detect",
            "Name a column to learn from, as in --column gender=COLUMN.",
        ),
        ("sample m.json -n -1 -o x", "Invalid value for '-n': -1 is not in the range x>=0."),
        ("sample m.json -n x -o x", "Invalid value for '-n': 'x' is not a valid integer range."),
        (
            "sample m.json -n 1.5 -o x",
            "Invalid value for '-n': '1.5' is not a valid integer range.",
        ),
        (
            "sample m.json -n 1.000 -o x",
            "Invalid value for '-n': '1.000' is not a valid integer range.",
        ),
        (
            "sample m.json -n 1.25e1 -o x",
            "Invalid value for '-n': '1.25e1' is not a valid integer range.",
        ),
        (
            "sample m.json -n 1e99999 -o x",
            "Invalid value for '-n': '1e99999' is not a valid integer range.",
        ),
        (
            "sample m.json -n 1e6 -o x",
            "Invalid value for '-n': '1e6' is not a valid integer range.",
        ),
        (
            "sample m.json -n 1.5E6 -o x",
            "Invalid value for '-n': '1.5E6' is not a valid integer range.",
        ),
        (
            "sample m.json -n 10,000,000 -o x",
            "Invalid value for '-n': '10,000,000' is not a valid integer range.",
        ),
        (
            "sample m.json -n 1 --seed -1 -o x",
            "Invalid value for '--seed': -1 is not in the range x>=0.",
        ),
        (
            "sample m.json -n 1 --seed abc -o x",
            "Invalid value for '--seed': 'abc' is not a valid integer range.",
        ),
        (
            "sample m.json -n 1 -o x --dask --workers 0",
            "Invalid value for '--workers': 0 is not in the range x>=1.",
        ),
        ("sample m.json -n 1", "Missing option '-o' / '--output'."),
        (
            "fit people.csv --min-count 1 -o - --column gender=sex",
            "A model is not written to standard output: name a file for -o.",
        ),
        (
            "fit people.csv --min-count 1 -o ./people.csv --column gender=sex",
            "people.csv is the file to read: write to another one.",
        ),
        (
            "sample people.csv -n 1 -o people.csv",
            "people.csv is the file to read: write to another one.",
        ),
        ("zz", "No such command 'zz'."),
    ],
)
def test_bad_usage_is_one_line(line: str, message: str) -> None:
    assert fail(line, 2) == message


def test_help_has_an_example_each() -> None:
    for command in ("fit", "sample"):
        help_text = succeed(f"{command} --help").stdout
        assert f":\n    vantrel {command} " in help_text.partition("Example")[2]


def test_the_help_of_sample_names_its_numbers() -> None:
    shown = succeed("sample --help").stdout
    assert re.search(r"^  -n N  ", shown, re.MULTILINE)
    assert re.search(r"^  --seed SEED  ", shown, re.MULTILINE)
    assert re.search(r"^  --partitions N  ", shown, re.MULTILINE)


def test_without_a_command_the_help_is_shown() -> None:
    result = run("")
    assert result.exit_code == 2
    assert "Commands:" in result.stderr

"""``vantrel sample``: conditions, unique columns, strictness, cells for spreadsheets."""

from importlib.util import find_spec
from pathlib import Path

import pandas as pd
import pytest
from click.testing import CliRunner

from support.command import fail, made, succeed
from support.people import fitted_model
from vantrel.cli import main
from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.storage.models import dumps
from vantrel.tables import write_table

SECONDS = 60

with_pyarrow = pytest.mark.skipif(find_spec("pyarrow") is None, reason="Parquet needs pyarrow")


def test_conditions_are_met_row_by_row() -> None:
    Path("c.csv").write_text("id,land,sex\n1,DE,female\n2,FR,m\n3,Japan,f\n")
    succeed("sample places.json --conditions c.csv -o out.csv")
    out = made()
    assert out["land"].tolist() == ["DE", "FR", "Japan"]
    assert out["sex"].tolist() == ["f", "m", "f"]
    assert [name.isascii() for name in out["name"]][2] is False
    assert list(out) == ["sex", "land", "name", "id"]
    assert out["id"].tolist() == ["1", "2", "3"]


def test_further_columns_of_conditions_stay_in_all_blocks() -> None:
    ids = [f"{row:05}" if row % 7 else "" for row in range(50_003)]  # of two blocks, with gaps
    Path("c.csv").write_text("\n".join(["id,sex", *(f"{each},f" for each in ids)]))
    succeed("sample sex.json --conditions c.csv -o out.csv")
    assert made()["id"].fillna("").tolist() == ids


@with_pyarrow
def test_conditions_in_parquet() -> None:
    write_table([pd.DataFrame({"sex": ["m", "f"]})], Path("c.parquet"))
    succeed("sample m.json --conditions c.parquet -o out.csv")
    assert made()["sex"].tolist() == ["m", "f"]


def test_new_countries_without_names_of_their_own_are_told_of_in_a_plain_line() -> None:
    Path("c.csv").write_text("land\nNA\nGB\n")
    result = succeed("sample places.json --conditions c.csv -o out.csv")
    assert result.stderr == (
        "vantrel: warning: Faker has no person names of its own for these; they get those of the"
        " locale in brackets: NA (en_GB).\n"
    )


def test_strict_refuses_them_in_one_line() -> None:
    Path("c.csv").write_text("land\nNA\nGB\n")
    assert fail("sample places.json --conditions c.csv --strict -o out.csv", 1) == (
        "Faker has no person names of its own for 'NA': leave --strict out to give these people"
        " names from elsewhere."
    )


@pytest.mark.parametrize(
    ("content", "message"),
    [
        (
            "sex,land\nm,GB\nq,Narnia\n,DE\n",
            "The conditions have values that the model cannot place: column 'sex' has 'q' in row 2;"
            " column 'sex' has no value in row 3; column 'land' has 'Narnia' in row 2. Correct them"
            " or leave the rows out.",
        ),
        ("x\n1\n", "The conditions need a column 'sex' or 'land', as the model has."),
        ("sex\n", "Table c.csv has a header but no rows: give it at least one."),
        (None, "Table c.csv cannot be read: No such file or directory."),
    ],
)
def test_conditions_that_cannot_be_met(content: str | None, message: str) -> None:
    if content is not None:
        Path("c.csv").write_text(content)
    assert fail("sample places.json --conditions c.csv --show-values -o out.csv", 1) == message


def test_unique_columns() -> None:
    for unique in ("username", "username,email", "username,username"):
        succeed(f"sample m.json -n 40 --seed 7 --unique {unique} -o {unique}.csv")
    succeed("sample m.json -n 40 --seed 7 -o out.csv")
    usual, one, both = (made(f"{name}.csv") for name in ("out", "username", "username,email"))
    assert one["user"].str.slice(stop=-6).tolist() == usual["user"].tolist()
    assert one["mail"].tolist() == usual["mail"].tolist()
    assert both["user"].tolist() == one["user"].tolist()
    assert (both["mail"].str.len() == usual["mail"].str.len() + 6).all()
    assert made("username,username.csv").equals(one)


def test_unique_attributes_may_have_spaces_between() -> None:
    line = ["sample", "m.json", "-n", "3", "--seed", "7", "-o", "-", "--unique"]
    apart, together = (
        CliRunner().invoke(main, [*line, attributes]).stdout
        for attributes in ("username, email", "username,email")
    )
    assert apart == together != ""


@pytest.mark.parametrize(
    ("line", "message"),
    [
        (
            "sample sex.json -n 5 --unique email -o out.csv",
            "'email' cannot be made unique: the model does not make it. Fit it with --generate"
            " email.",
        ),
        (
            f"sample m.json -n {36**6 + 1} --unique username -o out.csv",
            "Column 'user' runs out of unique values at 2,176,782,336 rows: ask for fewer.",
        ),
    ],
)
def test_columns_that_cannot_be_unique(line: str, message: str) -> None:
    assert fail(line, 1) == message


def test_cells_that_a_spreadsheet_would_run_are_guarded(fitted_people: pd.DataFrame) -> None:
    labels = PersonLabels(gender="sex", fullname="@name", home_number="phone")
    config = PersonModelConfig(home_number_format="+44xxx")
    Path("plus.json").write_text(dumps(fitted_model(labels, fitted_people, config)))
    succeed("sample plus.json -n 5 --seed 7 --csv-safe -o out.csv")
    succeed("sample plus.json -n 5 --seed 7 -o usual.csv")
    usual, out = made("usual.csv"), made()
    assert list(out) == ["sex", "'@name", "phone"]
    assert out["phone"].tolist() == [f"'{number}" for number in usual["phone"]]
    assert out["'@name"].tolist() == usual["@name"].tolist()
    assert all(line.count('"') == 6 for line in Path("out.csv").read_text().splitlines())
    printed = succeed("sample plus.json -n 5 --seed 7 --csv-safe -o -").stdout
    assert printed == Path("out.csv").read_text()


def test_errors_name_no_values_of_conditions_unasked() -> None:
    Path("c.csv").write_text("sex,land\nq,GB\nm,Narnia\nq,Oz\n,GB\n")
    assert fail("sample places.json --conditions c.csv -o out.csv", 1) == (
        "The conditions have values that the model cannot place: column 'sex' has no value in row 4;"
        " column 'sex' has 1 value in rows 1, 3 (--show-values names it); column 'land' has 2 values"
        " in rows 2, 3 (--show-values names them). Correct them or leave the rows out."
    )

"""How ``vantrel fit`` finds columns and reads its settings."""

import gzip
import subprocess
from pathlib import Path

import pytest

from support.command import command_line, fail, shell, succeed
from vantrel.rows import Ways
from vantrel.storage.models import load
from vantrel.tables import read_table

FIT = "fit people.csv -o m.json --min-count 1"
COLUMNS = "'land', 'surname', 'title', 'sex'"


def labels() -> dict[str, str]:
    return load(Path("m.json"), allow_patterns=True).params


def test_columns_are_found_and_shown() -> None:
    result = succeed(FIT)
    assert result.stdout.splitlines() == [
        "Attribute  Column   Found by",
        "gender     sex      name and values",
        "title      title    name and values",
        "lastname   surname  name",
        "country    land     name and values",
        "Learnt from 50 rows of people.csv; wrote m.json.",
    ]
    assert labels() == {"gender": "sex", "title": "title", "lastname": "surname", "country": "land"}


def test_the_shell_finds_columns() -> None:
    result = shell("fit people.csv -o m.json")
    assert result.returncode == 0
    assert result.stdout.startswith("Attribute  Column   Found by\n")
    assert shell("sample m.json -n 5 -o out.csv").returncode == 0
    assert list(read_table(Path("out.csv"))) == ["land", "surname", "title", "sex"]
    failed = shell("fit people.csv -o n.json --ignore zz")
    assert (failed.returncode, failed.stdout) == (1, "")
    assert failed.stderr.startswith("vantrel: error: The table has no column 'zz'")
    assert shell("fit people.csv -o n.json --no-detect").returncode == 2


def test_a_named_column_overrides_what_is_found() -> None:
    Path("people.csv").write_text("sex,gender,title\nm,f,Mr\nf,m,Mrs\n")
    result = succeed(f"{FIT} --column gender=gender")
    assert "gender     gender  --column\n" in result.stdout
    assert labels() == {"gender": "gender", "title": "title"}


def test_a_named_column_is_taken_from_other_attributes() -> None:
    succeed(f"{FIT} --column firstname=surname")
    assert labels() == {
        "gender": "sex",
        "title": "title",
        "firstname": "surname",
        "country": "land",
    }


def test_an_ignored_column_is_left_out() -> None:
    result = succeed(f"{FIT} --ignore land --ignore title")
    assert labels() == {"gender": "sex", "lastname": "surname"}
    assert result.stderr.endswith(" are left out of samples: 'land', 'title'.\n")


def test_an_ignored_column_makes_room_for_another() -> None:
    Path("people.csv").write_text("sex,genre\nm,f\nf,m\n")
    succeed(f"{FIT} --ignore sex")
    assert labels() == {"gender": "genre"}


def test_only_named_columns_are_taken_if_none_are_to_be_found() -> None:
    result = succeed(f"{FIT} --no-detect --column gender=sex")
    assert result.stdout == "Learnt from 50 rows of people.csv; wrote m.json.\n"
    assert labels() == {"gender": "sex"}


def test_what_is_generated_is_shown_and_is_the_column_if_one_is_found() -> None:
    result = succeed(f"{FIT} --generate lastname,email")
    assert "lastname   surname  name\n" in result.stdout
    assert "email      email    --generate\n" in result.stdout
    assert labels()["lastname"] == "surname"


def test_a_named_column_is_enough_where_none_is_found() -> None:
    Path("people.csv").write_text("a,b\nm,1\nm,2\n")
    assert fail(FIT, 1) == (
        "No column of the table is found to be of a person by its name and values: name one,"
        " as in --column gender=COLUMN. Its columns are: 'a', 'b'."
    )
    succeed(f"{FIT} --column gender=a")
    assert labels() == {"gender": "a"}


def test_nothing_is_found_where_all_is_ignored() -> None:
    ignored = "--ignore land --ignore surname --ignore title --ignore sex"
    assert fail(f"{FIT} {ignored}", 1).endswith(f" Its columns are: {COLUMNS}.")


@pytest.mark.parametrize("separator", [";", "\t", "|"])
def test_the_separator_is_found(separator: str) -> None:
    Path("people.csv").write_text(
        f"sex{separator}vorname{separator}anmerkung\nm{separator}Bo{separator}a, b\n"
        f"f{separator}Ann, Lea{separator}c\n"
    )
    succeed(FIT)
    assert labels() == {"gender": "sex", "firstname": "vorname"}


def test_a_separator_that_is_not_found_is_named() -> None:
    Path("people.csv").write_text("sex~vorname\nm~Bo\n")
    succeed(f"{FIT} --separator '~'")
    assert labels() == {"gender": "sex", "firstname": "vorname"}
    assert fail(f"{FIT} --force --separator xy", 2) == (
        "Invalid value for '--separator': 'xy' is not one character, such as ; or | or tab."
    )


def test_an_encoding_is_named() -> None:
    Path("people.csv").write_text("sex,land\nm,España\nf,Österreich\n", encoding="cp1252")
    assert fail(FIT, 1) == (
        "Table people.csv is not in UTF-8: name its encoding, cp1252 most likely, or save it as CSV"
        " UTF-8."
    )
    succeed(f"{FIT} --encoding cp1252")
    model = load(Path("m.json"))
    assert model.meta["land"].categories == ["España", "Österreich"]
    assert fail(f"{FIT} --force --encoding utf-9", 1) == (
        "'utf-9' is no encoding: write utf-8, utf-16, latin-1 or cp1252, for example."
    )


def test_the_table_comes_from_standard_input() -> None:
    content = gzip.compress(b"sex;land\nm;GB\n;\n")
    subprocess.run(
        command_line("fit - -o m.json --min-count 1"),
        input=content,
        check=True,
        capture_output=True,
    )
    assert load(Path("m.json")).hidden_model_gender.meta.nan_freq == 0.5


def test_a_column_whose_values_contradict_its_name_is_told() -> None:
    Path("people.csv").write_text("Job's title,title,sex\nx,Manager,m\ny,Clerk,f\n")
    assert succeed(f"{FIT} --show-values").stderr.splitlines()[0] == (
        "vantrel: note: Column 'title' is not taken for title, as its values, such as 'Manager', do"
        " not look so: to take it, add --column title=title."
    )


def test_a_gender_that_is_not_understood_needs_patterns() -> None:
    Path("people.csv").write_text("sexo,pais\nM,ES\nH,MX\nH,ES\n")
    assert succeed(f"{FIT} --show-values").stderr.splitlines()[0] == (
        "vantrel: note: Column 'sexo' is not taken for gender, as its values, such as 'H', do not"
        " look so: to take it, add --column gender=sexo, and patterns of its values with --config."
    )


def test_a_country_has_one_locale() -> None:
    Path("people.csv").write_text("sex,land\nm,IN\nf,IN\n")
    twice = "--locale India=en_IN --locale India=hi_IN"
    assert fail(f"{FIT} {twice}", 2) == "Invalid value for '--locale': 'India' is given twice."
    assert fail(f"{FIT} --locale India=en_IN --locale IN=hi_IN", 2) == (
        "'locales' has one country twice, as 'India' and 'IN': leave one out."
    )
    assert fail(f"{FIT} --ignore land --locale India=en_IN", 1) == (
        "There are locales of countries, and no column of countries: name it, as in --column"
        " country=COLUMN, or tell where all people are from, as in --locale en_IN."
    )


def test_a_country_that_is_not_understood_needs_other_values_or_a_locale() -> None:
    Path("people.csv").write_text("sex,land\nm,Bayern\nf,Sachsen\nf,Bayern\n")
    assert succeed(f"{FIT} --show-values").stderr.splitlines()[0] == (
        "vantrel: note: Column 'land' is not taken for country, as its values, such as 'Bayern', do"
        " not look so: to take it, add --column country=land, or --locale DE, say, in its place."
        " Where a value is no country, samples have it as it is, and a name from the other countries"
        " with it."
    )


def test_such_columns_are_told_where_nothing_is_found() -> None:
    Path("people.csv").write_text("E-Mail Address\nsecret\nhidden\n")
    assert fail(FIT, 1) == (
        "No column of the table is found to be of a person by its name and values: name one,"
        " as in --column gender=COLUMN. Column 'E-Mail Address' is not taken for email, as its"
        " values do not look so: to take it, add --column 'email=E-Mail Address'. Its columns are:"
        " 'E-Mail Address'."
    )


def test_an_unknown_country_in_a_column_that_was_found() -> None:
    Path("people.csv").write_text("sex,land\nm,Germny\nf,FR\n")
    assert succeed(f"{FIT} --show-values").stderr == (
        "vantrel: note: Column 'land' has values that are no countries: 'Germny' (1). Samples have"
        " them as they are, and names from the other countries with them.\n"
    )
    succeed(f"{FIT} --force --ignore land")


@pytest.mark.parametrize(
    ("options", "status", "message"),
    [
        (
            "--ignore srname",
            1,
            f"The table has no column 'srname' to ignore. Did you mean 'surname'? Its columns"
            f" are: {COLUMNS}.",
        ),
        (
            "--ignore zz --no-detect --column gender=sex",
            1,
            f"The table has no column 'zz' to ignore. Its columns are: {COLUMNS}.",
        ),
        (
            "--ignore sex --column gender=sex",
            2,
            "Column 'sex' is both named for 'gender' and ignored: leave one out.",
        ),
        (
            "--no-detect",
            2,
            "Name a column to learn from, as in --column gender=COLUMN.",
        ),
        (
            "--no-detect --generate email",
            2,
            "Name a column to learn from, as in --column gender=COLUMN.",
        ),
        ("--config no.toml", 1, "Config file no.toml cannot be read: No such file or directory."),
    ],
)
def test_bad_options(options: str, status: int, message: str) -> None:
    assert fail(f"{FIT} {options}", status) == message


def test_settings_are_read_from_a_file() -> None:
    Path("c.toml").write_text('pwd_length = [3, 3]\nmobile_number_format = "+7 xx"\n')
    succeed(f"{FIT} --config c.toml --generate password,mobile_number")
    model = load(Path("m.json"))
    assert model.config.pwd_length == (3, 3)
    succeed("sample m.json -n 20 --seed 1 -o out.csv")
    out = read_table(Path("out.csv"))
    assert set(out["password"].dropna().str.len()) == {3}
    assert out["mobile_number"].dropna().str.fullmatch(r"\+7 \d\d").all()


def test_patterns_of_a_file_are_used_for_finding_columns() -> None:
    Path("people.csv").write_text("sex\n1\n2\n2\n")
    fail(FIT, 1)
    Path("c.toml").write_text('gender_female_regex = "^2$"\ngender_male_regex = "^1$"\n')
    succeed(f"{FIT} --config c.toml")
    assert labels() == {"gender": "sex"}


@pytest.mark.parametrize(
    ("text", "message"),
    [
        ("a = = 1", "Config file c.toml is not TOML: Invalid value (at line 1, column 5)."),
        ("pwd_length = 8", "Config file c.toml: Expected `array`, got `int` - at `$.pwd_length`."),
        (
            "title_male_regex = '('",
            "Config file c.toml: title_male_regex is no regular expression (missing ),",
        ),
    ],
)
def test_a_file_of_settings_that_is_none(text: str, message: str) -> None:
    Path("c.toml").write_text(text)
    assert fail(f"{FIT} --config c.toml", 1).startswith(message)


def test_a_model_does_not_overwrite_the_settings() -> None:
    Path("c.toml").write_text("")
    assert fail("fit people.csv -o c.toml --force --config c.toml", 2) == (
        "c.toml is the file to read: write to another one."
    )


@pytest.mark.parametrize("width", ["60", "200"])
def test_the_map_fits_the_width(width: str) -> None:
    Path("people.csv").write_text(f"{'the long gender ' * 6},sex\n1,m\n1,f\n")
    result = succeed(f"{FIT} --column 'lastname={'the long gender ' * 6}'", COLUMNS=width)
    table = result.stdout.partition("Learnt")[0].splitlines()
    assert max(map(len, table)) <= int(width)
    assert (len(table) > 3) == (width == "60")


def test_how_people_are_reached_is_set_by_options_or_by_a_file() -> None:
    Path("c.toml").write_text('email_domain = "example.net"\nphone_numbers = "valid"\n')
    succeed(f"{FIT} --force --config c.toml")
    assert load(Path("m.json")).meta.ways == Ways("example.net", "valid")
    succeed(f"{FIT} --force --config c.toml --email-domain as-made")
    assert load(Path("m.json")).meta.ways == Ways("as-made", "valid")
    Path("c.toml").write_text('email_domain = "no domain"\n')
    assert fail(f"{FIT} --force --config c.toml", 1).startswith("Config file c.toml: ")

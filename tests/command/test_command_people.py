"""``vantrel people``: people without a table, and what is asked wrongly."""

from __future__ import annotations

import io
from collections.abc import Iterator
from pathlib import Path

import pandas as pd
import pytest

import vantrel
from support.command import fail, made, run, succeed
from vantrel.attributes import ATTRIBUTES

BAD_USAGE, BAD_DATA = 2, 1


@pytest.fixture(autouse=True)
def folder(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> Iterator[Path]:
    monkeypatch.chdir(tmp_path)
    yield tmp_path
    assert not list(tmp_path.glob(".*")), "a temporary file is left"


def test_they_are_those_of_the_library() -> None:
    result = succeed(
        "people -n 300 --country FR=3 --country GB --gender F=2 --gender M=0.5 --seed 7 -o out.csv"
    )
    assert result.output == "Made 300 people with the seed 7; wrote out.csv.\n"
    expected = vantrel.people(300, countries={"FR": 3, "GB": 1}, genders={"F": 2, "M": 0.5}, seed=7)
    assert list(made()) == list(ATTRIBUTES)
    assert made().to_csv() == expected.to_csv()


def test_ways_are_those_of_the_library() -> None:
    succeed("people -n 200 --country JP --phone-numbers valid --latin --seed 7 -o out.csv")
    expected = vantrel.people(200, countries=["JP"], phone_numbers="valid", latin=True, seed=7)
    assert made().to_csv() == expected.to_csv()
    assert expected["fullname"].map(str.isascii).all()
    usual = vantrel.people(200, countries=["JP"], seed=7)
    assert not usual["fullname"].map(str.isascii).any()


def test_domain_and_locales_are_those_of_the_library() -> None:
    succeed(
        "people -n 20 --country DE --country IN --email-domain x.org --locale India=en_IN"
        " --locale Germany=it_IT --seed 7 -o out.csv"
    )
    locales = {"India": "en_IN", "Germany": "it_IT"}
    expected = vantrel.people(
        20, countries=["DE", "IN"], email_domain="x.org", locales=locales, seed=7
    )
    assert made().to_csv() == expected.to_csv()
    assert made()["email"].str.endswith("@x.org").all()


def test_a_country_may_have_a_comma_in_its_name() -> None:
    result = succeed("people -n 1 --country 'Korea, Republic of' --seed 1")
    assert '"Korea, Republic of"' in result.stdout


def test_valid_numbers_are_many() -> None:
    def numbers(phone_numbers: str) -> int:
        made = vantrel.people(
            2_000,
            countries=["DE"],
            columns=["mobile_number"],
            seed=7,
            phone_numbers=phone_numbers,
        )
        return made["mobile_number"].nunique()

    assert numbers("fiction") <= 200
    assert numbers("valid") > 1_900


def test_columns_come_in_their_order_to_standard_output() -> None:
    result = succeed("people -n 3 --columns email,firstname --seed 1")
    expected = vantrel.people(3, columns=["email", "firstname"], seed=1)
    assert pd.read_csv(io.StringIO(result.stdout)).to_csv() == expected.to_csv()
    assert result.stderr == ""


def test_a_seed_that_is_drawn_is_told() -> None:
    result = succeed("people -n 2 --columns firstname")
    note = "vantrel: note: the seed is "
    assert result.stderr.startswith(note)
    seed = int(result.stderr.removeprefix(note))
    assert result.stdout == succeed(f"people -n 2 --columns firstname --seed {seed}").stdout


def test_a_table_is_written_by_the_end_of_its_name() -> None:
    succeed("people -n 2 --columns title,lastname --seed 1 -o out.jsonl")
    assert Path("out.jsonl").read_text(encoding="utf-8").count('"lastname"') == 2


def test_nobody_is_a_header() -> None:
    assert succeed("people -n 0 --columns title,lastname --seed 1").stdout == "title,lastname\n"


def test_more_people_than_numbers_are_told_of() -> None:
    result = succeed("people -n 1001 --columns mobile_number --seed 1 -o out.csv")
    assert result.stderr == (
        "vantrel: note: Some telephone numbers come more than once: mobile_number in GB (1,000 kept"
        " for fiction, for 1,001 people). With --phone-numbers valid, fit and people take others,"
        " which may be somebody's.\n"
    )


def test_nothing_is_overwritten_without_force() -> None:
    Path("out.csv").write_text("mine")
    assert fail("people -n 1 -o out.csv", BAD_USAGE) == (
        "out.csv is there already: add --force to overwrite it."
    )
    succeed("people -n 1 --columns title --seed 1 -o out.csv --force")
    assert Path("out.csv").read_text() != "mine"


@pytest.mark.parametrize(
    ("asked", "message"),
    [
        ("", "Missing option '-n'."),
        ("-n x", "Invalid value for '-n': 'x' is not a valid integer range."),
        ("-n -1", "Invalid value for '-n': -1 is not in the range x>=0."),
        ("-n 1 --seed -1", "Invalid value for '--seed': -1 is not in the range x>=0."),
        (
            "-n 1 --country DE=x",
            "Invalid value for '--country': 'DE=x' is not of the form NAME=SHARE.",
        ),
        ("-n 1 --country DE=-1", "The share of 'DE' is a number from 0 on, not -1.0."),
        ("-n 1 --country DE=nan", "The share of 'DE' is a number from 0 on, not nan."),
        ("-n 1 --country DE=inf", "The share of 'DE' is a number from 0 on, not inf."),
        ("-n 1 --country DE=0", "'countries' have no share above 0: give at least one."),
        (
            "-n 1 --country DE,PL,JP",
            "Invalid value for '--country': 'DE,PL,JP' is several names: repeat the option,"
            " --country DE --country PL --country JP.",
        ),
        (
            "-n 1 --country DE=3,PL=2",
            "Invalid value for '--country': 'DE=3,PL=2' is several names: repeat the option,"
            " --country DE=3 --country PL=2.",
        ),
        (
            "-n 1 --gender F,M",
            "Invalid value for '--gender': 'F,M' is several names: repeat the option,"
            " --gender F --gender M.",
        ),
        (
            "-n 1 --locale en_IN",
            "Invalid value for '--locale': 'en_IN' is not of the form COUNTRY=LOCALE.",
        ),
        (
            "-n 1 --email-domain x",
            "'email_domain' is a domain such as 'example.org', or 'reserved' or 'as-made', not"
            " 'x'.",
        ),
        (
            "-n 1 --country DE --country DE=2",
            "Invalid value for '--country': 'DE' is given twice.",
        ),
        ("-n 1 --gender zz", "'zz' is no gender: write F, M or NB, or a word for one of them."),
        (
            "-n 1 --columns emial",
            "'emial' is no attribute of a person. Did you mean 'email'? Known are:"
            f" {', '.join(ATTRIBUTES)}.",
        ),
    ],
)
def test_what_is_asked_wrongly_is_told_in_one_line(asked: str, message: str) -> None:
    assert fail(f"people {asked} -o out.csv", BAD_USAGE) == message


def test_a_country_that_is_none_is_told_in_one_line() -> None:
    assert fail("people -n 1 --country Grmany -o out.csv", BAD_DATA) == (
        "'Grmany' is neither a country nor a locale. Did you mean 'Germany'? Write a country as its"
        " ISO code, its English name or its name in its own language, a locale as 'en_GB'."
    )


def test_borrowed_names_are_warned_of_in_a_plain_line() -> None:
    result = run("people -n 1 --country Namibia --columns firstname --seed 1")
    assert result.exit_code == 0
    assert result.stderr == (
        "vantrel: warning: Faker has no person names of its own for these; they get those of the"
        " locale in brackets: Namibia (en_GB).\n"
    )

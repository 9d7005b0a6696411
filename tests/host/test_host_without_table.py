"""People without a table: shares as given, usual titles, and the fixture for tests."""

from __future__ import annotations

import io
import os
import subprocess
import sys
from decimal import Decimal
from fractions import Fraction
from hashlib import sha256
from inspect import cleandoc
from types import MappingProxyType
from typing import Any

import numpy as np
import pandas as pd
import pytest

import vantrel
from vantrel.attributes import ATTRIBUTES
from vantrel.config import PersonModelConfig
from vantrel.errors import ArgumentError, ArgumentTypeError, UnknownPlaceError
from vantrel.genders import AMBIGUOUS, DEFAULT_PATTERNS, keys_of
from vantrel.util.locale.countries import country_codes
from vantrel.util.locale.locale import borrowed_places

pytest_plugins = ["pytester"]


def test_shares_are_those_that_were_given() -> None:
    people = vantrel.people(20_000, countries={"DE": 3, "GB": 1}, genders={"F": 1, "M": 3}, seed=1)
    assert list(people) == list(ATTRIBUTES)
    assert people["country"].value_counts(normalize=True)["DE"] == pytest.approx(0.75, abs=0.02)
    assert people["gender"].value_counts(normalize=True)["F"] == pytest.approx(0.25, abs=0.02)
    assert not people.isna().any(axis=None)
    titles = people.groupby(["country", "gender"])["title"].agg(set).to_dict()
    assert titles == {
        ("DE", "F"): {"Frau", "Dr."},
        ("DE", "M"): {"Herr", "Dr."},
        ("GB", "F"): {"Mrs", "Ms", "Miss", "Dr"},
        ("GB", "M"): {"Mr", "Dr"},
    }


def test_columns_come_in_their_order() -> None:
    people = vantrel.people(3, columns=["email", "firstname"], seed=1)
    assert list(people) == ["email", "firstname"]
    assert people.equals(vantrel.people(3, columns=["email", "firstname"], seed=1))
    assert vantrel.people(0).empty


@pytest.mark.parametrize(
    ("asked", "error", "message"),
    [
        ({"countries": {"Grmany": 1}}, UnknownPlaceError, "'Grmany' is neither a country nor"),
        ({"countries": "DE"}, ArgumentTypeError, "'countries' is a list of countries: write"),
        (
            {"countries": {"DE": -1}},
            ArgumentError,
            "The share of 'DE' is a number from 0 on, not -1.",
        ),
        (
            {"countries": {"DE": 0}},
            ArgumentError,
            "'countries' have no share above 0: give at least one.",
        ),
        (
            {"genders": ["zz"]},
            ArgumentError,
            "'zz' is no gender: write F, M or NB, or a word for one of them.",
        ),
        ({"columns": ["nam"]}, ArgumentError, "'nam' is no attribute of a person."),
        (
            {"columns": []},
            ArgumentError,
            "There are no columns to make: name some, or leave 'columns' out.",
        ),
        (
            {"countries": 5},
            ArgumentTypeError,
            "'countries' is a list of countries; this is an int.",
        ),
        (
            {"columns": 5},
            ArgumentTypeError,
            "'columns' is a list of attributes; this is an int.",
        ),
        ({"countries": [["DE"]]}, ArgumentTypeError, "'countries' are texts, not ['DE']."),
        ({"columns": [["email"]]}, ArgumentTypeError, "'columns' are texts, not ['email']."),
        (
            {"countries": {"DE": 10**5_000}},
            ArgumentError,
            "The share of 'DE' is too large to count with.",
        ),
        (
            {"countries": {"DE": True}},
            ArgumentError,
            "The share of 'DE' is a number from 0 on, not True.",
        ),
        (
            {"countries": {"DE": Decimal("sNaN")}},
            ArgumentError,
            "The share of 'DE' is a number from 0 on, not Decimal('sNaN').",
        ),
        (
            {"countries": {"DE": "3"}},
            ArgumentError,
            "The share of 'DE' is a number from 0 on, not '3'.",
        ),
        (
            {"locales": ["en_IN"]},
            ArgumentError,
            "'locales' are locales by country, as in {'India': 'en_IN'}, not ['en_IN'].",
        ),
        ({"locales": {"IN": "xx"}}, UnknownPlaceError, "'xx' is neither a country nor a locale."),
        (
            {"email_domain": "x y"},
            ArgumentError,
            "'email_domain' is a domain such as 'example.org', or 'reserved' or 'as-made', not",
        ),
    ],
)
def test_what_is_asked_wrongly_is_told(
    asked: dict[str, Any], error: type[Exception], message: str
) -> None:
    with pytest.raises(error) as caught:
        vantrel.people(1, **asked)
    assert str(caught.value).startswith(message)


def test_nobody_tells_no_number() -> None:
    with pytest.raises(ArgumentTypeError) as caught:
        vantrel.people(None)  # type: ignore[arg-type]  # what is refused
    assert str(caught.value) == "'n' is the number of people, not None."


COUNTS = pd.Series(["DE", "DE", "GB", "DE"]).value_counts()


@pytest.mark.parametrize(
    "countries",
    [
        {"DE": 1.5e308, "GB": 0.5e308},
        {"DE": 15e-324, "GB": 5e-324},
        {"DE": np.int64(3), "GB": np.float32(1)},
        {"DE": Decimal("0.75"), "GB": Fraction(1, 4)},
        MappingProxyType({"DE": 3, "GB": 1}),
        COUNTS,
        COUNTS / 4,
    ],
)
def test_shares_are_numbers_of_any_kind_and_size(countries: Any) -> None:
    asked: dict[str, Any] = {"columns": ["country", "firstname"], "seed": 1}
    expected = vantrel.people(50, countries={"DE": 3, "GB": 1}, **asked)
    assert vantrel.people(50, countries=countries, **asked).equals(expected)


def test_a_series_of_names_is_a_list() -> None:
    places = pd.Series(["DE", "GB"], index=["a", "b"])
    people = vantrel.people(50, countries=places, seed=1)
    assert people.equals(vantrel.people(50, countries=["DE", "GB"], seed=1))


def test_nobody_has_a_share_that_is_next_to_none() -> None:
    people = vantrel.people(50, countries={"DE": 1, "GB": 1e-15}, seed=1)
    assert set(people["country"]) == {"DE"}


def test_titles_are_understood_as_those_of_their_gender() -> None:
    for latin in (False, True):
        asked: dict[str, Any] = {"genders": ["F", "M", "NB"], "latin": latin}
        asked["columns"] = ["gender", "title", "country"]
        people = vantrel.people(20_000, countries=PLACES, seed=1, **asked).dropna()
        keys = keys_of(people["title"].unique(), PersonModelConfig(), "title")
        understood = people["title"].map(keys)
        is_one_of_both = people["title"].isin(["Dr", "Dr."])
        assert (understood[~is_one_of_both] == people["gender"][~is_one_of_both]).all()
        assert set(understood[is_one_of_both]) == {AMBIGUOUS}
        titled = set(people["country"])
        assert {"PL", "IT", "CZ", "HR"} <= titled
        assert ("GR" in titled) is not latin
        assert not {"SE", "JP", "HU"} & titled


PLACES = [each for each in country_codes().values() if not borrowed_places([each])]


def test_patterns_of_older_model_files_are_known() -> None:
    known = {sha256(pattern.encode()).hexdigest()[:16] for pattern in DEFAULT_PATTERNS}
    assert {"61910127a4df70b9", "098cfb8763d3e24b"} <= known  # before titles of more languages


def test_all_columns_have_the_type_of_a_table_that_is_read() -> None:
    people = vantrel.people(200, countries=["DE", "JP"], seed=1)
    read = pd.read_csv(io.StringIO(people.to_csv(index=False)), dtype=str)
    assert people.dtypes.equals(read.dtypes)
    assert people.fillna("").equals(read.fillna(""))
    assert people.dtypes.equals(vantrel.people(0, countries=["DE", "JP"]).dtypes)
    assert people.dtypes.equals(vantrel.people(9, countries=["JP"]).dtypes)


def test_names_and_titles_are_those_of_the_locale_that_was_named() -> None:
    people = vantrel.people(200, countries=["DE"], locales={"Germany": "el_GR"}, seed=1)
    assert set(people["country"]) == {"DE"}
    assert set(people["title"]) == {"Κος", "Κα"}
    assert not people["lastname"].map(str.isascii).any()


def test_addresses_have_the_domain_that_was_named() -> None:
    people = vantrel.people(20, email_domain="example.org", seed=1)
    assert people["email"].str.endswith("@example.org").all()


TESTS = """
    def test_one(people):
        one, other = people(5, countries=["DE"]), people(5, countries=["DE"])
        assert list(one["country"]) == ["DE"] * 5
        assert not one.equals(other)
        print(one.to_csv(), other.to_csv())

    def test_other(people):
        print(people(5, countries=["DE"]).to_csv())

    def test_failing(people):
        assert people(1, seed=11).empty
"""


def test_the_fixture_gives_a_test_the_same_people_in_each_run(pytester: pytest.Pytester) -> None:
    pytester.makepyfile(TESTS)
    runs = [pytester.runpytest_inprocess("-rP") for _ in range(2)]
    for run in runs:
        run.assert_outcomes(passed=2, failed=1)
    shown = [[line for line in run.outlines if ",DE" in line] for run in runs]
    assert shown[0] == shown[1]
    assert len(set(shown[0])) == 15
    assert "11" in runs[0].outlines[runs[0].outlines.index(_title(runs[0].outlines)) + 1]


def test_a_run_of_a_test_has_the_same_people_as_the_one_before(pytester: pytest.Pytester) -> None:
    pytester.makeconftest(
        """
        from _pytest.runner import runtestprotocol

        def pytest_runtest_protocol(item, nextitem):
            for _ in range(2):
                runtestprotocol(item, nextitem=nextitem)
            return True
        """
    )
    pytester.makepyfile(ONE_TEST)
    run = pytester.runpytest_inprocess("-rP")
    run.assert_outcomes(passed=2)
    assert len(set(_made(run))) == 2


def test_it_has_the_same_people_from_whatever_folder(pytester: pytest.Pytester) -> None:
    pytester.mkdir("inner").joinpath("test_it.py").write_text(cleandoc(ONE_TEST))
    outer = pytester.runpytest_inprocess("-rP", "inner/test_it.py")
    os.chdir("inner")
    inner = pytester.runpytest_inprocess("-rP", "--rootdir=.", "test_it.py")
    assert len(_made(outer)) == 2
    assert _made(outer) == _made(inner)


ONE_TEST = """
    import pytest

    @pytest.mark.parametrize("place", ["DE"])
    def test_one(people, place):
        for _ in range(2):
            print("made", *people(3, countries=[place])["fullname"])
"""


def _made(run: pytest.RunResult) -> list[str]:
    return [line for line in run.outlines if line.startswith("made ")]


def _title(lines: list[str]) -> str:
    return next(line for line in lines if "Seeds of people" in line)


def test_the_plugin_loads_no_pandas() -> None:
    code = "import sys, vantrel.pytest_plugin; print({'pandas', 'numpy'} & set(sys.modules))"
    run = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    assert run.stdout.strip() == "set()"


def test_people_of_the_same_seed_are_the_same_in_whatever_process() -> None:
    code = "import vantrel; print(vantrel.people(3, seed=5).to_csv())"
    run = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    assert run.stdout.strip() == vantrel.people(3, seed=5).to_csv().strip()
    assert isinstance(vantrel.people(3, seed=5), pd.DataFrame)

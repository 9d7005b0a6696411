"""People without a table: shares as given, usual titles, and the fixture for tests."""

from __future__ import annotations

import os
import subprocess
import sys
from inspect import cleandoc
from typing import Any

import pandas as pd
import pytest

import vantrel
from vantrel.attributes import ATTRIBUTES
from vantrel.errors import ArgumentError, ArgumentTypeError, UnknownPlaceError

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
    ],
)
def test_what_is_asked_wrongly_is_told(
    asked: dict[str, Any], error: type[Exception], message: str
) -> None:
    with pytest.raises(error) as caught:
        vantrel.people(1, **asked)
    assert str(caught.value).startswith(message)


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
    runs = [pytester.runpytest_subprocess("-rP") for _ in range(2)]
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
    run = pytester.runpytest_subprocess("-rP")
    run.assert_outcomes(passed=2)
    assert len(set(_made(run))) == 2


def test_it_has_the_same_people_from_whatever_folder(pytester: pytest.Pytester) -> None:
    pytester.mkdir("inner").joinpath("test_it.py").write_text(cleandoc(ONE_TEST))
    outer = pytester.runpytest_subprocess("-rP", "inner/test_it.py")
    os.chdir("inner")
    inner = pytester.runpytest_subprocess("-rP", "--rootdir=.", "test_it.py")
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

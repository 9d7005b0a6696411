"""Usernames where names are missing."""

from typing import Any

import pandas as pd
import pytest

from support.providers import DTYPES
from support.usernames import Watch, assert_reads_alike, draw_always, generate


@pytest.mark.parametrize(
    "names", [[None], ["Ann", None, "Bo"], [None, None], ["Ann", float("nan")]]
)
@pytest.mark.parametrize("dtype", DTYPES, ids=str)
def test_missing_names_do_what_pandas_hands_to_the_space_step(names: list[Any], dtype: Any) -> None:
    firstnames = pd.Series(names, dtype="object").astype(dtype)
    assert_reads_alike(firstnames, firstnames.copy())


def test_the_error_of_the_space_step_names_what_pandas_delivered() -> None:
    names = pd.Series(["Ann", pd.NA], dtype="object")
    delivered: list[Any] = []
    joined = names.astype(dtype="string").str.cat(others=names).apply(lambda x: x)
    joined.apply(delivered.append)
    assert not hasattr(delivered[1], "replace")
    with pytest.raises(AttributeError) as caught:
        generate(names, names)
    kind = type(delivered[1]).__name__
    assert str(caught.value) == f"'{kind}' object has no attribute 'replace'"


def test_only_a_missing_last_name_fails_in_the_space_step_too() -> None:
    assert assert_reads_alike(pd.Series(["Ann", "Bo"]), pd.Series(["Lee", None])) is None


@pytest.fixture
def skipping(monkeypatch: pytest.MonkeyPatch) -> None:
    """A pandas that applies no function to a missing element."""
    apply = pd.Series.apply

    def apply_to_present(self: pd.Series, func: Any) -> pd.Series:
        return apply(self, lambda x: x if pd.isna(x) else func(x))

    monkeypatch.setattr(pd.Series, "apply", apply_to_present)


@pytest.mark.usefixtures("skipping")
def test_a_name_missing_on_both_sides_stays_missing_and_does_not_count() -> None:
    names = pd.Series(["Ann", None, "Ann", pd.NA], dtype="object")
    usernames = assert_reads_alike(names, names.copy())
    assert list(usernames.isna()) == [False, True, False, True]
    assert usernames.nunique() == 2


@pytest.mark.usefixtures("skipping")
def test_a_missing_first_name_alone_leaves_the_username_missing() -> None:
    firstnames = pd.Series([None, "Ann"], dtype="object")
    usernames = assert_reads_alike(firstnames, pd.Series(["Lee"] * 2))
    assert list(usernames.isna()) == [True, False]


@pytest.mark.usefixtures("skipping")
def test_a_missing_last_name_alone_makes_the_loop_endless(watched: Watch) -> None:
    watched.rounds_left = 50
    lastnames = pd.Series(["Lee", None], dtype="object")
    with pytest.raises(LookupError, match=r"^rounds are used up$"):
        generate(pd.Series(["Ann", "Bo"], dtype="object"), lastnames)
    assert watched.calls.count("nunique") == 51


@pytest.mark.usefixtures("skipping")
def test_missing_names_draw_neither_separator_nor_number(monkeypatch: pytest.MonkeyPatch) -> None:
    left = draw_always(monkeypatch, "-", [6, 1, 5])
    names = pd.Series([None, "Ann"], dtype="object")
    assert list(generate(names, names.copy()).dropna()) == ["ann-ann6"]
    assert list(left) == [5]

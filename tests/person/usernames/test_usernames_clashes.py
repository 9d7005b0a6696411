"""Usernames that clash get numbers until they differ."""

import random
from typing import Any

import pandas as pd
import pytest

from support import readings_generators as readings
from support.comparing import assert_same_outcome
from support.providers import DTYPES
from support.usernames import Watch, assert_reads_alike, draw_always, generate


def test_the_steps_ask_pandas_in_this_order(
    watched: Watch, monkeypatch: pytest.MonkeyPatch
) -> None:
    draw_always(monkeypatch, "_", [7, 1, 7, 1, 5, 5, 3, 4])
    generate(pd.Series(["Ann", "Ann"]), pd.Series(["Lee", "Lee"]))
    a_round = ["value_counts", "isin", "apply", "isin", "nunique"]
    assert watched.calls == ["apply"] * 3 + ["nunique"] + a_round * 2


def test_both_copies_of_a_clash_get_numbers_until_they_differ(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    left = draw_always(monkeypatch, "_", [7, 1, 7, 1, 5, 5, 3, 4])
    usernames = generate(pd.Series(["Ann", "Ann"]), pd.Series(["Lee", "Lee"]))
    assert list(usernames) == ["ann_lee753", "ann_lee754"]
    assert list(left) == []


def test_only_the_rows_of_a_clash_change(monkeypatch: pytest.MonkeyPatch) -> None:
    left = draw_always(monkeypatch, "", [1, 0, 2, 0, 3, 0, 8, 9])
    usernames = generate(pd.Series(["Ann", "Bo", "Ann"]), pd.Series(["Lee", "Cho", "Lee"]))
    assert list(usernames) == ["annlee8", "bocho", "annlee9"]
    assert list(left) == []


def test_a_number_may_make_a_new_clash_with_another_row(monkeypatch: pytest.MonkeyPatch) -> None:
    left = draw_always(monkeypatch, "", [8, 1, 1, 0, 1, 0, 8, 9, 5, 6])
    usernames = generate(pd.Series(["Ann"] * 3), pd.Series(["Lee"] * 3))
    assert list(usernames) == ["annlee85", "annlee86", "annlee9"]
    assert list(left) == []


def test_clashes_that_only_the_removed_blank_makes_are_seen(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    draw_always(monkeypatch, "", [1, 0, 1, 0, 4, 5])
    usernames = generate(pd.Series(["An n", "Ann"]), pd.Series(["Lee", "Lee"]))
    assert list(usernames) == ["annlee4", "annlee5"]


def test_names_that_differ_in_case_alone_may_end_up_equal(monkeypatch: pytest.MonkeyPatch) -> None:
    left = draw_always(monkeypatch, "", [1, 0, 1, 0])
    usernames = generate(pd.Series(["Ann", "ann"]), pd.Series(["Lee", "Lee"]))
    assert list(usernames) == ["annlee", "annlee"]
    assert list(left) == []


@pytest.mark.parametrize("dtype", DTYPES, ids=str)
def test_300_rows_of_one_name_become_300_usernames(dtype: Any) -> None:
    firstnames = pd.Series(["Ann"] * 300, dtype=dtype)
    usernames = assert_reads_alike(firstnames, pd.Series(["Lee"] * 300))
    assert usernames.nunique() == 300


def test_a_failing_draw_in_a_clash_round_leaves_the_sources_there(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    draw = random.randint
    budget = {"left": 0}

    def scarce(low: int, high: int) -> int:
        budget["left"] -= 1
        if budget["left"] < 0:
            raise LookupError("no numbers left")
        return draw(low, high)

    def limited(call: Any) -> Any:
        budget["left"] = 650
        return call(pd.Series(["Ann"] * 300), pd.Series(["Lee"] * 300))

    monkeypatch.setattr(random, "randint", scarce)
    got = assert_same_outcome(lambda: limited(generate), lambda: limited(readings.usernames), 3)
    assert (got, budget["left"]) == (None, -1)

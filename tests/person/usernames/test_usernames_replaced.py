"""Usernames where the random sources or pandas are replaced."""

import random
from types import SimpleNamespace
from typing import Any

import numpy as np
import pandas as pd
import pytest

from support import readings_generators as readings
from support.comparing import assert_identical
from support.usernames import assert_reads_alike, draw_always, generate
from vantrel.model.models import person


def test_draws_are_asked_for_in_order_separators_first(monkeypatch: pytest.MonkeyPatch) -> None:
    calls: list[Any] = []

    def choice(*args: Any) -> str:
        calls.append(("choice", *args))
        return "."

    def randint(*bounds: int) -> int:
        calls.append(bounds)
        return 1 if bounds == (0, 1) else len(calls)

    monkeypatch.setattr(person, "np", SimpleNamespace(random=SimpleNamespace(choice=choice)))
    monkeypatch.setattr(person, "random", SimpleNamespace(randint=randint))
    usernames = generate(pd.Series(["Ann", "Bo"]), pd.Series(["Lee", "Cho"]))
    assert calls == [("choice", ["", ".", "-", "_"])] * 2 + [(0, 100), (0, 1)] * 2
    assert list(usernames) == ["ann.lee3", "bo.cho5"]


def test_a_clash_asks_for_one_number_a_copy(monkeypatch: pytest.MonkeyPatch) -> None:
    bounds: list[Any] = []
    drawn = iter([1, 0, 1, 0, 8, 9])

    def randint(*given: int) -> int:
        bounds.append(given)
        return next(drawn)

    monkeypatch.setattr(np.random, "choice", lambda separators: "")
    monkeypatch.setattr(person, "random", SimpleNamespace(randint=randint))
    generate(pd.Series(["Ann", "Ann"]), pd.Series(["Lee", "Lee"]))
    assert bounds == [(0, 100), (0, 1)] * 2 + [(0, 100)] * 2


def test_presence_is_asked_of_the_modules_pandas(monkeypatch: pytest.MonkeyPatch) -> None:
    asked: list[Any] = []

    def notna(value: Any) -> bool:
        asked.append(str(value))
        return False

    monkeypatch.setattr(person, "pd", SimpleNamespace(notna=notna))
    left = draw_always(monkeypatch, "-", [1])
    assert list(generate(pd.Series(["Ann", "Bo"]), pd.Series(["Lee", "Cho"]))) == [
        "annlee",
        "bocho",
    ]
    assert asked == ["Ann", "Bo", "AnnLee", "BoCho"]
    assert list(left) == [1]


@pytest.mark.parametrize(
    ("owner", "function", "stand_in"),
    [
        (np.random, "choice", lambda separators: separators[-1]),
        (random, "randint", lambda low, high: high),
    ],
)
def test_functions_replaced_in_place_are_used(
    monkeypatch: pytest.MonkeyPatch, owner: Any, function: str, stand_in: Any
) -> None:
    monkeypatch.setattr(owner, function, stand_in)
    (username,) = assert_reads_alike(pd.Series(["Ann"]), pd.Series(["Lee"]))
    assert username[3] == "_" if function == "choice" else username.endswith("lee100")


def test_other_sources_in_the_place_of_both_modules_are_used(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    names = pd.Series(["Ann"] * 20), pd.Series(["Lee"] * 20)
    random.seed(3)
    np.random.seed(3)
    expected = readings.usernames(*names)
    states = random.getstate(), np.random.get_state()[2]
    monkeypatch.setattr(person, "random", random.Random(3))
    monkeypatch.setattr(person, "np", SimpleNamespace(random=np.random.RandomState(3)))
    assert_identical(generate(*names), expected)
    assert states == (random.getstate(), np.random.get_state()[2])


def test_another_bit_generator_behind_numpys_global_source_is_used() -> None:
    kept = np.random.get_bit_generator()

    def run(call: Any) -> tuple[Any, Any]:
        np.random.set_bit_generator(np.random.PCG64(3))
        random.seed(3)
        made = call(pd.Series(["Ann"] * 30), pd.Series(["Lee"] * 30))
        return made, np.random.get_bit_generator().state

    try:
        got, state = run(generate)
        expected, expected_state = run(readings.usernames)
    finally:
        np.random.set_bit_generator(kept)
    assert_identical(got, expected)
    assert state == expected_state


def test_saved_normal_deviates_stay_saved() -> None:
    random.seed(1)
    np.random.seed(1)
    random.gauss(0, 1)
    np.random.standard_normal()
    saved = random.getstate()[2], np.random.get_state()[3:]
    generate(pd.Series(["Ann"] * 9), pd.Series(["Lee"] * 9))
    assert saved == (random.getstate()[2], np.random.get_state()[3:])

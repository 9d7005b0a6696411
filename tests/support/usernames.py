"""Making usernames beside the reading, with draws that are given, or with an eye on pandas."""

import random
from typing import Any

import numpy as np
import pytest

from support import readings_generators as readings
from support.comparing import assert_same_outcome
from vantrel.model.models.person import PersonModel

generate = PersonModel.generate_usernames


def assert_reads_alike(firstnames: Any, lastnames: Any, seed: int = 1) -> Any:
    """Makes a column as the reading does, and gives the column; None where both raised.

    Both get copies, so that neither sees what the other may have changed.
    """
    return assert_same_outcome(
        lambda: generate(firstnames.copy(), lastnames),
        lambda: readings.usernames(firstnames.copy(), lastnames),
        seed,
    )


def draw_always(monkeypatch: pytest.MonkeyPatch, separator: str, numbers: list[int]) -> Any:
    """Every separator is this one, and the numbers come from this list."""
    left = iter(numbers)
    monkeypatch.setattr(np.random, "choice", lambda separators: separator)
    monkeypatch.setattr(random, "randint", lambda low, high: next(left))
    return left


class Watch:
    """What was asked of the series, and how many more rounds they answer."""

    def __init__(self) -> None:
        self.calls: list[str] = []
        self.rounds_left = 1000

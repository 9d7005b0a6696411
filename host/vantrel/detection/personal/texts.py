"""The values of a column as texts, and whether they are enough to tell something."""

from __future__ import annotations

import math
import random
from collections.abc import Callable

import pandas as pd

from vantrel.detection.values import LONGEST, first_values
from vantrel.wording import cell_text, percent

# Of so many different values no test gains by more.
_ENOUGH = 1_000

# The share of the values that contradict a name no longer, and what tells something alone.
_AGREEING = 0.5
_TELLING = 0.8

# One number in ten passes a test of one check digit by chance: five of five, one in 100,000 times.
_FEWEST = 5

type Test = Callable[[str], object]


def distinct_texts(column: pd.Series) -> list[str]:
    """The different values of a column as texts without blanks around, at most 1,000 of them."""
    texts = (cell_text(value)[:LONGEST].strip() for value in first_values(column))
    distinct = list(dict.fromkeys(filter(None, texts)))
    # Not every n-th one: check digits of evenly spaced numbers may all be alike.
    return distinct if len(distinct) <= _ENOUGH else random.Random(0).sample(distinct, _ENOUGH)


def agree(texts: list[str], test: Test) -> bool:
    """Tells whether values are what the name of their column says, at least half of them."""
    return bool(texts) and _passing(texts, test, math.ceil(_AGREEING * len(texts))) > 0


def told(
    texts: list[str], test: Test, what: str, *, least: float = _TELLING, fewest: int = _FEWEST
) -> str | None:
    """Tells what values are if so many pass a test that it is no chance.

    Args:
        texts: The different values.
        test: Whether a value is of the kind.
        what: What those are that pass, as in "... of its different values are ...".
        least: The share of them that must pass.
        fewest: How many must.
    """
    passing = _passing(texts, test, max(fewest, math.ceil(least * len(texts))))
    return seen(passing / len(texts), what) if passing else None


def seen(share: float, what: str) -> str:
    """Says what a share of the values is."""
    return f"{percent(share)} of its different values {what}"


def _passing(texts: list[str], test: Test, fewest: int) -> int:
    """How many texts pass a test; 0 as soon as these will be fewer than so many."""
    failed, most_failed = 0, len(texts) - fewest
    if most_failed < 0:
        return 0
    for text in texts:
        failed += not test(text)
        if failed > most_failed:
            return 0
    return len(texts) - failed

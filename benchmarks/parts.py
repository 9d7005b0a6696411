"""What each generator costs a row of a sample, both ways."""

from __future__ import annotations

import gc
from collections.abc import Callable
from contextlib import AbstractContextManager, nullcontext
from statistics import median

import pandas as pd

from vantrel.model.models.person import PersonModel
from vantrel.sampling.seeding import seed_everything

from .accounts import PARTS, seconds_of_parts
from .people import fitted_model, people
from .plain_way import SEED, plain_way
from .tables import figure, micros
from .timing import cpu_seconds

ROWS = 20_000
HEAD = ("A row of a sample costs", "plain", "ours", "ratio")

WHOLE = "the whole, nothing timed inside"
TOTAL = "sum of the parts"

Costs = dict[str, float]
WAYS: dict[str, Callable[[], AbstractContextManager[None]]] = {
    "plain": plain_way,
    "ours": nullcontext,
}


def costs_of_parts(rounds: int) -> list[list[str]]:
    """Measures the parts of a sample with given genders and countries.

    Returns:
        The lines of a table with ``HEAD``.
    """
    model, given = fitted_model(), people(ROWS)
    measured: dict[str, list[Costs]] = {way: [] for way in WAYS}
    for _ in range(rounds):
        for way, entered in WAYS.items():
            with entered():
                measured[way].append(_one_round(model, given))
    plain, ours = (_medians(measured[way]) for way in WAYS)
    return [
        [part, micros(plain[part]), micros(ours[part]), figure(plain[part] / ours[part])]
        for part in plain
    ]


def _one_round(model: PersonModel, given: pd.DataFrame) -> Costs:
    """Gives microseconds a row."""

    def sample() -> pd.DataFrame:
        return model.sample(conditions=given)

    seed_everything(model, SEED)
    gc.collect()
    seconds = seconds_of_parts(model, sample)
    seconds[TOTAL] = sum(seconds.values())
    seed_everything(model, SEED)
    seconds[WHOLE] = cpu_seconds(sample)
    return {part: value / ROWS * 1e6 for part, value in seconds.items()}


def _medians(rounds: list[Costs]) -> Costs:
    return {part: median(one[part] for one in rounds) for part in (*PARTS, TOTAL, WHOLE)}

"""Measures the plain way and ours in turn."""

from __future__ import annotations

from collections.abc import Callable
from functools import partial

from vantrel.model.models.person import PersonModel
from vantrel.sampling.seeding import seed_everything

from .plain_way import SEED, plain_way
from .timing import Cost, Way, Work, alternate


def both_ways(model: PersonModel, make: Work, rows: int, rounds: int) -> tuple[Cost, Cost]:
    """Measures the plain way, then ours."""

    def plainly() -> None:
        with plain_way():
            make()

    seed = seeding(model)
    costs = alternate({"plain": Way(plainly, rows, seed), "ours": Way(make, rows, seed)}, rounds)
    return costs["plain"], costs["ours"]


def seeding(model: PersonModel) -> Callable[[], None]:
    """Gives the function that puts every random source where each way starts."""
    return partial(seed_everything, model, SEED)

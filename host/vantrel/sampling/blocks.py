"""Cuts a sample into blocks that depend on nothing but the seed and their own number.

So the rows of a seed are the same whatever makes the blocks, where and in which order, and no more
than a block need be in memory.
"""

from __future__ import annotations

import math
from collections.abc import Iterable, Iterator
from dataclasses import dataclass

import numpy as np
import pandas as pd

from vantrel.arguments import refuse_text
from vantrel.errors import ArgumentError, ArgumentTypeError
from vantrel.model.models.person import PersonModel
from vantrel.sampling.makers import Maker, maker_of
from vantrel.sampling.unique import make_unique, refuse_not_unique

BLOCK_ROWS = 50_000

# What the numbers of a plan are called, and the least that they may be.
_NUMBERS = {
    "rows": ("The number of rows", 0),
    "seed": ("The seed", 0),
    "block_rows": ("The number of rows of a block", 1),
}


@dataclass(frozen=True)
class Plan:
    """What decides the rows of a sample, besides the model and the conditions.

    Args:
        rows: The number of rows.
        seed: An integer from 0 on.
        block_rows: The number of rows of each block but the last.
        unique: The attributes whose columns are made unique, of "username" and "email"; kept sorted
            and once each.
        exact: Whether the rows are the bare model's, whatever combinations were learnt.
    """

    rows: int
    seed: int
    block_rows: int = BLOCK_ROWS
    unique: Iterable[str] = ()
    exact: bool = False

    def __post_init__(self) -> None:
        for name, (what, least) in _NUMBERS.items():
            value = getattr(self, name)
            if isinstance(value, bool) or not isinstance(value, int | np.integer) or value < least:
                raise ArgumentError(f"{what} is an integer from {least} on, not {value!r}.")
            object.__setattr__(self, name, int(value))
        if not isinstance(self.exact, bool):
            raise ArgumentTypeError(f"'exact' is True or False, not {self.exact!r}.")
        refuse_text(self.unique, "unique", "attributes")
        object.__setattr__(self, "unique", tuple(sorted(set(self.unique))))

    @property
    def blocks(self) -> int:
        """The number of blocks; one of no rows where there are none, for the columns' sake."""
        return max(1, math.ceil(self.rows / self.block_rows))

    def rows_of(self, block: int) -> range:
        """The numbers of the rows of a block."""
        first = block * self.block_rows
        return range(first, min(first + self.block_rows, self.rows))


def sample_block(
    model: PersonModel, plan: Plan, block: int, conditions: pd.DataFrame | None = None
) -> pd.DataFrame:
    """Makes one block of a sample, from random sources of its own.

    Args:
        model: A fitted model; not changed.
        plan: What to make; checked by :func:`check_plan`.
        block: The number of the block, from 0 to ``plan.blocks - 1``.
        conditions: What ``prepare_conditions`` made, with a row for each of the whole sample.

    Returns:
        A frame of the labelled columns; its index are the numbers of its rows in the sample.
    """
    (people,) = _blocks(model, plan, conditions, range(block, block + 1))
    return people


def _blocks(
    model: PersonModel, plan: Plan, conditions: pd.DataFrame | None, blocks: range
) -> Iterator[pd.DataFrame]:
    with maker_of(model, conditions, is_exact=plan.exact) as maker:
        for block in blocks:
            yield _block(maker, model, plan, block)


def _block(maker: Maker, model: PersonModel, plan: Plan, block: int) -> pd.DataFrame:
    numbers = plan.rows_of(block)
    people = maker.block(np.random.SeedSequence(plan.seed, spawn_key=(block,)), numbers)
    if plan.unique:
        make_unique(people, model, plan.unique, numbers.start)
    people.index = pd.RangeIndex(numbers.start, numbers.stop)
    return people


def check_plan(model: PersonModel, plan: Plan, conditions: pd.DataFrame | None = None) -> None:
    """Refuses, before the first row, a plan that cannot be carried out."""
    refuse_not_unique(model, plan.unique, plan.rows)
    if conditions is not None and len(conditions) != plan.rows:
        raise ArgumentError(
            f"There are {len(conditions):,} rows of conditions for {plan.rows:,} rows to make:"
            " leave the number of rows out."
        )


def sample_blocks(
    model: PersonModel,
    plan: Plan,
    conditions: pd.DataFrame | None = None,
    blocks: range | None = None,
) -> Iterator[pd.DataFrame]:
    """Makes blocks of a sample, all if None, as :func:`sample_block` does; checks it at once."""
    check_plan(model, plan, conditions)
    return _blocks(model, plan, conditions, blocks or range(plan.blocks))

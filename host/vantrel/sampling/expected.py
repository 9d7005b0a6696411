"""What a model is to give: how frequent values, combinations and gaps are in its samples."""

from __future__ import annotations

from collections import Counter
from collections.abc import Mapping
from typing import Annotated, Any

import numpy as np
import pandas as pd
from msgspec import Meta, Struct

from vantrel.attributes import LEARNT
from vantrel.model.models.person import PersonModel
from vantrel.sampling.blocks import BLOCK_ROWS, Plan, sample_block
from vantrel.tables import count_frame

type _Share = Annotated[float, Meta(ge=0, le=1)]

# What is listed must fit into a record; the rest is told as one share.
_MOST_LISTED = 1_000

# Rows of the sample itself never come from this key, which is beyond the numbers of all blocks.
_APART = 2**32 - 1


class Expected(Struct, frozen=True, kw_only=True, forbid_unknown_fields=True):
    """How frequent what is learnt and what is missing is in samples of a model.

    It is counted in rows that the model made, not in those of the sample: what became of these
    later, or in making them, does not show here.

    Args:
        rows: The number of rows that it was counted in.
        min_count: The fewest real rows of what the model keeps; None where it is a bare one.
        shares: By attribute, the most frequent values with their share of the rows with a value.
        attributes: What the combinations are of, in this order.
        combinations: The most frequent ones with their share of the rows.
        missing: How often each attribute is missing.
    """

    rows: Annotated[int, Meta(ge=1)]
    min_count: int | None
    shares: dict[str, dict[str, _Share]]
    attributes: list[str]
    combinations: list[tuple[list[str | None], _Share]]
    missing: dict[str, _Share]


def expected_of(
    model: PersonModel, plan: Plan, conditions: pd.DataFrame | None = None
) -> Expected | None:
    """Has a model make rows to count, from a seed of their own; None where conditions have no row.

    Args:
        model: A fitted model.
        plan: What the sample is made by.
        conditions: What is given for its rows, as ``prepare_conditions`` made it.
    """
    if conditions is not None and conditions.empty:
        return None
    apart = np.random.SeedSequence(plan.seed, spawn_key=(_APART,))
    rng = np.random.default_rng(apart)
    if conditions is not None:
        conditions = conditions.iloc[_picked(len(conditions), rng)].reset_index(drop=True)
    seed = int.from_bytes(apart.generate_state(4).tobytes(), "little")
    people = sample_block(model, Plan(BLOCK_ROWS, seed, exact=plan.exact), 0, conditions)
    columns = {each: column for each in LEARNT if (column := model.params.get(each))}
    found = count_frame(people, columns.values(), ())
    is_bare = plan.exact or model.meta.rows is None
    return Expected(
        rows=len(people),
        min_count=None if is_bare else model.meta.rows.min_count,
        shares={
            each: _listed(
                {
                    str(value): rows
                    for value, rows in found.values[column].items()
                    if value is not None
                }
            )
            for each, column in columns.items()
        },
        attributes=list(columns),
        combinations=[
            ([None if cell is None else str(cell) for cell in cells], share)
            for cells, share in _listed(
                {tuple(cells): each.rows for (*cells, _), each in found.combinations.items()}
            ).items()
        ],
        missing={
            each: float(people[column].isna().mean()) for each, column in model.params.items()
        },
    )


def _picked(rows: int, rng: np.random.Generator) -> Any:
    """The places of conditions, each as often as any other, or so many by chance."""
    if rows > BLOCK_ROWS:
        return rng.choice(rows, BLOCK_ROWS, replace=False)
    return np.arange(BLOCK_ROWS) % rows


def _listed[KeyT](counts: Mapping[KeyT, int]) -> dict[KeyT, float]:
    total = sum(counts.values())
    return {key: rows / total for key, rows in Counter(counts).most_common(_MOST_LISTED)}

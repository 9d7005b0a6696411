"""A sample as a Dask frame."""

from __future__ import annotations

from collections.abc import Iterable
from typing import Any

import dask.dataframe as dd
import pandas as pd

from vantrel.arguments import check_model
from vantrel.errors import ArgumentError
from vantrel.model.models.person import PersonModel
from vantrel.sampling import BLOCK_ROWS, Plan
from vantrel.sampling.scarcity import tell_of_scarce_numbers
from vantrel.sampling.seeding import given_or_drawn
from vantrel.scale.partitions import Partition, make_blocks, no_rows, partitions


def sample(
    model: PersonModel,
    n: int,
    *,
    seed: int | None = None,
    block_rows: int = BLOCK_ROWS,
    npartitions: int | None = None,
    unique: Iterable[str] = (),
    exact: bool = False,
    conditions: Any = None,
) -> dd.DataFrame:
    """Samples people as a Dask frame, which is computed where and when Dask is told to.

    The same model, ``n``, ``seed``, ``block_rows``, ``unique`` and ``exact`` give the same rows for
    any number of partitions, on any scheduler, and also when a worker is lost and its partitions
    are made again. With the usual ``block_rows`` they are the rows of :func:`vantrel.sample`, which
    takes the same arguments and raises the same errors.

    Args:
        model: A fitted model. It is sent as the text of its file and stays as it is.
        n: The number of rows.
        seed: An integer from 0 on. If None, one is drawn now and logged.
        block_rows: The rows that are seeded and made together. Other rows come out for another
            number; a worker needs memory for a few times as many.
        npartitions: The number of partitions, at most the number of blocks. If None, one for every
            four blocks.
        unique: As there.
        exact: As there.
        conditions: Is refused: :func:`vantrel.sample` takes such tables.

    Returns:
        A frame of the labelled columns, all of Dask's dtype of text, whose index is 0 to n - 1 with
        known divisions. Computing it raises :class:`vantrel.scale.PartitionError` where rows cannot
        be made, and names them.
    """
    check_model(model)
    if conditions is not None:
        raise ArgumentError(
            "'conditions' are not taken on Dask: vantrel.sample(model, conditions=...) makes a"
            " person for each row of a table in memory."
        )
    plan = Plan(n, given_or_drawn(seed), block_rows, unique, exact)
    tell_of_scarce_numbers(model, plan)
    parts = partitions(model, plan, npartitions)
    last = max(n - 1, 0)
    people: dd.DataFrame = dd.from_map(
        _make,
        parts,
        meta=no_rows(parts[0]),
        divisions=(*(part.rows.start for part in parts), last),
        enforce_metadata=True,
        label=f"people-of-seed-{plan.seed}",
    )
    return people


def _make(partition: Partition) -> pd.DataFrame:
    return pd.concat(list(make_blocks(partition)))

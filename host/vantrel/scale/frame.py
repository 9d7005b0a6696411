"""A sample as a Dask frame."""

from __future__ import annotations

import secrets
import sys
from typing import TYPE_CHECKING

import dask.dataframe as dd
import pandas as pd

from vantrel.sampling import BLOCK_ROWS, Plan, sample_block
from vantrel.scale.partitions import Partition, as_text, make_blocks, partitions

if TYPE_CHECKING:
    from vantrel.model.models.person import PersonModel


def sample(
    model: PersonModel,
    n: int,
    *,
    seed: int | None = None,
    block_rows: int = BLOCK_ROWS,
    npartitions: int | None = None,
    unique: tuple[str, ...] = (),
) -> dd.DataFrame:
    """Samples people as a Dask frame, which is computed where and when Dask is told to.

    The same model, ``n``, ``seed``, ``block_rows`` and ``unique`` give the same rows for any
    number of partitions, on any scheduler, and also when a worker is lost and its partitions are
    made again. With the usual ``block_rows`` they are the rows of :func:`vantrel.sample`.

    Args:
        model: A fitted model. It is sent as the text of its file.
        n: The number of rows.
        seed: An integer from 0 on. If None, one is drawn now and told on stderr.
        block_rows: The rows that are seeded and made together. Other rows come out for another
            number; a worker needs memory for a few times as many.
        npartitions: The number of partitions, at most the number of blocks. If None, one for
            every four blocks.
        unique: The attributes of which no value may come twice: "username", "email" or both.

    Returns:
        A frame of the labelled columns, all of Dask's dtype of text, whose index is 0 to n - 1 with
        known divisions. Computing it raises :class:`vantrel.scale.PartitionError` where rows cannot
        be made, and names them.

    Raises:
        ValueError: A number is out of its range, a column cannot be made unique, or the model
            could not be loaded from a file again.
    """
    if seed is None:
        seed = secrets.randbits(32)
        print(f"vantrel: the seed is {seed}", file=sys.stderr)
    plan = Plan(n, seed, block_rows, tuple(unique))
    parts = partitions(model, plan, npartitions)
    meta = as_text(sample_block(model, Plan(0, seed, block_rows, plan.unique), 0))
    last = max(n - 1, 0)
    return dd.from_map(
        _make,
        parts,
        meta=meta,
        divisions=(*(part.rows.start for part in parts), last),
        enforce_metadata=True,
        label=f"people-of-seed-{seed}",
    )


def _make(partition: Partition) -> pd.DataFrame:
    return pd.concat(list(make_blocks(partition)))

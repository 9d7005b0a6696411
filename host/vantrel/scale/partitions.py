"""What one worker makes: a run of consecutive blocks.

Nothing here needs Dask. A partition is all that has to travel to a worker, and it is text and
numbers: the model goes as what its file would hold, never as live generators.
"""

from __future__ import annotations

import json
import math
import os
import threading
from collections.abc import Iterator
from dataclasses import dataclass, replace
from functools import lru_cache
from itertools import pairwise

import pandas as pd

from vantrel.errors import ArgumentError, PartitionError
from vantrel.model.models.person import PersonModel
from vantrel.sampling import Plan, check_plan, sample_blocks
from vantrel.storage.models import dumps, loads
from vantrel.versions import differences

# Some 50 MB of a frame of all attributes.
_USUAL_BLOCKS = 4


@dataclass(frozen=True)
class Partition:
    """A run of consecutive blocks of a sample.

    Args:
        model: The content of a model file.
        plan: The whole sample.
        number: The number of the partition, from 0 on.
        start: The number of its first block.
        stop: The number behind that of its last block.
    """

    model: str
    plan: Plan
    number: int
    start: int
    stop: int

    @property
    def rows(self) -> range:
        """The numbers of its rows in the sample."""
        return range(self.plan.rows_of(self.start).start, self.plan.rows_of(self.stop - 1).stop)


def partitions(model: PersonModel, plan: Plan, count: int | None = None) -> list[Partition]:
    """Cuts a sample into partitions of as equal numbers of blocks as can be.

    Args:
        model: A fitted model.
        plan: What to make.
        count: The number of partitions; at most the number of blocks is made. One for every four
            blocks if None.
    """
    check_plan(model, plan)
    if count is None:
        count = math.ceil(plan.blocks / _USUAL_BLOCKS)
    if isinstance(count, bool) or not isinstance(count, int) or count < 1:
        raise ArgumentError(f"The number of partitions is an integer from 1 on, not {count!r}.")
    count = min(count, plan.blocks)
    content = dumps(model)
    borders = [number * plan.blocks // count for number in range(count + 1)]
    return [
        Partition(content, plan, number, start, stop)
        for number, (start, stop) in enumerate(pairwise(borders))
    ]


def make_blocks(partition: Partition) -> Iterator[pd.DataFrame]:
    """Makes the blocks of a partition, one after the other, as frames of text.

    Their indexes are the numbers of the rows in the sample.

    Raises:
        PartitionError: A block could not be made, and its rows are named, or other versions are
            installed here than where the sample was planned.
    """
    numbers = range(partition.start, partition.stop)
    blocks = sample_blocks(_model(partition.model), partition.plan, blocks=numbers)
    for block in numbers:
        try:
            yield _as_text(next(blocks))
        except Exception as error:
            rows = partition.plan.rows_of(block)
            raise PartitionError(
                f"Rows {rows.start:,} to {rows.stop - 1:,} (block {block} of the seed"
                f" {partition.plan.seed}) could not be made: {type(error).__name__}: {error}"
            ) from error


def no_rows(partition: Partition) -> pd.DataFrame:
    """Makes a frame as those of :func:`make_blocks`, but of no rows."""
    nothing = replace(partition.plan, rows=0)
    return next(make_blocks(replace(partition, plan=nothing, start=0, stop=1)))


def _as_text(people: pd.DataFrame) -> pd.DataFrame:
    """Gives every column pandas' dtype of text, also one that has missing values only."""
    return people.astype(pd.Series([""]).dtype)


def _model(content: str) -> PersonModel:
    """Gives the model of a content, built once a process for all of its threads."""
    with _building:
        return _built(content)


_building = threading.RLock()
# A forked process lacks the thread that was building.
os.register_at_fork(after_in_child=_building._at_fork_reinit)  # type: ignore[attr-defined]  # not told


# Most workers see one model; a few more do no harm.
@lru_cache(maxsize=4)
def _built(content: str) -> PersonModel:
    if different := differences(json.loads(content)["versions"]):
        raise PartitionError(
            f"A worker would make other rows: {'; '.join(different)}. Install the same versions"
            " everywhere."
        )
    return loads(content, allow_patterns=True)  # the caller's own model

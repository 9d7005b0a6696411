"""Measures what a billion rows ask of Dask's scheduler, without making them.

A billion people are planned, and each partition goes through a cluster on this machine to workers
that do nothing with it. ``python -m benchmarks.tasks`` prints what that takes.
"""

from __future__ import annotations

import pickle
import time
from collections.abc import Callable

from vantrel.sampling import Plan
from vantrel.scale.cluster import connected
from vantrel.scale.partitions import Partition, partitions

from .people import fitted_model
from .plain_way import SEED
from .tables import figure

ROWS = 1_000_000_000
WORKERS = 2


def main() -> None:
    print(scheduled())


def scheduled() -> str:
    """Gives what planning and scheduling take, as lines of Markdown."""
    parts, planned = _timed(lambda: partitions(fitted_model(), Plan(ROWS, SEED)))
    with connected(None, WORKERS) as client:
        client.gather(client.map(_nothing, parts[:WORKERS], pure=False))
        cpu = time.process_time()
        _, through = _timed(lambda: client.gather(client.map(_nothing, parts, pure=False)))
        cpu = time.process_time() - cpu
    count = len(parts)
    each, cpu_each = through / count * 1000, cpu / count * 1000
    return "\n".join(
        (
            f"- {ROWS:,} rows: {count:,} partitions, {figure(planned)} s to plan",
            f"- one partition travels as {len(pickle.dumps(parts[0])):,} bytes",
            f"- through the scheduler and back: {figure(through)} s, {figure(each)} ms each",
            f"- of it CPU time of client and scheduler: {figure(cpu_each)} ms each",
        )
    )


def _nothing(partition: Partition) -> None:
    """Takes a partition as a worker does."""


def _timed[T](work: Callable[[], T]) -> tuple[T, float]:
    start = time.perf_counter()
    return work(), time.perf_counter() - start


if __name__ == "__main__":
    main()

"""Measures what a billion rows ask of Dask's scheduler, without making them.

``python -m benchmarks.tasks`` plans a billion people and sends each partition through a cluster on
this machine to workers that do nothing with it.
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
from .tables import figure, megabytes

ROWS = 1_000_000_000
WORKERS = 2


def main() -> None:
    parts, planned = _timed(lambda: partitions(fitted_model(), Plan(ROWS, SEED)))
    print(f"- {ROWS:,} rows: {len(parts):,} partitions, {figure(planned)} s to plan")
    print(f"- one partition travels as {len(pickle.dumps(parts[0])):,} bytes")
    print(f"- all of them together: {megabytes(len(pickle.dumps(parts)))}")
    with connected(None, WORKERS) as client:
        client.gather(client.map(_nothing, parts[:WORKERS], pure=False))
        cpu = time.process_time()
        _, through = _timed(lambda: client.gather(client.map(_nothing, parts, pure=False)))
        cpu = time.process_time() - cpu
    each = len(parts) / 1000
    print(
        f"- through the scheduler and back: {figure(through)} s, {figure(through / each)} ms each"
    )
    print(f"- of it CPU time of client and scheduler: {figure(cpu / each)} ms each")


def _nothing(partition: Partition) -> None:
    """Takes a partition as a worker does."""


def _timed[T](work: Callable[[], T]) -> tuple[T, float]:
    start = time.perf_counter()
    return work(), time.perf_counter() - start


if __name__ == "__main__":
    main()

"""Measures the costs of several ways to do one work."""

from __future__ import annotations

import gc
import time
from collections.abc import Callable, Mapping
from dataclasses import dataclass
from statistics import median

Work = Callable[[], object]

# A work that is done sooner is repeated, so that no clock and no single pause decides.
SHORTEST_SECONDS = 0.2


@dataclass(frozen=True)
class Cost:
    """What one way cost in each round.

    Attributes:
        rounds: Microseconds of CPU time a row, one for each round.
    """

    rounds: tuple[float, ...]

    @property
    def median(self) -> float:
        """Microseconds of CPU time a row."""
        return median(self.rounds)


@dataclass(frozen=True)
class Way:
    """One way to do a work.

    Attributes:
        work: Does it.
        rows: How many rows it makes.
        before: Runs before each round and is not measured.
    """

    work: Work
    rows: int
    before: Work = lambda: None


def alternate(ways: Mapping[str, Way], rounds: int) -> dict[str, Cost]:
    """Measures ways in turn, round by round, so that a slow minute of the machine hits all alike.

    Args:
        ways: The ways by name.
        rounds: How often each is measured.

    Returns:
        The cost of each way, by its name.
    """
    measured: dict[str, list[float]] = {name: [] for name in ways}
    for _ in range(rounds):
        for name, way in ways.items():
            way.before()
            measured[name].append(cpu_seconds(way.work) / way.rows * 1e6)
    return {name: Cost(tuple(costs)) for name, costs in measured.items()}


def cpu_seconds(work: Work) -> float:
    """Gives the CPU time of one call, all threads of the process together."""
    gc.collect()
    calls = 0
    start = time.process_time()
    while True:
        work()
        calls += 1
        elapsed = time.process_time() - start
        if elapsed >= SHORTEST_SECONDS:
            return elapsed / calls

"""Measures what making people in blocks, and on processes of Dask, costs against one plain call."""

from __future__ import annotations

import tempfile
import time
from collections.abc import Callable, Iterator
from contextlib import ExitStack
from dataclasses import dataclass
from functools import partial
from pathlib import Path
from statistics import median
from typing import TYPE_CHECKING

from vantrel.model.models.person import PersonModel
from vantrel.sampling import Plan, sample_blocks
from vantrel.sampling.seeding import seed_everything
from vantrel.scale import sample
from vantrel.scale.cluster import connected
from vantrel.scale.folder import PartFile, write_partitions
from vantrel.scale.partitions import partitions
from vantrel.tables import write_table

from .people import MIXED, fitted_model
from .plain_way import SEED
from .tables import figure, micros

if TYPE_CHECKING:
    from distributed import Client

ROWS = 1_000_000
PLAN = Plan(ROWS, SEED)
PROCESSES = (1, 2)
HEAD = ("Work", "CPU a row", "against one call", "by round", "rows a second")
HEADING = "In blocks and on Dask"
NOTE = (
    f"All twelve columns, {ROWS:,} rows; the countries are {', '.join(MIXED)}. One call is"
    f" `model.sample` of all rows; a block has {PLAN.block_rows:,} rows. CPU time is that of all"
    " processes together. Rows a second are by wall time, as several processes are at work: other"
    " work on the machine counts. The processes run and have built the model before they are timed."
)


@dataclass(frozen=True)
class Way:
    """One way to make the rows.

    Attributes:
        name: What is done.
        work: Does it.
        clock: Gives the CPU seconds of all processes that do it.
    """

    name: str
    work: Callable[[], object]
    clock: Callable[[], float] = time.process_time

    def seconds(self) -> tuple[float, float]:
        """Does the work and gives its CPU and its wall time."""
        cpu, wall = self.clock(), time.perf_counter()
        self.work()
        wall = time.perf_counter() - wall
        return self.clock() - cpu, wall


def costs_of_ways(rounds: int) -> list[list[str]]:
    """Measures each way in turn, round by round, and gives the cells of a table."""
    with ExitStack() as stack:
        folder = Path(stack.enter_context(tempfile.TemporaryDirectory()))
        ways = list(_ways(fitted_model(), folder, stack))
        for way in ways:
            way.work()
        by_round = [[way.seconds() for way in ways] for _ in range(rounds)]
    by_way = list(zip(*by_round, strict=True))
    calls = [cpu for cpu, _ in by_way[0]]
    return [_cells(way.name, seconds, calls) for way, seconds in zip(ways, by_way, strict=True)]


def _cells(name: str, seconds: tuple[tuple[float, float], ...], calls: list[float]) -> list[str]:
    cpu, wall = (median(each) for each in zip(*seconds, strict=True))
    ratios = [one / call for (one, _), call in zip(seconds, calls, strict=True)]
    spread = f"{figure(min(ratios))}..{figure(max(ratios))}"
    against = figure(cpu / median(calls))
    return [name, micros(cpu / ROWS * 1e6), against, spread, f"{ROWS / wall:,.0f}"]


def _ways(model: PersonModel, folder: Path, stack: ExitStack) -> Iterator[Way]:
    """Gives the ways, one plain call first."""
    yield Way("one call", partial(_one_call, model))
    yield Way("blocks", partial(_blocks, model))
    yield Way("blocks, to Parquet", partial(_blocks_to_parquet, model, folder / "people.parquet"))
    for processes in PROCESSES:
        client = stack.enter_context(connected(None, processes))
        clock = partial(cpu_seconds, client)
        name = f"Dask, {processes} process{'es' if processes > 1 else ''}"
        yield Way(name, partial(_on_dask, model, client), clock)
        to_parquet = partial(_on_dask_to_parquet, model, client, folder)
        yield Way(f"{name}, to Parquet", to_parquet, clock)


def _one_call(model: PersonModel) -> None:
    seed_everything(model, SEED)
    model.sample(ROWS)


def _blocks(model: PersonModel) -> None:
    for _ in sample_blocks(model, PLAN):
        pass


def _blocks_to_parquet(model: PersonModel, path: Path) -> None:
    write_table(sample_blocks(model, PLAN), path)


def _on_dask(model: PersonModel, client: Client) -> None:
    people = sample(model, ROWS, seed=SEED)
    client.compute(people.map_partitions(len, meta=("rows", "int64"))).result()


def _on_dask_to_parquet(model: PersonModel, client: Client, folder: Path) -> None:
    files = [PartFile(part, folder, "run") for part in partitions(model, PLAN)]
    for _ in write_partitions(files, client):
        pass


def cpu_seconds(client: Client) -> float:
    """Gives the CPU time of this process and of the workers."""
    workers: dict[str, float] = client.run(time.process_time)
    return time.process_time() + sum(workers.values())

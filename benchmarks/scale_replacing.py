"""Measures what replacing people on processes of Dask costs, and the memory of each."""

from __future__ import annotations

import tempfile
import time
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path
from statistics import median
from typing import TYPE_CHECKING

import pyarrow.csv as pc
import pyarrow.parquet as pq

from vantrel.scale import replace
from vantrel.scale.cluster import connected

from .memory import resident
from .orders import KEY, write_orders
from .scale import cpu_seconds
from .tables import figure, megabytes, micros

if TYPE_CHECKING:
    from distributed import Client

FILE_ROWS = 125_000
ORDERS_OF_EACH = 2
SECRET = b"a secret of no use, of 32 bytes."
HEADING = "Replacing people on Dask"
HEAD = ("Work", "Rows", "CPU a row", "rows a second", "against 1 process", "most of a process")
NOTE = (
    f"Folders of files of {FILE_ROWS:,} orders, {ORDERS_OF_EACH} of each customer, which stand in"
    " two files. Rows a second are by wall time, as several processes are at work: other work on"
    " the machine counts. The processes run and have replaced a few people before they are timed."
    " The last column is the most memory that one process held, all of Python and its libraries"
    " with it."
)


@dataclass(frozen=True)
class Work:
    """What is measured.

    Attributes:
        processes: The number of processes.
        files: The number of files of each.
    """

    processes: int
    files: int

    @property
    def folder(self) -> str:
        return f"{self.processes * self.files} files"

    @property
    def rows(self) -> int:
        return self.processes * self.files * FILE_ROWS

    def __str__(self) -> str:
        process = f"{self.processes} process{'es' if self.processes > 1 else ''}"
        return f"{process}, {self.files} files each"


ALONE, FEW, MANY = Work(1, 4), Work(2, 2), Work(2, 8)


@dataclass(frozen=True)
class Took:
    """What one run took: CPU and wall seconds, and the most bytes of a process."""

    cpu: float
    wall: float
    most: int


def costs_of_replacing(rounds: int) -> Iterator[list[str]]:
    """Measures each work in turn, round by round, and gives the cells of a table."""
    works = (ALONE, FEW, MANY)
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        for work in works:
            _write_files(folder / work.folder, work.processes * work.files)
        _write_files(folder / "warm", 1, rows=1_000)
        by_round = [[_measured(work, folder) for work in works] for _ in range(rounds)]
    alone = median(took[0].wall for took in by_round)
    for work, took in zip(works, zip(*by_round, strict=True), strict=True):
        cpu, wall = median(each.cpu for each in took), median(each.wall for each in took)
        ratio = figure((wall / work.rows) / (alone / ALONE.rows))
        most = megabytes(max(each.most for each in took))
        each_row = micros(cpu / work.rows * 1e6)
        yield [str(work), f"{work.rows:,}", each_row, f"{work.rows / wall:,.0f}", ratio, most]


def _write_files(folder: Path, files: int, rows: int = FILE_ROWS) -> None:
    """Writes files of orders, unless they are there."""
    if folder.exists():
        return
    folder.mkdir()
    orders = folder.with_suffix(".csv")
    write_orders(orders, files * rows // ORDERS_OF_EACH, ORDERS_OF_EACH)
    table = pc.read_csv(orders)
    for number in range(files):
        pq.write_table(table.slice(number * rows, rows), folder / f"{number:03}.parquet")
    orders.unlink()


def _measured(work: Work, folder: Path) -> Took:
    with connected(None, work.processes) as client, tempfile.TemporaryDirectory(dir=folder) as out:
        _replace(folder / "warm", Path(out, "warm"), client)
        cpu, wall = cpu_seconds(client), time.perf_counter()
        _replace(folder / work.folder, Path(out, "copy"), client)
        wall = time.perf_counter() - wall
        return Took(cpu_seconds(client) - cpu, wall, max(client.run(resident, "VmHWM").values()))


def _replace(source: Path, output: Path, client: Client) -> None:
    replace(source, output, KEY, SECRET, client=client)

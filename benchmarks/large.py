"""Makes a table larger than memory need be, and watches what that takes.

The command ``vantrel sample`` runs twice, to a folder on Dask and to one file, on a model fitted on
``examples/respondents.csv``. Time, rows a second, the memory of each process over time, sizes of
files and distinct values are told. What was made is removed in the end. ``python -m
benchmarks.large`` prints that of a table of any size.
"""

from __future__ import annotations

import argparse
import subprocess
import sys
import tempfile
import time
from collections import defaultdict
from collections.abc import Iterator
from dataclasses import dataclass, field
from pathlib import Path

import psutil
from pyarrow import compute, dataset

from .machine import surroundings
from .tables import figure, megabytes, table

EXAMPLE = Path(__file__).resolve().parent.parent / "examples" / "respondents.csv"
GENERATED = (
    "firstname,lastname,fullname,email,username,password,mobile_number,home_number,work_number"
)
VANTREL = (sys.executable, "-c", "from vantrel.cli import main; main()")
SECONDS_BETWEEN = 0.25

ROWS = 10_000_000
WORKERS = 2

# Who has less than this share of the processor time made no people.
LEAST_SHARE = 0.1


@dataclass
class Watched:
    """What a process and those that it started took.

    Attributes:
        seconds: From the start to the end.
        resident: The resident bytes of each process, the oldest first.
        cpu: The CPU seconds of each process.
    """

    seconds: float = 0.0
    resident: dict[int, list[int]] = field(default_factory=lambda: defaultdict(list))
    cpu: dict[int, float] = field(default_factory=dict)

    def busy(self) -> list[int]:
        """The processes that made people: the others wait for them."""
        least = LEAST_SHARE * sum(self.cpu.values())
        return [process for process, seconds in self.cpu.items() if seconds > least]


def main() -> None:
    arguments = _arguments()
    for name, value in surroundings().items():
        print(f"- {name}: {value}")
    for block in large_samples(arguments.rows, arguments.workers, arguments.folder):
        print(f"\n{block}")


def large_samples(
    rows: int = ROWS, workers: int = WORKERS, where: Path | None = None
) -> Iterator[str]:
    """Gives what making so many rows takes, as paragraphs and tables of Markdown."""
    with tempfile.TemporaryDirectory(dir=where) as scratch:
        folder = Path(scratch)
        model = folder / "model.json"
        fit = ["fit", str(EXAMPLE), "-o", str(model), "--ignore", "age", "--generate", GENERATED]
        subprocess.run([*VANTREL, *fit], check=True, capture_output=True)
        sample = ["sample", str(model), "-n", str(rows), "--seed", "7", "-o"]
        on_dask = [*sample, str(folder / "people"), "--dask", "--workers", str(workers)]
        yield from _told(f"Dask, {workers} workers", on_dask, folder / "people", rows)
        yield _distinct(folder / "people")
        one_file = [*sample, str(folder / "people.parquet")]
        yield from _told("One process", one_file, folder / "people.parquet", rows)


def _arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="python -m benchmarks.large")
    parser.add_argument("--rows", type=int, default=ROWS)
    parser.add_argument("--workers", type=int, default=WORKERS)
    parser.add_argument("--folder", type=Path, help="where there is room: 100 bytes a row")
    return parser.parse_args()


def _told(way: str, line: list[str], output: Path, rows: int) -> Iterator[str]:
    watched = _watch([*VANTREL, *line])
    cpu = sum(watched.cpu.values())
    sizes = [file.stat().st_size for file in _tables(output)]
    size = sum(sizes)
    yield "\n".join(
        (
            f"{way}, {rows:,} rows:\n",
            f"- {watched.seconds:.0f} s, {rows / watched.seconds:,.0f} rows a second",
            f"- {cpu:.0f} s of CPU time, {cpu / rows * 1e6:.2f} µs a row",
            f"- files: {len(sizes)}, {megabytes(size)}, {figure(size / rows)} bytes a row",
        )
    )
    cells = [
        [f"process {number}", *_moments(watched.resident[process])]
        for number, process in enumerate(watched.busy(), start=1)
    ]
    yield table(("Resident memory after", "10 %", "50 %", "90 %", "most"), cells)


def _distinct(folder: Path) -> str:
    people = dataset.dataset(folder, format="parquet")
    counts = []
    for column in ("firstname", "lastname", "fullname", "username", "email"):
        values = people.to_table(columns=[column])[column]
        counts.append(f"{column} {compute.count_distinct(values).as_py():,}")
    return f"Distinct values: {', '.join(counts)}"


def _tables(output: Path) -> list[Path]:
    return sorted(output.glob("*.parquet")) if output.is_dir() else [output]


def _moments(resident: list[int]) -> list[str]:
    moments = [resident[round(share * (len(resident) - 1))] for share in (0.1, 0.5, 0.9)]
    return [megabytes(value) for value in (*moments, max(resident))]


def _watch(command: list[str]) -> Watched:
    watched = Watched()
    start = time.perf_counter()
    with subprocess.Popen(command) as running:
        root = psutil.Process(running.pid)
        while running.poll() is None:
            for process in [root, *_children(root)]:
                _note(process, watched)
            time.sleep(SECONDS_BETWEEN)
    watched.seconds = time.perf_counter() - start
    if running.returncode:
        raise SystemExit(f"{' '.join(command)} ended with {running.returncode}")
    return watched


def _children(root: psutil.Process) -> list[psutil.Process]:
    try:
        return root.children(recursive=True)
    except psutil.NoSuchProcess:
        return []


def _note(process: psutil.Process, watched: Watched) -> None:
    try:
        with process.oneshot():
            times = process.cpu_times()
            watched.cpu[process.pid] = times.user + times.system
            watched.resident[process.pid].append(process.memory_info().rss)
    except psutil.NoSuchProcess:
        pass  # it has ended since it was listed


if __name__ == "__main__":
    main()

"""Measures what the command takes where tables are large: memory, and the time of samples.

Each figure is that of a new process of the command, as the kernel tells it when it has ended.
"""

from __future__ import annotations

import subprocess
import sys
import tempfile
from collections.abc import Callable, Iterator
from dataclasses import dataclass
from pathlib import Path
from statistics import median

from vantrel.sampling import Plan, sample_blocks
from vantrel.tables import write_table

from .people import fitted_model
from .plain_way import SEED
from .results import Limits, Result
from .tables import megabytes

VANTREL = "from vantrel.cli import main; main()"
# It fails where pandas or numpy was loaded.
IMPORT = "import sys, vantrel; sys.exit(len({'numpy', 'pandas'} & set(sys.modules)))"
ROWS = 1_000_000
ROWS_LARGE = 8_000_000

# Beside the twelve columns of people, to make a table of 17.
OTHERS = ("note", "joined", "points", "street", "shop")

GROWTH_LIMITS = Limits(bar=1.3, aim=1.1, at_most=True)
MEMORY_LIMITS = Limits(bar=500, aim=350, at_most=True)
CSV_LIMITS = Limits(bar=1.3, aim=1.0, at_most=True)
START_LIMITS = Limits(bar=0.15, aim=0.1, at_most=True)
STARTS = 5


@dataclass(frozen=True)
class Process:
    """What a process took.

    Attributes:
        peak: The most bytes that were resident at one time.
        cpu: The CPU seconds of all its threads.
    """

    peak: int
    cpu: float


# To the kernel the memory of whoever starts a process counts as its own, and here that is large by
# then: a small process starts it, and tells how it ended, the most that was resident, and CPU time.
_WATCHER = """
import os, subprocess, sys
process = subprocess.Popen(sys.argv[1:], stdout=subprocess.DEVNULL)
_, status, used = os.wait4(process.pid, 0)
print(os.waitstatus_to_exitcode(status), used.ru_maxrss, used.ru_utime + used.ru_stime)
"""


def run(*arguments: str | Path, program: str = VANTREL) -> Process:
    """Runs a program of Python, the command if none is named, and waits for its end."""
    line = [sys.executable, "-c", program, *map(str, arguments)]
    watched = [sys.executable, "-S", "-c", _WATCHER, *line]
    told = subprocess.run(watched, stdout=subprocess.PIPE, text=True, check=True).stdout.split()
    if told[0] != "0":
        raise SystemExit(f"{' '.join(line)} ended with {told[0]}")
    return Process(int(told[1]) * 1024, float(told[2]))


def large_tables(rounds: int) -> Iterator[Result]:
    """The memory of fits and reports, the time of samples as CSV, and that of starts."""
    with tempfile.TemporaryDirectory() as scratch:
        folder = Path(scratch)
        model = folder / "model.json"
        small, large = folder / "small.csv", folder / "large.csv"
        for path, rows in ((small, ROWS), (large, ROWS_LARGE)):
            _write_people(path, rows)
        fit = ("fit", "-o", model, "--force")
        yield from _memory("fit", [run(*fit, small)], [run(*fit, large)])
        report = ("report", "-o", folder / "report.html", "--force")
        sampled = folder / "sampled.csv"
        of_both = []
        for path, rows in ((small, ROWS), (large, ROWS_LARGE)):
            run("sample", model, "-n", str(rows), "--seed", "8", "-o", sampled, "--force")
            of_both.append([run(*report, path, sampled)])
        yield from _memory("report", *of_both)
        yield _csv_over_parquet(model, folder, rounds)
    yield _start("vantrel --help", lambda: run("--help"))
    yield _start("import vantrel, without pandas", lambda: run(program=IMPORT))


def _write_people(path: Path, rows: int) -> None:
    people = sample_blocks(fitted_model(), Plan(rows, SEED))
    others = {name: f"the same {name}, everywhere" for name in OTHERS}
    write_table((block.assign(**others) for block in people), path)


def _memory(what: str, small: list[Process], large: list[Process]) -> Iterator[Result]:
    """Gives how memory grows with the rows, and what it comes to."""
    little, much = (max(each.peak for each in processes) for processes in (small, large))
    growth = much / little
    yield Result(
        f"peak of {what}, {ROWS_LARGE:,} over {ROWS:,} rows",
        megabytes(little),
        megabytes(much),
        growth,
        (growth,),
        GROWTH_LIMITS,
    )
    yield peak(f"peak of {what}, {ROWS_LARGE:,} rows, MB", large, MEMORY_LIMITS)


def peak(work: str, processes: list[Process], limits: Limits) -> Result:
    """Gives the most bytes that were resident at one time in any of the processes, in millions."""
    most = max(each.peak for each in processes)
    return Result(work, "", megabytes(most), most / 1e6, (most / 1e6,), limits)


def _csv_over_parquet(model: Path, folder: Path, rounds: int) -> Result:
    """Gives the CPU time of a sample as CSV over that of the same as Parquet."""
    sample = ("sample", model, "-n", str(ROWS), "--seed", "7", "--force", "-o")
    csv, parquet = [], []
    for _ in range(rounds):
        csv.append(run(*sample, folder / "people.csv").cpu)
        parquet.append(run(*sample, folder / "people.parquet").cpu)
    return Result(
        f"CPU of sample, {ROWS:,} rows, CSV over Parquet",
        f"{median(parquet):.2f} s",
        f"{median(csv):.2f} s",
        median(csv) / median(parquet),
        tuple(one / other for one, other in zip(csv, parquet, strict=True)),
        CSV_LIMITS,
    )


def _start(what: str, start: Callable[[], Process]) -> Result:
    """Gives the CPU seconds of a short process, once the modules are compiled."""
    start()
    seconds = tuple(start().cpu for _ in range(STARTS))
    middle = median(seconds)
    return Result(f"CPU of {what}, s", "", f"{middle:.2f} s", middle, seconds, START_LIMITS)

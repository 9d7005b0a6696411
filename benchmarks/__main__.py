"""The command of the benchmarks."""

from __future__ import annotations

import argparse
import os
import sys
import time
from collections.abc import Callable, Iterator
from pathlib import Path

from . import (
    command,
    databases,
    goals,
    large,
    parts,
    replacing,
    report,
    results,
    rows,
    scale,
    scale_replacing,
    sizes,
    tasks,
)
from .tables import table

DESCRIPTION = "Measures what sampling costs, prints it and writes it to benchmarks/RESULTS.md."
RESULTS = Path(__file__).resolve().parent / "RESULTS.md"

Section = tuple[str, Callable[[int], Iterator[results.Result]]]

SECTIONS: dict[str, Section] = {
    "columns": ("All twelve columns, 20,000 rows, against the plain way", goals.all_columns),
    "libraries": ("Against other libraries; of these the fastest counts", goals.other_libraries),
    "countries": (
        "A table of all countries, 20,000 rows, against the plain way",
        goals.all_countries,
    ),
    "sizes": (
        "Tables of every size, with each pandas, against the plain way if nothing else is named",
        sizes.in_all_environments,
    ),
    "rows": ("Rows as real ones are, of twelve columns", rows.real_rows),
    "growth": ("Cost a row in large tables", goals.growth),
    "memory": ("Peak memory beyond what the process held before", goals.peak_memory),
    "command": ("The command on large tables, in new processes", command.large_tables),
    "replacing": ("Replacing the people of large tables", replacing.large_tables),
    "databases": ("Replacing the people of tables of databases", databases.large_tables),
    "alone": ("Single generators, 100,000 rows, against the plain way", goals.generators_alone),
}
PARTS = "parts"
SCALE = "scale"
SCALE_REPLACING = "scale-replacing"


def main() -> None:
    arguments = _arguments()
    if arguments.only is None:
        _measure_all(arguments.rounds)
    elif arguments.only == PARTS:
        print(table(parts.HEAD, parts.costs_of_parts(arguments.rounds)))
    elif arguments.only == SCALE:
        print(table(scale.HEAD, scale.costs_of_ways(arguments.rounds)))
    elif arguments.only == SCALE_REPLACING:
        print(table(scale_replacing.HEAD, [*scale_replacing.costs_of_replacing(arguments.rounds)]))
    else:
        _, measure = SECTIONS[arguments.only]
        lines = [line.cells() for line in measure(arguments.rounds)]
        print(table(results.HEAD, lines))


def _arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="python -m benchmarks", description=DESCRIPTION)
    parser.add_argument(
        "--rounds", type=_positive, default=3, help="how often each way is measured (default: 3)"
    )
    parser.add_argument(
        "--only",
        choices=[*SECTIONS, PARTS, SCALE, SCALE_REPLACING],
        help="measure and print one table; RESULTS.md stays as it is",
    )
    return parser.parse_args()


def _positive(text: str) -> int:
    if not text.isdecimal() or int(text) < 1:
        raise argparse.ArgumentTypeError(f"{text!r} is not a number of rounds from 1 on")
    return int(text)


def _measure_all(rounds: int) -> None:
    wall, cpu = time.perf_counter(), _cpu_seconds()
    measured = {}
    for heading, measure in SECTIONS.values():
        _say(heading)
        measured[heading] = list(_said(measure(rounds)))
    _say(report.PARTS_HEADING)
    costs = parts.costs_of_parts(rounds)
    _say(scale.HEADING)
    ways = scale.costs_of_ways(rounds)
    _say(scale_replacing.HEADING)
    replaced = list(scale_replacing.costs_of_replacing(rounds))
    _say(report.LARGE_HEADING)
    large_blocks = list(large.large_samples())
    _say(report.SCHEDULED_HEADING)
    scheduled = tasks.scheduled()
    wall_over_cpu = (time.perf_counter() - wall) / (_cpu_seconds() - cpu)
    text = report.text(
        measured, costs, ways, replaced, large_blocks, scheduled, rounds, wall_over_cpu
    )
    RESULTS.write_text(text, encoding="utf-8")
    print(text)


def _cpu_seconds() -> float:
    """Gives the CPU time of this process and of those that it has started."""
    return sum(os.times()[:4])


def _said(lines: Iterator[results.Result]) -> Iterator[results.Result]:
    for line in lines:
        _say(f"  {line.work}: {line.reached:.2f}")
        yield line


def _say(text: str) -> None:
    """Tells how far it is: the whole takes minutes."""
    print(text, file=sys.stderr, flush=True)


if __name__ == "__main__":
    main()

"""Measures what replacing the people of a large table takes: CPU time, and memory.

Each figure but those of the loop by hand is that of a new process.
"""

from __future__ import annotations

import tempfile
from collections.abc import Iterator
from functools import partial
from pathlib import Path

from .by_hand import replace_by_hand
from .command import Process, peak, run
from .orders import KEY, write_orders
from .results import Limits, Result
from .timing import Cost, cpu_seconds

ROWS, CUSTOMERS = 1_000_000, 500_000
ROWS_LARGE, CUSTOMERS_LARGE = 10_000_000, 1_000_000

# So few by hand, with as many orders of each; a row of more costs the same.
CUSTOMERS_BY_HAND = 10_000

COPY_LIMITS = Limits(bar=3, aim=2, at_most=True)
BY_HAND_LIMITS = Limits(bar=30, aim=60)
GROWTH_LIMITS = Limits(bar=1.25, aim=1.05, at_most=True)
MEMORY_LIMITS = Limits(bar=1000, aim=700, at_most=True)

# Reads each cell and writes it: what the command does, but for what becomes of cells in between.
COPY = """
import sys
from pathlib import Path
from vantrel.tables.copying import open_copied

def all_of_them(batch):
    return dict(zip(batch.schema.names, batch.columns))

with open_copied(Path(sys.argv[1])) as table, open(sys.argv[2], "wb") as copy:
    table.write(copy, table.columns, all_of_them)
"""


def large_tables(rounds: int) -> Iterator[Result]:
    """CPU time against a copy and against a loop by hand, then memory."""
    with tempfile.TemporaryDirectory() as scratch:
        folder = Path(scratch)
        yield from _against_others(folder, rounds)
        yield from _growth(folder)


def _against_others(folder: Path, rounds: int) -> Iterator[Result]:
    each = ROWS // CUSTOMERS
    few, copy = folder / "few.csv", folder / "copy.csv"
    write_orders(few, CUSTOMERS_BY_HAND, each)
    orders = _orders(folder, ROWS, CUSTOMERS)
    copies, by_hand, ours = [], [], []
    for _ in range(rounds):
        copies.append(run(orders, copy, program=COPY).cpu)
        by_hand.append(cpu_seconds(partial(replace_by_hand, few, copy)))
        ours.append(_replace(orders).cpu)
    replaced = _cost(ours, ROWS)
    work = f"replace, {ROWS:,} rows"
    yield Result.of_costs(f"{work}, copy of each cell", _cost(copies, ROWS), replaced, COPY_LIMITS)
    loop = _cost(by_hand, CUSTOMERS_BY_HAND * each)
    yield Result.of_costs(f"{work}, loop over Faker", loop, replaced, BY_HAND_LIMITS)


def _growth(folder: Path) -> Iterator[Result]:
    """Gives what becomes of time and memory with more rows of as many people."""
    costs = []
    for rows in (CUSTOMERS_LARGE, ROWS_LARGE):
        process = _replace(_orders(folder, rows, CUSTOMERS_LARGE))
        costs.append(_cost([process.cpu], rows))
        yield peak(f"peak of replace, {rows:,} rows, MB", [process], MEMORY_LIMITS)
    work = f"replace, a row of {ROWS_LARGE:,}, of {CUSTOMERS_LARGE:,}"
    yield Result.of_costs(work, *costs, GROWTH_LIMITS)


def _orders(folder: Path, rows: int, customers: int) -> Path:
    path = folder / "orders.csv"
    write_orders(path, customers, rows // customers)
    return path


def _replace(orders: Path) -> Process:
    return run("replace", orders, "-o", orders.with_name("copy.csv"), "--key", KEY, "--force")


def _cost(seconds: list[float], rows: int) -> Cost:
    return Cost(tuple(each / rows * 1e6 for each in seconds))

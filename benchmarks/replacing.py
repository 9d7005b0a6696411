"""Measures what replacing the people of a large table takes: CPU time, and memory.

Each figure but those of the loop by hand is that of a new process.
"""

from __future__ import annotations

import tempfile
from collections.abc import Iterator, Sequence
from functools import partial
from pathlib import Path

from .by_hand import replace_by_hand
from .command import Process, peak, run
from .orders import KEY, write_orders
from .results import Limits, Result
from .timing import Cost, cpu_seconds

ROWS, ROWS_LARGE = 1_000_000, 10_000_000
CUSTOMERS = 1_000_000
CUSTOMERS_OF_COPY = 500_000

# By hand so few are enough: more rows cost the same each.
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
    """CPU time against a copy and a loop by hand, and what becomes of it and of memory."""
    with tempfile.TemporaryDirectory() as scratch:
        folder = Path(scratch)
        yield _against_copy(folder, rounds)
        few, orders = folder / "few.csv", folder / "orders.csv"
        write_orders(few, CUSTOMERS_BY_HAND)
        write_orders(orders, CUSTOMERS)
        by_hand, ours = [], []
        for _ in range(rounds):
            by_hand.append(cpu_seconds(partial(replace_by_hand, few, folder / "by hand.csv")))
            ours.append(_replace(orders))
        small, loop = _cost(ours, ROWS), Cost(_of_rows(by_hand, CUSTOMERS_BY_HAND))
        work = f"replace, {ROWS:,} rows, loop over Faker"
        yield Result.of_costs(work, loop, small, BY_HAND_LIMITS)
        write_orders(orders, CUSTOMERS, ROWS_LARGE // CUSTOMERS)
        at_large = [_replace(orders)]
        yield _growth(small, _cost(at_large, ROWS_LARGE))
        for rows, processes in ((ROWS, ours), (ROWS_LARGE, at_large)):
            yield peak(f"peak of replace, {rows:,} rows, MB", processes, MEMORY_LIMITS)


def _against_copy(folder: Path, rounds: int) -> Result:
    orders = folder / "orders.csv"
    write_orders(orders, CUSTOMERS_OF_COPY, ROWS // CUSTOMERS_OF_COPY)
    copies, ours = [], []
    for _ in range(rounds):
        copies.append(run(orders, folder / "copy.csv", program=COPY))
        ours.append(_replace(orders))
    work = f"replace, {ROWS:,} rows, copy of each cell"
    return Result.of_costs(work, _cost(copies, ROWS), _cost(ours, ROWS), COPY_LIMITS)


def _growth(small: Cost, large: Cost) -> Result:
    """Gives the cost of a row among more rows of as many people over that among fewer."""
    work = f"replace, a row of {ROWS_LARGE:,}, of {ROWS:,}"
    return Result.of_costs(work, Cost((small.median,)), large, GROWTH_LIMITS)


def _replace(orders: Path) -> Process:
    copy = orders.with_name("copy.csv")
    return run("replace", orders, "-o", copy, "--key", KEY, "--force")


def _cost(processes: Sequence[Process], rows: int) -> Cost:
    return Cost(_of_rows([process.cpu for process in processes], rows))


def _of_rows(seconds: Sequence[float], rows: int) -> tuple[float, ...]:
    """Gives the microseconds of a row."""
    return tuple(each / rows * 1e6 for each in seconds)

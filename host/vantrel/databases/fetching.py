"""Fetches rows in parts that take about as much memory, whatever stands in them."""

from __future__ import annotations

from collections.abc import Iterator, Sequence
from concurrent.futures import ThreadPoolExecutor
from threading import Lock
from typing import Any

# The rows that are fetched at first, and then as many as take about so many bytes.
_FIRST_ROWS = 1_000
_MOST_ROWS = 50_000
_BYTES = 16_000_000
_MEASURED_ROWS = 200


def fetched(cursor: Any) -> Iterator[list[tuple[Any, ...]]]:
    """Fetches the rows of a query that a cursor of a driver has run."""
    rows = cursor.fetchmany(_FIRST_ROWS)
    while rows:
        yield rows
        wanted = _BYTES // _bytes_of_a_row(rows)
        rows = cursor.fetchmany(min(max(1, wanted), _MOST_ROWS))


def ahead[PartT](parts: Iterator[PartT], lock: Lock) -> Iterator[PartT]:
    """Has the next part made in a thread, which holds a lock, while the one before is used."""

    def following() -> PartT | None:
        with lock:
            return next(parts, None)

    with ThreadPoolExecutor(1) as pool:
        coming = pool.submit(following)
        while (part := coming.result()) is not None:
            coming = pool.submit(following)
            yield part


def _bytes_of_a_row(rows: Sequence[tuple[Any, ...]]) -> int:
    """About how many bytes a row takes, as told by some of them."""
    some = rows[:: 1 + len(rows) // _MEASURED_ROWS]
    lengths = (len(cell) if isinstance(cell, str | bytes) else 8 for row in some for cell in row)
    return 1 + sum(lengths) // len(some)

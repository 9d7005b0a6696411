"""Tells whether calling something again and again leaves something behind.

Needs nothing but the standard library, so that it also measures inside a small host.
"""

from __future__ import annotations

import ctypes
import gc
import os
import sys
from array import array
from collections.abc import Callable, Sequence
from dataclasses import dataclass
from itertools import pairwise
from pathlib import Path

# The calls are made in batches. What is lost at each call is lost in every batch; caches that fill
# and pools that grow by leaps are quiet in at least one.
BATCHES = 5

# Losing one thing in so many calls is a leak, and so is one in each batch where those are shorter.
CALLS_PER_LOSS = 100

# The smallest piece that the C heap gives out on machines of 64 bits, with its head.
SMALLEST_PIECE = 32

# From this number of references on an object is immortal and its references are not counted.
_IMMORTAL = 0xFFFF_FFFF


class _Mallinfo(ctypes.Structure):
    """`struct mallinfo2` of glibc."""

    _fields_ = [
        (name, ctypes.c_size_t)
        for name in (
            *("arena", "ordblks", "smblks", "hblks", "hblkhd"),
            *("usmblks", "fsmblks", "uordblks", "fordblks", "keepcost"),
        )
    ]


def _heap_reader() -> Callable[[], int]:
    """Gives a function that tells how many bytes of the C heap are in use."""
    try:
        mallinfo = ctypes.CDLL(None).mallinfo2
    except AttributeError:
        page = os.sysconf("SC_PAGESIZE")
        statm = Path("/proc/self/statm")
        return lambda: int(statm.read_text(encoding="ascii").split()[1]) * page
    mallinfo.restype = _Mallinfo

    def in_use() -> int:
        info = mallinfo()
        return int(info.uordblks + info.hblkhd)

    return in_use


def _all_objects() -> list[object]:
    """Gives all objects whose references tell something.

    Those of Cython's classes do not: each generator that Cython makes (pandas and numpy have many)
    adds one to its class and never takes it back.
    """
    of_cython = {
        id(value)
        for name, module in sys.modules.items()
        if name.startswith("_cython_")
        for value in vars(module).values()
    }
    tracked = [found for found in gc.get_objects() if id(found) not in of_cython]
    others = {
        id(part): part
        for container in tracked
        for part in gc.get_referents(container)
        if not gc.is_tracked(part) and sys.getrefcount(part) < _IMMORTAL
    }
    return [*tracked, *others.values()]


_watched: list[object] = []


def settle() -> None:
    """Watches the references to all objects that are here from now on, and keeps them for good.

    Collections need not go through them again, and a process that is forked now need not look for
    them once more.
    """
    gc.collect()
    _watched.extend(_all_objects())
    gc.freeze()


class Meter:
    """Reads what this process holds, and keeps the readings in memory that is there beforehand.

    Blocks are those of Python's allocators, bytes those of the C heap, which C++ allocates from.
    Neither would show a reference too many, or too few, to an object that lives on anyway: so the
    references to all objects that are there when the meter is made are counted, too.
    """

    KINDS = 3

    def __init__(self, readings: int) -> None:
        settle()
        self._heap_bytes = _heap_reader()
        self._readings = array("q", [0] * readings * self.KINDS)
        self._taken = 0

    def read(self) -> None:
        """Takes the next reading."""
        sys._clear_type_cache()  # of up to 4096 names of attributes that were looked for
        gc.collect()
        start = self._taken * self.KINDS
        self._readings[start] = sys.getallocatedblocks()
        self._readings[start + 1] = self._heap_bytes()
        self._readings[start + 2] = sum(map(sys.getrefcount, _watched))
        self._taken += 1

    def steps(self, kind: int) -> tuple[int, ...]:
        """Gives the changes between the readings of one kind."""
        values = self._readings[kind :: self.KINDS]
        return tuple(after - before for before, after in pairwise(values))


@dataclass(frozen=True)
class Growth:
    """What the batches left behind.

    Attributes:
        calls: The number of calls in each batch.
        blocks: The growth of Python's allocated blocks in each batch.
        heap_bytes: The same of the bytes in use in the C heap.
        references: The same of the references to objects that were there before.
    """

    calls: int
    blocks: tuple[int, ...]
    heap_bytes: tuple[int, ...]
    references: tuple[int, ...]

    def per_call(self) -> tuple[float, float, float]:
        """Gives the steady growth a call of blocks, bytes and references."""
        kinds = (self.blocks, self.heap_bytes, self.references)
        blocks, heap_bytes, references = (_steady(kind) / self.calls for kind in kinds)
        return blocks, heap_bytes, references

    def complaint(self) -> str:
        """Says what is lost; empty where nothing is."""
        blocks, heap_bytes, references = self.per_call()
        lost = []
        if blocks * CALLS_PER_LOSS >= 1:
            lost.append("blocks")
        if heap_bytes * CALLS_PER_LOSS >= SMALLEST_PIECE:
            lost.append("bytes")
        if references * CALLS_PER_LOSS >= 1:
            lost.append("references")
        if lost:
            return f"leaks {' and '.join(lost)}"
        return "releases too often" if references * CALLS_PER_LOSS <= -1 else ""


def _steady(steps: Sequence[int]) -> int:
    """Gives the least change where all batches changed in one direction, else 0."""
    if min(steps) > 0:
        return min(steps)
    return min(0, max(steps))


def growth(call: Callable[[], object], calls: int, rewind: Callable[[], object]) -> Growth:
    """Measures what a call leaves behind.

    Args:
        call: What to call. One batch more than is measured comes first, to fill the caches.
        calls: How often to call it.
        rewind: Brings the random sources to one and the same state. It comes before each batch,
            so that each does the very same.
    """
    in_batch = max(1, calls // BATCHES)

    def batch() -> None:
        rewind()
        for _ in range(in_batch):
            call()

    batch()
    meter = Meter(BATCHES + 1)
    meter.read()
    for _ in range(BATCHES):
        batch()
        meter.read()
    return Growth(in_batch, meter.steps(0), meter.steps(1), meter.steps(2))

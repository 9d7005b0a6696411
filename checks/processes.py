"""Runs checks, each in a process of its own, as many at a time as wished."""

from __future__ import annotations

import multiprocessing
import os
import traceback
from collections.abc import Callable, Iterable, Iterator
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from multiprocessing.connection import Connection
from pathlib import Path
from signal import Signals
from typing import Any

# The server that the processes are forked from holds all imports already.
_CONTEXT = multiprocessing.get_context("forkserver")
# A process with threads is no good to fork. What the C heap keeps for each thread would count as in
# use.
_SURROUNDINGS = {"OPENBLAS_NUM_THREADS": "1", "GLIBC_TUNABLES": "glibc.malloc.tcache_count=0"}
_PRELOADED = ["checks.preloaded"]


@dataclass(frozen=True)
class Outcome[Answer]:
    """What came of a check: its answer, or else what went wrong."""

    answer: Answer | None
    trouble: str = ""


def _run(check: Callable[..., Any], arguments: tuple[Any, ...], answers: Connection) -> None:
    try:
        outcome = Outcome(check(*arguments))
    except BaseException as error:  # noqa: BLE001 - whatever it is, it is told
        last = traceback.extract_tb(error.__traceback__)[-1]
        place = f"{Path(last.filename).name}:{last.lineno}"
        outcome = Outcome(None, f"{type(error).__name__}: {error} ({place})")
    answers.send(outcome)


def _apart(check: Callable[..., Any], arguments: tuple[Any, ...]) -> Outcome[Any]:
    answers, far_end = _CONTEXT.Pipe(duplex=False)
    process = _CONTEXT.Process(target=_run, args=(check, arguments, far_end))
    process.start()
    far_end.close()
    try:
        outcome: Outcome[Any] = answers.recv()
    except EOFError:
        process.join()
        return Outcome(None, _ending(process.exitcode or 0))
    process.join()
    return outcome


def _ending(code: int) -> str:
    return f"ended by {Signals(-code).name}" if code < 0 else f"ended with exit code {code}"


def run_apart[Answer](
    check: Callable[..., Answer], work: Iterable[tuple[Any, ...]], at_once: int
) -> Iterator[Outcome[Answer]]:
    """Runs a check on each of the arguments, in a process for each.

    Args:
        check: A function that can be pickled by name, as its arguments and its answer can.
        work: The arguments of each run.
        at_once: How many processes run at one time.

    Yields:
        What came of each, in order.
    """
    os.environ.update(_SURROUNDINGS)
    _CONTEXT.set_forkserver_preload(_PRELOADED)
    with ThreadPoolExecutor(at_once) as pool:
        yield from pool.map(lambda arguments: _apart(check, arguments), work)

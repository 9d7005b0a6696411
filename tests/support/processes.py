"""What processes are started with to sample: it can be imported, as a new process needs it."""

import os
import signal
import threading
from collections.abc import Callable, Iterator
from contextlib import AbstractContextManager, contextmanager
from functools import partial
from typing import Any

from support.people import fitted_model
from support.sources import seed_sources

MODEL = fitted_model()
ROWS = 200
SECONDS = 30


def sample(seed: int, rows: int = ROWS) -> list[Any]:
    """The values of a sample, row by row."""
    seed_sources(seed, MODEL)
    rows_of_values: list[Any] = MODEL.sample(rows).to_numpy().tolist()
    return rows_of_values


def forked_ends(act: Callable[[], Any]) -> bool:
    """Forks; whether the child does something and ends. One that hangs is ended by a signal."""
    child = os.fork()
    if child == 0:
        signal.alarm(SECONDS)
        act()
        os._exit(0)
    return os.waitpid(child, 0)[1] == 0


@contextmanager
def held_by_another_thread(lock: AbstractContextManager[Any]) -> Iterator[None]:
    """Lets another thread hold a lock."""
    taken, over = threading.Event(), threading.Event()

    def hold() -> None:
        with lock:
            taken.set()
            over.wait()

    thread = threading.Thread(target=hold)
    thread.start()
    taken.wait()
    try:
        yield
    finally:
        over.set()
        thread.join()


def forked_sample_ends() -> bool:
    """Whether a forked process makes its first sample and ends."""
    return forked_ends(partial(sample, 1))

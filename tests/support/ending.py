"""Processes that end, or fork, while other threads of theirs are inside the module."""

import atexit
import gc
import os
import signal
import sys
import threading
import time
import warnings
from collections.abc import Callable

import numpy as np
import numpy.lib._arraysetops_impl as numpys_sets
import pandas as pd

from support.people import fitted_model

MODEL = fitted_model()
NAMES = pd.Series(["Ann"] * 100)
PASSWORDS = pd.Series([""] * 2_000_000)

# When, after the threads have begun, the main thread ends.
MILLISECONDS = range(0, 20, 2)
THREADS = 4
EXIT_CODE = 3
SECONDS = 30

Action = Callable[[], object]


def nothing() -> None:
    """What a main thread does last that ends at once."""


def endings(call: Action, last: Action = nothing) -> list[tuple[int, str]]:
    """How processes end whose daemon threads make a call over and over again.

    They are forked from this one: they end as any other does, but need not start first.

    Args:
        call: The call.
        last: What the main thread does before it ends.

    Returns:
        Of each process its exit code, or its signal as a negative number, and what it wrote. One that
        hangs is ended by SIGALRM.
    """
    MODEL.sample(20)  # imports what is imported when it is first needed
    # numpy's own C++ ends the process where one of its threads is ended there: plain Python sees it, too.
    numpys_sets._unique_hash = lambda *args, **kwargs: NotImplemented  # type: ignore[attr-defined]  # private
    gc.freeze()  # what is there already need not be looked through at each end
    return [_ending_of(call, last, milliseconds) for milliseconds in MILLISECONDS]


def _ending_of(call: Action, last: Action, milliseconds: int) -> tuple[int, str]:
    reading, writing = os.pipe()
    child = os.fork()
    if child == 0:
        os.dup2(writing, sys.stdout.fileno())
        os.dup2(writing, sys.stderr.fileno())
        signal.alarm(SECONDS)
        _call_in_threads(call)
        time.sleep(milliseconds / 1000)
        last()
        sys.exit(EXIT_CODE)
    os.close(writing)
    with os.fdopen(reading, encoding="utf-8") as pipe:
        written = pipe.read()
    return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), written


def _call_in_threads(call: Action) -> None:
    """Has daemon threads make the call over and over again, switched between as often as can be."""
    all_started = threading.Barrier(THREADS + 1)

    def call_for_ever() -> None:
        all_started.wait()
        while True:
            call()

    sys.setswitchinterval(1e-6)
    for _ in range(THREADS):
        threading.Thread(target=call_for_ever, daemon=True).start()
    all_started.wait()


def draw(when: str) -> None:
    """Draws from numpy's source and makes a password, and writes when it did."""
    np.random.random()
    MODEL.generate_password()
    os.write(sys.stdout.fileno(), f"{when} ".encode())


class DrawsWhenDeleted:
    """Goes round in a circle, so it is the garbage collector that deletes it."""

    def __init__(self) -> None:
        self.itself = self

    def __del__(self) -> None:
        draw("finalising")


def draw_while_finalising() -> None:
    """Leaves something to delete, and no collector but the interpreter's last one, which is alone."""
    gc.set_threshold(0)
    DrawsWhenDeleted()


def draw_at_every_stage() -> None:
    """Draws while threads are waited for, then as one of the functions to call at exit, then at last."""
    threading._register_atexit(draw, "waiting")  # type: ignore[attr-defined]  # private
    atexit.register(draw, "exiting")
    draw_while_finalising()


def hold_numpys_lock() -> None:
    """Lets numpy's lock go but keeps the interpreter's: threads that want both cannot go on."""
    sys.setswitchinterval(SECONDS)
    with np.random.mtrand._rand._bit_generator.lock:
        for _ in range(2 * THREADS):
            time.sleep(0.0002)  # each time another thread comes as far as the lock


def hold_numpys_lock_and_draw() -> None:
    """Draws while finalising, right after the lock was let go."""
    hold_numpys_lock()
    draw_while_finalising()


def hold_numpys_lock_and_fork() -> None:
    """Forks right after the lock was let go, and has the child draw."""
    hold_numpys_lock()
    warnings.simplefilter("ignore")  # the other threads' pandas may have put other filters in place
    child = os.fork()
    if child == 0:
        signal.alarm(SECONDS)
        draw("forked")
        os._exit(0)
    os.waitpid(child, 0)

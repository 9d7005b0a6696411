"""Sends signals to long calls and sees where the module itself lets them in."""

import signal
import sys
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from types import FrameType, TracebackType
from typing import Any

from vantrel.model.models import person

SECONDS_BETWEEN = 0.001
MOST_CALLS = 50


def call_with_signals(
    action: Callable[[], None], method: Callable[..., Any], *arguments: Any
) -> None:
    """Makes the call, and runs the action where a signal is let in by what runs no Python code.

    Args:
        action: What a signal does.
        method: A method of the module.
        arguments: So many rows that the module lets signals in.
    """
    with _signals(action, sys._getframe()):
        method(*arguments)


def interrupt(
    method: Callable[..., Any],
    *arguments: Any,
    seed: Callable[[], None],
    states: Callable[[], Any] | None = None,
) -> None:
    """Makes the call until it is interrupted, as Ctrl-C would do, in the module's own code.

    A call that ends before the module let a signal in is made again, so that no clock decides.

    Args:
        method: A method of the module.
        arguments: So many rows that the module lets signals in.
        seed: Seeds the sources; is run before each call.
        states: Tells the states of the sources: the interrupt comes when they have changed, that
            is amid the draws. Without it any moment will do.
    """
    for _ in range(MOST_CALLS):
        seed()
        seeded = states and states()

        def raise_amid(seeded: Any = seeded) -> None:
            if states is None or states() != seeded:
                raise KeyboardInterrupt

        try:
            call_with_signals(raise_amid, method, *arguments)
        except KeyboardInterrupt as interruption:
            if any(name.startswith(person.__name__) for name in _entries(interruption)):
                return
    raise AssertionError(f"the module let no signal in during {MOST_CALLS} calls")


@contextmanager
def _signals(action: Callable[[], None], caller: FrameType) -> Iterator[None]:
    """Sends signals all the time, which act only where the caller's frame is the innermost."""

    def act(number: int, frame: FrameType | None) -> None:
        if frame is caller:
            action()

    handler = signal.signal(signal.SIGALRM, act)
    signal.setitimer(signal.ITIMER_REAL, SECONDS_BETWEEN, SECONDS_BETWEEN)
    try:
        yield
    finally:
        signal.setitimer(signal.ITIMER_REAL, 0)
        signal.signal(signal.SIGALRM, handler)


def _entries(error: BaseException) -> Iterator[str]:
    """The names that the error's traceback shows."""
    entry: TracebackType | None = error.__traceback__
    while entry is not None:
        yield entry.tb_frame.f_code.co_name
        entry = entry.tb_next

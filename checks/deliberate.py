"""Calls that leak on purpose: a checker that does not see them sees nothing."""

from __future__ import annotations

import ctypes
from collections.abc import Callable
from functools import partial
from itertools import count

from .catalogue.call import Call, good


def _lose_an_object() -> None:
    """Adds an owner, who never lets go, to a new object."""
    ctypes.pythonapi.Py_IncRef(ctypes.py_object(object()))


def _losing_references() -> Callable[[], object]:
    kept = [object()]
    return lambda: ctypes.pythonapi.Py_IncRef(ctypes.py_object(kept[0]))


def _giving_back_too_much() -> Callable[[], object]:
    kept = object()
    for _ in range(1_000_000):
        ctypes.pythonapi.Py_IncRef(ctypes.py_object(kept))
    return lambda: ctypes.pythonapi.Py_DecRef(ctypes.py_object(kept))


def _losing_memory() -> Callable[[], object]:
    malloc = ctypes.CDLL(None).malloc
    malloc.argtypes = [ctypes.c_size_t]
    malloc.restype = ctypes.c_void_p
    return partial(malloc, 1)


def _losing_now_and_then() -> Callable[[], object]:
    calls = count()

    def lose() -> None:
        if next(calls) % 50 == 0:
            _lose_an_object()

    return lose


# Each with what the checker must say of it.
LEAKS: dict[str, tuple[Call, str]] = {
    call.name: (call, complaint)
    for call, complaint in (
        (good("on purpose: a lost object", lambda: _lose_an_object), "leaks blocks"),
        (good("on purpose: one at every fiftieth call", _losing_now_and_then), "leaks blocks"),
        (good("on purpose: lost memory of the C heap", _losing_memory), "leaks bytes"),
        (good("on purpose: a lost reference", _losing_references), "leaks references"),
        (
            good("on purpose: a reference given back too often", _giving_back_too_much),
            "releases too often",
        ),
    )
}

"""Counts the Python functions that a call starts."""

import sys
from collections.abc import Callable
from threading import get_ident
from types import CodeType
from typing import Any

import faker

FAKER = faker.__file__.removesuffix("__init__.py")
MONITOR = sys.monitoring.PROFILER_ID


def calls_of(call: Callable[[], Any], within: str = "") -> int:
    """How often functions written in Python, in files below a folder, were started."""
    started = 0
    here = get_ident()  # a cluster of another test may still be at work

    def count(code: CodeType, offset: int) -> None:
        nonlocal started
        started += get_ident() == here and code.co_filename.startswith(within)

    sys.monitoring.use_tool_id(MONITOR, "calls of Python functions")
    try:
        sys.monitoring.register_callback(MONITOR, sys.monitoring.events.PY_START, count)
        sys.monitoring.set_events(MONITOR, sys.monitoring.events.PY_START)
        call()
    finally:
        sys.monitoring.set_events(MONITOR, 0)
        sys.monitoring.free_tool_id(MONITOR)
    return started

"""Hints for whoever has to mend a call: the name that was meant, and how to write an argument."""

from __future__ import annotations

from collections.abc import Callable, Iterable, Iterator, Mapping
from contextlib import contextmanager, suppress
from contextvars import ContextVar
from difflib import get_close_matches
from pathlib import Path
from typing import Any


def nearest(text: str, known: Mapping[str, Any], most: int = 1) -> str:
    """Names what is written nearly like a text, as in ``'sex' or 'six'``; empty if nothing is.

    ``known`` maps what is compared to what is named.
    """
    near = get_close_matches(text, known, n=most, cutoff=0.8)
    return " or ".join(repr(str(name)) for name in dict.fromkeys(known[each] for each in near))


def did_you_mean(text: object, known: Iterable[Any], most: int = 1) -> str:
    """Asks, with a leading blank, for the nearest known name, whatever its case, if one is near."""
    near = nearest(str(text).casefold(), {str(name).casefold(): name for name in known}, most)
    return f" Did you mean {near}?" if near else ""


def why_unreadable(path: Path, error: OSError) -> str:
    """Tells why a file cannot be read; where there is none, asks for the nearest name."""
    near = ""
    if isinstance(error, FileNotFoundError) and path.parent.is_dir():
        with suppress(OSError):  # a folder that may be entered and not listed
            near = did_you_mean(path, [path.with_name(each.name) for each in path.parent.iterdir()])
    return f"cannot be read: {error.strerror or error}.{near}"


def listed(names: Iterable[object]) -> str:
    """Lists names, each as it is written in Python."""
    return ", ".join(map(repr, names))


def _keyword(name: str, value: object) -> str:
    return f"{name}={'...' if value is ... else repr(value)}"


_spelling: ContextVar[Callable[[str, object], str]] = ContextVar("spelling", default=_keyword)


def argument(name: str, value: object = True) -> str:
    """Writes an argument as the caller would: a keyword of Python, or an option of the command.

    So one message serves both. The name is that of the keyword; an attribute's is its column's.
    """
    return _spelling.get()(name, value)


@contextmanager
def spelling(write: Callable[[str, object], str]) -> Iterator[None]:
    """Has :func:`argument` write in another way meanwhile."""
    token = _spelling.set(write)
    try:
        yield
    finally:
        _spelling.reset(token)

"""Hints for whoever has to mend a call: the name that was meant, and how to write an argument."""

from __future__ import annotations

import os
import shlex
from collections.abc import Callable, Iterable, Iterator, Mapping
from contextlib import contextmanager, suppress
from contextvars import ContextVar
from difflib import get_close_matches
from pathlib import Path
from typing import Any

from vantrel.wording import counted, shown, some, without_passwords

NOTES_LOGGER = "vantrel.notes"
"""Where that is logged which the command prints as a note."""

_MOST_NAMES = 20
_MOST_ROWS = 10

# Nobody has written one by mistake for another name that is longer.
_LONGEST_NAME = 200


def nearest(text: str, known: Mapping[str, Any], most: int = 1) -> str:
    """Names what is written nearly like a text, as in ``'sex' or 'six'``; empty if nothing is.

    ``known`` maps what is compared to what is named.
    """
    if len(text) > _LONGEST_NAME:
        return ""
    near = get_close_matches(text, known, n=most, cutoff=0.8)
    return " or ".join(repr(str(name)) for name in dict.fromkeys(known[each] for each in near))


def did_you_mean(text: object, known: Iterable[Any], most: int = 1) -> str:
    """Asks, with a leading blank, for the nearest known name, whatever its case, if one is near."""
    near = nearest(str(text).casefold(), {str(name).casefold(): name for name in known}, most)
    return f" Did you mean {near}?" if near else ""


def why_unreadable(path: Path, error: OSError) -> str:
    """Tells why a file cannot be read; where there is none, asks for the nearest name."""
    near = did_you_mean_path(path) if isinstance(error, FileNotFoundError) else ""
    return f"cannot be read: {error.strerror or error}.{near}"


def did_you_mean_path(path: Path) -> str:
    """Asks, with a leading blank, for the nearest name in the folder of a path, if one is near."""
    with suppress(OSError):  # no folder, or one that may be entered and not listed
        return did_you_mean(path, path.parent.iterdir())
    return ""


def named(name: object) -> str:
    """Writes the name of a file as it is, or as a shell takes it where a sign cannot be seen.

    A line break, a sign that turns the direction or an escape sequence would let it pose as more.
    What should have been the address of a database is shown without its password.
    """
    text = without_passwords(str(name))
    return text if text.isprintable() else _escaped(text)


def quoted(text: str) -> str:
    """Writes a word of a command that may be copied into a shell."""
    return shlex.quote(text) if text.isprintable() else _escaped(text)


def _escaped(text: str) -> str:
    signs = (
        ("\\" if sign in "\\'" else "") + sign
        if sign.isprintable()
        else "".join(f"\\x{byte:02x}" for byte in os.fsencode(sign))
        for sign in text
    )
    return f"$'{''.join(signs)}'"


def listed(names: Iterable[object]) -> str:
    """Lists names, each as it is written in Python; none at such length that nobody reads it."""
    return some([shown(repr(name)) for name in names], _MOST_NAMES)


_shows_values: ContextVar[bool] = ContextVar("shows_values", default=False)


def shows_values() -> bool:
    """Whether messages may have cells of a table in them, which logs are no place for."""
    return _shows_values.get()


@contextmanager
def showing_values(shows: bool) -> Iterator[None]:
    """Lets messages have cells of a table in them meanwhile, or not."""
    token = _shows_values.set(shows)
    try:
        yield
    finally:
        _shows_values.reset(token)


def unnamed(values: int, where: str) -> str:
    """Tells how many values there are and where, and how to have them named."""
    them = "it" if values == 1 else "them"
    return f"{counted(values, 'value')} in {where} ({argument('show_values')} names {them})"


def in_rows(numbers: Iterable[int]) -> str:
    """Lists the numbers of rows; of many the first."""
    rows = [str(number) for number in numbers]
    return f"row{'s' if len(rows) > 1 else ''} {some(rows, _MOST_ROWS)}"


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

"""Reads JSON that others wrote, without what JSON readers quietly let pass."""

import json
import math
from collections import Counter
from typing import Any

DEEPEST = 20
MOST_HOLDERS = 500_000
MOST_DIGITS = 18


class UnsoundJsonError(ValueError):
    """A text is JSON, but holds something that no one can mean; the message says where."""


def parse(text: str) -> Any:
    """Parses JSON.

    Raises:
        UnsoundJsonError: A key comes twice in an object, a number is infinite, not a number or has
            more than 18 digits, a text holds half a character, it is nested more than 20 deep, or
            there are more than 500,000 objects and lists.
        RecursionError: It is nested so deep that it cannot even be read.
        ValueError: It is no JSON.
    """
    # An object or a list takes much more memory than its brackets do. Brackets in texts count, too.
    if text.count("{") + text.count("[") > MOST_HOLDERS:
        raise UnsoundJsonError(f"it has more than {MOST_HOLDERS:,} objects and lists.")
    objects = _Objects()
    value = json.loads(text, object_pairs_hook=objects.take, parse_int=_integer)
    _check(value, "", DEEPEST, objects)
    return value


def inside(where: str, key: str | int) -> str:
    """Gives the path of what an object or a list has at a key, such as ``meta.labels``."""
    if isinstance(key, int):
        return f"{where}[{key}]"
    if key.isidentifier() and len(key) <= 40:
        return f"{where}.{key}" if where else key
    return f"{where}[{shown(key)}]"


def shown(value: object) -> str:
    """Shows a value as JSON has it, a long one by its start, and what JSON has not as a text."""
    is_text = isinstance(value, str)
    text = repr(value) if is_text else json.dumps(value, ensure_ascii=False, default=str)
    return text if len(text) <= 60 else f"{text[:56]} ..."


class _Objects:
    """Makes the objects and keeps the last one that has a key twice.

    The last one is not lost in another: what lies in an object is made before it.
    """

    def __init__(self) -> None:
        self.doubled: dict[str, Any] | None = None
        self.key = ""

    def take(self, pairs: list[tuple[str, Any]]) -> dict[str, Any]:
        members = dict(pairs)
        if len(members) < len(pairs):
            self.doubled = members
            times = Counter(key for key, _ in pairs)
            self.key = next(key for key, number in times.items() if number > 1)
        return members


def _integer(digits: str) -> int | float:
    return int(digits) if len(digits) <= MOST_DIGITS else math.inf


def _check(value: Any, where: str, depth: int, objects: _Objects) -> None:
    name = where or "it"
    if isinstance(value, str):
        _check_characters(value, name)
    elif isinstance(value, float) and not math.isfinite(value):
        number = "not a number" if math.isnan(value) else "infinite or too large"
        raise UnsoundJsonError(f"{name} is {number}.")
    elif isinstance(value, list | dict) and depth == 0:
        raise UnsoundJsonError(f"{name} is nested more than {DEEPEST} deep.")
    elif isinstance(value, list):
        for i, item in enumerate(value):
            _check(item, inside(where, i), depth - 1, objects)
    elif isinstance(value, dict):
        if value is objects.doubled:
            raise UnsoundJsonError(f"{name} has the key {shown(objects.key)} twice.")
        for key, item in value.items():
            _check_characters(key, f"a key of {name}")
            _check(item, inside(where, key), depth - 1, objects)


def _check_characters(text: str, name: str) -> None:
    try:
        text.encode()
    except UnicodeEncodeError as error:
        half = f"U+{ord(text[error.start]):04X}"
        raise UnsoundJsonError(f"{name} holds half a character, {half}.") from error

"""Describes what values of which types stand where in JSON, and checks that they do."""

from __future__ import annotations

import math
from collections.abc import Callable, Collection, Mapping
from typing import Any, NoReturn

from vantrel.util.strict_json import inside, shown

# Checks a value; the text is the path to it and begins the message of the error.
type Shape = Callable[[Any, str], None]


class ShapeError(ValueError):
    """A value is not what it should be; the message says where it is and what it should be."""


def refuse(value: Any, where: str, wanted: str) -> NoReturn:
    """Refuses a value.

    Raises:
        ShapeError: Always.
    """
    if isinstance(value, dict | list):
        found = f"{'an object' if isinstance(value, dict) else 'a list'} of {len(value):,}"
    else:
        found = shown(value)
    raise ShapeError(f"{where} is {found}, not {wanted}.")


def text(most: int | None = None) -> Shape:
    """A text, of so many characters at most."""

    def check(value: Any, where: str) -> None:
        if not isinstance(value, str):
            refuse(value, where, "a text")
        if most is not None and len(value) > most:
            raise ShapeError(f"{where} has {len(value):,} characters, more than {most:,}.")

    return check


def one_of(*known: str) -> Shape:
    """One of some texts."""

    def check(value: Any, where: str) -> None:
        if not isinstance(value, str) or value not in known:
            refuse(value, where, " or ".join(map(shown, known)))

    return check


def integer(least: int, most: int) -> Shape:
    """An integer from ``least`` to ``most``."""
    wanted = str(least) if least == most else f"an integer from {least:,} to {most:,}"

    def check(value: Any, where: str) -> None:
        if type(value) is not int or not least <= value <= most:
            refuse(value, where, wanted)

    return check


def number(most: float = math.inf) -> Shape:
    """A finite number from 0 to ``most``."""
    wanted = "a number from 0 on" if most == math.inf else f"a number from 0 to {most:g}"

    def check(value: Any, where: str) -> None:
        if type(value) not in (int, float) or not 0 <= value <= most or value == math.inf:
            refuse(value, where, wanted)

    return check


def or_null(shape: Shape) -> Shape:
    """Null, or what a shape describes."""

    def check(value: Any, where: str) -> None:
        if value is not None:
            shape(value, where)

    return check


def list_of(shape: Shape, least: int = 0) -> Shape:
    """A list of items of a shape, at least so many."""
    wanted = f"a list of at least {least}" if least else "a list"

    def check(value: Any, where: str) -> None:
        if not isinstance(value, list) or len(value) < least:
            refuse(value, where, wanted)
        for i, item in enumerate(value):
            shape(item, inside(where, i))

    return check


def mapping_of(shape: Shape, keys: Collection[str] | None = None) -> Shape:
    """An object whose values are of a shape, with any keys or only those that are known."""

    def check(value: Any, where: str) -> None:
        if not isinstance(value, dict):
            refuse(value, where, "an object")
        for key, item in value.items():
            if keys is not None and key not in keys:
                _refuse_key(key, where)
            shape(item, inside(where, key))

    return check


def record(required: Mapping[str, Shape], optional: Mapping[str, Shape] | None = None) -> Shape:
    """An object with a shape for each key, which must or may be there."""
    shapes = {**required, **(optional or {})}

    def check(value: Any, where: str) -> None:
        if not isinstance(value, dict):
            refuse(value, where, "an object")
        for key in required:
            if key not in value:
                raise ShapeError(f"{where or 'it'} lacks the key {shown(key)}.")
        for key, item in value.items():
            if key not in shapes:
                _refuse_key(key, where)
            shapes[key](item, inside(where, key))

    return check


def _refuse_key(key: str, where: str) -> None:
    raise ShapeError(f"{where or 'it'} has the key {shown(key)}, which is not known.")

"""What a file tells of itself: of which kind it is, and in which form."""

from __future__ import annotations

from typing import Any

import msgspec


class Head(msgspec.Struct):
    """What is read of a file before all else of it.

    Args:
        format: Of which kind it is.
        schema_version: The version of its form.
    """

    format: Any = None
    schema_version: Any = None


def later_form(version: object, newest: int) -> str:
    """Tells that the form of a file is a later one than is known here; empty if it is none."""
    if type(version) is not int or version <= newest:
        return ""
    return (
        f"its schema version is {version}, the newest known here is {newest}: install a newer"
        " vantrel"
    )

"""Reads files of TOML that anybody may have written."""

from __future__ import annotations

import tomllib
from collections.abc import Callable
from pathlib import Path
from typing import Any

import msgspec

from vantrel.errors import VantrelError
from vantrel.hints import named, why_unreadable
from vantrel.storage.files import read_whole
from vantrel.wording import shown

_MOST_CHARACTERS = 1_000
_MOST_PARTS = 1_000


def read_toml[T](
    path: Path,
    what: str,
    convert: Callable[[dict[str, Any]], T],
    error: type[VantrelError],
    most_bytes: int = 2**18,
) -> T:
    """Reads a file and makes of it what it stands for.

    Args:
        path: The file.
        what: What an error calls it.
        convert: Makes something of its content; raises ``ValueError`` or msgspec's
            ``ValidationError`` where that is wrong.
        error: What is raised where the file cannot be read, is no TOML or is wrong.
        most_bytes: How large it may be.
    """
    called = f"{what} {named(path)}"
    try:
        return convert(_parsed(read_whole(path, most_bytes).decode("utf-8-sig")))
    except OSError as cause:
        raise error(f"{called} {why_unreadable(path, cause)}") from cause
    except UnicodeDecodeError as cause:
        raise error(f"{called} is not in UTF-8: save it in that encoding.") from cause
    except (tomllib.TOMLDecodeError, RecursionError) as cause:
        raise error(f"{called} is not TOML: {shown(cause)}.") from cause
    except (msgspec.ValidationError, ValueError) as cause:
        text = shown(cause, _MOST_CHARACTERS).rstrip(".")
        raise error(f"{called}: {text}{'' if text.endswith('?') else '.'}") from cause


def _parsed(text: str) -> dict[str, Any]:
    # The time of a key grows with the square of its parts.
    if any(part.count(".") > _MOST_PARTS for part in text.split("=")):
        raise tomllib.TOMLDecodeError(f"A key has more than {_MOST_PARTS:,} parts")
    try:
        return tomllib.loads(text)
    except tomllib.TOMLDecodeError:
        raise
    except ValueError:  # Python tells how to have it read all the same
        raise tomllib.TOMLDecodeError("A number has too many digits") from None

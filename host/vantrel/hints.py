"""Finds the file that a mistyped name may mean."""

from __future__ import annotations

from collections.abc import Iterable
from difflib import get_close_matches
from pathlib import Path
from typing import Any


def suggestion(text: str, known: Iterable[Any]) -> str:
    """Asks for the known name that is nearest, without regard to case, if one is near."""
    by_folded = {str(name).casefold(): name for name in known}
    nearest = get_close_matches(text.casefold(), by_folded, n=1, cutoff=0.8)
    return f" Did you mean {by_folded[nearest[0]]!r}?" if nearest else ""


def nearby_file(path: Path, error: OSError) -> str:
    """Asks for the file of the same folder whose name is nearest, if the named one is not there.

    Args:
        path: The file that could not be opened.
        error: Why.

    Returns:
        A sentence with a leading blank; empty where nothing is near or something else is wrong.
    """
    if not isinstance(error, FileNotFoundError) or not path.parent.is_dir():
        return ""
    try:
        names = [str(path.with_name(each.name)) for each in path.parent.iterdir()]
    except OSError:  # a folder that may be entered and not listed
        return ""
    return suggestion(str(path), names)

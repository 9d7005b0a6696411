"""Finds the file that a mistyped name may mean."""

from __future__ import annotations

from pathlib import Path

from vantrel.fitting import suggestion


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

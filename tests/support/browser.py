"""Finds the browser that pages are tested in."""

import os
import shutil

# Names a browser that is not found by itself.
VARIABLE = "VANTREL_CHROMIUM"


def find_browser() -> str | None:
    """The path of Chromium, or None where there is none.

    Raises:
        FileNotFoundError: The environment names a browser that is not there.
    """
    named = os.environ.get(VARIABLE)
    if named:
        found = shutil.which(named)
        if found is None:
            raise FileNotFoundError(f"{VARIABLE} names {named!r}, which is no program.")
        return found
    names = ("chromium", "chromium-browser", "google-chrome", "google-chrome-stable")
    return next(filter(None, map(shutil.which, names)), None)

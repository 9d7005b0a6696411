"""Tries, within a bound, to search with patterns that somebody else wrote.

Python's search tries one way through a text after another: with ``(a+)+$`` there are more ways than
anybody can wait for, and neither a thread nor a signal can always stop it. The package ``regex``
has a limit of time, but its search is another one: it ends at once where that of ``re`` never does.
So the search is tried as it is, in a process that can be ended.
"""

from __future__ import annotations

import json
import subprocess
import sys
from collections.abc import Iterable

from vantrel.errors import ModelFileError

# All searches of one model; those of the usual patterns in 10,000 titles take a tenth of a second.
MOST_SECONDS = 5

_TRIAL = """
import json, re, sys, warnings
warnings.simplefilter("ignore")
patterns, values = json.load(sys.stdin)
for pattern in patterns:
    try:
        search = re.compile(pattern, re.IGNORECASE).search
    except (re.error, OverflowError, RecursionError) as error:
        sys.exit(f"{pattern!r:.60} is no regular expression ({error}): correct it.")
    for value in values:
        search(value)
"""


def try_patterns(patterns: Iterable[str], values: Iterable[str]) -> None:
    """Refuses patterns that cannot be searched for in the values of a model within a bound."""
    command = [sys.executable, "-I", "-S", "-c", _TRIAL]
    searches = json.dumps([sorted(patterns), list(values)])
    try:
        trial = subprocess.run(
            command,
            input=searches,
            text=True,
            capture_output=True,
            timeout=MOST_SECONDS,
            check=False,
        )
    except subprocess.TimeoutExpired:
        raise ModelFileError(
            f"cannot be used: to search with its patterns takes more than {MOST_SECONDS} seconds."
            " Fit it again with patterns in which no two repeats match the same characters."
        ) from None
    if trial.returncode:
        raise ModelFileError(f"cannot be used: pattern {' '.join(trial.stderr.split())}")

"""Accepts a stranger's pattern only if a search with it is fast on every text.

Python's search tries one way through a text after another. A pattern such as ``(a+)+$`` makes it
try more ways than anybody can wait for. A model file brings patterns along, so they are checked
before anything is searched with them: the time of a search with an accepted pattern is at most
proportional to the length of the text. The patterns of a configuration that the user wrote in
Python are the user's own and are not checked until they go to a file.
"""

import re
import warnings

from vantrel import genders as patterns
from vantrel.util.regex.syntax import UnsupportedPatternError, read
from vantrel.util.regex.ways import TooManyWaysError, check_ways

LONGEST_PATTERN = 5_000

# To compile a range without regard to case, `re` goes through all its characters.
_MOST_HYPHENS = 30

# These are what nearly every model has; a test makes sure that they would be accepted.
_KNOWN = frozenset(
    {
        patterns.GENDER_FEMALE,
        patterns.GENDER_MALE,
        patterns.GENDER_NON_BINARY,
        patterns.TITLE_FEMALE,
        patterns.TITLE_MALE,
        patterns.TITLE_NON_BINARY,
    }
)


class UnsafePatternError(ValueError):
    """A pattern is no regular expression, or a search with it may take too long."""


def check_pattern(pattern: str) -> None:
    """Makes sure that a search with a pattern is fast on every text.

    Raises:
        UnsafePatternError: It may not be, or cannot be told, or the pattern cannot be compiled. The
            message goes on after the pattern's name.
    """
    if pattern in _KNOWN:
        return
    if len(pattern) > LONGEST_PATTERN:
        raise UnsafePatternError(
            f"has {len(pattern):,} characters, more than {LONGEST_PATTERN:,}: shorten it."
        )
    if pattern.count("-") > _MOST_HYPHENS:
        raise UnsafePatternError(
            f"has {pattern.count('-'):,} hyphens, more than {_MOST_HYPHENS}: write fewer ranges."
        )
    _compile(pattern)
    try:
        check_ways(read(pattern))
    except UnsupportedPatternError as error:
        raise UnsafePatternError(
            f"uses {error}, which is not supported in a file: write it with characters, classes,"
            " groups, |, repeats, anchors and a leading (?i) only."
        ) from error
    except TooManyWaysError as error:
        raise UnsafePatternError(
            "could make a search endless: begin it with ^ and let no two repeats match the same"
            " characters, neither one in the other, as in (a+)+, nor side by side, as in a*a*."
        ) from error


def _compile(pattern: str) -> None:
    try:
        with warnings.catch_warnings():
            warnings.simplefilter("ignore", FutureWarning)  # what it is about is not supported
            re.compile(pattern)
    except (re.error, OverflowError, RecursionError) as error:
        raise UnsafePatternError(f"is no regular expression ({error}): correct it.") from error

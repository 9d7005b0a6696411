"""Makes new values fit into columns that are too short for them, where that is possible."""

from __future__ import annotations

import pyarrow as pa
import pyarrow.compute as pc

from vantrel.attributes import NAMES
from vantrel.databases.refusals import keeping
from vantrel.errors import DatabaseError
from vantrel.wording import counted, shown

# What reads as what it is when words are missing at its end.
_PROVIDERS = """
    address street_address street_name city name first_name last_name company job
    sentence text paragraph catch_phrase bs
"""
_WORDS = frozenset({*NAMES, "scrub", *(f"fake:{name}" for name in _PROVIDERS.split())})

# A domain that nobody can own, and hardly a shorter one.
_SHORT_DOMAIN = "a.example"


def fitted(new: pa.Array, most: int | None, column: str, what: str) -> pa.Array:
    """Gives the values of a column shortened to so many characters.

    Names lose words, then letters at their end. User names and e-mail addresses keep the code that
    makes them unique: they lose letters of the name, and addresses have a shorter domain.

    Args:
        new: The values.
        most: How many characters the column holds; None if as many as one likes.
        column: What an error calls the column.
        what: The attribute that it holds, or else what was done with it, as plans have it.

    Raises:
        DatabaseError: Some cannot be shortened so far.
    """
    if most is None or not pa.types.is_string(new.type):
        return new
    is_long = pc.fill_null(pc.greater(pc.utf8_length(new), most), False)
    if not pc.any(is_long).as_py():
        return new
    long = new.filter(is_long).to_pylist()
    short = [_shortened(text, most, what) for text in long]
    if None in short:
        raise DatabaseError(
            f"Column {shown(repr(column))} holds {counted(most, 'character')}, and what is made for"
            f" it has up to {max(map(len, long))}: make it longer, or keep it by"
            f" {keeping(column, what)}."
        )
    return pc.replace_with_mask(new, is_long, pa.array(short, pa.string()))


def _shortened(text: str, most: int, what: str) -> str | None:
    if what in _WORDS:
        return _in_words(text, most)
    if what == "username":
        return _account(text, most)
    if what == "email":
        account, _, domain = text.rpartition("@")
        ends = (f"@{domain}", f"@{_SHORT_DOMAIN}")
        made = ((_account(account, most - len(end)), end) for end in ends)
        return next((short + end for short, end in made if short), None)
    return None


def _in_words(text: str, most: int) -> str:
    """Leaves out words at the end, and letters of a first word that is too long by itself."""
    start = text[: most + 1].rpartition(" ")[0] or text[:most]
    return start.rstrip(" ,-")


def _account(text: str, most: int) -> str | None:
    """Leaves out letters of a name before a code."""
    name, _, code = text.rpartition(".")
    left = name[: max(0, most - len(code) - 1)].rstrip(".")
    short = f"{left}.{code}" if left else code
    return short if len(short) <= most else None

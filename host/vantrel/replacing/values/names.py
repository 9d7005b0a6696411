"""Prints of names, by which nobody gets a name of her own.

First names are compared by their first word and last names by their last one: so "Anna Maria dos
Santos" has the same halves in one column as in two.
"""

from __future__ import annotations

from typing import Any

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from vantrel.replacing.values.prints import NO_PRINT, Prints, is_all_ascii, layout, mixed, prints_of

_BLANK, _COMMA = ord(" "), ord(",")


def folded(texts: pa.Array) -> pa.Array:
    """Strips names of what does not tell them apart, such as case and accents; "" is missing."""
    if not is_all_ascii(texts):
        plain = pc.replace_substring_regex(pc.utf8_normalize(texts, "NFKD"), r"\p{M}+", "")
        plain = pc.replace_substring(plain, "\N{RIGHT SINGLE QUOTATION MARK}", "'")
        texts = pc.utf8_normalize(plain, "NFC")
    texts = pc.utf8_trim_whitespace(pc.utf8_lower(texts))
    if pc.any(pc.match_substring(texts, "  ")).as_py():
        texts = pc.replace_substring_regex(texts, r"\s+", " ")
    return pc.if_else(pc.equal(texts, ""), pa.scalar(None, pa.string()), texts)


def first_names(names: pa.Array) -> Prints:
    """Gives the prints of folded first names."""
    return _first_words(names, *_bounds(names))


def last_names(names: pa.Array) -> Prints:
    """Gives the prints of folded last names."""
    return _last_words(names, *_bounds(names))


def halves(names: pa.Array, is_last_first: Any) -> tuple[Prints, Prints]:
    """Gives the prints of the first and last names that folded full names consist of.

    Args:
        names: The full names. What stands before a comma is the last name in any language.
        is_last_first: Whether the language of each has the last name first.
    """
    starts, ends = _bounds(names)
    comma = _next(names, _COMMA, starts, ends)
    has_comma = comma < ends
    after = np.minimum(comma + 1, ends)
    after += np.append(layout(names)[0], np.uint8(0))[after] == _BLANK
    begin = np.where(has_comma, np.minimum(after, ends), starts)
    first = _first_words(names, begin, ends)
    last = _last_words(names, starts, comma)
    is_turned = is_last_first & ~has_comma
    return np.where(is_turned, last, first), np.where(is_turned, first, last)


def paired(first: Prints, last: Prints) -> Prints:
    """Gives prints of whole names, of those that have both halves."""
    made: Prints = mixed(first) ^ last
    made[(first == NO_PRINT) | (last == NO_PRINT)] = NO_PRINT
    return made


def _bounds(names: pa.Array) -> tuple[Any, Any]:
    _, starts, lengths = layout(names)
    return starts, starts + lengths


def _first_words(names: pa.Array, starts: Any, ends: Any) -> Prints:
    return _prints(names, starts, _next(names, _BLANK, starts, ends))


def _last_words(names: pa.Array, starts: Any, ends: Any) -> Prints:
    blanks = np.append(-1, np.flatnonzero(layout(names)[0] == _BLANK))
    last = blanks[np.searchsorted(blanks, ends) - 1]
    return _prints(names, np.maximum(last + 1, starts), ends)


def _next(names: pa.Array, sign: int, starts: Any, ends: Any) -> Any:
    """The place of the first such sign of each text, its end where it has none."""
    data, *_ = layout(names)
    places = np.append(np.flatnonzero(data == sign), len(data))
    return np.minimum(places[np.searchsorted(places, starts)], ends)


def _prints(names: pa.Array, starts: Any, ends: Any) -> Prints:
    made = prints_of(layout(names)[0], starts, ends - starts)
    is_gap = names.is_null().to_numpy(zero_copy_only=False)
    return np.where(is_gap, NO_PRINT, made)

"""What the rows of a table tell of their people: gender, country, and the prints of real names."""

from __future__ import annotations

from collections.abc import Callable
from typing import Any, NamedTuple

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from vantrel.config import PersonModelConfig
from vantrel.genders import keys_of
from vantrel.replacing.keys import as_texts
from vantrel.replacing.places import Places
from vantrel.replacing.prints import NO_PRINT, Prints, layout, mixed, prints, prints_of
from vantrel.replacing.roles import Roles

GENDERS = ("", "F", "M", "NB")
"""The keys of genders by their codes; 0 is what is not told."""

_CONFIG = PersonModelConfig()
_BLANK, _COMMA = ord(" "), ord(",")


class Told(NamedTuple):
    """What is told of people; 0 is what is not.

    Attributes:
        gender: The code of each one's gender, a place in :data:`GENDERS`.
        place: The number of each one's country in :class:`Places`.
        first: The print of each one's real first name.
        last: The same of last names.
    """

    gender: Any
    place: Any
    first: Prints
    last: Prints

    def of(self, rows: Any) -> Told:
        """Gives what is told of some of them."""
        return Told(*(values[rows] for values in self))


def told_by(batch: pa.RecordBatch, roles: Roles, places: Places) -> Told:
    """Reads what each row tells."""
    place = _first_told(
        batch, roles, "country", lambda texts: [places.number(text) for text in texts], np.uint16
    )
    gender = _first_told(batch, roles, "gender", lambda texts: _codes(texts, "gender"), np.uint8)
    by_title = _first_told(batch, roles, "title", lambda texts: _codes(texts, "title"), np.uint8)
    gender = np.where(gender == 0, by_title, gender)
    return Told(gender, place, *_names(batch, roles, places.is_last_first[place]))


def _first_told(
    batch: pa.RecordBatch,
    roles: Roles,
    attribute: str,
    read: Callable[[list[str | None]], Any],
    dtype: Any,
) -> Any:
    """Reads the columns of an attribute; the first that tells something counts."""
    told = np.zeros(batch.num_rows, dtype=dtype)
    for column in roles.columns.get(attribute, ()):
        own = by_value(
            batch.column(column), lambda values: np.array(read(values.to_pylist()), dtype=dtype)
        )
        told = np.where(told == 0, own, told)
    return told


def by_value(column: pa.Array, read: Callable[[pa.Array], Any]) -> Any:
    """Has each distinct text of a column read once; what is missing gives 0.

    Args:
        column: The column.
        read: Makes an array of codes, or of prints, of an array of texts.
    """
    encoded = as_texts(column).dictionary_encode()
    made = read(encoded.dictionary)
    made = np.append(made, made.dtype.type(0))
    indices = encoded.indices.cast(pa.int64()).fill_null(len(encoded.dictionary))
    return made[indices.to_numpy(zero_copy_only=False)]


def _codes(texts: list[str | None], attribute: str) -> list[int]:
    keys = keys_of(texts, _CONFIG, attribute)
    codes = {key: code for code, key in enumerate(GENDERS)}
    return [codes.get(keys.get(text, ""), 0) for text in texts]


def _names(batch: pa.RecordBatch, roles: Roles, is_last_first: Any) -> tuple[Prints, Prints]:
    """The prints of first and last names, of full names where there is no other."""
    first, last = (
        _prints_of_names(batch, roles, attribute) for attribute in ("firstname", "lastname")
    )
    for column in roles.columns.get("fullname", ()):
        if first.all() and last.all():
            break
        start, end = halves(folded(as_texts(batch.column(column))), is_last_first)
        first, last = np.where(first, first, start), np.where(last, last, end)
    return first, last


def _prints_of_names(batch: pa.RecordBatch, roles: Roles, attribute: str) -> Prints:
    made = np.zeros(batch.num_rows, dtype=np.uint64)
    for column in roles.columns.get(attribute, ()):
        own = by_value(batch.column(column), lambda texts: prints(folded(texts)))
        made = np.where(made, made, own)
    return made


def folded(texts: pa.Array) -> pa.Array:
    """Strips names of what does not tell them apart: case, accents, blanks around; "" is missing."""
    data, *_ = layout(texts)
    if data.max(initial=0) > 127:
        plain = pc.replace_substring_regex(pc.utf8_normalize(texts, "NFKD"), r"\p{M}+", "")
        texts = pc.utf8_normalize(plain, "NFC")
    texts = pc.utf8_trim_whitespace(pc.utf8_lower(texts))
    if pc.any(pc.match_substring(texts, "  ")).as_py():
        texts = pc.replace_substring_regex(texts, r"\s+", " ")
    return pc.if_else(pc.equal(texts, ""), pa.scalar(None, pa.string()), texts)


def halves(names: pa.Array, is_last_first: Any) -> tuple[Prints, Prints]:
    """Gives the prints of the first and last names that full names consist of.

    The last of several words is the last name, or the first word where the language has it so. What
    stands before a comma is the last name in any.
    """
    data, starts, lengths = layout(names)
    ends = starts + lengths
    is_gap = names.is_null().to_numpy(zero_copy_only=False)
    comma = _last_before(data, _COMMA, starts, ends)
    blank = _last_before(data, _BLANK, starts, ends)
    is_turned = (comma >= 0) | is_last_first
    cut = np.where(comma >= 0, comma, np.where(blank >= 0, blank, ends))
    rest = np.minimum(cut + 1, ends)
    rest += np.append(data, 0)[rest] == _BLANK
    rest = np.where(cut == ends, starts, np.minimum(rest, ends))  # a single word is both
    one, other = (
        np.where(is_gap, NO_PRINT, prints_of(data, begin, end - begin))
        for begin, end in ((starts, cut), (rest, ends))
    )
    return np.where(is_turned, other, one), np.where(is_turned, one, other)


def _last_before(data: Any, sign: int, starts: Any, ends: Any) -> Any:
    """The place of the last such sign of each text, -1 where it has none."""
    places = np.append(-1, np.flatnonzero(data == sign))
    last = places[np.searchsorted(places, ends) - 1]
    return np.where(last >= starts, last, -1)


def paired(first: Prints, last: Prints) -> Prints:
    """Gives prints of whole names, of those that have both halves."""
    made = mixed(first) ^ last
    made[(first == NO_PRINT) | (last == NO_PRINT)] = NO_PRINT
    return made

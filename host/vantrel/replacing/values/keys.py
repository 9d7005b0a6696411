"""The key of each row: what tells whose row it is, as bytes that do not depend on stored types."""

from __future__ import annotations

from collections.abc import Iterable, Sequence
from hashlib import blake2b

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from vantrel.replacing.values.gaps import missing_where_gap
from vantrel.replacing.values.prints import layout

type Digests = np.ndarray[tuple[int, int], np.dtype[np.uint64]]

WORDS = 8
"""The number of words of 64 bits that a digest has."""

# "7.0" is how a column of integers with gaps is often written to CSV.
_WHOLE_NUMBER = r"^-?(0|[1-9][0-9]*)\.0+$"
_TIME = r"^\d{4}-\d{2}-\d{2}[ T]\d{2}:\d{2}:\d{2}(\.\d+)?(Z|[+-]\d{2}:?\d{2})?$"
_END_OF_TIME = r"(:\d{2}(?:\.\d*[1-9])?)\.?0*(Z|[+-]\d{2}:?\d{2})?$"
_DIGITS_OF_UUID = [f"[0-9A-Fa-f]{{{count}}}" for count in (8, 4, 4, 4, 12)]
_UUID = f"(?:{'-'.join(_DIGITS_OF_UUID)}|{''.join(_DIGITS_OF_UUID)})"
_ANY_UUID = rf"^(?:{_UUID}|\{{{_UUID}\}})$"
_PARTS_OF_UUID = "^(.{8})(.{4})(.{4})(.{4})(.{12})$"
# Begins the keys of several parts, and those few of one part that begin with it themselves.
_PARTS = b"\0"
_ROW = b"\0row"
_OF = b"\0of"


def keys_of(columns: Sequence[pa.Array], of: str = "") -> pa.Array:
    """Gives the key of each row, of one column or several; null where one is missing.

    Args:
        columns: The columns.
        of: The kind of person that they tell apart: equal keys of two kinds are two people.
    """
    parts = [canonical(column) for column in columns]
    if of:
        return _joined(_OF, [pa.scalar(of.encode()), *parts])
    if len(parts) > 1:
        return _joined(_PARTS, parts)
    (key,) = parts
    is_taken = pc.starts_with(key, _PARTS)
    return pc.if_else(is_taken, _joined(_PARTS, parts), key) if pc.any(is_taken).as_py() else key


def keys_of_rows(columns: Sequence[pa.Array], name: str = "") -> pa.Array:
    """Gives keys to rows that have none: all that stands in them.

    So they do not depend on where a row stands and what other rows there are, and two rows are two
    people unless they are alike in every cell.

    Args:
        columns: All columns of the table.
        name: What the person is called where a row has several, who are different people.
    """
    parts = [pc.fill_null(canonical(column), b"") for column in columns]
    if name:
        parts.insert(0, pa.scalar(name.encode()))
    return _joined(_ROW, parts)


def canonical(column: pa.Array) -> pa.Array:
    """Writes values as binary: equal ones alike, whatever type they are stored in.

    Integers are written without a fraction, also where they are stored as floating point or
    decimal numbers or as texts such as "7.0"; days without a time of midnight; e-mail addresses in
    lower case; UUIDs, too, with dashes and without braces; all without blanks around them. Other
    texts stay as they are.
    """
    text = as_texts(column)
    data, *_ = layout(text)
    signs = data.tobytes()
    for sign, rewritten in _REWRITTEN.items():
        if sign in signs:  # for all texts at once, which takes next to nothing
            text = rewritten(text)
    if pc.any(_may_be_odd_uuid(text)).as_py():
        text = _uuids_alike(text)
    return text.cast(pa.binary())


def is_text(kind: pa.DataType) -> bool:
    """Whether values of a type are texts, or a dictionary of them."""
    kind = kind.value_type if pa.types.is_dictionary(kind) else kind
    tests = (pa.types.is_string, pa.types.is_large_string, pa.types.is_string_view)
    return any(test(kind) for test in tests)


def as_texts(column: pa.Array) -> pa.Array:
    """Writes values as strings, whole numbers without a fraction; what is a gap is missing."""
    kind = column.type
    if pa.types.is_dictionary(kind):
        column, kind = column.dictionary_decode(), kind.value_type
    if pa.types.is_string(kind):
        return missing_where_gap(column)
    if pa.types.is_floating(kind):
        return _texts_of_floats(column)
    if isinstance(kind, pa.UuidType):  # else its bytes would be taken for a text
        return pa.array([None if each is None else str(each) for each in column.to_pylist()])
    try:
        return missing_where_gap(column.cast(pa.string()))
    except (pa.ArrowNotImplementedError, pa.ArrowInvalid):  # lists, bytes that are no text
        written = [None if value is None else str(value) for value in column.to_pylist()]
        return pa.array(written, pa.string())


def _texts_of_floats(column: pa.Array) -> pa.Array:
    """Writes whole numbers without a fraction; what is not a number is missing."""
    numbers = column.cast(pa.float64()).to_numpy(zero_copy_only=False)
    is_whole = (np.abs(numbers) < 2.0**63) & (np.trunc(numbers) == numbers)
    whole = pa.array(np.where(is_whole, numbers, 0).astype(np.int64)).cast(pa.string())
    made = pc.if_else(pa.array(is_whole), whole, column.cast(pa.string()))
    return pc.if_else(pa.array(np.isnan(numbers)), pa.scalar(None, pa.string()), made)


def _addresses_in_lower_case(text: pa.Array) -> pa.Array:
    return pc.if_else(pc.match_substring(text, "@"), pc.utf8_lower(text), text)


def _whole_numbers_without_fraction(text: pa.Array) -> pa.Array:
    cut = pc.replace_substring_regex(text, r"\.0+$", "")
    return pc.if_else(pc.match_substring_regex(text, _WHOLE_NUMBER), cut, text)


def _times_without_needless_parts(text: pa.Array) -> pa.Array:
    """Writes times alike: a blank before the hours, no zeros behind the seconds, no midnight."""
    cut = pc.replace_substring_regex(text, _END_OF_TIME, r"\1\2")
    cut = pc.replace_substring(pc.replace_substring_regex(cut, "[ T]00:00:00$", ""), "T", " ")
    return pc.if_else(pc.match_substring_regex(text, _TIME), cut, text)


def _may_be_odd_uuid(text: pa.Array) -> pa.Array:
    """Tells by its length, which costs next to nothing, what may be a UUID to write otherwise."""
    length = pc.binary_length(text)
    is_odd = pc.is_in(length, value_set=pa.array([32, 34, 38], pa.int32()))
    is_usual = pc.equal(length, 36)
    if pc.any(is_usual).as_py():
        is_odd = pc.or_(is_odd, pc.and_(is_usual, pc.not_equal(pc.ascii_lower(text), text)))
    return is_odd


def _uuids_alike(text: pa.Array) -> pa.Array:
    """Writes UUIDs in lower case, with dashes and without braces."""
    bare = pc.ascii_lower(pc.replace_substring(pc.ascii_trim(text, "{}"), "-", ""))
    dashed = pc.replace_substring_regex(bare, _PARTS_OF_UUID, r"\1-\2-\3-\4-\5")
    return pc.if_else(pc.match_substring_regex(text, _ANY_UUID), dashed, text)


# What may have to be written otherwise has such a sign in it.
_REWRITTEN = {
    b" ": pc.utf8_trim_whitespace,
    b"@": _addresses_in_lower_case,
    b".0": _whole_numbers_without_fraction,
    b":": _times_without_needless_parts,
}


def _joined(start: bytes, parts: Iterable[pa.Array]) -> pa.Array:
    """Joins parts so that others never give the same: each has its length before it."""
    counted = [
        pc.binary_join_element_wise(
            pc.binary_length(part).cast(pa.string()).cast(pa.binary()), part, b":"
        )
        for part in parts
    ]
    return pc.binary_join_element_wise(pa.scalar(start), *counted, b"")


def digests(keys: Iterable[bytes], secret: bytes, before: bytes = b"") -> Digests:
    """Hashes keys with the secret, to :data:`WORDS` words each that are alike on every machine.

    Args:
        keys: The keys.
        secret: The secret.
        before: What stands before each key.
    """
    with_secret = blake2b(before, key=secret)
    made = []
    for key in keys:
        hashed = with_secret.copy()  # in less time than a new one takes to look at its arguments
        hashed.update(key)
        made.append(hashed.digest())
    words: Digests = np.frombuffer(b"".join(made), dtype="<u8").astype(np.uint64).reshape(-1, WORDS)
    return words

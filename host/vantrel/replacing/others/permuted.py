"""Gives texts other ones of the same form: digits stay digits, letters letters, all else stays."""

from __future__ import annotations

from itertools import pairwise
from typing import Any

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from vantrel.replacing.others.alphabets import HEX, NONE, NOT_ZERO, alphabets
from vantrel.replacing.others.feistel import TWEAK_BYTES, permuted
from vantrel.replacing.values.keys import canonical, digests

_NUMBER = r"^-?[0-9]+(\.[0-9]+)?$"
WHOLE_NUMBER = r"^-?[0-9]+$"
_ZERO, _MINUS = ord("0"), ord("-")

# A number stays on its side of each: so the image of what fits into a column does so, too.
_ENDS = [
    str(end)
    for bits in (32, 64)
    for end in ((1 << bits - 1) - 1, (1 << bits) - 1, -(1 << bits - 1))
] + [str(sign << 53) for sign in (1, -1)]  # the last whole number of floating point

# UUIDs, and where their digits are, but for those of the version and the variant.
_UUID = "^[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}$"
_UUID_LENGTH = 36
_UUID_DIGITS = np.array([n for n in range(_UUID_LENGTH) if n not in (8, 13, 14, 18, 19, 23)])


def permuted_texts(texts: pa.Array, key: bytes) -> pa.Array:
    """Gives each text its image among those of the same form and kind.

    Args:
        texts: Strings as :func:`vantrel.replacing.values.keys.canonical` writes them, none missing.
        key: What decides which.
    """
    kinds = _kinds(texts)
    uuids = _are_uuids(texts)
    made = _images(texts, uuids, key)
    rows = np.flatnonzero(_kinds(made) != kinds)
    while len(rows):  # on along the cycle, which leads back to a text of the same kind
        images = _images(made.take(pa.array(rows)), uuids[rows], key)
        is_done = np.zeros(len(texts), dtype=bool)
        is_done[rows] = True
        made = pc.replace_with_mask(made, pa.array(is_done), images)
        rows = rows[_kinds(images) != kinds[rows]]
    return made


def _kinds(texts: pa.Array) -> Any:
    """Numbers what must not become each other though it has one form."""
    lengths = pc.binary_length(texts)
    kinds = np.zeros(len(texts), dtype=np.int8)
    for end in _ENDS:
        is_beyond = pc.and_(pc.equal(lengths, len(end)), pc.greater(texts, end))
        if pc.any(is_beyond).as_py():
            is_beyond = pc.and_(is_beyond, pc.match_substring_regex(texts, WHOLE_NUMBER))
            kinds += is_beyond.to_numpy(zero_copy_only=False)
    is_canonical = pc.equal(canonical(texts).cast(pa.string()), texts).fill_null(False)
    kinds[_are_uuids(texts)] = len(_ENDS) + 1
    kinds[~is_canonical.to_numpy(zero_copy_only=False)] = -1
    return kinds


def _are_uuids(texts: pa.Array) -> Any:
    """Tells which texts are UUIDs."""
    if not pc.any(pc.equal(pc.binary_length(texts), _UUID_LENGTH)).as_py():
        return np.zeros(len(texts), dtype=bool)
    return pc.match_substring_regex(texts, _UUID).to_numpy(zero_copy_only=False)


def _images(texts: pa.Array, uuids: Any, key: bytes) -> pa.Array:
    """Gives the image of each text among all of its form.

    Args:
        texts: The texts.
        uuids: Which of them are taken for UUIDs.
        key: What decides which.
    """
    known = alphabets()
    codes = np.frombuffer("".join(texts.to_pylist()).encode("utf-32-le"), dtype="<u4")
    lengths = pc.utf8_length(texts).to_numpy()
    which, values = known.of[codes], known.place[codes]
    first = _first_digits(texts, codes, lengths)
    which[first] = np.where(codes[first] == _ZERO, NONE, NOT_ZERO)
    values[first] -= which[first] == NOT_ZERO
    starts = np.cumsum(lengths) - lengths
    its = starts[uuids][:, np.newaxis]
    which[its + np.arange(_UUID_LENGTH)] = NONE
    which[its + _UUID_DIGITS] = HEX
    digits = known.codes[HEX, : known.size[HEX]]
    values[its + _UUID_DIGITS] = np.searchsorted(digits, codes[its + _UUID_DIGITS])
    forms = _texts(np.where(which == NONE, codes, known.codes[which, 0]), lengths)
    tweaks = _tweaks(forms, key)

    radices = known.size[which]
    for rows, places in _by_count(radices > 1, lengths):
        values[places] = permuted(values[places], radices[places], tweaks[rows], key)
    return _texts(np.where(which == NONE, codes, known.codes[which, values]), lengths)


def _first_digits(texts: pa.Array, codes: Any, lengths: Any) -> Any:
    """Tells where numbers have their first digits: a zero stays, and another one is none."""
    starts = np.cumsum(lengths) - lengths
    is_number = pc.match_substring_regex(texts, _NUMBER).to_numpy(zero_copy_only=False)
    starts = starts[is_number]
    return starts + (codes[starts] == _MINUS)


def _by_count(is_place: Any, lengths: Any) -> Any:
    """Gives the texts that have equally many places, and where these are."""
    places = np.flatnonzero(is_place)
    text_of = np.repeat(np.arange(len(lengths)), lengths)
    counts = np.bincount(text_of[places], minlength=len(lengths))
    starts = np.cumsum(counts) - counts
    for count in np.flatnonzero(np.bincount(counts)).tolist():
        if count:
            rows = np.flatnonzero(counts == count)
            yield rows, places[starts[rows][:, np.newaxis] + np.arange(count)]


def _tweaks(forms: pa.Array, key: bytes) -> Any:
    encoded = forms.dictionary_encode()
    made = digests((form.encode() for form in encoded.dictionary.to_pylist()), key)
    tweaks = made.astype("<u8").view(np.uint8)[:, :TWEAK_BYTES]
    return tweaks[encoded.indices.to_numpy()]


def _texts(codes: Any, lengths: Any) -> pa.Array:
    whole = codes.astype("<u4").tobytes().decode("utf-32-le")
    ends = np.cumsum(lengths).tolist()
    parts = [whole[start:end] for start, end in pairwise([0, *ends])]
    return pa.array(parts, pa.string())

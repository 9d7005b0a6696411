"""Which characters take each other's places: those of one kind in one part of Unicode.

A part is 128 code points, a kind a category of letters or digits. So capitals take the places of
capitals, and all stay in their script, "é" among the letters of Latin 1. Everything else stays.
"""

from __future__ import annotations

import sys
from functools import cache
from typing import Any, NamedTuple
from unicodedata import ucd_3_2_0 as unicode  # of 2002, which no version of Python will change

import numpy as np

_PART_BITS = 7
_LAST_LETTER = 0x2FFFF  # behind it no planes but those of tags and private use

NONE = 0
"""The alphabet of what stays."""

NOT_ZERO = 1
"""That of the digits from 1 to 9, of which numbers have their first one."""

HEX = 2
"""That of the digits of UUIDs."""

_DIGITS = range(ord("0"), ord("9") + 1)


class Alphabets(NamedTuple):
    """All alphabets, by their numbers.

    Attributes:
        of: The number of the alphabet of each code point.
        place: The place of each code point in its alphabet.
        size: How many characters each has.
        codes: The code points of each.
    """

    of: Any
    place: Any
    size: Any
    codes: Any


@cache
def alphabets() -> Alphabets:
    """Finds the alphabets in all of Unicode."""
    found: dict[tuple[int, str], list[int]] = {}
    for code in range(_LAST_LETTER + 1):
        category = unicode.category(chr(code))
        if category[0] == "L" or category == "Nd":
            found.setdefault((code >> _PART_BITS, category), []).append(code)
    several = [codes for codes in found.values() if len(codes) > 1]
    known = [[0], list(_DIGITS[1:]), [*_DIGITS, *map(ord, "abcdef")], *several]
    made = Alphabets(
        of=np.zeros(sys.maxunicode + 1, dtype=np.uint16),
        place=np.zeros(sys.maxunicode + 1, dtype=np.uint8),
        size=np.array([len(codes) for codes in known], dtype=np.uint8),
        codes=np.zeros((len(known), 1 << _PART_BITS), dtype=np.uint32),
    )
    for number, codes in enumerate(known):
        made.codes[number, : len(codes)] = codes
        if number > HEX:
            made.of[codes] = number
            made.place[codes] = np.arange(len(codes))
    return made

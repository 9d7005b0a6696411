"""Telephone numbers and passwords, from words of digests."""

from __future__ import annotations

from collections.abc import Sequence
from typing import Any

import numpy as np
import phonenumbers
import pyarrow as pa
from phonenumbers import PhoneNumberFormat

from vantrel.attributes import COMPARED_DIGITS, FEWEST_COMPARED_DIGITS
from vantrel.config import PersonModelConfig
from vantrel.replacing.making.places import Place
from vantrel.replacing.values.prints import WORD, Prints, layout, words_from_each_byte
from vantrel.replacing.values.texts import NOTHING, Characters, digits_of
from vantrel.sampling.phones import KIND, FormatTable, formats_of, numbers_in

_OPEN, _ZERO = ord("x"), ord("0")

# Of a word, the upper bits choose the format, the lower ones are its digits.
_DIGIT_BITS = np.uint64(48)
_DIGITS_OF = np.uint64((1 << 48) - 1)

# By the number of digits that count, what keeps these of eight bytes.
_LAST_BYTES = np.array(
    [(1 << 64) - (1 << 8 * (WORD - count)) for count in range(COMPARED_DIGITS + 1)], dtype=np.uint64
)

_LOWER, _UPPER = "abcdefghijklmnopqrstuvwxyz", "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
_DIGITS, _SIGNS = "0123456789", "!?"
# The first four are of each class that a rule for passwords may ask for.
_OF_CLASSES = [_LOWER, _UPPER, _DIGITS, _SIGNS]
_SHORTEST, _LONGEST = 12, 16
_LETTER_BITS = 6
_LETTERS = np.array(
    [
        list((letters * 64)[:64].encode())
        for letters in _OF_CLASSES + [_LOWER + _UPPER + _DIGITS + _SIGNS] * (_LONGEST - 4)
    ],
    dtype=np.uint8,
)
_LETTERS_OF_A_WORD = 10


class Forms:
    """The formats of the numbers of places.

    Args:
        places: The places, by their numbers.
        attribute: What kind of number it is.
        is_valid: Whether they are valid ones, also where some are kept for fiction.
        is_international: Whether they begin with the code of the country.

    Attributes:
        numbers: How many numbers each place has.
    """

    def __init__(
        self,
        places: Sequence[Place],
        attribute: str,
        *,
        is_valid: bool,
        is_international: bool = False,
    ) -> None:
        kind = next(kind for name, kind in KIND.items() if name == attribute)
        otherwise = getattr(PersonModelConfig(), f"{attribute}_format")
        found = [
            formats_of(place.region, kind, is_valid=is_valid) or [otherwise] for place in places
        ]
        if is_international:
            found = [
                [_international(each, place.region) for each in formats]
                for place, formats in zip(places, found, strict=True)
            ]
        self.numbers = list(map(numbers_in, found))
        counts, self._start, written = FormatTable.of(found)
        self._count = counts.astype(np.uint64)
        is_open = written == _OPEN
        self._most_open = int(is_open.sum(axis=1).max())
        # Which of the digits stands at each place; none, the last of them, where it is not open.
        self._digit = np.where(is_open, np.cumsum(is_open, axis=1) - 1, self._most_open)
        self._written = np.where(is_open, np.uint8(_ZERO), written)

    def made(self, places: Any, words: Prints) -> Characters:
        """Gives each row a number of its place."""
        chosen = (words >> _DIGIT_BITS) % self._count[places]
        form = self._start[places] + chosen.astype(np.int64)
        digits = np.zeros((len(words), self._most_open + 1), dtype=np.uint8)
        digits[:, :-1] = digits_of(words & _DIGITS_OF, self._most_open)
        # Each by its place among all digits, for half of what NumPy takes to find it in its row.
        places = self._digit[form]
        places += np.arange(0, digits.size, digits.shape[1])[:, np.newaxis]
        made: Characters = self._written[form] + digits.take(places)
        return made


def _international(written: str, region: str) -> str:
    """Writes a format with the code of its country; as it is where that is not known."""
    try:
        number = phonenumbers.parse(written.replace("x", "0"), region)
    except phonenumbers.NumberParseException:
        return written
    signs = list(phonenumbers.format_number(number, PhoneNumberFormat.INTERNATIONAL))
    places = [place for place, sign in enumerate(signs) if sign.isdigit()]
    digits = [sign for sign in written if sign.isdigit() or sign == "x"]
    # The code of the country stands before the digits, and what they begin with may be gone.
    for place, digit in zip(reversed(places), reversed(digits), strict=False):
        if digit == "x":
            signs[place] = digit
    return "".join(signs)


def passwords(words: Any) -> Characters:
    """Gives passwords that pass the usual rules, from two words a row."""
    made = np.empty((len(words), _LONGEST), dtype=np.uint8)
    for place in range(_LONGEST):
        word = words[:, place // _LETTERS_OF_A_WORD]
        bits = word >> np.uint64(_LETTER_BITS * (place % _LETTERS_OF_A_WORD))
        made[:, place] = _LETTERS[place][(bits & np.uint64(63)).astype(np.int64)]
    lengths = _SHORTEST + (words[:, 1] >> np.uint64(40)) % np.uint64(_LONGEST - _SHORTEST + 1)
    made[np.arange(_LONGEST) >= lengths[:, np.newaxis]] = NOTHING
    return made


def ends_of_numbers(texts: pa.Array) -> Prints:
    """Gives the last digits of telephone numbers, 1 added; 0 where there are too few."""
    data, starts, lengths = layout(texts)
    is_digit = (data >= _ZERO) & (data <= _ZERO + 9)
    before = np.append(0, np.cumsum(is_digit, dtype=np.int32))
    last = before[starts + lengths]
    count = last - before[starts]
    # Before the digits of a text are those of the one before, which do not count.
    digits = np.append(np.zeros(WORD, dtype=np.uint8), data[is_digit] - np.uint8(_ZERO))
    words = words_from_each_byte(digits)[last] & _LAST_BYTES[np.minimum(count, COMPARED_DIGITS)]
    return np.where(count >= FEWEST_COMPARED_DIGITS, _number_of(words) + np.uint64(1), np.uint64(0))


def _number_of(words: Prints) -> Prints:
    """Reads eight digits, one a byte: pairs of them at once, then pairs of pairs."""
    words = (words * np.uint64(1 + (10 << 8)) >> np.uint64(8)) & np.uint64(0x00FF00FF00FF00FF)
    words = (words * np.uint64(1 + (100 << 16)) >> np.uint64(16)) & np.uint64(0x0000FFFF0000FFFF)
    return words * np.uint64(1 + (10_000 << 32)) >> np.uint64(32)

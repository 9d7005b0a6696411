"""The columns of made-up people, each from words of the digests of their keys.

word 0   first name                word 3, 4   password
word 1   last name                 word 5      mobile number
word 2   account and its domain    word 6, 7   home and work number
"""

from __future__ import annotations

from collections.abc import Callable
from functools import cached_property
from typing import Any

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from vantrel.replacing.making.numbers import Forms, ends_of_numbers, passwords
from vantrel.replacing.making.places import GENDERS, Places
from vantrel.replacing.making.pools import DOMAIN_BITS, NAME_BITS, Vocabulary
from vantrel.replacing.people.real import RealPeople
from vantrel.replacing.people.told import Told
from vantrel.replacing.values.keys import Digests, digests
from vantrel.replacing.values.names import paired
from vantrel.replacing.values.prints import Prints, mixed
from vantrel.replacing.values.texts import Characters, strings
from vantrel.rows import Ways
from vantrel.sampling.names import Order

CODE_BITS = 50
"""So many bits of the digest tell accounts apart."""

ACCOUNT_WORDS = 3
"""So many words of a digest, the first ones, decide about accounts."""

_CODE_LETTERS = np.frombuffer(b"abcdefghijkmnpqrstuvwxyz23456789", dtype=np.uint8)  # no l, o, 0, 1
_CODE_LENGTH = 10
_CODE_LETTER_BITS = np.uint64(5)

_WORD_OF_NUMBER = {"mobile_number": 5, "home_number": 6, "work_number": 7}

# Who would get her own name so many times has a name that all people of her pool bear.
_MOST_TRIES = 200
_STEP = 0x9E3779B97F4A7C15


class Makers:
    """What makes people of the places of a run; shared by all batches.

    Args:
        places: The places.
        ways: Which numbers people have, and in what letters their names are.
        key: What decides which names families have.
    """

    def __init__(self, places: Places, ways: Ways, key: bytes) -> None:
        self.places = places
        self._key = key
        self._ways = ways
        self.vocabulary = Vocabulary(latin=ways.latin)
        self._forms: dict[tuple[str, bool], tuple[int, Forms]] = {}

    def forms(self, attribute: str, *, is_international: bool = False) -> Forms:
        """The formats of numbers of all places that are known by now."""
        count = len(self.places.known)
        known, forms = self._forms.get((attribute, is_international), (0, None))
        if forms is None or known < count:
            forms = Forms(
                self.places.known,
                attribute,
                is_valid=self._ways.phone_numbers == "valid",
                is_international=is_international,
            )
            self._forms[attribute, is_international] = count, forms
        return forms

    def words_of_families(self, families: Prints) -> Prints:
        """Gives a word to each family of a household, which chooses its last name."""
        distinct, which = np.unique(families, return_inverse=True)
        words: Prints = digests((each.tobytes() for each in distinct.astype("<u8")), self._key)[
            :, 0
        ]
        return words[which]

    @property
    def orders(self) -> list[Order]:
        """How the people of each place join their names."""
        return self.places.latin_orders if self._ways.latin else self.places.orders

    def pools(self, told: Told, digests: Digests) -> Any:
        """The pool of each person; one of women's or men's names where no gender is told."""
        either = 1 + (digests[:, 0] & np.uint64(1)).astype(np.int64)
        gender = np.where(told.gender == 0, either, told.gender)
        kinds = told.place.astype(np.int64) * len(GENDERS) + gender
        numbers = np.bincount(kinds)  # as many of each; then the pool of each that there is
        for kind in np.flatnonzero(numbers).tolist():
            place, code = divmod(kind, len(GENDERS))
            numbers[kind] = self.vocabulary.number(self.places.known[place].locale, GENDERS[code])
        return numbers[kinds]


class MadeUp:
    """Made-up people; a column of them is made when it is asked for.

    Args:
        digests: The digest of each one's key.
        told: What is told of each real one.
        makers: What makes them.
        avoided: Real people whose full names and numbers nobody is to get; None if that may be.
    """

    def __init__(
        self, digests: Digests, told: Told, makers: Makers, avoided: RealPeople | None = None
    ) -> None:
        self._digests = digests
        self._told = told
        self._makers = makers
        self._words = makers.vocabulary
        self._pools = makers.pools(told, digests)
        self._avoided = avoided

    def column(self, attribute: str) -> pa.Array:
        """Makes an attribute of all of them, as strings."""
        if attribute in _WORD_OF_NUMBER:
            return self.number(attribute)
        made: pa.Array = getattr(self, f"_{attribute}")
        return made

    @cached_property
    def names(self) -> Prints:
        """The prints of their full names."""
        return paired(self._words.first_prints[self._first], self._words.last_prints[self._last])

    @property
    def accounts(self) -> Prints:
        """Prints of their user names."""
        first, last = (self._words.plain_prints[each] for each in (self._first, self._last))
        made: Prints = mixed(paired(first, last) ^ self._codes)
        return made

    @property
    def _codes(self) -> Prints:
        """What tells their accounts apart, :data:`CODE_BITS` of each."""
        return self._digests[:, 2] >> np.uint64(64 - CODE_BITS)

    @cached_property
    def _first(self) -> Any:
        """The numbers of first names: none has her own."""

        def pick(rows: Any, words: Prints) -> Any:
            return self._words.picked("first", self._pools[rows], _bits_of_names(words))

        def is_refused(rows: Any, picked: Any) -> Any:
            return self._words.first_prints[picked] == self._told.first[rows]

        return _first_allowed(self._digests[:, 0], pick, is_refused)

    @cached_property
    def _last(self) -> Any:
        """The numbers of last names: none has her own, nor the whole name of whom to avoid.

        The people of a family have one, and so none has another one's own.
        """
        families = self._told.family
        in_family = np.flatnonzero(families)
        words = self._digests[:, 1].copy()
        if len(in_family):
            words[in_family] = self._makers.words_of_families(families[in_family])

        def pick(rows: Any, words: Prints) -> Any:
            bits = _bits_of_names(words)
            picked = self._words.picked("last", self._pools[rows], bits)
            if len(in_family):
                shared = np.flatnonzero(families[rows])
                picked[shared] = self._words.shared(self._pools[rows[shared]], bits[shared])
            return picked

        def is_refused(rows: Any, picked: Any) -> Any:
            last, own = self._words.last_prints[picked], self._told.last[rows]
            is_own = last == own
            if len(in_family):
                other = self._words.last_prints[self._words.other_forms[picked]]
                is_own |= (other == own) & (families[rows] != 0)
            if self._avoided is None:
                return is_own
            first = self._words.first_prints[self._first[rows]]
            return is_own | self._avoided.names.has(paired(first, last))

        return _first_allowed(words, pick, is_refused)

    @cached_property
    def _firstname(self) -> pa.Array:
        return self._words.names.take(pa.array(self._first))

    @cached_property
    def _lastname(self) -> pa.Array:
        return self._words.names.take(pa.array(self._last))

    @cached_property
    def _fullname(self) -> pa.Array:
        """Names in the order and with the separator of each one's place."""
        orders = self._makers.orders
        is_turned = np.array([order.is_last_first for order in orders])[self._told.place]
        start, end = self._firstname, self._lastname
        if is_turned.any():
            turned = pa.array(is_turned)
            start, end = pc.if_else(turned, end, start), pc.if_else(turned, start, end)
        separators = pa.array([order.separator for order in orders], pa.string())
        between = separators.take(pa.array(self._told.place))
        return pc.binary_join_element_wise(start, end, between)

    def inverted(self) -> pa.Array:
        """Full names with the last name first, before a comma, as lists have them."""
        return pc.binary_join_element_wise(self._lastname, self._firstname, ", ")

    @cached_property
    def _username(self) -> pa.Array:
        first, last = (self._words.plain.take(pa.array(each)) for each in (self._first, self._last))
        return pc.binary_join_element_wise(first, last, strings(_written(self._codes)), ".")

    @cached_property
    def _email(self) -> pa.Array:
        bits = (self._digests[:, 2] & np.uint64((1 << DOMAIN_BITS) - 1)).astype(np.int64)
        domains = self._words.domains.take(
            pa.array(self._words.picked("domain", self._pools, bits))
        )
        return pc.binary_join_element_wise(self._username, domains, "@")

    @cached_property
    def _password(self) -> pa.Array:
        return strings(passwords(self._digests[:, 3:5]))

    def number(self, attribute: str, *, is_international: bool = False) -> pa.Array:
        """Makes the numbers of all of them, from abroad the same ones."""
        words = self._digests[:, _WORD_OF_NUMBER[attribute]]
        if self._avoided is not None:
            words = self._words_of_nobodys(words, self._makers.forms(attribute), self._avoided)
        forms = self._makers.forms(attribute, is_international=is_international)
        return strings(forms.made(self._told.place, words))

    def _words_of_nobodys(self, words: Prints, forms: Forms, avoided: RealPeople) -> Any:
        """The first words that choose numbers of no real person."""

        def is_refused(rows: Any, picked: Prints) -> Any:
            numbers = strings(forms.made(self._told.place[rows], picked))
            return avoided.numbers.has(ends_of_numbers(numbers))

        return _first_allowed(words, lambda _, words: words.copy(), is_refused)


def _first_allowed(
    words: Prints, pick: Callable[[Any, Prints], Any], is_refused: Callable[[Any, Any], Any]
) -> Any:
    """Picks for each row, and again with the next word of its sequence while it is refused.

    Args:
        words: The first word of each row.
        pick: Picks for rows, of which there are words.
        is_refused: Tells of which rows the picks are refused.
    """
    rows = np.arange(len(words))
    picked = pick(rows, words)
    for tries in range(1, _MOST_TRIES):
        rows = rows[is_refused(rows, picked[rows])]
        if not len(rows):
            break
        step = np.uint64(tries * _STEP % (1 << 64))
        picked[rows] = pick(rows, mixed(words[rows] + step))
    return picked


def _bits_of_names(words: Prints) -> Any:
    """The bits of words that choose names from pools."""
    return (words >> np.uint64(64 - NAME_BITS)).astype(np.int64)


def _written(codes: Prints) -> Characters:
    """Writes codes by letters and digits that nobody takes for each other."""
    places = np.arange(_CODE_LENGTH, dtype=np.uint64) * _CODE_LETTER_BITS
    digits = (codes[:, np.newaxis] >> places) & np.uint64(len(_CODE_LETTERS) - 1)
    written: Characters = _CODE_LETTERS[digits.astype(np.int64)]
    return written

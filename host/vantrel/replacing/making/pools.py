"""Pools: names by Faker's weights for each gender and locale, drawn once with a fixed seed.

A name is picked from a pool by bits of a person's digest, so that it is as frequent as Faker makes
it, to the accuracy of as many draws as the pool has.
"""

from __future__ import annotations

from functools import lru_cache
from typing import Any, NamedTuple

import numpy as np
import pandas as pd
import pyarrow as pa

from vantrel.replacing.making.families import forms_of
from vantrel.replacing.making.places import faker_in
from vantrel.replacing.values.names import first_names, folded, last_names
from vantrel.replacing.values.prints import Prints, prints
from vantrel.rows.form import AS_MADE
from vantrel.sampling.addresses import Accounts
from vantrel.without_table import people

NAME_BITS = 17
DOMAIN_BITS = 13

_SEED = 0

# The share of men's last names for which that of women of the same family must be known.
_FEWEST_PAIRED = 0.5

# Two of these, a code and what joins them are within the 64 characters that an address may have
# before its "@".
_LONGEST_PLAIN = 24
_PLAIN_OF_NOTHING = "x"


class Pool(NamedTuple):
    """Numbers of names, each as often as it was drawn.

    Attributes:
        first: Of first names.
        last: Of last names.
        domain: Of domains.
    """

    first: Any
    last: Any
    domain: Any


class Vocabulary:
    """All names that may be given in a run, each with a number, and the pools that have them.

    Args:
        latin: Whether they are written in Latin letters.

    Attributes:
        names: The first and last names.
        plain: How each is written in accounts.
        first_prints: The print of each as a first name, as of real ones.
        last_prints: The same as a last name.
        plain_prints: The prints of what is written in accounts.
        domains: The domains of e-mail addresses.
        other_forms: For each name that families share the number of the other gender's form, else
            its own.
    """

    def __init__(self, *, latin: bool = False) -> None:
        self._latin = latin
        self.names = self.plain = self.domains = pa.array([], pa.string())
        self.first_prints: Prints = np.zeros(0, dtype=np.uint64)
        self.last_prints: Prints = np.zeros(0, dtype=np.uint64)
        self.plain_prints: Prints = np.zeros(0, dtype=np.uint64)
        self._pools: list[Pool] = []
        self._starts: list[Pool] = []  # what is added to the numbers of each pool
        self._numbers: dict[tuple[str, str], int] = {}
        self._kinds: list[tuple[str, str]] = []
        self._families: dict[str, tuple[Any, Any]] = {}
        self.other_forms: Any = np.zeros(0, dtype=np.int64)

    def number(self, locale: str, gender: str) -> int:
        """Gives the number of the pool of a locale and the key of a gender; draws it if need be."""
        if (locale, gender) not in self._numbers:
            self._numbers[locale, gender] = len(self._pools)
            self._kinds.append((locale, gender))
            self._add(_drawn(locale, gender, self._latin))
        return self._numbers[locale, gender]

    def picked(self, part: str, pools: Any, bits: Any) -> Any:
        """Gives a number from each row's pool.

        Args:
            part: ``first``, ``last`` or ``domain``.
            pools: The number of each row's pool.
            bits: The place in it, for each row.
        """
        picked = np.zeros(len(pools), dtype=np.int64)
        for number in np.flatnonzero(np.bincount(pools)):
            rows = np.flatnonzero(pools == number)
            picked[rows] = getattr(self._pools[number], part)[bits[rows]]
            picked[rows] += getattr(self._starts[number], part)
        return picked

    def shared(self, pools: Any, bits: Any) -> Any:
        """Gives the numbers of families' last names, in the form of the gender of each row's pool.

        Args:
            pools: The number of each row's pool.
            bits: What chooses the name, whatever the gender is.
        """
        picked = np.zeros(len(pools), dtype=np.int64)
        for number in np.flatnonzero(np.bincount(pools)).tolist():
            rows = np.flatnonzero(pools == number)
            names = self._names_of_families(number)
            picked[rows] = names[bits[rows] % len(names)]
        return picked

    def _names_of_families(self, number: int) -> Any:
        """The last names of families as often as they are drawn, in the form of a pool's gender.

        Where Faker has few families of which both forms are known, each gender has its own names.
        """
        locale, gender = self._kinds[number]
        if locale not in self._families:
            self._families[locale] = self._paired(locale)
        men, women = self._families[locale]
        return self._last_names(number) if len(men) == 0 else women if gender == "F" else men

    def _paired(self, locale: str) -> tuple[Any, Any]:
        """Gives men's last names, as often as they are drawn, and those of women beside them."""
        men, women = (self._last_names(self.number(locale, gender)) for gender in "MF")
        number_of, by_man = self._by_text(women), self._by_text(men)
        woman_of = np.full(len(self.names), -1)
        for man, woman in forms_of(list(by_man), number_of).items():
            woman_of[by_man[man]] = number_of[woman]
        drawn = men[woman_of[men] >= 0]
        if len(drawn) < _FEWEST_PAIRED * len(men):
            return drawn[:0], drawn[:0]
        self.other_forms[woman_of[drawn]] = drawn
        self.other_forms[drawn] = woman_of[drawn]
        return drawn, woman_of[drawn]

    def _last_names(self, number: int) -> Any:
        return self._pools[number].last.astype(np.int64) + self._starts[number].last

    def _by_text(self, numbers: Any) -> dict[str, int]:
        distinct = np.unique(numbers)
        texts = self.names.take(pa.array(distinct)).to_pylist()
        return dict(zip(texts, distinct.tolist(), strict=True))

    def _add(self, drawn: _Drawn) -> None:
        """Adds a pool, with its names behind all others."""
        self._pools.append(drawn.pool)
        self._starts.append(Pool(len(self.names), len(self.names), len(self.domains)))
        self.names = pa.concat_arrays([self.names, drawn.names])
        self.plain = pa.concat_arrays([self.plain, drawn.plain])
        self.domains = pa.concat_arrays([self.domains, drawn.domains])
        more = np.arange(len(self.other_forms), len(self.names))
        self.other_forms = np.concatenate([self.other_forms, more])
        names = folded(drawn.names)
        self.first_prints = np.concatenate([self.first_prints, first_names(names)])
        self.last_prints = np.concatenate([self.last_prints, last_names(names)])
        self.plain_prints = np.concatenate([self.plain_prints, prints(drawn.plain)])


class _Drawn(NamedTuple):
    """A pool with the names that it has."""

    pool: Pool
    names: pa.Array
    plain: pa.Array
    domains: pa.Array


@lru_cache(maxsize=64)
def _drawn(locale: str, gender: str, latin: bool) -> _Drawn:
    """Draws a pool as a sample of such people has names, from sources of its own."""
    named = people(
        1 << NAME_BITS,
        countries=[locale],
        genders=[gender],
        columns=["firstname", "lastname"],
        seed=_SEED,
        latin=latin,
    )
    first, names = _numbered(named["firstname"])
    last, last_names = _numbered(named["lastname"])
    domain, domains = _domains(locale)
    pool = Pool(*map(_small, (first, last + len(names), domain)))
    both = pa.concat_arrays([names, last_names])
    return _Drawn(pool, both, _plain(both, locale), domains)


@lru_cache(maxsize=64)
def _domains(locale: str) -> tuple[Any, pa.Array]:
    """Draws the numbers of domains, and these."""
    emails = people(1 << DOMAIN_BITS, countries=[locale], columns=["email"], seed=_SEED)["email"]
    return _numbered(emails.str.partition("@")[2])


def _numbered(texts: pd.Series) -> tuple[Any, pa.Array]:
    """Numbers texts in the order in which they first come, and gives these."""
    encoded = pa.array(texts, pa.string(), from_pandas=True)
    if isinstance(encoded, pa.ChunkedArray):
        encoded = encoded.combine_chunks()
    encoded = encoded.dictionary_encode()
    return encoded.indices.to_numpy().astype(np.int64), encoded.dictionary


def _small(numbers: Any) -> Any:
    """Stores numbers in as few bytes as hold the largest: there may be hundreds of pools."""
    return numbers.astype(np.min_scalar_type(int(numbers.max())))


def _plain(names: pa.Array, locale: str) -> pa.Array:
    """Writes names as accounts have them, in ASCII and cut where they are long."""
    accounts = Accounts([locale.partition("_")[0]], [faker_in(locale)], AS_MADE)
    lower = pd.Series([name.lower() for name in names.to_pylist()])
    written = accounts.usernames(lower.array, np.zeros(len(lower), dtype=np.int64))
    return pa.array(
        [plain[:_LONGEST_PLAIN].strip("._-") or _PLAIN_OF_NOTHING for plain in written],
        pa.string(),
    )

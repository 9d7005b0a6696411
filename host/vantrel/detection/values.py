"""Judges by its values whether a column is what its name says, or what it is."""

from __future__ import annotations

import re
from collections import Counter
from collections.abc import Callable
from itertools import islice

import numpy as np
import pandas as pd

from vantrel.config import PersonModelConfig
from vantrel.detection.names import NAME, PHONE, words_of
from vantrel.first_names import first_names
from vantrel.genders import by_gender, understood
from vantrel.util.locale.locale import recognise, unknown_places

SAMPLE_SIZE = 10_000

# Shares of a column's rows: what makes the values agree with a name, and what they tell alone.
_AGREEING = 0.5
_TELLING = 0.9
_MOST = 0.7

# So many values tell that a column is not of full names.
_FEW = 50

# A column of genders, titles or countries has no more distinct values.
_MOST_CATEGORIES = 300

# Of a value no more is looked at: nothing of a person is longer.
LONGEST = 1_000

_EMAIL = re.compile(r"[^@\s]+@[^@\s]+\.[^@\s.]+")
_NUMBER = re.compile(r"\+?[\d\s()./-]+(?:(?:x|ext\.?)\s*\d+)?", re.IGNORECASE)
_MARKED_NUMBER = re.compile(r"(?:\+|00|\(\+?\d)[\d\s()./-]+")
_FEWEST_DIGITS, _MOST_DIGITS = 6, 15
_LETTER = re.compile(r"[^\W\d_]")
_LOGIN = re.compile(r"[^\W\d_]\S*")
_NAME_PART = r"[^\W\d_][^\s\d@;:/,]*"
_NAME_PARTS = re.compile(rf"{_NAME_PART}(?:,?\s+{_NAME_PART}){{1,5}}")

# What is written small in a name; all else that is so makes it a sentence: "Ann Lee called".
_PARTICLES = frozenset(
    """
    af al av bin binti da dal de degli dei del della den der des di do dos du e el ibn i la le lo
    los of op 't 's ten ter und van vom von vor y z zu zum zur
    """.split()
)

_FIRMS = frozenset(
    """
    ag association bank bv co college company corp corporation foundation gbr gmbh group holding
    hospital hotel inc institute kg limited llc llp ltd nv oy plc sa sarl school services society
    solutions spa srl systems technologies university
    """.split()
)


def first_values(column: pd.Series) -> list[object]:
    """The first 10,000 values of a column that are neither missing nor empty texts."""
    present = np.flatnonzero(column.notna() & (column != ""))[:SAMPLE_SIZE]
    return column.iloc[present].tolist()


class Values:
    """The values that a column has in its first rows without a missing one.

    Args:
        column: The column. Only its first 10,000 values that are not missing are looked at, each
            distinct one once, so that judging a long column takes no longer than a short one.
        config: The patterns of genders and titles.
    """

    def __init__(self, column: pd.Series, config: PersonModelConfig) -> None:
        self._rows = Counter(str(value)[:LONGEST].strip() for value in first_values(column))
        self._rows.pop("", None)
        self._config = config
        self._passing: dict[Callable[[str], object], set[str]] = {}

    @property
    def is_empty(self) -> bool:
        """Whether all values are missing or blank."""
        return not self._rows

    def unlike(self, kind: str) -> str:
        """The most frequent of the values that are not of a kind."""
        fits = self._fitting(kind)
        return max((value for value in self._rows if value not in fits), key=self._rows.__getitem__)

    def agreement(self, kind: str) -> float:
        """The share of the rows whose value is of a kind, 0 if it is too low to agree with it.

        Genders agree only if women's and men's are understood, or all are: with "M" and "H" (mujer,
        hombre), "M" would be taken for male.
        """
        fitting = self._fitting(kind)
        share = self._share(fitting)
        if kind == "gender" and len(fitting) < len(self._rows) and not self._has_both(kind):
            return 0.0
        return share if share >= _AGREEING else 0.0

    @property
    def are_full_names(self) -> bool:
        """Whether the values look like "First Last" or "Last, First", and not like firms."""
        return self._share(set(filter(is_full_name, self._rows))) >= _AGREEING

    def told(self, *, has_country: bool = False) -> dict[str, float]:
        """Maps the kinds that the values tell without a name to the share that is of them.

        Args:
            has_country: Whether there is a column of countries, and none is looked for.
        """
        kinds = {
            "gender": self._has_both("gender"),
            "title": self._has_both("title"),
            "email": True,
            PHONE: all(map(has_mark_of_phone, self._fitting(PHONE))),
            "country": not has_country and self._are_names_of_countries(),
            "fullname": self._are_names_of_people(),
        }
        shares = {kind: self.agreement(kind) for kind, told in kinds.items() if told}
        return {kind: share for kind, share in shares.items() if share >= _TELLING}

    def _are_names_of_people(self) -> bool:
        """Whether nearly all look like full names, most of them with a known first name."""
        first = list(islice(self._rows, _FEW))
        if 2 * sum(map(_is_no_sentence, first)) < len(first):
            return False
        names = set(filter(_is_no_sentence, self._rows))
        if self._share(names) < _TELLING:
            return False
        return self._share({name for name in names if _has_known_first_name(name)}) >= _MOST

    def _share(self, values: set[str]) -> float:
        total = sum(self._rows.values())
        return sum(self._rows[value] for value in values) / total if total else 0.0

    def _fitting(self, kind: str) -> set[str]:
        if kind in ("gender", "title"):
            return understood(by_gender(self._rows, self._config, kind))
        if kind == "country":
            return set(self._rows).difference(unknown_places(self._rows))
        test = _TESTS[kind]  # many a test is of several kinds, and takes long
        if test not in self._passing:
            self._passing[test] = set(filter(test, self._rows))
        return self._passing[test]

    def _has_both(self, kind: str) -> bool:
        """Whether there are few distinct values, and those of women and of men among them."""
        if len(self._rows) > _MOST_CATEGORIES:
            return False
        sorted_values = by_gender(self._rows, self._config, kind)
        return bool(sorted_values["F"] and sorted_values["M"])

    def _are_names_of_countries(self) -> bool:
        """Whether all are countries, half of them more than short codes.

        Short codes alone are also states, languages and much else.
        """
        if len(self._rows) > _MOST_CATEGORIES:
            return False
        found = {value: recognise(value) for value in self._rows if len(value) > 3}
        names = sum(1 for place in found.values() if place and place.country)
        return 1 < len(self._rows) <= 2 * names and not unknown_places(self._rows)


def is_email(value: str) -> bool:
    """Whether a value has the form of an e-mail address."""
    return bool(_EMAIL.fullmatch(value))


def is_phone(value: str) -> bool:
    """Whether a value can be a telephone number."""
    if not _NUMBER.fullmatch(value):
        return False
    return _FEWEST_DIGITS <= sum(map(str.isdigit, value)) <= _MOST_DIGITS


def has_mark_of_phone(value: str) -> bool:
    """Whether a number has a mark, such as "+", that no other numbers have."""
    return bool(_MARKED_NUMBER.fullmatch(value))


def is_full_name(value: str) -> bool:
    """Whether a value looks like "First Last" or "Last, First", and not like a firm."""
    return bool(_NAME_PARTS.fullmatch(value)) and _FIRMS.isdisjoint(words_of(value.lower()))


def _is_no_sentence(value: str) -> bool:
    """Whether a value looks like a full name and has no word that is written small."""
    small = (word for word in value.split() if word[0].islower())
    return is_full_name(value) and _PARTICLES.issuperset(small)


def _has_known_first_name(full_name: str) -> bool:
    """Whether the first word, behind a comma if there is one, is a first name, or one of two."""
    words = (full_name.partition(",")[2] or full_name).lower().split()
    likely = words if len(words) == 2 else words[:1]
    return not first_names().isdisjoint(likely)


def _is_name(value: str) -> bool:
    return bool(_LETTER.search(value)) and "@" not in value


_TESTS: dict[str, Callable[[str], object]] = {
    "firstname": _is_name,
    "lastname": _is_name,
    "fullname": _is_name,
    NAME: _is_name,
    "email": _EMAIL.fullmatch,
    "username": _LOGIN.fullmatch,
    "password": re.compile(r"\S{4,}").fullmatch,
    PHONE: is_phone,
    "mobile_number": is_phone,
    "home_number": is_phone,
    "work_number": is_phone,
}

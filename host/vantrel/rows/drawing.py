"""Draws combinations as often as a table has them."""

from __future__ import annotations

from collections import Counter
from collections.abc import Mapping, Sequence
from dataclasses import dataclass
from typing import Any

import numpy as np

from vantrel.rows.form import ANY, PARTS, Rows

type Places = np.ndarray[tuple[int], np.dtype[np.int64]]


@dataclass(frozen=True)
class DrawnRows:
    """Combinations that were drawn.

    Attributes:
        gender: The place of each row's value in ``Rows.gender``.
        title: The same for titles; -1 where a gender has none that is kept.
        country: The same for countries.
        missing: For each column that has gaps the rows where it is missing.
    """

    gender: Places
    title: Places
    country: Places
    missing: dict[str, np.ndarray[tuple[int], np.dtype[np.bool_]]]


class Combinations:
    """Draws the combinations of a table.

    Args:
        rows: What to draw from.
        gender_keys: The key of each of the genders, "" where it has none.
    """

    def __init__(self, rows: Rows, gender_keys: Sequence[str]) -> None:
        self._rows = rows
        table = np.array(rows.combinations, dtype=np.int64)
        self._parts = dict(zip(PARTS, table.T.copy(), strict=False))  # the last are the numbers
        self._weights = table[:, -1].astype(float)
        self._keys, self._key_of = np.unique(np.array(gender_keys), return_inverse=True)

    def draw(
        self, n: int, rng: np.random.Generator, given: Mapping[str, Places] | None = None
    ) -> DrawnRows:
        """Draws combinations.

        Args:
            n: The number of rows.
            rng: What to draw with.
            given: The places of genders and countries that each row shall have, as far as its
                combination can tell.
        """
        given, rows = given or {}, self._rows
        drawn = self._drawn(n, rng, given)
        gender, title, country, gaps = (self._parts[part][drawn] for part in PARTS)
        if "gender" in given:  # the titles of other genders are none of theirs
            title[(gender != ANY) & (gender != given["gender"])] = ANY
            gender = given["gender"].copy()
        country = given["country"].copy() if "country" in given else country
        _fill(gender, gender == ANY, rows.any_gender, rng)
        self._fill_titles(title, gender, rng)
        _fill(country, country == ANY, rows.any_country, rng)
        _fill(gaps, gaps == ANY, rows.any_gaps, rng)
        return DrawnRows(gender, title, country, _gaps(rows, gaps, rng))

    def _drawn(self, n: int, rng: np.random.Generator, given: Mapping[str, Places]) -> Places:
        """Draws combinations that have what is given, by groups of rows of which the same is."""
        if not given:
            return _choice(self._weights, n, rng)
        asked = np.stack(list(given.values()), axis=1)
        groups, group_of = np.unique(asked, axis=0, return_inverse=True)
        drawn = np.zeros(n, dtype=np.int64)
        for number, places in enumerate(groups):
            likely = self._weights
            for part, place in zip(given, places.tolist(), strict=True):
                narrowed = likely * self._agreement(part, place)
                likely = narrowed if narrowed.any() else likely
            members = np.flatnonzero(group_of.ravel() == number)
            drawn[members] = _choice(likely, len(members), rng)
        return drawn

    def _agreement(self, part: str, place: int) -> np.ndarray[Any, np.dtype[np.float64]]:
        """How likely each combination has a value at a place of one of its parts."""
        own, counts = self._parts[part], getattr(self._rows, f"any_{part}")
        agreement: np.ndarray[Any, np.dtype[np.float64]] = np.where(
            own == ANY, counts[place] / sum(counts), own == place
        )
        return agreement

    def _fill_titles(self, title: Places, gender: Places, rng: np.random.Generator) -> None:
        """Draws the titles that are left open, each by the key of its row's gender."""
        is_open = title == ANY
        if not is_open.any():
            return
        keys = self._key_of[gender]
        for number, key in enumerate(self._keys.tolist()):
            counts = self._rows.any_title.get(key) or ([] if key else _all_titles(self._rows))
            if counts:
                _fill(title, is_open & (keys == number), counts, rng)


def _all_titles(rows: Rows) -> list[int]:
    """Titles of any gender; evenly where none is frequent enough with a gender to be counted."""
    counted = np.array(list(rows.any_title.values()) or [[1] * len(rows.title)])
    total: list[int] = counted.sum(axis=0).tolist()
    return total


def _choice(weights: Any, n: int, rng: np.random.Generator) -> Places:
    weights = np.asarray(weights, dtype=float)
    return rng.choice(len(weights), size=n, p=weights / weights.sum())


def _fill(places: Places, where: Any, counts: Sequence[int], rng: np.random.Generator) -> None:
    if number := int(where.sum()):
        places[where] = _choice(counts, number, rng)


def _gaps(rows: Rows, gaps: Places, rng: np.random.Generator) -> dict[str, Any]:
    names = dict.fromkeys(name for together in rows.gaps for name in together or ())
    missing = {
        name: np.array([name in (together or ()) for together in rows.gaps])[gaps]
        for name in [*names, *(name for name in rows.gaps_apart if name not in names)]
    }
    if None in rows.gaps:
        apart = np.flatnonzero(gaps == rows.gaps.index(None))
        for name, share in rows.gaps_apart.items():
            missing[name][apart] = rng.random(len(apart)) < share
    return missing


def shares_of_countries(rows: Rows) -> dict[str, float]:
    """Gives the share of rows that have each country."""
    kept: Counter[int] = Counter()
    for _, _, place, _, count in rows.combinations:
        kept[place] += count
    total, apart = kept.total(), kept.pop(ANY, 0) / sum(rows.any_country)
    return {
        country: (kept[place] + apart * rows.any_country[place]) / total
        for place, country in enumerate(rows.country)
        if country is not None
    }

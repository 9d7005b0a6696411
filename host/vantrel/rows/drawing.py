"""Draws combinations as often as a table has them."""

from __future__ import annotations

from collections import Counter, defaultdict
from collections.abc import Collection, Mapping, Sequence
from dataclasses import dataclass
from typing import Any

import numpy as np

from vantrel.attributes import LEARNT
from vantrel.genders import AMBIGUOUS
from vantrel.rows.form import ANY, PARTS, Rows

type Places = np.ndarray[tuple[int], np.dtype[np.int64]]
type Flags = np.ndarray[tuple[int], np.dtype[np.bool_]]


# So often rows are drawn again that came out blank though no real row is so.
_TRIES = 5


@dataclass(frozen=True)
class DrawnRows:
    """Combinations that were drawn.

    Attributes:
        gender: The place of each row's value in ``Rows.gender``.
        title: The same for titles; -1 where a gender has none that is kept.
        country: The same for countries.
        missing: For each column that has gaps the rows where it is missing.
        blank: The rows in which nothing is there, as in real ones.
    """

    gender: Places
    title: Places
    country: Places
    missing: dict[str, Flags]
    blank: Flags

    def replace(self, where: Places, others: DrawnRows) -> None:
        """Puts other rows in the place of some."""
        for name in ("gender", "title", "country", "blank"):
            getattr(self, name)[where] = getattr(others, name)
        for column, missing in self.missing.items():
            missing[where] = others.missing[column]


class Combinations:
    """Draws the combinations of a table.

    Args:
        rows: What to draw from.
        gender_keys: The key of each of the genders, "" where it has none.
        title_keys: The same of the titles.
        made_up: The columns of the table of which no value is kept.
    """

    def __init__(
        self,
        rows: Rows,
        gender_keys: Sequence[str],
        title_keys: Sequence[str],
        made_up: Collection[str],
    ) -> None:
        self._rows, self._made_up = rows, made_up
        table = np.array(rows.combinations, dtype=np.int64)
        self._parts = dict(zip(PARTS, table.T.copy(), strict=False))  # the last are the numbers
        self._keys, self._key_of = np.unique(np.array(gender_keys), return_inverse=True)
        self._titles = _titles_by_key_and_country(rows, gender_keys)
        self._eithers = [at for at, key in enumerate(title_keys) if key == AMBIGUOUS]
        # The last one is of rows without a value that is kept.
        self._is_missing = {
            part: np.array([*(value is None for value in getattr(rows, part)), True])
            for part in LEARNT
        }
        all_missing = np.array([set(made_up) <= set(gaps or ()) for gaps in rows.gaps])
        self._is_blank = all_missing[self._parts["gaps"]] & (table != ANY).all(axis=1)
        for part, is_missing in self._is_missing.items():
            self._is_blank &= is_missing[self._parts[part]]
        self._weights = table[:, -1].astype(float)
        self._weights_of_people = self._weights * ~self._is_blank

    def draw(
        self, n: int, rng: np.random.Generator, given: Mapping[str, Places] | None = None
    ) -> DrawnRows:
        """Draws combinations. Rows are blank where real ones are, never where something is given.

        Args:
            n: The number of rows.
            rng: What to draw with.
            given: The places of genders and countries that each row shall have, as far as its
                combination can tell.
        """
        given = given or {}
        drawn = self._draw(n, rng, given)
        for _ in range(_TRIES):
            again = np.flatnonzero(self._looks_blank(drawn) & ~drawn.blank)
            if not len(again):
                return drawn
            asked = {part: places[again] for part, places in given.items()}
            drawn.replace(again, self._draw(len(again), rng, asked))
        for missing in drawn.missing.values():
            missing[again] = False
        return drawn

    def _draw(self, n: int, rng: np.random.Generator, given: Mapping[str, Places]) -> DrawnRows:
        rows = self._rows
        drawn = self._drawn(n, rng, given)
        gender, title, own_country, gaps = (self._parts[part][drawn] for part in PARTS)
        if "gender" in given:  # the titles of other genders are none of theirs
            title[(gender != ANY) & (gender != given["gender"])] = ANY
            gender = given["gender"].copy()
        country = given.get("country", own_country).copy()
        _fill(gender, gender == ANY, rows.any_gender, rng)
        _fill(country, country == ANY, rows.any_country, rng)
        self._settle_titles(title, gender, country, country != own_country, rng)
        _fill(gaps, gaps == ANY, rows.any_gaps, rng)
        blank = self._is_blank[drawn] & (not given)
        return DrawnRows(gender, title, country, _gaps(rows, gaps, rng), blank)

    def _drawn(self, n: int, rng: np.random.Generator, given: Mapping[str, Places]) -> Places:
        """Draws combinations that have what is given, by groups of rows of which the same is."""
        if not given:
            return _choice(self._weights, n, rng)
        asked = np.stack(list(given.values()), axis=1)
        groups, group_of = np.unique(asked, axis=0, return_inverse=True)
        drawn = np.zeros(n, dtype=np.int64)
        people = self._weights_of_people
        for number, places in enumerate(groups):
            likely = people if people.any() else self._weights
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

    def _settle_titles(
        self,
        title: Places,
        gender: Places,
        country: Places,
        is_elsewhere: Flags,
        rng: np.random.Generator,
    ) -> None:
        """Draws the titles that are left open, and again those that are of other countries."""
        unsettled = np.flatnonzero((title == ANY) | is_elsewhere)
        keys = self._key_of[gender[unsettled]]
        for number, key in enumerate(self._keys.tolist()):
            members = unsettled[keys == number]
            if counts := self._rows.any_title.get(key) or ([] if key else _all_titles(self._rows)):
                _draw(title, members[title[members] == ANY], dict(enumerate(counts)), rng)
            countries = country[members]
            for place in np.unique(countries).tolist():
                if usual := self._titles.get((key, place)):
                    there = members[countries == place]
                    is_foreign = ~np.isin(title[there], [*usual, *self._eithers])
                    _draw(title, there[is_foreign], usual, rng)

    def _looks_blank(self, drawn: DrawnRows) -> Flags:
        """Tells the rows in which nothing is there, for whatever reason."""
        blank = np.ones(len(drawn.gender), dtype=bool)
        for part, is_missing in self._is_missing.items():
            blank &= is_missing[getattr(drawn, part)]
        for column in self._made_up:
            blank &= drawn.missing.get(column, False)
        return blank


def _titles_by_key_and_country(
    rows: Rows, gender_keys: Sequence[str]
) -> dict[tuple[str, int], Counter[int]]:
    """Counts titles; under the empty key are those of all genders where it has none of its own."""
    titles: dict[tuple[str, int], Counter[int]] = defaultdict(Counter)
    for gender, title, country, _, count in rows.combinations:
        if count and ANY not in (gender, title, country):
            titles[gender_keys[gender], country][title] += count
    keyless = {country for key, country in titles if not key}
    for (_, country), counts in list(titles.items()):
        if country not in keyless:
            titles["", country].update(counts)
    return dict(titles)


def _all_titles(rows: Rows) -> list[int]:
    """Titles of any gender; evenly where none is frequent enough with a gender to be counted."""
    counted = np.array(list(rows.any_title.values()) or [[1] * len(rows.title)])
    total: list[int] = counted.sum(axis=0).tolist()
    return total


def _choice(weights: Any, n: int, rng: np.random.Generator) -> Places:
    weights = np.asarray(weights, dtype=float)
    return rng.choice(len(weights), size=n, p=weights / weights.sum())


def _draw(
    places: Places, where: Places, counts: Mapping[int, int], rng: np.random.Generator
) -> None:
    if len(where):
        drawn = _choice(list(counts.values()), len(where), rng)
        places[where] = np.array(list(counts))[drawn]


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

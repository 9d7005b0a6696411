"""How the shares of a column's values compare."""

from __future__ import annotations

from collections.abc import Mapping
from dataclasses import dataclass, replace

import numpy as np
import numpy.typing as npt

from vantrel.reporting.design import CONDITIONS, EVEN_SPELLINGS, EVEN_TITLES, Design
from vantrel.reporting.labelled import column_names

# A column that holds another value in every row must not make a page of as many lines.
MOST_SHARES = 200

# How often a sample drawn with the real shares may pass the limit of chance.
RISK = 0.01

# How many samples tell what chance does, and how many values are drawn for all of them if possible.
_MOST_SAMPLES = 5_000
_FEWEST_SAMPLES = 50
_SIMULATED_COUNTS = 500_000

# Equal distances may differ by as much, as their sums are rounded.
_ROUNDING = 1e-9

Floats = npt.NDArray[np.float64]
Counts = Mapping[str, int]


@dataclass(frozen=True)
class Frequency:
    """How frequent a value is.

    Args:
        value: The value as text.
        real: Its share of the real rows that have a value, from 0 to 1; None where there are none.
        sampled: The same of the sampled rows.
    """

    value: str
    real: float | None
    sampled: float | None


@dataclass(frozen=True)
class Frequencies:
    """The shares of a column's values, real beside sampled.

    Args:
        attribute: What the column holds.
        column: Its name.
        real_rows: How many real rows have a value; None where the real table has no such column.
        sampled_rows: The same of the sample.
        values: The number of distinct values of both together.
        shares: At most :data:`MOST_SHARES` values, those most frequent in either table first.
        distance: The total variation distance, or None where one side has no value.
        limit: What the distance stays within by chance, see :func:`chance_limit`.
        by_design: Why the model is meant to make a greater distance, else None.
    """

    attribute: str
    column: str
    real_rows: int | None
    sampled_rows: int | None
    values: int
    shares: tuple[Frequency, ...]
    distance: float | None
    limit: float | None
    by_design: str | None = None

    @property
    def is_by_chance(self) -> bool:
        """Whether the distance is one that chance explains."""
        return is_within(self.distance, self.limit)


def compare_frequencies(design: Design, attribute: str) -> Frequencies:
    """Compares how frequent the values of an attribute are; missing ones do not count."""
    real, sampled = design.real, design.sampled
    real_counts, sampled_counts = real.counts(attribute), sampled.counts(attribute)
    values, p, q = _distributions(real_counts, sampled_counts)
    found = Frequencies(
        attribute,
        column_names(real, sampled, attribute),
        real.filled(attribute),
        sampled.filled(attribute),
        len(values),
        _most_frequent_shares(values, p, q),
        *_distance(p, q, sampled.filled(attribute)),
    )
    return found if found.is_by_chance else replace(found, by_design=_reason(found, design))


def _reason(shares: Frequencies, design: Design) -> str | None:
    if shares.distance is None:
        return None
    if shares.attribute == "title" and design.is_bare:
        return EVEN_TITLES
    if design.has_conditions:
        return CONDITIONS
    if not design.is_bare or shares.attribute != "gender":
        return None
    genders = [design.genders(each, "gender") for each in (design.real, design.sampled)]
    _, p, q = _distributions(*genders)
    return EVEN_SPELLINGS if is_within(*_distance(p, q, sum(genders[1].values()))) else None


def _distributions(
    real: Counts | None, sampled: Counts | None
) -> tuple[list[str], Floats | None, Floats | None]:
    """The values of both in the order of the alphabet, and the share of each, if there are any."""
    values = sorted({**(real or {}), **(sampled or {})})
    p, q = (
        _normalised(np.array([(counts or {}).get(value, 0) for value in values], dtype=float))
        for counts in (real, sampled)
    )
    return values, p, q


def _distance(
    p: Floats | None, q: Floats | None, sampled: int | None
) -> tuple[float | None, float | None]:
    """The distance, and what it stays within by chance."""
    if p is None or q is None or sampled is None:
        return None, None
    return total_variation(p, q), chance_limit(p, sampled)


def is_within(distance: float | None, limit: float | None) -> bool:
    """Tells whether a distance is one that chance explains."""
    return distance is not None and limit is not None and distance <= limit + _ROUNDING


def _normalised(counts: Floats) -> Floats | None:
    total = counts.sum()
    return counts / total if total else None


def _most_frequent_shares(
    values: list[str], p: Floats | None, q: Floats | None
) -> tuple[Frequency, ...]:
    none = np.zeros(len(values))
    greater = np.maximum(none if p is None else p, none if q is None else q)
    return tuple(
        Frequency(
            values[place],
            None if p is None else float(p[place]),
            None if q is None else float(q[place]),
        )
        for place in np.argsort(-greater, kind="stable")[:MOST_SHARES]
    )


def total_variation(p: Floats, q: Floats) -> float:
    """The total variation distance of two distributions: 0 if alike, 1 with no value in common."""
    return min(1.0, float(np.abs(p - q).sum()) / 2)


def chance_limit(p: Floats, rows: int) -> float:
    """The distance that a sample of the very distribution stays within, 99 times in 100.

    Rows drawn one by one with the shares ``p`` do not have these very shares. How far they are from
    them is tried out: the limit is that quantile of the distances of simulated samples, which
    differ from ``p`` as a sample of so many rows does. They are the same ones in each call. The
    more values there are, the fewer samples are simulated: their distances spread less. How many
    rows ``p`` was counted in does not matter: they are what a model learns, and a sample is drawn
    from, as they are.

    Args:
        p: The share of each value, adding up to 1.
        rows: How many rows the sample has, at least 1.
    """
    samples = min(max(_SIMULATED_COUNTS // len(p), _FEWEST_SAMPLES), _MOST_SAMPLES)
    drawn = np.random.default_rng(0).multinomial(rows, p, samples) / rows
    distances = np.minimum(np.abs(drawn - p).sum(axis=1) / 2, 1.0)
    return float(np.quantile(distances, 1 - RISK, method="higher"))

"""How the shares of a column's values compare."""

from __future__ import annotations

from collections import Counter
from collections.abc import Mapping
from dataclasses import dataclass

import numpy as np

from vantrel.attributes import LEARNT
from vantrel.reporting.distances import (
    Distance,
    Floats,
    chance_limit,
    distance_to_model,
    is_part,
    is_within,
    total_variation,
)
from vantrel.reporting.labelled import LabelledTable, column_names
from vantrel.reporting.meant import Meant
from vantrel.reporting.redrawn import redrawn_rows
from vantrel.reporting.single_values import unlikely_values
from vantrel.rows import DEFAULT_MIN_COUNT

# A column that holds another value in every row must not make a page of as many lines.
MOST_SHARES = 200

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
        from_model: The distance from what the model was to give, if that is known.
        reason: Why that may be further from the real table than chance has it.
        unlikely: The values that are alone rarer or more frequent than chance has it: held against
            what the model was to give if that is known, else against the real table.
    """

    attribute: str
    column: str
    real_rows: int | None
    sampled_rows: int | None
    values: int
    shares: tuple[Frequency, ...]
    distance: float | None
    limit: float | None
    from_model: Distance | None = None
    reason: str = ""
    unlikely: tuple[str, ...] = ()

    @property
    def is_by_chance(self) -> bool:
        """Whether the distance is one that chance explains."""
        return is_within(self.distance, self.limit)

    @property
    def by_design(self) -> str | None:
        """Why the distance is as great as the model is meant to make it, if it is; else None."""
        is_meant = self.from_model is not None and self.from_model.is_by_chance
        return (self.reason or None) if is_meant and not self.is_by_chance else None


def compare_frequencies(
    real: LabelledTable, sampled: LabelledTable, attribute: str, meant: Meant | None = None
) -> Frequencies:
    """Compares how frequent the values of an attribute are; missing ones do not count."""
    real_counts, sampled_counts = real.counts(attribute), sampled.counts(attribute)
    values, p, q = _distributions(real_counts, sampled_counts)
    distance, limit = _distance(p, q, sampled.filled(attribute))
    redrawn = _redrawn(real, meant) if attribute == "title" else {}
    if limit is not None:
        limit = min(1.0, limit + sum(redrawn.values()) / max(real.filled(attribute) or 0, 1))
    from_model, reason = None, ""
    if meant and sampled_counts:
        shares, rows = meant.shares(attribute), meant.filled(attribute)
        from_model = distance_to_model(sampled_counts, shares, rows)
        excess = (distance or 0) - (limit or 0)
        reason = meant.excuse(excess, (real_counts or {}).values())
    return Frequencies(
        attribute,
        column_names(real, sampled, attribute),
        real.filled(attribute),
        sampled.filled(attribute),
        len(values),
        _most_frequent_shares(values, p, q),
        distance,
        limit,
        from_model,
        reason,
        _unlikely(real_counts or {}, sampled_counts or {}, attribute, meant, redrawn),
    )


def _redrawn(real: LabelledTable, meant: Meant | None) -> Counts:
    """The titles of the rows that a model draws by coarser counts, which become others."""
    if not real.has("title"):
        return {}
    place = sum(map(real.has, LEARNT[: LEARNT.index("title")]))
    titles: Counter[str] = Counter()
    for cells, rows in redrawn_rows(real, meant).items():
        if (title := cells[place]) is not None:
            titles[title] += rows
    return titles


def _unlikely(
    real: Counts, sampled: Counts, attribute: str, meant: Meant | None, redrawn: Counts
) -> tuple[str, ...]:
    shares = meant.shares(attribute) if meant else None
    if meant is None or shares is None:
        return unlikely_values(sampled, real, DEFAULT_MIN_COUNT, redrawn=redrawn)
    if is_part(shares):
        sampled = {value: rows for value, rows in sampled.items() if value in shares}
    return unlikely_values(sampled, shares, others=meant.filled(attribute))


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

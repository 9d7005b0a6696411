"""How frequent missing values are."""

from __future__ import annotations

import math
from dataclasses import dataclass, replace

from vantrel.report.columns import column_names
from vantrel.report.design import Design
from vantrel.report.shares import RISK


@dataclass(frozen=True)
class Gaps:
    """The missing rates of a column.

    Args:
        attribute: What the column holds.
        column: Its name.
        real: The share of real rows without a value, from 0 to 1; None where the real table has
            no such column or no rows.
        sampled: The same of the sample.
        chance: How probable such a difference is at most by chance, see :func:`chance_of`; None
            where a rate is.
        by_design: Why the rates differ by more, if the sample's is one that the model is meant to
            make; else None.
    """

    attribute: str
    column: str
    real: float | None
    sampled: float | None
    chance: float | None
    by_design: str | None = None

    @property
    def difference(self) -> float | None:
        """By how much more often the sample has no value, from -1 to 1."""
        if self.real is None or self.sampled is None:
            return None
        return self.sampled - self.real

    @property
    def is_beyond_chance(self) -> bool:
        """Whether chance makes such a difference less often than once in a hundred samples."""
        return self.chance is not None and self.chance < RISK


def compare_gaps(design: Design, attribute: str) -> Gaps:
    """Compares the missing rates of an attribute."""
    real, sampled = design.real, design.sampled
    rate, sampled_rate = (table.missing_rate(attribute) for table in (real, sampled))
    found = Gaps(attribute, column_names(real, sampled, attribute), rate, sampled_rate, None)
    if rate is None or sampled_rate is None:
        return found
    found = replace(found, chance=chance_of(sampled_rate, rate, len(sampled)))
    meant, reason = design.gap(attribute, rate, sampled_rate)
    if meant is None or chance_of(sampled_rate, meant, len(sampled)) < RISK:
        return found
    return replace(found, by_design=reason if found.is_beyond_chance else None)


def chance_of(found: float, expected: float, rows: int) -> float:
    """Bounds the probability that chance moves a rate at least as far, to the same side.

    Of rows drawn one by one that are missing with probability ``q``, a share of ``p`` or further
    from ``q`` is missing with a probability of at most ``exp(-rows * D)``, where ``D`` is the
    relative entropy ``p * log(p / q) + (1 - p) * log((1 - p) / (1 - q))`` (Hoeffding,
    "Probability inequalities for sums of bounded random variables", 1963, theorem 1).

    Args:
        found: The rate in the sample, ``p``, from 0 to 1.
        expected: The rate in the real table, ``q``, from 0 to 1.
        rows: How many rows the sample has.

    Returns:
        The bound, from 0 to 1.
    """
    entropy = _relative(found, expected) + _relative(1 - found, 1 - expected)
    return math.exp(-rows * max(entropy, 0.0))


def _relative(p: float, q: float) -> float:
    if p == 0:
        return 0.0
    return p * math.log(p / q) if q else math.inf

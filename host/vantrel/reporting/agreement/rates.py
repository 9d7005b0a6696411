"""How often the parts of a row contradict each other, real beside sampled."""

from __future__ import annotations

from collections.abc import Mapping
from dataclasses import dataclass

import numpy as np

from vantrel.reporting.distances import Floats, chance_limit, is_within

MOST_EXAMPLES = 5

# What is let pass where the real table does not tell: made-up people agree but for few.
_LET_PASS = 0.01


@dataclass(frozen=True)
class Contradictions:
    """Rows whose parts contradict each other.

    Args:
        looked_at: The rows of which that can be told.
        against: How many of these contradict themselves.
        examples: What stands in some of them, with the number of their rows.
    """

    looked_at: int
    against: int
    examples: tuple[tuple[str, int], ...] = ()

    @property
    def rate(self) -> float:
        """The share of the contradicting rows, from 0 to 1."""
        return self.against / self.looked_at if self.looked_at else 0.0


@dataclass(frozen=True)
class Agreement:
    """How often two or three parts of a row contradict each other.

    Args:
        parts: What should go together, in words.
        meaning: What a contradiction is, in words.
        real: Those of the real table; None where it does not have the parts.
        sampled: Those of the sample.
    """

    parts: str
    meaning: str
    real: Contradictions | None
    sampled: Contradictions

    @property
    def limit(self) -> float:
        """The rate that samples stay within by chance that are no worse than the real table.

        Its rows are a sample, too: of few that all agree, not all need have agreed.
        """
        rows, against = self.sampled.looked_at, self.sampled.against
        if not (self.real and self.real.looked_at):
            return _most(_LET_PASS, _LET_PASS, rows, None) if rows else 1.0
        others = self.real.looked_at
        both = (against + self.real.against) / (rows + others)
        return _most(self.real.rate, both, rows, others)

    @property
    def is_fine(self) -> bool:
        """Whether chance explains by how much more often the sample contradicts itself."""
        return is_within(self.sampled.rate, self.limit)


def _most(rate: float, likely: float, rows: int, others: int | None) -> float:
    """The rate that chance makes of another one at most, where both are likely to be one."""
    chance = chance_limit(np.array([likely, 1 - likely]), rows, others, apart=_more_often)
    return min(1.0, rate + chance)


def _more_often(p: Floats, q: Floats) -> Floats:
    return np.asarray(p[..., 0] - q[..., 0])


def of_groups(looked_at: int, against: Mapping[str, int]) -> Contradictions:
    """Sums up contradicting groups of rows, told in words, each with its rows."""
    ranked = sorted(against.items(), key=lambda item: (-item[1], item[0]))
    return Contradictions(looked_at, sum(against.values()), tuple(ranked[:MOST_EXAMPLES]))

"""How often the parts of a row contradict each other, real beside sampled."""

from __future__ import annotations

from collections.abc import Mapping
from dataclasses import dataclass

import numpy as np

from vantrel.reporting.distances import chance_limit, distance_to_model, is_within

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
        """The rate that 99 in 100 samples stay within that are no worse than the real table.

        Its rows are a sample, too: of few that all agree, not all need have agreed.
        """
        rows, against = self.sampled.looked_at, self.sampled.against
        if not (self.real and self.real.looked_at):
            chance = chance_limit(np.array([_LET_PASS, 1 - _LET_PASS]), rows) if rows else 1.0
            return min(1.0, _LET_PASS + chance)
        rate = self.real.rate
        shares, counts = {True: rate, False: 1 - rate}, {True: against, False: rows - against}
        found = distance_to_model(counts, shares, self.real.looked_at)
        return min(1.0, rate + found.limit) if found else 1.0

    @property
    def is_fine(self) -> bool:
        """Whether chance explains by how much more often the sample contradicts itself."""
        return is_within(self.sampled.rate, self.limit)


def of_groups(looked_at: int, against: Mapping[str, int]) -> Contradictions:
    """Sums up contradicting groups of rows, told in words, each with its rows."""
    ranked = sorted(against.items(), key=lambda item: (-item[1], item[0]))
    return Contradictions(looked_at, sum(against.values()), tuple(ranked[:MOST_EXAMPLES]))

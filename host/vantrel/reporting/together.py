"""How frequent combinations of the learnt columns are."""

from __future__ import annotations

from collections.abc import Mapping
from dataclasses import dataclass

import numpy as np

from vantrel.attributes import LEARNT, WORDS
from vantrel.reporting.distances import Distance, chance_limit, distance_to_model, total_variation
from vantrel.reporting.labelled import LabelledTable
from vantrel.reporting.meant import Meant
from vantrel.reporting.redrawn import redrawn_share
from vantrel.wording import listed

MOST_EXAMPLES = 8

type _Counts = Mapping[tuple[str | None, ...], int]


@dataclass(frozen=True)
class Combination:
    """What stands together, and its share of the rows of both tables; None is a missing value."""

    values: tuple[str | None, ...]
    real: float
    sampled: float


@dataclass(frozen=True)
class Together:
    """How frequent the combinations of the learnt columns are, real beside sampled.

    Args:
        attributes: What they are combinations of.
        distance: The total variation distance, and what it stays within: by chance, and by the
            share of real rows that a model draws by coarser counts.
        from_model: The distance from what the model was to give, if that is known.
        reason: Why that may be further from the real table.
        furthest: The combinations whose shares differ most.
    """

    attributes: tuple[str, ...]
    distance: Distance
    from_model: Distance | None
    reason: str
    furthest: tuple[Combination, ...]

    @property
    def words(self) -> str:
        """What is looked at, in words."""
        words = listed([WORDS[each].lower() for each in self.attributes])
        return f"{words[0].upper()}{words[1:]} together"

    @property
    def by_design(self) -> str | None:
        """Why the distance is as great as the model is meant to make it, if it is; else None."""
        is_meant = self.from_model is not None and self.from_model.is_by_chance
        return (self.reason or None) if is_meant and not self.distance.is_by_chance else None


def compare_together(
    real: LabelledTable, sampled: LabelledTable, meant: Meant | None = None
) -> Together | None:
    """Compares combinations; None where the tables have fewer than two columns to combine."""
    both = tuple(each for each in LEARNT if real.has(each) and sampled.has(each))
    if len(both) < 2 or not (len(real) and len(sampled)):
        return None
    in_real, in_sample = real.combinations(both), sampled.combinations(both)
    values = sorted({**in_real, **in_sample}, key=repr)
    p, q = (
        np.array([counts.get(value, 0) for value in values]) / sum(counts.values())
        for counts in (in_real, in_sample)
    )
    limit = min(1.0, chance_limit(p, len(sampled)) + redrawn_share(real, meant))
    from_model = None
    if meant:
        from_model = distance_to_model(in_sample, meant.together(both), meant.expected.rows)
    furthest = np.argsort(-np.abs(p - q), kind="stable")[:MOST_EXAMPLES]
    return Together(
        both,
        Distance(total_variation(p, q), limit),
        from_model,
        meant.reason if meant and meant.is_otherwise else "",
        tuple(Combination(values[at], float(p[at]), float(q[at])) for at in furthest),
    )

"""Which values are alone rarer or more frequent than chance has it.

A value that few have can vanish without moving the distance of a whole column by much.
"""

from __future__ import annotations

from collections.abc import Mapping
from types import MappingProxyType

import numpy as np

from vantrel.reporting.distances import Floats, chance_limit

_ROUNDING = 1e-9


def unlikely_values(
    counts: Mapping[str, int],
    known: Mapping[str, float],
    fewest: int = 0,
    others: int | None = None,
    redrawn: Mapping[str, int] = MappingProxyType({}),
) -> tuple[str, ...]:
    """The values of a sample that chance explains neither the count nor the lack of.

    The limit is that of the value furthest off, so that many values raise no more alarms than few.

    Args:
        counts: How often each value is in the sample.
        known: How frequent each is to be.
        fewest: Values that are known of fewer rows do not count, as models leave them out.
        others: In how many rows that was counted, if it is not exact.
        redrawn: How many of these rows may have become any other value.
    """
    values = [value for value in {**known, **counts} if not 0 < known.get(value, 0) < fewest]
    p, q = (np.array([side.get(value, 0) for value in values]) for side in (known, counts))
    rows = int(q.sum())
    if not (rows and p.sum()):
        return ()
    moved = np.array([redrawn.get(value, 0) for value in values]) / p.sum()
    p, q = p / p.sum(), q / rows
    likely = p if others is None else (p * others + q * rows) / (others + rows)
    limit = chance_limit(likely, rows, others, apart=_furthest)
    nearest = np.clip(q, p - moved, p + sum(redrawn.values()) / max(sum(known.values()), 1))
    return tuple(values[at] for at in np.flatnonzero(_shifts(nearest, q) > limit + _ROUNDING))


def _furthest(p: Floats, q: Floats) -> Floats:
    return np.asarray(_shifts(p, q).max(axis=-1))


def _shifts(p: Floats, q: Floats) -> Floats:
    """Differences of shares, of which chance moves rare and frequent ones alike."""
    # J. Cohen, Statistical Power Analysis for the Behavioral Sciences, 1988, chapter 6.
    angles, others = (2 * np.arcsin(np.sqrt(np.minimum(each, 1.0))) for each in (p, q))
    return np.asarray(np.abs(angles - others))

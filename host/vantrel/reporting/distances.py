"""How far two distributions are from each other, and how far chance puts them."""

from __future__ import annotations

from collections.abc import Callable, Hashable, Mapping
from dataclasses import dataclass
from statistics import NormalDist
from typing import Any

import numpy as np
import numpy.typing as npt

# How often a good sample may pass one limit of chance. About ten of a report are apart from each
# other, so that one good sample of a thousand asks for a look; but for those of
# very few rows without a record, in which values are rare that a model leaves out.
RISK = 1 / 10_000

# How many samples tell what chance does, and how many values are drawn for all of them if possible.
_MOST_SAMPLES = 50_000
_FEWEST_SAMPLES = 200
_SIMULATED_COUNTS = 500_000

# A limit that fewer samples pass is guessed from the one that so many do.
_FEWEST_BEYOND = 20

# Equal distances may differ by as much, as their sums are rounded.
_ROUNDING = 1e-9

_NORMAL = NormalDist()

Floats = npt.NDArray[np.float64]


@dataclass(frozen=True)
class Distance:
    """The total variation distance of two distributions, and what it stays within by chance."""

    value: float
    limit: float

    @property
    def is_by_chance(self) -> bool:
        """Whether the distance is one that chance explains."""
        return is_within(self.value, self.limit)


def is_within(distance: float | None, limit: float | None) -> bool:
    """Tells whether a distance is one that chance explains."""
    return distance is not None and limit is not None and distance <= limit + _ROUNDING


def total_variation(p: Floats, q: Floats) -> float:
    """The total variation distance of two distributions: 0 if alike, 1 with no value in common."""
    return float(_half_differences(p, q))


def _half_differences(p: Floats, q: Floats) -> Floats:
    return np.minimum(np.abs(p - q).sum(axis=-1) / 2, 1.0)


def chance_limit(
    p: Floats,
    rows: int,
    others: int | None = None,
    risk: float = RISK,
    *,
    apart: Callable[[Floats, Floats], Floats] = _half_differences,
) -> float:
    """The distance that samples of the very distribution stay within, but for the risk.

    Rows drawn one by one with the shares ``p`` do not have these very shares. How far they are from
    them is tried out: the limit is that quantile of the distances of simulated samples, which
    differ from ``p`` as a sample of so many rows does. (This is a parametric bootstrap: B. Efron
    and R. J. Tibshirani, An Introduction to the Bootstrap, 1993, chapter 16.) They are the same
    ones in each call. The more values there are, the fewer samples are simulated: their distances
    spread less. Where these are too few to tell a quantile, it is as much further from the median
    than one that they tell as in a normal distribution. How many rows ``p`` was counted in does not
    matter where a model learns these shares as they are.

    Args:
        p: The share of each value, adding up to 1.
        rows: How many rows the sample has, at least 1.
        others: How many rows another sample has, if the distance of two samples is asked for.
        risk: How often a sample may pass the limit, where one of several limits is asked for.
        apart: How far distributions, one in each row, are from another or from those beside them.
    """
    samples = min(max(_SIMULATED_COUNTS // len(p), _FEWEST_SAMPLES), _MOST_SAMPLES)
    rng = np.random.default_rng(0)
    drawn = rng.multinomial(rows, p, samples) / rows
    known = p if others is None else rng.multinomial(others, p, samples) / others
    return _quantile(apart(drawn, known), risk)


def _quantile(distances: Floats, risk: float) -> float:
    """The distance that others pass with a risk, which may be too small for so few to show."""
    told = max(risk, _FEWEST_BEYOND / len(distances))
    limit = float(np.quantile(distances, 1 - told, method="higher"))
    if told == risk:
        return limit
    median = float(np.median(distances))
    further = _NORMAL.inv_cdf(1 - risk) / _NORMAL.inv_cdf(1 - told)
    return median + (limit - median) * further


def is_part(shares: Mapping[Any, float]) -> bool:
    """Tells whether there are more values than those whose shares are listed."""
    return 1 - sum(shares.values()) > _ROUNDING


def distance_to_model[KeyT: Hashable](
    counts: Mapping[KeyT, int],
    shares: Mapping[KeyT, float] | None,
    rows: int,
    risk: float = RISK,
) -> Distance | None:
    """The distance of a sample from what its model gave other rows; None where there are none.

    Args:
        counts: How often each value is in the sample.
        shares: The shares that the model gave the most frequent values.
        rows: How many rows these were counted in.
        risk: How often a sample may be further off, as :func:`chance_limit` takes it.
    """
    total = sum(counts.values())
    if shares is None or not (total and rows and shares):
        return None
    values = list({**shares, **counts})
    p = np.array([shares.get(value, 0) for value in values])
    q = np.array([counts.get(value, 0) / total for value in values])
    if is_part(shares):  # what is not listed counts as one value
        is_listed = np.array([value in shares for value in values])
        p = np.append(p[is_listed], 1 - p.sum())
        q = np.append(q[is_listed], q[~is_listed].sum())
    pooled = (p * rows + q * total) / (rows + total)
    return Distance(total_variation(p, q), chance_limit(pooled / pooled.sum(), total, rows, risk))

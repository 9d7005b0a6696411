"""How frequent missing values are."""

from __future__ import annotations

from dataclasses import dataclass, replace

import numpy as np

from vantrel.reporting.design import Design
from vantrel.reporting.frequencies import chance_limit, is_within
from vantrel.reporting.labelled import column_names


@dataclass(frozen=True)
class MissingRates:
    """The missing rates of a column.

    Args:
        attribute: What the column holds.
        column: Its name.
        real: The share of real rows without a value, from 0 to 1; None where the real table has
            no such column or no rows.
        sampled: The same of the sample.
        limit: What the difference stays within by chance; None where a rate is.
        by_design: Why the rates differ by more, if the sample's is one that the model is meant to
            make; else None.
    """

    attribute: str
    column: str
    real: float | None
    sampled: float | None
    limit: float | None
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
        return self.difference is not None and not is_within(abs(self.difference), self.limit)


def compare_missing_rates(design: Design, attribute: str) -> MissingRates:
    """Compares the missing rates of an attribute."""
    real, sampled = design.real, design.sampled
    rate, sampled_rate = (table.missing_rate(attribute) for table in (real, sampled))
    found = MissingRates(
        attribute, column_names(real, sampled, attribute), rate, sampled_rate, None
    )
    if rate is None or sampled_rate is None:
        return found
    found = replace(found, limit=_limit(rate, len(sampled)))
    meant, reason = design.gap(attribute, rate, sampled_rate)
    if meant is None or not is_within(abs(sampled_rate - meant), _limit(meant, len(sampled))):
        return found
    return replace(found, by_design=reason if found.is_beyond_chance else None)


def _limit(rate: float, rows: int) -> float:
    """What the missing rate of a sample differs from the real one by chance, 99 times in 100.

    It is the distance of two distributions over two values, missing or not.
    """
    return chance_limit(np.array([rate, 1 - rate]), rows)

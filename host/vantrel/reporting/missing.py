"""How frequent missing values are."""

from __future__ import annotations

from dataclasses import dataclass

import numpy as np

from vantrel.attributes import LEARNT, WORDS
from vantrel.reporting.distances import RISK, Distance, chance_limit, distance_to_model, is_within
from vantrel.reporting.labelled import LabelledTable, column_names
from vantrel.reporting.meant import Meant
from vantrel.reporting.redrawn import redrawn_share


@dataclass(frozen=True)
class MissingRates:
    """The missing rates of a column.

    Args:
        attribute: What the column holds.
        column: Its name.
        real: The share of real rows without a value, from 0 to 1; None where the real table has
            no such column or no rows.
        sampled: The same of the sample.
        limit: What the difference stays within by chance; None where a rate is. All columns of a
            sample together have the risk of one limit.
        from_model: The difference from what the model was to give, if that is known.
        reason: Why that may differ from the real table by more than chance has it.
    """

    attribute: str
    column: str
    real: float | None
    sampled: float | None
    limit: float | None
    from_model: Distance | None = None
    reason: str = ""

    @property
    def by_design(self) -> str | None:
        """Why the difference is as great as the model is meant to make it, if it is; else None."""
        is_meant = self.from_model is not None and self.from_model.is_by_chance
        return (self.reason or None) if is_meant and self.is_beyond_chance else None

    @property
    def difference(self) -> float | None:
        """By how much more often the sample has no value, from -1 to 1."""
        if self.real is None or self.sampled is None:
            return None
        return self.sampled - self.real

    @property
    def is_beyond_chance(self) -> bool:
        """Whether the difference is greater than chance explains."""
        return self.difference is not None and not is_within(abs(self.difference), self.limit)


def compare_all_missing_rates(
    real: LabelledTable, sampled: LabelledTable, meant: Meant | None = None
) -> tuple[MissingRates, ...]:
    """Compares the missing rates of all attributes that one of the tables has.

    They are judged together, so that each has its part of the risk only.
    """
    there = [each for each in WORDS if real.has(each) or sampled.has(each)]
    both = sum(real.has(each) and sampled.has(each) for each in there)
    risk = RISK / max(both, 1)
    return tuple(compare_missing_rates(real, sampled, each, meant, risk) for each in there)


def compare_missing_rates(
    real: LabelledTable,
    sampled: LabelledTable,
    attribute: str,
    meant: Meant | None = None,
    risk: float = RISK,
) -> MissingRates:
    """Compares the missing rates of an attribute."""
    rate, sampled_rate = (table.missing_rate(attribute) for table in (real, sampled))
    limit = from_model = None
    if rate is not None and sampled_rate is not None:
        redrawn = redrawn_share(real, meant) if attribute == "title" else 0.0
        limit = min(1.0, _limit(rate, len(sampled), risk) + redrawn)
    expected = meant.expected.missing.get(attribute) if meant else None
    if meant and expected is not None and sampled_rate is not None:
        missing = round(sampled_rate * len(sampled))
        counts = {True: missing, False: len(sampled) - missing}
        shares = {True: expected, False: 1 - expected}
        from_model = distance_to_model(counts, shares, meant.expected.rows, risk)
    excess = abs((sampled_rate or 0) - (rate or 0)) - (limit or 0)
    known = real.counts(attribute) if attribute in LEARNT else None  # no other value is left out
    return MissingRates(
        attribute,
        column_names(real, sampled, attribute),
        rate,
        sampled_rate,
        limit,
        from_model,
        meant.excuse(excess, (known or {}).values()) if meant else "",
    )


def _limit(rate: float, rows: int, risk: float) -> float:
    """What the missing rate of a sample differs from the real one by chance.

    It is the distance of two distributions over two values, missing or not.
    """
    return chance_limit(np.array([rate, 1 - rate]), rows, risk=risk)

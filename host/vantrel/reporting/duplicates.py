"""How often rows and values repeat."""

from __future__ import annotations

from collections.abc import Sequence
from dataclasses import dataclass

from vantrel.attributes import WORDS
from vantrel.reporting.labelled import LabelledTable
from vantrel.reporting.nearness.shared import most_by_chance
from vantrel.reporting.repeats import accounts_by_chance, repeats_by_chance


@dataclass(frozen=True)
class DuplicateCount:
    """How many there are and how many of them repeat an earlier one."""

    values: int
    repeated: int


@dataclass(frozen=True)
class Duplicates:
    """The repeats of whole rows, or of an attribute's values.

    Args:
        attribute: The attribute, or None for rows.
        real: The repeats in the real table; None where it has no such column, or both tables have
            none in common.
        sampled: The same in the sample.
        chance: How many of the sample's repeats chance explains; None where there are none, of
            values that are no accounts, and of rows in which no two parts are made apart from each
            other.
    """

    attribute: str | None
    real: DuplicateCount | None
    sampled: DuplicateCount | None
    chance: float | None = None

    @property
    def is_by_chance(self) -> bool:
        """Whether chance explains the repeats of the sample, or the real table has as many rows.

        Of a larger sample that is their share: pairs grow as the square of the rows, by which one
        in a small real table would excuse whatever was pasted into a large sample. Accounts are
        made up: how often real ones repeat tells nothing of them.
        """
        if self.sampled is None or not self.sampled.repeated:
            return True
        if self.chance is None:
            return False
        in_real = 0.0
        if self.attribute is None and self.real and self.real.values:
            larger = self.sampled.values / self.real.values
            in_real = self.real.repeated * larger * min(larger, 1.0)
        return self.sampled.repeated <= most_by_chance(max(self.chance, in_real))


def compare_rows(real: LabelledTable, sampled: LabelledTable) -> Duplicates:
    """Counts the rows that repeat an earlier one in every labelled column that both tables have.

    Rows without any value do not count.
    """
    common = [each for each in WORDS if real.has(each) and sampled.has(each)]
    found = _of(sampled, common)
    chance = repeats_by_chance(sampled, common) if found and found.repeated else None
    return Duplicates(None, _of(real, common), found, chance)


def compare_duplicates(real: LabelledTable, sampled: LabelledTable, attribute: str) -> Duplicates:
    """Counts the values of an attribute that repeat an earlier one; missing ones do not count."""
    found = _of(sampled, [attribute])
    chance = accounts_by_chance(sampled, attribute) if found and found.repeated else None
    return Duplicates(attribute, _of(real, [attribute]), found, chance)


def _of(table: LabelledTable, attributes: Sequence[str]) -> DuplicateCount | None:
    """Counts by hashes of 64 bits: two of 10,000,000 values share one in 1 of 300,000 tables."""
    if not (attributes and table.has(*attributes)):
        return None
    columns = [table.column(attribute) for attribute in attributes]
    there = " OR ".join(f"{column} IS NOT NULL" for column in columns)
    ((values, distinct),) = table.table.query(
        f"SELECT count(*), count(DISTINCT hash({', '.join(columns)})) FROM {{rows}} WHERE {there}"
    )
    return DuplicateCount(values, values - distinct)

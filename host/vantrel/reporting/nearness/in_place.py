"""Values of a made-up table that are those of the same row of the real one."""

from __future__ import annotations

from dataclasses import dataclass

from vantrel.attributes import LEARNT, PHONES, WORDS
from vantrel.reporting.labelled import LabelledTable, column_names
from vantrel.reporting.nearness.forms import digits, plain, sorted_words
from vantrel.reporting.nearness.shared import FEWEST_ROWS, most_by_chance
from vantrel.tables import Table

# What is alike in people tells what chance explains.
ALIKE = ("gender", "country")

BESIDE = (
    "(SELECT * FROM (SELECT {own} FROM {{rows}}) POSITIONAL JOIN (SELECT {made} FROM {{other}}))"
)

# Two rows that are alike could have changed places: as often as one of them was what another one
# became, chance leaves a row as it was. A copy is not to leave a value to its own row, so that this
# one does not count; a sample may draw any value for any row.
_OF_COPY = "(met - same) / greatest(total - 1, 1)"
_OF_SAMPLE = "met / total"
_MATCHED = """
    WITH beside AS MATERIALIZED {beside},
    known AS (SELECT * FROM beside WHERE was <> '' AND became <> ''),
    placed AS MATERIALIZED (
        SELECT was, became, CASE WHEN alike IN (
            SELECT alike FROM known GROUP BY 1 HAVING count(*) >= {fewest}
        ) THEN alike ELSE 0 END AS place FROM known
    ),
    was AS (SELECT place, was AS value, count(*) AS rows FROM placed GROUP BY ALL),
    became AS (SELECT place, became AS value, count(*) AS made FROM placed GROUP BY ALL),
    met AS (
        SELECT place, sum(rows * made) AS met FROM was JOIN became USING (place, value) GROUP BY 1
    ),
    totals AS (
        SELECT place, count(*) AS total, count(*) FILTER (was = became) AS same FROM placed
        GROUP BY 1
    ),
    people AS (SELECT DISTINCT key, became FROM known WHERE key IS NOT NULL)
    SELECT
        (SELECT count(*) FROM known), (SELECT count(*) FROM known WHERE was = became),
        (SELECT coalesce(sum({chance}), 0) FROM met JOIN totals USING (place)),
        (SELECT count(*) FROM (SELECT key FROM people GROUP BY key HAVING count(*) > 1)),
        (SELECT count(*) FROM (SELECT became FROM people GROUP BY became HAVING count(*) > 1))
"""


@dataclass(frozen=True)
class InPlace:
    """A column of a sample beside that of the real table, row by row.

    Args:
        attribute: What it holds.
        column: Its name.
        cells: How many rows have a value in both tables.
        same: In how many of these it is the same.
        chance: In how many it would be, by expectation, if those of one country and gender stood
            in any order.
    """

    attribute: str
    column: str
    cells: int
    same: int
    chance: float

    @property
    def is_by_chance(self) -> bool:
        """Whether chance explains what is the same."""
        return self.same <= most_by_chance(self.chance)


def compare_in_place(real: LabelledTable, sampled: LabelledTable) -> tuple[InPlace, ...]:
    """Looks for real columns in the same order: each value may be one that many have.

    Columns that are learnt are not looked at: they may be given for each row.
    """
    return tuple(
        _in_place(real, sampled, each)
        for each in WORDS
        if each not in LEARNT and real.has(each) and sampled.has(each)
    )


def _in_place(real: LabelledTable, sampled: LabelledTable, attribute: str) -> InPlace:
    alike = [real.column(each) for each in ALIKE if real.has(each)]
    own = (
        f"{meaning(attribute, real.column(attribute))} AS was, NULL AS key,"
        f" hash({', '.join(alike) or 'NULL'}) AS alike"
    )
    made = f"{meaning(attribute, sampled.column(attribute))} AS became"
    cells, same, chance, _, _ = count_in_place(real.table, sampled.table, own, made, _OF_SAMPLE)
    return InPlace(attribute, column_names(real, sampled, attribute), cells, same, chance)


def count_in_place(
    original: Table, made: Table, own: str, became: str, chance: str = _OF_COPY
) -> tuple[int, int, float, int, int]:
    """Counts what is the same in two tables row by row.

    Args:
        original: The real table.
        made: The made-up one, which is kept beside it.
        own: What it is of a real row, ``was``, ``key`` and ``alike``, in SQL.
        became: What it is of a made-up one, ``became``, likewise.
        chance: How many are the same by chance in a group of rows that are alike, likewise.

    Returns:
        How many rows have both, in how many it is the same, in how many it would be by chance,
        how many keys have several values, and how many values are of several keys.
    """
    beside = BESIDE.format(own=own, made=became)
    sql = _MATCHED.format(beside=beside, fewest=FEWEST_ROWS, chance=chance)
    ((cells, same, expected, torn, shared),) = original.query(sql, made)
    return cells, same, float(expected), torn, shared


def meaning(attribute: str, column: str) -> str:
    """What a cell means, however it is written."""
    if attribute in ("firstname", "lastname", "fullname"):
        return sorted_words(column)
    return digits(column) if attribute in PHONES else plain(column)

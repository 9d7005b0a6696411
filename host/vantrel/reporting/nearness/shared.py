"""What a sample shares with real people, and how much of it chance explains."""

from __future__ import annotations

import math
from collections.abc import Sequence
from dataclasses import dataclass

import numpy as np

from vantrel.reporting.distances import RISK
from vantrel.reporting.labelled import LabelledTable
from vantrel.reporting.nearness.forms import Form

MOST_EXAMPLES = 5

# Halves are put together within one column, shape, country and gender, whose values are alike, if
# there are as many rows; fewer tell little.
FEWEST_ROWS = 10

# How many events above the expected number are looked at; more hardly ever happen.
_MORE_EVENTS, _DEVIATIONS = 30, 10

# Halves are not wholly independent of each other, which shows where there are very many rows.
_ALLOWANCE = 1.02


@dataclass(frozen=True)
class Example:
    """A real value that the sample has, too.

    Args:
        value: The value as the real table has it.
        rows: How many sampled rows have it.
        first_row: The first of these, from 1 on.
    """

    value: str
    rows: int
    first_row: int


@dataclass(frozen=True)
class Shared:
    """What of one kind the sample shares with real people.

    Args:
        kind: What is compared, in words.
        real_values: The number of distinct values of the real table.
        found: How many of these the sample has.
        sampled_rows: How many sampled values there are: the rows that have one, for telephone
            numbers of each column.
        bearing: How many of these are one of the real table's.
        chance: How many would be, by expectation, if the halves of the sampled values were put
            together at random.
        examples: Some, those of the most sampled rows first.
        rows_of_one: How many rows have a value together, as they are one person's.
    """

    kind: str
    real_values: int
    found: int
    sampled_rows: int
    bearing: int
    chance: float
    examples: tuple[Example, ...]
    rows_of_one: float = 1.0

    @property
    def limit(self) -> int:
        """How many chance explains, but for the risk."""
        return most_by_chance(self.chance * _ALLOWANCE, self.rows_of_one)

    @property
    def is_by_chance(self) -> bool:
        """Whether chance explains what is shared."""
        return self.bearing <= self.limit


def most_by_chance(expected: float, at_once: float = 1.0) -> int:
    """How many rare events chance makes of so many expected ones at most, but for the risk.

    Their number has a Poisson distribution.

    Args:
        expected: How many are expected.
        at_once: How many of them come together.
    """
    mean = expected / at_once
    if mean <= 0:
        return 0
    first = int(mean)
    events = first + np.arange(_MORE_EVENTS + int(_DEVIATIONS * math.sqrt(mean)))
    ratios = np.concatenate([[0.0], np.cumsum(np.log(mean / events[1:]))])
    shares = np.exp(first * math.log(mean) - mean - math.lgamma(first + 1) + ratios)
    is_likely = np.cumsum(shares[::-1])[::-1] > RISK  # of so many events or more
    return int(events[is_likely].max(initial=first) * at_once)


# Keys and halves are compared by hashes of 64 bits, which take little memory. Values themselves are
# looked up at the end, for the few that are shown.
_OF_REAL = (
    "SELECT hash({key}) AS key, hash({first}) AS first, hash({second}) AS second FROM {{rows}}"
    " WHERE {key} <> ''"
)
_OF_SAMPLED = (
    "SELECT number, hash({key}) AS key, hash({first}) AS first, hash({second}) AS second,"
    " hash({alike}) AS grouped FROM (SELECT *, row_number() OVER () AS number FROM {{other}})"
    " WHERE {key} <> ''"
)
_AS_WRITTEN = "SELECT hash({key}) AS key, {shown} AS value FROM {{rows}} WHERE {key} <> ''"
_SHARED = """
    WITH of_real AS MATERIALIZED ({real}), of_sampled AS MATERIALIZED ({sampled}),
    real AS (SELECT DISTINCT key FROM of_real),
    sampled AS (SELECT key, count(*) AS rows, min(number) AS row FROM of_sampled GROUP BY key),
    shared AS MATERIALIZED (SELECT key, rows, row FROM real JOIN sampled USING (key)),
    examples AS (SELECT * FROM shared ORDER BY rows DESC, row LIMIT {most}),
    shown AS (
        SELECT min(value) AS value, any_value(rows) AS rows, any_value(row) AS row
        FROM ({as_written}) JOIN examples USING (key) GROUP BY key
    )
    SELECT
        (SELECT count(*) FROM real), (SELECT coalesce(sum(rows), 0) FROM sampled),
        (SELECT count(*) FROM shared), (SELECT coalesce(sum(rows), 0) FROM shared),
        (SELECT list(shown ORDER BY rows DESC, row) FROM shown),
        ({chance})
"""

# If the second halves of n rows are dealt out anew, a real value comes as often as its first half
# is there, times its second one, divided by n; what is together already may stay so. Real names may
# have their halves in the other order. What is materialized keeps the engine from pairing all
# halves.
_CHANCE = """
    WITH sizes AS (SELECT grouped, count(*) AS size FROM of_sampled GROUP BY grouped),
    sampled AS MATERIALIZED (
        SELECT first, second, CASE WHEN size >= {fewest} THEN grouped ELSE 0 END AS place,
            count(*) AS rows
        FROM of_sampled JOIN sizes USING (grouped) GROUP BY ALL
    ),
    firsts AS (SELECT place, first, sum(rows) AS firsts FROM sampled GROUP BY ALL),
    seconds AS (SELECT place, second, sum(rows) AS seconds FROM sampled GROUP BY ALL),
    totals AS (SELECT place, sum(rows) AS total FROM sampled GROUP BY ALL HAVING total > 1),
    real AS (
        SELECT first, second FROM of_real UNION SELECT second AS first, first AS second FROM of_real
    ),
    begun AS MATERIALIZED (
        SELECT first, second, place, firsts FROM real JOIN firsts USING (first)
        WHERE second IN (SELECT second FROM seconds)
    )
    SELECT coalesce(sum(firsts * seconds / total), 0)
    FROM begun JOIN seconds USING (second, place) JOIN totals USING (place)
"""
_NO_CHANCE = "SELECT 0"


def compare_shared(
    kind: str,
    tables: tuple[LabelledTable, LabelledTable],
    forms: tuple[Sequence[Form], Sequence[Form]],
    most_expected: float | None = None,
) -> Shared:
    """Looks for a real table's values of one kind in a sample.

    Args:
        kind: What is compared, in words.
        tables: The real table, and a sample that is kept beside it.
        forms: The values of each.
        most_expected: What chance explains at most, if more than the halves is known.
    """
    real, sampled = tables
    has_halves = forms[0][0].halves is not None and most_expected != 0
    sql = _SHARED.format(
        real=_values(_OF_REAL, real, forms[0], has_halves),
        sampled=_values(_OF_SAMPLED, sampled, forms[1], has_halves),
        as_written=_values(_AS_WRITTEN, real, forms[0], has_halves),
        most=MOST_EXAMPLES,
        chance=_CHANCE.format(fewest=FEWEST_ROWS) if has_halves else _NO_CHANCE,
    )
    ((real_values, rows, found, bearing, shown, met),) = real.table.query(sql, sampled.table)
    chances = [float(met)] if has_halves else []
    chances += [] if most_expected is None else [most_expected]
    examples = tuple(Example(*each.values()) for each in shown or ())
    return Shared(kind, real_values, found, int(rows), int(bearing), min(chances), examples)


def _values(sql: str, table: LabelledTable, forms: Sequence[Form], has_halves: bool) -> str:
    """The values of a table, a row for each."""
    return " UNION ALL ".join(
        sql.format(
            key=form.key,
            first=first,
            second=second,
            alike=", ".join([str(column), form.shape, *alike_in_names(table, first)]),
            shown=form.shown,
        )
        for column, form in enumerate(forms)
        for first, second in [form.halves if form.halves and has_halves else ("NULL", "NULL")]
    )


def alike_in_names(table: LabelledTable, first: str) -> list[str]:
    """What is alike in the rows whose names are drawn from the same lists, in SQL.

    Whoever has no country is taken for somebody from where most have her first half: else names of
    all countries would seem to be mixed.
    """
    alike = [table.column(each) for each in ("country", "gender") if table.has(each)]
    if table.has("country") and table.missing_rate("country"):
        alike[0] = f"coalesce({alike[0]}, mode({alike[0]}) OVER (PARTITION BY {first}))"
    return alike

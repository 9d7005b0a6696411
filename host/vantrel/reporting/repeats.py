"""How many rows and accounts of a sample repeat another one by chance."""

from __future__ import annotations

from collections.abc import Mapping, Sequence

from vantrel.attributes import LEARNT
from vantrel.reporting.labelled import LabelledTable
from vantrel.reporting.nearness.forms import Forms, addresses, full_name, usernames
from vantrel.reporting.nearness.shared import FEWEST_ROWS, alike_in_names
from vantrel.sampling.blocks import BLOCK_ROWS

_ACCOUNTS: Mapping[str, Forms] = {"email": addresses, "username": usernames}

# Rows of a group agree in what was learnt; of the few rows of small groups this is one more part.
_PLACED = """
    WITH told AS (SELECT hash({alike}) AS grouped, {parts} FROM {{rows}} WHERE {there}),
    sizes AS (SELECT grouped, count(*) AS size FROM told GROUP BY grouped),
    placed AS MATERIALIZED (
        SELECT CASE WHEN size >= {fewest} THEN grouped ELSE 0 END AS place, told.*
        FROM told JOIN sizes USING (grouped)
    ),
    totals AS (
        SELECT place, count(*) * (count(*) - 1.0) AS pairs FROM placed GROUP BY place
        HAVING count(*) > 1
    )
    SELECT coalesce(sum(pairs / 2 * {rates}), 0) FROM totals {joined}
"""
_OF_PART = """
    JOIN (
        SELECT place, sum(rows * (rows - 1.0)) AS {part}_pairs FROM
        (SELECT place, count(*) AS rows FROM placed GROUP BY place, {part}) GROUP BY place
    ) USING (place)
"""


def repeats_by_chance(table: LabelledTable, attributes: Sequence[str]) -> float | None:
    """Expects how many pairs of rows are alike, as each part of a row is drawn apart.

    Two rows of one gender, title, country and gaps are alike if all parts are that were made up for
    them, such as first and last name: each is in as many pairs of rows as are counted here.

    Args:
        table: A sample.
        attributes: What its rows are compared in.

    Returns:
        The expected number; None where there are no two parts, so that nothing could be dealt out.
    """
    parts = _parts(table, attributes)
    if len(parts) < 2:
        return None
    columns = [table.column(each) for each in attributes]
    learnt = [table.column(each) for each in attributes if each in LEARNT]
    alike = [*learnt, *alike_in_names(table, parts[0]), *(f"{each} IS NULL" for each in columns)]
    there = " OR ".join(f"{column} IS NOT NULL" for column in columns)
    return _expected_pairs(table, alike, parts, there)


def accounts_by_chance(table: LabelledTable, attribute: str) -> float | None:
    """Expects how many pairs of e-mail addresses or user names are alike.

    Both are a first name and what stands behind it, put together at random. No user name comes
    twice in a block.

    Returns:
        The expected number; None of other attributes.
    """
    if attribute not in _ACCOUNTS or not table.has(attribute):
        return None
    (form,) = _ACCOUNTS[attribute](table)
    parts = form.halves or (form.key, "''")
    alike = [form.shape, *alike_in_names(table, parts[0])]
    pairs = _expected_pairs(table, alike, parts, f"{table.column(attribute)} IS NOT NULL")
    return pairs * _share_of_two_blocks(len(table)) if attribute == "username" else pairs


def _share_of_two_blocks(rows: int) -> float:
    """The share of the pairs of rows that are in two blocks of a sample."""
    whole, rest = divmod(rows, BLOCK_ROWS)
    within = whole * BLOCK_ROWS * (BLOCK_ROWS - 1) + rest * (rest - 1)
    return 1 - within / max(rows * (rows - 1), 1) if whole else 0.0


def _expected_pairs(
    table: LabelledTable, alike: Sequence[str], parts: Sequence[str], there: str
) -> float:
    """Expects how many pairs of rows have all parts in common if these are dealt out anew.

    Args:
        table: A sample.
        alike: What is alike in the rows of which the parts are drawn from the same lists, in SQL.
        parts: What is drawn apart, in SQL.
        there: Which rows count, in SQL.
    """
    names = ["grouped", *(f"part{at}" for at in range(len(parts)))]
    sql = _PLACED.format(
        alike=", ".join(alike),
        parts=", ".join(f"hash({part}) AS part{at}" for at, part in enumerate(parts)),
        there=there,
        fewest=FEWEST_ROWS,
        rates=" * ".join(f"({name}_pairs / pairs)" for name in names),
        joined=" ".join(_OF_PART.format(part=name) for name in names),
    )
    ((expected,),) = table.table.query(sql)
    return float(expected)


def _parts(table: LabelledTable, attributes: Sequence[str]) -> list[str]:
    """What is made apart from each other; a full name is a first and a last one."""
    parts = [each for each in attributes if each not in (*LEARNT, "fullname")]
    found = [table.column(each) for each in parts]
    if "fullname" in attributes and not {"firstname", "lastname"} <= {*parts}:
        found = [*(full_name(table)[0].halves or ()), *found]
    return found

"""Which real names the sample has, too."""

from __future__ import annotations

from collections.abc import Callable, Sequence
from dataclasses import dataclass

from vantrel.attributes import NAMES
from vantrel.reporting.labelled import LabelledTable

MOST_EXAMPLES = 5


@dataclass(frozen=True)
class Overlap:
    """How many of the real table's names are in the sample.

    Names are compared without regard to case and to the amount of white space.

    Args:
        kind: What is compared, in words.
        is_whole: Whether it is a person's whole name, which tells more than a part of it.
        real_names: The number of distinct names of the real table.
        found: How many of these the sample has.
        sampled_rows: The number of sampled rows that have a name of the kind.
        bearing: How many of these have one of the real table.
        examples: Some that are in both, as the real table has them, those of the most sampled
            rows first.
    """

    kind: str
    is_whole: bool
    real_names: int
    found: int
    sampled_rows: int
    bearing: int
    examples: tuple[str, ...]


def name_overlaps(real: LabelledTable, sampled: LabelledTable) -> tuple[Overlap, ...]:
    """Looks for the real table's names in the sample, one entry for each kind that both have.

    Where only one of them has a column of full names, those of the other are its first and last
    names.
    """
    kinds = list(_KINDS)
    if not any(table.has("fullname") for table in (real, sampled)):
        kinds.remove(_FULL_NAME)
    real.table.function("folded", _folded)
    found = []
    for kind, is_whole, names in kinds:
        in_real, in_sample = names(real), names(sampled)
        if in_real is not None and in_sample is not None:
            found.append(_overlap(kind, is_whole, real, sampled, (in_real, in_sample)))
    return tuple(found)


def are_unchecked(real: LabelledTable, sampled: LabelledTable, found: Sequence[Overlap]) -> bool:
    """Tells whether the sample has names that none of the real table are known for.

    Where it has whole names, parts of them that were looked for do not count.
    """
    if has_whole_names(sampled):
        return not has_whole_names(real)
    return any(map(sampled.has, NAMES)) and not found


def has_whole_names(table: LabelledTable) -> bool:
    """Tells whether a table holds full names, or first and last ones."""
    return table.has("fullname") or table.has("firstname", "lastname")


def _full_names(table: LabelledTable) -> str | None:
    return _names("fullname")(table) or _first_and_last(table)


def _first_and_last(table: LabelledTable) -> str | None:
    if not table.has("firstname", "lastname"):
        return None
    return f"{table.column('firstname')} || ' ' || {table.column('lastname')}"


def _names(attribute: str) -> Callable[[LabelledTable], str | None]:
    return lambda table: table.column(attribute) if table.has(attribute) else None


# What the names of each kind are in SQL.
_FULL_NAME = ("Full name", True, _full_names)
_KINDS = (
    _FULL_NAME,
    ("First and last name together", True, _first_and_last),
    ("First name", False, _names("firstname")),
    ("Last name", False, _names("lastname")),
)

# Folded names and one spelling of each, the first of the alphabet, and how many rows sampled ones
# are in; each distinct name is folded once.
_SHARED = """
    WITH real AS (
        SELECT folded(name) AS fold, min(name) AS name
        FROM (SELECT DISTINCT {real} AS name FROM {{rows}})
        WHERE name IS NOT NULL GROUP BY fold HAVING fold <> ''
    ), sampled AS (
        SELECT folded(name) AS fold, sum(rows) AS rows
        FROM (SELECT {sampled} AS name, count(*) AS rows FROM {{other}} GROUP BY 1)
        WHERE name IS NOT NULL GROUP BY fold
    ), shared AS (SELECT fold, name, rows FROM real JOIN sampled USING (fold))
    SELECT
        (SELECT count(*) FROM real), (SELECT coalesce(sum(rows), 0) FROM sampled),
        count(*), coalesce(sum(rows), 0),
        min({{'rows': -rows, 'fold': fold, 'name': name}}, {most})
    FROM shared
"""


def _overlap(
    kind: str, is_whole: bool, real: LabelledTable, sampled: LabelledTable, names: tuple[str, str]
) -> Overlap:
    sql = _SHARED.format(real=names[0], sampled=names[1], most=MOST_EXAMPLES)
    ((real_names, rows, found, bearing, examples),) = real.table.query(sql, sampled.table)
    spellings = tuple(each["name"] for each in examples or ())
    return Overlap(kind, is_whole, real_names, found, int(rows), int(bearing), spellings)


def _folded(name: str) -> str:
    return " ".join(name.casefold().split())

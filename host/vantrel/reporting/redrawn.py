"""Rows whose title a model draws anew, by coarser counts, as too few are alike."""

from __future__ import annotations

from collections import Counter
from collections.abc import Mapping

from vantrel.attributes import LEARNT, WORDS
from vantrel.reporting.labelled import LabelledTable
from vantrel.reporting.meant import Meant
from vantrel.rows import DEFAULT_MIN_COUNT

type _Cells = tuple[str | None, ...]


def redrawn_rows(real: LabelledTable, meant: Meant | None) -> Mapping[_Cells, int]:
    """Counts the rows whose titles a model draws anew, by what their learnt columns hold.

    A combination is kept with the gaps of its rows if so many rows have both as the model wants,
    and what is left of it without these if that is as many. These titles are not those of the real
    rows, so that their shares may be off by as many rows.

    Args:
        real: The real table.
        meant: What the model was to give, if that is known.
    """
    fewest = (meant and meant.expected.min_count) or DEFAULT_MIN_COUNT
    together: Counter[tuple[_Cells, str]] = Counter()
    of_gaps: Counter[str] = Counter()
    for cells, gaps, rows in _with_gaps(real):
        together[cells, gaps] += rows
        of_gaps[gaps] += rows
    rare = {gaps for gaps, rows in of_gaps.items() if rows < fewest}
    by_gaps: Counter[tuple[_Cells, str | None]] = Counter()
    for (cells, gaps), rows in together.items():
        by_gaps[cells, None if gaps in rare else gaps] += rows
    left: Counter[_Cells] = Counter()
    for (cells, _), rows in by_gaps.items():
        left[cells] += rows if rows < fewest else 0
    return {cells: rows for cells, rows in left.items() if 0 < rows < fewest}


def redrawn_share(real: LabelledTable, meant: Meant | None) -> float:
    """The share of all rows of a real table whose titles a model draws anew."""
    return sum(redrawn_rows(real, meant).values()) / max(len(real), 1)


def _with_gaps(real: LabelledTable) -> list[tuple[_Cells, str, int]]:
    learnt = [real.column(each) for each in LEARNT if real.has(each)]
    others = [real.column(each) for each in WORDS if each not in LEARNT and real.has(each)]
    gaps = " || ".join(f"({column} IS NULL)::INT" for column in others) or "''"
    found = real.table.query(
        f"SELECT {', '.join([*learnt, gaps])}, count(*) FROM {{rows}} GROUP BY ALL"
    )
    return [(tuple(cells), gaps, rows) for *cells, gaps, rows in found]

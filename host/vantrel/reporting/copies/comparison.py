"""Compares a table with its copy in which people were replaced."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, override

from vantrel.errors import CompareError
from vantrel.hints import listed
from vantrel.reporting.copies.acted import compare_acted
from vantrel.reporting.copies.cells import compare_kept, compare_replaced
from vantrel.reporting.copies.figures import CopyFigures
from vantrel.reporting.copies.judged import (
    judge_acted,
    judge_kept,
    judge_leaks,
    judge_origin,
    judge_replaced,
    judge_rows,
)
from vantrel.reporting.copies.people import compare_people
from vantrel.reporting.copies.record import CopyRecord
from vantrel.reporting.judged import Judged
from vantrel.reporting.labelled import LabelledTable, as_table
from vantrel.reporting.nearness.judged import COPY, judge_nearness
from vantrel.reporting.page import Sources, render_copy
from vantrel.reporting.verdict import Verdict
from vantrel.tables import Table
from vantrel.wording import counted


@dataclass(frozen=True, repr=False)
class CopyComparison(Judged):
    """How a table and its copy compare; ``print`` shows the verdicts.

    Args:
        figures: All figures.
        record: How the copy was made.
    """

    figures: CopyFigures
    record: CopyRecord

    @property
    @override
    def verdicts(self) -> list[Verdict]:
        figures = self.figures
        found = [judge_rows(figures.real_rows, figures.copied_rows, figures.made_rows)]
        if figures.real_rows == figures.copied_rows:
            found += [judge_kept(figures.kept), *judge_replaced(figures.replaced)]
            found += judge_acted(figures.acted)
        found += [*judge_nearness(figures.nearness, COPY), judge_leaks(figures.leaks)]
        return [*found, *judge_origin(figures.is_changed)]

    @property
    @override
    def summary(self) -> str:
        rows = counted(self.figures.real_rows, "row")
        return f"Compared {rows} with {counted(self.figures.copied_rows, 'row')} of a copy"

    @override
    def to_html(self, real: str = "real table", sample: str = "copy") -> str:
        return render_copy(self.figures, self.verdicts, Sources(real, sample), self.record)


def compare_copy(real: Any, copied: Any, record: CopyRecord) -> CopyComparison:
    """Compares a table with its copy.

    Args:
        real: The table whose people were replaced, as :func:`vantrel.compare` takes it.
        copied: The copy, likewise.
        record: How it was made, as ``read_copy_record`` of ``vantrel.reporting.copies.record``
            reads it, or ``read_database_record``. Rows of a database are told by their primary key.

    Raises:
        ArgumentTypeError: One of the tables is none.
        CompareError: The record is not that of a copy of this table.
    """
    original, copy = as_table(real, "An original"), as_table(copied, "A copy")
    _refuse_other_table(original, copy, record)
    was = original.kept(original.columns, sorted_by=record.primary_key)
    became = copy.kept(copy.columns, original, sorted_by=record.primary_key)
    real_rows, copied_rows = (len(LabelledTable(each, {})) for each in (was, became))
    is_whole = real_rows == copied_rows
    figures = CopyFigures(
        real_rows,
        copied_rows,
        record.rows,
        compare_kept(was, became, record) if is_whole else (),
        compare_replaced(was, became, record) if is_whole else (),
        compare_acted(was, became, record) if is_whole else (),
        compare_people(was, became, record),
        tuple(record.leaks),
        record.is_changed(copy.path) if isinstance(copied, Table) else None,
    )
    return CopyComparison(figures, record)


def _refuse_other_table(original: Table, copy: Table, record: CopyRecord) -> None:
    for what, table in (("original", original), ("copy", copy)):
        if absent := [each for each in record.asked if each not in table.columns]:
            raise CompareError(
                f"The record beside the copy tells of columns that the {what} has not:"
                f" {listed(absent)}. It belongs to another table. The columns of the {what} are:"
                f" {listed(table.columns)}."
            )
    if absent := [each for each in original.columns if each not in copy.columns]:
        raise CompareError(
            f"The copy has not all columns of the original, without: {listed(absent)}. It is a copy"
            " of another table, or was changed."
        )

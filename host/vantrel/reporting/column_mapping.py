"""Tells which columns of two tables hold the same attributes."""

from __future__ import annotations

from collections.abc import Collection, Mapping

from vantrel.attributes import NAMES, WORDS
from vantrel.detection import detect
from vantrel.detection.values import SAMPLE_SIZE
from vantrel.reporting.labelled import LabelledTable
from vantrel.tables import Table

_Columns = Mapping[str, str]


def label(
    real: Table, sampled: Table, given: _Columns, recorded: _Columns
) -> tuple[LabelledTable, LabelledTable]:
    """Labels a real table and a sample of it, whose columns may be named otherwise.

    An attribute's column is, in each table for itself, the given one if it is there, else the
    recorded one, else the one that is found by its name and values. Where columns are given or
    recorded, no other attributes are looked for, but names of any kind beside names.

    Args:
        real: The real table.
        sampled: The sample.
        given: Columns by attribute, as the user names them.
        recorded: The same as recorded when the sample was made.
    """
    wanted = _wanted({*given, *recorded})
    in_real = _known(real, given, recorded)
    in_real |= _found(real, in_real, wanted)
    in_sample = _known(sampled, given, recorded, in_real)
    in_sample |= _found(sampled, in_sample, wanted)
    in_real = _known(real, in_real, in_sample)
    return (
        LabelledTable(real.kept(in_real.values()), in_real),
        LabelledTable(sampled.kept(in_sample.values(), beside=real), in_sample),
    )


def _wanted(told: set[str]) -> set[str]:
    names = NAMES if not told.isdisjoint(NAMES) else ()
    return {*told, *names} or set(WORDS)


def _known(table: Table, *sources: _Columns) -> dict[str, str]:
    """The columns of a table that sources know, the first source first; none is taken twice."""
    known: dict[str, str] = {}
    for source in sources:
        for attribute, column in source.items():
            if attribute not in known and column in table.columns and column not in known.values():
                known[attribute] = column
    return known


def _found(table: Table, known: _Columns, wanted: Collection[str]) -> dict[str, str]:
    found = detect(table.excerpt(SAMPLE_SIZE), known=known).columns
    return {attribute: column for attribute, column in found.items() if attribute in wanted}

"""What came of a run on files or on a database."""

from __future__ import annotations

from collections.abc import Mapping
from dataclasses import dataclass
from pathlib import Path

from vantrel.replacing.columns.roles import Roles
from vantrel.replacing.leaks import Leak
from vantrel.replacing.others.action import Action
from vantrel.replacing.people.report import Report
from vantrel.replacing.runs.asked import OfTable


@dataclass(frozen=True)
class Replaced:
    """A table whose people were replaced.

    Attributes:
        path: The table.
        output: The copy; None where the table itself was changed.
        roles: What its columns were taken for.
        asked: What was asked of it.
        rows: The number of its rows.
        has_people: Whether somebody was replaced in some of them.
        staying: The other columns, of which nothing else was asked.
        leaks: Who is still named in it.
        others: The actions of other columns.
        notes: What is to be told of these.
    """

    path: Path
    output: Path | None
    roles: Roles
    asked: OfTable
    rows: int
    has_people: bool
    staying: tuple[str, ...]
    leaks: list[Leak]
    others: Mapping[str, Action]
    notes: list[str]


@dataclass(frozen=True)
class Outcome:
    """What came of a run.

    Attributes:
        tables: The tables, in the order in which they were given.
        report: What came of all of them.
        notes: What is to be told of each table, by its name where there are several, and of all.
    """

    tables: list[Replaced]
    report: Report
    notes: list[str]

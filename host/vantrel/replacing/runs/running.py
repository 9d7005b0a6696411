"""What runs on files and on databases have in common: learning, and telling what came of it."""

from __future__ import annotations

import secrets
from collections.abc import Callable, Iterable, Iterator, Mapping, Sequence
from contextlib import AbstractContextManager
from functools import partial
from itertools import chain
from pathlib import Path
from types import MappingProxyType
from typing import Any

from vantrel.errors import LeakError, UndecidedError
from vantrel.hints import named
from vantrel.replacing.fates import UNDECIDED
from vantrel.replacing.leaks import Leak
from vantrel.replacing.others.faked import refuse_failing
from vantrel.replacing.people.people import People
from vantrel.replacing.people.report import Report, Table
from vantrel.replacing.plan import Decided, write_plan
from vantrel.replacing.runs.asked import Asked
from vantrel.replacing.runs.notes import (
    further,
    note_on_leak,
    notes_on_table,
    notes_on_undecided,
)
from vantrel.replacing.runs.opened import OpenedTable
from vantrel.replacing.runs.outcome import Replaced
from vantrel.replacing.runs.passing import Passing
from vantrel.replacing.runs.remedies import Arguments, InPlan, Remedies
from vantrel.replacing.runs.secret import checked_secret, read_or_draw_secret
from vantrel.storage.files import replacing

# From what is done and the number of rows, where it is known, to what is told of further rows.
type Progress = Callable[[str, int | None], AbstractContextManager[Callable[[int], object]]]

type Opened = OpenedTable[Any]


def secret_of(file: Path | None) -> tuple[bytes, bool]:
    """Gives the secret of a run, and whether it is a new one that the file is to keep."""
    return (checked_secret(None), False) if file is None else read_or_draw_secret(file)


def learnt(
    secret: bytes,
    asked: Asked,
    only_read: Sequence[Opened],
    replaced: Sequence[Opened],
    progress: Progress,
) -> People:
    """Learns who is who from the tables of a run, first from those that are only read."""
    who = People(secret, place=asked.place, no_real=asked.no_real, ways=asked.ways)
    with progress("Reading", None) as further:

        def learn(tables: Sequence[Opened]) -> None:
            for table in tables:
                for batch in table.copied.batches(table.roles.needed):
                    who.learn(batch, table.roles, table.name)
                    further(batch.num_rows)

        if only_read:
            learn(only_read)
            who.end_what_is_only_read()
        learn(replaced)
    who.settle()
    for table in replaced:
        refuse_failing(table.others, partial(_locales_of, who, table))
    return who


def _locales_of(who: People, table: Opened, column: str) -> set[str]:
    return who.locales_in(table.name, table.roles.owner(column))


def leaks_to_come(
    asked: Asked, only_read: Sequence[Opened], tables: Sequence[Opened], progress: Progress
) -> dict[str, list[Leak]]:
    """Tells by their names who would still be named in tables, whatever the secret is."""
    who = learnt(secrets.token_bytes(), asked, only_read, tables, progress)
    leaks = {}
    with progress("Searching", rows_learnt(who, tables)) as further:
        for table in tables:
            passing = Passing(who, table.roles, table.asked.scrub, table.others)
            for batch in table.copied.batches(table.copied.columns):
                passing(batch)
                further(batch.num_rows)
            leaks[table.name] = passing.leaks()
    return leaks


def write_plan_of(
    tables: Iterable[Opened],
    plan: Path,
    leaks: Mapping[str, Sequence[Leak]] = MappingProxyType({}),
    ties: Mapping[str, Mapping[str, str]] = MappingProxyType({}),
    *,
    force: bool,
) -> None:
    """Writes what would become of each column of tables as a plan.

    Args:
        tables: The tables.
        plan: The file of the plan.
        leaks: Who would still be named in each, by its name, as far as that was looked for.
        ties: Why columns cannot be changed, by the names of tables and columns, where any are so.
        force: Whether a file is overwritten that is there.
    """
    text = write_plan(
        {
            table.copied.path.name: Decided(
                table.roles,
                table.copied.columns,
                table.asked.fates,
                table.empty,
                leaks.get(table.name, ()),
                ties.get(table.name, {}),
            )
            for table in tables
        }
    )
    with replacing(plan, force=force) as file:
        file.write(text)


def rows_learnt(who: People, tables: Iterable[Opened]) -> int:
    """The number of the rows of tables that were learnt."""
    return sum(who.tables[table.name].rows for table in tables if table.name in who.tables)


def replaced_by(passing: Passing, table: Opened, output: Path | None) -> Replaced:
    """Tells what became of a table, all of whose rows have passed."""
    return Replaced(
        table.copied.path,
        output,
        table.roles,
        table.asked,
        passing.rows,
        passing.has_people,
        table.staying,
        passing.leaks(),
        table.others,
        passing.notes(),
    )


def notes_on(
    only_read: Sequence[Opened],
    tables: Sequence[Opened],
    replaced: Sequence[Replaced],
    report: Report,
) -> Iterator[str]:
    """Tells of each table what is to be told; by its name where there are several."""
    known: list[tuple[Opened, list[Leak], list[str]]] = [(each, [], []) for each in only_read]
    known += [(table, done.leaks, done.notes) for table, done in zip(tables, replaced, strict=True)]
    for table, leaks, on_others in known:
        met = report.tables.get(table.name, Table())
        remedies = _remedies(table)
        on_table = notes_on_table(table.roles, table.others, met, leaks, remedies)
        undecided = notes_on_undecided(table.roles, table.asked.undecided, table.advised, remedies)
        for note in chain(on_table, on_others, undecided):
            yield f"{named(table.name)}: {note}" if len(known) > 1 else note


def _remedies(table: Opened | Replaced) -> Remedies:
    """How something else is done with the columns of a table: in the plan that knows it, if any."""
    plan = table.asked.plan
    return InPlan(plan, table.path.name, table.roles) if plan else Arguments(has_plans=True)


def refuse_undecided(tables: Sequence[Opened]) -> None:
    """Refuses tables that have columns of which nobody has decided what becomes of them."""
    _refuse_as_undecided(
        f"{named(table.name)}: {note}"
        for table in tables
        for note in notes_on_undecided(
            table.roles, table.asked.undecided, table.advised, _remedies(table)
        )
    )


def refuse_leaks(tables: Sequence[Replaced], asked: Asked) -> None:
    """Refuses tables in which somebody is still named, as far as that is asked for."""
    if asked.fail_on_leak:
        _refuse_any_leak(tables)
    if asked.strict:
        _refuse_undecided_leaks(tables)


def _refuse_undecided_leaks(tables: Iterable[Replaced]) -> None:
    """Refuses columns in which somebody is still named, unless it was decided that they stay."""
    _refuse_as_undecided(
        f"{named(table.path)}: {note_on_leak(leak, table.roles, _remedies(table))}."
        for table in tables
        for leak in table.leaks
        if leak.kind == "person"
        and leak.column not in table.roles.keys
        and table.asked.fates.get(leak.column, UNDECIDED) == UNDECIDED
    )


def _refuse_as_undecided(notes: Iterable[str]) -> None:
    if undecided := list(notes):
        raise UndecidedError(
            f"Nothing was written, as columns look personal and are not decided."
            f" {' '.join(undecided)}"
        )


def _refuse_any_leak(tables: Iterable[Replaced]) -> None:
    """Refuses tables in which somebody is still named."""
    leaks = [
        f"{named(table.path)}: {note_on_leak(leak, table.roles, _remedies(table))}"
        for table in tables
        for leak in table.leaks
        if leak.kind == "person"
    ]
    leaks += [
        f"{named(table.path)}: {note}"
        for table in tables
        for note in further(table.roles, _remedies(table))
    ]
    if leaks:
        raise LeakError(
            f"Nothing was written, as people are still named. {'; '.join(leaks)}. Do so, or leave"
            " these columns out of the tables."
        )

"""Replaces the people of tables of a database where they are, in one transaction."""

from __future__ import annotations

import logging
from collections.abc import Callable, Iterable, Iterator, Mapping, Sequence
from contextlib import ExitStack
from dataclasses import dataclass, field, replace
from pathlib import Path

import pyarrow as pa

from vantrel.databases.changing import NewValues
from vantrel.databases.database import Database
from vantrel.databases.lengths import fitted
from vantrel.databases.refusals import (
    lacks_key,
    refuse_tied,
    refuse_unchangeable,
    refuse_unhashable,
    refuse_without_key,
    ties_of,
)
from vantrel.databases.table import DatabaseTable, opened_table
from vantrel.hints import NOTES_LOGGER, listed, named
from vantrel.replacing.people.people import People
from vantrel.replacing.runs.asked import Asked, refuse_unplanned
from vantrel.replacing.runs.chosen import chosen_tables, notes_on_others
from vantrel.replacing.runs.notes import notes_on_people
from vantrel.replacing.runs.opened import (
    OpenedTable,
    all_understood,
    open_people,
    refuse_unknown_columns,
)
from vantrel.replacing.runs.outcome import Outcome
from vantrel.replacing.runs.passing import Passing
from vantrel.replacing.runs.record import database_record_of, write_form
from vantrel.replacing.runs.running import (
    Progress,
    leaks_to_come,
    learnt,
    notes_on,
    refuse_leaks,
    refuse_undecided,
    replaced_by,
    rows_learnt,
    secret_of,
    write_plan_of,
)
from vantrel.replacing.runs.secret import write_secret
from vantrel.storage.files import refuse_missing_folder, refuse_overwriting
from vantrel.storage.together import replacing_together
from vantrel.wording import listed as joined

_SHOWN_ROWS = 10

_log = logging.getLogger(NOTES_LOGGER)


@dataclass(frozen=True)
class Excerpt:
    """The first rows of a table as they are, and as they would be.

    Attributes:
        table: The name of the table.
        key: The columns of its primary key.
        columns: The columns that are changed.
        keys: The values of the key in each row.
        before: The values of the columns that are changed.
        after: Those that take their place, as texts.
    """

    table: str
    key: tuple[str, ...]
    columns: tuple[str, ...]
    keys: list[list[object]] = field(default_factory=list)
    before: list[list[object]] = field(default_factory=list)
    after: Sequence[Sequence[object]] = ()

    def add(self, batch: pa.RecordBatch) -> None:
        """Takes the first rows of a batch, if there are too few yet."""
        rows = min(_SHOWN_ROWS - len(self.before), batch.num_rows)
        self.keys.extend(_rows([batch.column(name) for name in self.key], rows))
        self.before.extend(_rows([batch.column(name) for name in self.columns], rows))


def _rows(columns: Sequence[pa.Array], rows: int) -> list[list[object]]:
    return [[column[row].as_py() for column in columns] for row in range(rows)]


class _Changed:
    """A table on its way to be changed."""

    def __init__(
        self,
        table: OpenedTable[DatabaseTable],
        who: People,
        number: int,
        further: Callable[[int], object],
    ) -> None:
        columns = table.changed
        self._excerpt = Excerpt(table.copied.name, table.copied.key, tuple(columns))
        self.values = NewValues(table.copied, list(columns), number)
        self._told = table.copied.told
        derived = [name for name, column in self._told.items() if column.is_generated]
        self.passing = Passing(who, table.roles, table.asked.scrub, table.others, derived)
        self._made_as = columns
        self._further = further

    def __call__(self, batch: pa.RecordBatch) -> dict[str, pa.Array]:
        """Makes the new values of a batch."""
        made = self.passing(batch)
        new = {
            column: fitted(made[column], self._told[column].most, column, what)
            for column, what in self._made_as.items()
        }
        self._excerpt.add(batch)
        self._further(batch.num_rows)
        return new

    @property
    def excerpt(self) -> Excerpt:
        """The first rows, once all new values are made: as the columns hold these."""
        return replace(self._excerpt, after=self.values.first(len(self._excerpt.before)))


def replace_in_place(
    database: Database,
    tables: Sequence[str],
    asked: Asked,
    *,
    secret_file: Path | None = None,
    people: Path | None = None,
    separator: str | None = None,
    encoding: str | None = None,
    record: Path | None = None,
    force: bool = False,
    is_rehearsal: bool = False,
    progress: Progress,
) -> tuple[Outcome, list[Excerpt]]:
    """Replaces the people of tables and commits; if anything fails, nothing is changed.

    All new values are made, and known to fit, before the first row is changed.

    Args:
        database: The database, opened to be changed unless it is a rehearsal.
        tables: The names of tables. If there are none, those of the plan, or else all in which
            people are found.
        asked: What else is asked for.
        secret_file: The file with the secret, made if it is not there. If None, the secret is that
            of the environment, or one that nobody ever knows.
        people: A file with the genders and countries of people, which is only read.
        separator: What separates the cells of that file; found if None.
        encoding: The encoding of that file.
        record: The file of a record of the run, if one is wanted.
        force: Whether that file is overwritten.
        is_rehearsal: Whether all is done but the changes.
        progress: What is told how far the rows are.

    Returns:
        What came of it, and of a rehearsal the first rows of each table before and after.

    Raises:
        VantrelError: A table, the secret or what is asked for cannot be used.
        LeakError: Somebody is still named, where that is to be an error.
        OSError: The secret or the record cannot be written.
    """
    if record is not None:
        refuse_missing_folder(record)
        refuse_overwriting(record, *filter(None, (secret_file, people)), force=force)
    opened = _opened(database, tables, asked, is_changing=not is_rehearsal)
    with ExitStack() as stack:
        told = open_people(stack, people, asked, separator, encoding)
        refuse_unknown_columns([*opened, *told], asked)
        if asked.strict:
            refuse_undecided(opened)
        secret, is_new = secret_of(secret_file)
        who = learnt(secret, asked, told, opened, progress)
    with replacing_together(force=force) as opener:
        with progress("Replacing", rows_learnt(who, opened)) as further:
            changed = [_Changed(each, who, place, further) for place, each in enumerate(opened)]
            for each in changed:
                each.values.make(each)
        report = who.finish()
        replaced = [
            replaced_by(each.passing, table, None)
            for each, table in zip(changed, opened, strict=True)
        ]
        refuse_leaks(replaced, asked)
        notes = [
            *notes_on_others([table.name for table in opened], asked),
            *_notes_on_side_effects(opened),
            *notes_on(told, opened, replaced, report),
            *notes_on_people(report, no_real=asked.no_real),
        ]
        if not is_rehearsal:
            for each in changed:
                each.values.take_effect()
            database.engine.settle()
            if record is not None:
                keys = [table.copied.key for table in opened]
                write_form(opener, record, database_record_of(replaced, keys, asked, report))
            if secret_file is not None and is_new:
                write_secret(secret_file, secret, opener)
    excerpts: list[Excerpt] = []
    if is_rehearsal:
        excerpts = [
            each.excerpt for each, table in zip(changed, opened, strict=True) if table.changed
        ]
        if secret_file is not None and is_new:
            notes.append("No secret was kept: another one decides when this is done.")
    else:
        database.commit()
    return Outcome(replaced, report, notes), excerpts


def plan_database(
    database: Database,
    tables: Sequence[str],
    plan: Path,
    asked: Asked,
    *,
    people: Path | None = None,
    separator: str | None = None,
    encoding: str | None = None,
    force: bool = False,
    progress: Progress,
) -> None:
    """Writes as a plan what would become of each column of tables, and changes nothing.

    What cannot be changed is planned to stay, unless its change is asked for.

    Args:
        database: The database.
        tables: The names of tables; if there are none, all in which people, or columns that look
            personal, are found.
        plan: The file of the plan.
        asked: What is asked for already.
        people: A file with the names of people, who may be named in the tables.
        separator: What separates the cells of that file; found if None.
        encoding: The encoding of that file.
        force: Whether a file is overwritten that is there.
        progress: What is told how far the rows are.
    """
    asked = replace(asked, is_planned=True)
    refuse_missing_folder(plan)
    refuse_overwriting(plan, *filter(None, [people]), force=force)
    chosen = [opened_table(database, name) for name in chosen_tables(database, tables, asked)]
    are_found = not (tables or asked.plan)
    refuse_unchangeable(chosen, tables, are_found=are_found, is_changing=False)
    opened = all_understood(chosen, asked)
    ties = ties_of(database, {table.copied: table.changed for table in opened})
    with ExitStack() as stack:
        told = open_people(stack, people, asked, separator, encoding)
        refuse_unknown_columns([*opened, *told], asked)
        refuse_tied(ties, {table.name: _named_columns(table) for table in opened})
        _refuse_unhashable(opened)
        leaks = leaks_to_come(asked, told, opened, progress)
    write_plan_of(opened, plan, leaks, ties, force=force)
    notes = [
        *notes_on_others([table.name for table in opened], asked),
        *_notes_on_ties(opened, ties),
    ]
    for note in notes:
        _log.info(note)


def _opened(
    database: Database, names: Sequence[str], asked: Asked, *, is_changing: bool
) -> list[OpenedTable[DatabaseTable]]:
    """Opens tables that can be changed, and keeps others from changing them."""
    chosen = chosen_tables(database, names, asked)
    refuse_unplanned(map(Path, chosen), asked.plan)
    tables = [opened_table(database, name) for name in chosen]
    are_found = not (names or asked.plan)
    refuse_unchangeable(tables, names, are_found=are_found)
    if is_changing:
        database.engine.lock([table.sql for table in tables])
    opened = all_understood(tables, asked)
    changes = {table.name: table.changed for table in opened}
    changed = [name for name, columns in changes.items() if columns]
    refuse_without_key(tables, changed, are_found=are_found)
    ties = ties_of(database, {table.copied: table.changed for table in opened})
    refuse_tied(ties, changes)
    _refuse_unhashable(opened)
    return opened


def _refuse_unhashable(tables: Iterable[OpenedTable[DatabaseTable]]) -> None:
    for table in tables:
        hashed = [column for column, each in table.others.items() if each.kind == "hash"]
        refuse_unhashable(table.copied, hashed)


def _notes_on_ties(
    tables: Iterable[OpenedTable[DatabaseTable]], ties: Mapping[str, Mapping[str, str]]
) -> Iterator[str]:
    for table in tables:
        if lacks_key(table.copied):
            yield f"{named(table.name)} is planned to stay: it {lacks_key(table.copied)}"
        elif tied := [column for column in table.roles.replaced if column in ties[table.name]]:
            yield (
                f"{named(table.name)}: Columns of people that cannot be changed are planned to"
                f" stay: {listed(tied)}."
            )


def _named_columns(table: OpenedTable[DatabaseTable]) -> dict[str, str]:
    """The columns to change that were not found, but named by whoever asked."""
    found = {choice.column for person in table.roles.people for choice in person.choices}
    return {name: what for name, what in table.changed.items() if name not in found}


def _notes_on_side_effects(tables: Sequence[OpenedTable[DatabaseTable]]) -> Iterator[str]:
    for table in tables:
        of = table.copied
        effects = of.database.engine.side_effects(of.database.schema, of.name)
        if effects:
            run = "run" if len(effects) > 1 else "runs"
            yield (
                f"{named(of.name)}: {joined(effects)} {run} where rows are changed, and may keep"
                " what was there."
            )

"""Replaces the people of files, in memory that grows with the people alone."""

from __future__ import annotations

import os
from collections.abc import Callable, Iterable, Iterator, Sequence
from contextlib import AbstractContextManager, ExitStack, nullcontext
from itertools import chain
from pathlib import Path

import pyarrow as pa

from vantrel.errors import LeakError, UndecidedError
from vantrel.hints import argument, named
from vantrel.replacing.asked import Asked, refuse_unplanned
from vantrel.replacing.leaks import Leak
from vantrel.replacing.notes import (
    further,
    notes_on_people,
    notes_on_table,
    notes_on_undecided,
)
from vantrel.replacing.opened import OpenedTable, open_table, refuse_unknown_columns
from vantrel.replacing.outcome import Outcome, Replaced
from vantrel.replacing.outputs import (
    compression_of,
    made_if_missing,
    outputs_of,
    refuse_doubled_names,
)
from vantrel.replacing.passing import Passing
from vantrel.replacing.people import People, Report, Table
from vantrel.replacing.plan import Decided, write_plan
from vantrel.replacing.record import write_record
from vantrel.replacing.secret import checked_secret, read_or_draw_secret, write_secret
from vantrel.storage.files import refuse_missing_folder, refuse_overwriting, replacing
from vantrel.storage.together import Opener, replacing_together
from vantrel.tables.kinds import Compression

# A table, the file of its copy, and how that is compressed.
type _Copy = tuple[OpenedTable, Path, Compression | None]

# From what is done and the number of rows, where it is known, to what is told of further rows.
type Progress = Callable[[str, int | None], AbstractContextManager[Callable[[int], object]]]


def replace_files(
    inputs: Sequence[Path],
    output: Path,
    asked: Asked,
    *,
    secret_file: Path | None = None,
    people: Path | None = None,
    separator: str | None = None,
    encoding: str | None = None,
    force: bool = False,
    progress: Progress,
) -> Outcome:
    """Copies tables with their people replaced, and notes beside each copy how it was made.

    All copies take their names at the end; if anything fails before, none is there.

    Args:
        inputs: Files of CSV or Parquet, by the ends of their names.
        output: The copy, or the folder of the copies where there are several tables or it is there.
        asked: What else is asked for.
        secret_file: The file with the secret, made if it is not there. If None, the secret is that
            of the environment, or one that nobody ever knows.
        people: A table with the genders and countries of people, which is only read.
        separator: What separates the cells of CSV; found if None.
        encoding: The encoding of CSV.
        force: Whether files that are there are overwritten.
        progress: What is told how far the rows are.

    Raises:
        VantrelError: A table, the secret or what is asked for cannot be used.
        LeakError: Somebody is still named, where that is to be an error.
        OSError: A copy cannot be written.
    """
    read_only = [each for each in (secret_file, people) if each]
    refuse_unplanned(inputs, asked.plan)
    outputs = outputs_of(inputs, output, read_only, force=force)
    with ExitStack() as stack:
        tables = [open_table(stack, each, asked, separator, encoding) for each in inputs]
        copies = [
            (table, copy, compression_of(copy, table.copied))
            for table, copy in zip(tables, outputs, strict=True)
        ]
        told = []
        if people is not None:
            told.append(open_table(stack, people, asked, separator, encoding, is_only_read=True))
        refuse_unknown_columns([*tables, *told], asked)
        if asked.strict:
            _refuse_undecided(tables)
        secret, is_new = (
            (checked_secret(None), False)
            if secret_file is None
            else read_or_draw_secret(secret_file)
        )
        who = People(secret, place=asked.place, no_real=asked.no_real, ways=asked.ways)
        _learn(who, told, tables, progress)
        with (
            made_if_missing(outputs[0].parent) if outputs[0] != output else nullcontext(),
            replacing_together(force=force) as opened,
        ):
            replaced, report = _copy_all(opened, who, copies, asked, progress)
            if secret_file is not None and is_new:  # takes its place before the copies do
                write_secret(secret_file, secret, opened)
    notes = [
        *_notes(told, tables, replaced, report),
        *notes_on_people(report, no_real=asked.no_real),
    ]
    return Outcome(replaced, report, notes)


def plan_files(
    inputs: Sequence[Path],
    plan: Path,
    asked: Asked,
    *,
    separator: str | None = None,
    encoding: str | None = None,
    force: bool = False,
) -> None:
    """Writes as a plan what would become of each column of tables, and makes nothing else.

    Args:
        inputs: Files of CSV or Parquet, by the ends of their names.
        plan: The file of the plan.
        asked: What is asked for already.
        separator: What separates the cells of CSV; found if None.
        encoding: The encoding of CSV.
        force: Whether a file is overwritten that is there.

    Raises:
        VantrelError: A table, or what is asked for, cannot be used.
        OSError: The plan cannot be written.
    """
    refuse_doubled_names(inputs)
    refuse_missing_folder(plan)
    refuse_overwriting(plan, *inputs, force=force)
    with ExitStack() as stack:
        tables = [open_table(stack, each, asked, separator, encoding) for each in inputs]
        refuse_unknown_columns(tables, asked)
        text = write_plan(
            {
                table.copied.path.name: Decided(
                    table.roles, table.copied.columns, table.asked.fates, table.empty
                )
                for table in tables
            }
        )
    with replacing(plan, force=force) as file:
        file.write(text)


def _learn(
    who: People,
    only_read: Sequence[OpenedTable],
    replaced: Sequence[OpenedTable],
    progress: Progress,
) -> None:
    with progress("Reading", None) as further:

        def learn(tables: Sequence[OpenedTable]) -> None:
            for table in tables:
                for batch in table.copied.batches(table.roles.needed):
                    who.learn(batch, table.roles, table.name)
                    further(batch.num_rows)

        if only_read:
            learn(only_read)
            who.end_what_is_only_read()
        learn(replaced)
    who.settle()


def _copy_all(
    opened: Opener, who: People, copies: Sequence[_Copy], asked: Asked, progress: Progress
) -> tuple[list[Replaced], Report]:
    """Writes all copies, and the records beside them."""
    rows = sum(who.tables[table.name].rows for table, *_ in copies if table.name in who.tables)
    with progress("Replacing", rows) as further:
        passed = [_write(opened, who, copy, further) for copy in copies]
    report = who.finish()
    replaced = [
        Replaced(
            table.copied.path,
            output,
            table.roles,
            table.asked,
            done.rows,
            table.staying,
            done.leaks(),
            table.others,
            done.notes(),
        )
        for (table, output, _), done in zip(copies, passed, strict=True)
    ]
    if asked.fail_on_leak:
        _refuse_leaks(replaced)
    for table in replaced:
        write_record(opened, table, asked, report)
    return replaced, report


def _write(
    opened: Opener,
    who: People,
    copy: _Copy,
    further: Callable[[int], object],
) -> Passing:
    """Writes the copy of a table."""
    table, output, compression = copy
    copied = table.copied
    passing = Passing(who, table.roles, table.asked.scrub, table.others)

    def told(batch: pa.RecordBatch) -> dict[str, pa.Array]:
        made = passing(batch)
        further(batch.num_rows)
        return made

    file = opened(output, binary=True, private_as=copied.path)
    copied.write(file, copied.columns, told, compression=compression)
    file.flush()
    os.fsync(file.fileno())  # a disk that is full is heard of before any copy has its name
    return passing


def _notes(
    only_read: Sequence[OpenedTable],
    tables: Sequence[OpenedTable],
    replaced: Sequence[Replaced],
    report: Report,
) -> Iterator[str]:
    """Tells of each table what is to be told; by its name where there are several."""
    known: list[tuple[OpenedTable, list[Leak], list[str]]] = [(each, [], []) for each in only_read]
    known += [(table, done.leaks, done.notes) for table, done in zip(tables, replaced, strict=True)]
    for table, leaks, on_others in known:
        met = report.tables.get(table.name, Table())
        undecided = notes_on_undecided(table.roles, table.asked.undecided)
        for note in chain(notes_on_table(table.roles, met, leaks), on_others, undecided):
            yield f"{named(table.name)}: {note}" if len(known) > 1 else note


def _refuse_undecided(tables: Sequence[OpenedTable]) -> None:
    """Refuses tables that have columns of which nobody has decided what becomes of them."""
    undecided = [
        f"{named(table.name)}: {note}"
        for table in tables
        for note in notes_on_undecided(table.roles, table.asked.undecided)
    ]
    if undecided:
        raise UndecidedError(
            f"Nothing was written, as columns look personal and are not decided."
            f" {' '.join(undecided)}"
        )


def _refuse_leaks(tables: Iterable[Replaced]) -> None:
    leaks = [
        f"{named(table.path)}: {leak}: add {argument('scrub', [leak.column])}"
        for table in tables
        for leak in table.leaks
        if leak.kind == "person"
    ]
    leaks += [
        f"{named(table.path)}: {further(choice)}"
        for table in tables
        for choice in table.roles.further
    ]
    if leaks:
        raise LeakError(
            f"Nothing was written, as people are still named. {'; '.join(leaks)}. Do so, or leave"
            " these columns out of the tables."
        )

"""Replaces the people of files, in memory that grows with the people alone."""

from __future__ import annotations

import os
from collections.abc import Callable, Sequence
from contextlib import ExitStack, nullcontext
from dataclasses import replace
from pathlib import Path

import pyarrow as pa

from vantrel.replacing.people.people import People
from vantrel.replacing.people.report import Report
from vantrel.replacing.runs.asked import Asked, refuse_unplanned
from vantrel.replacing.runs.notes import notes_on_people
from vantrel.replacing.runs.opened import (
    OpenedTable,
    open_people,
    open_tables,
    refuse_unknown_columns,
)
from vantrel.replacing.runs.outcome import Outcome, Replaced
from vantrel.replacing.runs.outputs import (
    compression_of,
    made_if_missing,
    outputs_of,
    refuse_doubled_names,
)
from vantrel.replacing.runs.passing import Passing
from vantrel.replacing.runs.record import record_of, write_record
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
from vantrel.sampling.record import sha256_of_written
from vantrel.storage.files import refuse_missing_folder, refuse_overwriting
from vantrel.storage.together import Opener, replacing_together
from vantrel.tables.copying import Copied
from vantrel.tables.kinds import Compression

# A table, the file of its copy, and how that is compressed.
type _Copy = tuple[OpenedTable[Copied], Path, Compression | None]


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
        tables = open_tables(stack, inputs, asked, separator, encoding)
        copies = [
            (table, copy, compression_of(copy, table.copied))
            for table, copy in zip(tables, outputs, strict=True)
        ]
        told = open_people(stack, people, asked, separator, encoding)
        refuse_unknown_columns([*tables, *told], asked)
        if asked.strict:
            refuse_undecided(tables)
        secret, is_new = secret_of(secret_file)
        who = learnt(secret, asked, told, tables, progress)
        with (
            made_if_missing(outputs[0].parent) if outputs[0] != output else nullcontext(),
            replacing_together(force=force) as opened,
        ):
            replaced, report = _copy_all(opened, who, copies, asked, progress)
            if secret_file is not None and is_new:  # takes its place before the copies do
                write_secret(secret_file, secret, opened)
    notes = [
        *notes_on(told, tables, replaced, report),
        *notes_on_people(report, no_real=asked.no_real),
    ]
    return Outcome(replaced, report, notes)


def plan_files(
    inputs: Sequence[Path],
    plan: Path,
    asked: Asked,
    *,
    people: Path | None = None,
    separator: str | None = None,
    encoding: str | None = None,
    force: bool = False,
    progress: Progress,
) -> None:
    """Writes as a plan what would become of each column of tables, and makes nothing else.

    Args:
        inputs: Files of CSV or Parquet, by the ends of their names.
        plan: The file of the plan.
        asked: What is asked for already.
        people: A table with the names of people, who may be named in the others.
        separator: What separates the cells of CSV; found if None.
        encoding: The encoding of CSV.
        force: Whether a file is overwritten that is there.
        progress: What is told how far the rows are.

    Raises:
        VantrelError: A table, or what is asked for, cannot be used.
        OSError: The plan cannot be written.
    """
    asked = replace(asked, is_planned=True)
    refuse_doubled_names(inputs)
    refuse_missing_folder(plan)
    refuse_overwriting(plan, *inputs, *filter(None, [people]), force=force)
    with ExitStack() as stack:
        tables = open_tables(stack, inputs, asked, separator, encoding)
        told = open_people(stack, people, asked, separator, encoding)
        refuse_unknown_columns([*tables, *told], asked)
        write_plan_of(tables, plan, leaks_to_come(asked, told, tables, progress), force=force)


def _copy_all(
    opened: Opener, who: People, copies: Sequence[_Copy], asked: Asked, progress: Progress
) -> tuple[list[Replaced], Report]:
    """Writes all copies, and the records beside them."""
    with progress("Replacing", rows_learnt(who, (table for table, *_ in copies))) as further:
        passed = [_write(opened, who, copy, further) for copy in copies]
    report = who.finish()
    replaced = [
        replaced_by(done, table, output)
        for (table, output, _), (done, _) in zip(copies, passed, strict=True)
    ]
    refuse_leaks(replaced, asked)
    for done, (_, output, _), (_, sha256) in zip(replaced, copies, passed, strict=True):
        write_record(opened, output, record_of(done, asked, report) | {"file_sha256": sha256})
    return replaced, report


def _write(
    opened: Opener,
    who: People,
    copy: _Copy,
    further: Callable[[int], object],
) -> tuple[Passing, str]:
    """Writes the copy of a table, and gives its SHA-256."""
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
    return passing, sha256_of_written(file)

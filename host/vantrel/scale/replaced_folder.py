"""Copies of a folder of Parquet files in which people are replaced, made on a cluster."""

from __future__ import annotations

from collections.abc import Iterator, Sequence
from contextlib import ExitStack, contextmanager
from dataclasses import dataclass, replace
from functools import partial
from pathlib import Path

import msgspec
from dask.delayed import Delayed, delayed
from distributed import Client

from vantrel.errors import ArgumentError, ClusterError, ReplaceError, UndecidedError
from vantrel.hints import named
from vantrel.replacing.making.places import Places
from vantrel.replacing.others.changed import notes_on_lost
from vantrel.replacing.people.report import Report
from vantrel.replacing.runs.asked import Asked, refuse_unplanned
from vantrel.replacing.runs.notes import notes_on_people
from vantrel.replacing.runs.opened import OpenedTable, all_understood, refuse_unknown_columns
from vantrel.replacing.runs.outcome import Outcome, Replaced
from vantrel.replacing.runs.outputs import made_if_missing
from vantrel.replacing.runs.running import (
    Progress,
    leaks_to_come,
    notes_on,
    refuse_leaks,
    refuse_undecided,
    write_plan_of,
)
from vantrel.replacing.runs.secret import (
    checked_secret,
    deciding_versions,
    keep_secret,
    read_or_draw_secret,
)
from vantrel.sampling.record import record_path, sha256_of, write_record
from vantrel.sampling.to_file import Progress as RowProgress
from vantrel.sampling.to_file import untold
from vantrel.scale.copies import CopiedFile, Found, found_in, refuse_types, write_copy
from vantrel.scale.joining import Checked, joined
from vantrel.scale.replaced_record import ReplaceRecord, record_of
from vantrel.scale.run import (
    as_written,
    claim,
    differing,
    entered,
    finish,
    follow,
    on_cluster,
    refuse_another_run,
    refuse_lost,
    refuse_workers_of_a_scheduler,
    run_of,
)
from vantrel.scale.shared import Shared
from vantrel.storage.files import refuse_missing_folder, refuse_overwriting
from vantrel.tables.copying.parquet_folder import CopiedFolder

type _Table = OpenedTable[CopiedFolder]


def replace_folder(
    source: Path,
    output: Path,
    asked: Asked,
    *,
    secret: bytes | Path | None = None,
    client: Client | None = None,
    scheduler: str | None = None,
    workers: int | None = None,
    resume: bool = False,
    progress: Progress = lambda _, rows: untold(rows or 0),
) -> Outcome:
    """Makes the copies of :func:`vantrel.scale.replace`, or what is missing of them.

    Args:
        source: The folder.
        output: The folder to make.
        asked: What is asked for.
        secret: The secret, or the file with it, which is made if it is not there. If None, it is
            that of the environment, or one that nobody ever knows.
        client: A client of the cluster, if one is connected already.
        scheduler: The address of the cluster's scheduler.
        workers: The number of processes of a cluster on this machine.
        resume: Whether to go on with a run that was stopped.
        progress: What is told how far the rows are.
    """
    refuse_workers_of_a_scheduler(scheduler, workers)
    _refuse_output_inside(source, output)
    if isinstance(secret, Path):
        _refuse_secret_inside(output, secret)
    with ExitStack() as stack:
        earlier = entered(stack, output, ReplaceRecord, resume=resume)
        table = _decided(source, asked)
        run = _Run(table, output, asked, *_secret_of(secret))
        if earlier is not None:
            refuse_another_run(earlier.differences(run.record), output)
        refuse_types(table.copied.files, table.copied.schemas, run.shared())
        files = run.files()
        todo = [file for file in files if not file.is_made()]
        report = earlier.report if earlier else None
        if todo or report is None:
            with on_cluster(scheduler, workers, client) as connection:
                _refuse_other_versions(connection)
                if earlier is None:
                    run.begin(stack)
                report = run.make(files, todo, connection, partial(progress, "Replacing"))
                refuse_lost(files, output)
                digests = _digests(files, connection)
            run.note(report, found_in(files), digests)
        done = run.replaced(found_in(files))
        with _taken_away_if_refused(files, output):
            refuse_leaks([done], asked)
        finish(output)
        return run.outcome(report, done)


def plan_folder(
    source: Path,
    plan: Path,
    asked: Asked,
    *,
    force: bool = False,
    progress: Progress = lambda _, rows: untold(rows or 0),
) -> None:
    """Writes as a plan what would become of each column of a folder, and makes nothing else.

    Args:
        source: The folder.
        plan: The file of the plan.
        asked: What is asked for already.
        force: Whether a file is overwritten that is there.
        progress: What is told how far the rows are.
    """
    asked = replace(asked, is_planned=True)
    refuse_missing_folder(plan)
    refuse_overwriting(plan, force=force)
    table = _opened(source, asked)
    write_plan_of([table], plan, leaks_to_come(asked, [], [table], progress), force=force)


@dataclass(frozen=True)
class _Run:
    """A run.

    Attributes:
        table: The folder that is copied.
        output: Where its copy goes.
        asked: What is asked for.
        secret: The secret.
        secret_file: Where the secret is to be kept; None if it is, or if nobody is to know it.
    """

    table: _Table
    output: Path
    asked: Asked
    secret: bytes
    secret_file: Path | None

    @property
    def record(self) -> ReplaceRecord:
        return record_of(self.table, self.asked, self.secret)

    def files(self) -> list[CopiedFile]:
        """The copies of all files."""
        copied, run = self.table.copied, run_of(self.record.decisive)
        return [
            CopiedFile(file, self.output, run, number, rows)
            for number, (file, rows) in enumerate(zip(copied.files, copied.rows, strict=True))
        ]

    def begin(self, stack: ExitStack) -> None:
        """Makes the folder, and keeps a new secret, without which nothing could be resumed."""
        stack.enter_context(made_if_missing(self.output))
        claim(stack, self.output)
        if self.secret_file is not None:
            keep_secret(self.secret_file, self.secret)
        write_record(self.record, self.output, unfinished=True)

    def make(
        self,
        files: Sequence[CopiedFile],
        todo: Sequence[CopiedFile],
        client: Client,
        progress: RowProgress,
    ) -> Report:
        """Makes copies, and warns of countries of which Faker has no names."""
        tasks = _tasks(files, todo, self.shared())
        futures = client.compute(tasks)
        checked, *copies = futures
        try:
            with self._forgotten_if_refused(files):
                written = as_written(dict(zip(copies, todo, strict=True)), client)
                follow(written, files, todo, self.output, progress)
                found: Checked = checked.result()
        finally:
            client.cancel(futures)
        places = Places(self.asked.place)
        for text in found.texts.values():
            places.number(text)
        return found.report

    def note(self, report: Report, found: Found, digests: dict[str, str]) -> None:
        """Notes what came of the run beside what it was to make."""
        whole = msgspec.structs.replace(
            self.record, report=report, leaks=tuple(found.leaks), copies_sha256=digests
        )
        write_record(whole, self.output, unfinished=True)

    def replaced(self, found: Found) -> Replaced:
        """What became of the folder."""
        table = self.table
        return Replaced(
            table.copied.path,
            self.output,
            table.roles,
            table.asked,
            sum(table.copied.rows),
            found.has_people,
            table.staying,
            found.leaks,
            table.others,
            list(notes_on_lost(found.lost, table.others)),
        )

    def outcome(self, report: Report, done: Replaced) -> Outcome:
        """What came of the run."""
        on_table = notes_on([], [self.table], [done], report)
        on_people = notes_on_people(report, no_real=False, tellers=["place"])
        return Outcome([done], report, [*on_table, *on_people])

    def shared(self) -> Shared:
        """What all workers are told."""
        table, asked = self.table, self.asked
        return Shared(
            Shared.hidden(self.secret),
            table.copied.path,
            table.roles,
            table.asked.scrub,
            table.others,
            asked.place,
            asked.ways,
        )

    @contextmanager
    def _forgotten_if_refused(self, files: Sequence[CopiedFile]) -> Iterator[None]:
        """Leaves no run to resume where nothing was made, as it cannot be made at all."""
        try:
            yield
        except ReplaceError:
            if not any(file.path.exists() for file in files):
                record_path(self.output, unfinished=True).unlink(missing_ok=True)
            raise


def _opened(source: Path, asked: Asked) -> _Table:
    """Opens a folder, and finds what its columns are."""
    (table,) = all_understood([CopiedFolder.opened(source)], asked)
    refuse_unknown_columns([table], asked)
    return table


def _decided(source: Path, asked: Asked) -> _Table:
    """Opens a folder of which nothing is undecided that is to be decided."""
    refuse_unplanned([source], asked.plan)
    table = _opened(source, asked)
    if asked.strict:
        refuse_undecided([table])
    return table


@contextmanager
def _taken_away_if_refused(files: Sequence[CopiedFile], output: Path) -> Iterator[None]:
    """Leaves nothing of a run that is refused in the end; copies of a finished one stay."""
    try:
        yield
    except UndecidedError:
        begun = record_path(output, unfinished=True)
        if begun.exists():
            for file in files:
                file.path.unlink(missing_ok=True)
            begun.unlink()
        raise


def _secret_of(given: bytes | Path | None) -> tuple[bytes, Path | None]:
    """Gives a secret, and the file where it is to be kept if it is a new one."""
    if not isinstance(given, Path):
        return checked_secret(given), None
    secret, is_new = read_or_draw_secret(given)
    return secret, given if is_new else None


def _digests(files: Sequence[CopiedFile], client: Client) -> dict[str, str]:
    """Has the SHA-256 of each copy told where it is at hand."""
    paths = [file.everywhere().path for file in files]
    found = client.gather(client.map(sha256_of, paths, pure=False))
    return {path.name: sha256 for path, sha256 in zip(paths, found, strict=True)}


def _refuse_other_versions(client: Client) -> None:
    here = deciding_versions()
    for worker, there in client.run(deciding_versions).items():
        if different := differing(there, here, ("there", "here")):
            raise ClusterError(
                f"Worker {worker} would make other people: {', '.join(different)}. Install the same"
                " versions everywhere."
            )


def _refuse_output_inside(source: Path, output: Path) -> None:
    if output.resolve().is_relative_to(source.resolve()):
        raise ArgumentError(
            f"{named(output)} is in the folder to read, or that folder itself: name another one."
        )


def _refuse_secret_inside(output: Path, secret: Path) -> None:
    if secret.resolve().is_relative_to(output.resolve()):
        raise ArgumentError(
            f"Secret file {named(secret)} would be in the folder of the copies, or that folder"
            " itself: name another one."
        )


def _tasks(
    files: Sequence[CopiedFile], todo: Sequence[CopiedFile], shared: Shared
) -> list[Delayed]:
    """Plans the check of all people, and the copies that are to be made."""
    wanted = set(todo)
    everywhere = [file.everywhere() for file in files]
    answers, checked = joined(
        [file.source for file in everywhere], [file in wanted for file in files], shared
    )
    copy = delayed(write_copy, pure=False)
    return [
        checked,
        *(
            copy(file, answer, checked, shared)
            for file, answer, seen in zip(everywhere, answers, files, strict=True)
            if seen in wanted
        ),
    ]

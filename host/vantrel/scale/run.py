"""A run that makes a folder of Parquet files on a cluster, and may be stopped and resumed.

Each file takes its place when it is whole and keeps of which run it is, so what a stopped run has
made needs not be made again.
"""

from __future__ import annotations

import hashlib
import json
import re
from abc import ABC, abstractmethod
from collections.abc import Iterator, Mapping, Sequence
from contextlib import ExitStack, contextmanager, nullcontext
from pathlib import Path
from typing import Any

from distributed import Client, Future, KilledWorker, as_completed
from distributed.client import FutureCancelledError
from distributed.comm.core import CommClosedError
from distributed.shuffle._exceptions import P2POutOfDiskError
from pyarrow import ArrowException
from pyarrow.parquet import read_metadata

from vantrel.errors import ArgumentError, ClusterError, OverwriteError, PartitionError
from vantrel.hints import argument, named
from vantrel.sampling.record import Record, read_record_of, record_path, write_record
from vantrel.sampling.to_file import Progress
from vantrel.scale.cluster import connected, first_cause, refuse_other_versions, warn_of_no_workers
from vantrel.storage.files import owned, refuse_missing_folder
from vantrel.tables.kinds import is_named_as_table

_OF_SHUFFLE = re.compile(r"P2P .+ failed during \w+ phase")


class FileOfRun(ABC):
    """One of the files of a run."""

    @property
    @abstractmethod
    def path(self) -> Path:
        """Where it is."""

    @property
    @abstractmethod
    def rows(self) -> int:
        """The number of its rows."""

    @property
    @abstractmethod
    def place(self) -> str:
        """Of which run it is, and which file of that."""

    @property
    def note(self) -> dict[str, str]:
        """What the file keeps of where it belongs."""
        return {"vantrel.part": self.place}

    def is_made(self) -> bool:
        """Tells whether the file is there, whole, and of this run."""
        try:
            found = read_metadata(self.path)
        except (OSError, ArrowException):
            return False
        kept = found.metadata or {}
        noted = all(kept.get(name.encode()) == told.encode() for name, told in self.note.items())
        return noted and found.num_rows == self.rows


def run_of(decisive: Mapping[str, Any]) -> str:
    """Tells a run from all others by what decides what it makes."""
    return hashlib.sha256(json.dumps(decisive, sort_keys=True).encode()).hexdigest()


def entered[R: Record](stack: ExitStack, folder: Path, kind: type[R], *, resume: bool) -> R | None:
    """Makes sure that a run may begin in a folder, or go on there.

    Args:
        stack: Holds the folder for this run from now on if it is resumed.
        folder: The folder.
        kind: The record of such a run.
        resume: Whether it goes on.

    Returns:
        What the run to resume was to make, finished or not; None if none is to be resumed.
    """
    refuse_missing_folder(folder)  # before machines are started
    if resume:
        earlier = _earlier_run(folder, kind)
        stack.enter_context(_sole_run(folder))
        return earlier
    with _sole_run(folder) if folder.is_dir() else nullcontext():
        _refuse_content(folder)
    return None


@contextmanager
def on_cluster(
    scheduler: str | None, workers: int | None, client: Client | None = None
) -> Iterator[Client]:
    """Connects to a cluster, and tells of its end what is to be done.

    The arguments are those of :func:`vantrel.scale.sample_to_folder`; a client that is connected
    already is taken as it is.
    """
    again = f"What is finished is kept: repeat the call with {argument('resume')}."
    try:
        with connected(scheduler, workers) if client is None else _checked(client) as connection:
            yield connection
    except KilledWorker as error:
        raise PartitionError(
            "Workers died again and again, for want of memory perhaps. What is finished is kept:"
            f" repeat the call with {argument('resume')} and fewer {argument('workers', ...)}."
        ) from error
    except P2POutOfDiskError as error:
        raise ClusterError(
            "The disk is full where workers keep what they send each other: name a folder with more"
            f" room by DASK_TEMPORARY_DIRECTORY in their environment. {again}"
        ) from error
    except RuntimeError as error:
        if not _OF_SHUFFLE.fullmatch(str(error)):
            raise
        raise ClusterError(
            f"Workers cannot keep what they send each other ({first_cause(error)}): mend that, or"
            " name another folder by DASK_TEMPORARY_DIRECTORY in their environment."
            f" {again}"
        ) from error
    except (CommClosedError, FutureCancelledError) as error:
        raise ClusterError(f"The scheduler was lost. {again}") from error


@contextmanager
def _checked(client: Client) -> Iterator[Client]:
    refuse_other_versions(client)
    yield client


def refuse_workers_of_a_scheduler(scheduler: str | None, workers: int | None) -> None:
    """Refuses to start processes for a cluster that runs."""
    if scheduler and workers:
        raise ArgumentError(
            f"A cluster that runs has its own workers: leave {argument('workers', ...)} out."
        )


def begin(stack: ExitStack, folder: Path, record: Record) -> None:
    """Makes a folder for a run, which holds it from now on, and notes what is being made there."""
    claim(stack, folder)
    write_record(record, folder, unfinished=True)


def claim(stack: ExitStack, folder: Path) -> None:
    """Makes a folder for a run, which holds it from now on."""
    folder.mkdir(exist_ok=True)
    stack.enter_context(_sole_run(folder))
    _refuse_content(folder)  # it may have got some while machines were started


def follow[F: FileOfRun](
    written: Iterator[F],
    files: Sequence[F],
    todo: Sequence[F],
    folder: Path,
    progress: Progress,
) -> None:
    """Waits until all files are written that are still to be made, and tells how far they are.

    Args:
        written: Gives each of these when it is there.
        files: All files of the run.
        todo: Those that are still to be made.
        folder: Where they are made.
        progress: What is told.
    """
    rows, to_make = (sum(file.rows for file in each) for each in (files, todo))
    try:
        with progress(rows) as further:
            further(rows - to_make)
            for file in written:
                further(file.rows)
    finally:
        for leftover in folder.glob(".*.tmp"):  # of workers that were stopped
            leftover.unlink(missing_ok=True)


def as_written[F: FileOfRun](futures: Mapping[Future[Any], F], client: Client) -> Iterator[F]:
    """Gives each file when it is there, and calls off what is left if nobody waits any more.

    When a worker is lost, others make what it had not finished.
    """
    by_key = {future.key: file for future, file in futures.items()}
    try:
        warn_of_no_workers(client)
        for future in as_completed(futures, loop=client.loop):
            future.result()
            yield by_key[future.key]
    finally:
        client.cancel(list(futures))


def refuse_another_run(differences: Sequence[str], folder: Path) -> None:
    """Refuses to go on with a run that began something else; it is named in what they differ."""
    if differences:
        raise ClusterError(
            f"The run in {named(folder)} cannot be resumed, for this is another one:"
            f" {', '.join(differences)}. Repeat what it was begun with, or name another folder."
        )


def differing(
    was: Mapping[str, Any], now: Mapping[str, Any], when: tuple[str, str] = ("then", "now")
) -> list[str]:
    """Names in what two runs differ, or two machines, with what it is in each."""
    return [
        f"{name} {was.get(name)!r} {when[0]} and {now.get(name)!r} {when[1]}"
        for name in dict.fromkeys((*now, *was))
        if was.get(name) != now.get(name)
    ]


def refuse_lost(files: Sequence[FileOfRun], folder: Path) -> None:
    """Refuses that workers have written into a folder that is another one."""
    if lost := [file for file in files if not file.is_made()]:
        raise ClusterError(
            f"{len(lost):,} files were written where {named(folder)} is another folder, the first"
            " of them"
            f" {named(lost[0].path.name)}: name a folder that all machines share, under the same"
            " path."
        )


def finish(folder: Path) -> None:
    """Notes that the run in a folder is finished."""
    begun = record_path(folder, unfinished=True)
    if begun.exists():
        begun.replace(record_path(folder))


@contextmanager
def _sole_run(folder: Path) -> Iterator[None]:
    with owned(folder) as is_ours:
        if not is_ours:
            raise ClusterError(
                f"Another run is at work in {named(folder)}: wait until it has ended, or name"
                " another folder."
            )
        yield


def _refuse_content(folder: Path) -> None:
    """Refuses a place where there is something else than an empty folder, and a file's name."""
    if is_named_as_table(folder):
        raise ArgumentError(
            f"{named(folder)} is to be a folder of Parquet files: leave out the {folder.suffix}."
        )
    if folder.exists() and not folder.is_dir():
        raise OverwriteError(f"{named(folder)} is there and no folder: name another one.")
    if folder.exists() and any(folder.iterdir()):
        raise OverwriteError(
            f"Folder {named(folder)} is not empty: add {argument('resume')} to go on with a run"
            " that was stopped, or name another folder."
        )


def _earlier_run[R: Record](folder: Path, kind: type[R]) -> R:
    """Reads what the run in a folder was to make, finished or not."""
    record = None
    if folder.is_dir():
        record = read_record_of(kind, folder, unfinished=True) or read_record_of(kind, folder)
    if record is None:
        raise ClusterError(
            f"{named(folder)} holds no run to resume: leave {argument('resume')} out to begin one."
        )
    return record

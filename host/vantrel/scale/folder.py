"""A sample as a folder of Parquet files, one for each partition.

Each file takes its place when it is whole, so what a stopped run has made needs not be made again.
"""

from __future__ import annotations

import hashlib
import json
from collections.abc import Iterable, Iterator
from contextlib import ExitStack, contextmanager, nullcontext
from dataclasses import dataclass, replace
from pathlib import Path
from typing import Any

from distributed import Client, KilledWorker, as_completed
from distributed.client import FutureCancelledError
from distributed.comm.core import CommClosedError
from pyarrow import ArrowException
from pyarrow.parquet import read_metadata

from vantrel.errors import ArgumentError, ClusterError, OverwriteError, PartitionError
from vantrel.hints import argument, named
from vantrel.sampling.record import SampleRecord, read_record, record_of, record_path, write_record
from vantrel.sampling.to_file import Progress, untold
from vantrel.sampling.whole import plan_sample
from vantrel.scale.cluster import connected, warn_of_no_workers
from vantrel.scale.partitions import Partition, make_blocks
from vantrel.scale.partitions import partitions as cut
from vantrel.storage.files import owned, refuse_missing_folder
from vantrel.storage.models import read_model
from vantrel.tables import write_table
from vantrel.tables.kinds import is_named_as_table


def sample_to_folder(
    model_file: Path,
    folder: Path,
    n: int | None,
    *,
    seed: int | None = None,
    unique: Iterable[str] = (),
    strict: bool = False,
    exact: bool = False,
    allow_patterns: bool = False,
    scheduler: str | None = None,
    workers: int | None = None,
    partitions: int | None = None,
    resume: bool = False,
    progress: Progress = untold,
) -> SampleRecord:
    """Makes the people of :func:`vantrel.sample` on a cluster, or what is missing of them.

    What is not told here is as that function or :func:`vantrel.load` takes it.

    Args:
        model_file: The model.
        folder: The folder to make, which the workers see under the same path.
        n: The number of rows.
        seed: An integer from 0 on. If None, that of the run to resume, or one is drawn and logged.
        scheduler: The address of the cluster's scheduler. None starts a cluster on this machine.
        workers: The number of processes of that; one for each core if None.
        partitions: The number of files; if None that of the run to resume, or one for every four
            blocks.
        resume: Whether to go on with a run that was stopped.
        progress: What is told how far the rows are.

    Returns:
        How it was made; ``seed`` is the seed.

    Raises:
        VantrelError: The model or what is asked of it cannot be used, another run is in the folder,
            or the cluster was lost.
        OSError: The folder cannot be written, or no scheduler answers.
    """
    if scheduler and workers:
        raise ArgumentError(
            f"A cluster that runs has its own workers: leave {argument('workers', ...)} out."
        )
    refuse_missing_folder(folder)  # before machines are started
    earlier = None
    with ExitStack() as stack:
        if resume:
            earlier = _earlier_run(folder)
            stack.enter_context(_sole_run(folder))
            seed = earlier.seed if seed is None else seed
            partitions = partitions or earlier.options.get("partitions")
        else:
            with _sole_run(folder) if folder.is_dir() else nullcontext():
                _refuse_content(folder)
        loaded = read_model(model_file, allow_patterns=allow_patterns)
        plan, _ = plan_sample(
            loaded.model, n, None, seed=seed, unique=unique, strict=strict, exact=exact
        )
        parts = cut(loaded.model, plan, partitions)
        record = record_of(loaded, plan, partitions=len(parts))
        if earlier is not None:
            _refuse_another_run(earlier, record, folder)
        files = [PartFile(part, folder, _run(record)) for part in parts]
        todo = [file for file in files if not file.is_made()]
        if todo or earlier is None:
            with _telling_of_workers(), connected(scheduler, workers) as client:
                if earlier is None:
                    folder.mkdir(exist_ok=True)
                    stack.enter_context(_sole_run(folder))
                    _refuse_content(folder)  # it may have got some while machines were started
                    write_record(record, folder, unfinished=True)
                _write_all(files, todo, folder, client, progress)
        _finish(files, folder)
    return record


@contextmanager
def _sole_run(folder: Path) -> Iterator[None]:
    with owned(folder) as is_ours:
        if not is_ours:
            raise ClusterError(
                f"Another run is at work in {named(folder)}: wait until it has ended, or name"
                " another folder."
            )
        yield


@dataclass(frozen=True)
class PartFile:
    """The file of a partition. The names sort as the rows do."""

    part: Partition
    folder: Path
    run: str

    @property
    def path(self) -> Path:
        return self.folder / f"part-{self.part.number:06}.parquet"

    @property
    def note(self) -> dict[str, str]:
        """What the file keeps of where it belongs."""
        return {"vantrel.part": f"{self.run}/{self.part.number}"}

    @property
    def rows(self) -> int:
        return len(self.part.rows)

    def is_made(self) -> bool:
        """Tells whether the file is there, whole, and of this run."""
        try:
            found = read_metadata(self.path)
        except (OSError, ArrowException):
            return False
        kept = found.metadata or {}
        noted = all(kept.get(name.encode()) == told.encode() for name, told in self.note.items())
        return noted and found.num_rows == self.rows


def _run(record: SampleRecord) -> str:
    """Tells a run from all others."""
    return hashlib.sha256(json.dumps(_decisive(record), sort_keys=True).encode()).hexdigest()


def _write_all(
    files: list[PartFile], todo: list[PartFile], folder: Path, client: Client, progress: Progress
) -> None:
    rows, to_make = (sum(file.rows for file in each) for each in (files, todo))
    try:
        with progress(rows) as further:
            further(rows - to_make)
            for file in write_partitions(todo, client):
                further(file.rows)
    finally:
        for leftover in folder.glob(".part-*.tmp"):  # of workers that were stopped
            leftover.unlink(missing_ok=True)


@contextmanager
def _telling_of_workers() -> Iterator[None]:
    resume = argument("resume")
    try:
        yield
    except KilledWorker as error:
        raise PartitionError(
            "Workers died again and again, for want of memory perhaps. What is finished is kept:"
            f" repeat the call with {resume} and fewer {argument('workers', ...)}."
        ) from error
    except (CommClosedError, FutureCancelledError) as error:
        raise ClusterError(
            f"The scheduler was lost. What is finished is kept: repeat the call with {resume}."
        ) from error


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


def _earlier_run(folder: Path) -> SampleRecord:
    """Reads what the run in a folder was to make, finished or not."""
    record = None
    if folder.is_dir():
        record = read_record(folder, unfinished=True) or read_record(folder)
    if record is None:
        raise ClusterError(
            f"{named(folder)} holds no run to resume: leave {argument('resume')} out to begin one."
        )
    return record


def _refuse_another_run(earlier: SampleRecord, record: SampleRecord, folder: Path) -> None:
    """Refuses to go on with a run that began something else; it is named in what they differ."""
    was, now = _decisive(earlier), _decisive(record)
    differing = [name for name in now if was.get(name) != now[name]]
    if differing:
        pairs = ", ".join(
            f"{name} {was.get(name)!r} then and {now[name]!r} now" for name in differing
        )
        raise ClusterError(
            f"The run in {named(folder)} cannot be resumed, for this is another one: {pairs}."
            " Repeat what it was begun with, or name another folder."
        )


def _decisive(record: SampleRecord) -> dict[str, Any]:
    """What decides the rows and the files of a run, by its name."""
    decisive = {name: getattr(record, name) for name in ("model_sha256", "rows", "seed")}
    return decisive | record.options | record.versions


def write_partitions(files: list[PartFile], client: Client) -> Iterator[PartFile]:
    """Writes the files of partitions on a cluster, and gives each when it is there.

    The workers see the folder under the same path. When a worker is lost, others make what it had
    not finished.
    """
    everywhere = [replace(file, folder=file.folder.resolve()) for file in files]
    futures = client.map(_write, everywhere, pure=False)
    by_key = dict(zip((future.key for future in futures), files, strict=True))
    try:
        warn_of_no_workers(client)
        for future in as_completed(futures, loop=client.loop):
            future.result()
            yield by_key[future.key]
    finally:
        client.cancel(futures)


def _finish(files: list[PartFile], folder: Path) -> None:
    """Notes that the run in a folder is finished, if all files are there."""
    if lost := [file for file in files if not file.is_made()]:
        raise ClusterError(
            f"{len(lost):,} files were written where {named(folder)} is another folder, the first"
            " of them"
            f" {named(lost[0].path.name)}: name a folder that all machines share, under the same"
            " path."
        )
    begun = record_path(folder, unfinished=True)
    if begun.exists():
        begun.replace(record_path(folder))


def _write(file: PartFile) -> None:
    write_table(make_blocks(file.part), file.path, notes=file.note)

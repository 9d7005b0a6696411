"""A sample as a folder of Parquet files, one for each partition.

Each file takes its place when it is whole, so what a stopped run has made needs not be made again.
"""

from __future__ import annotations

from collections.abc import Iterable, Iterator
from contextlib import AbstractContextManager, contextmanager
from pathlib import Path
from typing import Any

from distributed import Client, KilledWorker, as_completed
from distributed.client import FutureCancelledError
from distributed.comm.core import CommClosedError

from vantrel.errors import ArgumentError, ClusterError, OverwriteError, PartitionError
from vantrel.hints import argument
from vantrel.sampling.record import SampleRecord, read_record, record_of, record_path, write_record
from vantrel.sampling.to_file import Progress, untold
from vantrel.sampling.whole import plan_sample
from vantrel.scale.cluster import connected
from vantrel.scale.partitions import Partition, make_blocks
from vantrel.scale.partitions import partitions as cut
from vantrel.storage.files import refuse_missing_folder
from vantrel.storage.models import read_model
from vantrel.tables import write_table


def sample_to_folder(
    model_file: Path,
    folder: Path,
    n: int | None,
    *,
    seed: int | None = None,
    unique: Iterable[str] = (),
    strict: bool = False,
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
    if resume:
        earlier = _earlier_run(folder)
        seed = earlier.seed if seed is None else seed
        partitions = partitions or earlier.options.get("partitions")
    else:
        _refuse_content(folder)
    loaded = read_model(model_file, allow_patterns=allow_patterns)
    plan, _ = plan_sample(loaded.model, n, None, seed=seed, unique=unique, strict=strict)
    parts = cut(loaded.model, plan, partitions)
    record = record_of(loaded, plan, partitions=len(parts))
    if earlier is not None:
        _refuse_another_run(earlier, record, folder)
    todo = _missing(parts, folder)
    if todo or earlier is None:
        cluster = connected(scheduler, workers)
        _write_on(cluster, parts, todo, folder, progress, None if earlier else record)
    _finish(parts, folder)
    return record


def _write_on(
    cluster: AbstractContextManager[Client],
    parts: list[Partition],
    todo: list[Partition],
    folder: Path,
    progress: Progress,
    new: SampleRecord | None,
) -> None:
    """Writes the files of ``todo``; a new run begins when there are machines to write them."""
    rows, to_make = (sum(len(part.rows) for part in each) for each in (parts, todo))
    try:
        with _telling_of_workers(), cluster as client, progress(rows) as further:
            if new is not None:
                _begin(folder, new)
            further(rows - to_make)
            for part in write_partitions(todo, folder, client):
                further(len(part.rows))
    finally:
        for file in folder.glob(".part-*.tmp"):  # what workers that were stopped have left
            file.unlink(missing_ok=True)


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
    """Refuses a place where there is something else than an empty folder."""
    if folder.exists() and not folder.is_dir():
        raise OverwriteError(f"{folder} is there and no folder: name another one.")
    if folder.exists() and any(folder.iterdir()):
        raise OverwriteError(
            f"Folder {folder} is not empty: add {argument('resume')} to go on with a run that was"
            " stopped, or name another folder."
        )


def _begin(folder: Path, record: SampleRecord) -> None:
    """Makes the folder of a new run and notes in it what the run is to make."""
    _refuse_content(folder)  # it may have got some while machines were started
    folder.mkdir(exist_ok=True)
    write_record(record, folder, unfinished=True)


def _earlier_run(folder: Path) -> SampleRecord:
    """Reads what the run in a folder was to make, finished or not."""
    record = None
    if folder.is_dir():
        record = read_record(folder, unfinished=True) or read_record(folder)
    if record is None:
        raise ClusterError(
            f"{folder} holds no run to resume: leave {argument('resume')} out to begin one."
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
            f"The run in {folder} cannot be resumed, for this is another one: {pairs}. Repeat what"
            " it was begun with, or name another folder."
        )


def _decisive(record: SampleRecord) -> dict[str, Any]:
    """What decides the rows and the files of a run, by its name."""
    decisive = {name: getattr(record, name) for name in ("model_sha256", "rows", "seed")}
    return decisive | record.options | record.versions


def _missing(parts: Iterable[Partition], folder: Path) -> list[Partition]:
    """Lists the partitions whose files are not there."""
    there = {file.name for file in folder.iterdir()} if folder.is_dir() else ()
    return [part for part in parts if _name_of(part) not in there]


def write_partitions(
    parts: Iterable[Partition], folder: Path, client: Client
) -> Iterator[Partition]:
    """Writes the files of partitions on a cluster, and gives each partition when its file is there.

    The workers see the folder under the same path. When a worker is lost, others make what it had
    not finished.
    """
    todo = list(parts)
    futures = client.map(_write, todo, folder=folder.resolve(), pure=False)
    by_key = dict(zip((future.key for future in futures), todo, strict=True))
    try:
        for future in as_completed(futures, loop=client.loop):
            future.result()
            yield by_key[future.key]
    finally:
        client.cancel(futures)


def _finish(parts: Iterable[Partition], folder: Path) -> None:
    """Notes that the run in a folder is finished, if all files are there."""
    if lost := _missing(parts, folder):
        raise ClusterError(
            f"{len(lost):,} files were written where {folder} is another folder, the first of them"
            f" {_name_of(lost[0])}: name a folder that all machines share, under the same path."
        )
    begun = record_path(folder, unfinished=True)
    if begun.exists():
        begun.replace(record_path(folder))


def _write(partition: Partition, folder: Path) -> None:
    write_table(make_blocks(partition), folder / _name_of(partition))


def _name_of(partition: Partition) -> str:
    """The name of a partition's file. The names sort as the rows do."""
    return f"part-{partition.number:06}.parquet"

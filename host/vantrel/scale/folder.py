"""A sample as a folder of Parquet files, one for each partition.

Each file takes its place when it is whole, so what a stopped run has made needs not be made again.
"""

from __future__ import annotations

from collections.abc import Iterable, Iterator
from dataclasses import asdict
from pathlib import Path
from typing import Any

from distributed import Client, as_completed

from vantrel.errors import ClusterError
from vantrel.hints import argument
from vantrel.sampling.record import SampleRecord, read_record, record_path, write_record
from vantrel.scale.partitions import Partition, make_blocks
from vantrel.tables import write_table


def begin(folder: Path, record: SampleRecord) -> None:
    """Makes the folder of a new run and notes in it what the run is to make.

    Raises:
        FileExistsError: There is a file, or a folder that is not empty.
        OSError: The folder cannot be made.
    """
    folder.mkdir(exist_ok=True)
    if any(folder.iterdir()):
        raise FileExistsError(0, "it is there already and not empty", str(folder))
    write_record(record, folder, unfinished=True)


def earlier_run(folder: Path) -> SampleRecord:
    """Reads what the run in a folder was to make, finished or not.

    Raises:
        ClusterError: There is no run in the folder.
    """
    record = None
    if folder.is_dir():
        record = read_record(folder, unfinished=True) or read_record(folder)
    if record is None:
        raise ClusterError(
            f"{folder} holds no run to resume: leave {argument('resume')} out to begin one."
        )
    return record


def refuse_another_run(earlier: SampleRecord, record: SampleRecord, folder: Path) -> None:
    """Makes sure that a run goes on with what it began.

    Raises:
        ClusterError: The runs differ; it is named in what.
    """
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
    form = asdict(record)
    decisive = {name: form[name] for name in ("model_sha256", "rows", "seed")}
    return decisive | record.options | record.versions


def missing(parts: Iterable[Partition], folder: Path) -> list[Partition]:
    """Lists the partitions whose files are not there."""
    there = {file.name for file in folder.iterdir()}
    return [part for part in parts if _name_of(part) not in there]


def write_partitions(
    parts: Iterable[Partition], folder: Path, client: Client
) -> Iterator[Partition]:
    """Writes the files of partitions on the workers of a cluster.

    The workers see the folder under the same path. When a worker is lost, others make what it had
    not finished.

    Yields:
        Each partition when its file is there.

    Raises:
        PartitionError: Some rows could not be made; their rows are named.
        OSError: A file cannot be written.
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


def finish(parts: Iterable[Partition], folder: Path) -> None:
    """Notes that the run in a folder is finished.

    Raises:
        ClusterError: Files are not there, though workers have written them.
        OSError: The note cannot be written.
    """
    if lost := missing(parts, folder):
        raise ClusterError(
            f"{len(lost):,} files were written where {folder} is another folder, the first of them"
            f" {_name_of(lost[0])}: name a folder that all machines share, under the same path."
        )
    begun = record_path(folder, unfinished=True)
    if begun.exists():
        begun.replace(record_path(folder))


def remove_unfinished(folder: Path) -> None:
    """Removes what stopped workers have left of files that are not whole."""
    for file in folder.glob(".part-*.tmp"):
        file.unlink(missing_ok=True)


def _write(partition: Partition, folder: Path) -> None:
    write_table(make_blocks(partition), folder / _name_of(partition))


def _name_of(partition: Partition) -> str:
    """The name of a partition's file. The names sort as the rows do."""
    return f"part-{partition.number:06}.parquet"

"""A sample as a folder of Parquet files, one for each partition."""

from __future__ import annotations

from collections.abc import Iterable, Iterator
from contextlib import ExitStack
from dataclasses import dataclass, replace
from pathlib import Path
from typing import Any

from distributed import Client

from vantrel.sampling.record import SampleRecord, record_of
from vantrel.sampling.to_file import Progress, untold
from vantrel.sampling.whole import plan_sample
from vantrel.scale.partitions import Partition, make_blocks
from vantrel.scale.partitions import partitions as cut
from vantrel.scale.run import (
    FileOfRun,
    as_written,
    begin,
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
    refuse_workers_of_a_scheduler(scheduler, workers)
    with ExitStack() as stack:
        earlier = entered(stack, folder, SampleRecord, resume=resume)
        if earlier is not None:
            seed = earlier.seed if seed is None else seed
            partitions = partitions or earlier.options.get("partitions")
        loaded = read_model(model_file, allow_patterns=allow_patterns)
        plan, _ = plan_sample(
            loaded.model, n, None, seed=seed, unique=unique, strict=strict, exact=exact
        )
        parts = cut(loaded.model, plan, partitions)
        record = record_of(loaded, plan, partitions=len(parts))
        decisive = _decisive(record)
        if earlier is not None:
            refuse_another_run(differing(_decisive(earlier), decisive), folder)
        files = [PartFile(part, folder, run_of(decisive)) for part in parts]
        todo = [file for file in files if not file.is_made()]
        if todo or earlier is None:
            with on_cluster(scheduler, workers) as client:
                if earlier is None:
                    begin(stack, folder, record)
                follow(write_partitions(todo, client), files, todo, folder, progress)
        refuse_lost(files, folder)
        finish(folder)
    return record


@dataclass(frozen=True)
class PartFile(FileOfRun):
    """The file of a partition. The names sort as the rows do."""

    part: Partition
    folder: Path
    run: str

    @property
    def path(self) -> Path:
        return self.folder / f"part-{self.part.number:06}.parquet"

    @property
    def place(self) -> str:
        return f"{self.run}/{self.part.number}"

    @property
    def rows(self) -> int:
        return len(self.part.rows)


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
    return as_written(dict(zip(futures, files, strict=True)), client)


def _write(file: PartFile) -> None:
    write_table(make_blocks(file.part), file.path, notes=file.note)

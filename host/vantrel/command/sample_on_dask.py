"""Makes a sample on a Dask cluster and writes it to a folder of Parquet files."""

from __future__ import annotations

import click

from vantrel.command.sample_request import SampleRequest, done, progress_bar
from vantrel.record import SampleRecord
from vantrel.sampling import Plan, refuse_borrowed
from vantrel.scale.partitions import Partition, partitions


def make(request: SampleRequest) -> None:
    """Makes what is asked for, or what is missing of it.

    Raises:
        click.ClickException: Dask is not installed, or workers died again and again.
        ValueError: The model or what is asked of it cannot be used, or another run is in the
            folder.
        OSError: The output cannot be written, or no scheduler answers.
    """
    try:
        from vantrel.scale.folder import begin, earlier_run, finish, refuse_another_run
    except ModuleNotFoundError as error:
        raise click.ClickException(
            f"--dask needs {error.name}: pip install 'vantrel[dask]'."
        ) from error

    assert request.rows is not None
    earlier = earlier_run(request.output) if request.resume else None
    seed = earlier.seed if earlier and request.seed is None else request.new_seed()
    model = request.load_model()
    if request.strict:
        refuse_borrowed(model)
    plan = Plan(request.rows, seed, unique=request.unique)
    parts = partitions(model, plan, _count(request, earlier))
    record = request.record(model, plan, partitions=len(parts))
    if earlier is None:
        begin(request.output, record)
    else:
        refuse_another_run(earlier, record, request.output)
    _write(request, parts)
    finish(request.output)
    done(plan, request.output)


def _count(request: SampleRequest, earlier: SampleRecord | None) -> int | None:
    if request.partitions is None and earlier is not None:
        return int(earlier.options["partitions"])
    return request.partitions


def _write(request: SampleRequest, parts: list[Partition]) -> None:
    from distributed import KilledWorker

    from vantrel.scale.cluster import connected
    from vantrel.scale.folder import missing, remove_unfinished, write_partitions

    todo = missing(parts, request.output)
    rows = sum(len(part.rows) for part in parts)
    try:
        with progress_bar(rows) as bar:
            bar.update(rows - sum(len(part.rows) for part in todo))
            with connected(request.scheduler, request.workers) as client:
                for part in write_partitions(todo, request.output, client):
                    bar.update(len(part.rows))
    except KilledWorker as error:
        raise click.ClickException(
            "Workers died again and again, for want of memory perhaps. What is finished is kept:"
            " repeat the command with --resume, with fewer --workers or more --partitions."
        ) from error
    finally:
        remove_unfinished(request.output)

"""Makes a sample on a Dask cluster and writes it to a folder of Parquet files."""

from __future__ import annotations

from collections.abc import Callable
from functools import partial

import click

from vantrel.cli.console import progress
from vantrel.cli.sample_request import SampleRequest, done
from vantrel.sampling import Plan, refuse_borrowed
from vantrel.sampling.record import SampleRecord
from vantrel.scale.partitions import Partition, partitions
from vantrel.storage.files import refuse_missing_folder


def make(request: SampleRequest) -> None:
    """Makes what is asked for, or what is missing of it.

    Raises:
        click.ClickException: Dask is not installed, workers died again and again, or the scheduler
            was lost.
        VantrelError: The model or what is asked of it cannot be used, or another run is in the
            folder.
        OSError: The output cannot be written, or no scheduler answers.
    """
    try:
        from vantrel.scale.folder import begin, earlier_run, finish, missing, refuse_another_run
    except ModuleNotFoundError as error:
        raise click.ClickException(
            f"--dask needs {error.name}: pip install 'dask[dataframe,distributed]'."
        ) from error

    refuse_missing_folder(request.output)  # before machines are started
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
        _write(request, parts, parts, begin=partial(begin, request.output, record))
    else:
        refuse_another_run(earlier, record, request.output)
        if todo := missing(parts, request.output):
            _write(request, parts, todo)
    finish(parts, request.output)
    done(plan, request.output)


def _count(request: SampleRequest, earlier: SampleRecord | None) -> int | None:
    if request.partitions is None and earlier is not None:
        return earlier.options.get("partitions")
    return request.partitions


def _write(
    request: SampleRequest,
    parts: list[Partition],
    todo: list[Partition],
    begin: Callable[[], None] = lambda: None,
) -> None:
    """Writes the files of ``todo``; ``begin`` is called when there are machines to write them."""
    from distributed import KilledWorker
    from distributed.client import FutureCancelledError
    from distributed.comm.core import CommClosedError

    from vantrel.scale.cluster import connected
    from vantrel.scale.folder import remove_unfinished, write_partitions

    rows = sum(len(part.rows) for part in parts)
    try:
        with connected(request.scheduler, request.workers) as client, progress(rows) as further:
            begin()
            further(rows - sum(len(part.rows) for part in todo))
            for part in write_partitions(todo, request.output, client):
                further(len(part.rows))
    except KilledWorker as error:
        raise click.ClickException(
            "Workers died again and again, for want of memory perhaps. What is finished is kept:"
            " repeat the command with --resume and fewer --workers."
        ) from error
    except (CommClosedError, FutureCancelledError) as error:
        raise click.ClickException(
            "The scheduler was lost. What is finished is kept: repeat the command with --resume."
        ) from error
    finally:
        if request.output.is_dir():
            remove_unfinished(request.output)

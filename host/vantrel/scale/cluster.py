"""The machines that a sample is made on."""

from __future__ import annotations

import asyncio
import logging
import signal
import warnings
from collections.abc import Iterator
from contextlib import ExitStack, contextmanager
from multiprocessing import resource_tracker

import dask
from distributed import Client, LocalCluster, Security
from distributed.comm.core import connect
from distributed.utils import silence_logging_cmgr

from vantrel.errors import ClusterError, VantrelWarning
from vantrel.util.callers import OURS
from vantrel.versions import differences, versions

_SECONDS_TO_ANSWER = 15

# Of a cluster on this machine, whose processes inherit them.
_SETTINGS = {
    # How often workers send again what another did not take: for some seconds. A folder that cannot
    # be written stays so, and Dask's own number would go on for minutes.
    "distributed.p2p.comm.retry.count": 3,
    # Dask has glibc give memory back at once, so that all columns are laid out on fresh pages: much
    # time, for little memory.
    "distributed.nanny.pre-spawn-environ.MALLOC_TRIM_THRESHOLD_": None,
    # Nobody looks at the profiles of a cluster that ends with the run.
    "distributed.worker.profile.enabled": False,
}


@contextmanager
def connected(address: str | None, workers: int | None) -> Iterator[Client]:
    """Connects to a cluster, or starts one on this machine and stops it in the end.

    The arguments are those of :func:`vantrel.scale.sample_to_folder`. Distributed logs nothing
    meanwhile: what goes wrong is raised.
    """
    with silence_logging_cmgr(logging.CRITICAL):
        if address is not None:
            asyncio.run(_knock(address))
            with Client(address, timeout=_SECONDS_TO_ANSWER) as client:
                refuse_other_versions(client)
                yield client
        else:
            with ExitStack() as stack:
                with _signals_held():
                    client = _start(workers, stack)
                yield client


def _start(workers: int | None, stack: ExitStack) -> Client:
    try:
        with dask.config.set(_SETTINGS):
            cluster = LocalCluster(
                n_workers=workers,
                threads_per_worker=1,  # rows are made under the interpreter's lock
                dashboard_address="127.0.0.1:0",  # any free port; None would be port 8787
                silence_logs=logging.CRITICAL,  # of the workers, noisy when they are stopped
            )
    except RuntimeError as error:
        raise ClusterError(
            f"No cluster starts on this machine ({first_cause(error)}): mend that, or name another"
            " folder for what workers keep by DASK_TEMPORARY_DIRECTORY in the environment."
        ) from error
    client: Client = stack.enter_context(Client(stack.enter_context(cluster)))
    return client


def first_cause(error: BaseException) -> str:
    """Tells the error that an error followed from."""
    while error.__cause__ is not None:
        error = error.__cause__
    return f"{type(error).__name__}: {error}"


@contextmanager
def _signals_held() -> Iterator[None]:
    """Lets signals that end the process wait: a cluster that is half started does not stop quietly.

    A terminal sends Ctrl-C to all processes. Those that are started meanwhile never get it, since
    they inherit the mask: whoever started them ends them.
    """
    resource_tracker.ensure_running()  # or else it would be started meanwhile, and clear the mask
    came: list[int] = []
    held = (signal.SIGINT, signal.SIGTERM)
    usual = [signal.signal(number, lambda number, _: came.append(number)) for number in held]
    mask = signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGINT})
    try:
        yield
    finally:
        signal.pthread_sigmask(signal.SIG_SETMASK, mask)
        for number, handler in zip(held, usual, strict=True):
            signal.signal(number, handler)
        if came:
            signal.raise_signal(came[0])


def warn_of_no_workers(client: Client) -> None:
    """Waits for a worker for some seconds, and warns where none comes: nothing is made so far.

    Warns:
        VantrelWarning: None has come.
    """
    try:
        client.wait_for_workers(1, timeout=_SECONDS_TO_ANSWER)
    except TimeoutError:
        address = client.scheduler_info()["address"]
        warnings.warn(
            f"The scheduler at {address} has no workers: start some with 'dask worker {address}'."
            " The run goes on when they come.",
            VantrelWarning,
            skip_file_prefixes=OURS,
        )


async def _knock(address: str) -> None:
    """Makes sure that somebody answers: a client that nobody answers to is slow to go away."""
    try:
        door = await connect(
            address, timeout=_SECONDS_TO_ANSWER, **Security().get_connection_args("client")
        )
        await door.close()
    except OSError as error:
        raise ConnectionError(
            f"No scheduler answers at {address}: start one with 'dask scheduler', or correct the"
            " address"
        ) from error
    except ValueError as error:
        raise ClusterError(
            f"{address!r} is no address of a scheduler ({error}): write one as tcp://10.0.0.1:8786."
        ) from error


def refuse_other_versions(client: Client) -> None:
    """Refuses workers that would make other rows than this process."""
    try:
        installed = client.run(versions)
    except ModuleNotFoundError as error:
        raise ClusterError(
            f"A worker lacks {error.name}: install the same versions of everything everywhere."
        ) from error
    for worker, there in installed.items():
        if different := differences(there):
            raise ClusterError(
                f"Worker {worker} would make other rows: {'; '.join(different)}. Install the same"
                " versions everywhere."
            )

"""The machines that a sample is made on."""

from __future__ import annotations

import asyncio
import logging
from collections.abc import Iterator
from contextlib import contextmanager

from distributed import Client, LocalCluster, Security
from distributed.comm.core import connect
from distributed.utils import silence_logging_cmgr

from vantrel.versions import differences, versions

_SECONDS_TO_ANSWER = 15

# A terminal sends Ctrl-C to all processes. Whoever started the workers ends them, without a word.
_LEAVE_INTERRUPTS = "import signal; signal.signal(signal.SIGINT, signal.SIG_IGN)"


@contextmanager
def connected(address: str | None, workers: int | None) -> Iterator[Client]:
    """Connects to a cluster, or starts one on this machine and stops it in the end.

    Distributed logs nothing meanwhile: what goes wrong is raised.

    Args:
        address: The address of a scheduler, such as "tcp://10.0.0.1:8786". None starts a cluster
            on this machine.
        workers: The number of processes on this machine; one for each core if None.

    Raises:
        ConnectionError: No scheduler answers at the address.
        ValueError: The address is none, or a worker lacks vantrel or has other versions of what the
            rows depend on.
    """
    with silence_logging_cmgr(logging.CRITICAL):
        if address is not None:
            asyncio.run(_knock(address))
            with Client(address, timeout=_SECONDS_TO_ANSWER) as client:
                _refuse_other_versions(client)
                yield client
        else:
            # Rows are made under locks of the process: another thread in it would only wait.
            with (
                LocalCluster(
                    n_workers=workers,
                    threads_per_worker=1,
                    dashboard_address="127.0.0.1:0",  # any free port; None would be port 8787
                    silence_logs=logging.CRITICAL,  # of the workers, noisy when they are stopped
                    preload=_LEAVE_INTERRUPTS,
                ) as cluster,
                Client(cluster) as client,
            ):
                yield client


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
        raise ValueError(
            f"{address!r} is no address of a scheduler ({error}): write one as tcp://10.0.0.1:8786."
        ) from error


def _refuse_other_versions(client: Client) -> None:
    try:
        installed = client.run(versions)
    except ModuleNotFoundError as error:
        raise ValueError(
            f"A worker lacks {error.name}: install the same versions of everything everywhere."
        ) from error
    for worker, there in installed.items():
        if different := differences(there):
            raise ValueError(
                f"Worker {worker} would make other rows: {'; '.join(different)}. Install the same"
                " versions everywhere."
            )

"""The machines that a sample is made on."""

from __future__ import annotations

import logging
from collections.abc import Iterator
from contextlib import contextmanager

from distributed import Client, LocalCluster
from distributed.utils import silence_logging_cmgr

from vantrel.versions import differences, versions

_SECONDS_TO_ANSWER = 15


@contextmanager
def connected(address: str | None, workers: int | None) -> Iterator[Client]:
    """Connects to a cluster, or starts one on this machine and stops it in the end.

    Distributed logs nothing meanwhile: what goes wrong is raised.

    Args:
        address: The address of a scheduler, such as "tcp://10.0.0.1:8786". None starts a cluster
            on this machine.
        workers: The number of processes on this machine; one for each core if None.

    Raises:
        OSError: No scheduler answers at the address.
        ValueError: The address is none, or a worker lacks vantrel or has other versions of what the
            rows depend on.
    """
    with silence_logging_cmgr(logging.CRITICAL):
        if address is not None:
            with Client(address, timeout=_SECONDS_TO_ANSWER) as client:
                _refuse_other_versions(client)
                yield client
        else:
            # Rows are made under locks of the process: another thread in it would only wait.
            with (
                LocalCluster(
                    n_workers=workers,
                    threads_per_worker=1,
                    dashboard_address=None,
                    silence_logs=logging.CRITICAL,  # of the workers, noisy when they are stopped
                ) as cluster,
                Client(cluster) as client,
            ):
                yield client


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

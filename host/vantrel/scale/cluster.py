"""The machines that a sample is made on."""

from __future__ import annotations

import logging
from collections.abc import Iterator
from contextlib import contextmanager

from distributed import Client, LocalCluster

from vantrel.versions import differences, versions

_SECONDS_TO_ANSWER = 15


@contextmanager
def connected(address: str | None, workers: int | None) -> Iterator[Client]:
    """Connects to a cluster, or starts one on this machine and stops it in the end.

    Args:
        address: The address of a scheduler, such as "tcp://10.0.0.1:8786". None starts a cluster
            on this machine.
        workers: The number of processes on this machine; one for each core if None.

    Raises:
        OSError: No scheduler answers at the address.
        ValueError: A worker has other versions of what the rows depend on.
    """
    if address is not None:
        with Client(address, timeout=_SECONDS_TO_ANSWER) as client:
            _refuse_other_versions(client)
            yield client
    else:
        # Rows are made under locks of the process: another thread in it would only wait.
        cluster = LocalCluster(
            n_workers=workers,
            threads_per_worker=1,
            dashboard_address=None,
            silence_logs=logging.CRITICAL,  # workers are noisy when they are stopped
        )
        with cluster, Client(cluster) as client:
            yield client


def _refuse_other_versions(client: Client) -> None:
    for worker, there in client.run(versions).items():
        if different := differences(there):
            raise ValueError(
                f"Worker {worker} would make other rows: {'; '.join(different)}. Install the same"
                " versions everywhere."
            )

"""Clusters: connecting to them, what they must have in common, and losing their workers."""

import importlib
import os
import re
import signal
from collections.abc import Iterator
from pathlib import Path
from typing import Any

import pandas as pd
import pytest

from support.people import fitted_model
from support.scaling import contents, rows_of
from vantrel import __version__
from vantrel.config import PersonLabels
from vantrel.errors import ClusterError, VantrelWarning
from vantrel.sampling import Plan

distributed = pytest.importorskip("distributed", reason="clusters need distributed")
pytest.importorskip("pyarrow", reason="Dask's frames need pyarrow")

import dask  # noqa: E402 - after the question whether it can be
from distributed.shuffle._exceptions import P2POutOfDiskError  # noqa: E402 - after the question whether it can be

from vantrel import scale  # noqa: E402 - after the question whether it can be
from vantrel.scale import cluster as module  # noqa: E402 - after the question whether it can be
from vantrel.scale.cluster import (  # noqa: E402 - after the question whether it can be
    connected,
    warn_of_no_workers,
)
from vantrel.scale.folder import PartFile, write_partitions  # noqa: E402 - after the question whether it can be
from vantrel.scale.partitions import partitions  # noqa: E402 - after the question whether it can be
from vantrel.scale.run import on_cluster  # noqa: E402 - after the question whether it can be

PLAN = Plan(400_000, seed=7, block_rows=10_000)  # 40 blocks that take a moment each
LABELS = PersonLabels(gender="gender", firstname="first")


def processes(client: Any) -> set[int]:
    return set(client.run(os.getpid).values())


def kill_one(client: Any, of: str | None = None) -> None:
    """Kills a worker's process, that of an address if one is given."""
    there = client.run(os.getpid)
    os.kill(there[of] if of else next(iter(there.values())), signal.SIGKILL)


def test_rows_of_a_lost_worker_are_made_again(client: Any) -> None:
    model = fitted_model(LABELS)
    frame = scale.sample(model, PLAN.rows, seed=7, block_rows=PLAN.block_rows, npartitions=20)
    before = processes(client)
    futures = client.compute(list(frame.partitions))
    first = next(distributed.as_completed(futures, loop=client.loop))
    ((holder,),) = client.who_has([first]).values()
    kill_one(client, holder)  # with the rows that it has made
    made = pd.concat(client.gather(futures))
    pd.testing.assert_frame_equal(made, rows_of(model, PLAN), check_exact=True)
    assert len(before - processes(client)) == 1


def test_files_of_a_lost_worker_are_made_again(client: Any, tmp_path: Path) -> None:
    parts = partitions(fitted_model(LABELS), PLAN, 20)
    whole, broken = tmp_path / "whole", tmp_path / "broken"
    whole.mkdir()
    broken.mkdir()
    list(write_partitions([PartFile(part, whole, "run") for part in parts], client))
    run = write_partitions([PartFile(part, broken, "run") for part in parts], client)
    done = [next(run)]
    kill_one(client)
    done += run
    assert sorted(file.part.number for file in done) == list(range(20))
    tables = {name: data for name, data in contents(broken).items() if not name.endswith(".tmp")}
    assert tables == contents(whole)


def refusal(address: str, error: type[Exception]) -> str:
    with pytest.raises(error) as caught, connected(address, None):
        pass
    assert caught.type is error
    return str(caught.value)


def test_an_address_where_nothing_answers(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(module, "_SECONDS_TO_ANSWER", 0.5)
    assert refusal("tcp://127.0.0.1:9", ConnectionError) == (
        "No scheduler answers at tcp://127.0.0.1:9: start one with 'dask scheduler', or correct the"
        " address"
    )


@pytest.mark.parametrize(
    ("address", "reason"),
    [
        ("127.0.0.1", "missing port number in address '127.0.0.1'"),
        ("tcp://127.0.0.1:x", "invalid literal for int() with base 10: 'x'"),
    ],
)
def test_an_address_that_is_none(address: str, reason: str) -> None:
    assert refusal(address, ClusterError) == (
        f"{address!r} is no address of a scheduler ({reason}): write one as tcp://10.0.0.1:8786."
    )


def test_a_scheduler_without_workers(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(module, "_SECONDS_TO_ANSWER", 0.5)
    with (
        distributed.LocalCluster(n_workers=0, dashboard_address=":0") as idle,
        distributed.Client(idle) as client,
        pytest.warns(VantrelWarning) as told,
    ):
        warn_of_no_workers(client)
    address = idle.scheduler_address
    assert [str(each.message) for each in told] == [
        f"The scheduler at {address} has no workers: start some with 'dask worker {address}'. The"
        " run goes on when they come."
    ]


def set_in_workers(client: Any, module_name: str, name: str, value: Any) -> None:
    """Sets a name of a module in every worker."""
    client.run(lambda: setattr(importlib.import_module(module_name), name, value))


@pytest.fixture
def address(client: Any) -> Iterator[str]:
    """The address of a cluster whose workers are as before in the end."""
    yield client.scheduler.address
    set_in_workers(client, "vantrel.versions", "__version__", __version__)


def test_a_cluster_that_runs_is_used(address: str) -> None:
    with connected(address, None) as connection:
        assert len(connection.scheduler_info()["workers"]) == 2
    with connected(address, None):  # which has not ended with the connection
        pass


def test_a_worker_of_other_versions(client: Any, address: str) -> None:
    set_in_workers(client, "vantrel.versions", "__version__", "9.9")
    message = refusal(address, ClusterError)
    assert re.sub(r"tcp://[\d.:]+\d", "X", message) == (
        f"Worker X would make other rows: vantrel is {__version__} here and was 9.9: anything may"
        " differ. Install the same versions everywhere."
    )


def test_a_worker_without_the_package(address: str, monkeypatch: pytest.MonkeyPatch) -> None:
    def versions() -> None:
        raise ModuleNotFoundError("No module named 'vantrel'", name="vantrel")

    monkeypatch.setattr(module, "versions", versions)
    assert refusal(address, ClusterError) == (
        "A worker lacks vantrel: install the same versions of everything everywhere."
    )


def test_a_full_disk_for_what_workers_send_each_other(client: Any) -> None:
    with pytest.raises(ClusterError) as raised, on_cluster(None, None, client):
        raise P2POutOfDiskError
    assert str(raised.value) == (
        "The disk is full where workers keep what they send each other: name a folder with more"
        " room by DASK_TEMPORARY_DIRECTORY in their environment. What is finished is kept: repeat"
        " the call with resume=True."
    )


def test_a_cluster_of_its_own_ends_with_the_connection() -> None:
    with connected(None, 1) as connection:
        (process,) = processes(connection)
        os.kill(process, 0)
    with pytest.raises(ProcessLookupError):
        os.kill(process, 0)


def test_workers_of_a_cluster_of_its_own_have_its_settings(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    monkeypatch.delenv("MALLOC_TRIM_THRESHOLD_", raising=False)  # where Dask leaves it, of another

    def settings() -> dict[str, Any]:
        given: dict[str, Any] = dask.config.get("distributed")
        return given | {"trim": os.environ.get("MALLOC_TRIM_THRESHOLD_")}

    with connected(None, 1) as connection:
        (there,) = connection.run(settings).values()
    assert there["p2p"]["comm"]["retry"]["count"] == 3
    assert there["worker"]["profile"]["enabled"] is False
    assert there["trim"] is None  # with it each array is laid out on pages of its own

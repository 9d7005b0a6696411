"""What the tests of sampling on many machines share."""

from __future__ import annotations

import importlib
import logging
import shutil
from collections.abc import Callable, Iterator
from functools import partial
from pathlib import Path
from typing import TYPE_CHECKING, Any

import pytest

from support.scaling import model_with_gaps, time_limit
from vantrel.model.models.person import PersonModel

if TYPE_CHECKING:
    from distributed import Client, LocalCluster

# A loaded machine is slow to start processes; nothing here takes a tenth of it elsewhere.
SECONDS = 180


@pytest.fixture(autouse=True)
def _ends() -> Iterator[None]:
    with time_limit(SECONDS):
        yield


@pytest.fixture(scope="session")
def cluster() -> Iterator[LocalCluster]:
    """Two processes on this machine, of one thread each."""
    from distributed import LocalCluster

    with (
        time_limit(SECONDS),
        LocalCluster(
            n_workers=2,
            threads_per_worker=1,
            dashboard_address="127.0.0.1:0",  # any free port; None would be port 8787
            silence_logs=logging.CRITICAL,  # workers that are killed have much to say
        ) as cluster,
    ):
        yield cluster


@pytest.fixture
def client(cluster: LocalCluster) -> Iterator[Client]:
    """A client of the two processes, which are both there."""
    from distributed import Client

    with Client(cluster, set_as_default=False) as client:
        client.wait_for_workers(2, timeout=SECONDS)
        yield client


@pytest.fixture
def folder(tmp_path: Path, model_file: Path, monkeypatch: pytest.MonkeyPatch) -> Path:
    """The folder that commands run in, with the model that a module of tests has."""
    monkeypatch.chdir(tmp_path)
    shutil.copy(model_file, "m.json")
    return tmp_path


@pytest.fixture
def model() -> PersonModel:
    """A model of a few attributes, with missing genders and countries."""
    return model_with_gaps()


@pytest.fixture
def many(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    """A folder of three files of people, in the folder that commands run in."""
    from support.replaced_folders import visits, write_folder

    monkeypatch.chdir(tmp_path)
    write_folder(Path("many"), visits(60), 3)


@pytest.fixture
def alike(client: Any) -> Iterator[None]:
    """Has workers give everybody one digest."""

    def set_digests(is_alike: bool) -> None:
        genuine = importlib.import_module("vantrel.replacing.values.keys").digests
        others = partial(_one_digest, genuine)
        people = importlib.import_module("vantrel.replacing.people.people")
        people.digests = others if is_alike else genuine  # type: ignore[attr-defined]  # is there

    def _one_digest(genuine: Callable[..., Any], keys: Any, secret: bytes) -> Any:
        return genuine([b"one" for _ in keys], secret)

    client.run(set_digests, is_alike=True)
    yield
    client.run(set_digests, is_alike=False)

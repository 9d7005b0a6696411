"""A command that is stopped in the middle of a run, and what a second run makes of it."""

import os
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path
from typing import Any

import pytest
from click.testing import CliRunner

from support.people import fitted_model
from support.scaling import contents
from vantrel.command import main
from vantrel.config import PersonLabels
from vantrel.model_file import save

pytest.importorskip("distributed", reason="clusters need distributed")
pytest.importorskip("pyarrow", reason="Parquet files need pyarrow")

SECONDS = 120
COMMAND = (sys.executable, "-c", "from vantrel.command import main; main()")
PARTITIONS = 20
RUN = (*"sample m.json -n 1000000 --seed 7 --dask -o".split(), "people")
OPTIONS = ("--partitions", str(PARTITIONS))


@pytest.fixture(scope="module")
def model_file(tmp_path_factory: pytest.TempPathFactory) -> Path:
    path = tmp_path_factory.mktemp("model") / "m.json"
    save(fitted_model(PersonLabels(gender="gender", firstname="first")), path)
    return path


@pytest.fixture(autouse=True)
def folder(tmp_path: Path, model_file: Path, monkeypatch: pytest.MonkeyPatch) -> Path:
    monkeypatch.chdir(tmp_path)
    shutil.copy(model_file, "m.json")
    return tmp_path


@pytest.fixture(scope="module")
def on(cluster: Any) -> tuple[str, ...]:
    """The options that name the cluster of the tests."""
    return ("--scheduler", cluster.scheduler_address)


@pytest.fixture(scope="module")
def whole(on: tuple[str, ...], model_file: Path) -> dict[str, bytes]:
    """What an unbroken run writes."""
    folder = model_file.with_name("whole")
    line = [*RUN[:-1], str(folder), *OPTIONS, *on]
    run(*[str(model_file) if word == "m.json" else word for word in line])
    return contents(folder)


def run(*line: str) -> None:
    done = CliRunner().invoke(main, line, prog_name="vantrel")
    assert (done.exit_code, done.stderr) == (0, "")


def tables(folder: str) -> dict[str, int]:
    """The time of the last change of each table, by its name."""
    return {file.name: file.stat().st_mtime_ns for file in Path(folder).glob("part-*.parquet")}


def stopped(*line: str, group: bool) -> None:
    """Runs a command and sends it what Ctrl-C would, as soon as a first file is whole.

    Args:
        line: The command.
        group: Whether all processes that it started are sent the signal, too, as a terminal does.
    """
    with subprocess.Popen(
        [*COMMAND, *line], stderr=subprocess.PIPE, text=True, start_new_session=True
    ) as running:
        while not tables("people"):
            assert running.poll() is None
            time.sleep(0.002)
        if group:
            os.killpg(running.pid, signal.SIGINT)
        else:
            running.send_signal(signal.SIGINT)
        _, told = running.communicate(timeout=SECONDS)
    assert (running.returncode, told) == (130, "\nvantrel: interrupted\n")


@pytest.mark.parametrize("own_cluster", [True, False], ids=["own cluster", "shared cluster"])
def test_a_stopped_run_is_resumed(
    own_cluster: bool, on: tuple[str, ...], whole: dict[str, bytes]
) -> None:
    machines = ("--workers", "1") if own_cluster else on
    stopped(*RUN, *OPTIONS, *machines, group=own_cluster)
    made = tables("people")
    assert 0 < len(made) < PARTITIONS
    assert {file.name for file in Path("people").iterdir()} == {*made, "_making.json"}
    time.sleep(0.01)  # so that a file that is made again has another time
    run(*RUN, *on, "--resume")
    assert {name: tables("people")[name] for name in made} == made
    assert len(tables("people")) == PARTITIONS
    assert contents(Path("people")) == whole

"""A command that is stopped in the middle of a run, and what a second run makes of it."""

import os
import signal
import subprocess
import sys
import time
from collections.abc import Callable
from pathlib import Path
from typing import Any

import pytest
from click.testing import CliRunner

from support.people import fitted_model
from support.scaling import contents
from vantrel.cli import main
from vantrel.config import PersonLabels
from vantrel.storage.models import save

psutil = pytest.importorskip("psutil", reason="clusters need distributed, which brings psutil")
pytest.importorskip("distributed", reason="clusters need distributed")
pytest.importorskip("pyarrow", reason="Parquet files need pyarrow")

pytestmark = pytest.mark.usefixtures("folder")

SECONDS = 120
COMMAND = (sys.executable, "-c", "from vantrel.cli import main; main()")
PARTITIONS = 20
RUN = (*"sample m.json -n 1000000 --seed 7 --dask -o".split(), "people")
OPTIONS = ("--partitions", str(PARTITIONS))


@pytest.fixture(scope="module")
def model_file(tmp_path_factory: pytest.TempPathFactory) -> Path:
    path = tmp_path_factory.mktemp("model") / "m.json"
    save(fitted_model(PersonLabels(gender="gender", firstname="first")), path)
    return path


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


def stopped(*line: str, once: Callable[[int], bool], number: signal.Signals, group: bool) -> None:
    """Runs a command and sends it a signal that ends it.

    Args:
        line: The command.
        once: Tells when to send the signal, from the number of the process.
        number: The signal; SIGINT is what Ctrl-C sends.
        group: Whether all processes that it started are sent the signal, too, as a terminal does.
    """
    with subprocess.Popen(
        [*COMMAND, *line], stderr=subprocess.PIPE, text=True, start_new_session=True
    ) as running:
        while not once(running.pid):
            assert running.poll() is None
            time.sleep(0.002)
        if group:
            os.killpg(running.pid, number)
        else:
            running.send_signal(number)
        _, told = running.communicate(timeout=SECONDS)
    interrupted = number == signal.SIGINT
    assert told == ("\nvantrel: interrupted\n" if interrupted else "")
    assert running.returncode == 128 + number


def has_children(process: int) -> bool:
    """Tells whether a process has started others: of a cluster, besides one that all of them share."""
    return len(psutil.Process(process).children()) > 1


@pytest.mark.parametrize("group", [False, True], ids=["alone", "group"])
@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM])
def test_a_run_is_stopped_while_its_cluster_starts(
    number: signal.Signals, group: bool, folder: Path
) -> None:
    stopped(*RUN, "--workers", "2", once=has_children, number=number, group=group)
    assert [file.name for file in folder.iterdir()] == ["m.json"]


@pytest.mark.parametrize("own_cluster", [True, False], ids=["own cluster", "shared cluster"])
def test_a_stopped_run_is_resumed(
    own_cluster: bool, on: tuple[str, ...], whole: dict[str, bytes]
) -> None:
    machines = ("--workers", "1") if own_cluster else on
    stopped(
        *(*RUN, *OPTIONS, *machines),
        once=lambda _: bool(tables("people")),
        number=signal.SIGINT,
        group=own_cluster,
    )
    made = tables("people")
    assert 0 < len(made) < PARTITIONS
    assert {file.name for file in Path("people").iterdir()} == {*made, "_making.json"}
    time.sleep(0.01)  # so that a file that is made again has another time
    run(*RUN, *on, "--resume")
    assert {name: tables("people")[name] for name in made} == made
    assert len(tables("people")) == PARTITIONS
    assert contents(Path("people")) == whole

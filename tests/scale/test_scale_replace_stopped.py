"""Runs that replace the people of a folder, are stopped or lose a worker, and go on."""

from __future__ import annotations

import importlib
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import threading
import time
from collections.abc import Callable, Iterator
from contextlib import chdir
from pathlib import Path
from typing import Any

import pandas as pd
import pytest

pytest.importorskip("distributed", reason="clusters need distributed")
pytest.importorskip("pyarrow", reason="Parquet files need pyarrow")

import dask
import pyarrow.parquet as pq

from support.command import fail, succeed
from support.replaced_folders import KEY, visits, write_folder
from support.replacing import SECRET
from support.scaling import contents, time_limit
from vantrel.scale.cluster import connected

FILES = 12
RUN = f"replace many -o copy --dask --key {KEY} --secret s.secret --other seen=shift:30"
COMMAND = (sys.executable, "-c", "from vantrel.cli import main; main()")
AGAIN = "Repeat what it was begun with, or name another folder."


@pytest.fixture(scope="module")
def made(cluster: Any, tmp_path_factory: pytest.TempPathFactory) -> Path:
    """A folder of tables and secrets, and beside it what an unbroken run writes."""
    folder = tmp_path_factory.mktemp("made")
    table = pd.concat([visits(6_000)] * 5, ignore_index=True)
    with chdir(folder):
        write_folder(Path("many"), table, FILES)
        for name, secret in (("s.secret", SECRET), ("another.secret", SECRET[::-1])):
            Path(name).write_text(f"secret: {secret.hex()}\n")
            Path(name).chmod(0o600)
        succeed(f"{RUN.replace('-o copy', '-o whole')}{on_scheduler(cluster.scheduler_address)}")
    return folder


@pytest.fixture(autouse=True)
def _folder(made: Path, tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    shutil.copytree(made, tmp_path, dirs_exist_ok=True)  # with the times of the last changes
    monkeypatch.chdir(tmp_path)


def on_scheduler(address: str) -> str:
    """The option that names a cluster."""
    return f" --scheduler {address}"


@pytest.fixture
def on(client: Any) -> str:
    """That of the tests."""
    return on_scheduler(client.scheduler.address)


def copies(folder: str = "copy") -> dict[str, int]:
    """The time of the last change of each copy, by its name."""
    return {file.name: file.stat().st_mtime_ns for file in Path(folder).glob("*.parquet")}


@pytest.fixture
def whole() -> dict[str, bytes]:
    """What an unbroken run writes."""
    return contents(Path("whole"))


def stop(whole: dict[str, bytes], *kept: str) -> None:
    """Leaves what a run leaves behind that was killed: some files, and one that is not whole."""
    Path("copy").mkdir()
    record = json.loads(whole["_made.json"]) | {"report": None, "leaks": []}
    Path("copy", "_making.json").write_text(json.dumps(record))
    for name in kept:
        Path("copy", name).write_bytes(whole[name])
        os.utime(Path("copy", name), (1, 1))
    Path("copy", ".part.002.parquet.0.tmp").write_bytes(whole["part.002.parquet"][:100])


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGKILL])
def test_a_stopped_run_is_resumed(number: signal.Signals, on: str, whole: dict[str, bytes]) -> None:
    line = f"{RUN}{on}".split()
    with subprocess.Popen(
        [*COMMAND, *line], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True
    ) as running:
        while not copies():
            assert running.poll() is None
            time.sleep(0.002)
        running.send_signal(number)
        _, told = running.communicate(timeout=120)
    assert told == ("\nvantrel: interrupted\n" if number == signal.SIGINT else "")
    made = copies()
    assert 0 < len(made) < FILES
    assert Path("copy", "_making.json").exists()
    succeed(f"{RUN} --resume{on}")
    assert {name: copies()[name] for name in made} == made
    assert contents(Path("copy")) == whole


def test_resuming_makes_what_is_missing(on: str, whole: dict[str, bytes]) -> None:
    stop(whole, "part.003.parquet", "part.007.parquet")
    printed = succeed(f"{RUN} --resume{on}")
    assert contents(Path("copy")) == whole
    assert {name for name, time in copies().items() if time == 10**9} == {
        "part.003.parquet",
        "part.007.parquet",
    }
    assert "Replaced the people of 30,000 rows; wrote copy.\n" in printed.stdout
    assert "300 cells still name the row's person (rows 51, 151, 251)" in printed.stderr


def test_resuming_a_run_that_is_finished_makes_nothing(
    whole: dict[str, bytes], on: str, monkeypatch: pytest.MonkeyPatch
) -> None:
    first = succeed(f"{RUN}{on}").stderr
    before = copies()
    monkeypatch.setattr("vantrel.scale.cluster.LocalCluster", None)  # nobody is asked for anything
    assert succeed(f"{RUN} --resume").stderr == first
    assert copies() == before
    assert contents(Path("copy")) == whole


def test_a_run_that_was_stopped_behind_its_last_copy(on: str, whole: dict[str, bytes]) -> None:
    stop(whole, *(name for name in whole if name.endswith(".parquet")))
    succeed(f"{RUN} --resume{on}")
    assert contents(Path("copy")) == whole
    Path("copy", "_made.json").rename("copy/_making.json")
    succeed(f"{RUN} --resume")
    assert contents(Path("copy")) == whole


def another_secret() -> str:
    return RUN.replace("s.secret", "another.secret")


def another_file() -> str:
    os.utime(Path("many", "part.004.parquet"), (1, 1))
    return RUN


def a_new_file() -> str:
    pq.write_table(pq.read_table("many/part.004.parquet"), "many/part.100.parquet")
    return RUN


def a_lost_file() -> str:
    Path("many", "part.004.parquet").unlink()
    return RUN


@pytest.mark.parametrize(
    ("change", "difference"),
    [
        (another_secret, "the secret is another one"),
        (another_file, "file part.004.parquet has changed"),
        (a_new_file, "file part.100.parquet is new"),
        (a_lost_file, "file part.004.parquet is gone"),
        (lambda: RUN.replace(KEY, "email"), f"key {[KEY]} then and ['email'] now"),
        (
            lambda: RUN.replace("shift:30", "shift:31"),
            "column 'seen' 'shift:30:YYYY-MM-DD' then and 'shift:31:YYYY-MM-DD' now",
        ),
        (lambda: f"{RUN} --other note=blank", "column 'note' None then and 'blank' now"),
        (
            lambda: f"{RUN} --column gender=note",
            "columns for gender ['sex'] then and ['note'] now",
        ),
        (lambda: f"{RUN} --keep email", "kept [] then and ['email'] now"),
        (lambda: f"{RUN} --scrub note", "scrub [] then and ['note'] now"),
        (lambda: f"{RUN} --locale FR", "place 'en_GB' then and 'FR' now"),
        (lambda: f"{RUN} --latin", "latin False then and True now"),
    ],
    ids=lambda each: getattr(each, "__name__", each),
)
def test_another_run_is_not_resumed(
    change: Callable[[], str], difference: str, whole: dict[str, bytes]
) -> None:
    stop(whole, "part.003.parquet")
    before = contents(Path("copy"))
    assert fail(f"{change()} --resume", 1) == (
        f"The run in copy cannot be resumed, for this is another one: {difference}. {AGAIN}"
    )
    assert contents(Path("copy")) == before


def test_another_plan_is_not_resumed(on: str) -> None:
    plan = Path("p.toml")
    succeed(f"replace many --dask --key {KEY} --write-plan {plan}")
    line = f"replace many -o copy --dask --secret s.secret --plan {plan}"
    succeed(f"{line}{on}")
    Path("copy", "part.003.parquet").unlink()
    plan.write_text(re.sub(r'note = "\w+"', 'note = "blank"', plan.read_text()))
    assert fail(f"{line} --resume", 1) == (
        "The run in copy cannot be resumed, for this is another one: column 'note' None then and"
        f" 'blank' now. {AGAIN}"
    )


def test_other_people_of_a_plan_are_not_resumed(on: str) -> None:
    """What is told first counts, so their order tells who becomes whom, and so do their columns."""
    deals = pd.DataFrame({"a_id": [1, 2], "b_id": [2, 1], "a": ["Qa", "Qb"], "b": ["Qc", "Qd"]})
    write_folder(Path("deals"), deals, 2)
    head = 'format = "vantrel-plan"\nschema_version = 1\n'
    person = '[[tables.deals.people]]\nname = "{0}"\nkey = ["{0}_id"]\ncolumns.firstname = "{1}"\n'
    first, second = (person.format(name, name) for name in "ab")
    line = "replace deals -o copy --dask --secret s.secret --plan p.toml"
    Path("p.toml").write_text(head + first + second)
    succeed(f"{line}{on}")
    Path("copy", "part.001.parquet").unlink()
    others = {
        second + first: "people ['a', 'b'] then and ['b', 'a'] now",
        person.format("a", "b") + person.format("b", "a"): (
            "columns for firstname of 'a' ['a'] then and ['b'] now, columns for firstname of 'b'"
            " ['b'] then and ['a'] now"
        ),
    }
    for people, difference in others.items():
        Path("p.toml").write_text(head + people)
        assert fail(f"{line} --resume", 1) == (
            f"The run in copy cannot be resumed, for this is another one: {difference}. {AGAIN}"
        )


def test_a_copy_of_another_run_is_made_again(on: str, whole: dict[str, bytes]) -> None:
    succeed(f"{another_secret().replace('-o copy', '-o other')}{on}")
    stop(whole, "part.003.parquet")
    Path("copy", "part.004.parquet").write_bytes(Path("other", "part.004.parquet").read_bytes())
    succeed(f"{RUN} --resume{on}")
    assert contents(Path("copy")) == whole


def on_first_copy(action: Callable[[], None]) -> None:
    """Does something as soon as a first copy is whole."""

    def wait() -> None:
        while not copies():
            time.sleep(0.005)
        action()

    threading.Thread(target=wait, daemon=True).start()


def kill_one(client: Any) -> None:
    os.kill(next(iter(client.run(os.getpid).values())), signal.SIGKILL)


def test_a_worker_that_is_lost_while_copies_are_made(
    client: Any, on: str, whole: dict[str, bytes]
) -> None:
    before = set(client.run(os.getpid).values())
    on_first_copy(lambda: kill_one(client))
    succeed(f"{RUN}{on}")
    assert before - set(client.run(os.getpid).values())
    assert contents(Path("copy")) == whole


@pytest.fixture
def slow(client: Any) -> Iterator[None]:
    """Has workers take their time to read what is told."""

    def take(seconds: float) -> None:
        genuine = importlib.import_module("vantrel.scale.facts").facts_of

        def slowly(*given: Any) -> Any:
            time.sleep(seconds)
            return genuine(*given)

        importlib.import_module("vantrel.scale.joining").facts_of = slowly if seconds else genuine  # type: ignore[attr-defined]  # is there

    client.run(take, 0.3)
    yield
    client.run(take, 0.0)


@pytest.mark.usefixtures("slow")
def test_a_worker_that_is_lost_while_people_are_joined(
    client: Any, on: str, whole: dict[str, bytes]
) -> None:
    before = set(client.run(os.getpid).values())
    timer = threading.Timer(2, kill_one, [client])
    timer.start()
    succeed(f"{RUN}{on}")
    timer.join()
    assert before - set(client.run(os.getpid).values())
    assert contents(Path("copy")) == whole


def unwritten(name: str) -> str:
    """What is told where workers cannot write, as a pattern."""
    return (
        rf"Workers cannot keep what they send each other \({name}\): mend that, or name another"
        r" folder by DASK_TEMPORARY_DIRECTORY in their environment. What is finished is kept:"
        r" repeat the call with --resume\."
    )


@pytest.fixture
def folder_of_no_use(client: Any) -> Iterator[None]:
    """Has workers lose the folder where they keep what is shuffled."""

    def lose(dask_worker: Any) -> None:
        dask_worker.usual, dask_worker.local_directory = dask_worker.local_directory, "/proc/none"

    def find(dask_worker: Any) -> None:
        dask_worker.local_directory = dask_worker.usual

    client.run(lose)
    yield
    client.run(find)


@pytest.mark.usefixtures("folder_of_no_use")
def test_a_folder_of_workers_that_cannot_be_written(on: str) -> None:
    message = fail(f"{RUN}{on}", 1)
    error = (
        r"FileNotFoundError: \[Errno 2\] No such file or directory: '/proc/none/shuffle-\w+-\d+'"
    )
    assert re.fullmatch(unwritten(error), message)
    assert [file.name for file in Path("copy").iterdir()] == ["_making.json"]


def test_a_worker_that_takes_nothing_from_others_ends_the_run_soon() -> None:
    """Dask by itself would try for minutes."""

    def refuse(dask_worker: Any) -> None:
        async def receive(**_: Any) -> None:
            raise PermissionError(13, "Permission denied", "shuffled")

        dask_worker.handlers["shuffle_receive"] = receive

    with connected(None, 2) as own, time_limit(60):
        own.run(refuse)
        message = fail(f"{RUN}{on_scheduler(own.scheduler_info()['address'])}", 1)
    assert re.fullmatch(unwritten(".*Permission denied.*"), message)
    assert [file.name for file in Path("copy").iterdir()] == ["_making.json"]


def test_a_cluster_that_does_not_start() -> None:
    with dask.config.set(temporary_directory="/proc/none"):
        message = fail(RUN, 1)
    assert message == (
        "No cluster starts on this machine (FileNotFoundError: [Errno 2] No such file or directory:"
        " '/proc/none'): mend that, or name another folder for what workers keep by"
        " DASK_TEMPORARY_DIRECTORY in the environment."
    )
    assert not Path("copy").exists()

"""``vantrel sample --dask``: folders of Parquet files, and going on with those that are not whole."""

import builtins
import hashlib
import importlib
import json
import os
import signal
import socket
import subprocess
import sys
import threading
import time
from collections.abc import Callable
from pathlib import Path
from typing import Any

import pandas as pd
import pytest

from support import command
from support.command import fail
from support.people import fitted_model, people
from support.scaling import contents
from vantrel.config import PersonLabels
from vantrel.sampling import BLOCK_ROWS, sample_people
from vantrel.storage.files import owned
from vantrel.storage.models import save

distributed = pytest.importorskip("distributed", reason="clusters need distributed")
pytest.importorskip("pyarrow", reason="Parquet files need pyarrow")

from vantrel.scale import cluster as module  # noqa: E402 - after the question whether it can be

pytestmark = pytest.mark.usefixtures("folder")

LABELS = PersonLabels(gender="gender", firstname="first", username="user")
ROWS = 2 * BLOCK_ROWS + 1  # three blocks, the last of one row
RUN = f"sample m.json -n {ROWS} --seed 7 --partitions 3 -o people --dask"
FILES = [f"part-00000{number}.parquet" for number in range(3)]


@pytest.fixture(scope="module")
def model_file(tmp_path_factory: pytest.TempPathFactory) -> Path:
    path = tmp_path_factory.mktemp("model") / "m.json"
    save(fitted_model(LABELS), path)
    return path


@pytest.fixture
def on(client: Any) -> str:
    """The option that names the cluster of the tests."""
    return f" --scheduler {client.scheduler.address}"


@pytest.fixture(scope="module")
def whole(cluster: Any, model_file: Path) -> dict[str, bytes]:
    """What an unbroken run writes."""
    people = model_file.with_name("whole")
    line = RUN.replace("m.json", str(model_file)).replace("-o people", f"-o {people}")
    assert succeed(f"{line} --scheduler {cluster.scheduler_address}")
    return contents(people)


def succeed(line: str) -> str:
    """Runs a command that has nothing to warn of, and gives what it prints."""
    result = command.succeed(line)
    assert result.stderr == ""
    return result.stdout


def written() -> dict[str, bytes]:
    return contents(Path("people"))


def test_the_same_rows_as_without_dask(on: str) -> None:
    assert succeed(f"{RUN}{on}") == f"Made {ROWS:,} people with the seed 7; wrote people.\n"
    assert sorted(written()) == ["_made.json", *FILES]
    succeed(f"sample m.json -n {ROWS} --seed 7 -o people.parquet")
    plain = pd.read_parquet("people.parquet")
    pd.testing.assert_frame_equal(pd.read_parquet("people"), plain)
    assert [len(pd.read_parquet(Path("people", name))) for name in FILES] == [50_000, 50_000, 1]


def test_a_cluster_on_this_machine(whole: dict[str, bytes]) -> None:
    succeed(f"{RUN} --workers 1")
    assert written() == whole


def test_the_record_tells_how_it_was_made(whole: dict[str, bytes]) -> None:
    record = json.loads(whole["_made.json"])
    assert (record["rows"], record["seed"], record["model"]) == (ROWS, 7, "m.json")
    assert record["options"] == {
        "unique": [],
        "block_rows": BLOCK_ROWS,
        "exact": False,
        "partitions": 3,
    }


def test_no_machine_is_started_where_the_folder_would_be_in_none(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    monkeypatch.setattr("vantrel.scale.cluster.LocalCluster", None)
    assert fail("sample m.json -n 10 -o no/people --dask", 1) == (
        "no/people: folder 'no' does not exist."
    )


def test_the_folder_may_be_there_if_it_is_empty(on: str, whole: dict[str, bytes]) -> None:
    Path("people").mkdir()
    succeed(f"{RUN}{on}")
    assert written() == whole


def test_a_drawn_seed_is_told_and_kept(on: str) -> None:
    told = succeed(f"sample m.json -n 10 -o people --dask{on}")
    seed = json.loads(written()["_made.json"])["seed"]
    assert told == f"Made 10 people with the seed {seed}; wrote people.\n"
    before = written()
    Path("people", FILES[0]).unlink()
    succeed(f"sample m.json -n 10 -o people --dask --resume{on}")
    assert written() == before


def test_no_people(on: str) -> None:
    succeed(f"sample m.json -n 0 -o people --dask{on}")
    table = pd.read_parquet("people")
    assert table.shape == (0, 3)
    assert list(table) == ["gender", "first", "user"]


def test_unique_over_all_files(on: str) -> None:
    succeed(f"{RUN} --unique username{on}")
    assert pd.read_parquet("people")["user"].is_unique


def stop(keep: str, whole: dict[str, bytes]) -> None:
    """Leaves what a run that was killed leaves behind: one file that is whole, one that is not."""
    Path("people").mkdir()
    Path("people", "_making.json").write_bytes(whole["_made.json"])
    Path("people", keep).write_bytes(whole[keep])
    Path("people", f".{FILES[2]}.0a1b2c3d.tmp").write_bytes(whole[FILES[2]][:100])


@pytest.mark.parametrize("options", ["", " --seed 7", " --seed 7 --partitions 3"])
def test_resuming_makes_what_is_missing(on: str, whole: dict[str, bytes], options: str) -> None:
    stop(FILES[1], whole)
    os.utime(Path("people", FILES[1]), (1, 1))
    succeed(f"sample m.json -n {ROWS} -o people --dask --resume{on}{options}")
    assert written() == whole
    assert Path("people", FILES[1]).stat().st_mtime == 1


def test_resuming_a_run_that_is_finished_makes_nothing(
    whole: dict[str, bytes], monkeypatch: pytest.MonkeyPatch
) -> None:
    Path("people").mkdir()
    for name, data in whole.items():
        Path("people", name).write_bytes(data)
    monkeypatch.setattr(module, "LocalCluster", None)  # nobody is asked to make anything
    succeed(f"{RUN} --resume")
    assert written() == whole


@pytest.mark.parametrize(
    ("line", "difference"),
    [
        (RUN.replace("--seed 7", "--seed 8"), "seed 7 then and 8 now"),
        (
            RUN.replace(str(ROWS), "70000"),
            "rows 100001 then and 70000 now, partitions 3 then and 2 now",
        ),
        (RUN.replace("--partitions 3", "--partitions 2"), "partitions 3 then and 2 now"),
        (f"{RUN} --unique username", "unique [] then and ['username'] now"),
    ],
)
def test_another_run_is_not_resumed(line: str, difference: str, whole: dict[str, bytes]) -> None:
    stop(FILES[1], whole)
    before = written()
    assert fail(f"{line} --resume", 1) == (
        f"The run in people cannot be resumed, for this is another one: {difference}. Repeat what"
        " it was begun with, or name another folder."
    )
    assert written() == before


def test_a_run_of_another_model_is_not_resumed(whole: dict[str, bytes]) -> None:
    stop(FILES[1], whole)
    then = hashlib.sha256(Path("m.json").read_bytes()).hexdigest()
    save(fitted_model(LABELS, people(13)), "m.json", force=True)
    now = hashlib.sha256(Path("m.json").read_bytes()).hexdigest()
    assert fail(f"{RUN} --resume", 1) == (
        f"The run in people cannot be resumed, for this is another one: model_sha256 {then!r} then"
        f" and {now!r} now. Repeat what it was begun with, or name another folder."
    )


def test_a_run_of_other_versions_is_not_resumed(whole: dict[str, bytes]) -> None:
    stop(FILES[1], whole)
    record = json.loads(whole["_made.json"])
    installed, record["versions"]["Faker"] = record["versions"]["Faker"], "1.0"
    Path("people", "_making.json").write_text(json.dumps(record))
    assert fail(f"{RUN} --resume", 1) == (
        f"The run in people cannot be resumed, for this is another one: Faker '1.0' then and"
        f" {installed!r} now. Repeat what it was begun with, or name another folder."
    )


def test_a_folder_has_one_run_at_a_time(whole: dict[str, bytes]) -> None:
    stop(FILES[1], whole)
    Path("people", ".part-000001.parquet.0.tmp").write_text("of the first run")
    before = written()
    with owned(Path("people")):
        for line in (f"{RUN} --resume", RUN):
            assert fail(line, 1) == (
                "Another run is at work in people: wait until it has ended, or name another folder."
            )
    assert written() == before


@pytest.mark.parametrize("file", ["empty", "of another seed", "of another place", "cut off"])
def test_what_is_no_part_of_the_run_is_made_again(
    file: str, on: str, whole: dict[str, bytes]
) -> None:
    contents = {"empty": b"", "of another place": whole[FILES[0]], "cut off": whole[FILES[1]][:-9]}
    if file == "of another seed":
        succeed(f"{RUN.replace('--seed 7', '--seed 8').replace('-o people', '-o other')}{on}")
        contents[file] = Path("other", FILES[1]).read_bytes()
    stop(FILES[1], whole)
    Path("people", FILES[1]).write_bytes(contents[file])
    succeed(f"{RUN}{on} --resume")
    assert written() == whole


def test_a_folder_in_the_place_of_a_part(on: str, whole: dict[str, bytes]) -> None:
    stop(FILES[1], whole)
    Path("people", FILES[0]).mkdir()
    path = Path("people", FILES[0]).resolve()
    assert fail(f"{RUN}{on} --resume", 1) == f"{path}: Is a directory."


def test_nothing_to_resume() -> None:
    message = "people holds no run to resume: leave --resume out to begin one."
    assert fail(f"{RUN} --resume", 1) == message
    Path("people.made.json").write_text("{}")  # of a file, not of a folder
    assert fail(f"{RUN} --resume", 1) == message
    Path("people").mkdir()
    assert fail(f"{RUN} --resume", 1) == message


USAGE = [
    (
        f"{RUN} --conditions t.csv --separator tab".replace(f"-n {ROWS} ", ""),
        "--dask makes a new folder of Parquet files: leave --conditions, --separator out.",
    ),
    *(
        (line, f"--dask makes a new folder of Parquet files: leave {option} out.")
        for line, option in (
            (f"{RUN} --csv-safe", "--csv-safe"),
            (f"{RUN} --force", "--force"),
            (RUN.replace("-o people", "-o -"), "-o -"),
        )
    ),
    (
        f"{RUN} --workers 2 --scheduler tcp://127.0.0.1:9",
        "A cluster that runs has its own workers: leave --workers out.",
    ),
    *(
        (
            RUN.replace("-o people", f"-o people{end}"),
            f"people{end} is to be a folder of Parquet files: leave out the {end}.",
        )
        for end in (".csv", ".parquet", ".TSV")
    ),
    (RUN.replace("-o people", "-o m.json"), "m.json is there and no folder: name another one."),
    (
        RUN.replace("-o people", "-o full"),
        "Folder full is not empty: add --resume to go on with a run that was stopped, or name"
        " another folder.",
    ),
    (
        RUN.replace(f"-n {ROWS} ", ""),
        "Give either -n, a number of people, or --conditions, a table.",
    ),
    *(
        (
            RUN.replace("--partitions 3", option).replace(" --dask", ""),
            f"Only --dask makes use of {option.split()[0]}: add it.",
        )
        for option in ("--scheduler tcp://127.0.0.1:9", "--workers 2", "--partitions 3", "--resume")
    ),
    (
        RUN.replace("--partitions 3", "--partitions 0"),
        "Invalid value for '--partitions': 0 is not in the range x>=1.",
    ),
    (f"{RUN} --workers 0", "Invalid value for '--workers': 0 is not in the range x>=1."),
]


@pytest.mark.parametrize(("line", "message"), USAGE)
def test_bad_usage(line: str, message: str) -> None:
    Path("full").mkdir()
    Path("full", "file").touch()
    assert fail(line, 2) == message
    assert sorted(path.name for path in Path().iterdir()) == ["full", "m.json"]


def test_no_scheduler_answers(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(module, "_SECONDS_TO_ANSWER", 0.5)
    assert fail(f"{RUN} --scheduler tcp://127.0.0.1:9", 1) == (
        "No scheduler answers at tcp://127.0.0.1:9: start one with 'dask scheduler', or correct the"
        " address."
    )
    assert not Path("people").exists()


def test_without_dask(monkeypatch: pytest.MonkeyPatch) -> None:
    def without(name: str, *rest: Any, **more: Any) -> Any:
        if name.partition(".")[0] in ("dask", "distributed"):
            raise ModuleNotFoundError(f"No module named {name!r}", name=name)
        return genuine(name, *rest, **more)

    genuine: Callable[..., Any] = builtins.__import__
    monkeypatch.delitem(sys.modules, "vantrel.scale.folder")
    monkeypatch.setattr(builtins, "__import__", without)
    assert fail(RUN, 1) == "Work on Dask needs distributed: pip install 'vantrel[dask]'."
    assert not Path("people").exists()


def test_rows_that_cannot_be_made(client: Any, on: str, whole: dict[str, bytes]) -> None:
    def fail_at_one_row(model: Any, n: int, given: Any) -> Any:
        if n == 1:
            raise ZeroDivisionError("nothing to share")
        return importlib.import_module("vantrel.sampling.people").sample_people(model, n, given)

    def set_in_workers(function: Any) -> None:
        client.run(
            lambda: setattr(
                importlib.import_module("vantrel.sampling.makers"), "sample_people", function
            )
        )

    set_in_workers(fail_at_one_row)
    try:
        message = fail(f"{RUN}{on}", 1)
    finally:
        set_in_workers(sample_people)
    assert message == (
        "Rows 100,000 to 100,000 (block 2 of the seed 7) could not be made: ZeroDivisionError:"
        " nothing to share"
    )
    succeed(f"{RUN} --resume{on}")
    assert written() == whole


def on_first_file(action: Callable[[], None]) -> threading.Thread:
    """Does something as soon as a first file is whole."""

    def wait() -> None:
        while not list(Path("people").glob("part-*.parquet")):
            time.sleep(0.005)
        action()

    thread = threading.Thread(target=wait, daemon=True)
    thread.start()
    return thread


def test_workers_that_die_again_and_again(cluster: Any, client: Any, on: str) -> None:
    line = RUN.replace(str(ROWS), str(20 * BLOCK_ROWS)).replace("--partitions 3", "--partitions 20")
    pid, *_ = client.run(os.getpid).values()
    allowed, cluster.scheduler.allowed_failures = cluster.scheduler.allowed_failures, 0
    try:
        on_first_file(lambda: os.kill(pid, signal.SIGKILL))
        assert fail(f"{line}{on}", 1) == (
            "Workers died again and again, for want of memory perhaps. What is finished is kept:"
            " repeat the call with --resume and fewer --workers."
        )
    finally:
        cluster.scheduler.allowed_failures = allowed
    succeed(f"{line} --resume{on}")
    assert len(list(Path("people").glob("part-*.parquet"))) == 20
    assert not list(Path("people").glob(".*"))


def test_a_scheduler_that_is_lost() -> None:
    line = RUN.replace(str(ROWS), str(20 * BLOCK_ROWS)).replace("--partitions 3", "--partitions 20")
    dask = Path(sys.executable).with_name("dask")
    with socket.create_server(("127.0.0.1", 0)) as free:
        port = free.getsockname()[1]
    address = f"tcp://127.0.0.1:{port}"
    calls = (
        ["scheduler", "--host", "127.0.0.1", "--port", str(port), "--no-dashboard", "--no-show"],
        ["worker", address, "--nthreads", "1", "--no-dashboard", "--no-nanny"],
    )
    scheduler, worker = (
        subprocess.Popen([dask, *call], stderr=subprocess.DEVNULL) for call in calls
    )
    try:
        on_first_file(scheduler.kill)
        assert fail(f"{line} --scheduler {address}", 1) == (
            "The scheduler was lost. What is finished is kept: repeat the call with --resume."
        )
    finally:
        for process in (scheduler, worker):
            process.kill()
            process.wait()
    assert 0 < len(list(Path("people").glob("part-*.parquet"))) < 20


def test_files_that_this_machine_does_not_see(on: str, monkeypatch: pytest.MonkeyPatch) -> None:
    elsewhere = Path("elsewhere").resolve()
    elsewhere.mkdir()
    monkeypatch.setattr(Path, "resolve", lambda path: elsewhere)
    assert fail(f"{RUN}{on}", 1) == (
        "3 files were written where people is another folder, the first of them"
        " part-000000.parquet: name a folder that all machines share, under the same path."
    )
    assert sorted(written()) == ["_making.json"]

"""``vantrel sample``: the rows, the seed, the record, what is refused."""

import hashlib
import json
import os
import re
import threading
from importlib.util import find_spec
from pathlib import Path
from typing import Any

import pandas as pd
import pytest

from support.command import contents_here, fail, made, run, shell, succeed
from vantrel.sampling import BLOCK_ROWS, Plan, sample_blocks
from vantrel.sampling.record import read_record
from vantrel.storage.models import loads
from vantrel.tables import write_table
from vantrel.versions import versions

SECONDS = 60

with_pyarrow = pytest.mark.skipif(find_spec("pyarrow") is None, reason="Parquet needs pyarrow")


# --- from the shell


def test_the_shell_with_options_of_a_table_of_so_many_rows() -> None:
    ran = shell(
        "sample m.json -n 9 --seed 7 --unique username,email --strict --csv-safe -o out.csv"
    )
    assert (ran.returncode, ran.stderr) == (0, "")
    assert ran.stdout == "Made 9 people with the seed 7; wrote out.csv.\n"
    succeed("sample m.json -n 9 --seed 7 --unique username,email --strict --csv-safe -o here.csv")
    assert Path("out.csv").read_bytes() == Path("here.csv").read_bytes()


def test_the_shell_with_conditions_over_a_file_that_is_tcontents_here() -> None:
    Path("c.csv").write_text("land\nDE\nGB\n")
    Path("out.csv").write_text("old")
    ran = shell("sample places.json --conditions c.csv --force -o out.csv")
    assert (ran.returncode, ran.stderr) == (0, "")
    assert made()["land"].tolist() == ["DE", "GB"]


def test_the_shell_with_standard_output() -> None:
    ran = shell("sample m.json -n 2 -o -")
    assert ran.returncode == 0
    assert re.fullmatch(r"vantrel: note: the seed is \d+\n", ran.stderr)
    assert len(ran.stdout.splitlines()) == 3


@pytest.mark.parametrize(
    ("line", "status", "message"),
    [
        (
            "sample no.json -n 2 -o out.csv",
            1,
            "Model file no.json cannot be read: No such file or directory.",
        ),
        (
            "sample m.json -n 2 --unique title -o out.csv",
            2,
            "'title' cannot be made unique: only email and username can.",
        ),
    ],
)
def test_the_shell_is_told_whose_fault_it_is(line: str, status: int, message: str) -> None:
    ran = shell(line)
    assert (ran.returncode, ran.stdout) == (status, "")
    assert ran.stderr == f"vantrel: error: {message}\n"


# --- rows and seeds


def test_the_rows_are_those_of_the_blocks(contents: dict[str, str]) -> None:
    rows = BLOCK_ROWS + 10
    succeed(f"sample sex.json -n {rows} --seed 7 -o out.csv")
    write_table(sample_blocks(loads(contents["sex.json"]), Plan(rows, 7)), Path("blocks.csv"))
    assert Path("out.csv").read_bytes() == Path("blocks.csv").read_bytes()


@with_pyarrow
def test_csv_parquet_and_standard_output_have_the_same_rows() -> None:
    succeed("sample places.json -n 50 --seed 7 -o out.csv")
    succeed("sample places.json -n 50 --seed 7 -o out.parquet")
    pd.testing.assert_frame_equal(made("out.parquet"), made("out.csv"))
    printed = succeed("sample places.json -n 50 --seed 7 -o -").stdout
    assert printed == Path("out.csv").read_text(encoding="utf-8")


@pytest.mark.skipif(find_spec("pyarrow") is not None, reason="tells what is said without pyarrow")
def test_parquet_needs_pyarrow() -> None:
    assert fail("sample m.json -n 5 -o out.parquet", 1) == (
        "To write out.parquet needs pyarrow: pip install 'vantrel[parquet]'."
    )


@pytest.mark.parametrize("seed", ["0", str(2**32), str(10**40)])
def test_any_seed_makes_rows_of_its_own(seed: str) -> None:
    succeed(f"sample m.json -n 5 --seed {seed} -o out.csv")
    succeed("sample m.json -n 5 --seed 7 -o other.csv")
    assert Path("out.csv").read_bytes() != Path("other.csv").read_bytes()
    record = read_record(Path("out.csv"))
    assert record is not None
    assert record.seed == int(seed)


def test_a_drawn_seed_is_told_and_makes_the_table_again() -> None:
    told = succeed("sample m.json -n 5 -o out.csv").stdout
    found = re.fullmatch(r"Made 5 people with the seed (\d+); wrote out\.csv\.\n", told)
    assert found
    succeed(f"sample m.json -n 5 --seed {found[1]} -o again.csv")
    assert Path("again.csv").read_bytes() == Path("out.csv").read_bytes()


def test_a_drawn_seed_is_told_beside_standard_output() -> None:
    printed = succeed("sample m.json -n 5 -o -")
    found = re.fullmatch(r"vantrel: note: the seed is (\d+)\n", printed.stderr)
    assert found
    assert succeed(f"sample m.json -n 5 --seed {found[1]} -o -").stdout == printed.stdout


def test_one_person_is_told_as_one() -> None:
    told = succeed("sample m.json -n 1 --seed 7 -o out.csv").stdout
    assert told == "Made 1 person with the seed 7; wrote out.csv.\n"


# --- the record


def test_the_record_tells_how_the_table_was_made(contents: dict[str, str]) -> None:
    Path("c.csv").write_text("sex\nf\nm\n")
    succeed("sample m.json --conditions c.csv --seed 7 --unique email --csv-safe -o out.csv")
    record = json.loads(Path("out.csv.made.json").read_text())
    assert record.pop("expected")["shares"] == {"gender": {"f": 0.5, "m": 0.5}}
    assert record == {
        "format": "vantrel-sample",
        "schema_version": 2,
        "model": "m.json",
        "model_sha256": hashlib.sha256(contents["m.json"].encode()).hexdigest(),
        "rows": 2,
        "seed": 7,
        "columns": {"gender": "sex", "fullname": "name", "email": "mail", "username": "user"},
        "options": {
            "unique": ["email"],
            "block_rows": BLOCK_ROWS,
            "exact": False,
            "csv_safe": True,
            "conditions": "c.csv",
            "conditions_sha256": hashlib.sha256(b"sex\nf\nm\n").hexdigest(),
        },
        "versions": versions(),
        "file_sha256": hashlib.sha256(Path("out.csv").read_bytes()).hexdigest(),
    }


def test_a_model_from_a_pipe_is_recorded_by_what_was_read(contents: dict[str, str]) -> None:
    os.mkfifo("pipe.json")
    writer = threading.Thread(
        target=lambda: Path("pipe.json").write_text(contents["m.json"]), daemon=True
    )
    writer.start()
    succeed("sample pipe.json -n 2 -o out.csv")
    writer.join(SECONDS)
    record = read_record(Path("out.csv"))
    assert record is not None
    assert record.model_sha256 == hashlib.sha256(contents["m.json"].encode()).hexdigest()


def test_standard_output_has_no_record() -> None:
    before = contents_here()
    Path("-.made.json").write_text("a note")
    succeed("sample m.json -n 2 -o -")
    assert contents_here() == {**before, "-.made.json": b"a note"}


def test_a_pipe_is_written_into_and_has_no_record() -> None:
    os.mkfifo("pipe")
    Path("pipe.made.json").write_text("a note")
    before, read = contents_here(), []
    reader = threading.Thread(target=lambda: read.append(Path("pipe").read_text()), daemon=True)
    reader.start()
    succeed("sample m.json -n 2 --seed 7 -o pipe")
    reader.join(SECONDS)
    assert read == [succeed("sample m.json -n 2 --seed 7 -o -").stdout]
    assert contents_here() == before


@pytest.mark.parametrize("force", ["", " --force"])
def test_a_file_in_the_place_of_the_record_is_not_lost(force: str) -> None:
    Path("out.csv.made.json").write_text("a note")
    assert fail(f"sample m.json -n 2 -o out.csv{force}", 1) == (
        "out.csv.made.json is no record of a sample that this version knows (JSON is malformed:"
        " invalid character (byte 0)): move it away."
    )


def test_a_new_table_has_a_new_record() -> None:
    succeed("sample m.json -n 2 --seed 7 -o out.csv")
    succeed("sample m.json -n 3 --seed 8 -o out.csv --force")
    record = read_record(Path("out.csv"))
    assert record is not None
    assert (record.rows, record.seed) == (3, 8)


def test_no_record_is_left_that_tells_of_another_table(monkeypatch: pytest.MonkeyPatch) -> None:
    succeed("sample m.json -n 2 --seed 7 -o out.csv")

    def fail_to_write(*_: Any) -> None:
        raise OSError(28, "No space left on device", "out.csv.made.json")

    monkeypatch.setattr("vantrel.sampling.to_file.write_record", fail_to_write)
    result = run("sample m.json -n 3 --seed 8 -o out.csv --force")
    assert result.exit_code == 1
    assert result.stderr == "vantrel: error: out.csv.made.json: No space left on device.\n"
    assert len(made()) == 3
    assert not Path("out.csv.made.json").exists()


# --- what is there already


def test_a_table_that_is_there_is_overwritten_only_when_forced() -> None:
    Path("out.csv").write_text("old")
    assert fail("sample m.json -n 2 -o out.csv", 2) == (
        "out.csv is there already: add --force to overwrite it."
    )
    succeed("sample m.json -n 2 -o out.csv --force")
    assert len(made()) == 2


@pytest.mark.parametrize("force", ["", " --force"])
@pytest.mark.parametrize("output", ["places.json", "./places.json", "c.csv", "link.csv"])
def test_what_is_read_is_never_overwritten(output: str, force: str) -> None:
    Path("c.csv").write_text("land\nDE\n")
    Path("link.csv").symlink_to("c.csv")
    assert fail(f"sample places.json --conditions c.csv -o {output}{force}", 2) == (
        f"{Path(output)} is the file to read: write to another one."
    )


@pytest.mark.parametrize("force", ["", " --force"])
def test_a_folder_is_no_output(force: str) -> None:
    Path("people").mkdir()
    assert fail(f"sample m.json -n 2 -o people{force}", 2) == (
        "people is a folder: name a file in it."
    )


def test_an_output_in_a_folder_that_is_not_tcontents_here() -> None:
    assert fail("sample m.json -n 2 -o no/out.csv", 1) == (
        "no/out.csv: folder 'no' does not exist."
    )


# --- usage


@pytest.mark.parametrize(
    ("line", "message"),
    [
        ("-o out.csv", "Give either -n, a number of people, or --conditions, a table."),
        (
            "-n 2 --conditions c.csv -o out.csv",
            "Give either -n, a number of people, or --conditions, a table.",
        ),
        (
            "-n 2 --unique ,email -o out.csv",
            "'' cannot be made unique: only email and username can.",
        ),
        (
            "-n 2 --csv-safe -o out.PQ",
            "--csv-safe is for CSV, and out.PQ is to be Parquet: leave it out.",
        ),
        (
            "-n 2 --csv-safe -o out.jsonl.gz",
            "--csv-safe is for CSV, and out.jsonl.gz is to be JSON Lines: leave it out.",
        ),
        ("-n 2 --seed 1.5 -o x", "Invalid value for '--seed': '1.5' is not a valid integer range."),
        ("-n 1e6 -o x", "Invalid value for '-n': '1e6' is not a valid integer range."),
        *(
            (
                f"-n 2 -o x {option}",
                f"Only --dask makes use of {option.split()[0]}: add it.",
            )
            for option in ("--scheduler tcp://x:1", "--workers 2", "--partitions 2", "--resume")
        ),
    ],
)
def test_options_that_do_not_go_together(line: str, message: str) -> None:
    assert fail(f"sample m.json {line}", 2) == message


# --- versions


def test_another_faker_is_warned_of_in_one_plain_line(contents: dict[str, str]) -> None:
    form = json.loads(contents["m.json"])
    form["versions"]["Faker"] = "1.2.3"
    Path("m.json").write_text(json.dumps(form))
    result = succeed("sample m.json -n 2 --seed 7 -o out.csv")
    assert result.stderr == (
        "vantrel: warning: The same seed may give other rows than where the model was fitted: Faker"
        f" is {versions()['Faker']} here and was 1.2.3: names and e-mail addresses may differ. For"
        " the same rows install what was there.\n"
    )
    assert len(made()) == 2


def test_a_model_file_without_versions_is_sampled_quietly(contents: dict[str, str]) -> None:
    form = json.loads(contents["m.json"])
    del form["versions"]
    Path("m.json").write_text(json.dumps(form))
    assert succeed("sample m.json -n 2 -o out.csv").stderr == ""


def test_a_file_that_came_meanwhile_is_not_lost(monkeypatch: pytest.MonkeyPatch) -> None:
    def another_run(*arguments: Any, **named: Any) -> Any:
        Path("out.csv").write_text("of another run")
        return sample_blocks(*arguments, **named)

    monkeypatch.setattr("vantrel.sampling.to_file.sample_blocks", another_run)
    result = run("sample m.json -n 3 --seed 7 -o out.csv")
    assert (result.exit_code, result.stdout) == (2, "")
    assert result.stderr == (
        "vantrel: error: out.csv is there already: add --force to overwrite it.\n"
    )
    assert Path("out.csv").read_text() == "of another run"
    assert not {".out.csv.0.tmp", "out.csv.made.json"} & contents_here().keys()


def test_what_a_killed_run_has_left_is_removed_and_told() -> None:
    Path(".out.csv.0.tmp").write_bytes(b"x" * 1000)
    result = succeed("sample m.json -n 3 --seed 7 -o out.csv")
    assert result.stderr.splitlines()[0] == (
        "vantrel: warning: Removed 1,000 bytes that a killed run had left beside out.csv."
    )
    assert not Path(".out.csv.0.tmp").exists()


def test_long_names() -> None:
    name = f"{'n' * 236}.csv"
    succeed(f"sample m.json -n 3 --seed 7 -o {name}")
    assert contents_here().keys() >= {name, f"{name}.made.json"}
    assert fail(f"sample m.json -n 3 -o {'n' * 251}", 1) == (
        f"{'n' * 251}.made.json cannot be read: File name too long."
    )

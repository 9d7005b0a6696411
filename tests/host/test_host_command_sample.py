"""``vantrel sample``: what each option does, and what is left where something goes wrong."""

import hashlib
import json
import os
import pty
import re
import resource
import signal
import subprocess
import sys
import termios
import threading
import time
from collections.abc import Callable, Iterator
from concurrent.futures import ThreadPoolExecutor
from importlib.util import find_spec
from pathlib import Path
from typing import Any

import pandas as pd
import pytest
from click.testing import CliRunner, Result

from support.people import fitted_model
from vantrel.command import main
from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.model_file import dumps, loads
from vantrel.record import read_record
from vantrel.sampling import BLOCK_ROWS, Plan, sample_blocks
from vantrel.tables import read_table, write_table
from vantrel.versions import versions

COMMAND = [sys.executable, "-c", "from vantrel.command import main; main(prog_name='vantrel')"]
SECONDS = 60

with_pyarrow = pytest.mark.skipif(find_spec("pyarrow") is None, reason="Parquet needs pyarrow")

PEOPLE = pd.DataFrame({"sex": ["f", "m", "f", "m"], "land": ["GB", "GB", "DE", "GB"]})
LABELS = PersonLabels(gender="sex", fullname="name", username="user", email="mail")
PLACES = PersonLabels(gender="sex", fullname="name", country="land")


@pytest.fixture(scope="module")
def contents() -> dict[str, str]:
    """Model files: of everything that can be unique, of countries, of genders alone."""
    return {
        "m.json": dumps(fitted_model(LABELS, PEOPLE)),
        "places.json": dumps(fitted_model(PLACES, PEOPLE)),
        "sex.json": dumps(fitted_model(PersonLabels(gender="sex"), PEOPLE)),
    }


@pytest.fixture(autouse=True)
def folder(
    tmp_path: Path, contents: dict[str, str], monkeypatch: pytest.MonkeyPatch
) -> Iterator[Path]:
    monkeypatch.chdir(tmp_path)
    for name, content in contents.items():
        Path(name).write_text(content, encoding="utf-8")
    yield tmp_path
    assert not list(tmp_path.glob(".*")), "a temporary file is left"


def run(line: str) -> Result:
    return CliRunner().invoke(main, line.split(), prog_name="vantrel")


def succeed(line: str) -> Result:
    result = run(line)
    assert result.exit_code == 0, result.output
    return result


def here() -> dict[str, bytes]:
    """All files with what they hold."""
    files = (path for path in Path().iterdir() if path.is_file())
    return {path.name: path.read_bytes() for path in files}


def fail(line: str, status: int) -> str:
    """Runs a command that must fail in one line and change no file, and gives that line."""
    before = here()
    result = run(line)
    assert result.exit_code == status, result.output
    assert result.stdout == ""
    assert here() == before
    (message,) = result.stderr.splitlines()
    return message.removeprefix("vantrel: error: ")


def shell(line: str, **settings: Any) -> subprocess.CompletedProcess[str]:
    """Runs the command as a process of its own."""
    return subprocess.run(
        [*COMMAND, *line.split()], capture_output=True, text=True, timeout=SECONDS, **settings
    )


def made(path: str = "out.csv") -> pd.DataFrame:
    return read_table(Path(path))


# --- from the shell


def test_the_shell_with_options_of_a_table_of_so_many_rows() -> None:
    ran = shell(
        "sample m.json -n 9 --seed 7 --unique username,email --strict --csv-safe -o out.csv"
    )
    assert (ran.returncode, ran.stderr) == (0, "")
    assert ran.stdout == "Made 9 people with the seed 7; wrote out.csv.\n"
    succeed("sample m.json -n 9 --seed 7 --unique username,email --strict --csv-safe -o here.csv")
    assert Path("out.csv").read_bytes() == Path("here.csv").read_bytes()


def test_the_shell_with_conditions_over_a_file_that_is_there() -> None:
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
            "Invalid value for '--unique': 'title' cannot be made unique: only username and email"
            " can.",
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
        "Parquet tables such as out.parquet need pyarrow: pip install 'vantrel[parquet]'."
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


# --- the record


def test_the_record_tells_how_the_table_was_made(contents: dict[str, str]) -> None:
    Path("c.csv").write_text("sex\nf\nm\n")
    succeed("sample m.json --conditions c.csv --seed 7 --unique email -o out.csv")
    assert json.loads(Path("out.csv.made.json").read_text()) == {
        "format": "vantrel-sample",
        "schema_version": 1,
        "model": "m.json",
        "model_sha256": hashlib.sha256(contents["m.json"].encode()).hexdigest(),
        "rows": 2,
        "seed": 7,
        "columns": {"gender": "sex", "fullname": "name", "email": "mail", "username": "user"},
        "options": {"unique": ["email"], "block_rows": BLOCK_ROWS, "conditions": "c.csv"},
        "versions": versions(),
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
    before = here()
    Path("-.made.json").write_text("a note")
    succeed("sample m.json -n 2 -o -")
    assert here() == {**before, "-.made.json": b"a note"}


def test_a_pipe_is_written_into_and_has_no_record() -> None:
    os.mkfifo("pipe")
    Path("pipe.made.json").write_text("a note")
    before, read = here(), []
    reader = threading.Thread(target=lambda: read.append(Path("pipe").read_text()), daemon=True)
    reader.start()
    succeed("sample m.json -n 2 --seed 7 -o pipe")
    reader.join(SECONDS)
    assert read == [succeed("sample m.json -n 2 --seed 7 -o -").stdout]
    assert here() == before


@pytest.mark.parametrize("force", ["", " --force"])
def test_a_file_in_the_place_of_the_record_is_not_lost(force: str) -> None:
    Path("out.csv.made.json").write_text("a note")
    assert fail(f"sample m.json -n 2 -o out.csv{force}", 1) == (
        "out.csv.made.json is no record of a sample: no JSON. Move it away."
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

    monkeypatch.setattr("vantrel.command.sample_here.write_record", fail_to_write)
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


def test_an_output_in_a_folder_that_is_not_there() -> None:
    assert fail("sample m.json -n 2 -o no/out.csv", 1) == (
        "no/out.csv: folder 'no' does not exist."
    )


# --- conditions, unique columns, strictness, spreadsheets


def test_conditions_are_met_row_by_row() -> None:
    Path("c.csv").write_text("id,land,sex\n1,DE,female\n2,FR,m\n3,Japan,f\n")
    succeed("sample places.json --conditions c.csv -o out.csv")
    out = made()
    assert out["land"].tolist() == ["DE", "FR", "Japan"]
    assert out["sex"].tolist() == ["f", "m", "f"]
    assert [name.isascii() for name in out["name"]][2] is False
    assert "id" not in out


@with_pyarrow
def test_conditions_in_parquet() -> None:
    write_table([pd.DataFrame({"sex": ["m", "f"]})], Path("c.parquet"))
    succeed("sample m.json --conditions c.parquet -o out.csv")
    assert made()["sex"].tolist() == ["m", "f"]


def test_new_countries_without_names_of_their_own_are_told_of_in_a_plain_line() -> None:
    Path("c.csv").write_text("land\nNA\nGB\n")
    result = succeed("sample places.json --conditions c.csv -o out.csv")
    assert result.stderr == (
        "vantrel: warning: Faker has no person names of its own for these; they get those of the"
        " locale in brackets: NA (en_GB).\n"
    )


def test_strict_refuses_them_in_one_line() -> None:
    Path("c.csv").write_text("land\nNA\nGB\n")
    assert fail("sample places.json --conditions c.csv --strict -o out.csv", 1) == (
        "Faker has no person names of its own for 'NA': leave --strict out to give these people"
        " names from elsewhere."
    )


@pytest.mark.parametrize(
    ("content", "message"),
    [
        (
            "sex,land\nm,GB\nq,Narnia\n,DE\n",
            "The conditions have values that the model cannot place: column 'sex' has 'q' in row 2;"
            " column 'sex' has no value in row 3; column 'land' has 'Narnia' in row 2. Correct them"
            " or leave the rows out.",
        ),
        ("x\n1\n", "The conditions need a column 'sex' or 'land', as the model has."),
        ("sex\n", "Table c.csv has a header but no rows: give it at least one."),
        (None, "Table c.csv cannot be read: No such file or directory."),
    ],
)
def test_conditions_that_cannot_be_met(content: str | None, message: str) -> None:
    if content is not None:
        Path("c.csv").write_text(content)
    assert fail("sample places.json --conditions c.csv -o out.csv", 1) == message


def test_unique_columns() -> None:
    for unique in ("username", "username,email", "username,username"):
        succeed(f"sample m.json -n 40 --seed 7 --unique {unique} -o {unique}.csv")
    succeed("sample m.json -n 40 --seed 7 -o out.csv")
    usual, one, both = (made(f"{name}.csv") for name in ("out", "username", "username,email"))
    assert one["user"].str.slice(stop=-6).tolist() == usual["user"].tolist()
    assert one["mail"].tolist() == usual["mail"].tolist()
    assert both["user"].tolist() == one["user"].tolist()
    assert (both["mail"].str.len() == usual["mail"].str.len() + 6).all()
    assert made("username,username.csv").equals(one)


def test_unique_attributes_may_have_spaces_between() -> None:
    line = ["sample", "m.json", "-n", "3", "--seed", "7", "-o", "-", "--unique"]
    apart, together = (
        CliRunner().invoke(main, [*line, attributes]).stdout
        for attributes in ("username, email", "username,email")
    )
    assert apart == together != ""


@pytest.mark.parametrize(
    ("line", "message"),
    [
        (
            "sample sex.json -n 5 --unique email -o out.csv",
            "'email' cannot be made unique: the model does not make it. Fit it with --generate"
            " email.",
        ),
        (
            f"sample m.json -n {36**6 + 1} --unique username -o out.csv",
            "Column 'user' runs out of unique values at 2,176,782,336 rows: ask for fewer.",
        ),
    ],
)
def test_columns_that_cannot_be_unique(line: str, message: str) -> None:
    assert fail(line, 1) == message


def test_cells_that_a_spreadsheet_would_run_are_guarded() -> None:
    labels = PersonLabels(gender="sex", fullname="@name", home_number="phone")
    config = PersonModelConfig(home_number_format="+44xxx")
    Path("plus.json").write_text(dumps(fitted_model(labels, PEOPLE, config)))
    succeed("sample plus.json -n 5 --seed 7 --csv-safe -o out.csv")
    succeed("sample plus.json -n 5 --seed 7 -o usual.csv")
    usual, out = made("usual.csv"), made()
    assert list(out) == ["sex", "'@name", "phone"]
    assert out["phone"].tolist() == [f"'{number}" for number in usual["phone"]]
    assert out["'@name"].tolist() == usual["@name"].tolist()
    assert all(line.count('"') == 6 for line in Path("out.csv").read_text().splitlines())
    printed = succeed("sample plus.json -n 5 --seed 7 --csv-safe -o -").stdout
    assert printed == Path("out.csv").read_text()


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
            "Invalid value for '--unique': '' cannot be made unique: only username and email can.",
        ),
        (
            "-n 2 --csv-safe -o out.PQ",
            "--csv-safe is for CSV, and out.PQ is to be Parquet: leave it out.",
        ),
        ("-n 2 --seed 1.5 -o x", "Invalid value for '--seed': '1.5' is not a valid integer range."),
        ("-n 1e6 -o x", "Invalid value for '-n': '1e6' is not a valid integer range."),
        *(
            (
                f"-n 2 -o x {option}",
                "--scheduler, --workers, --partitions and --resume go with --dask only: add it.",
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


# --- interrupts, full disks, terminals


def test_one_person_is_told_as_one() -> None:
    told = succeed("sample m.json -n 1 --seed 7 -o out.csv").stdout
    assert told == "Made 1 person with the seed 7; wrote out.csv.\n"


def test_an_interrupted_run_leaves_what_was_there(monkeypatch: pytest.MonkeyPatch) -> None:
    succeed("sample m.json -n 2 -o out.csv")

    def interrupted(*_: Any) -> Iterator[pd.DataFrame]:
        yield pd.DataFrame({"sex": ["f"]})
        raise KeyboardInterrupt

    monkeypatch.setattr("vantrel.command.sample_here.sample_blocks", interrupted)
    before = here()
    result = run("sample m.json -n 9 -o out.csv --force")
    assert (result.exit_code, result.stdout) == (130, "")
    assert result.stderr == "\nvantrel: interrupted\n"  # the terminal's ^C has a line of its own
    assert here() == before


@pytest.mark.parametrize(
    ("number", "status", "told"),
    [
        (signal.SIGINT, 130, "\nvantrel: interrupted\n"),
        (signal.SIGTERM, 143, ""),
        (signal.SIGHUP, 129, ""),
    ],
)
def test_a_signal_that_ends_the_command_leaves_nothing(
    number: signal.Signals, status: int, told: str, tmp_path: Path
) -> None:
    before = here()
    process = subprocess.Popen(
        [*COMMAND, *"sample m.json -n 1000000000 -o out.csv".split()],
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        text=True,
    )
    try:
        wait_for(lambda: any(tmp_path.glob(".out.csv.*")) or process.poll() is not None)
        process.send_signal(number)
        out, error = process.communicate(timeout=SECONDS)
    finally:
        process.kill()
        process.wait()
    assert (process.returncode, out, error) == (status, "", told)
    assert here() == before


def test_a_signal_that_is_ignored_stays_so(monkeypatch: pytest.MonkeyPatch) -> None:
    def hang_up(*_: Any) -> Iterator[pd.DataFrame]:
        signal.raise_signal(signal.SIGHUP)
        yield pd.DataFrame({"sex": ["f"]})

    monkeypatch.setattr("vantrel.command.sample_here.sample_blocks", hang_up)
    usual = signal.signal(signal.SIGHUP, signal.SIG_IGN)
    try:
        succeed("sample m.json -n 1 -o out.csv")
    finally:
        signal.signal(signal.SIGHUP, usual)


def test_signals_are_as_they_were_after_a_command() -> None:
    numbers = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)
    before = [signal.getsignal(number) for number in numbers]
    succeed("sample m.json -n 2 -o out.csv")
    assert [signal.getsignal(number) for number in numbers] == before


def test_the_command_runs_in_any_thread() -> None:
    with ThreadPoolExecutor(1) as pool:
        pool.submit(succeed, "sample m.json -n 2 -o out.csv").result()


def wait_for(happened: Callable[[], bool]) -> None:
    for _ in range(SECONDS * 100):
        if happened():
            return
        time.sleep(0.01)
    raise AssertionError(f"nothing happened in {SECONDS} seconds")


def files_end_early() -> None:
    """Files take so few bytes as if the disk were full."""
    resource.setrlimit(resource.RLIMIT_FSIZE, (2_000, resource.RLIM_INFINITY))


@pytest.mark.parametrize("name", ["out.csv", pytest.param("out.parquet", marks=with_pyarrow)])
def test_a_file_that_cannot_be_written_to_the_end(name: str) -> None:
    before = here()
    ran = shell(f"sample m.json -n 2000 -o {name}", preexec_fn=files_end_early)
    assert (ran.returncode, ran.stdout) == (1, "")
    assert ran.stderr == f"vantrel: error: {name}: File too large.\n"
    assert here() == before


def test_standard_output_that_cannot_be_written_to_the_end() -> None:
    with Path("out.csv").open("w", encoding="utf-8") as out:
        ran = subprocess.run(
            [*COMMAND, *"sample m.json -n 2000 --seed 7 -o -".split()],
            stdout=out,
            stderr=subprocess.PIPE,
            text=True,
            timeout=SECONDS,
            preexec_fn=files_end_early,
        )
    assert ran.returncode == 1
    assert ran.stderr == "vantrel: error: File too large.\n"


def test_progress_is_shown_on_a_terminal_only() -> None:
    terminal, stderr = pty.openpty()
    os.set_blocking(terminal, False)
    termios.tcsetwinsize(stderr, (24, 80))
    try:
        subprocess.run(
            [*COMMAND, *"sample sex.json -n 60000 --seed 7 -o out.csv".split()],
            stdout=subprocess.DEVNULL,
            stderr=stderr,
            check=True,
            timeout=SECONDS,
        )
        shown = os.read(terminal, 100_000).decode()
    finally:
        os.close(stderr)
        os.close(terminal)
    assert "/60.0k" in shown
    assert "people/s]" in shown
    assert re.sub(r"[^\r]*\r", "", shown).strip() == ""  # nothing of it stays on the screen
    assert succeed("sample sex.json -n 60000 --seed 7 -o again.csv").stderr == ""

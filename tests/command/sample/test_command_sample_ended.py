"""``vantrel sample`` on terminals, ended by signals and full disks: what is left."""

import os
import pty
import re
import resource
import signal
import subprocess
import termios
import time
from collections.abc import Callable, Iterator
from concurrent.futures import ThreadPoolExecutor
from importlib.util import find_spec
from pathlib import Path
from typing import Any

import pandas as pd
import pytest

from support.command import command_line, contents_here, run, succeed

SECONDS = 60

with_pyarrow = pytest.mark.skipif(find_spec("pyarrow") is None, reason="Parquet needs pyarrow")


def test_an_interrupted_run_leaves_what_was_there(monkeypatch: pytest.MonkeyPatch) -> None:
    succeed("sample m.json -n 2 -o out.csv")

    def interrupted(*_: Any) -> Iterator[pd.DataFrame]:
        yield pd.DataFrame({"sex": ["f"]})
        raise KeyboardInterrupt

    monkeypatch.setattr("vantrel.sampling.to_file.sample_blocks", interrupted)
    before = contents_here()
    result = run("sample m.json -n 9 -o out.csv --force")
    assert (result.exit_code, result.stdout) == (130, "")
    assert result.stderr == "\nvantrel: interrupted\n"  # the terminal's ^C has a line of its own
    assert contents_here() == before


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
    before = contents_here()
    process = subprocess.Popen(
        command_line("sample m.json -n 1000000000 -o out.csv"),
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
    assert contents_here() == before


def test_a_signal_that_is_ignored_stays_so(monkeypatch: pytest.MonkeyPatch) -> None:
    def hang_up(*_: Any) -> Iterator[pd.DataFrame]:
        signal.raise_signal(signal.SIGHUP)
        yield pd.DataFrame({"sex": ["f"]})

    monkeypatch.setattr("vantrel.sampling.to_file.sample_blocks", hang_up)
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
    before = contents_here()
    ran = subprocess.run(
        command_line(f"sample m.json -n 2000 -o {name}"),
        capture_output=True,
        text=True,
        timeout=SECONDS,
        preexec_fn=files_end_early,
    )
    assert (ran.returncode, ran.stdout) == (1, "")
    assert ran.stderr == f"vantrel: error: {name}: File too large.\n"
    assert contents_here() == before


def test_standard_output_that_cannot_be_written_to_the_end() -> None:
    with Path("out.csv").open("w", encoding="utf-8") as out:
        ran = subprocess.run(
            command_line("sample m.json -n 2000 --seed 7 -o -"),
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
            command_line("sample sex.json -n 60000 --seed 7 -o out.csv"),
            stdout=subprocess.DEVNULL,
            stderr=stderr,
            check=True,
            timeout=SECONDS,
        )
        shown = os.read(terminal, 100_000).decode()
    finally:
        os.close(stderr)
        os.close(terminal)
    assert "60000/60000" in shown
    assert " people " in shown
    left = shown.rpartition("\r")[2]
    assert re.sub(r"\x1b\[[\d;?]*[a-zA-Z]", "", left) == ""  # nothing of it stays on the screen
    assert left.endswith("\x1b[2K")
    assert succeed("sample sex.json -n 60000 --seed 7 -o again.csv").stderr == ""

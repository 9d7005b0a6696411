"""Runs the command as a user does."""

from __future__ import annotations

import os
import pty
import shlex
import shutil
import subprocess
import sys
from collections.abc import Mapping
from pathlib import Path

import pandas as pd
from click.testing import CliRunner, Result

from vantrel.cli import main
from vantrel.tables import read_table


def run(line: str, **environment: str | None) -> Result:
    """Runs a command in this process."""
    return CliRunner(env=environment).invoke(main, shlex.split(line), prog_name="vantrel")


def succeed(line: str, **environment: str | None) -> Result:
    """Runs a command that must succeed."""
    result = run(line, **environment)
    assert result.exit_code == 0, result.output
    return result


def fail(line: str, status: int) -> str:
    """Runs a command that must fail in one line and change no file, and gives that line."""
    before = contents_here()
    result = run(line)
    assert result.exit_code == status, result.output
    assert result.stdout == ""
    assert contents_here() == before
    (message,) = result.stderr.splitlines()
    start = "vantrel: error: "
    assert message.startswith(start)
    return message.removeprefix(start)


def made(path: str = "out.csv") -> pd.DataFrame:
    """The table that a command has written."""
    return read_table(Path(path))


def contents_here() -> dict[str, bytes]:
    """What the files of the current folder hold."""
    return {path.name: path.read_bytes() for path in Path().iterdir() if path.is_file()}


def command_line(line: str) -> list[str]:
    """What a process of the installed script is started with."""
    script = shutil.which("vantrel", path=str(Path(sys.executable).parent))
    assert script
    return [script, *shlex.split(line)]


def shell(line: str, **environment: str) -> subprocess.CompletedProcess[str]:
    """Runs the installed script in a process of its own, its output into pipes."""
    return subprocess.run(
        command_line(line),
        capture_output=True,
        text=True,
        check=False,
        env=_plain_environment(environment),
    )


def terminal(line: str, columns: int, **environment: str) -> str:
    """Runs the installed script in a terminal and gives what it shows."""
    master, slave = pty.openpty()
    environment |= {"TERM": "xterm-256color", "COLUMNS": str(columns)}
    with subprocess.Popen(
        command_line(line),
        stdin=slave,
        stdout=slave,
        stderr=slave,
        env=_plain_environment(environment),
    ) as process:
        os.close(slave)
        shown = _read_all(master)
    os.close(master)
    assert process.returncode == 0, shown
    return shown.decode().replace("\r\n", "\n")


def _read_all(master: int) -> bytes:
    shown = b""
    while True:
        try:
            part = os.read(master, 65_536)
        except OSError:  # what Linux says when the last writer has gone
            return shown
        if not part:
            return shown
        shown += part


def _plain_environment(added: Mapping[str, str]) -> dict[str, str]:
    """The environment without what tells programs of the terminal that the tests run in."""
    told = ("COLUMNS", "FORCE_COLOR", "NO_COLOR", "TTY_COMPATIBLE", "TTY_INTERACTIVE")
    return {name: value for name, value in os.environ.items() if name not in told} | dict(added)

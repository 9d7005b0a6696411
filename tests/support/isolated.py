"""Runs code in a process of its own."""

import json
import os
import subprocess
import sys
import textwrap
from pathlib import Path
from typing import Any

from support.versions import SILENCED

SECONDS = 180

# What this interpreter was told is not for the others, but for the allocator: where accesses to
# memory are checked, they are checked in every process.
KEPT = "PYTHONMALLOC"


def run(
    code: str,
    *,
    path: Path | None = None,
    python: str = sys.executable,
    options: tuple[str, ...] = (),
) -> subprocess.CompletedProcess[str]:
    """Runs the code and waits for it.

    Args:
        code: Python code; common indentation is taken off.
        path: A folder to import from. Installed packages are then out of reach.
        python: The interpreter.
        options: More options of the interpreter.
    """
    environment = {
        name: value
        for name, value in os.environ.items()
        if name == KEPT or not name.startswith("PYTHON")
    }
    environment |= {"PYTHONDONTWRITEBYTECODE": "1", "PYTHONIOENCODING": "utf-8"}
    if python == sys.executable:
        environment |= SILENCED
    if path is not None:
        environment["PYTHONPATH"] = str(path)
        options = ("-S", *options)
    return subprocess.run(
        [python, "-X", "faulthandler", *options, "-c", textwrap.dedent(code)],
        capture_output=True,
        encoding="utf-8",
        env=environment,
        timeout=SECONDS,
        check=False,
    )


def output_of(code: str, **settings: Any) -> str:
    """What the code prints. It must end without an error and say nothing on the error stream."""
    finished = run(code, **settings)
    assert finished.returncode == 0, finished.stderr
    assert finished.stderr == ""
    return finished.stdout.strip()


def answer_of(code: str, **settings: Any) -> Any:
    """The value that the code prints last, as JSON."""
    return json.loads(output_of(code, **settings).splitlines()[-1])

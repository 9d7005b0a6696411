"""A server of PostgreSQL of one's own, on a socket in a temporary folder."""

from __future__ import annotations

import os
import pwd
import shutil
import subprocess
import tempfile
from collections.abc import Iterator, Mapping
from contextlib import contextmanager
from pathlib import Path

SECONDS = 60

# As quick as it can be: what is in it is not to outlive a test.
QUICK = {
    "listen_addresses": "''",
    "fsync": "off",
    "synchronous_commit": "off",
    "full_page_writes": "off",
    "max_connections": "20",
    "shared_buffers": "64MB",
}


def programs() -> Path | None:
    """The folder of the server's programs, if it is installed."""
    found = shutil.which("initdb")
    if found:
        return Path(found).resolve().parent
    folders = sorted(
        Path("/usr/lib/postgresql").glob("*/bin"), key=lambda path: int(path.parts[-2])
    )
    return folders[-1] if folders else None


@contextmanager
def server(settings: Mapping[str, str] = QUICK) -> Iterator[Path]:
    """Runs a server with some settings, and gives the folder of its socket.

    It refuses to run as root, in whose place somebody else runs it.
    """
    bin_folder = programs()
    assert bin_folder
    user = _user()
    # Not below the tests' own folder, which others cannot enter, and whose name may be too long.
    folder = Path(tempfile.mkdtemp(prefix="vantrel-pg-", dir="/tmp"))
    data = folder / "data"
    own = {**settings, "unix_socket_directories": str(folder)}
    options = " ".join(f"-c {name}={value}" for name, value in own.items())
    try:
        if user is not None:
            shutil.chown(folder, user)

        def call(program: str, *arguments: str) -> None:
            subprocess.run(
                [bin_folder / program, "-D", data, *arguments],
                check=True,
                user=user,
                cwd=folder,
                stdout=subprocess.DEVNULL,
                timeout=SECONDS,
            )

        call("initdb", "-U", "postgres", "-A", "trust", "-E", "UTF8", "--locale=C.UTF-8", "-N")
        call("pg_ctl", "-w", "-l", str(folder / "log"), "-o", options, "start")
        try:
            yield folder
        finally:
            call("pg_ctl", "-w", "-m", "immediate", "stop")
    finally:
        shutil.rmtree(folder, ignore_errors=True)


def _user() -> str | None:
    """Who runs the server; None for whoever runs the tests."""
    if os.geteuid() != 0:
        return None
    known = {each.pw_name for each in pwd.getpwall()}
    return "postgres" if "postgres" in known else "nobody"

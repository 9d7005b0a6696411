"""The database engine that reads and counts tables without holding them."""

from __future__ import annotations

from pathlib import Path

import duckdb

# The engine asks for some memory a thread to read CSV; what does not fit goes to the disk.
_MEGABYTES = 64
_MEGABYTES_A_THREAD = 40


def connect(folder: Path) -> duckdb.DuckDBPyConnection:
    """Opens a database in memory, which loads nothing from the network.

    Args:
        folder: Where it writes what does not fit into little memory.
    """
    settings: dict[str, str | bool | int | float | list[str]] = {
        "autoinstall_known_extensions": "false",
        "autoload_known_extensions": "false",
        "temp_directory": str(folder),
    }
    connection = duckdb.connect(":memory:", config=settings)
    (threads,) = connection.execute("SELECT current_setting('threads')").fetchall()[0]
    megabytes = _MEGABYTES + _MEGABYTES_A_THREAD * threads
    connection.execute(f"SET memory_limit = '{megabytes}MB'")
    return connection


def quoted(text: str) -> str:
    """Writes a text as SQL does."""
    return "'" + text.replace("'", "''") + "'"

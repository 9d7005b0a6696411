"""The database engine that reads and counts tables without holding them."""

from __future__ import annotations

from collections.abc import Callable
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import Any

import duckdb
import pandas as pd

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
    (threads,) = rows_of(connection, "SELECT current_setting('threads')")[0]
    megabytes = _MEGABYTES + _MEGABYTES_A_THREAD * threads
    connection.execute(f"SET memory_limit = '{megabytes}MB'")
    return connection


def rows_of(connection: duckdb.DuckDBPyConnection, sql: str) -> list[tuple[Any, ...]]:
    """Runs a statement and gives its rows."""
    return _with_memory(connection, lambda: connection.execute(sql).fetchall())


def frame_of(connection: duckdb.DuckDBPyConnection, sql: str) -> pd.DataFrame:
    """Runs a statement and gives its rows as a frame."""
    return _with_memory(connection, lambda: connection.execute(sql).df())


def _with_memory[ResultT](
    connection: duckdb.DuckDBPyConnection, work: Callable[[], ResultT]
) -> ResultT:
    """Does what needs more memory again with all that the engine would take by itself."""
    try:
        return _beside(connection, work)
    except duckdb.OutOfMemoryException:
        connection.execute("RESET memory_limit")
        return _beside(connection, work)


def _beside[ResultT](connection: duckdb.DuckDBPyConnection, work: Callable[[], ResultT]) -> ResultT:
    """Does what takes long in a thread of its own and keeps this one free for signals.

    In the main thread the engine would turn whatever a signal's handler raises, such as
    KeyboardInterrupt, into an error of its own.
    """
    with ThreadPoolExecutor(1) as pool:
        running = pool.submit(work)
        try:
            return running.result()
        except BaseException:
            if not running.done():
                connection.interrupt()
            raise


def quoted(text: str) -> str:
    """Writes a text as SQL does."""
    return "'" + text.replace("'", "''") + "'"

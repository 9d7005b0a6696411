"""The engine that counts tables: what becomes of signals and errors while it works."""

import os
import signal
import sys
import threading
from collections.abc import Iterator
from contextlib import contextmanager
from pathlib import Path
from typing import Any, NoReturn

import duckdb
import pandas as pd
import pytest

from vantrel.tables.database import connect, frame_of, rows_of

ENDLESS = "SELECT sum(a.range * b.range) FROM range(10000000) a, range(10000000) b"


@contextmanager
def signal_soon(number: int, handler: Any) -> Iterator[None]:
    usual = signal.signal(number, handler)
    timer = threading.Timer(0.3, os.kill, (os.getpid(), number))
    timer.start()
    try:
        yield
    finally:
        timer.join()
        signal.signal(number, usual)


def leave(number: int, _frame: object) -> NoReturn:
    sys.exit(128 + number)


@pytest.mark.parametrize("run", [rows_of, frame_of])
@pytest.mark.parametrize(
    ("number", "handler", "raised"),
    [
        (signal.SIGINT, signal.default_int_handler, KeyboardInterrupt),
        (signal.SIGTERM, leave, SystemExit),
    ],
)
def test_what_a_handler_raises_ends_a_statement(
    tmp_path: Path, run: Any, number: int, handler: Any, raised: type[BaseException]
) -> None:
    with connect(tmp_path) as connection:
        with signal_soon(number, handler), pytest.raises(raised):
            run(connection, ENDLESS)
        assert rows_of(connection, "SELECT 1") == [(1,)]


def test_an_error_of_the_engine_is_its_own(tmp_path: Path) -> None:
    with connect(tmp_path) as connection, pytest.raises(duckdb.CatalogException):
        rows_of(connection, "SELECT * FROM nowhere")


@pytest.mark.parametrize("run", [rows_of, frame_of])
def test_what_fits_into_little_memory_in_no_way_is_given_more(
    run: Any, tmp_path: Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.setattr("vantrel.tables.database._MEGABYTES", 1)
    monkeypatch.setattr("vantrel.tables.database._MEGABYTES_A_THREAD", 0)
    connection = connect(tmp_path)
    held = "SELECT len(list(range)) AS n FROM range(3_000_000)"
    with pytest.raises(duckdb.OutOfMemoryException):
        connection.execute(held).fetchall()
    assert pd.DataFrame(run(connection, held)).iloc[0, 0] == 3_000_000

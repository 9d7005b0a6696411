"""What the tests of databases share: a server, if there is one, and an empty database a test."""

from __future__ import annotations

import itertools
import sqlite3
from collections.abc import Iterator
from pathlib import Path
from typing import TYPE_CHECKING

import pytest

from checks.postgresql import programs, server

if TYPE_CHECKING:  # where a package is missing, the tests that import it are skipped
    from support.databases import Lite, Post, Trial

_numbers = itertools.count()


@pytest.fixture(autouse=True)
def _folder(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.chdir(tmp_path)
    for name in ("VANTREL_SECRET", "PGHOST", "PGUSER", "PGPASSWORD", "PGDATABASE"):
        monkeypatch.delenv(name, raising=False)


@pytest.fixture(scope="session")
def socket_folder() -> Iterator[Path]:
    """The folder of the socket of a server that runs while the tests do."""
    if programs() is None:
        pytest.skip("PostgreSQL is not installed")
    with server() as folder:
        yield folder


@pytest.fixture
def lite(tmp_path: Path) -> Lite:
    """An empty database of SQLite."""
    from support.databases import Lite

    sqlite3.connect(tmp_path / "shop.db").close()
    return Lite(tmp_path / "shop.db")


@pytest.fixture
def post(socket_folder: Path) -> Post:
    """An empty database of PostgreSQL."""
    from support.databases import Post

    return Post.made(socket_folder, f"trial_{next(_numbers)}")


@pytest.fixture(params=["lite", "post"])
def trial(request: pytest.FixtureRequest) -> Trial:
    """An empty database of each kind."""
    found: Trial = request.getfixturevalue(request.param)
    return found

"""Fixtures of the tests that need a process of their own."""

from pathlib import Path

import pytest

from support.standins import write_standins


@pytest.fixture(scope="session")
def standins(tmp_path_factory: pytest.TempPathFactory) -> Path:
    """A folder with a small host that holds the module."""
    return write_standins(tmp_path_factory.mktemp("standins"))

"""Fixtures of the tests that need a process of their own."""

from pathlib import Path

import pytest

from support.pure_host import write_pure_host
from support.standins import write_standins


@pytest.fixture(scope="session")
def standins(tmp_path_factory: pytest.TempPathFactory) -> Path:
    """A folder with a small host that holds the module."""
    return write_standins(tmp_path_factory.mktemp("standins"))


@pytest.fixture(scope="session")
def pure_host(tmp_path_factory: pytest.TempPathFactory) -> Path:
    """A folder with a small host in which every function of the module can be called."""
    return write_pure_host(tmp_path_factory.mktemp("pure_host"))

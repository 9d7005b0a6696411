"""What all tests share."""

import os
import signal
from pathlib import Path

import pandas as pd
import pytest
from hypothesis import settings

from support.versions import SILENCED

# How long an example takes says nothing on a machine that does other things, too; and what is looked
# for at random is looked for by `make fuzz`, not by every change that has nothing to do with it.
settings.register_profile("suite", deadline=None, derandomize=True)
settings.load_profile("suite")

# What starts clusters or many processes is left to `make test-slow`.
SLOW = (
    "databases/",
    "documents/test_documents.py",
    "host/test_host_report_good.py",
    "isolated/test_exits.py",
    "isolated/test_failed_allocations.py",
    "person/test_twins_pandas.py",
    "scale/",
)

# A shell makes what it runs in the background deaf to Ctrl-C, and so whatever that starts.
signal.signal(signal.SIGINT, signal.default_int_handler)

os.environ.update(SILENCED)


def pytest_collection_modifyitems(items: list[pytest.Item]) -> None:
    """Marks the slow ones."""
    here = Path(__file__).parent
    for item in items:
        if item.path.relative_to(here).as_posix().startswith(SLOW):
            item.add_marker(pytest.mark.slow)


@pytest.fixture(autouse=True)
def _width_of_no_terminal(monkeypatch: pytest.MonkeyPatch) -> None:
    """Where tests run in several processes, these are told of a terminal's width."""
    monkeypatch.delenv("COLUMNS", raising=False)


@pytest.fixture
def people() -> pd.DataFrame:
    """Fifty people, of whom five each are alike, with everything that is learnt.

    The order of the columns is no order of labels.
    """
    ten = pd.DataFrame(
        {
            "land": ["GB", "US", "GB", "DE", "GB", "US", "GB", "DE", "GB", "GB"],
            "surname": list("ABCDEFGHIJ"),
            "title": ["Mr", "Mrs", "Dr", "Mr", "Miss", "Mr", "Dr", "Mrs", "Mr", "Miss"],
            "sex": ["m", "f", "m", "m", "f", "m", "f", "f", "m", "f"],
        }
    )
    return pd.concat([ten] * 5, ignore_index=True)

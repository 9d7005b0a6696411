"""What hangs ends, with a traceback that says where."""

import faulthandler
from collections.abc import Iterator

import pytest

from support.fuzzing import EXAMPLES

# No example takes seconds; this is not a measure of speed, but what no slow machine needs.
SECONDS = 600 + EXAMPLES


@pytest.fixture(autouse=True)
def _watched() -> Iterator[None]:
    faulthandler.dump_traceback_later(SECONDS, exit=True)
    yield
    faulthandler.cancel_dump_traceback_later()

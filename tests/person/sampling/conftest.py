"""What the tests of the sampling entry share."""

import pytest

from support.recording import Calls
from vantrel.model.models import person


@pytest.fixture
def asked(monkeypatch: pytest.MonkeyPatch) -> Calls:
    """The calls for provider maps, which are stood in for."""
    calls = Calls()
    monkeypatch.setattr(
        person, "get_country_to_provder_map", calls.recorder("map", lambda *_: {"x": len(calls)})
    )
    return calls

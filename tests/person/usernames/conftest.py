"""What the tests of usernames share."""

from typing import Any

import pandas as pd
import pytest

from support.usernames import Watch


@pytest.fixture
def watched(monkeypatch: pytest.MonkeyPatch) -> Watch:
    """Series whose calls are written down."""
    watch = Watch()

    def replace(name: str) -> None:
        method = getattr(pd.Series, name)

        def asked(self: pd.Series, *args: Any, **kwargs: Any) -> Any:
            watch.calls.append(name)
            watch.rounds_left -= name == "value_counts"
            if watch.rounds_left < 0:
                raise LookupError("rounds are used up")
            return method(self, *args, **kwargs)

        monkeypatch.setattr(pd.Series, name, asked)

    for name in ("apply", "nunique", "value_counts", "isin"):
        replace(name)
    return watch

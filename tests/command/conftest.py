"""What the tests of the command share: a folder with a table of people."""

from pathlib import Path

import pandas as pd
import pytest


@pytest.fixture(autouse=True)
def folder(tmp_path: Path, people: pd.DataFrame, monkeypatch: pytest.MonkeyPatch) -> Path:
    monkeypatch.chdir(tmp_path)
    people.to_csv("people.csv", index=False)
    return tmp_path

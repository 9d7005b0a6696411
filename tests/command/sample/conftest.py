"""What the tests of ``vantrel sample`` share: a folder with three models."""

from collections.abc import Iterator
from pathlib import Path

import pandas as pd
import pytest

from support.people import fitted_model
from vantrel.config import PersonLabels
from vantrel.storage.models import dumps

LABELS = PersonLabels(gender="sex", fullname="name", username="user", email="mail")
PLACES = PersonLabels(gender="sex", fullname="name", country="land")


@pytest.fixture(scope="session")
def fitted_people() -> pd.DataFrame:
    return pd.DataFrame({"sex": ["f", "m", "f", "m"], "land": ["GB", "GB", "DE", "GB"]})


@pytest.fixture(scope="session")
def contents(fitted_people: pd.DataFrame) -> dict[str, str]:
    """Model files: of everything that can be unique, of countries, of genders alone."""
    return {
        "m.json": dumps(fitted_model(LABELS, fitted_people)),
        "places.json": dumps(fitted_model(PLACES, fitted_people)),
        "sex.json": dumps(fitted_model(PersonLabels(gender="sex"), fitted_people)),
    }


@pytest.fixture(autouse=True)
def folder(
    tmp_path: Path, contents: dict[str, str], monkeypatch: pytest.MonkeyPatch
) -> Iterator[Path]:
    monkeypatch.chdir(tmp_path)
    for name, content in contents.items():
        Path(name).write_text(content, encoding="utf-8")
    yield tmp_path
    assert not list(tmp_path.glob(".*")), "a temporary file is left"

"""What the tests of ``vantrel report`` share: two samples."""

import pandas as pd
import pytest

from support.command import succeed
from support.reports import LABELS


@pytest.fixture
def made_up(people: pd.DataFrame) -> None:
    """A sample without a record."""
    people.drop(columns="title").head(4).to_csv("made-up.csv", index=False)


@pytest.fixture
def recorded() -> None:
    """A sample that the command made, with its record."""
    succeed(f"fit people.csv --min-count 1 -o m.json {LABELS} --generate firstname,email")
    succeed("sample m.json -n 1500 --seed 7 -o made-up.csv")

"""Gender keys to draw first names for, and the comparison with the reading."""

from typing import Any

import pandas as pd

from support import readings_generators as readings
from support.comparing import assert_same_outcome
from vantrel.model.models.person import PersonModel

KEYS = ["F", "M", "NB", "A", None, pd.NA, float("nan")]


def genders_of(rows: int) -> pd.Series:
    """Every gender key in turn, also the missing ones."""
    return pd.Series([KEYS[i % len(KEYS)] for i in range(rows)], dtype="object")


def assert_reads_alike(model: PersonModel, genders: Any, countries: Any, seed: int = 1) -> Any:
    """Draws a column as the reading does, and gives the column; None where both raised."""
    return assert_same_outcome(
        lambda: model.generate_first_names(genders, countries),
        lambda: readings.first_names(model, genders, countries),
        seed,
        model,
    )

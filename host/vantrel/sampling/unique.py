"""Makes usernames and e-mail addresses unique by construction, whatever else is sampled where."""

from __future__ import annotations

from collections.abc import Iterable

import numpy as np
import pandas as pd

from vantrel.attributes import UNIQUE
from vantrel.errors import ArgumentError, SamplingError
from vantrel.hints import argument
from vantrel.model.models.person import PersonModel

_ALPHABET = np.frombuffer(b"0123456789abcdefghijklmnopqrstuvwxyz", dtype="S1")
_LENGTH = 6
MOST_ROWS = len(_ALPHABET) ** _LENGTH
"""There are as many codes, 2,176,782,336."""

# Prime to the number of codes, so that multiplying by it maps rows to codes one to one; near the
# golden section of that number, so that the codes of neighbouring rows look nothing alike.
_STRIDE = 1_345_325_471


def refuse_not_unique(model: PersonModel, attributes: Iterable[str], rows: int) -> None:
    """Refuses attributes whose columns cannot be made unique in a sample of so many rows."""
    for attribute in attributes:
        if attribute not in UNIQUE:
            raise ArgumentError(
                f"{attribute!r} cannot be made unique: only {' and '.join(UNIQUE)} can."
            )
        column = getattr(model.labels, attribute)
        if column is None:
            raise SamplingError(
                f"{attribute!r} cannot be made unique: the model does not make it. Fit it with"
                f" {argument('generate', [attribute])}."
            )
        if rows > MOST_ROWS:
            raise SamplingError(
                f"Column {column!r} runs out of unique values at {MOST_ROWS:,} rows: ask for fewer."
            )


def make_unique(
    people: pd.DataFrame, model: PersonModel, attributes: Iterable[str], first_row: int
) -> None:
    """Ends each username, and each e-mail address before its "@", in a code of its own.

    The code has six characters and is made from the number of the row in the whole sample alone:
    no two rows share one, so no two values are equal, and nobody need know the other rows.
    Missing values stay missing.

    Args:
        people: A part of a sample; changed in place.
        model: The model that made it.
        attributes: Of "username" and "email", those that the model makes.
        first_row: The number in the whole sample of the part's first row.
    """
    codes = row_codes(first_row, len(people))
    for attribute in attributes:
        column = getattr(model.labels, attribute)
        values = people[column]
        if values.isna().all():
            continue  # pandas sees no texts in it that could be split or joined
        ends = pd.Series(codes, index=values.index, dtype=values.dtype)
        if attribute == "email":
            parts = values.str.partition("@")
            people[column] = parts[0] + ends + parts[1] + parts[2]
        else:
            people[column] = values + ends


def row_codes(first_row: int, count: int) -> np.ndarray:
    """Gives the codes of consecutive rows, shape (count,), six characters each."""
    rows = np.arange(first_row, first_row + count, dtype=np.int64)
    numbers = (rows + 1) * _STRIDE % MOST_ROWS
    places = len(_ALPHABET) ** np.arange(_LENGTH, dtype=np.int64)
    characters = _ALPHABET[numbers[:, np.newaxis] // places % len(_ALPHABET)]
    codes: np.ndarray = characters.view(f"S{_LENGTH}").ravel().astype(str).astype(object)
    return codes

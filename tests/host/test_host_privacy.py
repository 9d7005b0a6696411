"""Whatever a table holds: what is in fewer rows than ``min_count`` is in no model file."""

from __future__ import annotations

import json
from collections import Counter
from typing import Any

import pandas as pd
from hypothesis import given, settings
from hypothesis import strategies as st

import vantrel
from vantrel.config import PersonModelConfig
from vantrel.errors import FittingError
from vantrel.genders import keys_of
from vantrel.storage.models import dumps

MIN_COUNT = 5

# Values of each column: usual ones, odd ones and rare ones. None is a part of another or of the
# rest of a file.
VALUES = {
    "sex": ["f", "male", "SECRET-1", "SECRET-2", None],
    "title": ["Mr", "Mrs", "Dr", "SECRET-3 Smith", "Jonkheer", None],
    "land": ["DE", "Norway", "SECRET-4", "France", None],
}
ROW = st.fixed_dictionaries(
    {column: st.sampled_from(values) for column, values in VALUES.items()}
    | {"surname": st.sampled_from(["SECRET-5", None])}
)
COLUMNS: dict[str, Any] = {
    "gender": "sex",
    "title": "title",
    "country": "land",
    "lastname": "surname",
}


def texts_of(part: Any) -> Counter[str]:
    """Counts the texts of a part of a file, keys of objects included."""
    if isinstance(part, dict):
        return sum(map(texts_of, [*part.keys(), *part.values()]), Counter())
    if isinstance(part, list):
        return sum(map(texts_of, part), Counter())
    return Counter([part] if isinstance(part, str) else [])


@settings(max_examples=60)
@given(st.lists(st.tuples(ROW, st.integers(1, 7)), min_size=1, max_size=12))
def test_no_value_of_fewer_rows_is_in_the_file(counted: list[tuple[dict[str, Any], int]]) -> None:
    df = pd.DataFrame([row for row, times in counted for _ in range(times)], dtype=object)
    try:
        model = vantrel.fit(df, detect=False, min_count=MIN_COUNT, **COLUMNS)
    except FittingError:
        return  # a column without any value, or with none that is kept
    kept = texts_of(json.loads(dumps(model)))
    for column, values in VALUES.items():
        usual = (
            keys_of(filter(None, values), PersonModelConfig(), "gender") if column == "sex" else {}
        )
        for value in filter(None, values):
            if value not in usual and (df[column] == value).sum() < MIN_COUNT:
                assert value not in kept
    assert "SECRET-5" not in kept
    rows = model.meta.rows
    for *cells, count in rows.combinations:
        assert count >= MIN_COUNT or set(cells) == {-1}
    for titles in rows.any_title.values():
        assert all(count == 0 or count >= MIN_COUNT for count in titles)

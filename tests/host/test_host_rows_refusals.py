"""Model files whose combinations are refused: what the message says, and that it is one line."""

from __future__ import annotations

import json
from typing import Any

import pandas as pd
import pytest

import vantrel
from vantrel.errors import ModelFileError
from vantrel.storage.models import dumps, loads


@pytest.fixture(scope="module")
def content() -> str:
    df = pd.DataFrame(
        {
            "sex": ["f", "m"] * 50,
            "title": ["Ms", "Mr"] * 50,
            "last": [None, *["x"] * 9] * 10,
            "land": ["DE", "GB"] * 50,
        }
    )
    columns: dict[str, Any] = {"gender": "sex", "lastname": "last"}
    return dumps(vantrel.fit(df, detect=False, title="title", **columns))


ROWS = "- at `$.rows`"


@pytest.mark.parametrize(
    ("key", "value", "message"),
    [
        ("left_out", {"foo": {"values": 1, "rows": 2}}, "Invalid enum value 'foo' - at `key` in `$.rows.left_out`"),
        ("left_out", {"country": {"values": 1, "rows": 2}}, "There are values of 'country', which is no column"),
        ("any_title", {"Q": [1, 2]}, "Invalid enum value 'Q' - at `key` in `$.rows.any_title`"),
        ("any_title", {"F": [1]}, f"Of 2 values of 'title' there are 1 counts {ROWS}"),
        ("any_title", {"F": [0, 0]}, f"None of the counts of 'title' is above 0 {ROWS}"),
        ("any_gender", [1, 2, 3], f"Of 2 values of 'gender' there are 3 counts {ROWS}"),
        ("any_gaps", [0, 0], f"None of the counts of 'gaps' is above 0 {ROWS}"),
        ("gender", ["f", "f"], f"Of 'gender' one is there twice {ROWS}"),
        ("title", ["Ms", "Ms"], f"Of 'title' one is there twice {ROWS}"),
        ("gaps", [["last"], ["last"]], f"Of 'gaps' one is there twice {ROWS}"),
    ],
)  # fmt: skip
def test_combinations_that_are_none(content: str, key: str, value: object, message: str) -> None:
    form = json.loads(content)
    assert key in form["rows"]
    form["rows"][key] = value
    with pytest.raises(ModelFileError) as caught:
        loads(json.dumps(form))
    assert str(caught.value) == f"cannot be used: {message}. Correct it or fit it again."


def test_a_missing_value_is_not_the_word_for_it(content: str) -> None:
    form = json.loads(content)
    form["rows"]["gender"] = ["None", None]
    assert loads(json.dumps(form)).meta.rows.gender == ["None", None]

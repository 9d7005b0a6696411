"""A model file of schema 1, as it was written before rows were learnt, and the rows that it gave."""

from __future__ import annotations

import json
from typing import Any

import pandas as pd

import vantrel
from vantrel.genders import GENDER_FEMALE, GENDER_MALE, GENDER_NON_BINARY
from vantrel.storage.models import dumps, loads

SEX = {"type": "string", "name": "sex", "categories": ["f", "m", "F"], "nan_freq": 1 / 6}
LAND = {"type": "nominal", "name": "land", "categories": ["DE", "FR", "GB"], "nan_freq": 1 / 6}
TITLE = SEX | {"name": "title", "categories": ["Mrs", "Mr", "Dr", "Miss"]}
LABELS = {
    "gender": "sex",
    "title": "title",
    "password": "password",
    "mobile_number": "mobile_number",
    "country": "land",
}
FILE: dict[str, Any] = {
    "format": "vantrel-person-model",
    "schema_version": 1,
    "versions": {},
    "model": {
        "meta": {
            "type": "person",
            "name": "person",
            "labels": LABELS,
            "locales": None,
            "nan_freq": 0.0,
            "columns": ["sex", "title", "land"],
            "children": {"sex": SEX, "title": TITLE, "land": LAND},
        },
        "config": {"mobile_number_format": "07xxxxxxxx", "pwd_length": [8, 16]},
        "hidden_model_gender": {
            "meta": SEX,
            "probabilities": {"F": 0.6, "M": 0.4},
            "regex_female": GENDER_FEMALE,
            "regex_male": GENDER_MALE,
            "regex_non_binary": GENDER_NON_BINARY,
        },
        "hidden_model_country": {
            "meta": LAND,
            "probabilities": {"DE": 0.4, "FR": 0.2, "GB": 0.4},
        },
    },
}

ROWS = """
sex,title,land,password,mobile_number
m,Mr,DE,Q4gMCcublYyAouWe,0782843605
F,Miss,DE,vJd5Fv7lBQBjp,0729979995
,,,,
F,Mrs,GB,l0MvfgOvH,0779705600
,,,,
f,Miss,GB,J0cKoU3F9wH1,0770242825
m,Mr,GB,6KaUX5xKl2PUvVig,0792144309
f,Mrs,DE,GLRyaFoc,0793057207
"""


def test_it_gives_the_rows_that_it_gave() -> None:
    model = loads(json.dumps(FILE))
    assert vantrel.sample(model, 8, seed=7).to_csv(index=False) == ROWS.lstrip()


def test_it_gives_them_when_it_was_written_anew() -> None:
    again = loads(dumps(loads(json.dumps(FILE))))
    assert vantrel.sample(again, 8, seed=7).to_csv(index=False) == ROWS.lstrip()
    assert "which are blank" in str(vantrel.describe(again))


def test_conditions_are_met() -> None:
    given = pd.DataFrame({"land": ["FR", "SE"], "sex": ["m", "female"]})
    people = vantrel.sample(loads(json.dumps(FILE)), conditions=given, seed=7)
    assert people["land"].tolist() == ["FR", "SE"]
    assert people["sex"].isin(["m", "f", "F"]).all()

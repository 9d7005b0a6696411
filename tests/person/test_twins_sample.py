"""Whole columns against single calls: `sample` of whole tables, real ones among them."""

from collections.abc import Callable
from functools import cache
from typing import Any

import numpy as np
import pandas as pd
import pytest

from support.examples import EXAMPLES
from support.people import ALL_LABELS, fitted_model, people
from support.twins import TEXT_DTYPES, made_both_ways, same_both_ways
from support.whole_columns import COUNTRIES, usual_model
from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.model.models.person import PersonModel


@pytest.mark.parametrize("produce_nans", [True, False])
@pytest.mark.parametrize("rows", [*range(41), 100])
def test_few_rows(rows: int, produce_nans: bool) -> None:
    model = usual_model()
    frame = made_both_ways(lambda: model.sample(rows, produce_nans), model)
    assert frame.shape == (rows, 12)


@pytest.mark.parametrize("seed", [1, 2])
def test_5000_rows(seed: int) -> None:
    model = usual_model()
    frame = made_both_ways(lambda: model.sample(5000), model, seed)
    assert frame["user"].nunique() > 4900


def table_with_missing_values() -> pd.DataFrame:
    table = people(40)
    table.loc[::7, ["gender", "title"]] = None
    return table


@cache
def model_of(table: str) -> PersonModel:
    return TABLES[table]()


def model_of_passengers() -> PersonModel:
    table = pd.read_csv(EXAMPLES / "passengers.csv")
    labels = PersonLabels(
        gender="sex",
        title="title",
        firstname="first_name",
        lastname="last_name",
        email="email",
        username="user",
        password="password",
        mobile_number="mobile",
    )
    return fitted_model(labels, table)


def model_of_respondents() -> PersonModel:
    table = pd.read_csv(EXAMPLES / "respondents.csv")
    table = table[table["country"] != "Australia"]  # has no names of its own, which the host tells
    labels = PersonLabels(
        gender="gender",
        country="country",
        fullname="full",
        email="email",
        username="user",
        password="password",
        home_number="home",
        work_number="work",
    )
    return fitted_model(labels, table)


def without_countries(**meta: Any) -> Callable[[], PersonModel]:
    labels = PersonLabels(**{**vars(ALL_LABELS), "country": None})
    return lambda: fitted_model(labels, people(), **meta)


TABLES: dict[str, Callable[[], PersonModel]] = {
    "passengers": model_of_passengers,
    "respondents": model_of_respondents,
    "missing values": lambda: fitted_model(table=table_with_missing_values()),
    "no country": without_countries(),
    "locales": without_countries(locales=["de_DE", "fr_FR", "ja_JP"]),
    "one locale": without_countries(locales=["en_US"]),
}


@pytest.mark.parametrize("table", TABLES)
@pytest.mark.parametrize("rows", [0, 1, 300])
def test_models_of_other_tables(table: str, rows: int) -> None:
    model = model_of(table)
    made_both_ways(lambda: model.sample(rows), model)


@pytest.mark.parametrize("table", ["passengers", "respondents"])
def test_3000_rows_of_real_tables(table: str) -> None:
    model = model_of(table)
    frame = made_both_ways(lambda: model.sample(3000), model)
    assert len(frame) == 3000


@pytest.mark.parametrize("dtype", TEXT_DTYPES)
def test_models_of_tables_of_every_dtype(dtype: str) -> None:
    table = people(40).apply(lambda column: TEXT_DTYPES[dtype](column.tolist()))
    model = fitted_model(table=table)
    same_both_ways(lambda: model.sample(60), model)


FIELDS = list(vars(ALL_LABELS))


@pytest.mark.parametrize("field", FIELDS)
def test_one_column_alone(field: str) -> None:
    own = field if field in ("gender", "title", "country") else "own"
    model = fitted_model(PersonLabels(**{field: own}))
    frame = made_both_ways(lambda: model.sample(40), model)
    assert frame.columns.tolist() == [own]


@pytest.mark.parametrize("field", FIELDS)
def test_one_column_left_out(field: str) -> None:
    model = fitted_model(PersonLabels(**{**vars(ALL_LABELS), field: None}))
    made_both_ways(lambda: model.sample(40), model)


CONDITIONS: dict[str, Callable[[], pd.DataFrame]] = {
    "genders": lambda: pd.DataFrame({"gender": ["male", "female", "nb"] * 5}),
    "countries": lambda: pd.DataFrame({"country": ["GB", "CN"] * 5}),
    "both": lambda: people(30, COUNTRIES),
    "no rows": lambda: people(0),
    "no column": lambda: pd.DataFrame(index=range(5)),
    "other columns": lambda: pd.DataFrame({"age": range(5)}),
    "unknown genders": lambda: pd.DataFrame({"gender": ["male", "???", "female"]}),
    "missing genders": lambda: pd.DataFrame({"gender": ["male", None, "female"]}),
    "unknown countries": lambda: pd.DataFrame({"country": ["GB", "XX"]}),
    "missing countries": lambda: pd.DataFrame({"country": ["GB", None]}),
    "other index": lambda: people(12, COUNTRIES).set_index(pd.Index(range(7, 19))),
    "texts for index": lambda: people(5, COUNTRIES).set_index(pd.Index(list("abcde"))),
    "duplicate index": lambda: people(4, COUNTRIES).set_index(pd.Index([0, 0, 1, 1])),
    "categories": lambda: people(12, COUNTRIES).astype("category"),
    "string": lambda: people(12, COUNTRIES).astype("string"),
    "object": lambda: people(12, COUNTRIES).astype("object"),
    "numpy texts": lambda: people(6, COUNTRIES).map(np.str_).astype("object"),
    "numbers": lambda: pd.DataFrame({"gender": [1, 2], "country": [3, 4]}),
    "one person": lambda: pd.DataFrame({"gender": ["male"] * 300, "country": ["CN"] * 300}),
}


@pytest.mark.parametrize("produce_nans", [True, False])
@pytest.mark.parametrize("conditions", CONDITIONS)
def test_conditions(conditions: str, produce_nans: bool) -> None:
    model = usual_model()
    same_both_ways(lambda: model.sample(5, produce_nans, CONDITIONS[conditions]()), model)


@pytest.mark.parametrize("conditions", CONDITIONS)
def test_conditions_where_no_country_is_labelled(conditions: str) -> None:
    model = model_of("locales")
    same_both_ways(lambda: model.sample(conditions=CONDITIONS[conditions]()), model)


CONFIGS = {
    "titles that fit several": PersonModelConfig(title_female_regex="m", title_male_regex="r"),
    "titles that fit none": PersonModelConfig(
        title_female_regex="-", title_male_regex="-", title_non_binary_regex="-"
    ),
    "ambiguous genders": PersonModelConfig(gender_female_regex="e", gender_male_regex="e"),
    "a title like the key": PersonModelConfig(title_female_regex="^A$", title_male_regex="A"),
    "passwords and numbers": PersonModelConfig(
        pwd_length=(1, 300), mobile_number_format="x-x", home_number_format=""
    ),
}


@pytest.mark.parametrize("config", CONFIGS)
def test_settings(config: str) -> None:
    table = people(24)
    table.loc[0, "title"] = "A"
    model = fitted_model(table=table, config=CONFIGS[config])
    same_both_ways(lambda: model.sample(60), model)


def test_one_sample_after_another() -> None:
    model = usual_model()

    def twice() -> list[pd.DataFrame]:
        return [model.sample(30), model.sample(31), model.sample(0), model.sample(1)]

    made_both_ways(twice, model)

"""Rows that were left open are drawn as their gender and country say, and none is blank by chance."""

from __future__ import annotations

from typing import Any

import numpy as np
import pandas as pd
import pytest

import vantrel
from support.shares import BOUND, excess
from vantrel.model.models.person import PersonModel
from vantrel.util.locale.faker_locales import locales_by_country

ROWS = 20_000
NAMES = {"firstname": "first", "lastname": "last", "email": "mail", "username": "login"}


def fitted(df: pd.DataFrame, **asked: Any) -> PersonModel:
    columns: dict[str, Any] = {"gender": "sex", "title": "title", "country": "land"} | NAMES
    there = {attribute: column for attribute, column in columns.items() if column in df}
    return vantrel.fit(df, detect=False, **there, **asked)


def table(*groups: tuple[int, str | None, str | None, str | None]) -> pd.DataFrame:
    """So many rows of each gender, title and country."""
    rows = [row for number, *row in groups for _ in range(number)]
    return pd.DataFrame(rows, columns=["sex", "title", "land"])


# --- titles


@pytest.fixture(scope="module")
def titled() -> pd.DataFrame:
    """A few rows of each country are too rare to keep their titles."""
    rare = [(3, "M", title, "GB") for title in ("Sir", "Lord", "Colonel")]
    return table(
        (150, "M", "M.", "France"),
        (200, "F", "Frau", "Germany"),
        (100, "F", "Ms", "GB"),
        (80, "M", "Dr", "GB"),
        *rare,
    )


def test_a_title_that_is_left_open_is_one_of_its_country(titled: pd.DataFrame) -> None:
    people = vantrel.sample(fitted(titled), ROWS, seed=1)
    assert set(people.loc[people["title"] == "M.", "land"]) == {"France"}
    assert set(people.loc[people["title"] == "Frau", "land"]) == {"Germany"}
    british_men = people[(people["land"] == "GB") & (people["sex"] == "M")]
    assert set(british_men["title"]) == {"Dr"}
    assert len(british_men) == pytest.approx(ROWS * 89 / len(titled), rel=0.1)


def test_a_title_whose_country_is_too_rare_is_not_given_to_another_one() -> None:
    rare = [(2, "M", "M.", land) for land in ("Monaco", "Haiti", "Senegal")]
    real = table((90, "M", "M.", "France"), (90, "M", "Mr", "GB"), *rare)
    people = vantrel.sample(fitted(real), ROWS, seed=1)
    assert set(people.loc[people["title"] == "M.", "land"]) == {"France"}


@pytest.mark.parametrize("sex", ["M", None, "zz"])
def test_titles_of_other_countries_are_not_given_with_a_country(
    titled: pd.DataFrame, sex: str | None
) -> None:
    given = pd.DataFrame({"sex": [sex] * 2_000, "land": "GB"})
    people = vantrel.sample(fitted(titled), conditions=given, seed=1)
    assert set(people["title"]) <= {"Dr", "Ms"}


def test_titles_keep_their_shares_where_most_countries_are_small() -> None:
    rng = np.random.default_rng(1)
    lands = sorted(locales_by_country())
    shares = 1 / np.arange(1, len(lands) + 1)
    land = rng.choice(lands, ROWS, p=shares / shares.sum())
    is_woman = rng.random(ROWS) < np.where(np.isin(land, lands[::3]), 0.8, 0.3)
    hers = rng.choice(["Mrs", "Ms", "Miss", "Dr"], ROWS, p=[0.4, 0.35, 0.2, 0.05])
    his = rng.choice(["Mr", "Dr", "Rev"], ROWS, p=[0.93, 0.05, 0.02])
    his[(his == "Mr") & np.isin(land, lands[1:3])] = "M."
    sex, title = np.where(is_woman, "F", "M"), np.where(is_woman, hers, his)
    real = pd.DataFrame({"sex": sex, "title": title, "land": land})
    people = vantrel.sample(fitted(real), ROWS, seed=1)
    for columns in (["title"], ["land"], ["sex", "land"], ["sex", "title"], ["title", "land"]):
        assert excess(real, people, columns) < BOUND, columns
    assert set(people.loc[people["title"] == "M.", "land"]) == set(lands[1:3])
    for either in ("Dr", "Rev"):  # too few in most countries, and no less frequent for that
        share = (real["title"] == either).mean()
        assert (people["title"] == either).mean() == pytest.approx(share, rel=0.2)


def test_titles_that_are_rare_in_every_country_are_as_frequent_as_they_were() -> None:
    titles = [(20, "Mr"), (3, "Dr"), (3, "Rev")]
    lands = sorted(locales_by_country())[:40]
    real = table(*((rows, "M", title, land) for land in lands for rows, title in titles))
    people = vantrel.sample(fitted(real), ROWS, seed=1)
    shares = people["title"].value_counts(normalize=True)
    assert shares.to_dict() == pytest.approx({"Mr": 20 / 26, "Dr": 3 / 26, "Rev": 3 / 26}, abs=0.01)
    assert people["land"].value_counts(normalize=True).to_numpy() == pytest.approx(1 / 40, rel=0.25)


def test_rare_titles_do_not_bring_genders_to_other_countries() -> None:
    women = [(60, "F", "Mrs", land) for land in ("Germany", "Austria")]
    usual = [*women, *((60, "M", "Mr", land) for land in ("France", "Spain"))]
    rare = [(3, sex, title, land) for _, sex, _, land in usual for title in ("Dr", "Rev")]
    people = vantrel.sample(fitted(table(*usual, *rare)), ROWS, seed=1)
    assert people.groupby("land")["sex"].unique().map(list).to_dict() == {
        "Austria": ["F"],
        "France": ["M"],
        "Germany": ["F"],
        "Spain": ["M"],
    }


# --- blank rows


def gappy(rows: int) -> pd.DataFrame:
    """Rows in which nearly anything may be missing, and never all."""
    rng = np.random.default_rng(3)
    cells = rng.choice(["GB", None], (4 * rows, 6), p=[0.4, 0.6])
    df = pd.DataFrame(cells, columns=["land", *NAMES.values(), "sex"])
    df["sex"] = df["sex"].replace("GB", "F")
    return df.dropna(how="all").head(rows).reset_index(drop=True)


@pytest.mark.parametrize("rows", [60, 2_000])
def test_no_row_is_blank_where_no_real_one_is(rows: int) -> None:
    real = gappy(rows)
    people = vantrel.sample(fitted(real), 6_000, seed=1)
    assert not people.isna().all(axis="columns").any()
    assert (people.isna().mean() - real.isna().mean()).abs().max() < 0.1


def test_a_row_with_one_column_of_names_keeps_it_where_nothing_else_is() -> None:
    df = pd.DataFrame({"sex": ["F", None] * 3, "first": [None, "x"] * 3})
    people = vantrel.sample(fitted(df), 2_000, seed=1)
    assert not people.isna().all(axis="columns").any()


# --- conditions


@pytest.fixture(scope="module")
def spelled() -> pd.DataFrame:
    return table((60, "F", "Frau", "Germany"), (60, "M", "Mr", "GB"), (40, None, None, None))


@pytest.mark.parametrize("given", ["DE", "Deutschland", "Germany", "DEU"])
def test_a_country_may_be_spelled_otherwise_than_in_the_table(
    spelled: pd.DataFrame, given: str
) -> None:
    conditions = pd.DataFrame({"land": [given, "United Kingdom"] * 50})
    people = vantrel.sample(fitted(spelled), conditions=conditions, seed=1)
    rows = people[["sex", "title", "land"]].drop_duplicates().to_numpy().tolist()
    assert rows == [["F", "Frau", "Germany"], ["M", "Mr", "GB"]]


def test_the_most_frequent_spelling_stands_for_another_one() -> None:
    df = table((20, "F", "Mrs", "UK"), (50, "M", "Mr", "GB"), (10, "F", "Ms", "Britain"))
    given = pd.DataFrame({"land": ["England", "UK"]})
    people = vantrel.sample(fitted(df), conditions=given, seed=1)
    assert people["land"].tolist() == ["GB", "UK"]


@pytest.mark.parametrize("columns", [["sex"], ["land"], ["sex", "land"]])
def test_what_is_missing_from_conditions_makes_no_blank_row(
    spelled: pd.DataFrame, columns: list[str]
) -> None:
    df = spelled.assign(first="x").where(spelled["sex"].notna())
    conditions = pd.DataFrame({column: [None] * 200 for column in columns}, dtype=object)
    model = fitted(df, generate=["email"])
    people = vantrel.sample(model, conditions=conditions, seed=1)
    assert people[columns].isna().all(axis=None)
    assert people[["first", "email"]].notna().all(axis=None)
    if len(columns) == 1:
        assert people.drop(columns=columns).notna().all(axis=None)


def test_no_rows_have_the_types_of_some(spelled: pd.DataFrame) -> None:
    model = fitted(spelled, generate=["firstname", "mobile_number", "password"])
    some = vantrel.sample(model, 5, seed=1).dtypes
    pd.testing.assert_series_equal(vantrel.sample(model, 0, seed=1).dtypes, some)
    conditions = spelled.head(0).assign(id=[])
    none = vantrel.sample(model, conditions=conditions, seed=1)
    pd.testing.assert_series_equal(none.drop(columns="id").dtypes, some)
    assert none.empty

"""Samples have the combinations that a table has, as often, and nothing that is too rare to be kept."""

from __future__ import annotations

import json
from itertools import combinations
from pathlib import Path
from typing import Any

import numpy as np
import pandas as pd
import pytest

import vantrel
from support.shares import BOUND, excess
from vantrel.errors import ArgumentError, FittingError, SamplingError
from vantrel.rows import form, learning
from vantrel.sampling import Plan, sample_blocks
from vantrel.storage.models import dumps, loads

ROWS = 20_000


def real_table(rows: int = ROWS) -> pd.DataFrame:
    """A table in which titles, genders, spellings, countries and gaps depend on each other."""
    rng = np.random.default_rng(5)
    land = rng.choice(
        ["DE", "FR", "GB", "Scotland or Wales", None], rows, p=[0.4, 0.3, 0.1, 0.1, 0.1]
    )
    is_woman = rng.random(rows) < np.where(land == "DE", 0.8, 0.3)
    short = land == "FR"
    sex: Any = np.where(is_woman, np.where(short, "F", "female"), np.where(short, "M", "male"))
    sex = np.where(rng.random(rows) < 0.1, "unknown", sex).astype(object)
    sex[rng.random(rows) < 0.1] = None
    title = np.where(is_woman, np.where(short, "Mme", "Mrs"), np.where(short, "M.", "Mr"))
    title = np.where(rng.random(rows) < 0.02, "Dr", title)
    df = pd.DataFrame(
        {"sex": sex, "title": title, "land": land, "surname": "x", "mail": "a@b.example"}
    )
    df.loc[rng.random(rows) < 0.2, ["surname", "mail"]] = None
    df.loc[rng.random(rows) < 0.05] = None
    return df


def fitted(df: pd.DataFrame, **asked: Any) -> vantrel.model.models.person.PersonModel:
    columns: dict[str, Any] = {
        "gender": "sex",
        "title": "title",
        "country": "land",
        "lastname": "surname",
        "email": "mail",
    }
    there = {attribute: column for attribute, column in columns.items() if column in df}
    return vantrel.fit(df, detect=False, **there, **asked)


@pytest.fixture(scope="module")
def real() -> pd.DataFrame:
    return real_table()


@pytest.fixture(scope="module")
def sampled(real: pd.DataFrame) -> pd.DataFrame:
    return vantrel.sample(fitted(real), ROWS, seed=1)


PAIRS = list(combinations(["sex", "title", "land"], 2))


@pytest.mark.parametrize("columns", [*map(list, PAIRS), ["sex", "title", "land"]])
def test_what_stands_together_does_so_as_often(
    real: pd.DataFrame, sampled: pd.DataFrame, columns: list[str]
) -> None:
    assert excess(real, sampled, columns) < BOUND
    shuffled = sampled.assign(
        **{columns[0]: sampled[columns[0]].sample(frac=1, random_state=1).array}
    )
    assert excess(real, shuffled, columns) > 10 * BOUND


def test_gaps_come_together_as_often(real: pd.DataFrame, sampled: pd.DataFrame) -> None:
    gaps, sampled_gaps = (df.isna().astype(str) for df in (real, sampled))
    assert excess(gaps, sampled_gaps, gaps.columns.tolist()) < BOUND
    assert sampled["mail"].isna().equals(sampled["surname"].isna())


def test_only_rows_that_were_blank_are(real: pd.DataFrame) -> None:
    df = real[["sex", "land"]]
    people = vantrel.sample(fitted(df, generate=["firstname", "fullname"]), 5_000, seed=1)
    blank = people[["sex", "land"]].isna().all(axis="columns")
    assert people["firstname"].isna().equals(blank)
    assert 0 < blank.mean() < 0.1


def test_names_follow_genders_and_countries(sampled: pd.DataFrame) -> None:
    assert set(sampled.loc[sampled["title"].isin(["Mme", "M."]), "land"].dropna()) == {"FR"}
    assert (sampled["sex"] == "unknown").mean() == pytest.approx(0.085, abs=0.01)
    assert (sampled["land"] == "Scotland or Wales").mean() == pytest.approx(0.095, abs=0.01)


def test_a_seed_gives_the_same_rows_from_a_file_and_in_parts(real: pd.DataFrame) -> None:
    model = fitted(real, generate=["username", "password"])
    people = vantrel.sample(model, 60_000, seed=3)
    again = vantrel.sample(loads(dumps(model)), 60_000, seed=3)
    pd.testing.assert_frame_equal(people, again)
    last = next(sample_blocks(model, Plan(60_000, 3), blocks=range(1, 2)))
    pd.testing.assert_frame_equal(people.iloc[50_000:], last)


def test_exact_gives_the_rows_of_the_bare_model(real: pd.DataFrame) -> None:
    model = fitted(real)
    exact = vantrel.sample(model, 500, seed=2, exact=True)
    model.meta.rows = None
    pd.testing.assert_frame_equal(exact, vantrel.sample(model, 500, seed=2))


def test_a_file_of_the_old_schema_loads_and_samples_as_it_did(real: pd.DataFrame) -> None:
    model = fitted(real)
    old = json.loads(dumps(model))
    del old["rows"]
    old["schema_version"] = 1
    exact = vantrel.sample(model, 500, seed=2, exact=True)
    pd.testing.assert_frame_equal(exact, vantrel.sample(loads(json.dumps(old)), 500, seed=2))


@pytest.mark.parametrize("min_count", [1, 5, 50])
def test_nothing_is_kept_of_what_fewer_rows_have(real: pd.DataFrame, min_count: int) -> None:
    rare = pd.DataFrame(
        {
            "sex": ["male", "secret one", "secret two"],
            "title": ["Mr John Smith, ill", "Mr", "Sir"],
            "land": ["GB", "Norway", "Sweden"],
        }
    )
    content = dumps(fitted(pd.concat([real, rare], ignore_index=True), min_count=min_count))
    for value in ("secret one", "secret two", "Sir", "Norway", "Sweden"):
        assert (f'"{value}"' in content) == (min_count == 1)
    assert "ill" not in content.replace("null", "")
    rows = loads(content).meta.rows
    coarse = [count for *cells, count in rows.combinations if cells != [form.ANY] * 4]
    assert min(coarse) >= min_count


def test_rare_combinations_are_drawn_by_coarser_counts() -> None:
    df = pd.DataFrame({"sex": ["m", "f"] * 300, "land": ["DE", "FR", "GB"] * 200})
    df["surname"] = [None if row % 149 == 0 else "x" for row in range(600)]  # five gaps, all rare
    people = vantrel.sample(fitted(df), 30_000, seed=1)
    assert people["surname"].isna().mean() == pytest.approx(5 / 600, abs=0.003)
    assert people["sex"].value_counts(normalize=True)["m"] == pytest.approx(0.5, abs=0.02)


def test_too_many_combinations_become_coarser(
    real: pd.DataFrame, monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.setattr(learning, "MOST_COMBINATIONS", 10)
    model = fitted(real)
    assert len(model.meta.rows.combinations) == 11
    assert any(
        note.startswith("There are more than 20,000 combinations") for note in model.meta.notes
    )
    people = vantrel.sample(model, ROWS, seed=1)
    assert excess(real, people, ["land"]) < BOUND


def test_conditions_that_are_missing_or_unknown_stand_for_themselves(real: pd.DataFrame) -> None:
    given = pd.DataFrame(
        {
            "sex": ["F", None, "zz", "Female"],
            "land": ["FR", "SE", None, "Atlantis"],
            "id": [7, 8, 9, 10],
        },
        index=list("abcd"),
    )
    people = vantrel.sample(fitted(real), conditions=given, seed=1)
    assert list(people.index) == list("abcd")
    assert people["id"].tolist() == [7, 8, 9, 10]
    assert people["sex"].fillna("-").tolist() == ["F", "-", "zz", "female"]
    assert people["land"].fillna("-").tolist() == ["FR", "SE", "-", "Atlantis"]
    assert people["title"].iloc[0] in ("Mme", "Dr") or pd.isna(people["title"].iloc[0])


def test_strict_refuses_countries_that_are_none(real: pd.DataFrame) -> None:
    with pytest.raises(SamplingError) as caught:
        vantrel.sample(fitted(real), 5, strict=True)
    assert str(caught.value) == (
        "Column 'land' of the fitted table has 1 value that is neither a country nor a locale: leave"
        " strict=True out to give these people names from the other countries."
    )


def test_a_column_of_rare_values_alone_is_refused() -> None:
    df = pd.DataFrame({"sex": ["m"] * 4, "land": ["DE", "FR", "GB", "US"]})
    with pytest.raises(FittingError) as caught:
        fitted(df)
    assert str(caught.value) == (
        "Column 'land' has no value in 5 rows or more, and rarer ones are not kept: leave it out,"
        " ignore=['land'], or keep what is rare, with min_count=1."
    )


def test_a_column_of_rare_titles_that_tell_no_gender_is_refused() -> None:
    df = pd.DataFrame({"sex": ["m"] * 6, "title": [f"Mr {name}, ill" for name in "ABCDEF"]})
    with pytest.raises(FittingError) as caught:
        fitted(df, min_count=1)
    assert str(caught.value) == (
        "Column 'title' has no value in 5 rows or more, and rarer ones are not kept: leave it out,"
        " ignore=['title'], or set patterns in config=... that understand it."
    )


@pytest.mark.parametrize("min_count", [0, -1, 2.5, True, None])
def test_min_count_is_a_number_of_rows(real: pd.DataFrame, min_count: object) -> None:
    with pytest.raises(ArgumentError) as caught:
        fitted(real, min_count=min_count)
    assert str(caught.value) == f"'min_count' is an integer from 1 on, not {min_count!r}."


def test_counts_of_a_file_and_of_a_frame_give_the_same_model(
    real: pd.DataFrame, tmp_path: Path
) -> None:
    real.to_csv(tmp_path / "t.csv", index=False)
    from vantrel.tables import open_table

    with open_table(tmp_path / "t.csv") as table:
        columns: dict[str, Any] = {"gender": "sex", "title": "title", "lastname": "surname"}
        counted = vantrel.fit(table, detect=False, country="land", email="mail", **columns)
    assert dumps(counted) == dumps(fitted(real))

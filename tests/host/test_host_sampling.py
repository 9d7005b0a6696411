"""Samples of tables that lack some countries."""

import pandas as pd
import pytest

from vantrel.config import PersonLabels
from vantrel.metadata.value import Person
from vantrel.model.models.person import PersonModel
from vantrel.sampling import sample_people


def fitted(people: pd.DataFrame) -> PersonModel:
    labels = PersonLabels(gender="sex", lastname="surname", country="land")
    return PersonModel(meta=Person("person", labels)).fit(people)


def test_countries_are_missing_as_often_as_in_the_table(people: pd.DataFrame) -> None:
    people.loc[:19, "land"] = None
    sample = sample_people(fitted(people), 5_000)
    assert abs(sample["land"].isna().mean() - 0.4) < 0.04
    assert set(sample["land"].dropna()) == {"GB", "US", "DE"}
    assert sample["surname"].notna().all()
    assert list(sample.index) == list(range(5_000))
    assert list(sample) == ["land", "surname", "sex"]


def test_a_table_that_lacks_none_gives_samples_that_lack_none(people: pd.DataFrame) -> None:
    assert sample_people(fitted(people), 200)["land"].notna().all()


@pytest.mark.parametrize(
    ("genders", "countries", "expected"),
    [(0.2, 0.2, 0.2), (0.2, 0.5, 0.5), (0.5, 0.2, 0.5), (0.0, 0.3, 0.3), (0.3, 0.0, 0.3)],
)
def test_blank_rows_count_among_those_without_a_country(
    genders: float, countries: float, expected: float
) -> None:
    people = pd.DataFrame({"sex": ["m", "f"] * 50, "surname": "A", "land": "GB"})
    people.loc[: round(100 * genders) - 1, "sex"] = None
    people.loc[100 - round(100 * countries) :, "land"] = None
    sample = sample_people(fitted(people), 5_000)
    assert abs(sample["sex"].isna().mean() - genders) < 0.04
    assert abs(sample["land"].isna().mean() - expected) < 0.04


def test_with_given_genders_no_row_is_blank(people: pd.DataFrame) -> None:
    people.loc[:19, "sex"] = None
    people.loc[:19, "land"] = None
    given = pd.DataFrame({"sex": ["m"] * 5_000})
    sample = sample_people(fitted(people), conditions=given)
    assert sample["surname"].notna().all()
    assert abs(sample["land"].isna().mean() - 0.4) < 0.04


def test_missing_genders_leave_the_whole_person_out(people: pd.DataFrame) -> None:
    people.loc[:19, ["sex", "land"]] = None
    sample = sample_people(fitted(people), 500)
    blank = sample["sex"].isna()
    assert 0 < blank.sum() < 500
    assert sample[blank].isna().all(axis=None)


def test_a_gender_that_bears_no_title_has_a_missing_one() -> None:
    people = pd.DataFrame({"sex": ["m", "f", "nb"] * 20, "form": ["Mr", "Mrs", None] * 20})
    labels = PersonLabels(gender="sex", title="form")
    model = PersonModel(meta=Person("person", labels)).fit(people)
    sample = sample_people(model, 300)
    assert set(sample["form"].dropna()) == {"Mr", "Mrs"}
    assert sample["form"].isna().equals(sample["sex"] == "nb")


def test_no_rows(people: pd.DataFrame) -> None:
    people.loc[0, "land"] = None
    assert sample_people(fitted(people), 0).shape == (0, 3)

"""Samples of tables that lack some countries."""

import pandas as pd

from vantrel.config import PersonLabels
from vantrel.metadata.value import Person
from vantrel.model.models.person import PersonModel
from vantrel.sampling import sample_people


def fitted(people: pd.DataFrame) -> PersonModel:
    labels = PersonLabels(gender="sex", lastname="surname", country="land")
    return PersonModel(meta=Person("person", labels)).fit(people)


def test_countries_are_missing_as_often_as_in_the_table(people: pd.DataFrame) -> None:
    people.loc[:3, "land"] = None
    sample = sample_people(fitted(people), 5_000)
    assert abs(sample["land"].isna().mean() - 0.4) < 0.04
    assert set(sample["land"].dropna()) == {"GB", "US", "DE"}
    assert sample["surname"].notna().all()
    assert list(sample.index) == list(range(5_000))
    assert list(sample) == ["land", "surname", "sex"]


def test_a_table_that_lacks_none_gives_samples_that_lack_none(people: pd.DataFrame) -> None:
    assert sample_people(fitted(people), 200)["land"].notna().all()


def test_missing_genders_leave_the_whole_person_out(people: pd.DataFrame) -> None:
    people.loc[:3, ["sex", "land"]] = None
    sample = sample_people(fitted(people), 500)
    blank = sample["sex"].isna()
    assert 0 < blank.sum() < 500
    assert sample[blank].isna().all(axis=None)


def test_no_rows(people: pd.DataFrame) -> None:
    people.loc[0, "land"] = None
    assert sample_people(fitted(people), 0).shape == (0, 3)

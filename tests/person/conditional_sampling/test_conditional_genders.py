"""The gender and title columns, which agree with the gender keys."""

import pandas as pd
import pytest

from support import readings_sampling as readings
from support.comparing import assert_same_outcome
from support.conditional_sampling import (
    CONFIG,
    countries,
    genders,
    model_of,
    noting_model,
    only,
    sampled,
    without,
)
from support.people import ALL_LABELS
from support.recording import Calls
from vantrel.config import PersonModelConfig
from vantrel.model.models import person
from vantrel.model.models.person import GenderModel


@pytest.mark.parametrize("column", ["gender", "title"])
def test_collections_are_asked_for_by_keyword_with_the_patterns_in_order(
    monkeypatch: pytest.MonkeyPatch, column: str
) -> None:
    calls = Calls()
    model = model_of(only(column))
    monkeypatch.setattr(
        person, "collections_from_mapping", calls.recorder("sort", lambda **_: {"F": ["v"]})
    )
    sampled(model, 1, gender_conditions=genders(1, ["F"]))
    [(_, args, keywords)] = calls
    assert args == ()
    assert list(keywords) == ["seq", "mapping", "ambiguous_key"]
    assert keywords["seq"] is model.meta[column].categories
    assert list(keywords["mapping"].items()) == [
        ("F", getattr(CONFIG, f"{column}_female_regex")),
        ("M", getattr(CONFIG, f"{column}_male_regex")),
        ("NB", getattr(CONFIG, f"{column}_non_binary_regex")),
    ]
    assert keywords["ambiguous_key"] == "A"


@pytest.mark.parametrize("column", ["gender", "title"])
def test_values_are_made_of_the_utilitys_very_collections(
    monkeypatch: pytest.MonkeyPatch, column: str
) -> None:
    calls = Calls()
    model = noting_model(calls, only(column))
    collections = {"F": ["v"]}
    monkeypatch.setattr(person, "collections_from_mapping", lambda **_: collections)
    gender = genders(2, ["F"])
    made = sampled(model, 2, gender_conditions=gender)
    assert made[column].tolist() == ["v", "v"]
    assert calls[0][2]["conditions"] is gender
    assert calls[0][2]["collections"] is collections


@pytest.mark.parametrize(
    ("attribute", "position"),
    [("key_female", 0), ("key_male", 1), ("key_non_binary", 2), ("key_ambiguous", 3)],
)
def test_the_keys_are_those_of_the_gender_model_when_sampling(
    monkeypatch: pytest.MonkeyPatch, attribute: str, position: int
) -> None:
    calls = Calls()
    model = model_of(only("gender"))
    monkeypatch.setattr(GenderModel, attribute, "Z")
    monkeypatch.setattr(person, "collections_from_mapping", calls.recorder("sort", lambda **_: {}))
    sampled(model, 1, gender_conditions=genders(1, [None]))
    keywords = calls[0][2]
    assert [*keywords["mapping"], keywords["ambiguous_key"]][position] == "Z"


def test_the_config_is_read_when_sampling() -> None:
    model = model_of(only("gender"))
    model.config = PersonModelConfig(gender_female_regex="^nb$")
    made = sampled(model, 3, gender_conditions=genders(3, ["F"]))
    # "nb" is now claimed by two patterns, and so is no longer a value for women.
    assert made["gender"].isna().all()


def test_a_title_that_is_the_ambiguous_key_becomes_one_of_the_three_keys() -> None:
    config = PersonModelConfig(title_female_regex="^A$")
    model = model_of(only("title"), config)
    model.meta["title"]._categories = ["A"]
    made = sampled(model, 200, gender_conditions=genders(200, ["F"]))
    assert set(made["title"]) == {"F", "M", "NB"}


def test_such_a_title_is_drawn_by_the_standard_random_module(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    calls = Calls()
    model = model_of(without("email"), PersonModelConfig(title_female_regex="^A$"))
    model.meta["title"]._categories = ["A", "Mr"]

    class Random:
        choice = staticmethod(calls.recorder("choice", lambda values: values[-1]))
        randint = staticmethod(lambda low, high: high)

    model.generate_passwords = lambda firstnames: pd.Series(["p"] * 4)
    monkeypatch.setattr(person, "random", Random)
    made = sampled(model, 4, gender_conditions=genders(4, ["F", "M"]))
    assert made["title"].tolist() == ["NB", "Mr", "NB", "Mr"]
    assert calls == [("choice", (["F", "M", "NB"],), {})] * 2


def test_titles_of_the_ambiguous_key_equal_the_reading() -> None:
    model = model_of(ALL_LABELS, PersonModelConfig(title_female_regex="^A$"))
    model.meta["title"]._categories = ["A", "Mr"]
    given = (40, genders(40), countries(40))
    assert_same_outcome(
        lambda: model._sample_conditional(*given),
        lambda: readings.sample_conditional(model, *given),
        7,
        model,
    )


def test_any_other_title_is_kept() -> None:
    model = model_of(only("title"))
    made = sampled(model, 12, gender_conditions=genders(12, ["F", "M", "NB", "A"]))
    assert made["title"].tolist() == ["Mrs", "Mr", "Mx", "Dr"] * 3


def test_the_compared_key_is_that_of_the_class_when_sampling(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    model = model_of(only("title"))
    monkeypatch.setattr(GenderModel, "key_ambiguous", "Mrs")
    made = sampled(model, 100, gender_conditions=genders(100, ["F"]))
    assert set(made["title"]) == {"F", "M", "NB"}


def test_a_gender_that_is_the_ambiguous_key_is_kept() -> None:
    model = model_of(only("gender"), PersonModelConfig(gender_female_regex="^A$"))
    model.meta["gender"]._categories = ["A"]
    made = sampled(model, 5, gender_conditions=genders(5, ["F"]))
    assert made["gender"].tolist() == ["A"] * 5


def test_genders_agree_with_their_keys() -> None:
    made = sampled(model_of(only("gender")), 6, gender_conditions=genders(6, ["F", "M", "NB"]))
    assert made["gender"].tolist() == ["female", "male", "nb"] * 2

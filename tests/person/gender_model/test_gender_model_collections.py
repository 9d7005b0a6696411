"""The collections and categories of a gender model."""

from typing import Any

import pytest

from support import readings_sampling as readings
from support.examples import EXAMPLES
from support.gender_models import TITLES, model_of
from support.recording import Calls
from vantrel.config import PersonModelConfig
from vantrel.metadata import MetaNotExtractedError
from vantrel.metadata.value import String
from vantrel.model.models import person
from vantrel.model.models.person import GenderModel
from vantrel.tables import read_table


def test_collections_sort_the_categories_of_the_meta() -> None:
    collections = model_of(TITLES).collections
    sorted_ = [("F", ["Ms"]), ("M", ["Mr"]), ("NB", ["Mx"]), ("A", ["Mrs"])]
    assert list(collections.items()) == sorted_


def test_mrs_is_ambiguous_by_default_since_the_male_pattern_lets_one_more_letter_follow() -> None:
    assert model_of(["Mrs"]).collections == {"A": ["Mrs"]}


def test_a_category_of_several_patterns_is_ambiguous_and_nothing_else() -> None:
    config = PersonModelConfig()
    model = model_of(
        ["Mrs", "Dr", "Mr"],
        regex_female=config.title_female_regex,
        regex_male=config.title_male_regex,
    )
    assert model.collections == {"F": ["Mrs"], "M": ["Mr"], "A": ["Dr"]}


def test_an_empty_collection_is_absent_from_collections() -> None:
    assert "NB" not in model_of(["Ms", "Mr"]).collections


def test_the_key_of_an_empty_collection_is_absent_from_categories() -> None:
    assert model_of(["Mr", "Ms"]).categories == ["F", "M"]


def test_no_category_at_all_gives_no_collection() -> None:
    assert model_of([]).collections == {}
    assert model_of([]).categories == []


def test_collections_call_the_utility_with_three_positional_arguments(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    calls = Calls()
    monkeypatch.setattr(person, "collections_from_mapping", calls.recorder("sort", lambda *_: {}))
    model = model_of(TITLES, regex_female="f", regex_male="m", regex_non_binary="n")
    assert model.collections == {}
    [(_, (categories, mapping, ambiguous_key), keywords)] = calls
    assert categories is model.meta.categories
    assert list(mapping.items()) == [("F", "f"), ("M", "m"), ("NB", "n")]
    assert ambiguous_key == "A"
    assert keywords == {}


def test_collections_keep_the_order_and_the_lists_of_the_utility(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    sorted_ = {"A": ["a"], "NB": [], "X": ["x", "y"], "F": ["f"]}
    monkeypatch.setattr(person, "collections_from_mapping", lambda *_: sorted_)
    collections = model_of(TITLES).collections
    assert list(collections) == ["A", "X", "F"]
    assert collections["X"] is sorted_["X"]


def test_collections_are_a_new_dict_on_each_read() -> None:
    model = model_of(TITLES)
    assert model.collections == model.collections
    assert model.collections is not model.collections


def test_collections_follow_a_changed_pattern() -> None:
    model = model_of(TITLES)
    model.regex_male = "^dr$"
    assert model.collections["M"] == ["Dr"]


def test_keys_of_a_subclass_are_honoured() -> None:
    class German(GenderModel):
        key_female = "W"
        key_ambiguous = "U"

    model = German(String("title", categories=["Mrs", "Mr", "Dr"]), "^(mrs|dr)$", "^(mr|dr)$")
    assert model.collections == {"W": ["Mrs"], "M": ["Mr"], "U": ["Dr"]}


def test_keys_and_patterns_of_an_instance_are_honoured() -> None:
    model = model_of(TITLES)
    model.key_non_binary = "D"
    model.regex_non_binary = "^(mx|dr)$"
    assert model.collections["D"] == ["Mx", "Dr"]


def test_collections_read_keys_patterns_and_categories_in_order() -> None:
    read = []

    class Noting(GenderModel):
        def __getattribute__(self, name: str) -> Any:
            read.append(name)
            return super().__getattribute__(name)

    model = Noting(String("title", categories=TITLES))
    read.clear()
    assert model.collections
    mapping = ["key_female", "regex_female", "key_male", "regex_male"]
    mapping += ["key_non_binary", "regex_non_binary"]
    assert [name for name in read if not name.startswith("_")] == [
        *["collections", *mapping],
        *["meta", "key_ambiguous"],
    ]


def test_categories_read_collections_through_the_instance() -> None:
    class Fixed(GenderModel):
        @property
        def collections(self) -> dict[str, list[str]]:
            return {"NB": ["x"], "F": []}

    assert Fixed(String("title")).categories == ["NB", "F"]


def test_a_utility_that_gives_none_fails_as_reading_its_items(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    monkeypatch.setattr(person, "collections_from_mapping", lambda *_: None)
    with pytest.raises(AttributeError) as caught:
        _ = model_of(TITLES).collections
    assert str(caught.value) == "'NoneType' object has no attribute 'items'"


@pytest.mark.parametrize("name", ["collections", "categories"])
def test_before_extraction_reading_raises_what_the_meta_raises(name: str) -> None:
    with pytest.raises(MetaNotExtractedError) as caught:
        getattr(model_of(), name)
    assert str(caught.value) == (
        "The categories of column 'title' are not known yet: call extract first."
    )


@pytest.mark.parametrize("name", ["collections", "categories"])
def test_collections_and_categories_are_read_only(name: str) -> None:
    with pytest.raises(AttributeError) as caught:
        setattr(model_of(TITLES), name, {})
    assert str(caught.value) == f"property {name!r} of 'GenderModel' object has no setter"


def test_collections_of_real_titles_equal_the_reading() -> None:
    titles = read_table(EXAMPLES / "passengers.csv")["title"].unique().tolist()
    config = PersonModelConfig()
    model = model_of(
        titles,
        regex_female=config.title_female_regex,
        regex_male=config.title_male_regex,
        regex_non_binary=config.title_non_binary_regex,
    )
    assert list(model.collections.items()) == list(readings.gender_collections(model).items())
    assert model.categories == readings.gender_categories(model)
    assert {"F", "M", "A"} <= set(model.collections)

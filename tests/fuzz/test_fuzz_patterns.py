"""Patterns of any kind, of which many cannot be compiled."""

import re
from typing import Any

import pandas as pd
from hypothesis import given
from hypothesis import strategies as st

from support.fuzzing import any_text, fuzz, odd_values, outcome, telling
from support.people import people, person_model
from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.metadata.value import String
from vantrel.model.models.person import GenderModel

# A pattern is no regular expression, or a repeat in it is too large.
NO_PATTERN = (re.error, OverflowError)

patterns = st.one_of(
    st.text(r"()[]{}*+?|\^$.,-:=!<>P#'abmfsx019 ", max_size=10),
    st.lists(
        st.sampled_from(
            ["(", ")", "(?:", "[", "]", "{2}", "{,3}", "*", "+", "|", "^", "$", "m", "."]
        )
    ).map("".join),
    any_text,
)
categories = st.lists(st.one_of(telling, any_text), max_size=5, unique=True)


@fuzz
@given(categories, patterns, patterns, patterns)
def test_collections(values: list[str], female: str, male: str, neither: str) -> None:
    model = GenderModel(String("sex", categories=values), female, male, neither)
    found = outcome(lambda: model.collections, *NO_PATTERN)
    if found is not None:
        assert set(found) <= {"F", "M", "NB", "A"}
        assert model.categories == list(found)
        sorted_in = [value for collection in found.values() for value in collection]
        assert len(sorted_in) == len(set(sorted_in))
        assert set(sorted_in) <= set(values)
        assert all(found.values())


@fuzz
@given(st.tuples(odd_values, odd_values, odd_values))
def test_patterns_that_are_no_texts(given_patterns: tuple[Any, Any, Any]) -> None:
    model = outcome(lambda: GenderModel(String("sex"), *given_patterns), TypeError)
    assert (model is not None) == all(type(pattern) is str for pattern in given_patterns)


@fuzz
@given(patterns, patterns)
def test_fitting_and_sampling(female: str, male: str) -> None:
    config = PersonModelConfig(gender_female_regex=female, gender_male_regex=male)
    model = person_model(PersonLabels(gender="gender", title="title"), config)
    # Nothing is understood as a gender.
    fitted = outcome(lambda: model.fit(people()), *NO_PATTERN, ValueError)
    if fitted is not None:
        assert list(model.sample(n=2)) == ["gender", "title"]


@fuzz
@given(st.lists(st.one_of(telling, any_text, odd_values), max_size=5), patterns, patterns)
def test_gender_keys(values: list[Any], female: str, male: str) -> None:
    model = person_model()
    column = pd.Series(values, dtype="object")
    mapping = {"F": female, "M": male}
    # A value cannot be looked up: it is unhashable.
    keys = outcome(lambda: model.map_to_gender_keys(column, mapping), *NO_PATTERN, TypeError)
    if keys is not None:
        assert len(keys) <= len(values)
        assert set(keys) <= {"F", "M", "A"}

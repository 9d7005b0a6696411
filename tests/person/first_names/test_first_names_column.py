"""A column of first names: drawn for a gender key and a country each."""

from typing import Any

import numpy as np
import pandas as pd
import pytest
from hypothesis import given
from hypothesis import strategies as st

from support import readings_generators as readings
from support.comparing import assert_same_outcome
from support.first_names import KEYS, assert_reads_alike, genders_of
from support.providers import KINDS, LOCALES, StandInFaker, countries_of, model_of_kind, model_with
from support.sources import seed_sources, source_states


@pytest.mark.parametrize("rows", [0, 1, 2, 300])
@pytest.mark.parametrize("kind", KINDS)
@pytest.mark.parametrize("seed", [0, 2026])
def test_a_column_is_drawn_as_the_reading_draws_it(kind: str, rows: int, seed: int) -> None:
    model = model_of_kind(kind)
    names = assert_reads_alike(model, genders_of(rows), countries_of(model, rows), seed)
    assert len(names) == rows


@pytest.mark.parametrize("locale", LOCALES)
@pytest.mark.parametrize("kind", ["shared", "separate"])
def test_a_column_of_one_locale_is_drawn_as_the_reading_draws_it(kind: str, locale: str) -> None:
    names = assert_reads_alike(model_of_kind(kind), genders_of(40), pd.Series([locale] * 40))
    assert {type(name) for name in names} == {str}


def test_seeds_decide_the_names() -> None:
    model = model_of_kind("separate")
    columns = [
        tuple(assert_reads_alike(model, genders_of(30), countries_of(model, 30), seed))
        for seed in (3, 4)
    ]
    assert columns[0] != columns[1]


@pytest.mark.parametrize("dtype", ["object", "str", "string", "category"])
def test_the_columns_may_have_any_dtype(dtype: str) -> None:
    model = model_of_kind("shared")
    genders = pd.Series(["F", "M", None, "NB"] * 10, dtype=dtype)
    countries = countries_of(model, 40).astype(dtype)
    assert assert_reads_alike(model, genders, countries) is not None


def test_series_of_lengths_5_and_3_give_3_names() -> None:
    model = model_of_kind("shared")
    names = assert_reads_alike(model, genders_of(5), countries_of(model, 3))
    assert list(names.index) == [0, 1, 2]


def test_series_of_lengths_3_and_5_give_3_names() -> None:
    model = model_of_kind("shared")
    names = assert_reads_alike(model, genders_of(3), countries_of(model, 5))
    assert list(names.index) == [0, 1, 2]


def test_empty_series_give_an_empty_series() -> None:
    model = model_of_kind("shared")
    names = assert_reads_alike(model, pd.Series([], dtype="object"), countries_of(model, 0))
    assert isinstance(names, pd.Series)
    assert names.empty


def test_pairs_go_by_position_and_the_result_has_its_own_index() -> None:
    faker = StandInFaker()
    model = model_with({"GB": faker, "US": StandInFaker("us ", faker.calls)})
    genders = pd.Series(["F", "M", "NB"], index=[2, 0, 1], name="g")
    countries = pd.Series(["GB", "US", "GB"], index=["a", "b", "c"], name="c")
    names = model.generate_first_names(genders, countries)
    assert list(names) == ["female1", "us male2", "first3"]
    assert type(names.index) is pd.RangeIndex
    assert list(names.index) == [0, 1, 2]
    assert names.name is None


def test_missing_genders_give_names_and_not_missing_values() -> None:
    model = model_of_kind("shared")
    genders = pd.Series([None, pd.NA, float("nan")], dtype="object")
    names = assert_reads_alike(model, genders, countries_of(model, 3))
    assert names.notna().all()


@pytest.mark.parametrize(
    ("genders", "countries"),
    [
        (["F", "M", "X", "F"], ["en_GB", "de_DE", "en_GB", "fr_FR"]),
        (["F", "M", "F", "F"], ["en_GB", "de_DE", "Atlantis", "fr_FR"]),
        (["F", "M", "F", "F"], ["en_GB", "de_DE", np.str_("en_GB"), "fr_FR"]),
        (["F", "M", "F", "F"], ["en_GB", "de_DE", None, "fr_FR"]),
    ],
    ids=["gender X", "unknown country", "numpy string", "no country"],
)
@pytest.mark.parametrize("kind", ["shared", "separate"])
def test_the_first_failing_pair_ends_the_column_where_the_draws_before_it_end(
    kind: str, genders: list[str], countries: list[Any]
) -> None:
    model = model_of_kind(kind)
    before = pd.Series(genders[:2]), pd.Series(countries[:2], dtype="object")
    seed_sources(7, model)
    with pytest.raises((ValueError, KeyError, TypeError)):
        model.generate_first_names(pd.Series(genders), pd.Series(countries, dtype="object"))
    states = source_states(model)
    seed_sources(7, model)
    readings.first_names(model, *before)
    assert states == source_states(model)


def test_a_country_that_is_missing_in_a_column_is_refused_as_in_a_single_call() -> None:
    model = model_of_kind("shared")
    countries = pd.Series(["en_GB", float("nan")], dtype="object")
    with pytest.raises(TypeError) as caught:
        model.generate_first_names(pd.Series(["F", "F"]), countries)
    assert str(caught.value) == "Argument 'country' has incorrect type (expected str, got float)"


def test_any_iterables_are_paired_and_the_longer_first_gives_one_element_more() -> None:
    genders = iter(["F", "M", "A", "NB"])
    countries = iter(["GB", "GB"])
    names = model_with({"GB": StandInFaker()}).generate_first_names(genders, countries)
    assert list(names) == ["female1", "male2"]
    assert list(genders) == ["NB"]


@given(
    keys=st.lists(st.sampled_from([*KEYS, "X"]), max_size=12),
    countries=st.lists(st.sampled_from([*LOCALES, "Atlantis"]), max_size=12),
    seed=st.integers(0, 2**32 - 1),
)
def test_any_columns_are_drawn_as_the_reading_draws_them(
    keys: list[Any], countries: list[str], seed: int
) -> None:
    genders = pd.Series(keys, dtype="object")
    assert_reads_alike(model_of_kind("shared"), genders, pd.Series(countries, dtype="object"), seed)


def test_the_arguments_are_taken_by_keyword_too() -> None:
    model = model_of_kind("separate")
    genders, countries = genders_of(7), countries_of(model, 7)
    names = assert_same_outcome(
        lambda: model.generate_first_names(country_conditions=countries, gender_conditions=genders),
        lambda: readings.first_names(model, genders, countries),
        1,
        model,
    )
    assert len(names) == 7

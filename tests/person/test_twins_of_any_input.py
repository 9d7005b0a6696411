"""Whole columns against single calls: tables, templates and names that Hypothesis makes up."""

import random
from collections import OrderedDict
from typing import Any

import numpy as np
import pandas as pd
import pytest
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

from support.twins import TEXT_DTYPES, same_both_ways
from support.whole_columns import (
    COUNTRIES,
    model_after_use,
    model_with,
    new_fakers,
    provider,
    usual_model,
)
from vantrel.model.models.person import PersonModel

few = settings(
    max_examples=40,
    suppress_health_check=[HealthCheck.too_slow, HealthCheck.function_scoped_fixture],
)

seeds = st.integers(0, 2**32 - 1)
texts = st.text(max_size=6)
# Older versions of pandas never end to number names that are equal up to a NUL.
texts_without_nul = st.text(
    st.characters(exclude_characters="\0", exclude_categories=["Cs"]), max_size=6
)
# Few letters make many clashes.
close_names = st.text("aAbß ΣİI.-_1\u00a0\u0301", max_size=3)
odd = st.sampled_from([None, float("nan"), pd.NA, np.str_("F"), np.str_("GB"), 5, "X", "XX"])
keys = st.sampled_from(["F", "M", "NB", "A"])
countries = st.sampled_from(COUNTRIES)
dtypes = st.sampled_from(sorted(TEXT_DTYPES))


def mostly(usual: st.SearchStrategy[Any]) -> st.SearchStrategy[Any]:
    return st.one_of(usual, usual, usual, usual, usual, usual, odd)


@st.composite
def rows(draw: st.DrawFn, *columns: st.SearchStrategy[Any]) -> list[pd.Series]:
    """Series of one length, each with the same index."""
    made = draw(st.lists(st.tuples(*columns), max_size=25))
    start = draw(st.sampled_from([0, 0, 3]))
    index = range(start, start + len(made))
    return [
        pd.Series([row[i] for row in made], index=index, dtype="object")
        for i in range(len(columns))
    ]


@few
@given(rows(mostly(keys), mostly(countries)), seeds)
def test_first_names(table: list[pd.Series], seed: int) -> None:
    model = usual_model()
    same_both_ways(lambda: model.generate_first_names(*table), model, seed)


@few
@given(rows(mostly(texts), mostly(countries)), seeds)
def test_last_names(table: list[pd.Series], seed: int) -> None:
    model = usual_model()
    same_both_ways(lambda: model.generate_last_names(*table), model, seed)


@few
@given(rows(close_names, close_names, mostly(countries)), seeds)
def test_emails(table: list[pd.Series], seed: int) -> None:
    model = usual_model()
    same_both_ways(lambda: model.generate_emails(*table), model, seed)


@few
@given(rows(close_names, close_names), dtypes, dtypes, seeds)
def test_usernames(table: list[pd.Series], first: str, last: str, seed: int) -> None:
    firstnames, lastnames = TEXT_DTYPES[first](list(table[0])), TEXT_DTYPES[last](list(table[1]))
    same_both_ways(lambda: PersonModel.generate_usernames(firstnames, lastnames), None, seed)


@few
@given(
    st.lists(texts_without_nul, max_size=12),
    st.lists(texts_without_nul, min_size=12, max_size=12),
    seeds,
)
def test_usernames_of_any_letters(first: list[str], last: list[str], seed: int) -> None:
    firstnames = pd.Series(first, dtype="object")
    lastnames = pd.Series(last[: len(first)], dtype="object")
    same_both_ways(lambda: PersonModel.generate_usernames(firstnames, lastnames), None, seed)


@few
@given(st.integers(0, 30), st.integers(-5, 40), st.integers(-5, 40), seeds)
def test_passwords(number: int, shortest: int, longest: int, seed: int) -> None:
    model = model_with(usual_model().country_to_provider_map)
    model.__dict__["pwd_length"] = (shortest, longest)
    same_both_ways(lambda: model.generate_passwords(range(number)), model, seed)


@few
@given(
    st.lists(st.sampled_from([True, False, 0, None, "a", 2.5]), max_size=30),
    st.one_of(st.text("x X+0é", max_size=20), texts),
    seeds,
)
def test_phone_numbers(isna: list[Any], number_format: str, seed: int) -> None:
    flags = pd.Series(isna, dtype="object")
    same_both_ways(lambda: PersonModel.generate_phone_numbers(flags, number_format), None, seed)


collections = st.dictionaries(
    st.sampled_from(["F", "M", "NB", "A", "nan", "<NA>", "None"]),
    st.lists(st.one_of(texts, texts, texts, st.integers(), st.none()), max_size=5),
)


@few
@given(rows(mostly(keys)), collections, dtypes, seeds)
def test_values_from_collections(
    table: list[pd.Series], given_collections: dict[str, Any], dtype: str, seed: int
) -> None:
    model = usual_model()
    same_both_ways(
        lambda: model.generate_values_from_collections(table[0], given_collections), model, seed
    )


patterns = st.dictionaries(
    st.sampled_from(["F", "M", "NB"]), st.sampled_from([".", "a", "^b", "$"])
)


@few
@given(st.lists(st.one_of(close_names, odd), max_size=25), patterns, seeds)
def test_gender_keys(values: list[Any], mapping: dict[str, str], seed: int) -> None:
    model = usual_model()
    column = pd.Series(values, dtype="object")
    same_both_ways(lambda: model.map_to_gender_keys(column, mapping), model, seed)


@few
@given(rows(mostly(keys), mostly(countries)), st.booleans(), seeds)
def test_whole_tables(table: list[pd.Series], produce_nans: bool, seed: int) -> None:
    model = usual_model()
    genders, places = table
    same_both_ways(
        lambda: model._sample_conditional(len(genders), genders, places, produce_nans), model, seed
    )


weights = st.one_of(
    st.floats(0, 10), st.integers(0, 5), st.floats(allow_nan=False), st.sampled_from([0, 1e300])
)
name_tables = st.one_of(
    st.lists(texts, max_size=6),
    st.lists(texts, max_size=6).map(tuple),
    st.lists(st.tuples(texts, weights), max_size=6),
)


@few
@given(name_tables, st.sampled_from(["first_names", "last_names", "first_names_male"]), seeds)
def test_name_tables(table: Any, place: str, seed: int) -> None:
    if table and isinstance(table[0], tuple):
        table = OrderedDict(table)
    model = model_with(new_fakers())
    setattr(provider(model, "person"), place, table)
    genders = pd.Series(["F", "M", "NB", "A"] * 3)
    places = pd.Series(["GB", "US", "GB"] * 4)
    same_both_ways(lambda: model.generate_first_names(genders, places), model, seed)
    same_both_ways(lambda: model.generate_last_names(genders, places), model, seed)


parts = st.sampled_from(
    ["{{last_name}}", "{{company_suffix}}", "{{first_name}}", "{{ last_name }}", " ", "-", "é", "A",
     "{{city}}", "{{", "}}", "{{last_name:x}}", "'", "李", "\u00a0", "&"]
)  # fmt: skip
formats = st.lists(st.lists(parts, max_size=5).map("".join), max_size=4)


@few
@given(formats, seeds)
def test_company_formats(given_formats: list[str], seed: int) -> None:
    model = model_after_use()
    provider(model, "company").formats = given_formats
    places = pd.Series(["GB", "US", "GB"] * 4)
    same_both_ways(lambda: model.generate_emails(places, places, places), model, seed)


@few
@given(
    st.lists(
        st.tuples(
            st.sampled_from(["first_names", "last_names", "emails", "table"]), st.integers(0, 9)
        ),
        max_size=6,
    ),
    seeds,
)
def test_one_column_after_another(steps: list[tuple[str, int]], seed: int) -> None:
    model = usual_model()

    def draw() -> list[Any]:
        made = []
        for step, number in steps:
            genders = pd.Series((["F", "M", None] * 4)[:number], dtype="object")
            places = pd.Series((list(COUNTRIES) * 4)[:number], dtype="object")
            if step == "first_names":
                made.append(model.generate_first_names(genders, places))
            elif step == "last_names":
                made.append(model.generate_last_names(genders, places))
            elif step == "emails":
                made.append(model.generate_emails(places, places, places))
            else:
                made.append(model.sample(number))
            made.append(random.gauss(0, 1))
            made.append(np.random.normal())
        return made

    same_both_ways(draw, model, seed)


@pytest.mark.parametrize("column", ["gender", "country"])
@few
@given(values=st.lists(st.one_of(keys, countries, texts, odd), max_size=12), seed=seeds)
def test_conditions(column: str, values: list[Any], seed: int) -> None:
    model = usual_model()
    conditions = pd.DataFrame({column: pd.Series(values, dtype="object")})
    same_both_ways(lambda: model.sample(conditions=conditions), model, seed)

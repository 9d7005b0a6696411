"""Genders and countries that are given row by row."""

import warnings
from collections.abc import Iterator
from itertools import product
from typing import Any

import pandas as pd
import pytest
from faker import Faker
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

from support.people import fitted_model
from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.errors import BorrowedNamesWarning, ConditionsError
from vantrel.hints import showing_values
from vantrel.model.models.person import PersonModel
from vantrel.sampling import Plan, prepare_conditions, refuse_borrowed, sample_blocks

LABELS = PersonLabels(gender="sex", title="title", firstname="first", country="land")


@pytest.fixture(autouse=True)
def values_are_shown() -> Iterator[None]:
    with showing_values(True):
        yield


def people() -> pd.DataFrame:
    return pd.DataFrame(
        {
            "sex": ["m", "f", "m", "f"],
            "title": ["Mr", "Mrs", "Mr", "Mrs"],
            "land": ["GB", "DE", "GB", "JP"],
        }
    )


@pytest.fixture
def model() -> PersonModel:
    return fitted_model(LABELS, people())


@pytest.fixture(scope="module")
def shared() -> PersonModel:
    """A model for what teaches it no countries."""
    return fitted_model(LABELS, people())


def sample(model: PersonModel, block_rows: int = 1_000, **columns: Any) -> pd.DataFrame:
    """Samples under conditions that are given column by column."""
    given = prepare_conditions(model, pd.DataFrame(columns))
    plan = Plan(len(given), 7, block_rows)
    return pd.concat(list(sample_blocks(model, plan, given)))


def refusal(model: PersonModel, table: pd.DataFrame) -> str:
    before = list(model.country_to_provider_map)
    with pytest.raises(ConditionsError) as caught:
        prepare_conditions(model, table)
    assert list(model.country_to_provider_map) == before
    return str(caught.value)


def cannot_place(problems: str) -> str:
    return (
        f"The conditions have values that the model cannot place: {problems}. Correct them or leave"
        " the rows out."
    )


# --- what is made


@given(
    st.lists(
        st.tuples(st.sampled_from("mf"), st.sampled_from(["GB", "DE", "JP"])),
        min_size=1,
        max_size=9,
    ),
    st.integers(1, 5),
)
@settings(max_examples=15,
          suppress_health_check=[HealthCheck.function_scoped_fixture])  # fmt: skip
def test_each_row_is_as_its_condition_whatever_the_blocks(
    shared: PersonModel, rows: list[tuple[str, str]], block_rows: int
) -> None:
    genders, countries = (list(column) for column in zip(*rows, strict=True))
    made = sample(shared, block_rows, sex=genders, land=countries)
    assert made["sex"].tolist() == genders
    assert made["land"].tolist() == countries
    assert made["title"].tolist() == [{"m": "Mr", "f": "Mrs"}[gender] for gender in genders]
    assert list(made) == ["sex", "title", "land", "first"]
    assert made.index.tolist() == list(range(len(rows)))


def test_names_are_of_the_rows_own_country(model: PersonModel) -> None:
    made = sample(model, 3, land=["JP", "GB"] * 10)
    assert [name.isascii() for name in made["first"]] == [False, True] * 10


def test_genders_alone(model: PersonModel) -> None:
    made = sample(model, 7, sex=["f", "f", "m"] * 20)
    assert made["sex"].tolist() == ["f", "f", "m"] * 20
    assert set(made["land"]) == {"GB", "DE", "JP"}


def test_countries_alone(model: PersonModel) -> None:
    made = sample(model, 7, land=["JP", "GB", "GB"] * 20)
    assert made["land"].tolist() == ["JP", "GB", "GB"] * 20
    assert set(made["sex"]) == {"m", "f"}


def test_missing_countries_stay_out_of_given_ones_and_come_into_drawn_ones() -> None:
    table = people()
    table.loc[0, "land"] = None
    model = fitted_model(LABELS, table)
    assert sample(model, land=["GB"] * 99)["land"].notna().all()
    assert 0 < sample(model, sex=["f"] * 99)["land"].isna().sum() < 99


def test_a_gender_may_be_spelled_otherwise_than_in_the_fitted_table(model: PersonModel) -> None:
    made = sample(model, sex=["female", "Male", "F", "m", "woman"])
    assert made["sex"].tolist() == ["f", "m", "f", "m", "f"]
    assert made["title"].tolist() == ["Mrs", "Mr", "Mrs", "Mr", "Mrs"]


def test_the_patterns_of_the_model_tell_the_genders() -> None:
    config = PersonModelConfig(gender_female_regex="^1$", gender_male_regex="^2$")
    model = fitted_model(PersonLabels(gender="sex"), pd.DataFrame({"sex": ["1", "2"]}), config)
    assert sample(model, sex=["2", "1"])["sex"].tolist() == ["2", "1"]
    assert refusal_of_genders(model, ["2", "f"]) == cannot_place("column 'sex' has 'f' in row 2")


def refusal_of_genders(model: PersonModel, genders: list[str]) -> str:
    with pytest.raises(ConditionsError) as caught:
        prepare_conditions(model, pd.DataFrame({"sex": genders}))
    return str(caught.value)


def test_countries_that_the_fit_did_not_see_are_taken_in(model: PersonModel) -> None:
    made = sample(model, 2, land=["Greece", "GB", "el_GR", "GRC", "GB"])
    assert made["land"].tolist() == ["Greece", "GB", "el_GR", "GRC", "GB"]
    assert [name.isascii() for name in made["first"]] == [False, True, False, False, True]


def test_a_new_country_without_names_of_its_own_is_told_of(model: PersonModel) -> None:
    with pytest.warns(BorrowedNamesWarning) as caught:
        prepare_conditions(model, pd.DataFrame({"land": ["GB", "NA"]}))
    assert [str(warning.message) for warning in caught] == [
        "Faker has no person names of its own for these; they get those of the locale in brackets:"
        " NA (en_GB)."
    ]


def test_other_columns_and_the_index_are_left_out(shared: PersonModel) -> None:
    table = pd.DataFrame({"x": [1, 2], "title": ["Mrs", "zz"], "land": ["GB", "DE"]}, index=[9, 9])
    prepared = prepare_conditions(shared, table)
    assert list(prepared) == ["land"]
    assert prepared.index.equals(pd.RangeIndex(2))
    assert list(table) == ["x", "title", "land"]


# --- what cannot be placed


@pytest.mark.parametrize(
    ("column", "values", "problem"),
    [
        ("sex", ["m", "zz"], "column 'sex' has 'zz' in row 2"),
        ("sex", ["zz", "m", "zz"], "column 'sex' has 'zz' in rows 1, 3"),
        ("sex", ["nb"], "column 'sex' has 'nb' in row 1"),  # understood, but none was learnt
        ("sex", ["m", None], "column 'sex' has no value in row 2"),
        ("sex", ["", " "], "column 'sex' has '' in row 1; column 'sex' has ' ' in row 2"),
        ("land", ["Narnia"], "column 'land' has 'Narnia' in row 1"),
        ("land", ["GB", float("nan")], "column 'land' has no value in row 2"),
        ("land", [1, "GB"], "column 'land' has 1 in row 1"),
        ("land", ["X"] * 10, "column 'land' has 'X' in rows 1, 2, 3, 4, 5, 6, 7, 8, 9, 10"),
        (
            "land",
            ["X"] * 13,
            "column 'land' has 'X' in rows 1, 2, 3, 4, 5, 6, 7, 8, 9, 10 and 3 more",
        ),
    ],
)
def test_each_value_is_named_with_its_rows(
    shared: PersonModel, column: str, values: list[Any], problem: str
) -> None:
    table = pd.DataFrame({column: values}, dtype="object")
    assert refusal(shared, table) == cannot_place(problem)


@pytest.mark.parametrize("dtype", ["object", "str", "string"])
def test_problems_of_both_columns_are_told_at_once(shared: PersonModel, dtype: str) -> None:
    table = pd.DataFrame(
        {"land": ["GB", "Narnia", None, "FR"], "sex": ["m", "f", "q", None]}, dtype=dtype
    )
    if dtype == "str":  # where that is no dtype of its own, it makes words of what is missing
        table = table.where(table != "None").where(table != "nan")
    assert refusal(shared, table) == cannot_place(
        "column 'sex' has 'q' in row 3; column 'sex' has no value in row 4; column 'land' has"
        " 'Narnia' in row 2; column 'land' has no value in row 3"
    )


def test_only_so_many_problems_are_told(shared: PersonModel) -> None:
    table = pd.DataFrame({"sex": [f"q{number}" for number in range(1_003)]})
    told = "; ".join(f"column 'sex' has 'q{number}' in row {number + 1}" for number in range(1_000))
    assert refusal(shared, table) == cannot_place(f"{told}; and 3 more")


def test_a_country_is_not_taken_in_where_anything_is_wrong(model: PersonModel) -> None:
    refusal(model, pd.DataFrame({"land": ["FR", "GB"], "sex": ["m", "q"]}))


def test_neither_column_is_there(shared: PersonModel) -> None:
    assert refusal(shared, pd.DataFrame({"Sex": ["m"]})) == (
        "The conditions need a column 'sex' or 'land', as the model has."
    )


@pytest.mark.parametrize(
    ("labels", "message"),
    [
        ({"gender": "sex"}, "The conditions need a column 'sex', as the model has."),
        (
            {"title": "title"},
            "The model has neither a column of genders nor one of countries: give a number of people instead, as in n=1000.",
        ),
        (
            {"fullname": "full"},
            "The model has neither a column of genders nor one of countries: give a number of people instead, as in n=1000.",
        ),
    ],
)
def test_a_model_that_conditions_do_not_fit(labels: dict[str, str], message: str) -> None:
    model = fitted_model(PersonLabels(**labels), people()[["sex", "title"]])
    with pytest.raises(ConditionsError) as caught:
        prepare_conditions(model, pd.DataFrame({"title": ["Mr"], "land": ["GB"]}))
    assert str(caught.value) == message


# --- countries without names of their own


@pytest.fixture
def quietly() -> Iterator[None]:
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", BorrowedNamesWarning)
        yield


def strict(model: PersonModel, conditions: pd.DataFrame | None = None) -> str:
    with pytest.raises(ValueError) as caught:
        refuse_borrowed(model, conditions)
    return str(caught.value)


@pytest.mark.usefixtures("quietly")
def test_borrowed_names_are_refused_where_they_may_be_sampled() -> None:
    model = fitted_model(LABELS, people().assign(land=["GB", "NA", "Fiji", "DE"]))
    assert strict(model) == (
        "Faker has no person names of its own for 'NA', 'Fiji': leave strict=True out to give these"
        " people names from elsewhere."
    )
    genders = prepare_conditions(model, pd.DataFrame({"sex": ["m"]}))
    assert strict(model, genders) == strict(model)


@pytest.mark.usefixtures("quietly")
def test_of_given_countries_only_those_count() -> None:
    model = fitted_model(LABELS, people().assign(land=["GB", "NA", "GB", "DE"]))
    refuse_borrowed(model, prepare_conditions(model, pd.DataFrame({"land": ["GB", "FR"]})))
    given = prepare_conditions(model, pd.DataFrame({"land": ["GB", "Fiji"]}))
    assert strict(model, given).startswith("Faker has no person names of its own for 'Fiji': ")


@pytest.mark.parametrize("locales", [None, ["de_DE", "ja_JP"]])
def test_locales_with_names_of_their_own_pass(locales: list[str] | None) -> None:
    refuse_borrowed(fitted_model(PersonLabels(gender="sex"), people(), locales=locales))


@pytest.mark.usefixtures("quietly")
def test_a_locale_without_names_of_its_own_is_refused() -> None:
    model = fitted_model(PersonLabels(gender="sex"), people(), locales=["en_GB", "fil_PH"])
    refused = strict(model)
    assert refused.startswith("Faker has no person names of its own for 'fil_PH': ")


def test_spellings_of_one_country_share_what_makes_their_names(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    spellings = ["".join(letters) for letters in product(*((c, c.upper()) for c in "germany"))]
    model, made = fitted_model(LABELS, people()), []
    make = Faker.__init__

    def noted(self: Faker, *arguments: Any, **named: Any) -> None:
        made.append(arguments)
        make(self, *arguments, **named)

    monkeypatch.setattr(Faker, "__init__", noted)
    given = prepare_conditions(model, pd.DataFrame({"land": spellings}))
    (rows,) = sample_blocks(model, Plan(len(given), 7), given)
    assert rows["land"].tolist() == spellings
    assert 0 < len(made) < 5

"""Tables and columns of any dtype, name and index, fitted, sampled under and generated from."""

import random
from typing import Any

import pandas as pd
import pytest
from hypothesis import given
from hypothesis import strategies as st

from support.fuzzing import fuzz, odd_values, outcome, row_numbers
from support.odd_frames import alike, columns, frames, indexes, mostly
from support.people import fitted_model, person_model
from support.whole_columns import COUNTRIES, usual_model
from vantrel.config import PersonLabels
from vantrel.model.models.person import PersonModel

LABELS = [
    PersonLabels(gender="sex", title="title", country="land", fullname="name"),
    PersonLabels(title="title", email="mail"),
    PersonLabels(gender="sex", username="user"),
    PersonLabels(country="land", password="word"),
]

keys = st.sampled_from(["F", "M", "NB", "A"])
countries = st.sampled_from(COUNTRIES)
names = st.sampled_from(["Ann", "Bo", "Mary Ann", "Çelik", "李", "o'Neil"])
learnt = {
    "sex": st.sampled_from(["female", "male", "nb", None]),
    "title": st.sampled_from(["Mrs", "Mr", "Mx", "Dr", None]),
    "land": st.sampled_from(["GB", "US", "DE", None]),
}

# What pandas raises where indexes do not fit each other; they have no other class in common.
UNFIT_INDEXES = (pd.errors.IndexingError, pd.errors.InvalidIndexError)


@fuzz
@given(st.sampled_from(LABELS), frames(learnt))
def test_fitting(labels: PersonLabels, table: pd.DataFrame) -> None:
    model = person_model(labels)
    before = table.copy()
    # A column is not there or there twice, a value cannot be looked up, is no country, or nothing
    # is there to learn from.
    fitted = outcome(lambda: model.fit(table), KeyError, TypeError, ValueError)
    pd.testing.assert_frame_equal(table, before)
    if fitted is not None:
        assert fitted is model
        assert set(model.categories) <= set(model.params.values())


@fuzz
@given(frames({"gender": keys, "country": countries}))
def test_sampling_under_conditions(conditions: pd.DataFrame) -> None:
    model = usual_model()
    people = outcome(
        lambda: model.sample(conditions=conditions), KeyError, TypeError, ValueError, *UNFIT_INDEXES
    )
    if people is not None:
        assert list(people) == list(fitted_model().sample(n=0))


@fuzz
@given(alike(keys, countries))
def test_first_names(table: list[pd.Series]) -> None:
    genders, places = table
    # A gender or a country is not known, a country is no text.
    names = outcome(
        lambda: usual_model().generate_first_names(genders, places),
        KeyError, TypeError, ValueError,
    )  # fmt: skip
    if names is not None:
        assert list(names.index) == list(range(min(len(genders), len(places))))
        assert all(isinstance(name, str) for name in names)


@fuzz
@given(alike(names, countries))
def test_last_names(table: list[pd.Series]) -> None:
    first, places = table
    made = outcome(
        lambda: usual_model().generate_last_names(first, places),
        KeyError, TypeError, ValueError, *UNFIT_INDEXES,
    )  # fmt: skip
    if made is not None:
        assert list(made.index) == list(range(len(places)))


@st.composite
def pairs_of_names(draw: st.DrawFn) -> tuple[pd.Series, pd.Series]:
    """First and last names; as the caller must see to, they are missing in the same rows."""
    rows = draw(row_numbers)
    index = draw(indexes(rows).filter(lambda index: index.is_unique))
    first, last = draw(mostly(names, rows, index)), draw(mostly(names, rows, index))
    return first, last.astype("object").where(~last.isna(), "Lee").where(~first.isna(), None)


@fuzz
@given(pairs_of_names())
def test_usernames(pair: tuple[pd.Series, pd.Series]) -> None:
    # A value is no text.
    made = outcome(
        lambda: PersonModel.generate_usernames(*pair), TypeError, ValueError, AttributeError
    )
    if made is not None:
        assert list(made.index) == list(pair[0].index)
        assert all(name == name.lower() for name in made.dropna())


@fuzz
@given(pairs_of_names(), st.data())
def test_emails(pair: tuple[pd.Series, pd.Series], data: st.DataObject) -> None:
    rows = data.draw(st.one_of(st.just(len(pair[0])), row_numbers))
    places = data.draw(mostly(countries, rows, pd.RangeIndex(rows)))
    emails = outcome(
        lambda: usual_model().generate_emails(*pair, places),
        KeyError, TypeError, ValueError, AttributeError,
    )  # fmt: skip
    if emails is not None:
        assert list(emails.index) == list(pair[0].index)
        # To join nothing to them is how pandas takes an empty list.
        assert all(("@" in email) == (len(places) > 0) for email in emails.dropna())


@fuzz
@given(columns())
def test_passwords(first: pd.Series) -> None:
    passwords = usual_model().generate_passwords(first)
    assert list(passwords.index) == list(range(len(first)))
    assert all(8 <= len(password) <= 16 for password in passwords)


@fuzz
@given(
    alike(keys),
    st.dictionaries(st.sampled_from(["F", "M", "NB"]), st.one_of(st.just(["x"]), odd_values)),
)
def test_values_from_collections(table: list[pd.Series], collections: dict[str, Any]) -> None:
    drawn = table[0]
    # A collection has no length, or nothing can be chosen from it.
    values = outcome(
        lambda: usual_model().generate_values_from_collections(drawn, collections),
        TypeError, ValueError,
    )  # fmt: skip
    if values is not None:
        assert len(values) == len(drawn)
        assert values.index.equals(drawn.index)


@pytest.mark.parametrize("name", ["n", "conditions", "associations"])
@fuzz
@given(odd_values, row_numbers)
def test_arguments_of_sample(name: str, value: Any, rows: int) -> None:
    if name == "n" and type(value) is int:
        value = random.Random(value).randint(-3, 3)
    arguments = {"n": rows, name: value}
    people = outcome(
        lambda: usual_model().sample(**arguments), TypeError, ValueError, AttributeError
    )
    if people is not None:
        assert len(people) == (arguments["n"] if name != "conditions" else rows)

"""Tables and columns of any dtype, name and index, fitted, sampled under and generated from."""

import random
from typing import Any

import pandas as pd
import pytest
from hypothesis import given
from hypothesis import strategies as st

from support.fuzzing import fuzz, odd_values, outcome
from support.odd_frames import columns, frames, indexes
from support.people import fitted_model, person_model
from support.whole_columns import usual_model
from vantrel.config import PersonLabels
from vantrel.model.models.person import PersonModel

LABELS = [
    PersonLabels(gender="sex", title="title", country="land", fullname="name"),
    PersonLabels(title="title", email="mail"),
    PersonLabels(gender="sex", username="user"),
    PersonLabels(country="land", password="word"),
]

# What pandas raises where indexes do not fit each other; they have no other class in common.
UNFIT_INDEXES = (pd.errors.IndexingError, pd.errors.InvalidIndexError)


@fuzz
@given(st.sampled_from(LABELS), frames("sex", "title", "land", "name"))
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
@given(frames("gender", "title", "country", "first"))
def test_sampling_under_conditions(conditions: pd.DataFrame) -> None:
    model = usual_model()
    people = outcome(
        lambda: model.sample(conditions=conditions), KeyError, TypeError, ValueError, *UNFIT_INDEXES
    )
    if people is not None:
        assert list(people) == list(fitted_model().sample(n=0))


@fuzz
@given(columns(), columns())
def test_first_names(genders: pd.Series, countries: pd.Series) -> None:
    # A gender or a country is not known, a country is no text.
    names = outcome(
        lambda: usual_model().generate_first_names(genders, countries),
        KeyError, TypeError, ValueError,
    )  # fmt: skip
    if names is not None:
        assert list(names.index) == list(range(min(len(genders), len(countries))))
        assert all(isinstance(name, str) for name in names)


@fuzz
@given(columns(), columns())
def test_last_names(first: pd.Series, countries: pd.Series) -> None:
    names = outcome(
        lambda: usual_model().generate_last_names(first, countries),
        KeyError, TypeError, ValueError, *UNFIT_INDEXES,
    )  # fmt: skip
    if names is not None:
        assert list(names.index) == list(range(len(countries)))


@st.composite
def pairs_of_names(draw: st.DrawFn) -> tuple[pd.Series, pd.Series]:
    """First and last names; as the caller must see to, they are missing in the same rows."""
    rows = draw(st.integers(0, 6))
    index = draw(indexes(rows).filter(lambda index: index.is_unique))
    first, last = draw(columns(rows, index)), draw(columns(rows, index))
    return first, last.astype("object").where(~last.isna(), "Lee").where(~first.isna(), None)


@fuzz
@given(pairs_of_names())
def test_usernames(names: tuple[pd.Series, pd.Series]) -> None:
    # A value is no text.
    made = outcome(
        lambda: PersonModel.generate_usernames(*names), TypeError, ValueError, AttributeError
    )
    if made is not None:
        assert list(made.index) == list(names[0].index)
        assert all(name == name.lower() for name in made.dropna())


@fuzz
@given(pairs_of_names(), columns())
def test_emails(names: tuple[pd.Series, pd.Series], countries: pd.Series) -> None:
    emails = outcome(
        lambda: usual_model().generate_emails(*names, countries),
        KeyError, TypeError, ValueError, AttributeError,
    )  # fmt: skip
    if emails is not None:
        assert list(emails.index) == list(names[0].index)
        # To join nothing to them is how pandas takes an empty list.
        assert all(("@" in email) == (len(countries) > 0) for email in emails.dropna())


@fuzz
@given(columns())
def test_passwords(first: pd.Series) -> None:
    passwords = usual_model().generate_passwords(first)
    assert list(passwords.index) == list(range(len(first)))
    assert all(8 <= len(password) <= 16 for password in passwords)


@fuzz
@given(
    columns(),
    st.dictionaries(st.sampled_from(["F", "M", "NB"]), st.one_of(st.just(["x"]), odd_values)),
)
def test_values_from_collections(keys: pd.Series, collections: dict[str, Any]) -> None:
    # A collection has no length, or nothing can be chosen from it.
    values = outcome(
        lambda: usual_model().generate_values_from_collections(keys, collections),
        TypeError, ValueError,
    )  # fmt: skip
    if values is not None:
        assert len(values) == len(keys)
        assert values.index.equals(keys.index)


@pytest.mark.parametrize("name", ["n", "conditions", "associations"])
@fuzz
@given(odd_values, st.integers(0, 5))
def test_arguments_of_sample(name: str, value: Any, rows: int) -> None:
    if name == "n" and type(value) is int:
        value = random.Random(value).randint(-3, 3)
    arguments = {"n": rows, name: value}
    people = outcome(
        lambda: usual_model().sample(**arguments), TypeError, ValueError, AttributeError
    )
    if people is not None:
        assert len(people) == (arguments["n"] if name != "conditions" else rows)

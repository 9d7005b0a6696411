"""Columns in which no value comes twice."""

import re
from collections.abc import Iterable
from typing import Any

import pandas as pd
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

from support.people import fitted_model
from vantrel.config import PersonLabels
from vantrel.model.models.person import PersonModel
from vantrel.sampling import Plan, check_plan, sample_blocks
from vantrel.sampling.unique import MOST_ROWS, make_unique, row_codes

LABELS = PersonLabels(gender="sex", firstname="first", username="user", email="mail")
BOTH = ("username", "email")


@pytest.fixture(scope="module")
def model() -> PersonModel:
    """Half of its people are missing."""
    return fitted_model(LABELS, pd.DataFrame({"sex": ["f", "m", None, None]}))


def sample(model: PersonModel, rows: int, **plan: Any) -> pd.DataFrame:
    return pd.concat(list(sample_blocks(model, Plan(rows, 7, **plan))))


@pytest.mark.parametrize("column", ["user", "mail"])
def test_no_value_comes_twice_over_several_blocks(model: PersonModel, column: str) -> None:
    values = sample(model, 2_000, block_rows=500, unique=BOTH)[column].dropna()
    assert len(values) > 800
    assert values.is_unique
    codes = values.str.extract("([0-9a-z]{6})(?:@|$)")[0]
    assert codes.notna().all()
    assert codes.is_unique  # so names that happen to be equal are told apart, too


def test_equal_values_are_told_apart(model: PersonModel) -> None:
    people = pd.DataFrame({"user": ["ab"] * 3, "mail": ["a@b.org"] * 3}, dtype="str")
    make_unique(people, model, BOTH, 5)
    codes = row_codes(5, 3)
    assert people["user"].tolist() == [f"ab{code}" for code in codes]
    assert people["mail"].tolist() == [f"a{code}@b.org" for code in codes]


@pytest.mark.parametrize(
    ("attribute", "column", "end"),
    [("username", "user", "[0-9a-z]{6}"), ("email", "mail", "[0-9a-z]{6}(?=@)")],
)
def test_a_value_is_the_usual_one_with_a_code(
    model: PersonModel, attribute: str, column: str, end: str
) -> None:
    usual, unique = sample(model, 50), sample(model, 50, unique=(attribute,))
    others = usual.columns[usual.columns != column]
    pd.testing.assert_frame_equal(unique[others], usual[others])
    assert unique[column].isna().equals(usual[column].isna())
    assert usual[column].isna().any()
    without = [re.sub(f"{end}(@|$)", r"\1", value) for value in unique[column].dropna()]
    assert without == usual[column].dropna().tolist()


def test_e_mail_addresses_stay_valid(model: PersonModel) -> None:
    addresses = sample(model, 300, unique=BOTH)["mail"].dropna()
    assert len(addresses) > 100
    assert all(PersonModel.check_email(address) for address in addresses)


def test_missing_values_stay_missing_in_blocks_that_have_no_others(model: PersonModel) -> None:
    people = sample(model, 20, block_rows=1, unique=BOTH)
    missing = people["sex"].isna()
    assert 0 < missing.sum() < 20
    assert people[missing].isna().all(axis=None)
    assert people[~missing].notna().all(axis=None)


@pytest.mark.parametrize("dtype", ["object", "string", "float64"])
def test_a_part_of_missing_values_only(model: PersonModel, dtype: str) -> None:
    people = pd.DataFrame({"user": [None] * 2, "mail": [None] * 2}, dtype=dtype)
    make_unique(people, model, BOTH, 0)
    assert people.isna().all(axis=None)


def test_no_rows(model: PersonModel) -> None:
    assert sample(model, 0, unique=BOTH).shape == (0, 4)


def test_the_order_of_attributes_does_not_matter() -> None:
    assert Plan(5, 7, unique=("username", "email")) == Plan(5, 7, unique=("email", "username"))


def test_an_attribute_that_is_given_twice_gets_one_code(model: PersonModel) -> None:
    twice = sample(model, 9, unique=("email", "email"))
    pd.testing.assert_frame_equal(twice, sample(model, 9, unique=("email",)))


numbers = st.integers(0, MOST_ROWS - 1)


@given(st.lists(numbers, unique=True, max_size=20))
def test_rows_far_apart_have_codes_of_their_own(rows: list[int]) -> None:
    assert len({row_codes(row, 1)[0] for row in rows}) == len(rows)


@given(numbers, st.sampled_from([2, 3, 4, 6, 9, 36, 36**3, MOST_ROWS]))
def test_rows_apart_by_a_part_of_all_codes_have_codes_of_their_own(row: int, parts: int) -> None:
    other = (row + MOST_ROWS // parts) % MOST_ROWS
    assert row_codes(row, 1)[0] != row_codes(other, 1)[0]


@given(st.integers(0, MOST_ROWS - 60), st.integers(0, 50), st.integers(0, 50))
@settings(max_examples=50)
def test_a_code_depends_on_the_number_of_the_row_alone(first: int, skip: int, count: int) -> None:
    codes = row_codes(first, skip + count)
    assert codes[skip:].tolist() == row_codes(first + skip, count).tolist()
    assert len(set(codes)) == len(codes)
    assert all(re.fullmatch("[0-9a-z]{6}", code) for code in codes)


def test_many_neighbouring_codes_differ() -> None:
    codes = row_codes(MOST_ROWS - 300_000, 300_000)
    assert len(set(codes)) == 300_000


def test_there_is_no_row_too_many_for_the_codes_and_one_more_is(model: PersonModel) -> None:
    check_plan(model, Plan(MOST_ROWS, 7, unique=BOTH))
    check_plan(model, Plan(MOST_ROWS + 1, 7))
    with pytest.raises(ValueError) as caught:
        sample_blocks(model, Plan(MOST_ROWS + 1, 7, unique=BOTH))
    assert str(caught.value) == (
        "Column 'mail' runs out of unique values at 2,176,782,336 rows: ask for fewer."
    )


@pytest.mark.parametrize(
    ("attributes", "message"),
    [
        (["title"], "'title' cannot be made unique: only email and username can."),
        (["password"], "'password' cannot be made unique: only email and username can."),
        ([""], "'' cannot be made unique: only email and username can."),
        (
            ["username"],
            "'username' cannot be made unique: the model does not make it. Fit it with"
            " generate=['username'].",
        ),
    ],
)
def test_what_cannot_be_unique(attributes: Iterable[str], message: str) -> None:
    people = pd.DataFrame({"sex": ["f", "m"]})
    without_names = fitted_model(PersonLabels(gender="sex", password="secret"), people)
    with pytest.raises(ValueError) as caught:
        sample_blocks(without_names, Plan(5, 7, unique=tuple(attributes)))
    assert str(caught.value) == message

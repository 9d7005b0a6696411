"""Templates of numbers, lengths of passwords and e-mail addresses of any kind."""

from typing import Any

import numpy as np
import pandas as pd
from hypothesis import example, given
from hypothesis import strategies as st

from support.fuzzing import any_text, fuzz, odd_values, outcome, row_numbers, usually
from support.odd_frames import columns, in_turn
from vantrel.model.models.person import PersonModel

templates = st.one_of(
    st.text(st.one_of(st.just("x"), st.characters()), max_size=12),
    st.text(r"x\1X{}%+$ ", max_size=12),
)
flags = row_numbers.flatmap(lambda rows: in_turn(st.booleans(), rows))


def follows(number: str, template: str) -> bool:
    return len(number) == len(template) and all(
        drawn in "0123456789" if wanted == "x" else drawn == wanted
        for drawn, wanted in zip(number, template, strict=True)
    )


def has_half_a_character(text: str) -> bool:
    return any("\ud800" <= character <= "\udfff" for character in text)


@fuzz
@given(flags, templates)
def test_any_template(isna: list[bool], template: str) -> None:
    # pyarrow has no half characters.
    refused = (ValueError,) if has_half_a_character(template) else ()
    numbers = outcome(
        lambda: PersonModel.generate_phone_numbers(pd.Series(isna, dtype="bool"), template),
        *refused,
    )
    if numbers is not None:
        assert list(numbers.index) == list(range(len(isna)))
        assert list(numbers.isna()) == isna
        assert all(follows(number, template) for number in numbers.dropna())


@fuzz
@given(usually(flags.map(pd.Series), columns()), templates)
@example(pd.Series([np.empty(0)]), "")
def test_any_flags(isna: pd.Series, template: str) -> None:
    # A value's truth cannot be told; pyarrow has no half characters.
    numbers = outcome(
        lambda: PersonModel.generate_phone_numbers(isna, template), TypeError, ValueError
    )
    if numbers is not None:
        # An older numpy tells the truth of an empty array and warns.
        assert list(numbers.isna()) == outcome(lambda: [bool(flag) for flag in isna])


@fuzz
@given(odd_values)
def test_a_template_that_is_no_text(template: Any) -> None:
    refused = (ValueError,) if isinstance(template, str) else (TypeError,)
    numbers = outcome(
        lambda: PersonModel.generate_phone_numbers(pd.Series([False]), template), *refused
    )
    assert numbers is None or type(template) is str


def is_no_number(value: Any) -> bool:
    return not isinstance(value, int | float)


lengths = usually(
    st.one_of(st.integers(-50, 50), st.integers(-50, 2_000)), odd_values.filter(is_no_number)
)


@fuzz
@given(lengths, lengths)
def test_a_password(least: Any, most: Any) -> None:
    # A length is no integer, or the least is greater than the greatest.
    password = outcome(lambda: PersonModel.generate_password(least, most), TypeError, ValueError)
    if password is not None:
        assert max(least, 0) <= len(password) <= max(most, 0)
        assert password == "" or (password.isascii() and password.isalnum())


addresses = st.from_regex(r"\A[a-z.]{1,9}@[a-z-]{1,9}(\.[a-z]{1,3})*\Z")
locales = st.lists(st.sampled_from(["en", "en_GB", "fr"]), max_size=2)


@fuzz
@given(
    usually(addresses, st.one_of(any_text, odd_values)),
    usually(locales, odd_values),
)
def test_an_email_address(address: Any, locales: Any) -> None:
    # An argument is of a wrong type, or an item of the list has no "in".
    found = outcome(lambda: PersonModel.check_email(address, locales), TypeError)
    assert found in (True, False, None)
    if type(address) is not str or type(locales) is not list:
        assert found is None

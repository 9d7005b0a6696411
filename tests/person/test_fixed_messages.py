"""Refusals whose message never changes: all that are raised share their arguments, made when the module was."""

from collections.abc import Callable
from typing import Any

import pandas as pd
import pytest

from support.people import person_model
from vantrel.config import PersonLabels


def sample_nothing() -> None:
    person_model().sample()


def sample_without_countries() -> None:
    genders = pd.Series(["F"])
    person_model(PersonLabels(country="country"))._sample_conditional(1, genders, None)


def name_of_an_unknown_gender() -> None:
    model = person_model()
    model.country_to_provider_map = {"GB": None}
    model.generate_random_first_name("X", "GB")


@pytest.mark.parametrize(
    ("refused", "message"),
    [
        (sample_nothing, "One of 'n' or 'conditions' must be given."),
        (
            sample_without_countries,
            "Got country label but no country conditions or country model.",
        ),
        (name_of_an_unknown_gender, "Unrecognised gender: {gender}"),
    ],
)
def test_refusals_share_their_arguments(refused: Callable[[], Any], message: str) -> None:
    errors = []
    for _ in range(2):
        with pytest.raises(ValueError) as caught:
            refused()
        errors.append(caught.value)
    first, second = errors
    assert type(first) is type(second) is ValueError
    assert first is not second
    assert first.args == (message,)
    assert first.args is second.args

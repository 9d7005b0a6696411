"""The country column, and what fails where countries are missing."""

import pandas as pd
import pytest

from support.conditional_sampling import countries, model_of, noting_model, only, sampled, without
from support.recording import Calls
from vantrel.model.models import person


def test_countries_are_taken_as_they_are() -> None:
    made = sampled(model_of(only("country")), 5, produce_nans=False)
    assert made["country"].tolist() == countries(5).tolist()


def test_a_country_label_without_countries_fails_after_gender_and_title() -> None:
    calls = Calls()
    with pytest.raises(ValueError) as caught:
        sampled(noting_model(calls), country_conditions=None)
    message = "Got country label but no country conditions or country model."
    assert caught.value.args == (message,)
    assert calls.names() == ["generate_values_from_collections"] * 2


def test_the_error_type_of_missing_countries_was_taken_when_importing(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    monkeypatch.setattr(person, "ValueError", LookupError, raising=False)
    with pytest.raises(ValueError):
        sampled(model_of(only("country")), country_conditions=None)


def test_without_a_country_label_missing_countries_fail_where_names_need_them() -> None:
    with pytest.raises(TypeError):
        sampled(model_of(without("country")), country_conditions=None)


def test_a_country_without_a_provider_fails_as_the_lookup() -> None:
    with pytest.raises(KeyError) as caught:
        sampled(model_of(), 2, country_conditions=pd.Series(["GB", "XX"]))
    assert caught.value.args == ("XX",)

"""Models from dictionaries that nobody checked."""

from typing import Any

from hypothesis import given
from hypothesis import strategies as st

from support.fuzzing import fuzz, json_values, outcome
from support.odd_forms import at, forms
from vantrel.config import PersonModelConfig
from vantrel.metadata import Nominal
from vantrel.metadata.value import Person, String
from vantrel.model.models.person import CountryModel, GenderModel, PersonModel

# What a form that is not one of a model may raise: a key is missing, a value is of a wrong type or
# has a wrong value, or lacks a method of the type that it should be.
DOCUMENTED = (KeyError, TypeError, ValueError, AttributeError)


@fuzz
@given(forms())
def test_a_person_model(form: Any) -> None:
    model = outcome(lambda: PersonModel.from_dict(form), *DOCUMENTED)
    if model is not None:
        assert type(model) is PersonModel
        assert type(model.meta) is Person
        assert type(model.config) is PersonModelConfig
        assert model.pwd_length == model.config.pwd_length
        if "hidden_model_gender" in form:
            assert type(model.hidden_model_gender) is GenderModel
        if "hidden_model_country" in form:
            assert type(model.hidden_model_country) is CountryModel


@fuzz
@given(st.one_of(forms(), json_values))
def test_a_gender_model(form: Any) -> None:
    part = form.get("hidden_model_gender", form) if isinstance(form, dict) else form
    model = outcome(lambda: GenderModel.from_dict(part), *DOCUMENTED)
    if model is not None:
        assert type(model) is GenderModel
        assert type(model.meta) is String
        assert model._probabilities is part.get("probabilities")
        for pattern in ("regex_female", "regex_male", "regex_non_binary"):
            assert getattr(model, pattern) is part.get(pattern)


@fuzz
@given(st.one_of(forms(), json_values))
def test_a_country_model(form: Any) -> None:
    part = form.get("hidden_model_country", form) if isinstance(form, dict) else form
    model = outcome(lambda: CountryModel.from_dict(part), *DOCUMENTED)
    if model is not None:
        assert type(model) is CountryModel
        assert isinstance(model.meta, Nominal | Person)
        assert model._probabilities is at(part, ["probabilities"])

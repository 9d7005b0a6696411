"""Errors of a step: they propagate, and the later steps are not taken."""

import pytest

from support.fitting import FRAME, model_of
from support.people import person_model
from support.recording import Calls, raising
from vantrel.config import PersonLabels
from vantrel.model.base import DiscreteModel


def test_an_error_of_the_base_class_comes_before_anything_else(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    calls = Calls()
    model = model_of(calls)
    error = RuntimeError("no")
    monkeypatch.setattr(DiscreteModel, "fit", raising(error))
    with pytest.raises(RuntimeError) as caught:
        model.fit(FRAME)
    assert caught.value is error
    assert calls == []


def test_an_error_of_unfold_propagates_and_nothing_is_entered() -> None:
    calls = Calls()
    model = model_of(calls)
    error = RuntimeError("no")
    model._meta.unfold = raising(error)
    with pytest.raises(RuntimeError) as caught:
        model.fit(FRAME)
    assert caught.value is error
    assert calls.names() == ["extract"]


def test_a_failing_gender_model_leaves_the_country_model_unfitted() -> None:
    calls = Calls()
    with pytest.raises(RuntimeError):
        model_of(calls, gender_error=RuntimeError("no")).fit(FRAME)
    assert calls.names() == ["extract", "unfold", "enter", "gender", "exit"]


def test_a_failing_country_model_leaves_the_provider_map_unchanged() -> None:
    model = model_of(Calls(), country_error=RuntimeError("no"))
    providers = {"old": 1}
    model.country_to_provider_map = providers
    with pytest.raises(RuntimeError):
        model.fit(FRAME)
    assert model.country_to_provider_map is providers


def test_a_country_models_map_that_is_no_dict_is_refused_inside_the_context() -> None:
    calls = Calls()
    model = model_of(calls, providers=[1])
    with pytest.raises(TypeError) as caught:
        model.fit(FRAME)
    assert str(caught.value) == "Argument 'value' has incorrect type (expected dict, got list)"
    assert calls[-1][1][0] is TypeError


def test_a_missing_column_fails_as_the_meta_does() -> None:
    with pytest.raises(KeyError) as caught:
        person_model(PersonLabels(gender="sex")).fit(FRAME)
    message = "The table has no column 'sex'; its columns are: 'gender', 'title', 'country'."
    assert str(caught.value) == message

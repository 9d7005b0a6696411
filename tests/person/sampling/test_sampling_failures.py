"""Errors inside the sampling entry: they propagate, and what was done before stays."""

import pytest

from support.people import person_model
from support.recording import Calls, raising
from support.sampling import GIVEN, noting_model
from vantrel.config import PersonLabels
from vantrel.model.exceptions import ModelNotFittedError
from vantrel.model.models import person


def test_a_provider_map_that_is_no_dict_is_refused_by_the_setter(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    monkeypatch.setattr(person, "get_country_to_provder_map", lambda *_: None)
    with pytest.raises(TypeError) as caught:
        noting_model(Calls(), PersonLabels()).sample(n=1)
    assert str(caught.value) == "Argument 'value' has incorrect type (expected dict, got NoneType)"


def test_a_later_failure_leaves_the_replaced_provider_map(asked: Calls) -> None:
    error = RuntimeError("no")
    model = noting_model(Calls(), PersonLabels())
    model._sample_conditional = raising(error)
    with pytest.raises(RuntimeError) as caught:
        model.sample(n=1)
    assert caught.value is error
    assert model.country_to_provider_map == {"x": 1}


@pytest.mark.parametrize("part", ["hidden_model_gender", "hidden_model_country"])
def test_an_error_of_a_hidden_model_propagates(part: str) -> None:
    error = RuntimeError("no")
    model = noting_model(Calls())
    getattr(model, part).sample = raising(error)
    with pytest.raises(RuntimeError) as caught:
        model.sample(n=1)
    assert caught.value is error


@pytest.mark.parametrize("name", ["map_to_gender_keys", "_sample_conditional"])
def test_an_error_of_a_method_propagates(name: str) -> None:
    error = RuntimeError("no")
    model = noting_model(Calls())
    setattr(model, name, raising(error))
    with pytest.raises(RuntimeError) as caught:
        model.sample(conditions=GIVEN)
    assert caught.value is error


def test_an_error_of_the_meta_propagates() -> None:
    error = RuntimeError("no")
    model = noting_model(Calls())
    model._meta.revert_df_from_children = raising(error)
    with pytest.raises(RuntimeError) as caught:
        model.sample(n=1)
    assert caught.value is error


def test_a_model_that_was_not_fitted_fails_as_its_hidden_model_does() -> None:
    with pytest.raises(ModelNotFittedError) as caught:
        person_model().sample(n=1)
    assert str(caught.value) == "Nothing has been learnt of column 'gender' yet."

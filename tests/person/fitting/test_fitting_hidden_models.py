"""Which hidden models are fitted, and the provider map that is taken over."""

from typing import Any

import pandas as pd
import pytest

from support.fitting import FRAME, StandInCountry, model_of
from support.people import people, person_model
from support.recording import Calls, StandInMeta
from vantrel.config import PersonLabels
from vantrel.model.base import DiscreteModel
from vantrel.model.exceptions import ModelNotFittedError
from vantrel.model.models import person
from vantrel.model.models.histogram import Histogram
from vantrel.model.models.person import PersonModel


def test_the_country_models_map_is_taken_over_as_the_very_dict() -> None:
    model = model_of(Calls())
    model.fit(FRAME)
    assert model.country_to_provider_map is model.hidden_model_country.country_to_provider_map


def test_the_map_is_set_through_the_property_after_the_country_model_was_fitted() -> None:
    calls = Calls()

    class Noting(PersonModel):
        country_to_provider_map = property(None, lambda self, value: calls.append(("set", value)))

    model = Noting(StandInMeta(calls=calls))
    model.hidden_model_gender = None
    model.hidden_model_country = StandInCountry(calls)
    model.fit(FRAME)
    assert [call[0] for call in calls] == ["extract", "unfold", "enter", "country", "set", "exit"]
    assert calls[4][1] is model.hidden_model_country.country_to_provider_map


def test_a_model_without_a_country_model_fits_the_gender_and_keeps_its_map() -> None:
    calls = Calls()
    model = model_of(calls)
    model.hidden_model_country = None
    providers = {"old": 1}
    model.country_to_provider_map = providers
    model.fit(FRAME)
    assert "gender" in calls.names()
    assert model.country_to_provider_map is providers


@pytest.mark.parametrize("other", [None, 0, object(), Histogram, DiscreteModel])
def test_a_hidden_country_model_of_another_kind_is_skipped(other: Any) -> None:
    calls = Calls()
    model = model_of(calls)
    model.hidden_model_country = other
    model.fit(FRAME)
    assert calls.names() == ["extract", "unfold", "enter", "gender", "exit"]
    with pytest.raises(ModelNotFittedError):
        _ = model.country_to_provider_map


@pytest.mark.parametrize("other", [None, 0, object(), Histogram, DiscreteModel])
def test_a_hidden_gender_model_of_another_kind_is_skipped(other: Any) -> None:
    calls = Calls()
    model = model_of(calls)
    model.hidden_model_gender = other
    model.fit(FRAME)
    assert calls.names() == ["extract", "unfold", "enter", "country", "exit"]


def test_the_uniform_histogram_is_never_fitted() -> None:
    model = person_model(PersonLabels(firstname="f"))
    before = dict(model.hidden_model_gender._probabilities)
    model.fit(pd.DataFrame({"f": ["Ann"], "person_gender": ["F"]}))
    assert model.hidden_model_gender._probabilities == before


@pytest.mark.parametrize("name", ["GenderModel", "CountryModel"])
def test_the_classes_are_looked_up_when_fitting(monkeypatch: pytest.MonkeyPatch, name: str) -> None:
    class Unrelated:
        pass

    calls = Calls()
    model = model_of(calls)
    monkeypatch.setattr(person, name, Unrelated)
    model.fit(FRAME)
    assert {"GenderModel": "gender", "CountryModel": "country"}[name] not in calls.names()


def test_a_replaced_class_makes_its_instances_be_fitted(monkeypatch: pytest.MonkeyPatch) -> None:
    class Other:
        def fit(self, df: pd.DataFrame) -> None:
            fitted.append(df)

    fitted: list[pd.DataFrame] = []
    model = model_of(Calls())
    model.hidden_model_gender = Other()
    monkeypatch.setattr(person, "GenderModel", Other)
    model.fit(FRAME)
    assert fitted[0] is FRAME


def test_fitting_again_repeats_all_steps_and_replaces_the_map() -> None:
    model = person_model()
    model.fit(people(countries=["GB"]))
    model.fit(people(rows=2, countries=["DE"]))
    assert list(model.country_to_provider_map) == ["DE"]
    assert model.hidden_model_country._probabilities == {"DE": 1.0}
    assert model.hidden_model_gender._probabilities == {"F": 0.5, "M": 0.5}

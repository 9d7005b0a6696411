"""Which country each sampled row has where a country is labelled."""

import pandas as pd
import pytest

from support.comparing import assert_identical
from support.people import fitted_model
from support.recording import Calls
from support.sampling import GIVEN, LEARNT, conditional_of, noting_model


def test_given_countries_are_taken_as_they_stand() -> None:
    calls = Calls()
    conditions = GIVEN.set_axis([5, 6, 7, 8, 9])
    noting_model(calls).sample(conditions=conditions)
    assert_identical(conditional_of(calls)["country_conditions"], conditions["country"])
    assert "country" not in calls.names()


def test_given_countries_come_back() -> None:
    made = fitted_model(LEARNT).sample(conditions=GIVEN)
    assert made["country"].tolist() == GIVEN["country"].tolist()


def test_the_countries_are_the_labels_column_of_the_sampled_frame() -> None:
    calls = Calls()
    model = noting_model(calls)
    frame = pd.DataFrame({"country": ["GB"], "renamed": ["US"]})
    model.hidden_model_country.sample = lambda **_: frame
    model.hidden_model_country.meta.name = "renamed"
    model.sample(n=1)
    assert conditional_of(calls)["country_conditions"].tolist() == ["GB"]


def test_a_country_label_without_a_country_model_passes_none_on() -> None:
    calls = Calls()
    model = noting_model(calls)
    model.hidden_model_country = None
    model.sample(n=2)
    assert conditional_of(calls)["country_conditions"] is None


@pytest.mark.parametrize("conditions", [None, GIVEN[["age"]]])
def test_a_country_label_without_countries_then_fails(conditions: pd.DataFrame | None) -> None:
    model = fitted_model(LEARNT)
    model.hidden_model_country = None
    with pytest.raises(ValueError) as caught:
        model.sample(n=2, conditions=conditions)
    message = "Got country label but no country conditions or country model."
    assert caught.value.args == (message,)


def test_a_country_label_leaves_the_provider_map_alone(asked: Calls) -> None:
    model = fitted_model(LEARNT)
    model._sample_conditional = lambda **given: pd.DataFrame()
    before = model.country_to_provider_map
    asked.clear()
    model.sample(n=2)
    assert asked == []
    assert model.country_to_provider_map is before

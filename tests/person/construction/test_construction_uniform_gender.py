"""The hidden gender model where neither gender nor title is labelled."""

from typing import Any

import pytest

from support.construction import CONFIG
from support.people import person_model
from support.recording import Calls, StandInMeta
from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.metadata.value import Person, String
from vantrel.model.models import person
from vantrel.model.models.histogram import Histogram
from vantrel.model.models.person import PersonModel


@pytest.mark.parametrize(
    "genders", [["F", "M"], ["F", "M", "NB"], ["F", "M", "NB", "A"], ("M",), []]
)
def test_the_genders_of_the_config_are_equally_likely(genders: Any) -> None:
    model = person_model(PersonLabels(), PersonModelConfig(genders=genders))
    expected = {gender: 1.0 / len(genders) for gender in genders}
    assert model.hidden_model_gender._probabilities == expected


def test_four_genders_get_a_quarter_each() -> None:
    config = PersonModelConfig(genders=["F", "M", "NB", "A"])
    probabilities = person_model(PersonLabels(), config).hidden_model_gender._probabilities
    assert probabilities == {"F": 0.25, "M": 0.25, "NB": 0.25, "A": 0.25}


def test_three_genders_get_a_third_each_as_a_float() -> None:
    probabilities = person_model(PersonLabels(), CONFIG).hidden_model_gender._probabilities
    assert probabilities == {"F": 1 / 3, "M": 1 / 3, "NB": 1 / 3}
    assert all(type(value) is float for value in probabilities.values())


def test_no_gender_is_no_division() -> None:
    config = PersonModelConfig(genders=[])
    assert person_model(PersonLabels(), config).hidden_model_gender._probabilities == {}


def test_a_repeated_gender_still_counts_in_the_length() -> None:
    config = PersonModelConfig(genders=["F", "F", "M", "M"])
    probabilities = person_model(PersonLabels(), config).hidden_model_gender._probabilities
    assert probabilities == {"F": 0.25, "M": 0.25}


def test_the_length_is_taken_again_for_each_gender() -> None:
    class Growing(list[str]):
        asked = 0

        def __len__(self) -> int:
            self.asked += 1
            return self.asked

    config = PersonModelConfig()
    config.genders = Growing(["F", "M"])
    with pytest.MonkeyPatch.context() as patch:
        # The host's own meta takes the length while it copies the categories.
        patch.setattr(person, "String", lambda name, categories, nan_freq: String(name))
        model = person_model(PersonLabels(), config)
    assert model.hidden_model_gender._probabilities == {"F": 1.0, "M": 0.5}


def test_genders_without_a_length_fail_as_len_does(monkeypatch: pytest.MonkeyPatch) -> None:
    config = PersonModelConfig()
    config.genders = (gender for gender in ["F", "M"])
    monkeypatch.setattr(person, "String", lambda name, categories, nan_freq: String(name))
    with pytest.raises(TypeError) as caught:
        person_model(PersonLabels(), config)
    assert str(caught.value) == "object of type 'generator' has no len()"


def test_the_meta_of_the_hidden_gender_is_named_after_the_model() -> None:
    hidden = person_model(PersonLabels(), CONFIG).hidden_model_gender
    assert hidden.name == "person_gender"
    assert type(hidden.meta) is String
    assert hidden.meta.categories == ["F", "M", "NB"]


def test_a_name_that_is_no_string_is_formatted() -> None:
    class Name:
        def __format__(self, spec: str) -> str:
            return f"<{spec}>"

    model = PersonModel(StandInMeta(name=Name()), CONFIG)
    assert model.hidden_model_gender.name == "<>_gender"


def test_the_name_is_the_models_not_the_metas() -> None:
    class Named(PersonModel):
        name = "somebody"

    model = Named(Person("person", PersonLabels()), CONFIG)
    assert model.hidden_model_gender.name == "somebody_gender"


@pytest.mark.parametrize("nan_freq", [None, 0, 0.0, "", False])
def test_a_missing_frequency_that_is_none_or_zero_becomes_zero(nan_freq: Any) -> None:
    kept = PersonModel(StandInMeta(nan_freq=nan_freq), CONFIG).hidden_model_gender.meta.nan_freq
    assert type(kept) is float
    assert kept == 0.0


@pytest.mark.parametrize("nan_freq", [0.1, 1])
def test_another_missing_frequency_is_taken_as_it_is(nan_freq: Any) -> None:
    model = PersonModel(StandInMeta(nan_freq=nan_freq), CONFIG)
    assert model.hidden_model_gender.meta.nan_freq is nan_freq


def test_the_hidden_meta_and_histogram_are_made_by_name(monkeypatch: pytest.MonkeyPatch) -> None:
    calls = Calls()
    gender_meta = String("g")
    monkeypatch.setattr(person, "String", calls.recorder("String", lambda *_, **__: gender_meta))
    monkeypatch.setattr(person, "Histogram", calls.recorder("Histogram", Histogram))
    model = person_model(PersonLabels(), CONFIG, nan_freq=0.1)
    assert calls == [
        ("String", ("person_gender",), {"categories": CONFIG.genders, "nan_freq": 0.1}),
        ("Histogram", (), {"meta": gender_meta}),
    ]
    assert calls[0][2]["categories"] is CONFIG.genders
    assert model.hidden_model_gender.meta is gender_meta


def test_the_uniform_model_can_be_sampled_without_fitting() -> None:
    drawn = person_model(PersonLabels(), CONFIG).hidden_model_gender.sample(n=50)
    assert set(drawn["person_gender"]) == {"F", "M", "NB"}

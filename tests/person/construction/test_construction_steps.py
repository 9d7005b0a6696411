"""Putting a person model together: the order of the steps, the config and its settings."""

from typing import Any

import pytest

from support.construction import CONFIG, SETTINGS, patterns
from support.people import person_model
from support.recording import Calls
from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.metadata.value import Person
from vantrel.model.base import DiscreteModel
from vantrel.model.models.person import PersonModel


class Noting(PersonModel):
    """Writes down which attributes are set, in order, with their values."""

    def __setattr__(self, name: str, value: Any) -> None:
        vars(self).setdefault("assigned", []).append((name, value))
        super().__setattr__(name, value)


def test_the_base_class_gets_the_meta_by_keyword(monkeypatch: pytest.MonkeyPatch) -> None:
    calls = Calls()
    init = DiscreteModel.__init__
    monkeypatch.setattr(DiscreteModel, "__init__", calls.recorder("init", init))
    meta = Person("person", PersonLabels())
    model = PersonModel(meta)
    assert calls[0] == ("init", (model,), {"meta": meta})


def test_meta_and_config_may_be_given_by_position() -> None:
    meta = Person("person", PersonLabels())
    model = PersonModel(meta, CONFIG)
    assert model.meta is meta
    assert model.config is CONFIG


def test_attributes_are_set_in_order() -> None:
    model = Noting(Person("person", PersonLabels(gender="g", country="c")), CONFIG)
    assert [name for name, _ in vars(model)["assigned"]] == [
        *["_meta", "_rng", "config", "_country_to_provider_map"],
        *["hidden_model_gender", "hidden_model_country"],
        *["hidden_model_gender", "hidden_model_country", *SETTINGS],
    ]


def test_hidden_models_are_none_before_they_are_built() -> None:
    model = Noting(Person("person", PersonLabels(gender="g", country="c")), CONFIG)
    values = [value for name, value in vars(model)["assigned"] if name.startswith("hidden")]
    assert values[:2] == [None, None]


def test_without_a_country_label_the_country_model_is_set_to_none_again() -> None:
    model = Noting(Person("person", PersonLabels()), CONFIG)
    values = [value for name, value in vars(model)["assigned"] if name == "hidden_model_country"]
    assert values == [None, None]


def test_each_model_has_an_empty_provider_map_of_its_own() -> None:
    one, other = person_model(), person_model()
    assert one._country_to_provider_map == {}
    assert type(one._country_to_provider_map) is dict
    assert one._country_to_provider_map is not other._country_to_provider_map


def test_two_models_without_a_config_share_the_default_one() -> None:
    assert person_model().config is person_model().config
    assert person_model().config is PersonModel.__init__.__defaults__[0]


def test_a_changed_default_config_changes_later_models(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(PersonModel.__init__.__defaults__[0], "mobile_number_format", "x")
    assert person_model().mobile_number_format == "x"


@pytest.mark.parametrize("name", SETTINGS)
def test_settings_are_copied_from_the_config(name: str) -> None:
    assert getattr(person_model(config=CONFIG), name) is getattr(CONFIG, name)


@pytest.mark.parametrize("name", SETTINGS)
def test_settings_are_copied_from_the_argument_not_from_the_attribute(name: str) -> None:
    class Fixed(PersonModel):
        config = property(lambda self: PersonModelConfig(), lambda self, value: None)

    model = Fixed(Person("person", PersonLabels()), CONFIG)
    assert getattr(model, name) is getattr(CONFIG, name)


def test_patterns_and_genders_are_read_from_the_attribute() -> None:
    class Fixed(PersonModel):
        config = property(lambda self: CONFIG, lambda self, value: None)

    titled = Fixed(Person("person", PersonLabels(title="t")), PersonModelConfig())
    assert patterns(titled) == ("tf", "tm", "tn")
    plain = Fixed(Person("person", PersonLabels()), PersonModelConfig())
    assert list(plain.hidden_model_gender._probabilities) == ["F", "M", "NB"]


def test_copied_settings_do_not_follow_a_replaced_config() -> None:
    model = person_model()
    model.config = CONFIG
    assert model.mobile_number_format == "07xxxxxxxx"

"""Person models that cannot be made: what is raised, and what was set before."""

import pytest

from support.construction import CONFIG, SETTINGS
from support.people import person_model
from support.recording import StandInMeta, raising
from vantrel.config import PersonLabels
from vantrel.metadata.value import Person
from vantrel.model.models import person
from vantrel.model.models.histogram import Histogram
from vantrel.model.models.person import PersonModel


@pytest.mark.parametrize("label", ["gender", "title", "country"])
def test_a_label_without_a_child_fails_as_the_meta_does(label: str) -> None:
    meta = StandInMeta(PersonLabels(**{label: "nowhere"}))
    with pytest.raises(KeyError) as caught:
        PersonModel(meta, CONFIG)
    assert caught.value.args == ("nowhere",)


def test_a_failure_leaves_what_was_set_before() -> None:
    model = PersonModel.__new__(PersonModel)
    with pytest.raises(KeyError):
        model.__init__(StandInMeta(PersonLabels(gender="nowhere")), CONFIG)
    assert model.config is CONFIG
    assert model._country_to_provider_map == {}
    assert model.hidden_model_gender is None
    assert model.hidden_model_country is None
    assert not hasattr(model, "mobile_number_format")


def test_a_failing_country_model_leaves_the_gender_model(monkeypatch: pytest.MonkeyPatch) -> None:
    error = RuntimeError("no")
    monkeypatch.setattr(person, "CountryModel", raising(error))
    model = PersonModel.__new__(PersonModel)
    with pytest.raises(RuntimeError) as caught:
        model.__init__(Person("person", PersonLabels(country="c")), CONFIG)
    assert caught.value is error
    assert type(model.hidden_model_gender) is Histogram
    assert model.hidden_model_country is None


@pytest.mark.parametrize(
    ("missing", "labels"),
    [
        ("gender_female_regex", PersonLabels(gender="g")),
        ("gender_male_regex", PersonLabels(gender="g")),
        ("gender_non_binary_regex", PersonLabels(gender="g")),
        ("title_female_regex", PersonLabels(title="t")),
        ("title_male_regex", PersonLabels(title="t")),
        ("title_non_binary_regex", PersonLabels(title="t")),
        ("genders", PersonLabels()),
        *[(name, PersonLabels()) for name in SETTINGS],
    ],
)
def test_a_missing_setting_fails_as_reading_it(missing: str, labels: PersonLabels) -> None:
    class Partial:
        pass

    config = Partial()
    vars(config).update({k: v for k, v in vars(CONFIG).items() if k != missing})
    with pytest.raises(AttributeError) as caught:
        person_model(labels, config)
    assert str(caught.value) == f"'Partial' object has no attribute '{missing}'"


@pytest.mark.parametrize("position", range(len(SETTINGS)))
def test_settings_are_copied_in_order(position: int) -> None:
    class Partial:
        pass

    config = Partial()
    vars(config).update({k: v for k, v in vars(CONFIG).items() if k != SETTINGS[position]})
    model = PersonModel.__new__(PersonModel)
    with pytest.raises(AttributeError):
        model.__init__(Person("person", PersonLabels()), config)
    assert [name for name in vars(model) if name in SETTINGS] == SETTINGS[:position]

"""The properties through which a person model is read."""

from typing import Any

import pytest
from faker import Faker

from support.people import person_model
from support.recording import StandInMeta
from vantrel.config import PersonLabels
from vantrel.metadata.value import Person
from vantrel.model.exceptions import ModelNotFittedError
from vantrel.model.models import person
from vantrel.model.models.person import PersonModel


class Mapping(dict[str, Any]):
    """A subclass of dict."""


def test_categories_of_a_model_without_them_raise_the_bare_error() -> None:
    with pytest.raises(ModelNotFittedError) as caught:
        _ = person_model().categories
    assert caught.value.args == ()


def test_categories_are_a_new_list() -> None:
    meta = StandInMeta(categories=("a", "b"))
    model = PersonModel(meta)
    assert model.categories == ["a", "b"]
    assert model.categories is not model.categories


def test_empty_categories_are_an_empty_list() -> None:
    assert PersonModel(StandInMeta(categories=())).categories == []


def test_the_default_locale_is_british_english() -> None:
    assert person_model().default_locale == "en_GB"


def test_locales_of_a_meta_without_them_are_the_default_one() -> None:
    model = person_model()
    assert model.locales == ["en_GB"]
    assert model.locales is not model.locales


def test_locales_of_a_meta_are_a_fresh_list() -> None:
    model = person_model(locales=["de_DE", "fr_FR"])
    model.locales.append("xx")
    assert model.locales == ["de_DE", "fr_FR"]
    assert model.meta.locales == ["de_DE", "fr_FR"]


def test_no_locales_is_not_the_same_as_an_empty_list() -> None:
    assert person_model(locales=[]).locales == []


def test_locales_of_another_kind_become_a_list() -> None:
    assert PersonModel(StandInMeta(locales=("de_DE",))).locales == ["de_DE"]


def test_locales_read_the_default_locale_through_the_instance() -> None:
    class French(PersonModel):
        default_locale = "fr_FR"

    assert French(Person("person", PersonLabels())).locales == ["fr_FR"]


def test_locales_read_the_public_meta_and_the_others_the_private_one() -> None:
    public = StandInMeta(PersonLabels(title="t"), locales=["de_DE"], params={"a": "b"})

    class TwoMetas(PersonModel):
        meta = public

    model = TwoMetas(StandInMeta(locales=["fr_FR"], categories=["c"], params={"p": "q"}))
    assert model.locales == ["de_DE"]
    assert model.labels == PersonLabels()
    assert model.params == {"p": "q"}
    assert model.categories == ["c"]


@pytest.mark.parametrize("stored", [{}, None, 0, ""])
def test_a_falsy_provider_map_is_an_unfitted_country_model(stored: Any) -> None:
    model = person_model()
    model._country_to_provider_map = stored
    with pytest.raises(ModelNotFittedError) as caught:
        _ = model.country_to_provider_map
    assert str(caught.value) == "Country model not fitted."


def test_a_fresh_model_has_no_provider_map() -> None:
    with pytest.raises(ModelNotFittedError) as caught:
        _ = person_model().country_to_provider_map
    assert caught.value.args == ("Country model not fitted.",)


def test_setting_an_empty_provider_map_leaves_the_model_unfitted() -> None:
    model = person_model()
    model.country_to_provider_map = {}
    with pytest.raises(ModelNotFittedError) as caught:
        _ = model.country_to_provider_map
    assert str(caught.value) == "Country model not fitted."


def test_a_provider_map_is_kept_and_given_back_as_the_very_dict() -> None:
    model = person_model()
    providers = {"GB": Faker("en_GB")}
    model.country_to_provider_map = providers
    assert model.country_to_provider_map is providers
    assert model._country_to_provider_map is providers


@pytest.mark.parametrize(
    ("value", "given"),
    [(Mapping(a=1), "Mapping"), (None, "NoneType"), ([("a", 1)], "list"), (Mapping(), "Mapping")],
)
def test_only_a_dict_itself_can_be_set_as_provider_map(value: Any, given: str) -> None:
    model = person_model()
    providers = {"GB": Faker("en_GB")}
    model.country_to_provider_map = providers
    with pytest.raises(TypeError) as caught:
        model.country_to_provider_map = value
    message = f"Argument 'value' has incorrect type (expected dict, got {given})"
    assert str(caught.value) == message
    assert model.country_to_provider_map is providers


@pytest.mark.parametrize(("stored", "given"), [([1], "list"), (1, "int"), ("a", "str")])
def test_a_stored_provider_map_of_another_type_is_refused_on_reading(
    stored: Any, given: str
) -> None:
    model = person_model()
    model._country_to_provider_map = stored
    with pytest.raises(TypeError) as caught:
        _ = model.country_to_provider_map
    assert str(caught.value) == f"Expected dict, got {given}"


def test_labels_are_the_very_object_of_the_meta() -> None:
    model = person_model()
    assert model.labels is model.meta.labels


def test_params_are_the_very_object_of_the_meta() -> None:
    params = {"gender": "g"}
    assert PersonModel(StandInMeta(params=params)).params is params


def test_params_may_be_none() -> None:
    assert PersonModel(StandInMeta(params=None)).params is None


@pytest.mark.parametrize(("params", "given"), [([], "list"), ("a", "str"), (0, "int")])
def test_params_of_another_type_are_refused_on_reading(params: Any, given: str) -> None:
    model = PersonModel(StandInMeta(params=params))
    with pytest.raises(TypeError) as caught:
        _ = model.params
    assert str(caught.value) == f"Expected dict, got {given}"


@pytest.mark.parametrize("name", ["categories", "default_locale", "locales", "labels", "params"])
def test_the_other_properties_are_read_only(name: str) -> None:
    with pytest.raises(AttributeError) as caught:
        setattr(person_model(), name, None)
    assert str(caught.value) == f"property {name!r} of 'PersonModel' object has no setter"


def test_the_error_of_the_provider_map_is_looked_up_when_raised(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    monkeypatch.setattr(person, "ModelNotFittedError", LookupError)
    with pytest.raises(LookupError) as caught:
        _ = person_model().country_to_provider_map
    assert caught.value.args == ("Country model not fitted.",)

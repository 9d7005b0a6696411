"""Calls that make a person model, read it, and bring it into its dictionary form and back."""

from __future__ import annotations

from collections.abc import Callable
from functools import partial
from typing import Any

from support.people import ALL_LABELS
from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.metadata.value import Person
from vantrel.model.base import DiscreteModel
from vantrel.model.exceptions import ModelNotFittedError
from vantrel.model.models import person
from vantrel.model.models.person import PersonModel

from .call import bad, fail_with, good, replace
from .parts import drawing, fakers, fitted, stand_in_meta, standing_in

TITLE_LABELS = PersonLabels(title="title", firstname="first")
NOTHING: Any = None
NO_LABELS = PersonLabels(firstname="first")


def _new(labels: PersonLabels) -> Any:
    return lambda: partial(PersonModel, Person("person", labels))


def _base_that_fails() -> Callable[[], object]:
    replace(DiscreteModel, "__init__", fail_with(LookupError))
    return partial(PersonModel, Person("person", ALL_LABELS))


def _child_model_that_fails(name: str) -> Any:
    def prepare() -> Callable[[], object]:
        replace(person, name, fail_with(LookupError))
        return partial(PersonModel, Person("person", ALL_LABELS))

    return prepare


class Emptied(list[str]):
    """Genders that tell no number."""

    def __len__(self) -> int:
        return 0


def _without_number_of_genders() -> Callable[[], object]:
    config = PersonModelConfig()
    config.genders = Emptied(["F"])
    return partial(PersonModel, Person("person", NO_LABELS), config)


def _missing_child() -> Callable[[], object]:
    return partial(PersonModel, stand_in_meta(PersonLabels(gender="gender")))


CONSTRUCTION = [
    good("PersonModel() by gender", _new(ALL_LABELS), 2),
    good("PersonModel() by title", _new(TITLE_LABELS)),
    good("PersonModel() without a gender column", _new(NO_LABELS)),
    good(
        "PersonModel() with a configuration",
        lambda: partial(PersonModel, Person("person", NO_LABELS), PersonModelConfig()),
    ),
    bad("PersonModel(): base fails", LookupError, _base_that_fails),
    bad("PersonModel(): gender model fails", LookupError, _child_model_that_fails("GenderModel")),
    bad("PersonModel(): country model fails", LookupError, _child_model_that_fails("CountryModel")),
    bad("PersonModel(): column without a meta", KeyError, _missing_child),
    bad("PersonModel(): number of genders is 0", ZeroDivisionError, _without_number_of_genders),
    bad(
        "PersonModel(): no configuration",
        AttributeError,
        lambda: partial(PersonModel, Person("person", NO_LABELS), NOTHING),
    ),
]


def _reading(name: str, model: Callable[[], PersonModel] = fitted) -> Any:
    def prepare() -> Callable[[], object]:
        read = model()
        return lambda: getattr(read, name)

    return prepare


def _setting() -> Callable[[], object]:
    model, providers = drawing(), fakers()
    return lambda: setattr(model, "country_to_provider_map", providers)


def _setting_none() -> Callable[[], object]:
    model = drawing()
    return lambda: setattr(model, "country_to_provider_map", None)


def _odd_map() -> PersonModel:
    model = drawing()
    vars(model)["_country_to_provider_map"] = [1]
    return model


def _without_a_meta() -> PersonModel:
    model = drawing()
    del vars(model)["_meta"]
    return model


PROPERTIES = [
    good("PersonModel.categories", _reading("categories")),
    bad("PersonModel.categories: not fitted", ModelNotFittedError, _reading("categories", drawing)),
    good("PersonModel.default_locale", _reading("default_locale")),
    good("PersonModel.locales", _reading("locales")),
    good(
        "PersonModel.locales of the meta", _reading("locales", lambda: standing_in(locales=["en"]))
    ),
    bad(
        "PersonModel.locales: no list",
        TypeError,
        _reading("locales", lambda: standing_in(locales=3)),
    ),
    good("PersonModel.country_to_provider_map", _reading("country_to_provider_map")),
    bad(
        "PersonModel.country_to_provider_map: not fitted",
        ModelNotFittedError,
        _reading("country_to_provider_map", standing_in),
    ),
    bad(
        "PersonModel.country_to_provider_map: no dict",
        TypeError,
        _reading("country_to_provider_map", _odd_map),
    ),
    good("PersonModel.country_to_provider_map = providers", _setting),
    bad("PersonModel.country_to_provider_map = None", TypeError, _setting_none),
    good("PersonModel.labels", _reading("labels")),
    bad("PersonModel.labels: no meta", AttributeError, _reading("labels", _without_a_meta)),
    good("PersonModel.params", _reading("params")),
    bad(
        "PersonModel.params: no dict", TypeError, _reading("params", lambda: standing_in(params=[]))
    ),
]


def _restoring(**changes: object) -> Any:
    """`from_dict` of a fitted model's form with these changes; what is None is taken out."""

    def prepare() -> Callable[[], object]:
        form = fitted().to_dict() | changes
        return partial(PersonModel.from_dict, {k: v for k, v in form.items() if v is not None})

    return prepare


def _form_of_base_that_fails() -> Callable[[], object]:
    replace(DiscreteModel, "to_dict", fail_with(LookupError))
    return fitted().to_dict


def _configuration_without_a_form() -> Callable[[], object]:
    model = drawing()
    vars(model)["config"] = object()
    return model.to_dict


DICTIONARY_FORM = [
    good("PersonModel.to_dict", lambda: fitted().to_dict, 10),
    good("PersonModel.to_dict, not fitted", lambda: drawing().to_dict, 10),
    bad("PersonModel.to_dict: base fails", LookupError, _form_of_base_that_fails),
    bad("PersonModel.to_dict: configuration", TypeError, _configuration_without_a_form, 2),
    good("PersonModel.from_dict", _restoring(), 5),
    good(
        "PersonModel.from_dict, not fitted",
        _restoring(hidden_model_gender=None, hidden_model_country=None),
        5,
    ),
    bad("PersonModel.from_dict: no meta", KeyError, _restoring(meta=None)),
    bad("PersonModel.from_dict: unknown setting", TypeError, _restoring(config={"shoe_size": 43})),
    bad("PersonModel.from_dict: settings of a wrong form", TypeError, _restoring(config=3), 2),
    bad("PersonModel.from_dict: gender model", KeyError, _restoring(hidden_model_gender={}), 5),
    bad("PersonModel.from_dict: country model", KeyError, _restoring(hidden_model_country={}), 5),
]

CALLS = [*CONSTRUCTION, *PROPERTIES, *DICTIONARY_FORM]

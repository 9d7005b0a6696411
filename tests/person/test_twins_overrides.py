"""Whole columns against single calls: subclasses, attributes and names that take a method's place."""

import random
import re
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from typing import Any

import numpy as np
import pandas as pd
import pytest

from support.people import ALL_LABELS, person_model
from support.twins import described, made_both_ways, same_both_ways
from support.whole_columns import (
    COUNTRIES,
    MAKERS,
    making,
    model_after_use,
    model_with,
    new_fakers,
    noting,
    usual_model,
)
from vantrel.model.models import person
from vantrel.model.models.person import GenderModel, PersonModel

METHODS = [
    "generate_first_names",
    "generate_random_first_name",
    "generate_last_names",
    "generate_emails",
    "generate_usernames",
    "generate_passwords",
    "generate_password",
    "generate_phone_numbers",
    "generate_from_collections",
    "generate_values_from_collections",
    "map_to_gender_keys",
    "check_email",
]
STATIC = {
    "generate_usernames",
    "generate_password",
    "generate_phone_numbers",
    "generate_from_collections",
    "check_email",
}


def overriding(method: str) -> type[PersonModel]:
    """A subclass that notes the calls of one method and passes them on."""
    genuine = getattr(PersonModel, method)

    def override(*args: Any, **kwargs: Any) -> Any:
        own.calls.append(f"{len(args)} {sorted(kwargs)}")
        return genuine(*args, **kwargs)

    own = type("Own", (PersonModel,), {"calls": []})
    setattr(own, method, staticmethod(override) if method in STATIC else override)
    return own


@pytest.mark.parametrize("maker", MAKERS)
@pytest.mark.parametrize("method", METHODS)
def test_a_method_overridden_in_a_subclass(method: str, maker: str) -> None:
    cls = overriding(method)
    model = model_with(usual_model().country_to_provider_map, cls)

    def draw() -> Any:
        cls.calls.clear()
        return [making(maker, model)(), list(cls.calls)]

    made_both_ways(draw, model)


@pytest.mark.parametrize("maker", MAKERS)
@pytest.mark.parametrize("method", METHODS)
def test_a_method_replaced_on_the_class(method: str, maker: str) -> None:
    model = usual_model()
    made_both_ways(making(maker, model), model, within=noting(PersonModel, method))


@pytest.mark.parametrize("maker", MAKERS)
@pytest.mark.parametrize("method", METHODS)
def test_a_method_replaced_on_the_model(method: str, maker: str) -> None:
    model = usual_model()
    made_both_ways(making(maker, model), model, within=noting(model, method))


NAMES = ["np", "random", "string", "re", "collections_from_mapping", "cast"]


@pytest.mark.parametrize("maker", MAKERS)
@pytest.mark.parametrize("name", NAMES)
def test_every_stand_in_leads_to_the_same_result(name: str, maker: str) -> None:
    model = usual_model()
    assert same_both_ways(making(maker, model), model, stand_in=name).error is None


@pytest.mark.parametrize("maker", MAKERS)
def test_a_name_taken_out_of_the_module(maker: str, monkeypatch: pytest.MonkeyPatch) -> None:
    model = usual_model()
    for name in ("random", "string", "re", "np"):
        with monkeypatch.context() as without:
            without.delattr(person, name)
            same_both_ways(making(maker, model), model)


@pytest.mark.parametrize("maker", MAKERS)
@pytest.mark.parametrize("key", ["key_male", "key_female", "key_non_binary", "key_ambiguous"])
def test_other_gender_keys(key: str, maker: str, monkeypatch: pytest.MonkeyPatch) -> None:
    model = usual_model()
    monkeypatch.setattr(GenderModel, key, "F" if key != "key_female" else "NB")
    same_both_ways(making(maker, model), model)


class OwnGenderModel(GenderModel):
    key_male = "F"
    key_female = "M"


@pytest.mark.parametrize("maker", MAKERS)
def test_another_gender_model(maker: str, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(person, "GenderModel", OwnGenderModel)
    model = usual_model()
    same_both_ways(making(maker, model), model)


SERIES_METHODS = ["apply", "astype", "isna", "notna", "nunique", "value_counts", "isin", "__iter__"]


@pytest.mark.parametrize("maker", MAKERS)
@pytest.mark.parametrize("method", SERIES_METHODS)
def test_a_method_replaced_on_series(method: str, maker: str) -> None:
    # What the module asks of pandas may differ between the ways; what pandas answers may not.
    def shifted(genuine: Any) -> Any:
        if method != "apply":
            return genuine
        return lambda self, *args, **kwargs: genuine(self, *args, **kwargs).iloc[::-1]

    model = usual_model()

    @contextmanager
    def change() -> Iterator[None]:
        with noting(pd.Series, method, shifted)():
            yield

    same_both_ways(making(maker, model), model, within=change)


@pytest.mark.parametrize("maker", MAKERS)
@pytest.mark.parametrize("name", ["isna", "notna", "NA"])
def test_a_name_replaced_in_pandas(name: str, maker: str, monkeypatch: pytest.MonkeyPatch) -> None:
    model = usual_model()
    other = None if name == "NA" else lambda value: isinstance(value, str) and value < "N"
    monkeypatch.setattr(pd, name, other)
    same_both_ways(making(maker, model), model)


class OwnSeries(pd.Series):
    """A series of another type."""


@pytest.mark.parametrize("maker", MAKERS)
def test_another_series_in_pandas(maker: str, monkeypatch: pytest.MonkeyPatch) -> None:
    model = usual_model()
    monkeypatch.setattr(pd, "Series", OwnSeries)
    same_both_ways(making(maker, model), model)


@pytest.mark.parametrize("name", ["sub", "match"])
def test_a_name_replaced_in_re(name: str) -> None:
    model = usual_model()
    made_both_ways(making("phone_numbers", model), model, within=noting(re, name))
    made_both_ways(making("emails", model), model, within=noting(re, name))


@pytest.mark.parametrize("locale", ["en_GB", "e", "", "n"])
def test_other_default_locales(locale: str) -> None:
    class Local(PersonModel):
        default_locale = locale

    model = model_with(new_fakers(), Local)
    same_both_ways(making("emails", model), model)


@pytest.mark.parametrize("passes", [True, False, 0, "yes", None])
def test_another_check_of_addresses(passes: Any) -> None:
    class Checking(PersonModel):
        @staticmethod
        def check_email(s: str, locales: Any = None) -> Any:
            return passes

    model = model_with(new_fakers(), Checking)
    run = same_both_ways(making("emails", model), model)
    assert (run.error is None) == bool(passes)


def test_a_check_of_addresses_that_draws() -> None:
    class Checking(PersonModel):
        @staticmethod
        def check_email(s: str, locales: Any = None) -> bool:
            return random.random() < 0.999 and np.random.random() < 2

    model = model_with(new_fakers(), Checking)
    same_both_ways(making("emails", model), model)


def test_attributes_looked_up_by_the_class() -> None:
    class Looking(PersonModel):
        asked: list[str] = []  # noqa: RUF012 - one for all on purpose

        def __getattribute__(self, name: str) -> Any:
            if name.startswith("generate"):
                Looking.asked.append(name)
            return super().__getattribute__(name)

    model = model_with(new_fakers(), Looking)
    for maker in MAKERS:

        def draw(maker: str = maker) -> Any:
            Looking.asked.clear()
            return [making(maker, model)(), list(Looking.asked)]

        made_both_ways(draw, model)


class Sharing:
    """A model of another kind that borrows a method."""

    pwd_length = (3, 4)

    def __init__(self) -> None:
        self.country_to_provider_map = new_fakers()
        self.default_locale = "en_GB"

    generate_usernames = staticmethod(PersonModel.generate_usernames)
    generate_password = staticmethod(PersonModel.generate_password)
    generate_random_first_name = PersonModel.generate_random_first_name
    check_email = staticmethod(PersonModel.check_email)
    generate_from_collections = staticmethod(PersonModel.generate_from_collections)


@pytest.mark.parametrize("maker", [m for m in MAKERS if m not in ("conditional", "sample")])
def test_the_methods_of_the_class_on_another_object(maker: str) -> None:
    borrower = Sharing()
    names = {
        "phone_numbers": "generate_phone_numbers",
        "values": "generate_values_from_collections",
    }
    method = names.get(
        maker, "map_to_gender_keys" if maker == "gender_keys" else f"generate_{maker}"
    )
    setattr(Sharing, method, PersonModel.__dict__[method])
    made_both_ways(making(maker, borrower))


def test_a_model_that_has_no_providers_yet() -> None:
    model = person_model(ALL_LABELS)
    countries = pd.Series(COUNTRIES)
    calls: list[Callable[[], Any]] = [
        lambda: model.generate_first_names(countries, countries),
        lambda: model.generate_last_names(countries, countries),
        lambda: model.generate_emails(countries, countries, countries),
    ]
    for call in calls:
        same_both_ways(call)


def test_a_result_that_may_be_changed() -> None:
    model = model_after_use()
    first = making("last_names", model)()
    before = described(first)
    second = making("last_names", model)()
    second.iloc[0] = "Changed"
    assert described(first) == before

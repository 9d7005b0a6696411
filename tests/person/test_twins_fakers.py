"""Whole columns against single calls: Faker instances with other methods, and stand-ins for them.

Every change comes after the model has made a few rows, so that a change also has to be noticed.
"""

import random
import re
from collections.abc import Callable
from typing import Any

import faker.generator
import faker.providers
import faker.providers.internet
import faker.utils.text
import numpy as np
import pytest
from faker import Faker
from faker.providers import BaseProvider
from faker.providers.person.fr_FR import Provider as FrenchPerson

from support.twins import made_both_ways, refused_both_ways, same_both_ways
from support.whole_columns import (
    FAKER_MAKERS,
    Text,
    countries,
    making,
    model_after_use,
    model_with,
    new_faker,
    new_fakers,
    provider,
)


class Other(BaseProvider):
    """A provider that has the five methods and draws from its instance's source."""

    def first_name(self) -> str:
        return "Other" + str(self.generator.random.randint(0, 9))

    first_name_male = first_name_female = last_name = first_name

    def domain_name(self) -> str:
        return self.random_element(["a.test", "b.test"])


class OtherFirstName(BaseProvider):
    def first_name(self) -> str:
        return self.random_element(["Xi", "Yo"])


class OtherSurname(BaseProvider):
    def last_name(self) -> str:
        return self.random_element(["O'Xi", "Van Yo", "Žů"])


class OtherCompany(BaseProvider):
    def company(self) -> str:
        return self.random_element(["Xi & Co", "Yo"])


class OtherSuffix(BaseProvider):
    def company_suffix(self) -> str:
        return self.random_element(["(Xi)", "{{last_name}}"])


class OtherWord(BaseProvider):
    def domain_word(self) -> str:
        return self.random_element(["xi", "yo"])

    def tld(self) -> str:
        return "test"


class OtherRandomElement(BaseProvider):
    def random_element(self, elements: Any = ("a",)) -> Any:
        return "Other"


ADDED = [
    Other,
    OtherFirstName,
    OtherSurname,
    OtherCompany,
    OtherSuffix,
    OtherWord,
    OtherRandomElement,
    FrenchPerson,
]


@pytest.mark.parametrize("maker", FAKER_MAKERS)
@pytest.mark.parametrize("added", ADDED)
def test_a_provider_added(added: type[BaseProvider], maker: str) -> None:
    model = model_after_use()
    model.country_to_provider_map["US"].add_provider(added)
    made_both_ways(making(maker, model, 60), model)


METHODS = [
    ("person", "first_name"),
    ("person", "last_name"),
    ("person", "random_element"),
    ("person", "random_elements"),
    ("internet", "domain_word"),
    ("internet", "tld"),
    ("internet", "_to_ascii"),
    ("internet", "domain_name"),
    ("company", "company"),
    ("company", "company_suffix"),
]


@pytest.mark.parametrize("maker", ["first_names", "last_names", "emails"])
@pytest.mark.parametrize(("name", "method"), METHODS)
def test_a_method_replaced_on_one_provider(name: str, method: str, maker: str) -> None:
    model = model_after_use()
    target = provider(model, name, "US")
    setattr(target, method, lambda *args, **kwargs: ["Xi"] if "elements" in method else "Xi")
    made_both_ways(making(maker, model, 60), model)


@pytest.mark.parametrize("maker", ["first_names", "last_names", "emails"])
@pytest.mark.parametrize(("name", "method"), METHODS)
def test_a_method_replaced_on_the_provider_class(
    name: str, method: str, maker: str, monkeypatch: pytest.MonkeyPatch
) -> None:
    model = model_after_use()
    answer = ["Xi"] if "elements" in method else "Xi"
    cls = type(provider(model, name, "US"))
    monkeypatch.setattr(cls, method, lambda self, *args, **kwargs: answer)
    made_both_ways(making(maker, model, 60), model)


@pytest.mark.parametrize("maker", ["first_names", "last_names", "emails"])
@pytest.mark.parametrize("method", ["random_element", "random_elements"])
def test_a_method_replaced_on_the_base_of_all_providers(
    method: str, maker: str, monkeypatch: pytest.MonkeyPatch
) -> None:
    model = model_after_use()
    answer = ["Xi"] if "elements" in method else "Xi"
    monkeypatch.setattr(BaseProvider, method, lambda self, *args, **kwargs: answer)
    made_both_ways(making(maker, model, 40), model)


FIVE = ["first_name", "first_name_male", "first_name_female", "last_name", "domain_name"]
GENERATOR_METHODS = ["format", "parse", "get_formatter", "_Generator__format_token"]


@pytest.mark.parametrize("maker", ["first_names", "last_names", "emails"])
@pytest.mark.parametrize("method", [*FIVE, "company", "company_suffix", "tld", *GENERATOR_METHODS])
@pytest.mark.parametrize("holder", ["instance", "factory"])
def test_an_attribute_set_on_an_instance(holder: str, method: str, maker: str) -> None:
    model = model_after_use()
    instance = model.country_to_provider_map["DE"]
    target = instance if holder == "instance" else instance.factories[0]
    answer = (lambda: "Xi") if method == "get_formatter" else "Xi"
    setattr(target, method, lambda *args: answer)
    same_both_ways(making(maker, model, 60), model)


@pytest.mark.parametrize("method", GENERATOR_METHODS)
def test_a_method_replaced_on_the_generator_class(
    method: str, monkeypatch: pytest.MonkeyPatch
) -> None:
    model = model_after_use()
    answer = (lambda: "Xi") if method == "get_formatter" else "Xi"
    monkeypatch.setattr(faker.generator.Generator, method, lambda self, *args: answer)
    made_both_ways(making("emails", model, 40), model)


def test_another_pattern_of_tokens(monkeypatch: pytest.MonkeyPatch) -> None:
    model = model_after_use()
    monkeypatch.setattr(faker.generator, "_re_token", re.compile(r"(\w{3})()"))
    same_both_ways(making("emails", model, 40), model)


@pytest.mark.parametrize("name", ["choices_distribution", "choices_distribution_unique"])
@pytest.mark.parametrize("maker", ["first_names", "last_names", "emails"])
def test_another_distribution(name: str, maker: str, monkeypatch: pytest.MonkeyPatch) -> None:
    model = model_after_use()
    monkeypatch.setattr(
        faker.providers, name, lambda values, weights, source, length: [values[0]] * length
    )
    made_both_ways(making(maker, model, 40), model)


@pytest.mark.parametrize("name", ["slugify", "unidecode"])
def test_another_way_to_plain_letters(name: str, monkeypatch: pytest.MonkeyPatch) -> None:
    model = model_after_use()
    module = faker.utils.text if name == "slugify" else faker.providers.internet
    monkeypatch.setattr(module, name, lambda text, *args, **kwargs: f"x{len(text)}")
    made_both_ways(making("emails", model, 60), model)


@pytest.mark.parametrize("maker", FAKER_MAKERS)
@pytest.mark.parametrize("name", ["person", "internet", "company"])
def test_weighting_switched_off_or_on(name: str, maker: str) -> None:
    french = new_faker("fr_FR", use_weighting=False)
    model = model_after_use({**new_fakers(), "FR": french})
    for country in ("US", "FR"):
        target = provider(model, name, country)
        target.__use_weighting__ = not target.__use_weighting__
    made_both_ways(making(maker, model, 60), model)


class Shouting(Faker):
    """A Faker that answers otherwise."""

    def first_name(self) -> str:
        return super().__getattr__("first_name")().upper()

    def domain_name(self) -> str:
        return "shout.test"


class Guarded(Faker):
    """A Faker that looks its attributes up otherwise."""

    def __getattr__(self, name: str) -> Any:
        if name in ("first_name_male", "last_name"):
            return lambda: "Guarded " + super(Guarded, self).__getattr__(name)()
        return super().__getattr__(name)


class Plain(Faker):
    """A Faker of another name only."""


@pytest.mark.parametrize("maker", FAKER_MAKERS)
@pytest.mark.parametrize("cls", [Shouting, Guarded, Plain])
def test_a_subclass_of_faker(cls: type[Faker], maker: str) -> None:
    model = model_with({"GB": cls("en_GB"), "DE": new_faker("de_DE")})
    made_both_ways(making(maker, model, 60), model)


def test_the_class_of_an_instance_changed() -> None:
    model = model_after_use()
    model.country_to_provider_map["GB"].__class__ = Shouting
    column = made_both_ways(making("first_names", model, 60), model)
    assert column.str.isupper().any()


@pytest.mark.parametrize("name", ["__getattr__", "__getattribute__"])
@pytest.mark.parametrize("maker", ["first_names", "last_names", "emails"])
def test_attribute_lookup_replaced_on_faker(
    name: str, maker: str, monkeypatch: pytest.MonkeyPatch
) -> None:
    model = model_after_use()
    genuine = getattr(Faker, name)

    def lookup(self: Faker, attribute: str) -> Any:
        found = genuine(self, attribute)
        return (lambda: "Found " + found()) if attribute in FIVE else found

    monkeypatch.setattr(Faker, name, lookup)
    made_both_ways(making(maker, model, 40), model)


@pytest.mark.parametrize("method", FIVE)
def test_a_method_set_on_the_faker_class(method: str, monkeypatch: pytest.MonkeyPatch) -> None:
    model = model_after_use()
    monkeypatch.setattr(Faker, method, lambda self: "Set on the class", raising=False)
    made_both_ways(making("conditional", model, 40), model)


def test_the_factories_of_an_instance_replaced() -> None:
    model = model_after_use()
    model.country_to_provider_map["GB"]._factories = new_faker("ja_JP").factories
    made_both_ways(making("conditional", model, 40), model)


def test_the_instances_exchanged() -> None:
    model = model_after_use()
    providers = model.country_to_provider_map
    providers["GB"], providers["CN"] = providers["CN"], providers["GB"]
    made_both_ways(making("conditional", model, 40), model)


class FiveMethods:
    """The five methods and nothing else."""

    def first_name(self) -> str:
        return "Stand-in " + str(random.randint(0, 9))

    first_name_male = first_name_female = last_name = first_name

    def domain_name(self) -> str:
        return f"{np.random.randint(100)}.test"


class WrongTypes(FiveMethods):
    """Answers with texts of other types than names have."""

    def last_name(self) -> Any:
        return random.choice([Text("Xi"), np.str_("Yo"), 5, None, float("nan")])

    def domain_name(self) -> Any:
        return random.choice([Text("a.test"), None])


class Callables:
    """Keeps other instances' bound methods as its own."""

    def __init__(self, instance: Faker) -> None:
        for name in FIVE:
            setattr(self, name, getattr(instance, name))


class Mapping(dict):  # type: ignore[type-arg]  # holds anything
    """A map of providers that makes what is missing."""

    def __missing__(self, country: str) -> FiveMethods:
        return FiveMethods()


@pytest.mark.parametrize("maker", FAKER_MAKERS)
@pytest.mark.parametrize("make", [FiveMethods, lambda: Callables(new_faker("de_DE"))])
def test_stand_ins_for_instances(make: Callable[[], Any], maker: str) -> None:
    model = model_with({"XX": make(), "GB": new_faker("en_GB")})
    made_both_ways(making(maker, model, 40), model)


@pytest.mark.parametrize("maker", ["first_names", "last_names", "emails"])
def test_stand_ins_that_answer_with_other_types(maker: str) -> None:
    model = model_with({"XX": WrongTypes(), "GB": new_faker("en_GB")})
    same_both_ways(making(maker, model, 20), model)


def test_a_map_of_another_type() -> None:
    model = model_with(new_fakers())
    rows = countries(model, 20)
    model._country_to_provider_map = Mapping(model.country_to_provider_map)
    rows.iloc[3] = "XX"
    error = refused_both_ways(lambda: model.generate_last_names(rows, rows), model)
    assert str(error) == "Expected dict, got Mapping"

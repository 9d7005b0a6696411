"""Faker instances of every kind, stand-ins for them, and models that use them."""

from collections.abc import Callable, Iterable
from functools import cache
from typing import Any

import pandas as pd
from faker import Faker

from support.people import person_model
from vantrel.model.models.person import PersonModel

LOCALES = ("en_GB", "en_US", "de_DE", "fr_FR", "zh_CN", "ja_JP", "ar_EG", "ru_RU")
DTYPES: list[Any] = ["object", "str", "string", "category"]
try:
    import pyarrow as pa

    DTYPES += ["string[pyarrow]", pd.ArrowDtype(pa.string())]
except ImportError:  # one of the supported environments
    pass

Providers = dict[str, Any]


def shared(locales: Iterable[str] = LOCALES) -> Providers:
    """Instances that were never seeded: they draw from one common source."""
    return {locale: Faker(locale) for locale in locales}


def separate(locales: Iterable[str] = LOCALES) -> Providers:
    """Instances with a source each."""
    providers = shared(locales)
    for number, instance in enumerate(providers.values()):
        instance.seed_instance(number)
    return providers


def unweighted(locales: Iterable[str] = LOCALES) -> Providers:
    """Instances whose names are all equally likely."""
    return {locale: Faker(locale, use_weighting=False) for locale in locales}


def several_locales() -> Providers:
    """Instances that choose a locale for each draw."""
    mixed = Faker(["en_GB", "de_DE", "zh_CN"])
    weighted = Faker({"fr_FR": 1, "ja_JP": 3})
    weighted.seed_instance(1)
    return {"mixed": mixed, "weighted": weighted, "en_US": Faker("en_US")}


KINDS: dict[str, Callable[[], Providers]] = {
    "shared": shared,
    "separate": separate,
    "unweighted": unweighted,
    "several_locales": several_locales,
}


def model_with(providers: Providers, cls: type[PersonModel] = PersonModel) -> PersonModel:
    """A model, of a subclass if given, that draws from these providers."""
    model = cls(meta=person_model().meta)
    model.country_to_provider_map = providers
    return model


@cache
def model_of_kind(kind: str) -> PersonModel:
    """A model over one kind of instances, made once: they are dear to make."""
    return model_with(KINDS[kind]())


def countries_of(model: PersonModel, rows: int) -> pd.Series:
    """The model's countries in turn."""
    countries = list(model.country_to_provider_map)
    return pd.Series([countries[i % len(countries)] for i in range(rows)], dtype="object")


class StandInFaker:
    """The five methods and nothing else; writes down which were called, in order."""

    def __init__(self, name: str = "", calls: list[str] | None = None) -> None:
        self.name = name
        self.calls = [] if calls is None else calls

    def _draw(self, method: str) -> str:
        self.calls.append(self.name + method)
        return f"{self.name}{method}{len(self.calls)}"

    def first_name(self) -> str:
        return self._draw("first")

    def first_name_male(self) -> str:
        return self._draw("male")

    def first_name_female(self) -> str:
        return self._draw("female")

    def last_name(self) -> str:
        return self._draw("last")

    def domain_name(self) -> str:
        return self._draw("domain") + ".test"

"""What Faker's lists of first names tell: which words are such, and whose gender they tell."""

from __future__ import annotations

import pkgutil
from collections import Counter
from collections.abc import Iterator, Mapping
from functools import cache
from importlib import import_module
from typing import Any

import faker.providers.person

# One of these is in so many more lists of its gender that those of the other do not count.
_BY_FAR = 4


@cache
def genders_of_first_names(locale: str | None = None) -> Mapping[str, str]:
    """Maps first names, in lower case, to the key of the gender that they tell: "F" or "M".

    Args:
        locale: Whose lists count. If None, those of all: a name that is in many more lists of one
            gender than of the other tells that one.
    """
    lists = {"F": Counter[str](), "M": Counter[str]()}
    for provider in _providers(locale):
        for key, gender in (("F", "female"), ("M", "male")):
            lists[key].update({name.lower() for name in _list(provider, f"first_names_{gender}")})
    women, men = lists["F"], lists["M"]
    return {
        name: "F" if women[name] > men[name] else "M"
        for name in women | men
        if max(women[name], men[name]) >= _BY_FAR * min(women[name], men[name])
    }


@cache
def first_names() -> frozenset[str]:
    """The first names of all locales, in lower case."""
    lists = ("first_names", "first_names_female", "first_names_male")
    return frozenset(
        name.lower()
        for provider in _providers()
        for which in lists
        for name in _list(provider, which)
    )


def _providers(locale: str | None = None) -> Iterator[Any]:
    package = faker.providers.person
    for module in pkgutil.iter_modules(package.__path__):
        if locale in (None, module.name):
            yield import_module(f"{package.__name__}.{module.name}").Provider


def _list(provider: Any, name: str) -> Any:
    names = getattr(provider, name, ())
    return () if isinstance(names, property) else names

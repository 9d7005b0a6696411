"""Copies instances of Faker, which is quicker than to make new ones."""

from __future__ import annotations

import copy
from random import Random
from types import MethodType
from typing import Any

from faker import Faker


def copied(faker: Faker, source: Random | None = None) -> Faker:
    """Gives an instance that makes the same.

    Args:
        faker: The instance, with providers of its own and replaced methods, if it has any.
        source: What the copy draws from; the source of the instance if None.
    """
    twin: Any = copy.copy(faker)
    factories = twin._factory_map
    twin._factory_map = type(factories)(
        (name, (copied if isinstance(each, Faker) else _copied_generator)(each, source))
        for name, each in factories.items()
    )
    twin._factories = list(twin._factory_map.values())
    twin._unique_proxy = type(twin._unique_proxy)(twin)
    twin._optional_proxy = type(twin._optional_proxy)(twin)
    made: Faker = twin
    return made


def _copied_generator(generator: Any, source: Random | None) -> Any:
    twin = copy.copy(generator)
    twin.random = source or generator.random
    providers = {id(each): copy.copy(each) for each in generator.providers}
    twin.providers = list(providers.values())
    for provider in twin.providers:
        if getattr(provider, "generator", None) is generator:
            provider.generator = twin
    names = vars(twin)
    for name, value in names.items():
        if isinstance(value, MethodType) and id(value.__self__) in providers:
            names[name] = MethodType(value.__func__, providers[id(value.__self__)])
    return twin

"""How calls of the generators are made ready, and providers that fail."""

from __future__ import annotations

from collections.abc import Callable, Iterator
from typing import Any

import pandas as pd
from faker import Faker

from vantrel.model.models.person import PersonModel

from .call import Call, Prepared, good, replace
from .parts import LENGTHS, calling, drawing, fakers


def method(name: str, *arguments: Any, model: Callable[[], PersonModel] = drawing) -> Prepared:
    return lambda: calling(getattr(model(), name), *arguments)


def replacing(owner: Any, name: str, value: object, call: Prepared) -> Prepared:
    """The call, with something replaced that it goes through."""

    def prepare() -> Callable[[], object]:
        replace(owner, name, value)
        return call()

    return prepare


def both(name: str, cost: int, arguments: Callable[[int], tuple[Any, ...]]) -> Iterator[Call]:
    for how, rows in LENGTHS.items():
        yield good(f"PersonModel.{name} {how}", method(name, *arguments(rows)), cost)


class FailingFaker(Faker):
    """A Faker instance whose names cannot be had."""

    def first_name(self) -> str:
        raise LookupError

    last_name: Any = first_name
    domain_name: Any = first_name


class Interrupted(Faker):
    """One at which somebody presses Ctrl-C."""

    def first_name(self) -> str:
        raise KeyboardInterrupt

    last_name: Any = first_name
    domain_name: Any = first_name


class Ending(Faker):
    """One that ends an iteration, as no function should."""

    def first_name(self) -> str:
        raise StopIteration

    last_name: Any = first_name
    domain_name: Any = first_name


def half_way(provider: type[Faker]) -> Callable[[], PersonModel]:
    """A model that comes upon such a provider after some rows."""
    return lambda: drawing(fakers() | {"de_DE": provider()})


def breaking_off(values: pd.Series) -> Any:
    """Values that an interrupt ends half-way."""

    class Column(list[Any]):
        def __iter__(self) -> Iterator[Any]:
            yield from list(values)[:2]
            raise KeyboardInterrupt

    return Column(values)

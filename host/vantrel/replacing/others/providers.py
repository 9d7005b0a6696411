"""Which methods of Faker can make the values of a column."""

from __future__ import annotations

import inspect
from collections.abc import Callable
from datetime import date, datetime
from decimal import Decimal
from functools import cache, lru_cache
from threading import get_ident
from typing import Any

from faker import Faker

from vantrel.errors import ReplaceError
from vantrel.hints import did_you_mean
from vantrel.replacing.making.places import faker_in
from vantrel.wording import shown

# Faker has all of its methods in this language.
_LOCALE = "en_US"
_SEED = 1
_TYPES = (str, int, float, Decimal, date)

# What else Faker makes of dates it counts from the very second in which it is asked.
_OF_DATES = "faker.providers.date_time"
_OF_THE_DAY = {
    "century",
    "date_between",
    "date_of_birth",
    "date_this_century",
    "date_this_decade",
    "date_this_month",
    "date_this_year",
    "future_date",
    "past_date",
}


def refuse_unusable(name: str, where: str) -> None:
    """Refuses what is no method of Faker, or gives what no cell can hold.

    Args:
        name: The name of the method.
        where: Begins the message.
    """
    known = _methods()
    if name not in known:
        raise ReplaceError(
            f"{where} Faker has no method {shown(repr(name))}.{did_you_mean(name, known)} Those of"
            " its documentation that need no arguments will do, as in 'fake:street_address'."
        )
    if reason := _why_not(getattr(_usual(), name)):
        raise ReplaceError(f"{where} Faker's method {name!r} {reason}: name another one.")


def method_in(locale: str, name: str, where: str) -> tuple[Faker, Callable[[], Any]]:
    """Gives a generator of a language, and a method of it.

    Raises:
        ReplaceError: Faker does not have the method in this language, or not all that it needs.
    """
    faker = _faker_of(locale, get_ident())
    method = getattr(faker, name, None)
    if method is None:
        raise ReplaceError(
            f"{where} Faker has no method {name!r} in the language {locale!r}, which some rows"
            " need: name another one."
        )
    if error := _error_in(locale, name):
        raise ReplaceError(
            f"{where} Faker's method {name!r} fails in the language {locale!r}, which some rows"
            f" need ({error}): name another one."
        )
    return faker, method


@cache
def _error_in(locale: str, name: str) -> str:
    """Names the error with which a method fails in a language; "" if it does not."""
    faker = _faker_of(locale, get_ident())
    try:
        _seeded(faker, getattr(faker, name))
    except Exception as error:  # noqa: BLE001 - whatever any provider raises
        return type(error).__name__
    return ""


@lru_cache(maxsize=256)
def _faker_of(locale: str, _thread: int) -> Faker:
    """Makes a generator that no other thread seeds meanwhile."""
    return faker_in(locale)


def _usual() -> Faker:
    return _faker_of(_LOCALE, get_ident())


@cache
def _methods() -> frozenset[str]:
    """The names of the public methods of Faker's providers."""
    names = {
        name
        for provider in _usual().get_providers()
        for name, _ in inspect.getmembers(provider, callable)
    }
    return frozenset(name for name in names if not name.startswith("_"))


def _why_not(method: Callable[..., Any]) -> str | None:
    """Tells why a method cannot make the values of a column, if so."""
    if _needs_arguments(method):
        return "needs arguments"
    if method.__module__.startswith(_OF_DATES) and method.__name__ not in _OF_THE_DAY:
        return "goes by the time at which it is called, so that a person would have several values"
    try:
        made = [_seeded(_usual(), method) for _ in range(2)]
    except Exception as error:  # noqa: BLE001 - whatever any provider raises
        return f"fails without arguments ({type(error).__name__})"
    if not isinstance(made[0], _TYPES) or isinstance(made[0], bool | datetime):
        return f"gives no text, number or date, but {type(made[0]).__name__}"
    if made[0] != made[1]:
        return "gives another value each time"
    return None


def _needs_arguments(method: Callable[..., Any]) -> bool:
    return any(
        each.default is each.empty and each.kind not in (each.VAR_POSITIONAL, each.VAR_KEYWORD)
        for each in inspect.signature(method).parameters.values()
    )


def _seeded(faker: Faker, method: Callable[..., Any]) -> Any:
    faker.seed_instance(_SEED)
    return method()

"""Calls that look at the module, its classes and its functions as objects."""

from __future__ import annotations

import copy
import importlib.util
import inspect
import pickle
import pydoc
import sys
import types
import typing
import weakref
from collections.abc import Callable
from functools import partial
from typing import Any

from support.members import MEMBER_IDS, MEMBERS, MODULE_FUNCTIONS, Member
from vantrel.metadata.value import String
from vantrel.model.models import person
from vantrel.model.models.person import CountryModel, GenderModel, PersonModel

from .call import Call, bad, fail_with, good, replace
from .parts import gender_model

CLASSES: tuple[type, ...] = (GenderModel, PersonModel, CountryModel)
ATTRIBUTES = (
    *("__name__", "__qualname__", "__module__", "__doc__", "__dict__", "__globals__"),
    *("__code__", "__defaults__", "__kwdefaults__", "__annotations__", "__closure__"),
    *("__type_params__", "__builtins__"),
)
WRITABLE = ("__name__", "__qualname__", "__doc__", "__defaults__", "__annotations__")
CODE = ("co_varnames", "co_freevars", "co_consts", "co_code", "co_filename", "co_name")


def _looking_at(member: Member) -> Callable[[], Callable[[], object]]:
    def look() -> None:
        function = member.built()
        for name in ATTRIBUTES:
            getattr(function, name)
        for name in CODE:
            getattr(function.__code__, name)
        for name in WRITABLE:
            setattr(function, name, getattr(function, name))
        inspect.signature(function)
        repr(function)

    return lambda: look


def _pickled(value: object) -> Callable[[], Callable[[], object]]:
    def there_and_back() -> None:
        pickle.loads(pickle.dumps(value))

    return lambda: there_and_back


def _by_name(member: Member) -> Any:
    return getattr(getattr(person, member.owner) if member.owner else person, member.name)


FUNCTIONS: list[Call] = []
for _name, _member in zip(MEMBER_IDS, MEMBERS, strict=True):
    FUNCTIONS.append(good(f"{_name} as an object", _looking_at(_member), 5))
    if _member.kind in ("function", "method", "staticmethod"):
        FUNCTIONS.append(good(f"{_name} pickled by name", _pickled(_by_name(_member))))


def _subclassed(base: type) -> Callable[[], Callable[[], object]]:
    return lambda: lambda: types.new_class("Made", (base,)).__mro__


def _documented(cls: type) -> Callable[[], Callable[[], object]]:
    return lambda: partial(pydoc.render_doc, cls)


class OwnGenderModel(GenderModel):
    """A subclass that calls the module's functions through `super`."""

    def __init__(self, meta: String) -> None:
        super().__init__(meta)


def _without_own_code() -> Callable[[], object]:
    """The code of a function of the module, run by the interpreter."""
    code = person.all_supported_locales.__code__
    return types.FunctionType(code, {})


MODELS = [
    *[good(f"{cls.__name__} subclassed", _subclassed(cls), 5) for cls in CLASSES],
    *[good(f"{cls.__name__} documented", _documented(cls), 10) for cls in CLASSES],
    *[good(f"{cls.__name__} pickled by name", _pickled(cls)) for cls in CLASSES],
    good("model of a subclass", lambda: partial(OwnGenderModel, String("title"))),
    good("model pickled", _pickled(gender_model(["Mr"])), 3),
    good("model copied", lambda: partial(copy.deepcopy, gender_model(["Mr"])), 3),
    good("model referred to weakly", lambda: lambda: weakref.ref(gender_model())()),
    good("type hints", lambda: partial(typing.get_type_hints, PersonModel.sample, vars(person)), 2),
    bad("code without its function", AssertionError, _without_own_code),
    bad("property deleted", AttributeError, lambda: lambda: delattr(gender_model(), "categories")),
]


def _import_again() -> None:
    name = person.__name__
    del sys.modules[name]
    importlib.import_module(name)


def _import_elsewhere() -> None:
    """Makes and executes the module by hand: it is the one that is there."""
    spec = importlib.util.find_spec(person.__name__)
    assert spec is not None
    assert spec.loader is not None
    spec.loader.exec_module(importlib.util.module_from_spec(spec))


def _supported(member: Member) -> list[Call]:
    name = member.name
    asked = {
        "all_supported_country_names": "get_supported_country_names",
        "all_supported_country_codes": "get_supported_country_codes",
        "all_supported_locales": "valid_locales",
    }[name]

    def replaced(value: object) -> Callable[[], Callable[[], object]]:
        def prepare() -> Callable[[], object]:
            replace(person, asked, value)
            return typing.cast(Callable[[], object], member.built())

        return prepare

    def unknown() -> Callable[[], object]:
        replace(person, "Provider", types.SimpleNamespace())
        return typing.cast(Callable[[], object], member.built())

    return [
        good(name, lambda: member.built(), 10),
        bad(f"{name}: answer of a wrong type", TypeError, replaced(lambda _: 3)),
        bad(f"{name}: host fails", LookupError, replaced(fail_with(LookupError))),
        bad(f"{name}: interrupted", KeyboardInterrupt, replaced(fail_with(KeyboardInterrupt))),
        bad(f"{name}: no such provider", AttributeError, unknown),
    ]


MODULE = [
    good("module imported again", lambda: _import_again),
    good("module made again", lambda: _import_elsewhere, 2),
    *[call for member in MODULE_FUNCTIONS for call in _supported(member)],
]

CALLS = [*FUNCTIONS, *MODELS, *MODULE]

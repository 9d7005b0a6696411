"""Finds the functions of a package that a call goes through, and puts noting wrappers in their places."""

import functools
import sys
from collections import Counter
from collections.abc import Callable, Iterator
from contextlib import ExitStack, contextmanager
from pathlib import Path
from types import CodeType, FunctionType, ModuleType
from typing import Any

# Data of the interpreter's that wrappers must not take the place of.
_LEFT_ALONE = {"__new__", "__init_subclass__", "__class_getitem__"}


def calls_by_function(call: Callable[[], Any], package: ModuleType) -> Counter[CodeType]:
    """How often the call starts each function in the package's files."""
    folder = str(Path(package.__file__ or "").parent)
    found: Counter[CodeType] = Counter()

    def note(frame: Any, event: str, _: Any) -> None:
        if event == "call" and frame.f_code.co_filename.startswith(folder):
            found[frame.f_code] += 1

    sys.setprofile(note)
    try:
        call()
    finally:
        sys.setprofile(None)
    return found


def places_of(codes: set[CodeType], package: ModuleType) -> dict[CodeType, list[tuple[Any, str]]]:
    """Where each of the functions stands: the modules and classes of the package, with the names there."""
    places: dict[CodeType, list[tuple[Any, str]]] = {}
    for holder in _holders(package.__name__):
        for name, value in vars(holder).items():
            for function in _functions_in(value):
                code = getattr(function, "__code__", None)
                if code in codes and name not in _LEFT_ALONE:
                    places.setdefault(code, []).append((holder, name))
    return places


@contextmanager
def noted_calls(places: list[tuple[Any, str]]) -> Iterator[list[str]]:
    """Wraps the functions in these places; gives the names in the order in which they are called."""
    calls: list[str] = []
    with ExitStack() as undo:
        for holder, name in places:
            before = vars(holder)[name]
            setattr(holder, name, _wrapped(before, calls))
            undo.callback(setattr, holder, name, before)
        yield calls


def _holders(package: str) -> list[Any]:
    modules = [
        module
        for name, module in list(sys.modules.items())
        if name.partition(".")[0] == package and isinstance(module, ModuleType)
    ]
    classes = {
        value
        for module in modules
        for value in vars(module).values()
        if isinstance(value, type) and value.__module__.partition(".")[0] == package
    }
    return [*modules, *classes]


def _functions_in(value: Any) -> list[Any]:
    if isinstance(value, staticmethod | classmethod):
        return [value.__func__]
    if isinstance(value, property):
        return [value.fget]
    return [value] if isinstance(value, FunctionType) else []


def _wrapped(value: Any, calls: list[str]) -> Any:
    if isinstance(value, staticmethod | classmethod):
        return type(value)(_wrapped(value.__func__, calls))
    if isinstance(value, property):
        return property(_wrapped(value.fget, calls), value.fset, value.fdel)

    @functools.wraps(value)
    def noting(*args: Any, **kwargs: Any) -> Any:
        calls.append(value.__qualname__)
        return value(*args, **kwargs)

    return noting

"""Imports without one of the builtins that the module needs."""

from pathlib import Path

import pytest

from support.failed_imports import ENTRY, PRELUDE
from support.isolated import answer_of

CACHED = [
    "property",
    "staticmethod",
    "super",
    "object",
    "ValueError",
    "range",
    "zip",
    "all",
    "AssertionError",
    "sum",
]


@pytest.mark.parametrize("name", CACHED)
def test_builtin_that_is_missing(standins: Path, name: str) -> None:
    code = (
        PRELUDE
        + f"""
    spec = importlib.util.find_spec(NAME)
    made = importlib.util.module_from_spec(spec)
    kept = builtins.__dict__.pop({name!r})
    caught = None
    try:
        spec.loader.exec_module(made)
    except NameError as error:
        caught = error
    builtins.__dict__[{name!r}] = kept
    failed = report(caught)
    bound = sorted(set(vars(made)) & {{"random", "GenderModel"}})
    print(json.dumps([failed, bound, works()]))
    """
    )
    failed, bound, repaired = answer_of(code, path=standins)
    assert (failed["type"], failed["text"]) == ("NameError", f"name '{name}' is not defined")
    assert [entry[:2] for entry in failed["entries"]] == [ENTRY]
    assert bound == []
    assert repaired

"""Runs one call as whole columns, twice, and call by call, and tells whether anything differs.

The module makes a column at once only while nothing that it would call has been replaced. An equal
stand-in for one of its module-level names is such a replacement: with it in place the module
makes every element by a call of its own.
"""

from collections.abc import Callable, Iterator
from contextlib import AbstractContextManager, contextmanager, nullcontext
from dataclasses import dataclass
from typing import Any

import numpy as np
import pandas as pd

from support.sources import seed_sources, source_states
from vantrel.model.models import person
from vantrel.model.models.person import PersonModel

Call = Callable[[], Any]
Surroundings = Callable[[], AbstractContextManager[Any]]


class StandIn:
    """Answers for a module or a function as that itself does."""

    def __init__(self, genuine: Any) -> None:
        self._genuine = genuine

    def __getattr__(self, name: str) -> Any:
        return getattr(self._genuine, name)

    def __call__(self, *args: Any, **kwargs: Any) -> Any:
        return self._genuine(*args, **kwargs)


@contextmanager
def call_by_call(name: str = "pd") -> Iterator[None]:
    """Has the module make every element by a call of its own.

    Args:
        name: The module-level name that gets a stand-in.
    """
    genuine = getattr(person, name)
    setattr(person, name, StandIn(genuine))
    try:
        yield
    finally:
        setattr(person, name, genuine)


@dataclass
class Run:
    """What one run did, in forms that compare with ==.

    Attributes:
        made: The result's values, types, dtypes, indexes and names.
        error: What was raised, and what that was raised from.
        noted: What the surroundings of the run wrote down.
        states: The state of every random source after the run.
        result: The result itself, for further checks.
    """

    made: Any
    error: Any
    noted: Any
    states: dict[str, Any]
    result: Any


def same_both_ways(
    call: Call,
    model: PersonModel | None = None,
    seed: int = 1,
    within: Surroundings = nullcontext,
    stand_in: str = "pd",
) -> Run:
    """Asserts that both ways of one call have the same result or error, and the same effects.

    Args:
        call: The call; it must be able to run three times.
        model: The model whose sources are seeded before each run and compared after it.
        seed: The seed of every source.
        within: Makes a context that is entered after seeding and left after the states were
            read; what it hands out is compared, too.
        stand_in: The module-level name that gets a stand-in for the last run.
    """
    at_once = _run(call, model, seed, within)
    # What was learnt of pandas and of Faker is known from now on.
    once_more = _run(call, model, seed, within)
    with call_by_call(stand_in):
        one_by_one = _run(call, model, seed, within)
    for run in (at_once, once_more):
        assert run.error == one_by_one.error
        assert run.made == one_by_one.made
        assert run.noted == one_by_one.noted
        for source, state in one_by_one.states.items():
            assert run.states[source] == state, f"the source {source!r} was left elsewhere"
    return once_more


def made_both_ways(
    call: Call,
    model: PersonModel | None = None,
    seed: int = 1,
    within: Surroundings = nullcontext,
) -> Any:
    """As `same_both_ways` for a call that must not raise; gives the result."""
    run = same_both_ways(call, model, seed, within)
    assert run.error is None
    return run.result


def refused_both_ways(
    call: Call,
    model: PersonModel | None = None,
    seed: int = 1,
    within: Surroundings = nullcontext,
) -> BaseException:
    """As `same_both_ways` for a call that must raise; gives the exception."""
    run = same_both_ways(call, model, seed, within)
    assert run.error is not None
    error: BaseException = run.result
    return error


def _run(call: Call, model: PersonModel | None, seed: int, within: Surroundings) -> Run:
    seed_sources(seed, model)
    with within() as noted:
        made = error = None
        try:
            result = call()
            made = described(result)
        except Exception as raised:  # noqa: BLE001 - whatever it is, both ways must raise it
            result = raised
            error = described_error(raised)
        return Run(made, error, described(noted), source_states(model), result)


def described(value: Any) -> Any:
    """Everything about a result that a user could see, in a form that compares with ==."""
    if isinstance(value, pd.Series):
        return (
            type(value),
            value.dtype,
            repr(value.dtype),
            _element(value.name),
            described(value.index),
            [_element(element) for element in value],
            dict(value.attrs),
        )
    if isinstance(value, pd.Index):
        elements = [_element(element) for element in value]
        return type(value), value.dtype, repr(value.dtype), list(value.names), elements
    if isinstance(value, pd.DataFrame):
        columns = [described(value.iloc[:, i]) for i in range(value.shape[1])]
        return type(value), described(value.index), described(value.columns), columns
    if isinstance(value, list | tuple):
        return type(value), [described(element) for element in value]
    return _element(value)


def _element(value: Any) -> tuple[type, str]:
    return type(value), repr(value)


def described_error(error: BaseException | None) -> Any:
    """The types and texts of an exception and of those before it."""
    if error is None:
        return None
    return (
        type(error),
        str(error),
        error.__suppress_context__,
        described_error(error.__cause__),
        described_error(error.__context__),
    )


def _numpy_texts(values: list[Any]) -> pd.Series:
    return pd.Series(list(np.array(values, dtype=str)), dtype="object")


# How a list of texts becomes a series of each dtype.
TEXT_DTYPES: dict[str, Callable[[list[Any]], pd.Series]] = {
    "inferred": lambda values: pd.Series(values),
    "object": lambda values: pd.Series(values, dtype="object"),
    "str": lambda values: pd.Series(values, dtype="str"),
    "string": lambda values: pd.Series(values, dtype="string"),
    "string[python]": lambda values: pd.Series(values, dtype="string[python]"),
    "category": lambda values: pd.Series(values, dtype="category"),
    "numpy texts": _numpy_texts,
}
try:
    import pyarrow as pa
except ImportError:  # one of the supported environments
    pass
else:
    TEXT_DTYPES["string[pyarrow]"] = lambda values: pd.Series(values, dtype="string[pyarrow]")
    TEXT_DTYPES["arrow"] = lambda values: pd.Series(values, dtype=pd.ArrowDtype(pa.string()))

"""Whole columns against single calls: functions of pandas that somebody has replaced."""

from collections.abc import Iterator
from contextlib import contextmanager
from typing import Any

import numpy as np
import pandas as pd
import pytest

from support.counting import FAKER, calls_of
from support.sources import seed_sources
from support.tracing import calls_by_function, noted_calls, places_of
from support.twins import call_by_call, made_both_ways, same_both_ways
from support.whole_columns import countries, in_turn, making, names, usual_model

ROWS = 16


@pytest.mark.parametrize("maker", ["values", "usernames", "conditional"])
def test_each_function_that_a_column_goes_through(maker: str) -> None:
    model = usual_model()
    call = making(maker, model, ROWS)
    call()
    seed_sources(1, model)
    with call_by_call("re"):
        usual = calls_by_function(call, pd)
    seen = 0
    for code, places in places_of(set(usual), pd).items():
        seed_sources(1, model)
        with noted_calls(places) as calls:
            call()
        # Some stand in closures as well, where the wrapper does not come.
        seen += 0 < len(calls) == usual[code]
    assert seen > 0.8 * len(usual) > 10


def tried_on_the_first_element(usual: Any) -> Any:
    """`Series.apply` as add-ons for progress and timing have it."""

    def apply(self: pd.Series, func: Any, *, args: Any = (), **kwargs: Any) -> Any:
        if len(self):
            func(self.iloc[0], *args, **kwargs)
        return usual(self, func, args=args, **kwargs)

    return apply


def test_an_apply_that_tries_the_function_first(monkeypatch: pytest.MonkeyPatch) -> None:
    model = usual_model()
    monkeypatch.setattr(pd.Series, "apply", tried_on_the_first_element(pd.Series.apply))
    for maker in ("values", "usernames", "conditional"):
        made_both_ways(making(maker, model), model)


def test_an_apply_within_pandas_that_calls_the_function_more_often(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    from pandas.core.apply import SeriesApply  # type: ignore[import-not-found]  # no stub has it

    usual = SeriesApply.apply_standard

    def apply_standard(self: Any) -> Any:
        self.func(self.obj.iloc[0], *self.args, **self.kwargs)
        return usual(self)

    monkeypatch.setattr(SeriesApply, "apply_standard", apply_standard)
    model = usual_model()
    for maker in ("values", "usernames", "conditional"):
        made_both_ways(making(maker, model), model)


def test_a_method_of_the_given_series_itself() -> None:
    model = usual_model()

    @contextmanager
    def own_apply(column: pd.Series) -> Iterator[list[str]]:
        calls: list[str] = []
        usual = type(column).astype

        def astype(*args: Any, **kwargs: Any) -> Any:
            calls.append("astype")
            return usual(column, *args, **kwargs)

        object.__setattr__(column, "astype", astype)
        try:
            yield calls
        finally:
            object.__delattr__(column, "astype")

    keys = in_turn(["F", "M"], 30)
    run = same_both_ways(
        lambda: model.generate_values_from_collections(keys, {"F": ["Mrs"], "M": ["Mr"]}),
        model,
        within=lambda: own_apply(keys),
    )
    assert run.noted[1]


def test_methods_that_were_added_switch_nothing_off(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(pd.Series, "progress_apply", lambda self: self, raising=False)
    monkeypatch.setattr(pd, "geodata", type("Geodata", (), {}), raising=False)
    assert calls_of(making("sample", usual_model(), 2000), FAKER) < 2000


def test_a_function_that_is_put_back_switches_nothing_off(monkeypatch: pytest.MonkeyPatch) -> None:
    with monkeypatch.context() as patched:
        usual = pd.Series.nunique
        patched.setattr(pd.Series, "nunique", lambda *args, **rest: usual(*args, **rest))
        assert calls_of(making("sample", usual_model(), 100), FAKER) > 100
    assert calls_of(making("sample", usual_model(), 2000), FAKER) < 2000


def test_another_type_of_numpy_texts(monkeypatch: pytest.MonkeyPatch) -> None:
    class Text(str):
        pass

    monkeypatch.setattr(np, "str_", Text)
    model = usual_model()
    made_both_ways(making("values", model), model)
    made_both_ways(making("conditional", model), model)


@pytest.mark.parametrize("rows", [3, 30])
def test_the_index_of_a_result_is_an_object_of_its_own_where_it_is_call_by_call(rows: int) -> None:
    model = usual_model()
    first, last = names(rows), names(rows)
    calls = {
        "usernames": lambda: model.generate_usernames(first, last),
        "emails": lambda: model.generate_emails(first, last, countries(model, rows)),
        "values": lambda: model.generate_values_from_collections(first, {"Ann": ["x"]}),
    }
    for call in calls.values():
        same_both_ways(lambda call=call: call().index is first.index, model, stand_in="re")


@pytest.mark.parametrize("dtype", ["object", "str", "string[python]"])
@pytest.mark.parametrize("rows", [2, 30])
def test_values_of_a_sample_are_not_those_of_the_conditions(rows: int, dtype: str) -> None:
    model = usual_model()
    given = pd.DataFrame(
        {
            "gender": in_turn(["male", "female"], rows, dtype),
            "country": in_turn(["GB", "US"], rows, dtype),
        }
    )
    before = given.copy(deep=True)
    people = model.sample(conditions=given)
    for column in ("gender", "country"):
        values = people[column].values
        if getattr(getattr(values, "flags", None), "writeable", True):
            values[:] = "changed"
        elif dtype == "object":
            assert not np.shares_memory(values, given[column].values)
    pd.testing.assert_frame_equal(given, before)

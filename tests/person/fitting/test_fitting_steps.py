"""Fitting a person model: the order of the steps, and the frame that each is given."""

from typing import Any

import pandas as pd
import pytest

from support.fitting import FRAME, model_of
from support.people import ALL_LABELS, people, person_model
from support.recording import Calls, RecordingContext, StandInMeta
from vantrel.model.base import DiscreteModel
from vantrel.model.models.person import PersonModel


def test_fit_gives_back_the_very_object() -> None:
    model = person_model()
    assert model.fit(FRAME) is model


def test_fit_takes_the_frame_by_keyword_too() -> None:
    assert person_model().fit(df=FRAME)._country_to_provider_map


def test_the_steps_come_in_order_each_with_the_callers_frame() -> None:
    calls = Calls()
    model_of(calls).fit(FRAME)
    assert calls.names() == ["extract", "unfold", "enter", "gender", "country", "exit"]


def test_the_base_class_and_unfold_get_the_frame_by_keyword_and_the_hidden_models_by_position(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    calls = Calls()
    model = model_of(calls)
    monkeypatch.setattr(DiscreteModel, "fit", calls.recorder("base"))
    model.fit(FRAME)
    assert [(name, len(args), list(keywords)) for name, args, keywords in calls] == [
        ("base", 1, ["df"]),
        ("unfold", 0, ["df"]),
        ("enter", 0, []),
        ("gender", 1, []),
        ("country", 1, []),
        ("exit", 3, []),
    ]
    assert calls[0][1][0] is model
    assert calls[0][2]["df"] is FRAME
    assert calls[1][2]["df"] is FRAME


def test_the_hidden_models_see_the_callers_frame_not_what_unfold_hands_out() -> None:
    calls = Calls()
    model_of(calls, context=RecordingContext(calls, handed_out=people(1))).fit(FRAME)
    assert [args[0] is FRAME for name, args, _ in calls if name in ("gender", "country")] == [
        True,
        True,
    ]


def test_the_base_class_is_the_next_one_in_the_order_of_classes() -> None:
    seen = []

    class Between(DiscreteModel[Any, Any]):
        def fit(self, **keywords: Any) -> None:
            seen.append(keywords)

    class Both(PersonModel, Between):
        pass

    Both(StandInMeta()).fit(FRAME)
    [keywords] = seen
    assert list(keywords) == ["df"]
    assert keywords["df"] is FRAME


def test_fitting_leaves_the_callers_frame_alone() -> None:
    df = people()
    before = df.copy(deep=True)
    person_model(ALL_LABELS).fit(df)
    pd.testing.assert_frame_equal(df, before)

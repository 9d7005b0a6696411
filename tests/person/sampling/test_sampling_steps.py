"""The steps of the sampling entry: their order, what each is given, and what they leave alone."""

from typing import Any

import pandas as pd
import pytest

from support.comparing import assert_identical
from support.people import fitted_model, people, person_model
from support.recording import Calls
from support.sampling import GIVEN, LEARNT, conditional_of, noting_model
from support.sources import source_states
from vantrel.config import PersonLabels
from vantrel.model.models import person
from vantrel.model.models.person import PersonModel


def test_the_steps_come_in_order() -> None:
    calls = Calls()
    noting_model(calls).sample(n=2)
    assert calls.names() == ["hidden", "country", "conditional", "revert"]


def test_without_a_country_label_the_map_comes_before_the_draw(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    calls = Calls()
    model = noting_model(calls, PersonLabels(gender="gender"))
    monkeypatch.setattr(
        person, "get_country_to_provder_map", calls.recorder("map", lambda *_: {"x": 1})
    )
    model.sample(n=2)
    assert calls.names() == ["hidden", "map", "choice", "conditional", "revert"]


def test_the_frame_is_brought_back_by_the_meta_which_gets_it_by_position() -> None:
    calls = Calls()
    model = noting_model(calls)
    answer = object()
    made = model._sample_conditional()
    model._meta.revert_df_from_children = calls.recorder("revert", lambda df: answer)
    assert model.sample(n=2) is answer
    _, args, keywords = calls[-1]
    assert args[0] is made
    assert keywords == {}


def test_conditional_sampling_gets_four_keywords() -> None:
    calls = Calls()
    marker = object()
    noting_model(calls).sample(n=2, produce_nans=marker)
    [(_, args, keywords)] = [call for call in calls if call[0] == "conditional"]
    assert args == ()
    assert list(keywords) == [
        *["num_rows", "gender_conditions", "country_conditions", "produce_nans"]
    ]
    assert keywords["produce_nans"] is marker
    assert keywords["gender_conditions"].tolist() == ["F", "M"]
    assert keywords["country_conditions"].tolist() == ["GB", "US"]


def test_conditional_sampling_of_a_subclass_is_honoured() -> None:
    class Other(PersonModel):
        def _sample_conditional(self, **given: Any) -> pd.DataFrame:
            return pd.DataFrame({"first": ["Zed"] * given["num_rows"]})

    model = Other(person_model().meta).fit(people())
    assert model.sample(n=2)["first"].tolist() == ["Zed", "Zed"]


def test_the_columns_come_in_the_order_of_the_fitted_table() -> None:
    model = fitted_model(LEARNT, people()[["country", "title", "gender"]])
    assert model.sample(n=3).columns.tolist() == ["country", "title", "gender"]


@pytest.mark.parametrize("produce_nans", [True, False, 0, "yes", None])
def test_whether_rows_may_be_missing_is_passed_on_unchanged(produce_nans: Any) -> None:
    calls = Calls()
    noting_model(calls).sample(n=2, produce_nans=produce_nans)
    passed = [keywords["produce_nans"] for _, _, keywords in calls if "produce_nans" in keywords]
    assert len(passed) == 3
    assert all(value is produce_nans for value in passed)


def test_rows_may_be_missing_by_default() -> None:
    calls = Calls()
    noting_model(calls).sample(n=2)
    assert conditional_of(calls)["produce_nans"] is True


def test_conditions_are_left_alone() -> None:
    before = GIVEN.copy(deep=True)
    fitted_model().sample(conditions=GIVEN)
    assert_identical(GIVEN, before)


def test_sampling_with_a_country_label_changes_nothing_but_the_generators() -> None:
    model = fitted_model()
    before = model.to_dict()
    attributes = {name: value for name, value in vars(model).items() if name != "_rng"}
    states = source_states(model)
    model.sample(n=20)
    assert model.to_dict() == before
    assert {name: value for name, value in vars(model).items() if name != "_rng"} == attributes
    drawn_from = [name for name, state in source_states(model).items() if state != states[name]]
    assert drawn_from[-1] == "providers"
    assert "model" not in drawn_from

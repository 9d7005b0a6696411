"""How many rows the sampling entry makes, and which numbers it refuses."""

from typing import Any

import numpy as np
import pytest

from support.calls import Number
from support.people import fitted_model
from support.recording import Calls
from support.sampling import GIVEN, LABEL_SETS, conditional_of, noting_model
from vantrel.config import PersonLabels
from vantrel.metadata.rules.association import Association
from vantrel.model.models import person
from vantrel.model.models.person import PersonModel


class Items(list[Any]):
    """A subclass of list."""


def test_neither_rows_nor_conditions_is_refused_before_anything_else() -> None:
    calls = Calls()
    with pytest.raises(ValueError) as caught:
        noting_model(calls).sample()
    assert caught.value.args == ("One of 'n' or 'conditions' must be given.",)
    assert calls == []


def test_conditions_win_over_the_number_of_rows() -> None:
    assert len(fitted_model().sample(n=9, conditions=GIVEN)) == 5


@pytest.mark.parametrize("n", [None, 9])
def test_the_rows_are_those_of_the_conditions(n: int | None) -> None:
    calls = Calls()
    noting_model(calls).sample(n=n, conditions=GIVEN)
    assert conditional_of(calls)["num_rows"] == 5


def test_otherwise_they_are_the_given_number() -> None:
    calls = Calls()
    noting_model(calls).sample(2)
    assert conditional_of(calls)["num_rows"] == 2


@pytest.mark.parametrize(
    ("n", "given"),
    [(True, "bool"), (Number(1), "Number"), (np.int64(1), "int64"), (1.0, "float"), ("1", "str")],
)
def test_a_number_of_rows_that_is_no_int_is_refused_before_any_step(n: Any, given: str) -> None:
    calls = Calls()
    with pytest.raises(TypeError) as caught:
        noting_model(calls).sample(n=n, conditions=GIVEN)
    assert str(caught.value) == f"Argument 'n' has incorrect type (expected int, got {given})"
    assert calls == []


@pytest.mark.parametrize(
    ("associations", "given"), [((), "tuple"), (Items(), "Items"), (Association(), "Association")]
)
def test_associations_that_are_no_list_are_refused_before_any_step(
    associations: Any, given: str
) -> None:
    calls = Calls()
    with pytest.raises(TypeError) as caught:
        noting_model(calls).sample(n=1, associations=associations)
    message = f"Argument 'associations' has incorrect type (expected list, got {given})"
    assert str(caught.value) == message
    assert calls == []


def test_the_number_of_rows_is_cast_to_int(monkeypatch: pytest.MonkeyPatch) -> None:
    calls = Calls()
    model = noting_model(calls)
    monkeypatch.setattr(person, "cast", calls.recorder("cast", lambda type_, value: 7))
    model.sample(n=2)
    assert calls[0] == ("cast", (int, 2), {})
    assert conditional_of(calls)["num_rows"] == 7


@pytest.mark.parametrize(
    ("count", "given"), [("2", "str"), (True, "bool"), (2.0, "float"), (Number(2), "Number")]
)
def test_a_cast_to_another_type_is_refused(
    monkeypatch: pytest.MonkeyPatch, count: Any, given: str
) -> None:
    calls = Calls()
    model = noting_model(calls)
    monkeypatch.setattr(person, "cast", lambda type_, value: count)
    with pytest.raises(TypeError) as caught:
        model.sample(n=2)
    assert str(caught.value) == f"Expected int, got {given}"
    assert calls == []


def test_a_cast_to_none_is_passed_on(monkeypatch: pytest.MonkeyPatch) -> None:
    calls = Calls()
    model = noting_model(calls)
    monkeypatch.setattr(person, "cast", lambda type_, value: None)
    model.sample(n=2)
    assert conditional_of(calls)["num_rows"] is None


@pytest.mark.parametrize("labels", LABEL_SETS.values(), ids=LABEL_SETS)
@pytest.mark.parametrize("how", ["n", "conditions"])
def test_no_rows_give_an_empty_frame_with_the_columns(labels: PersonLabels, how: str) -> None:
    given = {"n": 0} if how == "n" else {"conditions": GIVEN.head(0)}
    model = fitted_model(labels)
    made = model.sample(**given)
    assert len(made) == 0
    assert sorted(made.columns) == sorted(model.params.values())


def test_no_rows_without_locales_make_an_empty_series_of_countries(asked: Calls) -> None:
    class Placeless(PersonModel):
        locales = None

    calls = Calls()
    model = noting_model(calls, PersonLabels())
    model.__class__ = Placeless
    model.sample(n=0)
    assert conditional_of(calls)["country_conditions"].tolist() == []

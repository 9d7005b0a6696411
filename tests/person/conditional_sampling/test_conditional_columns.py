"""Which columns conditional sampling makes, and in which order."""

import pandas as pd
import pytest

from support.conditional_sampling import LABEL_SETS, columns_of, model_of, noting_model, sampled
from support.people import ALL_LABELS
from support.recording import Calls
from vantrel.config import PersonLabels
from vantrel.model.models import person
from vantrel.model.models.person import PersonModel


@pytest.mark.parametrize("labels", LABEL_SETS.values(), ids=LABEL_SETS)
def test_columns_are_the_labelled_ones_in_a_fixed_order(labels: PersonLabels) -> None:
    assert sampled(model_of(labels)).columns.tolist() == columns_of(labels)


@pytest.mark.parametrize("produce_nans", [True, False])
@pytest.mark.parametrize("rows", [0, 4])
def test_without_labels_names_are_made_and_an_empty_frame_of_the_rows_comes_back(
    rows: int, produce_nans: bool
) -> None:
    calls = Calls()
    made = sampled(noting_model(calls, PersonLabels()), rows, produce_nans=produce_nans)
    assert calls.names() == ["generate_first_names", "generate_last_names"]
    assert made.shape == (rows, 0)
    assert made.index.tolist() == list(range(rows))


@pytest.mark.parametrize("produce_nans", [True, False])
def test_no_rows_give_an_empty_frame_with_the_columns(produce_nans: bool) -> None:
    made = sampled(model_of(), 0, produce_nans=produce_nans)
    assert made.columns.tolist() == columns_of(ALL_LABELS)
    assert len(made) == 0


def test_an_empty_label_is_a_column_of_that_name() -> None:
    made = sampled(model_of(PersonLabels(firstname="")), 2)
    assert made.columns.tolist() == [""]


def test_the_frame_is_made_of_empty_rows(monkeypatch: pytest.MonkeyPatch) -> None:
    calls = Calls()
    model = model_of(PersonLabels())
    firsts = pd.Series(["a", "b"])
    model.generate_first_names = lambda **_: firsts
    model.generate_last_names = lambda **_: firsts

    class Pandas:
        DataFrame = staticmethod(calls.recorder("DataFrame", pd.DataFrame))

    monkeypatch.setattr(person, "pd", Pandas)
    sampled(model, 2)
    assert calls == [("DataFrame", ([[], []],), {})]


def test_labels_of_a_subclass_are_honoured() -> None:
    class Relabelled(PersonModel):
        labels = PersonLabels(firstname="given")

    assert sampled(model_of(cls=Relabelled)).columns.tolist() == ["given"]

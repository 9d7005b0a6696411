"""Whole columns against single calls: labels that are few, odd or more than the model knows."""

from typing import Any

import pandas as pd
import pytest

from support.people import fitted_model, people
from support.twins import same_both_ways
from support.whole_columns import in_turn
from vantrel.config import PersonLabels


@pytest.mark.parametrize(
    "labels",
    [
        PersonLabels(firstname="a", lastname="a "),
        PersonLabels(gender="", title="gender"),
        PersonLabels(firstname=5, lastname=("a", "b")),
        PersonLabels(email="0"),
    ],
    ids=str,
)
def test_odd_labels(labels: PersonLabels) -> None:
    table = people().rename(columns={"gender": "", "title": "gender"})
    model = fitted_model(labels, table)
    same_both_ways(lambda: model.sample(10), model)


@pytest.mark.parametrize("produce_nans", [True, False])
@pytest.mark.parametrize("genders", [["F", "M"] * 10, ["F", None] * 10], ids=["all", "missing"])
@pytest.mark.parametrize(
    "more",
    [{"nickname": "nick"}, {"nickname": "first"}, {"nickname": ["first"]}, {"nickname": 0}],
    ids=str,
)
def test_labels_beyond_those_of_the_model(
    more: dict[str, Any], genders: list[Any], produce_nans: bool
) -> None:
    model = fitted_model(PersonLabels(firstname="first", lastname="last"))
    model.sample(0)  # gives the model the provider of its locale
    vars(model.labels).update(more)
    keys, places = pd.Series(genders), in_turn(["en_GB"], 20)
    same_both_ways(lambda: model._sample_conditional(20, keys, places, produce_nans), model)


@pytest.mark.parametrize("rows", [0, 1, 20])
def test_no_label(rows: int) -> None:
    model = fitted_model(PersonLabels())
    same_both_ways(lambda: model.sample(rows), model)

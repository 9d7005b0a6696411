"""Models that are fitted from counts are those that are fitted on whole tables."""

from __future__ import annotations

import itertools
from pathlib import Path

import pandas as pd
import pytest
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.fitting.counted import fit_counts, learnt_columns
from vantrel.metadata.value import Person
from vantrel.model.models.person import PersonModel
from vantrel.storage.models import dumps
from vantrel.tables import TableCounts, count_frame, merged, open_table, write_table

LABELS = {"gender": "sex", "title": "title", "country": "land", "firstname": "first"}
VALUES = {
    "sex": [None, "m", "F", "female", "x", "?", "men"],
    "title": [None, "Mr", "Ms", "Dr", "Sir", "odd"],
    "land": [None, "DE", "GB", "France", "fr_FR"],
    "first": [None, "Ann", "Bo"],
    "note": [None, "n"],
}
frames = st.lists(st.tuples(*map(st.sampled_from, VALUES.values())), min_size=1, max_size=40).map(
    lambda rows: pd.DataFrame(rows, columns=list(VALUES), dtype="str")
)
attributes = st.sets(st.sampled_from(list(LABELS)), min_size=1)

few = settings(
    max_examples=60,
    suppress_health_check=[HealthCheck.function_scoped_fixture],
)


def person(taken: set[str]) -> Person:
    return Person("person", PersonLabels(**{each: LABELS[each] for each in taken}))


def counted(counts: TableCounts, columns: list[str], taken: set[str]) -> PersonModel | str:
    try:
        return fit_counts(counts, columns, person(taken), PersonModelConfig())
    except ValueError as error:
        return str(error)


def fitted(df: pd.DataFrame, taken: set[str]) -> PersonModel | str:
    try:
        return PersonModel(person(taken), PersonModelConfig()).fit(df)
    except ValueError as error:
        return str(error)


def assert_alike(one: PersonModel | str, other: PersonModel | str) -> None:
    """Compares models by all that is kept of them, orders and last bits included."""
    if isinstance(one, str) or isinstance(other, str):
        assert one == other
        return
    assert dumps(one) == dumps(other)
    if one.hidden_model_country is not None:
        maps = [list(model.country_to_provider_map) for model in (one, other)]
        assert maps[0] == maps[1]


@few
@given(frames, attributes)
def test_counts_of_a_file_give_the_model_of_the_whole_table(
    tmp_path: Path, df: pd.DataFrame, taken: set[str]
) -> None:
    write_table([df], tmp_path / "t.csv")
    labelled = [LABELS[each] for each in taken]
    with open_table(tmp_path / "t.csv") as table:
        counts = table.count(learnt_columns(person(taken)), labelled)
    assert counts == count_frame(df, learnt_columns(person(taken)), labelled)
    assert_alike(counted(counts, list(VALUES), taken), fitted(df, taken))


@few
@given(frames, attributes, st.lists(st.integers(0, 40), max_size=5))
def test_counts_of_any_parts_add_up_to_those_of_the_whole(
    df: pd.DataFrame, taken: set[str], borders: list[int]
) -> None:
    edges = [0, *sorted(min(border, len(df)) for border in borders), len(df)]
    parts = [df.iloc[start:stop] for start, stop in itertools.pairwise(edges)]
    labelled = [LABELS[each] for each in taken]
    columns = learnt_columns(person(taken))
    counts = merged(count_frame(part, columns, labelled) for part in parts)
    whole = count_frame(df, columns, labelled)
    assert counts == whole
    for column in columns:
        assert list(counts.values[column]) == list(whole.values[column])
    assert_alike(counted(counts, list(VALUES), taken), fitted(df, taken))


def test_values_are_counted_in_the_order_of_first_appearance(tmp_path: Path) -> None:
    df = pd.DataFrame({"a": ["z", None, "a", "z"] * 50_000, "b": ["y"] * 200_000})
    write_table([df], tmp_path / "t.csv")
    with open_table(tmp_path / "t.csv") as table:
        counts = table.count(["a", "b"], ["a", "b"])
    assert list(counts.values["a"].items()) == [("z", 100_000), (None, 50_000), ("a", 50_000)]
    assert counts.values["b"] == {"y": 200_000}
    assert (counts.rows, counts.blank, counts.missing("a")) == (200_000, 0, 50_000)


@pytest.mark.parametrize("labelled", [[], ["b"], ["a", "b"]])
def test_blank_rows_have_no_value_in_the_columns_that_are_asked_for(
    tmp_path: Path, labelled: list[str]
) -> None:
    df = pd.DataFrame({"a": [None, None, "x"], "b": [None, "y", None], "c": ["z"] * 3})
    write_table([df], tmp_path / "t.csv")
    blank = (0, 2, 1)[len(labelled)]
    with open_table(tmp_path / "t.csv") as table:
        assert table.count(["a"], labelled).blank == blank
    assert count_frame(df, ["a"], labelled).blank == blank

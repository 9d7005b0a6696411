"""The metas: what is known of columns."""

import json
from typing import Any

import numpy as np
import pandas as pd
import pytest

from vantrel.config import PersonLabels
from vantrel.metadata import ColumnNotFoundError, MetaNotExtractedError, Nominal
from vantrel.metadata.forms import meta_from_dict
from vantrel.metadata.value import Person, String

try:
    import pyarrow as pa
except ImportError:
    pa = None

NO_COLUMN = "The table has no column 'sex'; its columns are: 'a', 'b'."


def through_json(form: dict[str, object]) -> dict[str, object]:
    read: dict[str, object] = json.loads(json.dumps(form, allow_nan=False))
    return read


def test_nominal_has_no_categories_before_extraction() -> None:
    assert Nominal("land").categories is None
    assert not Nominal("land").extracted


def test_string_refuses_to_tell_categories_before_extraction() -> None:
    expected = "The categories of column 'sex' are not known yet: call extract first."
    with pytest.raises(MetaNotExtractedError) as caught:
        _ = String("sex").categories
    assert str(caught.value) == expected


@pytest.mark.parametrize("meta", [Nominal("sex"), String("sex")])
def test_extraction_reads_first_seen_order_and_missing_share(meta: Nominal) -> None:
    assert meta.extract(pd.DataFrame({"sex": ["m", None, "f", "m"]})) is meta
    assert meta.categories == ["m", "f"]
    assert meta.nan_freq == 0.25
    meta.extract(pd.DataFrame({"sex": ["x"]}))
    assert (meta.categories, meta.nan_freq) == (["x"], 0.0)


def test_string_describes_values_by_their_text() -> None:
    assert String("sex").extract(pd.DataFrame({"sex": [2, 1, 2]})).categories == ["2", "1"]


def test_extraction_of_a_categorical_column_leaves_out_unused_categories() -> None:
    column = pd.Categorical(["b", "a"], categories=["a", "b", "c"])
    assert Nominal("sex").extract(pd.DataFrame({"sex": column})).categories == ["b", "a"]


@pytest.mark.parametrize("meta", [Nominal("sex"), String("sex")])
def test_a_missing_column_is_named_with_those_that_are_there(meta: Nominal) -> None:
    with pytest.raises(ColumnNotFoundError) as caught:
        meta.extract(pd.DataFrame({"a": [1], "b": [2]}))
    assert str(caught.value) == NO_COLUMN
    assert isinstance(caught.value, KeyError)


LISTS: list[Any] = [pd.Series([["GB"], ["US"]])]
if pa is not None:
    LISTS.append(LISTS[0].astype(pd.ArrowDtype(pa.list_(pa.string()))))


@pytest.mark.parametrize("column", LISTS, ids=lambda column: str(column.dtype))
def test_values_that_cannot_be_told_apart_are_refused(column: Any) -> None:
    with pytest.raises(TypeError) as caught:
        Nominal("land").extract(pd.DataFrame({"land": column}))
    assert str(caught.value) == (
        "Column 'land' holds values that cannot be told apart, such as lists: give it texts."
    )


@pytest.mark.parametrize("meta", [Nominal("sex"), String("sex")])
@pytest.mark.parametrize("rows", [0, 2])
def test_a_column_that_is_there_twice_is_refused(meta: Nominal, rows: int) -> None:
    table = pd.DataFrame([["m", 1, "f"]] * rows, columns=["sex", "a", "sex"])
    with pytest.raises(ValueError) as caught:
        meta.extract(table)
    assert str(caught.value) == "The table has 2 columns 'sex': rename all but one of them."


@pytest.mark.parametrize("cls", [Nominal, String])
@pytest.mark.parametrize("categories", [None, [], ["m", "f"]])
@pytest.mark.parametrize("nan_freq", [None, 0.0, 0.25])
def test_column_metas_survive_json(
    cls: type[Nominal], categories: list[str] | None, nan_freq: float | None
) -> None:
    form = through_json(cls("sex", categories=categories, nan_freq=nan_freq).to_dict())
    meta = meta_from_dict(form)
    assert type(meta) is cls
    assert meta.to_dict() == form
    assert (meta.name, meta.nan_freq) == ("sex", nan_freq)


def test_a_form_of_unknown_type_is_refused() -> None:
    with pytest.raises(ValueError) as caught:
        meta_from_dict({"type": "zz"})
    assert str(caught.value) == "Unknown type of meta 'zz'; known are: nominal, string, person."


LABELS = PersonLabels(
    gender="sex", title="title", lastname="surname", country="land", fullname="whole"
)


def test_person_gives_the_metas_of_its_learnt_columns() -> None:
    meta = Person("person", LABELS)
    assert type(meta["sex"]) is String
    assert type(meta["title"]) is String
    assert type(meta["land"]) is Nominal
    assert meta["sex"].name == "sex"


def test_person_names_the_metas_it_has() -> None:
    with pytest.raises(KeyError) as caught:
        _ = Person("person", LABELS)["surname"]
    assert caught.value.args == (
        "Person 'person' has no meta of column 'surname'; it has: 'sex', 'title', 'land'",
    )


def test_params_map_attributes_to_columns() -> None:
    meta = Person("person", PersonLabels(title="t", gender="", country="c"))
    assert meta.params == {"title": "t", "country": "c"}


def test_two_labels_cannot_share_a_column() -> None:
    with pytest.raises(ValueError) as caught:
        Person("person", PersonLabels(gender="t", title="t"))
    assert str(caught.value) == (
        "Column 't' is labelled 'gender' and 'title': give each attribute a column of its own."
    )


def test_person_extracts_its_columns_in_place(people: pd.DataFrame) -> None:
    meta = Person("person", LABELS)
    sex = meta["sex"]
    assert meta.categories is None
    assert meta.extract(people) is meta
    assert meta["sex"] is sex
    assert sex.categories == ["m", "f"]
    assert meta.columns == meta.categories == ["land", "surname", "title", "sex"]
    assert meta.nan_freq == 0.0


def test_person_counts_rows_that_hold_nothing() -> None:
    table = pd.DataFrame({"sex": ["m", None, None, "f"], "surname": [None, None, "A", "B"]})
    meta = Person("person", PersonLabels(gender="sex", lastname="surname"))
    assert meta.extract(table).nan_freq == 0.25


def test_person_without_any_column_in_the_table_misses_nothing() -> None:
    meta = Person("person", PersonLabels(fullname="whole")).extract(pd.DataFrame({"a": [1]}))
    assert meta.nan_freq == 0.0


def test_person_keeps_no_names_of_real_people(people: pd.DataFrame) -> None:
    form = json.dumps(Person("person", LABELS).extract(people).to_dict())
    assert '"J"' not in form


def test_a_failed_extraction_changes_nothing(people: pd.DataFrame) -> None:
    meta = Person("person", LABELS).extract(people)
    before = meta.to_dict()
    with pytest.raises(ColumnNotFoundError):
        meta.extract(people.drop(columns="land").assign(sex="zz"))
    assert meta.to_dict() == before


def test_unfold_gives_the_frame_and_lets_errors_out(people: pd.DataFrame) -> None:
    with Person("person", LABELS).unfold(df=people) as df:
        assert df is people
    with pytest.raises(ZeroDivisionError), Person("person", LABELS).unfold(people):
        raise ZeroDivisionError


def test_revert_orders_as_the_table_then_as_the_labels(people: pd.DataFrame) -> None:
    meta = Person("person", PersonLabels(**(vars(LABELS) | {"email": "mail"})))
    made = pd.DataFrame([[1] * 6], columns=["sex", "title", "land", "surname", "whole", "mail"])
    label_order = ["sex", "title", "surname", "whole", "mail", "land"]
    assert list(meta.revert_df_from_children(made)) == label_order
    meta.extract(people)
    reverted = meta.revert_df_from_children(made)
    assert list(reverted) == ["land", "surname", "title", "sex", "whole", "mail"]
    pd.testing.assert_frame_equal(reverted[made.columns], made)


@pytest.mark.parametrize("extracted", [False, True])
@pytest.mark.parametrize("locales", [None, ["en_GB", "de_DE"]])
def test_person_survives_json(
    people: pd.DataFrame, extracted: bool, locales: list[str] | None
) -> None:
    meta = Person("person", LABELS, locales=locales)
    if extracted:
        meta.extract(people.replace({"surname": {"A": np.nan}}))
    form = through_json(meta.to_dict())
    rebuilt = Person.from_dict(form)
    assert rebuilt.to_dict() == form
    assert rebuilt.labels == LABELS
    assert rebuilt.locales == locales
    assert rebuilt["title"].extracted == extracted

"""Whole columns against single calls: the series that come in, of every dtype, index and content."""

from collections.abc import Callable
from typing import Any

import numpy as np
import pandas as pd
import pytest

from support.twins import TEXT_DTYPES, made_both_ways, refused_both_ways, same_both_ways
from support.whole_columns import (
    COLLECTIONS,
    COUNTRIES,
    GENDER_KEYS,
    PATTERNS,
    Text,
    in_turn,
    model_with,
    new_fakers,
    usual_model,
)

KEYS = ["F", "M", "NB", "A", "M", "F"]
PRESENT_NAMES = ["Ann", "Bo", "Mary Ann", "Çelik", "李", "ANN"]
MISSING = [None, float("nan"), np.nan, pd.NA, pd.NaT, np.float64("nan"), np.datetime64("NaT", "s")]
ROWS = 24


def repeated(values: list[Any]) -> list[Any]:
    return [values[i % len(values)] for i in range(ROWS)]


# --- dtypes ---------------------------------------------------------------------------------------


@pytest.mark.parametrize("dtype", TEXT_DTYPES)
@pytest.mark.parametrize("keys", [KEYS, [*KEYS, None]], ids=["all there", "some missing"])
def test_gender_keys_of_every_dtype(keys: list[Any], dtype: str) -> None:
    model = usual_model()
    genders = TEXT_DTYPES[dtype](repeated(keys))
    places = in_turn(COUNTRIES, ROWS)
    same_both_ways(lambda: model.generate_first_names(genders, places), model)
    same_both_ways(lambda: model.generate_values_from_collections(genders, COLLECTIONS), model)
    same_both_ways(lambda: model._sample_conditional(ROWS, genders, places), model)


@pytest.mark.parametrize("dtype", TEXT_DTYPES)
def test_countries_of_every_dtype(dtype: str) -> None:
    model = usual_model()
    places = TEXT_DTYPES[dtype](repeated(list(COUNTRIES)))
    genders = in_turn(GENDER_KEYS, ROWS)
    firstnames = in_turn(PRESENT_NAMES, ROWS)
    same_both_ways(lambda: model.generate_first_names(genders, places), model)
    same_both_ways(lambda: model.generate_last_names(firstnames, places), model)
    same_both_ways(lambda: model.generate_emails(firstnames, firstnames, places), model)
    same_both_ways(lambda: model._sample_conditional(ROWS, genders, places), model)


@pytest.mark.parametrize("second", TEXT_DTYPES)
@pytest.mark.parametrize("first", TEXT_DTYPES)
def test_names_of_every_pair_of_dtypes(first: str, second: str) -> None:
    model = usual_model()
    firstnames = TEXT_DTYPES[first](repeated(PRESENT_NAMES))
    lastnames = TEXT_DTYPES[second](repeated(PRESENT_NAMES))
    places = in_turn(COUNTRIES, ROWS)
    same_both_ways(lambda: model.generate_usernames(firstnames, lastnames), model)
    same_both_ways(lambda: model.generate_emails(firstnames, lastnames, places), model)


@pytest.mark.parametrize("names", [PRESENT_NAMES, [*PRESENT_NAMES, None]], ids=["all", "missing"])
@pytest.mark.parametrize("dtype", TEXT_DTYPES)
def test_first_names_of_every_dtype_beside_last_names(dtype: str, names: list[Any]) -> None:
    model = usual_model()
    firstnames = (
        TEXT_DTYPES[dtype](repeated(names))
        if None not in names
        else pd.Series(repeated(names), dtype="object").astype(
            "category" if dtype == "category" else "object"
        )
    )
    places = in_turn(COUNTRIES, ROWS)
    column = made_both_ways(lambda: model.generate_last_names(firstnames, places), model)
    assert column.isna().tolist() == firstnames.isna().tolist()


@pytest.mark.parametrize("dtype", TEXT_DTYPES)
@pytest.mark.parametrize(
    "values",
    [["Mr", "mrs", "Mx", "nobody"], ["Mr", "Mr", "mr.", ""], ["mrs", None, "Mr"], []],
    ids=str,
)
def test_category_values_of_every_dtype(values: list[Any], dtype: str) -> None:
    model = usual_model()
    column = TEXT_DTYPES[dtype]([*values, *values, *values])
    same_both_ways(lambda: model.map_to_gender_keys(column, PATTERNS), model)


OTHER_COLUMNS: dict[str, pd.Series] = {
    "numbers": pd.Series([1, 2, 3]),
    "fractions": pd.Series([1.5, float("nan")]),
    "truth values": pd.Series([True, False]),
    "dates": pd.Series(pd.to_datetime(["2020-01-01", None])),
    "lists": pd.Series([["F"], ("M",), {"NB"}], dtype="object"),
    "bytes": pd.Series([b"F", b"M"], dtype="object"),
    "empty": pd.Series([], dtype="object"),
    "empty texts": pd.Series([], dtype="str"),
    "empty of numbers": pd.Series([], dtype="float64"),
    "nullable numbers": pd.Series([1, None], dtype="Int64"),
    "only missing": pd.Series([None, None], dtype="object"),
    "categories of numbers": pd.Series([1, 2, 1], dtype="category"),
    "sparse": pd.Series(pd.arrays.SparseArray([0, 0, 1])),
}


@pytest.mark.parametrize("column", OTHER_COLUMNS)
def test_columns_that_hold_no_texts(column: str) -> None:
    model = model_with(new_fakers())
    values = OTHER_COLUMNS[column]
    texts = in_turn(["GB"], len(values))
    model.country_to_provider_map[1] = model.country_to_provider_map["GB"]
    calls: list[Callable[[], Any]] = [
        lambda: model.generate_first_names(values, texts),
        lambda: model.generate_first_names(texts.replace("GB", "F"), values),
        lambda: model.generate_last_names(values, texts),
        lambda: model.generate_last_names(texts, values),
        lambda: model.generate_emails(texts, texts, values),
        lambda: model.generate_values_from_collections(values, COLLECTIONS),
        lambda: model.map_to_gender_keys(values, PATTERNS),
        lambda: model.generate_phone_numbers(values),
        lambda: model._sample_conditional(len(values), values, texts),
    ]
    for call in calls:
        same_both_ways(call, model)


# --- indexes and names ----------------------------------------------------------------------------

INDEXES: dict[str, Callable[[int], Any]] = {
    "from 5": lambda n: range(5, 5 + n),
    "downwards": lambda n: range(n - 1, -1, -1),
    "in steps": lambda n: range(0, 3 * n, 3),
    "texts": lambda n: [f"row {i}" for i in range(n)],
    "duplicates": lambda n: [i // 2 for i in range(n)],
    "dates": lambda n: pd.date_range("2020-01-01", periods=n),
    "pairs": lambda n: pd.MultiIndex.from_tuples([(i // 2, i) for i in range(n)]),
    "named": lambda n: pd.Index(range(n), name="row"),
    "whole numbers": lambda n: pd.Index(list(range(n)), dtype="int64"),
    "categories": lambda n: pd.CategoricalIndex([str(i) for i in range(n)]),
    "partly missing": lambda n: [None, *range(1, n)],
}


@pytest.mark.parametrize("name", [None, "first", 5, ("a", "b")], ids=repr)
@pytest.mark.parametrize("index", INDEXES)
def test_indexes_and_names(index: str, name: Any) -> None:
    model = usual_model()

    def series(values: Any) -> pd.Series:
        return in_turn(values, 12, index=INDEXES[index](12), name=name)

    genders, places, texts = series(GENDER_KEYS), series(COUNTRIES), series(PRESENT_NAMES)
    calls: list[Callable[[], Any]] = [
        lambda: model.generate_first_names(genders, places),
        lambda: model.generate_last_names(texts, places),
        lambda: model.generate_usernames(texts, texts),
        lambda: model.generate_passwords(texts),
        lambda: model.generate_phone_numbers(texts.isna()),
        lambda: model.generate_values_from_collections(genders, COLLECTIONS),
        lambda: model.map_to_gender_keys(texts, PATTERNS),
        lambda: model._sample_conditional(12, genders, places),
    ]
    for call in calls:
        same_both_ways(call, model)


@pytest.mark.parametrize("second", INDEXES)
@pytest.mark.parametrize("first", ["from 5", "duplicates", "downwards"])
def test_names_with_different_indexes(first: str, second: str) -> None:
    model = usual_model()
    firstnames = pd.Series(["A", "B", "C", "D"], index=INDEXES[first](4))
    lastnames = pd.Series(["x", "y", "z", "w"], index=INDEXES[second](4))
    aligned = firstnames.str.cat(lastnames) if first == second else None
    if aligned is None or aligned.isna().any() or len(aligned) != 4:
        firstnames = firstnames.reset_index(drop=True)
        lastnames.index = pd.Index([3, 2, 1, 0])
    same_both_ways(lambda: model.generate_usernames(firstnames, lastnames), model)
    same_both_ways(lambda: model.generate_last_names(firstnames, lastnames.map(lambda _: "GB")))


@pytest.mark.parametrize("rows", [0, 1, 2])
@pytest.mark.parametrize("more", [0, 1, 5])
def test_series_of_different_lengths(rows: int, more: int) -> None:
    model = usual_model()
    short, long = in_turn(COUNTRIES, rows), in_turn(COUNTRIES, rows + more)
    keys = long.map(lambda _: "F")
    calls: list[Callable[[], Any]] = [
        lambda: model.generate_first_names(keys, short),
        lambda: model.generate_first_names(keys.iloc[:rows], long),
        lambda: model.generate_last_names(long, short),
        lambda: model.generate_last_names(short, long),
        lambda: model.generate_emails(short, long, long),
        lambda: model.generate_emails(short, short, long),
        lambda: model._sample_conditional(rows, keys, short),
        lambda: model._sample_conditional(rows + more, keys, short),
    ]
    for call in calls:
        same_both_ways(call, model)


@pytest.mark.parametrize("make", [list, tuple, np.array, iter, pd.Index, dict.fromkeys])
def test_inputs_that_are_no_series(make: Callable[[Any], Any]) -> None:
    model = usual_model()
    texts = in_turn(["GB", "US"], 2)
    calls: list[Callable[[], Any]] = [
        lambda: model.generate_first_names(make(["F", "M"]), make(["GB", "US"])),
        lambda: model.generate_last_names(make(["Ann", "Bo"]), make(["GB", "US"])),
        lambda: model.generate_last_names(texts, make(["GB", "US"])),
        lambda: model.generate_emails(texts, texts, make(["GB", "US"])),
        lambda: model.generate_usernames(texts, make(["Lee", "Poe"])),
        lambda: model.generate_usernames(make(["Ann", "Bo"]), texts),
        lambda: model.generate_values_from_collections(make(["F", "M"]), COLLECTIONS),
        lambda: model.map_to_gender_keys(make(["Mr", "mrs"]), PATTERNS),
    ]
    for call in calls:
        same_both_ways(call, model)


class OwnSeries(pd.Series):
    """A series of another type."""

    @property
    def _constructor(self) -> type[pd.Series]:
        return OwnSeries


class LoudSeries(pd.Series):
    """A series that applies functions its own way."""

    def apply(self, *args: Any, **kwargs: Any) -> Any:
        return super().apply(*args, **kwargs).map(lambda value: f"<{value}>")

    def __iter__(self) -> Any:
        return reversed(list(super().__iter__()))


@pytest.mark.parametrize("cls", [OwnSeries, LoudSeries])
def test_series_of_another_type(cls: type[pd.Series]) -> None:
    model = usual_model()
    genders, places = cls(repeated(KEYS)), cls(repeated(["GB", "US"]))
    texts = cls(repeated(["Ann", "Bo", "Cy"]))
    calls: list[Callable[[], Any]] = [
        lambda: model.generate_first_names(genders, places),
        lambda: model.generate_last_names(texts, places),
        lambda: model.generate_usernames(texts, texts),
        lambda: model.generate_emails(texts, texts, places),
        lambda: model.generate_passwords(texts),
        lambda: model.generate_values_from_collections(genders, COLLECTIONS),
        lambda: model.map_to_gender_keys(texts, PATTERNS),
        lambda: model._sample_conditional(ROWS, genders, places),
    ]
    for call in calls:
        same_both_ways(call, model)


# --- missing values and odd elements --------------------------------------------------------------


@pytest.mark.parametrize("missing", MISSING, ids=lambda m: f"{type(m).__name__} {m}")
def test_missing_values(missing: Any) -> None:
    model = usual_model()
    genders = pd.Series(["F", missing, "M", "NB"], dtype="object")
    places = pd.Series(["GB", "US", "DE", "CN"], dtype="object")
    texts = pd.Series(["Ann", missing, "Bo", "Cy"], dtype="object")
    calls: list[Callable[[], Any]] = [
        lambda: model.generate_first_names(genders, places),
        lambda: model.generate_last_names(texts, places),
        lambda: model.generate_usernames(texts, texts),
        lambda: model.generate_emails(texts, texts, places),
        lambda: model.generate_passwords(texts),
        lambda: model.generate_phone_numbers(texts.isna()),
        lambda: model.generate_phone_numbers(texts),
        lambda: model.generate_values_from_collections(genders, COLLECTIONS),
        lambda: model.map_to_gender_keys(texts, {"M": "nan|none|na", "F": "ann"}),
        lambda: model._sample_conditional(4, genders, places),
        lambda: model._sample_conditional(4, genders, places, False),
        lambda: model._sample_conditional(4, places.map(lambda _: "F"), texts),
    ]
    for call in calls:
        same_both_ways(call, model)


@pytest.mark.parametrize("missing", MISSING, ids=lambda m: f"{type(m).__name__} {m}")
def test_a_missing_country_has_no_provider(missing: Any) -> None:
    model = usual_model()
    places = pd.Series(["GB", missing, "DE"], dtype="object")
    genders = pd.Series(["F", "M", "NB"])
    refused_both_ways(lambda: model.generate_first_names(genders, places), model)
    refused_both_ways(lambda: model.generate_last_names(genders, places), model)
    refused_both_ways(lambda: model.generate_emails(genders, genders, places), model)


class KeyLike:
    """Equal to a gender key, yet no text."""

    def __init__(self, key: str) -> None:
        self.key = key

    def __eq__(self, other: object) -> bool:
        return other == self.key

    def __hash__(self) -> int:
        return hash(self.key)

    def __str__(self) -> str:
        return self.key


class Sly(str):
    """A text that is equal to the key of another gender."""

    def __eq__(self, other: object) -> bool:
        return other == "M"

    __hash__ = str.__hash__

    def __str__(self) -> str:
        return "NB"


ODD_KEYS = [np.str_("F"), Text("M"), KeyLike("M"), KeyLike("A"), Sly("F"), pd.NA, "F"]


@pytest.mark.parametrize("key", ODD_KEYS, ids=lambda key: type(key).__name__)
def test_gender_keys_of_other_types(key: Any) -> None:
    model = usual_model()
    genders = pd.Series(["F", key, "M"], dtype="object")
    places = pd.Series(["GB", "US", "DE"])
    same_both_ways(lambda: model.generate_first_names(genders, places), model)
    same_both_ways(lambda: model.generate_values_from_collections(genders, COLLECTIONS), model)
    same_both_ways(lambda: model._sample_conditional(3, genders, places), model)


@pytest.mark.parametrize("make", [np.str_, Text, KeyLike, str.encode, lambda t: (t,), list])
def test_countries_of_other_types(make: Callable[[str], Any]) -> None:
    model = usual_model()
    places = pd.Series(["GB", make("US"), "DE"], dtype="object")
    genders = pd.Series(["F", "M", "NB"])
    same_both_ways(lambda: model.generate_first_names(genders, places), model)
    same_both_ways(lambda: model.generate_last_names(genders, places), model)
    same_both_ways(lambda: model.generate_emails(genders, genders, places), model)


@pytest.mark.parametrize(
    "values",
    [
        [],
        [5, 6],
        [None, "a"],
        [Text("a"), np.str_("b")],
        ["a\0", "b"],
        ["\ud800"],
        ["é" * 40, "a"],
        [["a"], ["b"]],
        ["", ""],
        "ab",
        ("a", "b", "c"),
        {"a"},
        {"a": 1},
        np.array(["x", "y"]),
        range(3),
        pd.Series(["a", "b"]),
        [1, 2.5, True],
        [b"a", "b"],
        [1, "a"],
        None,
        7,
    ],
    ids=lambda v: f"{type(v).__name__} {v!a}"[:40],
)
def test_category_values_of_other_types(values: Any) -> None:
    model = usual_model()
    genders = in_turn(["F", "M"], 12)
    collections = {"F": values, "M": ["Mr", "Dr"]}
    same_both_ways(lambda: model.generate_values_from_collections(genders, collections), model)


def test_collections_that_answer_otherwise() -> None:
    class Answering(dict):  # type: ignore[type-arg]  # holds anything
        def get(self, key: Any, default: Any = None) -> Any:
            return ["always"]

    model = usual_model()
    genders = in_turn(KEYS, 12)
    run = same_both_ways(lambda: model.generate_values_from_collections(genders, Answering()))
    assert run.error is not None


@pytest.mark.parametrize("size", [1, 2, 3, 4, 5, 7, 8, 9, 100, 257])
def test_collections_of_every_size(size: int) -> None:
    model = usual_model()
    collections = {"F": [f"value {i}" for i in range(size)], "M": ["Mr"], "NB": ["a", "b"]}
    column = in_turn(KEYS, 200)
    made_both_ways(lambda: model.generate_values_from_collections(column, collections), model)


@pytest.mark.parametrize(
    "patterns",
    [{}, {"M": ""}, {"M": ".", "F": "."}, {"M": None, "F": "m"}, {5: "m"}, {"M": "("}, {"M": 5}],
    ids=repr,
)
def test_patterns(patterns: Any) -> None:
    model = usual_model()
    column = in_turn(["Mr", "Mrs", "x", "", None], 24)
    same_both_ways(lambda: model.map_to_gender_keys(column, patterns), model)


ODD_VALUES = [
    ["a"],
    {"b": 1},
    KeyLike("Mr"),
    Text("Mr"),
    np.str_("mrs"),
    5,
    5.0,
    True,
    float("nan"),
]


@pytest.mark.parametrize("value", ODD_VALUES, ids=lambda v: type(v).__name__)
def test_values_of_other_types(value: Any) -> None:
    model = usual_model()
    column = pd.Series(["Mr", value, "mrs", value, 1, 5], dtype="object")
    patterns = {"M": "^mr$|5|a", "F": "mrs|1"}
    same_both_ways(lambda: model.map_to_gender_keys(column, patterns), model)

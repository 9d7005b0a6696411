"""The hidden model of the gender: collections, keys, fitting and the dictionary form."""

from pathlib import Path
from typing import Any, Dict  # noqa: UP035 - the module's own annotations are spelt so

import numpy as np
import pandas as pd
import pytest

from support import readings_sampling as readings
from support.comparing import assert_identical
from support.recording import Calls, raising
from vantrel.config import PersonModelConfig
from vantrel.metadata import MetaNotExtractedError
from vantrel.metadata.value import String
from vantrel.model.models import person
from vantrel.model.models.histogram import Histogram
from vantrel.model.models.person import GenderModel
from vantrel.tables import read_table

TITLES = ["Mrs", "Mr", "Mx", "Ms", "Dr"]
EXAMPLES = Path(__file__).parents[2] / "examples"


class Stop(BaseException):
    """No ordinary error; unlike an interrupt it does not end the test run where it escapes."""


class Text(str):
    """A subclass of str."""


def model_of(categories: list[str] | None = None, **patterns: str) -> GenderModel:
    return GenderModel(String("title", categories=categories), **patterns)


def fitted_frame(monkeypatch: pytest.MonkeyPatch, model: GenderModel, df: pd.DataFrame) -> Any:
    """What ``fit`` hands to the base class."""
    seen = []
    monkeypatch.setattr(Histogram, "fit", lambda self, df: seen.append(df))
    model.fit(df)
    return seen[0]


# Construction


@pytest.mark.parametrize(
    ("name", "key"),
    [
        ("key_female", "F"),
        ("key_male", "M"),
        ("key_non_binary", "NB"),
        ("key_ambiguous", "A"),
    ],
)
def test_keys_are_class_attributes(name: str, key: str) -> None:
    assert vars(GenderModel)[name] == key


def test_default_patterns_suit_titles() -> None:
    model = model_of()
    patterns = (model.regex_female, model.regex_male, model.regex_non_binary)
    assert patterns == ("^(mrs|ms).?$", "^(mr).?$", "^(ind|mx|per).?$")


def test_patterns_may_be_given_by_position() -> None:
    model = GenderModel(String("title"), "f", "m", "n")
    assert (model.regex_female, model.regex_male, model.regex_non_binary) == ("f", "m", "n")


def test_patterns_may_be_given_by_keyword() -> None:
    model = GenderModel(
        regex_non_binary="n", regex_male="m", regex_female="f", meta=String("title")
    )
    assert (model.regex_female, model.regex_male, model.regex_non_binary) == ("f", "m", "n")


def test_a_pattern_is_kept_as_the_very_string_and_never_compiled() -> None:
    pattern = "(" * 3
    assert model_of(regex_female=pattern).regex_female is pattern


def test_base_class_gets_the_meta_by_keyword(monkeypatch: pytest.MonkeyPatch) -> None:
    calls = Calls()
    monkeypatch.setattr(Histogram, "__init__", calls.recorder("init"))
    meta = String("title")
    model = GenderModel(meta)
    assert calls == [("init", (model,), {"meta": meta})]


def test_patterns_are_set_in_order_after_the_base_class_is_initialised() -> None:
    assigned = []

    class Noting(GenderModel):
        def __setattr__(self, name: str, value: Any) -> None:
            assigned.append(name)
            super().__setattr__(name, value)

    Noting(String("title"))
    assert assigned[-3:] == ["regex_female", "regex_male", "regex_non_binary"]
    assert assigned[0] == "_meta"


@pytest.mark.parametrize("name", ["regex_female", "regex_male", "regex_non_binary"])
@pytest.mark.parametrize(
    ("pattern", "given"),
    [(None, "NoneType"), (Text("f"), "Text"), (np.str_("f"), "str_"), (b"f", "bytes"), (1, "int")],
)
def test_a_pattern_that_is_not_exactly_a_str_is_refused(
    name: str, pattern: Any, given: str
) -> None:
    with pytest.raises(TypeError) as caught:
        model_of(**{name: pattern})
    message = f"Argument '{name}' has incorrect type (expected str, got {given})"
    assert str(caught.value) == message


def test_the_first_of_several_wrong_patterns_is_named() -> None:
    with pytest.raises(TypeError) as caught:
        GenderModel(String("title"), "f", None, 1)
    message = "Argument 'regex_male' has incorrect type (expected str, got NoneType)"
    assert str(caught.value) == message


def test_patterns_are_checked_before_anything_is_initialised() -> None:
    model = GenderModel.__new__(GenderModel)
    with pytest.raises(TypeError, match="regex_non_binary"):
        model.__init__(String("title"), regex_non_binary=None)
    assert vars(model) == {}


# Collections and categories


def test_collections_sort_the_categories_of_the_meta() -> None:
    collections = model_of(TITLES).collections
    sorted_ = [("F", ["Ms"]), ("M", ["Mr"]), ("NB", ["Mx"]), ("A", ["Mrs"])]
    assert list(collections.items()) == sorted_


def test_mrs_is_ambiguous_by_default_since_the_male_pattern_lets_one_more_letter_follow() -> None:
    assert model_of(["Mrs"]).collections == {"A": ["Mrs"]}


def test_a_category_of_several_patterns_is_ambiguous_and_nothing_else() -> None:
    config = PersonModelConfig()
    model = model_of(
        ["Mrs", "Dr", "Mr"],
        regex_female=config.title_female_regex,
        regex_male=config.title_male_regex,
    )
    assert model.collections == {"F": ["Mrs"], "M": ["Mr"], "A": ["Dr"]}


def test_an_empty_collection_is_absent_from_collections() -> None:
    assert "NB" not in model_of(["Ms", "Mr"]).collections


def test_the_key_of_an_empty_collection_is_absent_from_categories() -> None:
    assert model_of(["Mr", "Ms"]).categories == ["F", "M"]


def test_no_category_at_all_gives_no_collection() -> None:
    assert model_of([]).collections == {}
    assert model_of([]).categories == []


def test_collections_call_the_utility_with_three_positional_arguments(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    calls = Calls()
    monkeypatch.setattr(person, "collections_from_mapping", calls.recorder("sort", lambda *_: {}))
    model = model_of(TITLES, regex_female="f", regex_male="m", regex_non_binary="n")
    assert model.collections == {}
    [(_, (categories, mapping, ambiguous_key), keywords)] = calls
    assert categories is model.meta.categories
    assert list(mapping.items()) == [("F", "f"), ("M", "m"), ("NB", "n")]
    assert ambiguous_key == "A"
    assert keywords == {}


def test_collections_keep_the_order_and_the_lists_of_the_utility(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    sorted_ = {"A": ["a"], "NB": [], "X": ["x", "y"], "F": ["f"]}
    monkeypatch.setattr(person, "collections_from_mapping", lambda *_: sorted_)
    collections = model_of(TITLES).collections
    assert list(collections) == ["A", "X", "F"]
    assert collections["X"] is sorted_["X"]


def test_collections_are_a_new_dict_on_each_read() -> None:
    model = model_of(TITLES)
    assert model.collections == model.collections
    assert model.collections is not model.collections


def test_collections_follow_a_changed_pattern() -> None:
    model = model_of(TITLES)
    model.regex_male = "^dr$"
    assert model.collections["M"] == ["Dr"]


def test_keys_of_a_subclass_are_honoured() -> None:
    class German(GenderModel):
        key_female = "W"
        key_ambiguous = "U"

    model = German(String("title", categories=["Mrs", "Mr", "Dr"]), "^(mrs|dr)$", "^(mr|dr)$")
    assert model.collections == {"W": ["Mrs"], "M": ["Mr"], "U": ["Dr"]}


def test_keys_and_patterns_of_an_instance_are_honoured() -> None:
    model = model_of(TITLES)
    model.key_non_binary = "D"
    model.regex_non_binary = "^(mx|dr)$"
    assert model.collections["D"] == ["Mx", "Dr"]


def test_collections_read_keys_patterns_and_categories_in_order() -> None:
    read = []

    class Noting(GenderModel):
        def __getattribute__(self, name: str) -> Any:
            read.append(name)
            return super().__getattribute__(name)

    model = Noting(String("title", categories=TITLES))
    read.clear()
    assert model.collections
    mapping = ["key_female", "regex_female", "key_male", "regex_male"]
    mapping += ["key_non_binary", "regex_non_binary"]
    assert [name for name in read if not name.startswith("_")] == [
        *["collections", *mapping],
        *["meta", "key_ambiguous"],
    ]


def test_categories_read_collections_through_the_instance() -> None:
    class Fixed(GenderModel):
        @property
        def collections(self) -> dict[str, list[str]]:
            return {"NB": ["x"], "F": []}

    assert Fixed(String("title")).categories == ["NB", "F"]


def test_a_utility_that_gives_none_fails_as_reading_its_items(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    monkeypatch.setattr(person, "collections_from_mapping", lambda *_: None)
    with pytest.raises(AttributeError) as caught:
        _ = model_of(TITLES).collections
    assert str(caught.value) == "'NoneType' object has no attribute 'items'"


@pytest.mark.parametrize("name", ["collections", "categories"])
def test_before_extraction_reading_raises_what_the_meta_raises(name: str) -> None:
    with pytest.raises(MetaNotExtractedError) as caught:
        getattr(model_of(), name)
    assert str(caught.value) == (
        "The categories of column 'title' are not known yet: call extract first."
    )


@pytest.mark.parametrize("name", ["collections", "categories"])
def test_collections_and_categories_are_read_only(name: str) -> None:
    with pytest.raises(AttributeError) as caught:
        setattr(model_of(TITLES), name, {})
    assert str(caught.value) == f"property {name!r} of 'GenderModel' object has no setter"


def test_collections_of_real_titles_equal_the_reading() -> None:
    titles = read_table(EXAMPLES / "passengers.csv")["title"].unique().tolist()
    config = PersonModelConfig()
    model = model_of(
        titles,
        regex_female=config.title_female_regex,
        regex_male=config.title_male_regex,
        regex_non_binary=config.title_non_binary_regex,
    )
    assert list(model.collections.items()) == list(readings.gender_collections(model).items())
    assert model.categories == readings.gender_categories(model)
    assert {"F", "M", "A"} <= set(model.collections)


# Fitting


def test_fit_learns_the_frequencies_of_the_keys() -> None:
    model = model_of().fit(pd.DataFrame({"title": ["Ms.", "Mr", "Ms", "Mx"]}))
    assert model._probabilities == {"F": 0.5, "M": 0.25, "NB": 0.25}


def test_fit_gives_back_what_the_base_class_gives(monkeypatch: pytest.MonkeyPatch) -> None:
    answer = object()
    monkeypatch.setattr(Histogram, "fit", lambda self, df: answer)
    assert model_of(TITLES).fit(pd.DataFrame({"title": ["Mr"]})) is answer


def test_fit_hands_one_column_by_position_to_the_base_class(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    calls = Calls()
    monkeypatch.setattr(Histogram, "fit", calls.recorder("fit"))
    model = model_of(TITLES)
    model.fit(pd.DataFrame({"age": [1, 2], "title": ["Mr", "Ms"]}, index=[7, 3]))
    [(_, (bound, frame), keywords)] = calls
    assert bound is model
    assert keywords == {}
    assert frame["title"].tolist() == ["M", "F"]
    assert frame.columns.tolist() == ["title"]
    assert frame.index.tolist() == [7, 3]


def test_a_category_of_no_pattern_becomes_missing_as_a_missing_value_does(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    df = pd.DataFrame({"title": ["Mr", "Captain", None, np.nan, "Ms"]}, dtype=object)
    frame = fitted_frame(monkeypatch, model_of(["Mr", "Captain", "Ms"]), df)
    assert frame["title"].isna().tolist() == [False, True, True, True, False]


def test_values_that_are_no_texts_are_mapped_by_their_text(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    model = GenderModel(String("sex"), "^2$", "^1$", "^3$")
    frame = fitted_frame(monkeypatch, model, pd.DataFrame({"sex": [1, 2, 9, 3]}))
    assert frame["sex"].tolist()[:2] == ["M", "F"]
    assert frame["sex"].isna().tolist() == [False, False, True, False]


def test_fit_of_an_unextracted_model_extracts_from_the_same_frame() -> None:
    model = model_of()
    df = pd.DataFrame({"title": ["Mr", "Ms", None]})
    extracted = []
    extract = model.meta.extract
    model.meta.extract = lambda df: extracted.append(df) or extract(df)
    model.fit(df)
    assert extracted[0] is df
    assert model._probabilities == {"M": 0.5, "F": 0.5}
    assert model.meta.categories == ["Mr", "Ms"]


def test_an_extracted_meta_is_not_extracted_again(monkeypatch: pytest.MonkeyPatch) -> None:
    calls = Calls()
    monkeypatch.setattr(String, "extract", calls.recorder("extract"))
    monkeypatch.setattr(Histogram, "fit", calls.recorder("fit"))
    model_of(TITLES).fit(pd.DataFrame({"title": ["Mr"]}))
    assert calls.names() == ["fit"]


def test_extraction_comes_once_and_before_the_second_read(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    calls = Calls()

    class Late(GenderModel):
        @property
        def collections(self) -> dict[str, list[str]]:
            calls.append(("collections", (), {}))
            if len(calls) == 1:
                raise MetaNotExtractedError("not yet")
            return {"F": ["Mr"]}

    monkeypatch.setattr(String, "extract", calls.recorder("extract"))
    df = pd.DataFrame({"title": ["Mr"]})
    model = Late(String("title"))
    monkeypatch.setattr(Histogram, "fit", calls.recorder("fit"))
    model.fit(df)
    assert calls.names() == ["collections", "extract", "collections", "fit"]
    _, (meta, extracted), keywords = calls[1]
    assert meta is model.meta
    assert extracted is df
    assert keywords == {}
    assert calls[3][1][1]["title"].tolist() == ["F"]


def test_a_second_meta_not_extracted_error_propagates() -> None:
    model = model_of()
    model.meta.extract = lambda df: None
    with pytest.raises(MetaNotExtractedError) as caught:
        model.fit(pd.DataFrame({"title": ["Mr"]}))
    assert isinstance(caught.value.__context__, MetaNotExtractedError)
    assert caught.value.__context__ is not caught.value


def test_an_error_of_the_extraction_has_the_first_error_as_its_context() -> None:
    model = model_of()
    error = RuntimeError("no")
    model.meta.extract = raising(error)
    with pytest.raises(RuntimeError) as caught:
        model.fit(pd.DataFrame({"title": ["Mr"]}))
    assert caught.value is error
    assert isinstance(error.__context__, MetaNotExtractedError)


def test_an_error_after_the_handler_has_no_context() -> None:
    error = RuntimeError("no")
    model = model_of()
    with pytest.MonkeyPatch.context() as patch:
        patch.setattr(Histogram, "fit", raising(error))
        with pytest.raises(RuntimeError):
            model.fit(pd.DataFrame({"title": ["Mr"]}))
    assert error.__context__ is None


@pytest.mark.parametrize("error", [KeyError("k"), ValueError("v"), Stop()])
def test_any_other_error_while_mapping_propagates_without_extraction(
    monkeypatch: pytest.MonkeyPatch, error: BaseException
) -> None:
    calls = Calls()
    monkeypatch.setattr(person, "collections_from_mapping", raising(error))
    monkeypatch.setattr(String, "extract", calls.recorder("extract"))
    with pytest.raises(type(error)) as caught:
        model_of(TITLES).fit(pd.DataFrame({"title": ["Mr"]}))
    assert caught.value is error
    assert calls == []


def test_a_subclass_of_the_meta_error_is_handled_too(monkeypatch: pytest.MonkeyPatch) -> None:
    class Narrower(MetaNotExtractedError):
        pass

    model = model_of(TITLES)
    calls = Calls()
    answers = iter([raising(Narrower()), lambda *_: {"M": ["Mr"]}])
    monkeypatch.setattr(person, "collections_from_mapping", lambda *a: next(answers)(*a))
    model.meta.extract = calls.recorder("extract")
    assert model.fit(pd.DataFrame({"title": ["Mr"]})) is model
    assert calls.names() == ["extract"]


def test_the_handled_error_is_looked_up_when_it_is_needed(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(person, "MetaNotExtractedError", LookupError)
    with pytest.raises(MetaNotExtractedError):
        model_of().fit(pd.DataFrame({"title": ["Mr"]}))


def test_of_several_collections_with_one_value_the_later_wins(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    monkeypatch.setattr(
        person, "collections_from_mapping", lambda *_: {"M": ["Dr", "Mr"], "F": ["Dr"]}
    )
    frame = fitted_frame(monkeypatch, model_of(TITLES), pd.DataFrame({"title": ["Dr", "Mr"]}))
    assert frame["title"].tolist() == ["F", "M"]


def test_fit_reads_collections_through_the_instance(monkeypatch: pytest.MonkeyPatch) -> None:
    class Fixed(GenderModel):
        @property
        def collections(self) -> dict[str, list[str]]:
            return {"NB": ["Mr"]}

    frame = fitted_frame(
        monkeypatch, Fixed(String("title")), pd.DataFrame({"title": ["Mr", "Mrs"]})
    )
    assert frame["title"].tolist()[0] == "NB"
    assert pd.isna(frame["title"][1])


def test_fit_reads_the_column_that_name_names(monkeypatch: pytest.MonkeyPatch) -> None:
    class Renamed(GenderModel):
        name = "other"

    df = pd.DataFrame({"title": ["Mrs"], "other": ["Mr"]})
    frame = fitted_frame(monkeypatch, Renamed(String("title", categories=TITLES)), df)
    assert frame.to_dict("list") == {"other": ["M"]}


@pytest.mark.parametrize("extracted", [True, False])
def test_fit_never_changes_the_callers_frame(extracted: bool) -> None:
    df = pd.DataFrame({"title": ["Mr", None, "Mrs"], "age": [1, 2, 3]}, index=[4, 4, 9])
    before = df.copy(deep=True)
    model_of(["Mr", "Mrs"] if extracted else None).fit(df)
    assert_identical(df, before)


def test_fit_without_the_column_fails_as_pandas_does() -> None:
    with pytest.raises(KeyError) as caught:
        model_of(TITLES).fit(pd.DataFrame({"age": [1]}))
    dtype = pd.Index(["title"]).dtype
    message = f"None of [Index(['title'], dtype='{dtype}')] are in the [columns]"
    assert caught.value.args == (message,)


def test_fit_again_learns_the_new_frame() -> None:
    model = model_of(TITLES).fit(pd.DataFrame({"title": ["Mr"]}))
    model.fit(pd.DataFrame({"title": ["Ms", "Mx"]}))
    assert model._probabilities == {"F": 0.5, "NB": 0.5}


@pytest.mark.parametrize("dtype", [object, "string", "category", None])
@pytest.mark.parametrize("rows", [0, 1, 2, 3_000])
def test_the_fitted_frame_equals_the_reading(
    monkeypatch: pytest.MonkeyPatch, rows: int, dtype: Any
) -> None:
    values = ["Mrs", "Mr", None, "Mx", "Captain"]
    column = pd.Series([values[i % 5] for i in range(rows)], dtype=dtype or "str")
    df = pd.DataFrame({"title": column})
    frames = []
    monkeypatch.setattr(Histogram, "fit", lambda self, df: frames.append(df))
    one, other = model_of(), model_of()
    one.fit(df)
    readings.fit_gender(other, df)
    assert_identical(*frames)
    assert one.meta.categories == other.meta.categories


@pytest.mark.parametrize("table", ["passengers.csv", "respondents.csv"])
def test_real_genders_are_learnt_as_the_reading_learns_them(table: str) -> None:
    df = read_table(EXAMPLES / table)
    column = "sex" if "sex" in df.columns else "gender"
    config = PersonModelConfig()
    patterns = [
        config.gender_female_regex,
        config.gender_male_regex,
        config.gender_non_binary_regex,
    ]
    model = GenderModel(String(column), *patterns).fit(df)
    expected = readings.fit_gender(GenderModel(String(column), *patterns), df)
    assert model._probabilities == expected._probabilities
    assert model.meta.nan_freq == expected.meta.nan_freq
    assert {"F", "M"} <= set(model._probabilities)


# The dictionary form


def stored(**entries: Any) -> dict[str, Any]:
    return {"meta": String("title", categories=TITLES).to_dict(), **entries}


def test_a_dictionary_form_without_meta_raises_key_error() -> None:
    with pytest.raises(KeyError) as caught:
        GenderModel.from_dict({"probabilities": {}})
    assert caught.value.args == ("meta",)


def test_a_dictionary_without_the_non_binary_pattern_leaves_it_none() -> None:
    model = GenderModel.from_dict(stored(regex_female="f", regex_male="m"))
    assert (model.regex_female, model.regex_male, model.regex_non_binary) == ("f", "m", None)


@pytest.mark.parametrize(
    "name", ["_probabilities", "regex_female", "regex_male", "regex_non_binary"]
)
def test_only_the_meta_is_required(name: str) -> None:
    assert getattr(GenderModel.from_dict(stored()), name) is None


def test_stored_probabilities_are_taken_as_they_are() -> None:
    probabilities = {"F": 0.25, "M": 0.75}
    assert (
        GenderModel.from_dict(stored(probabilities=probabilities))._probabilities is probabilities
    )


def test_the_key_with_an_underscore_is_not_read() -> None:
    assert GenderModel.from_dict(stored(_probabilities={"F": 1.0}))._probabilities is None


@pytest.mark.parametrize("name", ["regex_female", "regex_male", "regex_non_binary"])
@pytest.mark.parametrize("pattern", [1, Text("f"), b"f", ["f"]])
def test_a_stored_pattern_is_not_checked(name: str, pattern: Any) -> None:
    assert getattr(GenderModel.from_dict(stored(**{name: pattern})), name) is pattern


def test_a_subclass_is_rebuilt_as_itself() -> None:
    class Narrower(GenderModel):
        pass

    assert type(Narrower.from_dict(stored())) is Narrower


def test_the_class_is_called_with_the_meta_by_keyword() -> None:
    calls = Calls()

    class Noting(GenderModel):
        def __init__(self, *args: Any, **kwargs: Any) -> None:
            calls.append(("init", args, kwargs))

    model = Noting.from_dict(stored(regex_male="m"))
    [(_, args, kwargs)] = calls
    assert args == ()
    assert list(kwargs) == ["meta"]
    assert model.regex_male == "m"


def test_the_meta_is_always_rebuilt_as_the_string_meta_of_the_namespace(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    calls = Calls()
    rebuilt = String("rebuilt")

    class StandIn:
        from_dict = staticmethod(calls.recorder("from_dict", lambda d: rebuilt))

    monkeypatch.setattr(person, "String", StandIn)
    form = stored()
    assert GenderModel.from_dict(form).meta is rebuilt
    assert calls == [("from_dict", (form["meta"],), {})]


def test_a_meta_form_of_another_kind_still_gives_a_string_meta() -> None:
    form = stored()
    form["meta"]["type"] = "nominal"
    assert type(GenderModel.from_dict(form).meta) is String


def test_the_casts_do_nothing_and_come_in_order(monkeypatch: pytest.MonkeyPatch) -> None:
    calls = Calls()
    monkeypatch.setattr(person, "cast", calls.recorder("cast", lambda type_, value: value))
    form = stored(probabilities={"F": 1.0}, regex_female="f", regex_male="m", regex_non_binary="n")
    GenderModel.from_dict(form)
    assert [args for _, args, _ in calls] == [
        (Dict[str, object], form["meta"]),  # noqa: UP006 - the module's own annotations are spelt so
        (Dict[str, float], {"F": 1.0}),  # noqa: UP006 - the module's own annotations are spelt so
        (str, "f"),
        (str, "m"),
        (str, "n"),
    ]


def test_the_form_is_read_in_order() -> None:
    assigned = []

    class Noting(GenderModel):
        def __setattr__(self, name: str, value: Any) -> None:
            assigned.append(name)
            super().__setattr__(name, value)

    Noting.from_dict(stored())
    expected = ["_probabilities", "regex_female", "regex_male", "regex_non_binary"]
    assert assigned[-4:] == expected


def test_reading_the_form_leaves_it_alone() -> None:
    form = stored(probabilities={"F": 1.0}, regex_female="f")
    before = {**form, "meta": dict(form["meta"])}
    GenderModel.from_dict(form)
    assert form == before


def test_a_round_trip_keeps_meta_probabilities_and_patterns() -> None:
    model = model_of(regex_female="^mrs$").fit(pd.DataFrame({"title": ["Mr", "Mrs", None]}))
    again = GenderModel.from_dict(model.to_dict())
    assert again.to_dict() == model.to_dict()
    assert again.collections == model.collections


def test_a_rebuilt_model_equals_the_reading() -> None:
    form = stored(probabilities={"F": 1.0}, regex_female="f")
    one, other = GenderModel.from_dict(form), readings.gender_from_dict(GenderModel, form)
    different = {"_rng", "_meta"}
    assert one.meta.to_dict() == other.meta.to_dict()
    assert {k: v for k, v in vars(one).items() if k not in different} == {
        k: v for k, v in vars(other).items() if k not in different
    }

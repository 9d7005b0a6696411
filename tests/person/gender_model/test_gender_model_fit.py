"""Fitting a gender model: the frame that is learnt, and when the meta is extracted."""

from typing import Any

import numpy as np
import pandas as pd
import pytest

from support import readings_sampling as readings
from support.comparing import assert_identical
from support.examples import EXAMPLES
from support.gender_models import TITLES, model_of
from support.recording import Calls, Stop, raising
from vantrel.config import PersonModelConfig
from vantrel.metadata import MetaNotExtractedError
from vantrel.metadata.value import String
from vantrel.model.models import person
from vantrel.model.models.histogram import Histogram
from vantrel.model.models.person import GenderModel
from vantrel.tables import read_table


def fitted_frame(monkeypatch: pytest.MonkeyPatch, model: GenderModel, df: pd.DataFrame) -> Any:
    """What ``fit`` hands to the base class."""
    seen = []
    monkeypatch.setattr(Histogram, "fit", lambda self, df: seen.append(df))
    model.fit(df)
    return seen[0]


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

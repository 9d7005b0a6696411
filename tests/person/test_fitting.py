"""Fitting a person model: the order of the steps and the context in which they run."""

import sys
from pathlib import Path
from types import TracebackType
from typing import Any

import pandas as pd
import pytest

from support.people import ALL_LABELS, people, person_model
from support.recording import Calls, RecordingContext, StandInMeta, raising
from vantrel.config import PersonLabels
from vantrel.model.base import DiscreteModel
from vantrel.model.exceptions import ModelNotFittedError
from vantrel.model.models import person
from vantrel.model.models.histogram import Histogram
from vantrel.model.models.person import CountryModel, GenderModel, PersonModel
from vantrel.tables import read_table

EXAMPLES = Path(__file__).parents[2] / "examples"
FRAME = people()


class Stop(BaseException):
    """No ordinary error; unlike an interrupt it does not end the test run where it escapes."""


class StandInGender(GenderModel):
    """A gender model that only notes how it is fitted."""

    def __init__(self, calls: Calls, answer: Any = None) -> None:
        self.calls, self.answer = calls, answer

    def fit(self, *args: Any, **kwargs: Any) -> None:
        self.calls.append(("gender", args, kwargs))
        if self.answer is not None:
            raise self.answer


class StandInCountry(CountryModel):
    """A country model that only notes how it is fitted and has a map of its own."""

    def __init__(self, calls: Calls, answer: Any = None, providers: Any = None) -> None:
        self.calls, self.answer = calls, answer
        self.country_to_provider_map = {"GB": 1} if providers is None else providers

    def fit(self, *args: Any, **kwargs: Any) -> None:
        self.calls.append(("country", args, kwargs))
        if self.answer is not None:
            raise self.answer


def model_of(
    calls: Calls,
    gender_error: BaseException | None = None,
    country_error: BaseException | None = None,
    context: Any = None,
    providers: Any = None,
) -> PersonModel:
    """A model all of whose parts note what is done with them."""
    model = PersonModel(StandInMeta(calls=calls, context=context))
    model.hidden_model_gender = StandInGender(calls, gender_error)
    model.hidden_model_country = StandInCountry(calls, country_error, providers)
    calls.clear()
    return model


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


def test_leaving_without_an_error_hands_over_three_times_none() -> None:
    calls = Calls()
    model_of(calls).fit(FRAME)
    assert calls[-1] == ("exit", (None, None, None), {})


@pytest.mark.parametrize("swallow", [True, False, None])
def test_what_exit_answers_does_not_matter_without_an_error(swallow: Any) -> None:
    calls = Calls()
    model = model_of(calls, context=RecordingContext(calls, swallow=swallow))
    assert model.fit(FRAME) is model


# The hidden models


def test_the_country_models_map_is_taken_over_as_the_very_dict() -> None:
    model = model_of(Calls())
    model.fit(FRAME)
    assert model.country_to_provider_map is model.hidden_model_country.country_to_provider_map


def test_the_map_is_set_through_the_property_after_the_country_model_was_fitted() -> None:
    calls = Calls()

    class Noting(PersonModel):
        country_to_provider_map = property(None, lambda self, value: calls.append(("set", value)))

    model = Noting(StandInMeta(calls=calls))
    model.hidden_model_gender = None
    model.hidden_model_country = StandInCountry(calls)
    model.fit(FRAME)
    assert [call[0] for call in calls] == ["extract", "unfold", "enter", "country", "set", "exit"]
    assert calls[4][1] is model.hidden_model_country.country_to_provider_map


def test_a_model_without_a_country_model_fits_the_gender_and_keeps_its_map() -> None:
    calls = Calls()
    model = model_of(calls)
    model.hidden_model_country = None
    providers = {"old": 1}
    model.country_to_provider_map = providers
    model.fit(FRAME)
    assert "gender" in calls.names()
    assert model.country_to_provider_map is providers


@pytest.mark.parametrize("other", [None, 0, object(), Histogram, DiscreteModel])
def test_a_hidden_country_model_of_another_kind_is_skipped(other: Any) -> None:
    calls = Calls()
    model = model_of(calls)
    model.hidden_model_country = other
    model.fit(FRAME)
    assert calls.names() == ["extract", "unfold", "enter", "gender", "exit"]
    with pytest.raises(ModelNotFittedError):
        _ = model.country_to_provider_map


@pytest.mark.parametrize("other", [None, 0, object(), Histogram, DiscreteModel])
def test_a_hidden_gender_model_of_another_kind_is_skipped(other: Any) -> None:
    calls = Calls()
    model = model_of(calls)
    model.hidden_model_gender = other
    model.fit(FRAME)
    assert calls.names() == ["extract", "unfold", "enter", "country", "exit"]


def test_the_uniform_histogram_is_never_fitted() -> None:
    model = person_model(PersonLabels(firstname="f"))
    before = dict(model.hidden_model_gender._probabilities)
    model.fit(pd.DataFrame({"f": ["Ann"], "person_gender": ["F"]}))
    assert model.hidden_model_gender._probabilities == before


@pytest.mark.parametrize("name", ["GenderModel", "CountryModel"])
def test_the_classes_are_looked_up_when_fitting(monkeypatch: pytest.MonkeyPatch, name: str) -> None:
    class Unrelated:
        pass

    calls = Calls()
    model = model_of(calls)
    monkeypatch.setattr(person, name, Unrelated)
    model.fit(FRAME)
    assert {"GenderModel": "gender", "CountryModel": "country"}[name] not in calls.names()


def test_a_replaced_class_makes_its_instances_be_fitted(monkeypatch: pytest.MonkeyPatch) -> None:
    class Other:
        def fit(self, df: pd.DataFrame) -> None:
            fitted.append(df)

    fitted: list[pd.DataFrame] = []
    model = model_of(Calls())
    model.hidden_model_gender = Other()
    monkeypatch.setattr(person, "GenderModel", Other)
    model.fit(FRAME)
    assert fitted[0] is FRAME


def test_fitting_again_repeats_all_steps_and_replaces_the_map() -> None:
    model = person_model()
    model.fit(people(countries=["GB"]))
    model.fit(people(rows=2, countries=["DE"]))
    assert list(model.country_to_provider_map) == ["DE"]
    assert model.hidden_model_country._probabilities == {"DE": 1.0}
    assert model.hidden_model_gender._probabilities == {"F": 0.5, "M": 0.5}


# Failures


def test_an_error_of_the_base_class_comes_before_anything_else(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    calls = Calls()
    model = model_of(calls)
    error = RuntimeError("no")
    monkeypatch.setattr(DiscreteModel, "fit", raising(error))
    with pytest.raises(RuntimeError) as caught:
        model.fit(FRAME)
    assert caught.value is error
    assert calls == []


def test_an_error_of_unfold_propagates_and_nothing_is_entered() -> None:
    calls = Calls()
    model = model_of(calls)
    error = RuntimeError("no")
    model._meta.unfold = raising(error)
    with pytest.raises(RuntimeError) as caught:
        model.fit(FRAME)
    assert caught.value is error
    assert calls.names() == ["extract"]


def test_an_error_on_entering_propagates_and_nothing_is_left() -> None:
    calls = Calls()
    error = RuntimeError("no")

    class Closed(RecordingContext):
        def __enter__(self) -> None:
            raise error

    with pytest.raises(RuntimeError) as caught:
        model_of(calls, context=Closed(calls)).fit(FRAME)
    assert caught.value is error
    assert calls.names() == ["extract", "unfold"]


@pytest.mark.parametrize("where", ["gender_error", "country_error"])
@pytest.mark.parametrize("error", [RuntimeError("no"), Stop()])
def test_an_error_inside_is_handed_to_exit_with_type_value_and_traceback(
    where: str, error: BaseException
) -> None:
    calls = Calls()
    with pytest.raises(type(error)) as caught:
        model_of(calls, **{where: error}).fit(FRAME)
    assert caught.value is error
    name, details, keywords = calls[-1]
    assert (name, keywords) == ("exit", {})
    assert details[:2] == (type(error), error)
    assert isinstance(details[2], TracebackType)


def test_exit_sees_the_error_as_the_one_being_handled() -> None:
    seen = []

    class Looking(RecordingContext):
        def __exit__(self, *details: object) -> None:
            seen.append(sys.exception())

    error = RuntimeError("no")
    with pytest.raises(RuntimeError):
        model_of(Calls(), gender_error=error, context=Looking(Calls())).fit(FRAME)
    assert seen == [error]


def test_the_traceback_handed_to_exit_begins_in_fit() -> None:
    calls = Calls()
    with pytest.raises(RuntimeError):
        model_of(calls, gender_error=RuntimeError("no")).fit(FRAME)
    traceback = calls[-1][1][2]
    code = traceback.tb_frame.f_code
    assert code.co_name == "vantrel.model.models.person.PersonModel.fit"
    assert traceback.tb_lineno == 222
    assert traceback.tb_next.tb_frame.f_code is StandInGender.fit.__code__


def test_an_error_that_propagates_through_exit_names_fit_once() -> None:
    with pytest.raises(RuntimeError) as caught:
        model_of(Calls(), gender_error=RuntimeError("no")).fit(FRAME)
    names = []
    traceback = caught.value.__traceback__
    while traceback is not None:
        names.append(traceback.tb_frame.f_code.co_name)
        traceback = traceback.tb_next
    assert names.count("vantrel.model.models.person.PersonModel.fit") == 1


@pytest.mark.parametrize("where", ["gender_error", "country_error"])
@pytest.mark.parametrize("swallow", [True, 1, "yes"])
@pytest.mark.parametrize("error", [RuntimeError("no"), Stop()])
def test_a_true_answer_of_exit_swallows_the_error_and_fit_goes_on(
    where: str, swallow: Any, error: BaseException
) -> None:
    calls = Calls()
    context = RecordingContext(calls, swallow=swallow)
    model = model_of(calls, context=context, **{where: error})
    assert model.fit(FRAME) is model
    assert sys.exception() is None


@pytest.mark.parametrize("answer", [False, None, 0, ""])
def test_a_false_answer_of_exit_lets_the_error_through(answer: Any) -> None:
    calls = Calls()
    error = RuntimeError("no")
    context = RecordingContext(calls, swallow=answer)
    with pytest.raises(RuntimeError) as caught:
        model_of(calls, context=context, gender_error=error).fit(FRAME)
    assert caught.value is error


def test_an_answer_of_exit_without_a_truth_value_fails_as_its_test() -> None:
    class Unclear:
        def __bool__(self) -> bool:
            raise ValueError("unclear")

    calls = Calls()
    error = RuntimeError("no")
    context = RecordingContext(calls, swallow=Unclear())
    with pytest.raises(ValueError, match=r"^unclear$") as caught:
        model_of(calls, context=context, gender_error=error).fit(FRAME)
    assert caught.value.__context__ is error


def test_an_error_of_exit_replaces_the_first_and_has_it_as_its_context() -> None:
    class Broken(RecordingContext):
        def __exit__(self, *details: object) -> None:
            raise LookupError("exit")

    error = RuntimeError("no")
    with pytest.raises(LookupError) as caught:
        model_of(Calls(), gender_error=error, context=Broken(Calls())).fit(FRAME)
    assert caught.value.__context__ is error


def test_an_error_of_exit_without_a_first_one_has_no_context() -> None:
    class Broken(RecordingContext):
        def __exit__(self, *details: object) -> None:
            raise LookupError("exit")

    with pytest.raises(LookupError) as caught:
        model_of(Calls(), context=Broken(Calls())).fit(FRAME)
    assert caught.value.__context__ is None


def test_exit_that_raises_the_very_error_again_lets_it_through() -> None:
    class Again(RecordingContext):
        def __exit__(self, *details: object) -> None:
            raise details[1]

    error = RuntimeError("no")
    with pytest.raises(RuntimeError) as caught:
        model_of(Calls(), gender_error=error, context=Again(Calls())).fit(FRAME)
    assert caught.value is error
    assert error.__context__ is None


def test_fitting_while_another_error_is_handled_keeps_that_as_the_context() -> None:
    outer = KeyError("outer")
    error = RuntimeError("no")
    try:
        raise outer
    except KeyError:
        with pytest.raises(RuntimeError):
            model_of(Calls(), gender_error=error).fit(FRAME)
    assert error.__context__ is outer


def test_a_context_without_enter_is_refused() -> None:
    class NoEnter:
        def __exit__(self, *details: object) -> None: ...

    with pytest.raises(TypeError) as caught:
        model_of(Calls(), context=NoEnter()).fit(FRAME)
    message = "'NoEnter' object does not support the context manager protocol"
    assert str(caught.value) == message


def test_a_context_without_exit_is_refused_before_it_is_entered() -> None:
    calls = Calls()

    class NoExit:
        def __enter__(self) -> None:
            calls.append(("enter", (), {}))

    with pytest.raises(TypeError) as caught:
        model_of(calls, context=NoExit()).fit(FRAME)
    assert str(caught.value) == (
        "'NoExit' object does not support the context manager protocol (missed __exit__ method)"
    )
    assert "enter" not in calls.names()


def test_enter_and_exit_are_looked_up_on_the_type() -> None:
    calls = Calls()
    context = RecordingContext(calls)
    context.__enter__ = raising(RuntimeError("instance"))
    context.__exit__ = raising(RuntimeError("instance"))
    model_of(calls, context=context).fit(FRAME)
    assert calls.names()[-1] == "exit"


def test_exit_is_looked_up_before_entering() -> None:
    calls = Calls()

    class Changing:
        def __enter__(self) -> None:
            type(self).__exit__ = lambda self, *details: calls.append(("new", details, {}))

        def __exit__(self, *details: object) -> None:
            calls.append(("old", details, {}))

    model_of(calls, context=Changing()).fit(FRAME)
    assert calls.names()[-1] == "old"


def test_a_failing_gender_model_leaves_the_country_model_unfitted() -> None:
    calls = Calls()
    with pytest.raises(RuntimeError):
        model_of(calls, gender_error=RuntimeError("no")).fit(FRAME)
    assert calls.names() == ["extract", "unfold", "enter", "gender", "exit"]


def test_a_failing_country_model_leaves_the_provider_map_unchanged() -> None:
    model = model_of(Calls(), country_error=RuntimeError("no"))
    providers = {"old": 1}
    model.country_to_provider_map = providers
    with pytest.raises(RuntimeError):
        model.fit(FRAME)
    assert model.country_to_provider_map is providers


def test_a_country_models_map_that_is_no_dict_is_refused_inside_the_context() -> None:
    calls = Calls()
    model = model_of(calls, providers=[1])
    with pytest.raises(TypeError) as caught:
        model.fit(FRAME)
    assert str(caught.value) == "Argument 'value' has incorrect type (expected dict, got list)"
    assert calls[-1][1][0] is TypeError


def test_a_missing_column_fails_as_the_meta_does() -> None:
    with pytest.raises(KeyError) as caught:
        person_model(PersonLabels(gender="sex")).fit(FRAME)
    message = "The table has no column 'sex'; its columns are: 'gender', 'title', 'country'."
    assert str(caught.value) == message


# Real people


def test_real_passengers_are_learnt() -> None:
    df = read_table(EXAMPLES / "passengers.csv")
    model = person_model(PersonLabels(gender="sex", title="title")).fit(df)
    shares = df["sex"].value_counts(normalize=True)
    learnt = model.hidden_model_gender._probabilities
    assert learnt == {"F": pytest.approx(shares["female"]), "M": pytest.approx(shares["male"])}
    assert model.hidden_model_country is None


def test_real_respondents_are_learnt() -> None:
    df = read_table(EXAMPLES / "respondents.csv").head(2_000)
    model = person_model(PersonLabels(gender="gender", country="country"))
    with pytest.warns(UserWarning, match="Australia"):
        model.fit(df)
    countries = df["country"].dropna().unique().tolist()
    assert list(model.country_to_provider_map) == countries
    assert list(model.hidden_model_country._probabilities) == countries


def test_fitting_leaves_the_callers_frame_alone() -> None:
    df = people()
    before = df.copy(deep=True)
    person_model(ALL_LABELS).fit(df)
    pd.testing.assert_frame_equal(df, before)

"""The context in which the hidden models are fitted is entered and left as by a `with` statement."""

import sys
from types import TracebackType
from typing import Any

import pytest

from support.fitting import FRAME, StandInGender, model_of
from support.recording import Calls, RecordingContext, Stop, raising


def test_leaving_without_an_error_hands_over_three_times_none() -> None:
    calls = Calls()
    model_of(calls).fit(FRAME)
    assert calls[-1] == ("exit", (None, None, None), {})


@pytest.mark.parametrize("swallow", [True, False, None])
def test_what_exit_answers_does_not_matter_without_an_error(swallow: Any) -> None:
    calls = Calls()
    model = model_of(calls, context=RecordingContext(calls, swallow=swallow))
    assert model.fit(FRAME) is model


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

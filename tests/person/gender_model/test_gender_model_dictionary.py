"""Rebuilding a gender model from its dictionary form."""

from typing import Any, Dict  # noqa: UP035 - the module's own annotations are spelt so

import pandas as pd
import pytest

from support import readings_sampling as readings
from support.calls import Text
from support.gender_models import TITLES, model_of
from support.recording import Calls
from vantrel.metadata.value import String
from vantrel.model.models import person
from vantrel.model.models.person import GenderModel


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

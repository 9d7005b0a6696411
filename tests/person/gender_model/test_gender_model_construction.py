"""Making a gender model: its keys, its patterns, and what it refuses."""

from typing import Any

import numpy as np
import pytest

from support.calls import Text
from support.gender_models import model_of
from support.recording import Calls
from vantrel.metadata.value import String
from vantrel.model.models.histogram import Histogram
from vantrel.model.models.person import GenderModel


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

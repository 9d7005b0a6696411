"""Sorting values into collections by patterns."""

import re

import numpy as np
import pandas as pd
import pytest

from vantrel.util.person import collections_from_mapping

MAPPING = {"F": "^(f|dr)$", "M": "^(m|dr)$"}


def test_each_value_goes_to_one_list_or_none() -> None:
    found = collections_from_mapping(["f", "dr", "m", "zz"], MAPPING, "A")
    assert found == {"F": ["f"], "M": ["m"], "A": ["dr"]}


def test_keys_keep_the_order_of_the_mapping_and_end_with_the_ambiguous_one() -> None:
    assert list(collections_from_mapping([], {"M": "m", "F": "f"}, "A")) == ["M", "F", "A"]


def test_empty_lists_are_there() -> None:
    assert collections_from_mapping([], MAPPING, "A") == {"F": [], "M": [], "A": []}


def test_values_stand_in_first_seen_order_without_repeats() -> None:
    found = collections_from_mapping(["b1", "a", "b1", "b2", "a", "b0"], {"B": "b"}, "A")
    assert found["B"] == ["b1", "b2", "b0"]


def test_case_is_ignored_and_kept() -> None:
    assert collections_from_mapping(["F", "f", "DR"], MAPPING, "A") == {
        "F": ["F", "f"],
        "M": [],
        "A": ["DR"],
    }


def test_patterns_are_searched_anywhere_unless_anchored() -> None:
    assert collections_from_mapping(["xfx"], {"F": "f", "M": "^f"}, "A")["F"] == ["xfx"]


def test_values_that_are_no_text_are_matched_by_their_text() -> None:
    found = collections_from_mapping([1, 2, None, np.nan, pd.NA], {"F": "^1$", "M": "^2$"}, "A")
    assert found == {"F": [1], "M": [2], "A": []}


def test_a_series_with_missing_values_is_sorted() -> None:
    assert collections_from_mapping(pd.Series(["f", None, "m"]), MAPPING, "A")["M"] == ["m"]


@pytest.mark.parametrize("dtype", ["object", "str", "string", "category"])
def test_a_series_is_sorted_as_the_list_of_its_elements(dtype: str) -> None:
    values = pd.Series(["m", "f", None, "dr", "m", "nothing", "F", None, "f"], dtype=dtype)
    mapping = {**MAPPING, "N": "^n"}
    found = collections_from_mapping(values, mapping, "A")
    expected = collections_from_mapping(list(values), mapping, "A")
    assert repr(found) == repr(expected)
    assert {type(value) for values in found.values() for value in values} == {
        type(value) for values in expected.values() for value in values
    }


def test_a_pattern_of_none_matches_nothing() -> None:
    assert collections_from_mapping(["f"], {"F": "f", "M": None}, "A") == {
        "F": ["f"],
        "M": [],
        "A": [],
    }


def test_a_pattern_that_is_no_expression_is_refused() -> None:
    with pytest.raises(re.error):
        collections_from_mapping(["f"], {"F": "("}, "A")


def test_each_pattern_is_compiled_once(monkeypatch: pytest.MonkeyPatch) -> None:
    compiled = []
    original = re.compile

    def noted(pattern: str, *flags: int) -> re.Pattern[str]:
        compiled.append(pattern)
        return original(pattern, *flags)

    monkeypatch.setattr(re, "compile", noted)
    collections_from_mapping(list("abcdef"), MAPPING, "A")
    assert compiled == list(MAPPING.values())


def test_a_repeated_value_is_searched_once(monkeypatch: pytest.MonkeyPatch) -> None:
    searched = []

    class Pattern:
        def search(self, text: str) -> bool:
            searched.append(text)
            return False

    monkeypatch.setattr(re, "compile", lambda *_: Pattern())
    collections_from_mapping(pd.Series(["f", "m"] * 1_000), {"F": "f"}, "A")
    assert searched == ["f", "m"]

"""Model files that are refused: what the message says, and that it is one line."""

import json
from collections.abc import Callable
from pathlib import Path
from typing import Any

import pandas as pd
import pytest

from vantrel.config import PersonLabels
from vantrel.metadata.value import Person
from vantrel.model.models.person import PersonModel
from vantrel.storage.models import MOST_BYTES, ModelFileError, load, save

LABELS = PersonLabels(gender="sex", title="title", fullname="whole", country="land")
REMEDY = " Correct it or fit it again."


@pytest.fixture
def path(tmp_path: Path, people: pd.DataFrame) -> Path:
    save(PersonModel(meta=Person("person", LABELS)).fit(people), tmp_path / "m.json")
    return tmp_path / "m.json"


def refusal(path: Path) -> str:
    """Gives the message with which a model file is refused, without its start."""
    with pytest.raises(ModelFileError) as caught:
        load(path)
    message = str(caught.value)
    assert "\n" not in message
    assert message.startswith(f"Model file {path} ")
    return message.removeprefix(f"Model file {path} ")


def edited(path: Path, edit: Callable[[Any], Any]) -> str:
    """Edits a model file and gives the message with which it is refused."""
    form = json.loads(path.read_text())
    edit(form)
    path.write_text(json.dumps(form))
    return refusal(path)


def parent(form: Any, where: list[str | int]) -> Any:
    """Goes down to where the last key of a path is looked up."""
    for key in where[:-1]:
        form = form[key]
    return form


def test_a_file_that_is_not_there(tmp_path: Path) -> None:
    assert refusal(tmp_path / "m") == "cannot be read: No such file or directory."


@pytest.mark.parametrize(
    ("content", "reason"),
    [
        (b"", "Expecting value: line 1 column 1 (char 0)"),
        (b"{", "Expecting property name enclosed in double quotes: line 1 column 2 (char 1)"),
        (b"\xff", "'utf-8' codec can't decode byte 0xff in position 0: invalid start byte"),
        (b"[" * 100_000, "maximum recursion depth exceeded while decoding a JSON array from a"
         " unicode string"),
    ],
)  # fmt: skip
def test_what_is_not_json(tmp_path: Path, content: bytes, reason: str) -> None:
    (tmp_path / "m").write_bytes(content)
    assert refusal(tmp_path / "m") == (
        f"is not JSON ({reason}): give a file that 'vantrel fit' wrote."
    )


def test_a_file_that_is_too_large(tmp_path: Path) -> None:
    (tmp_path / "m").write_bytes(b" " * (MOST_BYTES + 1))
    assert refusal(tmp_path / "m") == (
        "has 16,777,217 bytes, more than the 16,777,216 that a model may have: give a file that"
        " 'vantrel fit' wrote."
    )


def test_a_file_of_the_greatest_size(path: Path) -> None:
    path.write_bytes(path.read_bytes().ljust(MOST_BYTES))
    assert load(path).name == "person"


@pytest.mark.parametrize("content", ["[]", "{}", "5", '{"format": "other"}'])
def test_json_that_is_no_model(tmp_path: Path, content: str) -> None:
    (tmp_path / "m").write_text(content)
    assert refusal(tmp_path / "m") == (
        "cannot be used: it is no model; give a file that 'vantrel fit' wrote."
    )


def test_a_newer_schema(path: Path) -> None:
    assert edited(path, lambda form: form.update(schema_version=2)) == (
        "cannot be used: its schema version is 2, the newest known here is 1: install a newer"
        " vantrel."
    )


@pytest.mark.parametrize(("number", "shown"), [("NaN", "not a number"),
    ("Infinity", "infinite or too large"), ("-Infinity", "infinite or too large"),
    ("1e999", "infinite or too large"), ("-1e999", "infinite or too large"),
    ("1" * 19, "infinite or too large"), ("9" * 5_000, "infinite or too large")])  # fmt: skip
def test_a_number_that_is_none(path: Path, number: str, shown: str) -> None:
    text = path.read_text()
    assert '"dict_cache_size": 10000' in text
    path.write_text(text.replace('"dict_cache_size": 10000', f'"dict_cache_size": {number}'))
    assert refusal(path) == f"cannot be used: model.config.dict_cache_size is {shown}.{REMEDY}"


def test_a_key_that_comes_twice(path: Path) -> None:
    text = path.read_text()
    path.write_text(text.replace('"name": "land"', '"name": "town", "name": "land"', 1))
    assert refusal(path) == (
        f"cannot be used: model.meta.children.land has the key 'name' twice.{REMEDY}"
    )


def test_a_key_that_comes_twice_at_the_top(path: Path) -> None:
    path.write_text('{"format": 1,' + path.read_text().lstrip("{"))
    assert refusal(path) == f"cannot be used: it has the key 'format' twice.{REMEDY}"


def test_a_key_that_comes_twice_in_an_object_whose_key_does(path: Path) -> None:
    text = path.read_text()
    path.write_text(text.replace('"config": {', '"config": {"a": 1, "a": 2}, "config": {', 1))
    assert refusal(path) == f"cannot be used: model has the key 'config' twice.{REMEDY}"


def test_more_objects_and_lists_than_memory_is_spent_on(path: Path) -> None:
    text = path.read_text()
    brackets = "[" * (500_000 - text.count("{") - text.count("["))
    path.write_text(text.replace('"name": "person"', f'"name": "{brackets}"', 1))
    assert load(path).name == brackets
    path.write_text(text.replace('"name": "person"', f'"name": "{brackets}{{"', 1))
    assert refusal(path) == f"cannot be used: it has more than 500,000 objects and lists.{REMEDY}"


def test_half_a_character(path: Path) -> None:
    assert edited(path, lambda form: form["model"]["meta"].update(name="\ud800")) == (
        f"cannot be used: model.meta.name holds half a character, U+D800.{REMEDY}"
    )


def test_half_a_character_in_a_key(path: Path) -> None:
    assert edited(path, lambda form: form["model"].update({"\udfff": 1})) == (
        f"cannot be used: a key of model holds half a character, U+DFFF.{REMEDY}"
    )


def test_deep_nesting(path: Path) -> None:
    deep: list[Any] = []
    for _ in range(30):
        deep = [deep]
    assert edited(path, lambda form: form["model"]["meta"].update(name=deep)) == (
        f"cannot be used: model.meta.name{'[0]' * 17} is nested more than 20 deep.{REMEDY}"
    )


@pytest.mark.parametrize(
    ("where", "name"),
    [
        (["schema_version"], "it"),
        (["model"], "it"),
        (["model", "meta"], "model"),
        (["model", "config"], "model"),
        (["model", "hidden_model_gender"], "model"),
        (["model", "meta", "name"], "model.meta"),
        (["model", "meta", "labels"], "model.meta"),
        (["model", "meta", "children"], "model.meta"),
        (["model", "meta", "children", "sex"], "model.meta.children"),
        (["model", "meta", "children", "land", "nan_freq"], "model.meta.children.land"),
        (["model", "hidden_model_gender", "meta"], "model.hidden_model_gender"),
        (["model", "hidden_model_gender", "probabilities"], "model.hidden_model_gender"),
        (["model", "hidden_model_country", "probabilities"], "model.hidden_model_country"),
    ],
)
def test_a_missing_key(path: Path, where: list[str | int], name: str) -> None:
    assert edited(path, lambda form: parent(form, where).pop(where[-1])) == (
        f"cannot be used: {name} lacks the key {where[-1]!r}.{REMEDY}"
    )


def test_a_missing_model_of_countries(path: Path) -> None:
    assert edited(path, lambda form: form["model"].pop("hidden_model_country")) == (
        "cannot be used: model lacks 'hidden_model_country' though a label names countries."
        f"{REMEDY}"
    )


def test_a_model_of_countries_that_no_label_names(path: Path) -> None:
    def edit(form: Any) -> None:
        form["model"]["meta"]["labels"]["country"] = None
        del form["model"]["meta"]["children"]["land"]

    assert edited(path, edit) == (
        f"cannot be used: model has 'hidden_model_country' though no label names countries.{REMEDY}"
    )


@pytest.mark.parametrize("key", ["extra", "__class__", "__dict__", "_meta"])
@pytest.mark.parametrize(
    "where",
    [
        [], ["model"], ["model", "meta"], ["model", "meta", "labels"], ["model", "meta", "children"],
        ["model", "meta", "children", "sex"], ["model", "config"], ["model", "hidden_model_gender"],
        ["model", "hidden_model_gender", "probabilities"],
        ["model", "hidden_model_country", "probabilities"],
    ],
)  # fmt: skip
def test_an_unknown_key(path: Path, where: list[str | int], key: str) -> None:
    def add(form: Any) -> None:
        parent(form, [*where, key])[key] = 0.5

    name = ".".join(map(str, where)) or "it"
    assert edited(path, add) == (
        f"cannot be used: {name} has the key {key!r}, which is not known.{REMEDY}"
    )


CHILD = ["model", "meta", "children", "land"]
GENDERS = ["model", "hidden_model_gender", "probabilities"]
COUNTRIES = ["model", "hidden_model_country", "probabilities"]


@pytest.mark.parametrize(
    ("where", "value", "message"),
    [
        (["schema_version"], 0, "is 0, not 1."),
        (["schema_version"], "1", "is '1', not 1."),
        (["schema_version"], True, "is true, not 1."),
        (["schema_version"], None, "is null, not 1."),
        (["model"], [], "is a list of 0, not an object."),
        (["model", "meta"], 5, "is 5, not an object."),
        (["model", "config"], "x", "is 'x', not an object."),
        (["model", "config"], None, "is null, not an object."),
        (["model", "hidden_model_gender"], None, "is null, not an object."),
        (["model", "meta", "type"], "string", "is 'string', not 'person'."),
        (["model", "meta", "type"], [], "is a list of 0, not 'person'."),
        (["model", "meta", "name"], 5, "is 5, not a text."),
        (["model", "meta", "name"], {"a": 1}, "is an object of 1, not a text."),
        (["model", "meta", "labels"], [], "is a list of 0, not an object."),
        (["model", "meta", "labels", "email"], 5, "is 5, not a text."),
        (["model", "meta", "labels", "email"], "", "is '', not the name of a column."),
        (["model", "meta", "labels", "email"], "x" * 1_001, "has 1,001 characters, more than"
         " 1,000."),
        (["model", "meta", "nan_freq"], 1.5, "is 1.5, not a number from 0 to 1."),
        (["model", "meta", "nan_freq"], -0.1, "is -0.1, not a number from 0 to 1."),
        (["model", "meta", "nan_freq"], True, "is true, not a number from 0 to 1."),
        (["model", "meta", "columns"], "sex", "is 'sex', not a list."),
        (["model", "meta", "children"], [], "is a list of 0, not an object."),
        (["model", "meta", "locales"], [], "is a list of 0, not a list of at least 1."),
        ([*CHILD, "type"], "string", "is 'string', not 'nominal'."),
        ([*CHILD, "name"], "town", "is 'town', not 'land'."),
        ([*CHILD, "categories"], None, "is null, not a list."),
        (["model", "config", "genders"], "F", "is 'F', not a list."),
        (["model", "config", "pwd_length"], [8], "is a list of 1, not a list of the least and the"
         " greatest length."),
        (["model", "config", "pwd_length"], [8, 7], "is [8, 7]: the greatest length comes second."),
        (["model", "config", "dict_cache_size"], 1.0, "is 1.0, not an integer from 0 to"
         " 1,000,000,000,000,000,000."),
        (["model", "config", "home_number_format"], None, "is null, not a text."),
        (["model", "config", "home_number_format"], "x" * 1_001, "has 1,001 characters, more than"
         " 1,000."),
        (["model", "config", "title_male_regex"], 5, "is 5, not a text."),
        (GENDERS, None, "is null, not an object."),
        (GENDERS, {}, "add up to 0, which nothing can be drawn by."),
        (GENDERS, {"F": 0, "M": 0.0}, "add up to 0.0, which nothing can be drawn by."),
        (GENDERS, {"F": 1e308, "M": 1e308}, "add up to inf, which nothing can be drawn by."),
        (GENDERS, {"X": 1}, "has the key 'X', which is not known."),
        (COUNTRIES, {"FR": 1}, "has the key 'FR', which is not known."),
        ([*COUNTRIES, "GB"], -1, "is -1, not a number from 0 on."),
        ([*COUNTRIES, "GB"], "1", "is '1', not a number from 0 on."),
        ([*COUNTRIES, "GB"], True, "is true, not a number from 0 on."),
        (["versions"], [], "is a list of 0, not an object."),
    ],
)  # fmt: skip
def test_a_wrong_value(path: Path, where: list[str | int], value: object, message: str) -> None:
    def put(form: Any) -> None:
        parent(form, where)[where[-1]] = value

    assert edited(path, put) == f"cannot be used: {'.'.join(map(str, where))} {message}{REMEDY}"


@pytest.mark.parametrize(
    ("where", "value", "message"),
    [
        ([*CHILD, "categories"], ["GB", 5], "categories[1] is 5, not a text."),
        ([*CHILD, "categories"], ["G" * 201], "categories[0] has 201 characters, more than 200."),
        ([*CHILD, "categories"], ["GB"] * 2_001, "categories has 2,001 places, more than 2,000:"
         " write each country in one way."),
        (["model", "meta", "children", "title", "categories"], ["Mr", "M" * 1_001], "categories[1]"
         " has 1,001 characters, more than 1,000."),
        ([*CHILD, "categories"], ["Narnia"], "categories: 'Narnia' is neither a country nor a"
         " locale. Write a country as its ISO code, its English name or its name in its own language,"
         " a locale as 'en_GB'."),
        (["model", "meta", "locales"], ["xx_YY"], "locales: 'xx_YY' is neither a country nor a"
         " locale. Write a country as its ISO code, its English name or its name in its own language,"
         " a locale as 'en_GB'."),
        (["model", "config", "genders"], ["F", "X"], "genders[1] is 'X', not 'F' or 'M' or 'NB' or"
         " 'A'."),
        (["model", "config", "pwd_length"], [8, 4_097], "pwd_length[1] is 4097, not an integer"
         " from 0 to 4,096."),
        (["model", "config", "pwd_length"], [-1, 4], "pwd_length[0] is -1, not an integer from 0"
         " to 4,096."),
        (["versions"], {"Faker": 40}, "versions.Faker is 40, not a text."),
    ],
)  # fmt: skip
def test_a_wrong_item(path: Path, where: list[str | int], value: object, message: str) -> None:
    def put(form: Any) -> None:
        parent(form, where)[where[-1]] = value

    start = "".join(f"{key}." for key in where[:-1])
    assert edited(path, put) == f"cannot be used: {start}{message}{REMEDY}"


def test_two_labels_of_one_column(path: Path) -> None:
    assert edited(path, lambda form: form["model"]["meta"]["labels"].update(email="sex")) == (
        "cannot be used: Column 'sex' is labelled 'gender' and 'email': give each attribute a"
        " column of its own."
    )


def test_a_long_value_is_shown_by_its_start(path: Path) -> None:
    assert edited(path, lambda form: form["model"]["meta"].update(nan_freq="a\n" * 5_000)) == (
        f"cannot be used: model.meta.nan_freq is '{'a\\n' * 18}a ..., not a number from 0 to 1."
        f"{REMEDY}"
    )


def test_a_long_key_is_shown_by_its_start(path: Path) -> None:
    assert edited(path, lambda form: form["model"]["meta"]["labels"].update(title="x" * 900)) == (
        f"cannot be used: model.meta.children lacks the key '{'x' * 55} ....{REMEDY}"
    )


def test_a_key_that_is_no_word_is_quoted_in_the_path(path: Path) -> None:
    def rename(form: Any) -> None:
        form["model"]["meta"]["labels"]["gender"] = "the sex"
        child = form["model"]["meta"]["children"].pop("sex")
        form["model"]["meta"]["children"]["the sex"] = {**child, "name": "the sex", "categories": 1}

    assert edited(path, rename) == (
        f"cannot be used: model.meta.children['the sex'].categories is 1, not a list.{REMEDY}"
    )


@pytest.mark.parametrize(
    ("pattern", "message"),
    [
        ("(a+)+$", "could make a search endless: begin it with ^ and let no two repeats match the"
         " same characters, neither one in the other, as in (a+)+, nor side by side, as in a*a*."),
        ("(", "is no regular expression (missing ), unterminated subpattern at position 0):"
         " correct it."),
        ("^(?!x)", "uses what stands from '(?!x)' on, which is not supported in a file: write it"
         " with characters, classes, groups, |, repeats, anchors and a leading (?i) only."),
    ],
)  # fmt: skip
@pytest.mark.parametrize(
    "where",
    [["config", "gender_female_regex"], ["config", "title_non_binary_regex"],
     ["hidden_model_gender", "regex_male"]],
)  # fmt: skip
def test_a_pattern_that_is_not_safe(
    path: Path, where: list[str | int], pattern: str, message: str
) -> None:
    def put(form: Any) -> None:
        parent(form["model"], where)[where[-1]] = pattern
        # What it would be searched in, were it not refused: nobody could wait for the end.
        form["model"]["meta"]["children"]["sex"]["categories"].append("a" * 100_000 + "!")

    assert edited(path, put) == (
        f"cannot be used: model.{where[0]}.{where[1]} is {pattern!r}, which {message}{REMEDY}"
    )

"""Model files that are refused: what the message says, and that it is one line."""

import json
import re
import tracemalloc
from collections.abc import Callable
from pathlib import Path
from typing import Any

import pandas as pd
import pytest

from vantrel.config import PersonLabels
from vantrel.errors import ModelFileError
from vantrel.metadata.value import Person
from vantrel.model.models.person import PersonModel
from vantrel.storage.models import MOST_BYTES, load, save

LABELS = PersonLabels(gender="sex", title="title", fullname="whole", country="land")
REMEDY = ". Correct it or fit it again."
GIVE = "give a file that 'vantrel fit' or vantrel.save wrote."


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
        (b"", "Input data was truncated"),
        (b"{", "Input data was truncated"),
        (b"{'a': 1}", "JSON is malformed: object keys must be strings (byte 1)"),
        (b"\xff", "JSON is malformed: invalid character (byte 0)"),
        (
            b'{"a": ' + b"[" * 100_000,
            "maximum recursion depth exceeded while deserializing an object",
        ),
    ],
)
def test_what_is_not_json(tmp_path: Path, content: bytes, reason: str) -> None:
    (tmp_path / "m").write_bytes(content)
    assert refusal(tmp_path / "m") == f"is not JSON ({reason}): {GIVE}"


def test_a_file_that_is_too_large(tmp_path: Path) -> None:
    (tmp_path / "m").write_bytes(b" " * (MOST_BYTES + 1))
    assert refusal(tmp_path / "m") == (
        f"has 16,777,217 bytes, more than the 16,777,216 that a model may have: {GIVE}"
    )


def test_a_file_of_the_greatest_size(path: Path) -> None:
    path.write_bytes(path.read_bytes().ljust(MOST_BYTES))
    assert load(path).name == "person"


@pytest.mark.parametrize("content", ["[]", "{}", "5", '{"format": "other"}'])
def test_json_that_is_no_model(tmp_path: Path, content: str) -> None:
    (tmp_path / "m").write_text(content)
    assert refusal(tmp_path / "m") == (f"cannot be used: it is no model; {GIVE}")


def test_a_newer_schema(path: Path) -> None:
    assert edited(path, lambda form: form.update(schema_version=3)) == (
        "cannot be used: its schema version is 3, the newest known here is 2: install a newer"
        " vantrel."
    )


def test_a_number_that_is_none(path: Path) -> None:
    text = path.read_text()
    assert '"dict_cache_size": 10000' in text
    for number, reason in (
        ("NaN", "is not JSON (JSON is malformed: invalid character (byte "),
        ("-Infinity", "is not JSON (JSON is malformed: invalid character (byte "),
        ("1e999", "cannot be used: Number out of range - at `$.model.config.dict_cache_size`"),
        ("1" * 19, "cannot be used: Expected `int` <= 1000000000000000000 - at `$.model.config."),
        ("9" * 5_000, "cannot be used: Integer value out of range - at `$.model.config."),
    ):
        path.write_text(text.replace('"dict_cache_size": 10000', f'"dict_cache_size": {number}'))
        assert refusal(path).startswith(reason)


@pytest.mark.parametrize(
    ("old", "new", "key"),
    [
        ('"name": "land"', '"name": "town", "name": "land"', "name"),
        ("{", '{"format": "vantrel-person-model",', "format"),
        ('"config": {', '"config": {"genders": ["F"], "genders": ["M"]}, "config": {', "genders"),
        ('"probabilities": {', '"probabilities": {"F": 1, "F": 1,', "F"),
    ],
)
def test_a_key_that_comes_twice(path: Path, old: str, new: str, key: str) -> None:
    path.write_text(path.read_text().replace(old, new, 1))
    assert refusal(path) == f"cannot be used: An object has the key {key!r} twice{REMEDY}"


def test_many_objects_and_lists_take_no_memory(path: Path) -> None:
    text = path.read_text()
    nested = "[" + "[]," * 2_000_000 + "[]]"
    path.write_text(text.replace('"name": "person"', f'"name": {nested}', 1))
    tracemalloc.start()
    try:
        message = refusal(path)
        most = tracemalloc.get_traced_memory()[1]
    finally:
        tracemalloc.stop()
    assert (
        message == f"cannot be used: Expected `str`, got `array` - at `$.model.meta.name`{REMEDY}"
    )
    assert most < 5 * len(nested)


def test_half_a_character(path: Path) -> None:
    message = edited(path, lambda form: form["model"]["meta"].update(name="\ud800 and more"))
    assert re.fullmatch(
        r"is not JSON \(JSON is malformed: unexpected end of hex escape \(byte \d+\)\): "
        + re.escape(GIVE),
        message,
    )


def test_deep_nesting(path: Path) -> None:
    deep: list[Any] = []
    for _ in range(30):
        deep = [deep]
    assert edited(path, lambda form: form["model"]["meta"].update(name=deep)) == (
        f"cannot be used: Expected `str`, got `array` - at `$.model.meta.name`{REMEDY}"
    )


@pytest.mark.parametrize(
    "where",
    [
        ["schema_version"],
        ["model"],
        ["model", "meta"],
        ["model", "config"],
        ["model", "hidden_model_gender"],
        ["model", "meta", "name"],
        ["model", "meta", "labels"],
        ["model", "meta", "children"],
        ["model", "hidden_model_gender", "meta"],
        ["model", "hidden_model_gender", "probabilities"],
        ["model", "hidden_model_country", "probabilities"],
    ],
)
def test_a_missing_key(path: Path, where: list[str | int]) -> None:
    place = f" - at `{'.'.join(map(str, ['$', *where[:-1]]))}`" if where[:-1] else ""
    assert edited(path, lambda form: parent(form, where).pop(where[-1])) == (
        f"cannot be used: Object missing required field `{where[-1]}`{place}{REMEDY}"
    )


def test_a_missing_child(path: Path) -> None:
    assert edited(path, lambda form: form["model"]["meta"]["children"].pop("sex")) == (
        "cannot be used: The children are not the learnt columns, 'sex', 'title', 'land' - at"
        f" `$.model.meta`{REMEDY}"
    )


def test_a_missing_model_of_countries(path: Path) -> None:
    assert edited(path, lambda form: form["model"].pop("hidden_model_country")) == (
        "cannot be used: Of 'hidden_model_country' and a label of countries there is but one - at"
        f" `$.model`{REMEDY}"
    )


@pytest.mark.parametrize("key", ["extra", "__class__", "__dict__", "_meta"])
@pytest.mark.parametrize(
    "where",
    [
        [], ["model"], ["model", "meta"], ["model", "meta", "labels"],
        ["model", "meta", "children", "sex"], ["model", "config"], ["model", "hidden_model_gender"],
    ],
)  # fmt: skip
def test_an_unknown_key(path: Path, where: list[str | int], key: str) -> None:
    def add(form: Any) -> None:
        parent(form, [*where, key])[key] = 0.5

    place = ".".join(map(str, ["$", *where])).replace("children.sex", "children[...]")
    place = f" - at `{place}`" if where else ""
    assert edited(path, add) == (
        f"cannot be used: Object contains unknown field `{key}`{place}{REMEDY}"
    )


CHILD = ["model", "meta", "children", "land"]
GENDERS = ["model", "hidden_model_gender", "probabilities"]
COUNTRIES = ["model", "hidden_model_country", "probabilities"]


@pytest.mark.parametrize(
    ("where", "value", "message"),
    [
        (["schema_version"], 0, "Invalid enum value 0 - at `$.schema_version`"),
        (["schema_version"], "1", "Expected `int`, got `str` - at `$.schema_version`"),
        (["schema_version"], True, "Expected `int`, got `bool` - at `$.schema_version`"),
        (["schema_version"], None, "Expected `int`, got `null` - at `$.schema_version`"),
        (["model"], [], "Expected `object`, got `array` - at `$.model`"),
        (["model", "meta"], 5, "Expected `object`, got `int` - at `$.model.meta`"),
        (["model", "config"], "x", "Expected `object`, got `str` - at `$.model.config`"),
        (["model", "config"], None, "Expected `object`, got `null` - at `$.model.config`"),
        (["model", "hidden_model_gender"], None, "Expected `object`, got `null` - at `$.model.hidden_model_gender`"),
        (["model", "meta", "type"], "string", "Invalid value 'string' - at `$.model.meta.type`"),
        (["model", "meta", "type"], [], "Expected `str` - at `$.model.meta.type`"),
        (["model", "meta", "name"], 5, "Expected `str`, got `int` - at `$.model.meta.name`"),
        (["model", "meta", "name"], {"a": 1}, "Expected `str`, got `object` - at `$.model.meta.name`"),
        (["model", "meta", "labels"], [], "Expected `object`, got `array` - at `$.model.meta.labels`"),
        (["model", "meta", "labels", "email"], 5, "Expected `str | null`, got `int` - at `$.model.meta.labels.email`"),
        (["model", "meta", "labels", "email"], "", "Expected `str` of length >= 1 - at `$.model.meta.labels.email`"),
        (["model", "meta", "labels", "email"], "x" * 1_001, "Expected `str` of length <= 1000 - at `$.model.meta.labels.email`"),
        (["model", "meta", "nan_freq"], 1.5, "Expected `float` <= 1.0 - at `$.model.meta.nan_freq`"),
        (["model", "meta", "nan_freq"], -0.1, "Expected `float` >= 0.0 - at `$.model.meta.nan_freq`"),
        (["model", "meta", "nan_freq"], True, "Expected `float | null`, got `bool` - at `$.model.meta.nan_freq`"),
        (["model", "meta", "columns"], "sex", "Expected `array | null`, got `str` - at `$.model.meta.columns`"),
        (["model", "meta", "children"], [], "Expected `object`, got `array` - at `$.model.meta.children`"),
        (["model", "meta", "locales"], [], "Expected `array` of length >= 1 - at `$.model.meta.locales`"),
        ([*CHILD, "type"], "string", "The child 'land' is that of another column - at `$.model.meta`"),
        ([*CHILD, "name"], "town", "The child 'land' is that of another column - at `$.model.meta`"),
        ([*CHILD, "categories"], None, "Expected `array`, got `null` - at `$.model.meta.children[...].categories`"),
        (["model", "config", "genders"], "F", "Expected `array`, got `str` - at `$.model.config.genders`"),
        (["model", "config", "pwd_length"], [8], "Expected `array` of length 2 - at `$.model.config.pwd_length`"),
        (["model", "config", "pwd_length"], [8, 7], "The greatest of the lengths [8, 7] comes second - at `$.model.config`"),
        (["model", "config", "dict_cache_size"], 1.0, "Expected `int`, got `float` - at `$.model.config.dict_cache_size`"),
        (["model", "config", "home_number_format"], None, "Expected `str`, got `null` - at `$.model.config.home_number_format`"),
        (["model", "config", "home_number_format"], "x" * 1_001, "Expected `str` of length <= 1000 - at `$.model.config.home_number_format`"),
        (["model", "config", "title_male_regex"], 5, "Expected `str`, got `int` - at `$.model.config.title_male_regex`"),
        (GENDERS, None, "Expected `object`, got `null` - at `$.model.hidden_model_gender.probabilities`"),
        (GENDERS, {}, "Nothing can be drawn by weights that add up to 0 - at `$.model.hidden_model_gender`"),
        (GENDERS, {"F": 0, "M": 0.0}, "Nothing can be drawn by weights that add up to 0.0 - at `$.model.hidden_model_gender`"),
        (GENDERS, {"F": 1e308, "M": 1e308}, "Nothing can be drawn by weights that add up to inf - at `$.model.hidden_model_gender`"),
        (GENDERS, {"X": 1}, "Invalid enum value 'X' - at `key` in `$.model.hidden_model_gender.probabilities`"),
        (COUNTRIES, {"FR": 1}, "Countries have probabilities that are none of the categories - at `$.model`"),
        ([*COUNTRIES, "GB"], -1, "Expected `float` >= 0.0 - at `$.model.hidden_model_country.probabilities[...]`"),
        ([*COUNTRIES, "GB"], "1", "Expected `float`, got `str` - at `$.model.hidden_model_country.probabilities[...]`"),
        ([*COUNTRIES, "GB"], True, "Expected `float`, got `bool` - at `$.model.hidden_model_country.probabilities[...]`"),
        (["versions"], [], "Expected `object`, got `array` - at `$.versions`"),
    ],
)  # fmt: skip
def test_a_wrong_value(path: Path, where: list[str | int], value: object, message: str) -> None:
    def put(form: Any) -> None:
        parent(form, where)[where[-1]] = value

    assert edited(path, put) == f"cannot be used: {message}{REMEDY}"


@pytest.mark.parametrize(
    ("where", "value", "message"),
    [
        ([*CHILD, "categories"], ["GB", 5], "Expected `str`, got `int` - at `$.model.meta.children[...].categories[1]`"),
        ([*CHILD, "categories"], ["G" * 201], "Expected `str` of length <= 200 - at `$.model.meta.children[...].categories[0]`"),
        ([*CHILD, "categories"], ["GB"] * 2_001, "There are 2,001 places, more than 2,000; write each country in one way - at `$.model.meta.children[...]`"),
        (["model", "meta", "children", "title", "categories"], ["Mr", "M" * 1_001], "Expected `str` of length <= 1000 - at `$.model.meta.children[...].categories[1]`"),
        ([*CHILD, "categories"], ["Narnia"], "'Narnia' is neither a country nor a locale. Write a country as its ISO code, its English name or its name in its own language, a locale as 'en_GB'. - at `$.model.meta.children[...]`"),
        (["model", "meta", "locales"], ["xx_YY"], "'xx_YY' is neither a country nor a locale. Write a country as its ISO code, its English name or its name in its own language, a locale as 'en_GB'. - at `$.model.meta`"),
        (["model", "config", "genders"], ["F", "X"], "Invalid enum value 'X' - at `$.model.config.genders[1]`"),
        (["model", "config", "pwd_length"], [8, 4_097], "Expected `int` <= 4096 - at `$.model.config.pwd_length[1]`"),
        (["model", "config", "pwd_length"], [-1, 4], "Expected `int` >= 0 - at `$.model.config.pwd_length[0]`"),
        (["versions"], {"Faker": 40}, "Expected `str`, got `int` - at `$.versions[...]`"),
    ],
)  # fmt: skip
def test_a_wrong_item(path: Path, where: list[str | int], value: object, message: str) -> None:
    def put(form: Any) -> None:
        parent(form, where)[where[-1]] = value

    assert edited(path, put) == f"cannot be used: {message}{REMEDY}"


def test_two_labels_of_one_column(path: Path) -> None:
    assert edited(path, lambda form: form["model"]["meta"]["labels"].update(email="sex")) == (
        f"cannot be used: Two labels name one column - at `$.model.meta`{REMEDY}"
    )


def test_a_long_value_is_shown_by_its_start_and_on_one_line(path: Path) -> None:
    message = edited(path, lambda form: form["model"].update({"a\n\x1b[2J" * 5_000: 1}))
    assert message.startswith("cannot be used: Object contains unknown field `a \ufffd[2Ja")
    assert message.endswith(f"\N{HORIZONTAL ELLIPSIS}{REMEDY}")
    assert len(message) < 600


@pytest.mark.parametrize(
    "where",
    [["config", "gender_female_regex"], ["config", "title_non_binary_regex"],
     ["hidden_model_gender", "regex_male"]],
)  # fmt: skip
def test_patterns_of_somebody_else_are_refused(path: Path, where: list[str | int]) -> None:
    def put(form: Any) -> None:
        parent(form["model"], where)[where[-1]] = "^x$"

    assert edited(path, put) == (
        "has patterns of its own, such as '^x$': if you trust whoever made it, add"
        " allow_patterns=True."
    )
    assert load(path, allow_patterns=True).name == "person"


@pytest.mark.parametrize(
    ("pattern", "message"),
    [
        ("(", "cannot be used: pattern '(' is no regular expression (missing ), unterminated"
         " subpattern at position 0): correct it."),
        ("(a|a)+$", "cannot be used: to search with its patterns takes more than 1 seconds. Fit it"
         " again with patterns in which no two repeats match the same characters."),
    ],
)  # fmt: skip
def test_a_search_with_allowed_patterns_is_bounded(
    path: Path, monkeypatch: pytest.MonkeyPatch, pattern: str, message: str
) -> None:
    monkeypatch.setattr("vantrel.storage.patterns.MOST_SECONDS", 1)
    form = json.loads(path.read_text())
    form["model"]["config"]["gender_male_regex"] = pattern
    form["model"]["meta"]["children"]["sex"]["categories"].append("a" * 100 + "!")
    path.write_text(json.dumps(form))
    with pytest.raises(ModelFileError) as caught:
        load(path, allow_patterns=True)
    assert str(caught.value) == f"Model file {path} {message}"

"""Model files."""

import json
from collections.abc import Callable
from pathlib import Path
from typing import Any

import pandas as pd
import pytest

from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.metadata.value import Person
from vantrel.model.models.person import GenderModel, PersonModel
from vantrel.model_file import ModelFileError, load, save

LABELS = PersonLabels(gender="sex", title="title", fullname="whole", country="land")


@pytest.fixture
def model(people: pd.DataFrame) -> PersonModel:
    return PersonModel(meta=Person("person", LABELS)).fit(people)


@pytest.fixture
def path(tmp_path: Path, model: PersonModel) -> Path:
    save(model, tmp_path / "m.json")
    return tmp_path / "m.json"


def test_a_model_survives_its_file(model: PersonModel, path: Path) -> None:
    loaded = load(path)
    assert loaded.to_dict() == model.to_dict()
    assert loaded.config == model.config
    assert isinstance(loaded.hidden_model_gender, GenderModel)
    assert loaded.hidden_model_gender.regex_female == model.config.gender_female_regex
    assert loaded.hidden_model_country is not None
    assert loaded.hidden_model_country.categories == ["GB", "US", "DE"]
    save(loaded, path.with_name("again.json"))
    assert path.with_name("again.json").read_bytes() == path.read_bytes()


def test_a_configuration_of_ones_own_survives_too(people: pd.DataFrame, tmp_path: Path) -> None:
    config = PersonModelConfig(gender_female_regex="^f$", pwd_length=(2, 3), genders=["M"])
    save(PersonModel(meta=Person("person", LABELS), config=config).fit(people), tmp_path / "m")
    assert load(tmp_path / "m").config == config


def test_a_loaded_model_needs_no_fitting(path: Path) -> None:
    loaded = load(path)
    assert list(loaded.country_to_provider_map) == ["GB", "US", "DE"]
    assert list(loaded.sample(n=5)) == ["land", "title", "sex", "whole"]


def test_a_model_without_gender_and_country_can_be_loaded(tmp_path: Path) -> None:
    people = pd.DataFrame({"name": ["A"]})
    meta = Person("person", PersonLabels(fullname="name"), locales=["de_DE"])
    save(PersonModel(meta=meta).fit(people), tmp_path / "m")
    loaded = load(tmp_path / "m")
    assert loaded.hidden_model_gender._probabilities == {"F": 0.5, "M": 0.5}
    assert loaded.locales == ["de_DE"]
    assert loaded.sample(n=3)["name"].notna().all()


def test_a_loaded_model_can_be_fitted_again(path: Path) -> None:
    loaded = load(path)
    loaded.fit(pd.DataFrame({"sex": ["woman"], "title": ["Lady"], "land": ["FR"]}))
    sample = loaded.sample(n=3)
    assert set(sample["sex"]) == {"woman"}
    assert set(sample["title"]) == {"Lady"}
    assert set(sample["land"]) == {"FR"}


def test_the_file_holds_no_names_of_real_people(people: pd.DataFrame, tmp_path: Path) -> None:
    labels = PersonLabels(gender="sex", lastname="surname")
    model = PersonModel(meta=Person("person", labels)).fit(people.assign(surname="Featherstone"))
    save(model, tmp_path / "m")
    assert "Featherstone" not in (tmp_path / "m").read_text()


def test_what_json_cannot_hold_leaves_no_file(people: pd.DataFrame, tmp_path: Path) -> None:
    model = PersonModel(meta=Person("person", LABELS)).fit(people)
    model.hidden_model_gender._probabilities = {"F": float("nan")}
    with pytest.raises(ValueError):
        save(model, tmp_path / "m")
    assert list(tmp_path.iterdir()) == []


def test_a_file_that_is_not_there(tmp_path: Path) -> None:
    with pytest.raises(ModelFileError) as caught:
        load(tmp_path / "m")
    assert str(caught.value) == (
        f"Model file {tmp_path / 'm'} cannot be read: No such file or directory."
    )


@pytest.mark.parametrize(
    "content", [b"", b"{", b"\xff", b'{"a": NaN}', b'{"a": -Infinity}', b"[" * 100_000]
)
def test_what_is_not_json_is_refused(tmp_path: Path, content: bytes) -> None:
    (tmp_path / "m").write_bytes(content)
    with pytest.raises(ModelFileError) as caught:
        load(tmp_path / "m")
    assert str(caught.value).startswith(f"Model file {tmp_path / 'm'} is not JSON (")
    assert str(caught.value).endswith("): give a file that 'vantrel fit' wrote.")


def change(path: Path, edit: Callable[[Any], Any]) -> str:
    """Edits a model file and gives the message with which it is refused, without its start."""
    form = json.loads(path.read_text())
    edit(form)
    path.write_text(json.dumps(form))
    with pytest.raises(ModelFileError) as caught:
        load(path)
    start = f"Model file {path} "
    assert str(caught.value).startswith(start)
    return str(caught.value).removeprefix(start)


@pytest.mark.parametrize(
    "keys",
    [
        ["schema_version"],
        ["model"],
        ["model", "meta"],
        ["model", "meta", "name"],
        ["model", "meta", "labels"],
        ["model", "meta", "children"],
        ["model", "meta", "children", "sex"],
        ["model", "config"],
        ["model", "hidden_model_gender"],
        ["model", "hidden_model_gender", "meta"],
        ["model", "hidden_model_gender", "probabilities"],
        ["model", "hidden_model_country"],
        ["model", "hidden_model_country", "probabilities"],
    ],
)
def test_a_missing_key_is_named(path: Path, keys: list[str]) -> None:
    def remove(form: Any) -> None:
        for key in keys[:-1]:
            form = form[key]
        del form[keys[-1]]

    assert change(path, remove) == f"lacks the key '{keys[-1]}': fit it again."


@pytest.mark.parametrize("content", ["[]", "{}", "5", '{"format": "other"}'])
def test_json_that_is_no_model_is_refused(tmp_path: Path, content: str) -> None:
    (tmp_path / "m").write_text(content)
    with pytest.raises(ModelFileError) as caught:
        load(tmp_path / "m")
    assert str(caught.value) == (
        f"Model file {tmp_path / 'm'} cannot be used: it is no model; give a file that"
        " 'vantrel fit' wrote."
    )


def test_a_newer_schema_is_refused(path: Path) -> None:
    assert change(path, lambda form: form.update(schema_version=2)) == (
        "cannot be used: its schema version is 2, the newest known here is 1: install a newer"
        " vantrel."
    )


@pytest.mark.parametrize("version", [0, "1", True, None])
def test_a_schema_that_never_was_is_refused(path: Path, version: object) -> None:
    assert change(path, lambda form: form.update(schema_version=version)) == (
        f"cannot be used: its schema version is {version!r}, not a number from 1 on."
    )


@pytest.mark.parametrize(
    ("probabilities", "message"),
    [
        ({}, "the probabilities of hidden_model_gender are no object with at least one entry."),
        (None, "the probabilities of hidden_model_gender are no object with at least one entry."),
        ({"F": -1}, "the probability of 'F' in hidden_model_gender is -1."),
        ({"F": "1"}, "the probability of 'F' in hidden_model_gender is '1'."),
        ({"F": True}, "the probability of 'F' in hidden_model_gender is True."),
        ({"F": 0, "M": 0.0}, "the probabilities of hidden_model_gender are all 0."),
    ],
)
def test_probabilities_that_cannot_be_drawn_from_are_refused(
    path: Path, probabilities: object, message: str
) -> None:
    def put(form: Any) -> None:
        form["model"]["hidden_model_gender"]["probabilities"] = probabilities

    assert change(path, put) == f"cannot be used: {message}"


def test_an_unknown_country_is_refused(path: Path) -> None:
    def put(form: Any) -> None:
        form["model"]["meta"]["children"]["land"]["categories"] = ["Narnia"]

    assert change(path, put).startswith("cannot be used: 'Narnia' is neither a country nor")


@pytest.mark.parametrize("key", ["meta", "config", "hidden_model_gender"])
@pytest.mark.parametrize("value", [5, "x", []])
def test_a_part_of_a_wrong_type_is_refused(path: Path, key: str, value: object) -> None:
    assert change(path, lambda form: form["model"].update({key: value})).startswith("cannot be")

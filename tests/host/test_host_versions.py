"""The versions that the rows of a seed depend on."""

import json
import platform
import warnings
from importlib.metadata import version
from pathlib import Path
from typing import Any

import pandas as pd
import pytest

import vantrel
from support.people import fitted_model
from vantrel.config import PersonLabels
from vantrel.errors import ModelFileError, OtherVersionsWarning
from vantrel.storage.models import load, save
from vantrel.versions import differences, versions

CHANGES = {
    "Faker": "names and e-mail addresses may differ",
    "numpy": "what is drawn may differ",
    "pandas": "missing values and types may differ",
    "Python": "what is drawn may differ",
    "vantrel": "anything may differ",
}


@pytest.fixture
def path(tmp_path: Path) -> Path:
    model = fitted_model(PersonLabels(gender="sex"), pd.DataFrame({"sex": ["f", "m"]}))
    save(model, tmp_path / "m.json")
    return tmp_path / "m.json"


def with_versions(path: Path, recorded: Any) -> Path:
    """Puts other versions into a model file, or none at all."""
    form = json.loads(path.read_text())
    del form["versions"]
    path.write_text(json.dumps(form if recorded is None else {**form, "versions": recorded}))
    return path


def test_the_versions_here() -> None:
    assert versions() == {
        "Faker": version("Faker"),
        "numpy": version("numpy"),
        "pandas": pd.__version__,
        "Python": platform.python_version(),
        "vantrel": vantrel.__version__,
    }


def test_a_model_file_has_them(path: Path) -> None:
    assert json.loads(path.read_text())["versions"] == versions()


def test_the_same_versions_do_not_differ() -> None:
    assert differences(versions()) == []


@pytest.mark.parametrize("name", CHANGES)
def test_each_other_version_is_told_with_what_it_may_change(name: str) -> None:
    here = versions()[name]
    told = f"{name} is {here} here and was 0.1.2: {CHANGES[name]}"
    assert differences({**versions(), name: "0.1.2"}) == [told]
    assert differences({name: "0.1.2"}) == [told]


def test_another_release_of_the_same_python_is_no_difference() -> None:
    major, minor, _ = platform.python_version_tuple()
    assert differences({"Python": f"{major}.{minor}.99"}) == []
    assert len(differences({"Python": f"{major}.{minor}9.0"})) == 1


@pytest.mark.parametrize("recorded", [{}, {"Another": "1"}])
def test_what_is_not_recorded_or_not_known_is_not_compared(recorded: dict[str, str]) -> None:
    assert differences(recorded) == []


@pytest.mark.parametrize("recorded", [None, {}, versions(), {"Another": "1"}])
def test_a_model_that_tells_of_no_other_versions_loads_quietly(
    path: Path, recorded: dict[str, str] | None
) -> None:
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        assert load(with_versions(path, recorded)).name == "person"


def test_a_model_of_other_versions_is_loaded_with_a_warning(path: Path) -> None:
    other = {**versions(), "pandas": "1.0", "Faker": "0.1.2"}
    with pytest.warns(OtherVersionsWarning) as caught:
        model = load(with_versions(path, other))
    assert len(model.sample(3)) == 3
    assert [str(warning.message) for warning in caught] == [
        "The same seed may give other rows than where the model was fitted: Faker is"
        f" {version('Faker')} here and was 0.1.2: names and e-mail addresses may differ; pandas is"
        f" {pd.__version__} here and was 1.0: missing values and types may differ. For the same"
        " rows install what was there."
    ]


@pytest.mark.parametrize(
    ("value", "message"),
    [
        ("1\n2", "Expected `str` matching regex '^[ -~]*$' - at"),
        ("\x1b[2J", "Expected `str` matching regex '^[ -~]*$' - at"),
        ("1" * 101, "Expected `str` of length <= 100 - at"),
        (40, "Expected `str`, got `int` - at"),
    ],
)
def test_what_is_no_version_is_refused(path: Path, value: object, message: str) -> None:
    with pytest.raises(ModelFileError) as caught:
        load(with_versions(path, {"Faker": value}))
    assert str(caught.value) == (
        f"Model file {path} cannot be used: {message} `$.versions[...]`. Correct it or fit it"
        " again."
    )

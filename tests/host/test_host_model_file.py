"""Model files."""

import json
import re
from pathlib import Path

import pandas as pd
import pytest

import vantrel
from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.metadata.value import Person
from vantrel.model.exceptions import ModelNotFittedError
from vantrel.model.models.person import GenderModel, PersonModel
from vantrel.storage.models import MOST_BYTES, load, save

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
    assert load(tmp_path / "m", allow_patterns=True).config == config


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


def test_a_model_of_missing_countries_only_can_be_sampled(path: Path) -> None:
    form = json.loads(path.read_text())
    form["model"]["meta"]["children"]["land"]["nan_freq"] = 1
    path.write_text(json.dumps(form))
    with pytest.raises(TypeError):
        load(path).sample(n=3)
    people = vantrel.sample(load(path), 20, seed=1)
    assert people["land"].isna().all()
    assert people["whole"].notna().all()


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


def unsaved(model: PersonModel, folder: Path) -> str:
    """Gives the message with which a model is not saved; nothing is written."""
    with pytest.raises(ValueError) as caught:
        save(model, folder / "m")
    assert list(folder.iterdir()) == []
    start = "The model cannot be kept in a file: "
    assert str(caught.value).startswith(start)
    return str(caught.value).removeprefix(start)


@pytest.mark.parametrize(
    ("labels", "column"),
    [
        (PersonLabels(gender="sex", country="land"), "sex"),
        (PersonLabels(title="form"), "form"),
        (PersonLabels(country="land"), "land"),
    ],
)
def test_a_model_that_is_not_fitted_is_not_saved(
    labels: PersonLabels, column: str, tmp_path: Path
) -> None:
    fresh = PersonModel(meta=Person("person", labels))
    with pytest.raises(ModelNotFittedError) as caught:
        save(fresh, tmp_path / "m")
    assert str(caught.value) == (
        f"Nothing has been learnt of column {column!r} yet: fit the model first."
    )
    assert list(tmp_path.iterdir()) == []


def test_a_model_is_overwritten_by_force_only(model: PersonModel, tmp_path: Path) -> None:
    (tmp_path / "m").write_text("mine")
    with pytest.raises(vantrel.OverwriteError) as caught:
        save(model, tmp_path / "m")
    assert str(caught.value) == (
        f"{tmp_path / 'm'} is there already: add force=True to overwrite it."
    )
    assert (tmp_path / "m").read_text() == "mine"
    save(model, tmp_path / "m", force=True)
    assert load(tmp_path / "m").name == model.name


def test_a_model_of_case_3_from_a_file_can_be_fitted_again(
    people: pd.DataFrame, tmp_path: Path
) -> None:
    model = vantrel.fit(people, country="land", generate=["firstname"], detect=False)
    save(model, tmp_path / "m")
    loaded = load(tmp_path / "m")
    assert loaded.to_dict() == model.to_dict()
    assert loaded.fit(people.assign(land="FR")).sample(n=2)["land"].tolist() == ["FR", "FR"]


def test_countries_in_more_than_2_000_spellings_are_not_saved(
    people: pd.DataFrame, tmp_path: Path
) -> None:
    spellings = [" " * (i // 100) + "GB" + " " * (i % 100) for i in range(2_001)]
    countries = pd.concat([people, pd.DataFrame({"land": spellings})], ignore_index=True)
    model = PersonModel(meta=Person("person", LABELS)).fit(countries)
    assert unsaved(model, tmp_path) == (
        "There are 2,003 places, more than 2,000; write each country in one way - at"
        " `$.model.meta.children[...]`"
    )


def test_a_long_title_is_not_saved(people: pd.DataFrame, tmp_path: Path) -> None:
    people.loc[0, "title"] = "Mrs" + "s" * 1_000
    model = PersonModel(meta=Person("person", LABELS)).fit(people)
    assert unsaved(model, tmp_path) == (
        "Expected `str` of length <= 1000 - at `$.model.meta.children[...].categories[0]`"
    )


def test_a_model_that_is_too_large_is_not_saved(
    model: PersonModel, tmp_path: Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.setattr("vantrel.storage.models.MOST_BYTES", 1_000)
    assert re.fullmatch(
        r"it has \d,\d\d\d bytes, more than 1,000: label columns of fewer distinct values\.",
        unsaved(model, tmp_path),
    )


def test_a_column_of_a_hundred_thousand_titles_fits_in_a_file(tmp_path: Path) -> None:
    titles = [f"Mrs {i}" for i in range(100_000)]
    people = pd.DataFrame({"title": ["Mr", "Mrs", *titles]})
    save(PersonModel(meta=Person("p", PersonLabels(title="title"))).fit(people), tmp_path / "m")
    assert load(tmp_path / "m").meta["title"].categories == ["Mr", "Mrs", *titles]
    assert (tmp_path / "m").stat().st_size < MOST_BYTES / 2

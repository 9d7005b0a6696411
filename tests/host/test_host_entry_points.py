"""What someone who writes Python finds on the first screen."""

import subprocess
import sys
from importlib.metadata import version
from pathlib import Path
from typing import Any

import pandas as pd
import pytest

import vantrel
from vantrel.config import PersonModelConfig
from vantrel.fitting import FittingError
from vantrel.model.models.person import PersonModel
from vantrel.util.locale.locale import BorrowedNamesWarning
from vantrel.versions import OtherVersionsWarning


def test_fit_gives_a_model_that_samples(people: pd.DataFrame) -> None:
    before = people.copy()
    model = vantrel.fit(people, gender="sex", title="title", generate=["email"])
    assert isinstance(model, PersonModel)
    assert list(model.sample(1000)) == ["title", "sex", "email"]
    pd.testing.assert_frame_equal(people, before)


def test_without_columns_they_are_found(people: pd.DataFrame) -> None:
    assert vantrel.fit(people).params == {
        "gender": "sex",
        "title": "title",
        "lastname": "surname",
        "country": "land",
    }


def test_settings_and_locales_reach_the_model(people: pd.DataFrame) -> None:
    config = PersonModelConfig(pwd_length=(20, 20))
    model = vantrel.fit(
        people, gender="sex", generate=["password"], locales=["de_DE"], config=config
    )
    assert model.config is config
    assert model.locales == ["de_DE"]
    assert set(model.sample(50)["password"].dropna().str.len()) == {20}


def test_a_seed_gives_the_same_rows_before_and_after_a_file(
    people: pd.DataFrame, tmp_path: Path
) -> None:
    model = vantrel.fit(people, gender="sex", country="land", generate=["firstname", "username"])
    vantrel.save(model, str(tmp_path / "model.json"))
    loaded = vantrel.load(str(tmp_path / "model.json"))
    first = vantrel.sample(model, 300, seed=7)
    pd.testing.assert_frame_equal(vantrel.sample(loaded, 300, seed=7), first)
    assert not vantrel.sample(loaded, 300, seed=8).equals(first)
    vantrel.seed_everything(model, 7)
    drawn = model.sample(300)
    vantrel.seed_everything(loaded, 7)
    pd.testing.assert_frame_equal(loaded.sample(300), drawn)


def test_conditions_are_rows_to_make(people: pd.DataFrame) -> None:
    model = vantrel.fit(people, gender="sex", country="land")
    wanted = pd.DataFrame({"land": ["FR", "GB", "FR"], "sex": ["female", "m", "m"]})
    made = vantrel.sample(model, conditions=wanted, seed=1)
    assert made["land"].tolist() == ["FR", "GB", "FR"]
    assert made["sex"].tolist() == ["f", "m", "m"]


def test_a_drawn_seed_is_told(people: pd.DataFrame, capsys: pytest.CaptureFixture[str]) -> None:
    model = vantrel.fit(people, gender="sex", generate=["firstname"])
    made = vantrel.sample(model, 100)
    out, err = capsys.readouterr()
    assert out == ""
    seed = int(err.removeprefix("vantrel: the seed is "))
    pd.testing.assert_frame_equal(vantrel.sample(model, 100, seed=seed), made)


@pytest.mark.parametrize(
    ("arguments", "message"),
    [
        (
            {"gendr": "sex"},
            "'gendr' is no attribute of a person. Did you mean 'gender'? Known are: gender, title,"
            " firstname, lastname, fullname, email, username, password, mobile_number,"
            " home_number, work_number, country.",
        ),
        (
            {"gender": "Sexe"},
            "The table has no column 'Sexe' for 'gender'. Did you mean 'sex'? Its columns are:"
            " 'land', 'surname', 'title', 'sex', 'nothing'.",
        ),
        (
            {"gender": "nothing"},
            "Column 'nothing' of the table holds missing values only: leave 'gender' out.",
        ),
        (
            {"gender": "sex", "generate": ["title"]},
            "'title' must be learnt: name its column, title=...",
        ),
    ],
)
def test_what_does_not_fit_the_table_is_named(
    arguments: dict[str, object], message: str, people: pd.DataFrame
) -> None:
    people["nothing"] = None
    with pytest.raises(FittingError) as caught:
        vantrel.fit(people, **arguments)  # type: ignore[arg-type]  # each of another type
    assert str(caught.value) == message


def test_a_table_without_people() -> None:
    with pytest.raises(FittingError) as caught:
        vantrel.fit(pd.DataFrame({"price": ["1", "2"]}))
    assert str(caught.value) == "No columns of people were found among 'price': name them."


def test_unknown_countries_are_named(people: pd.DataFrame) -> None:
    people.loc[0, "land"] = "Grmany"
    with pytest.raises(FittingError) as caught:
        vantrel.fit(people, country="land")
    assert str(caught.value) == (
        "Column 'land': 'Grmany' is neither a country nor a locale. Did you mean 'Germany'? Write a"
        " country as its ISO code, its English name or its name in its own language, a locale as"
        " 'en_GB'. Such rows: 1 of 10. Correct or empty these cells, or leave the column out."
    )


@pytest.mark.parametrize(
    ("table", "named"), [("people.csv", "'people.csv'"), ([1, 2], "[1, 2]"), (None, "None")]
)
def test_what_is_no_frame(table: Any, named: str) -> None:
    with pytest.raises(TypeError) as caught:
        vantrel.fit(table, gender="sex")
    assert str(caught.value) == (
        f"A table is a pandas DataFrame, not {named}: read a file with pandas.read_csv."
    )


def test_columns_of_one_name(people: pd.DataFrame) -> None:
    with pytest.raises(FittingError) as caught:
        vantrel.fit(people.set_axis(["sex", "a", "a", "sex"], axis=1), gender="sex")
    assert str(caught.value) == (
        "Columns are there twice: 'a', 'sex'. Give each one name of its own."
    )


@pytest.mark.parametrize(
    ("given", "message"),
    [
        ({"generate": "email"}, "'generate' is a list of attributes: write generate=['email']."),
        ({"locales": "fr_FR"}, "'locales' is a list of locales: write locales=['fr_FR']."),
    ],
)
def test_a_text_in_the_place_of_a_list(
    given: dict[str, Any], message: str, people: pd.DataFrame
) -> None:
    with pytest.raises(TypeError) as caught:
        vantrel.fit(people, gender="sex", **given)
    assert str(caught.value) == message


def test_one_unique_attribute_is_a_list_too(people: pd.DataFrame) -> None:
    model = vantrel.fit(people, gender="sex", generate=["email"])
    with pytest.raises(TypeError) as caught:
        vantrel.sample(model, 3, seed=7, unique="email")
    assert str(caught.value) == "'unique' is a list of attributes: write unique=['email']."


def test_either_a_number_or_conditions(people: pd.DataFrame) -> None:
    model = vantrel.fit(people, gender="sex")
    for arguments in ({}, {"n": 1, "conditions": people}):
        with pytest.raises(ValueError) as caught:
            vantrel.sample(model, **arguments)  # type: ignore[arg-type]  # each of another type
        assert str(caught.value) == (
            "Give either 'n', a number of people, or 'conditions', a frame."
        )


def test_importing_the_package_loads_neither_pandas_nor_numpy() -> None:
    code = (
        "import sys, vantrel; print(sorted({'numpy', 'pandas'} & set(sys.modules)), dir(vantrel))"
    )
    out = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    assert out.stdout == (
        "[] ['__version__', 'fit', 'load', 'sample', 'save', 'seed_everything']\n"
    )


def test_an_unknown_name_of_the_package() -> None:
    with pytest.raises(AttributeError) as caught:
        vantrel.simple  # noqa: B018 - to read it is the test
    assert str(caught.value) == "module 'vantrel' has no attribute 'simple'"


def test_warnings_point_to_the_users_line(people: pd.DataFrame, tmp_path: Path) -> None:
    with pytest.warns(BorrowedNamesWarning) as caught:
        model = vantrel.fit(people.assign(land="NA"), gender="sex", country="land")
    assert caught[0].filename == __file__
    vantrel.save(model, tmp_path / "m.json")
    content = (tmp_path / "m.json").read_text().replace(version("faker"), "0.1")
    (tmp_path / "m.json").write_text(content)
    with pytest.warns(UserWarning) as caught:
        vantrel.load(tmp_path / "m.json")
    assert {warning.filename for warning in caught} == {__file__}
    assert OtherVersionsWarning in {warning.category for warning in caught}

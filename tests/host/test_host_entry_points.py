"""What someone who writes Python finds on the first screen."""

import subprocess
import sys
from collections.abc import Callable
from importlib.metadata import version
from importlib.util import find_spec
from pathlib import Path
from typing import Any

import pandas as pd
import pytest

import vantrel
import vantrel.errors
from vantrel.config import PersonModelConfig
from vantrel.errors import BorrowedNamesWarning, FittingError, OtherVersionsWarning
from vantrel.model.models.person import PersonModel


def test_fit_gives_a_model_that_samples(people: pd.DataFrame) -> None:
    before = people.copy()
    model = vantrel.fit(people, gender="sex", title="title", generate=["email"], detect=False)
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


def test_a_drawn_seed_is_logged_and_kept(
    people: pd.DataFrame, capsys: pytest.CaptureFixture[str], caplog: pytest.LogCaptureFixture
) -> None:
    model = vantrel.fit(people, gender="sex", generate=["firstname"])
    with caplog.at_level("INFO"):
        made = vantrel.sample(model, 100)
    assert capsys.readouterr() == ("", "")
    assert caplog.messages == [f"The seed is {made.attrs['seed']}."]
    again = vantrel.sample(model, 100, seed=made.attrs["seed"])
    pd.testing.assert_frame_equal(again, made)
    assert again.attrs == made.attrs


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
            "Column 'nothing' holds missing values only: leave 'gender' out.",
        ),
        (
            {"gender": "sex", "generate": ["title"]},
            "'title' must be learnt from a column: name it, as in title='COLUMN'.",
        ),
        (
            {"gender": "sex", "ignore": ["Land"]},
            "The table has no column 'Land' to ignore. Did you mean 'land'? Its columns are: 'land',"
            " 'surname', 'title', 'sex', 'nothing'.",
        ),
        ({"detect": False}, "Name a column to learn from, as in gender='COLUMN'."),
        (
            {"gender": "sex", "ignore": ["sex"]},
            "Column 'sex' is both named for 'gender' and ignored: leave one out.",
        ),
        (
            {"fullname": "surname", "generate": ["fullname"]},
            "'fullname' is both named and to be generated: a column that is named is generated"
            " anyway.",
        ),
    ],
)
def test_what_does_not_fit_the_table_is_named(
    arguments: dict[str, object], message: str, people: pd.DataFrame
) -> None:
    people["nothing"] = None
    with pytest.raises((vantrel.FittingError, vantrel.ArgumentError)) as caught:
        vantrel.fit(people, **arguments)  # type: ignore[arg-type]  # each of another type
    assert str(caught.value) == message


def test_an_attribute_that_is_none_is_refused_by_mypy_too(people: pd.DataFrame) -> None:
    with pytest.raises(vantrel.ArgumentError):
        vantrel.fit(people, gendre="sex")  # type: ignore[call-arg]  # or else mypy would tell
    with pytest.raises(vantrel.ArgumentError):
        vantrel.compare(people, people, gendre="sex")  # type: ignore[call-arg]  # likewise


def test_a_table_without_people() -> None:
    with pytest.raises(FittingError) as caught:
        vantrel.fit(pd.DataFrame({"price": ["1", "2"]}))
    assert str(caught.value) == (
        "No column of the table is found to be of a person by its name and values: name one, as in"
        " gender='COLUMN'. Its columns are: 'price'."
    )


def test_unknown_countries_are_named(people: pd.DataFrame) -> None:
    people["land"] = "Grmany"
    with pytest.raises(FittingError) as caught:
        vantrel.fit(people, country="land", show_values=True)
    assert str(caught.value) == (
        "Column 'land': 'Grmany' is neither a country nor a locale. Did you mean 'Germany'? Write a"
        " country as its ISO code, its English name or its name in its own language, a locale as"
        " 'en_GB'. Such rows: 50 of 50. Correct or empty these cells, or leave the column out:"
        " ignore=['land']."
    )


@pytest.mark.parametrize(
    ("table", "named"),
    [
        ("people.csv", "a str. Read a file first, as with pandas.read_csv."),
        ([1, 2], "a list."),
        ({"sex": ["m"]}, "a dict."),
        (pd.Series(["m"], name="sex"), "a Series."),
        (None, "None."),
    ],
)
def test_what_is_no_table(table: Any, named: str, people: pd.DataFrame) -> None:
    model = vantrel.fit(people, gender="sex")
    calls: dict[str, Callable[[], object]] = {
        "A table": lambda: vantrel.fit(table, gender="sex"),
        "A table of conditions": lambda: vantrel.sample(model, conditions=table),
        "A real table": lambda: vantrel.compare(table, people),
        "A sample": lambda: vantrel.compare(people, table),
    }
    if table is None:
        del calls["A table of conditions"]
    for what, call in calls.items():
        with pytest.raises(vantrel.ArgumentTypeError) as caught:
            call()
        assert str(caught.value) == (
            f"{what} is a pandas DataFrame, or of polars, DuckDB or pyarrow; this is {named}"
        )


@pytest.mark.parametrize(
    "call",
    [
        lambda model: vantrel.sample(model, 5),
        lambda model: vantrel.describe(model),
        lambda model: vantrel.save(model, "m.json"),
    ],
)
def test_what_is_no_model(call: Callable[[Any], object]) -> None:
    with pytest.raises(vantrel.ArgumentTypeError) as caught:
        call("m.json")
    assert str(caught.value) == (
        "A model is what vantrel.fit makes or vantrel.load reads; this is a str."
    )


@pytest.mark.parametrize(
    "call",
    [
        lambda model, path: vantrel.save(model, path),
        lambda model, path: vantrel.load(path),
    ],
)
@pytest.mark.parametrize(("path", "named"), [(None, "None"), (5, "an int"), (b"m.json", "a bytes")])
def test_what_is_no_path(
    call: Callable[[Any, Any], object], path: object, named: str, people: pd.DataFrame
) -> None:
    with pytest.raises(vantrel.ArgumentTypeError) as caught:
        call(vantrel.fit(people, gender="sex"), path)
    assert str(caught.value) == f"A path is a str or a pathlib.Path; this is {named}."


def test_a_model_and_its_path_the_wrong_way_round(people: pd.DataFrame) -> None:
    model: Any = vantrel.fit(people, gender="sex")
    path: Any = "m.json"
    with pytest.raises(vantrel.ArgumentTypeError, match="A model is what"):
        vantrel.save(path, model)


@pytest.mark.parametrize(
    ("config", "named"), [("large", "a str"), ({}, "a dict"), (PersonModelConfig, "a type")]
)
def test_what_is_no_configuration(config: Any, named: str, people: pd.DataFrame) -> None:
    with pytest.raises(vantrel.ArgumentTypeError) as caught:
        vantrel.fit(people, gender="sex", config=config)
    assert str(caught.value) == f"'config' is a vantrel.config.PersonModelConfig; this is {named}."


@pytest.mark.skipif(find_spec("pyarrow") is None, reason="Arrow tables need pyarrow")
def test_a_table_that_comes_by_arrow(people: pd.DataFrame) -> None:
    import pyarrow as pa

    class Stream:
        """Offers a table as polars and DuckDB do, and nothing else."""

        def __init__(self, table: Any) -> None:
            self.table = table

        def __arrow_c_stream__(self, requested_schema: object = None) -> object:
            return self.table.__arrow_c_stream__(requested_schema)

    def shares(table: Any) -> object:
        return vantrel.fit(table, generate=["email"]).to_dict()

    people["born"] = pd.Timestamp("2000-01-01")
    assert shares(Stream(pa.table(people))) == shares(people.astype(str))
    with pytest.raises(vantrel.ArgumentTypeError) as caught:
        vantrel.fit(Stream(pa.chunked_array([["m", "f"]])))
    assert str(caught.value) == (
        "A table is a pandas DataFrame, or of polars, DuckDB or pyarrow; this is a Stream."
    )


def test_columns_of_one_name(people: pd.DataFrame) -> None:
    with pytest.raises(vantrel.ArgumentError) as caught:
        vantrel.fit(people.set_axis(["sex", "a", "a", "sex"], axis=1), gender="sex")
    assert str(caught.value) == (
        "Columns are there twice: 'a', 'sex'. Give each one name of its own."
    )


@pytest.mark.parametrize(
    ("given", "message"),
    [
        ({"generate": "email"}, "'generate' is a list of attributes: write generate=['email']."),
        (
            {"generate": "email, username"},
            "'generate' is a list of attributes: write generate=['email', 'username'].",
        ),
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
            "Give either n=..., a number of people, or conditions=..., a table."
        )


def test_importing_the_package_loads_neither_pandas_nor_numpy() -> None:
    code = (
        "import sys, vantrel; print(sorted({'numpy', 'pandas'} & set(sys.modules)), dir(vantrel))"
    )
    out = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    assert out.stdout == f"[] {sorted([*vantrel.__all__, '__version__'])}\n"
    functions = ["compare", "describe", "fit", "load", "people", "replace", "sample", "save"]
    assert {*functions, "Replacer", "seed_everything"} == {*vantrel.__all__} - {
        *vantrel.errors.__all__
    }


def test_every_error_and_warning_is_found_in_the_package() -> None:
    made_here = {
        name
        for name, each in vars(vantrel.errors).items()
        if isinstance(each, type) and each.__module__ == "vantrel.errors"
    }
    assert made_here == set(vantrel.errors.__all__) <= set(vantrel.__all__)
    for name in made_here:
        roots = (vantrel.VantrelError, vantrel.VantrelWarning)
        assert issubclass(getattr(vantrel, name), roots)


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


def test_columns_of_several_levels(people: pd.DataFrame) -> None:
    people.columns = pd.MultiIndex.from_product([["a"], people.columns])
    with pytest.raises(vantrel.ArgumentError) as caught:
        vantrel.fit(people)
    assert str(caught.value) == (
        "A table has columns of 2 levels: give each one name, as in"
        " df.columns = df.columns.map('_'.join)."
    )


def test_a_format_of_a_number_is_not_endless(people: pd.DataFrame) -> None:
    config = PersonModelConfig(mobile_number_format="a" * 1_001)
    with pytest.raises(vantrel.ArgumentError) as caught:
        vantrel.fit(people, config=config)
    assert str(caught.value) == (
        "'mobile_number_format' has 1,001 characters, more than 1,000: shorten it."
    )


@pytest.mark.parametrize("type_name", ["string_view", "large_string"])
def test_texts_of_arrow(type_name: str, people: pd.DataFrame) -> None:
    pa = pytest.importorskip("pyarrow", reason="Arrow's types need pyarrow")
    texts = pd.ArrowDtype(getattr(pa, type_name)())
    model = vantrel.fit(people.astype(texts))
    assert (
        vantrel.sample(model, 20, seed=7)
        .astype(object)
        .equals(vantrel.sample(vantrel.fit(people), 20, seed=7).astype(object))
    )

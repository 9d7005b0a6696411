"""Finding the columns of a person in a table."""

from __future__ import annotations

import numpy as np
import pandas as pd
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

from support.column_names import ATTRIBUTES, NAMES, NOTHING, VALUES
from support.examples import EXAMPLES
from vantrel.config import PersonModelConfig
from vantrel.detection import Choice, Doubt, detect, detect_columns
from vantrel.tables import read_table


def frame(**columns: list[str]) -> pd.DataFrame:
    return pd.DataFrame(columns)


@pytest.mark.parametrize(
    ("attribute", "name"),
    [(attribute, name) for attribute, names in NAMES.items() for name in names],
)
def test_names_in_common_spellings(attribute: str, name: str) -> None:
    df = pd.DataFrame({"id": ["1", "2", "3"], name: VALUES[attribute]})
    assert detect_columns(df) == {attribute: name}


@pytest.mark.parametrize("attribute", [*VALUES])
@pytest.mark.parametrize(
    "name",
    [
        "weight", "notes", "price", "last_visit", "first_seen", "product", "address", "postcode",
        "zip", "birthday", "iban", "fax", "department", "amount", "has_password", "password_hash",
        "middle_name", "maiden name", "company", "user_id", "email_verified_at", "gender_count",
    ],
)  # fmt: skip
def test_names_that_say_nothing_of_a_person(name: str, attribute: str) -> None:
    if attribute in ("firstname", "lastname", "username", "password"):
        assert detect_columns(pd.DataFrame({name: VALUES[attribute]})) == {}
    assert detect_columns(pd.DataFrame({name: NOTHING})) == {}


@pytest.mark.parametrize(
    ("name", "values"),
    [
        ("company_name", ["Ann Lee", "Bo Ray"]),
        ("product_name", ["Blue Chair", "Red Table"]),
        ("mothers_name", ["Ann Lee", "Bo Ray"]),
        ("emergency_contact_phone", ["+44 7700 900124", "+44 7700 900125"]),
        ("spouse_first_name", ["Ann", "Bo"]),
        ("language", ["Germany", "France"]),
        ("vendor email", ["a@b.co", "c@d.co"]),
        ("domain_name", ["a.example", "b.example"]),
        ("last_login", ["yesterday", "today"]),
        ("password_hint", ["rosebud", "goldfish"]),
        ("first_name_initial", ["A", "B"]),
        ("username_source", ["intranet", "intranet"]),
    ],
)
def test_columns_of_others_are_not_taken(name: str, values: list[str]) -> None:
    assert detect_columns(pd.DataFrame({name: values})) == {}


@pytest.mark.parametrize("table", ["passengers", "respondents"])
def test_the_examples(table: str) -> None:
    expected = {
        "passengers": {
            "gender": "sex",
            "title": "title",
            "firstname": "first_name",
            "lastname": "last_name",
        },
        "respondents": {"gender": "gender", "country": "country"},
    }
    assert detect_columns(read_table(EXAMPLES / f"{table}.csv")) == expected[table]


@pytest.mark.parametrize("name", ["Land", "x"])
def test_countries_in_their_own_languages(name: str) -> None:
    df = pd.DataFrame({name: ["Deutschland", "Österreich", "Schweiz"]})
    assert detect_columns(df) == {"country": name}


def test_a_german_table() -> None:
    df = frame(
        Kundennummer=["1001", "1002"],
        Anrede=["Herr", "Frau"],
        Name=["Meier", "Kunz"],
        Vorname=["Max", "Eva"],
        Geburtsdatum=["1980-01-01", "1990-12-31"],
        Strasse=["Hauptstr. 1", "Weg 2"],
        Land=["DE", "AT"],
    )
    assert detect_columns(df) == {
        "title": "Anrede",
        "firstname": "Vorname",
        "lastname": "Name",
        "country": "Land",
    }


def test_the_attributes_come_in_the_order_of_the_labels() -> None:
    df = pd.DataFrame({f"{attribute}": VALUES[attribute] for attribute in reversed(ATTRIBUTES)})
    assert list(detect_columns(df).items()) == [(each, each) for each in ATTRIBUTES]


@pytest.mark.parametrize("attribute", ["gender", "title", "email", "country"])
def test_values_tell_without_a_name(attribute: str) -> None:
    df = frame(id=["1", "2", "3"], x=VALUES[attribute])
    assert detect(df).choices == [Choice(attribute, "x", "values")]


def test_phone_numbers_with_a_mark_tell_without_a_name() -> None:
    df = frame(x=["+44 20 7946 0018", "0044 1632 960001", "(020) 7946 0018"], y=["1234567"] * 3)
    assert detect(df).choices == [Choice("mobile_number", "x", "values")]


@pytest.mark.parametrize(
    "values",
    [
        ["CA", "AL", "DE"],  # states, though each is a country, too
        ["en", "de", "fr"],
        ["M", "M", "M"],
        ["S", "M", "L"],
        ["Dr", "Rev", "Prof"],
        ["2020-01-02", "2020-01-03", "2020-01-04"],
        ["0123456", "0123457", "0123458"],
        ["192.168.0.1", "10.0.0.1", "10.0.0.2"],
        ["Germany", "Germany", "Germany"],
        ["Germany", "France", "Berlin"],
        ["a@b", "c@d.example", "x"],
    ],
)
def test_values_that_could_be_anything_tell_nothing(values: list[str]) -> None:
    assert detect(frame(x=values)).choices == []


@pytest.mark.parametrize(("others", "found"), [(1, {"email": "x"}), (2, {})])
def test_nine_of_ten_values_tell(others: int, found: dict[str, str]) -> None:
    values = ["a@b.co"] * (10 - others) + ["none"] * others
    assert detect_columns(frame(x=values)) == found


@pytest.mark.parametrize(
    ("attribute", "name", "values", "told"),
    [
        ("title", "title", ["Manager", "Clerk", "Manager"], "Manager"),
        ("title", "Title", ["Casablanca", "Alien", "Dr"], "Casablanca"),
        ("gender", "genre", ["Jazz", "Rock", "Rock"], "Rock"),
        ("gender", "sex", ["1", "2", "2"], "2"),
        ("gender", "sexo", ["M", "H", "M"], "H"),
        ("gender", "sexe", ["H", "F", "F"], "H"),
        ("country", "nationality", ["German", "French", "French"], "French"),
        ("country", "Land", ["Bayern", "Sachsen", "DE"], "Bayern"),
        ("email", "mail", ["12 High Street", "Box 7", "a@b.co"], None),
        ("mobile_number", "mobile", ["yes", "no", "yes"], None),
        ("mobile_number", "Phone", ["12", "34567", "1234567890123456"], None),
        ("mobile_number", "Phone", ["iPhone 9", "Pixel", "Pixel"], None),
        ("home_number", "landline", ["yes", "no", "yes"], None),
        ("firstname", "first", ["1", "2", "3"], None),
        ("lastname", "last", ["2020-01-01", "2021-01-01", "2022-01-01"], None),
        ("fullname", "full_name", ["17", "18", "19"], None),
        ("username", "login", ["2020-01-01 10:00", "2021-01-01 11:00", "x y"], None),
        ("password", "pwd", ["y", "n", "y"], None),
    ],
)
def test_a_name_that_its_values_contradict(
    attribute: str, name: str, values: list[str], told: str | None
) -> None:
    found = detect(pd.DataFrame({name: values}))
    assert found.choices == []
    assert found.doubts == [Doubt(attribute, name, told)]


def test_no_doubt_where_another_column_is_found() -> None:
    found = detect(frame(title=["Manager", "Clerk"], salutation=["Mr", "Mrs"]))
    assert found.columns == {"title": "salutation"}
    assert found.doubts == []


def test_some_values_may_be_others() -> None:
    assert detect_columns(frame(sex=["m", "f", "unknown"], title=["Mr", "PhD", "Dr"])) == {
        "gender": "sex",
        "title": "title",
    }


def test_all_may_be_of_one_gender() -> None:
    assert detect_columns(frame(sex=["f", "f"])) == {"gender": "sex"}


def test_names_need_no_particular_values() -> None:
    df = frame(first_name=["Xæ", "山", "P007"], surname=["?", "Q", "Z-1"])
    assert detect_columns(df) == {"firstname": "first_name", "lastname": "surname"}


@pytest.mark.parametrize(
    ("others", "found"),
    [
        ({}, {}),
        ({"surname": ["Lee", "Ray"]}, {"firstname": "name", "lastname": "surname"}),
        ({"first_name": ["Ann", "Bo"]}, {"firstname": "first_name", "lastname": "name"}),
        (
            {"first": ["Ann", "Bo"], "last": ["Lee", "Ray"]},
            {"firstname": "first", "lastname": "last"},
        ),
    ],
)
def test_a_name_of_single_words_is_the_half_that_is_missing(
    others: dict[str, list[str]], found: dict[str, str]
) -> None:
    assert detect_columns(pd.DataFrame({"name": ["Kim", "Sam"], **others})) == found


@pytest.mark.parametrize(
    "values",
    [
        ["Acme Corp", "Smith Ltd", "Meier GmbH"],
        ["Ward 7", "Room 12b", "Bed 3"],
        ["Smith & Sons", "a/b", "7"],
        ["ann@example.org", "bo@example.org", "cy@example.org"],
    ],
)
def test_a_name_of_something_else_is_no_full_name(values: list[str]) -> None:
    assert "fullname" not in detect_columns(frame(name=values))


def test_names_in_both_orders_are_full_names() -> None:
    df = frame(name=["Lee, Ann", "Jean-Luc Picard", "María José d'Ávila", "René François Ó Móráin"])
    assert detect(df).choices == [Choice("fullname", "name", "name and values")]


def test_a_whole_name_is_better_than_a_part_and_that_than_values() -> None:
    df = frame(
        contact=["x@y.zz", "x@z.zz"],
        customer_email=["p@y.zz", "q@z.zz"],
        email=["a@y.zz", "b@z.zz"],
    )
    assert detect(df).choices == [Choice("email", "email", "name and values")]
    assert detect(df, ignored=["email"]).columns == {"email": "customer_email"}
    assert detect(df, ignored=["email", "customer_email"]).columns == {"email": "contact"}


def test_of_equal_names_the_one_that_is_more_agreed_with_is_better() -> None:
    df = frame(land=["DE", "Oz"], country=["DE", "FR"])
    assert detect_columns(df) == {"country": "country"}


def test_of_equals_the_first_is_taken() -> None:
    values = VALUES["email"]
    assert detect_columns(pd.DataFrame({"mail": values, "email": values})) == {"email": "mail"}
    assert detect_columns(pd.DataFrame({"email": values, "mail": values})) == {"email": "email"}


def test_telephones_of_no_kind_take_the_kinds_that_are_left() -> None:
    phones = VALUES["mobile_number"]
    df = pd.DataFrame({"phone": phones, "phone 2": phones, "cell": phones, "tel": phones})
    assert detect_columns(df) == {
        "mobile_number": "cell",
        "home_number": "phone",
        "work_number": "phone 2",
    }


def test_a_column_that_is_known_serves_nothing_else() -> None:
    df = frame(name=["Kim", "Sam"], sex=["m", "f"], x=["male", "female"])
    found = detect(df, known={"firstname": "sex"})
    assert found.columns == {"gender": "x", "lastname": "name"}


def test_an_attribute_that_is_known_is_not_found_again() -> None:
    df = frame(sex=["m", "f"], pronouns=["he/him", "she/her"], genre=["Jazz", "Rock"])
    found = detect(df, known={"gender": "pronouns"})
    assert found.choices == []
    assert found.doubts == []


def test_the_patterns_of_a_configuration_are_used() -> None:
    df = frame(sex=["1", "2", "2"])
    config = PersonModelConfig(gender_male_regex="^1$", gender_female_regex="^2$")
    assert detect(df, config).columns == {"gender": "sex"}


@pytest.mark.parametrize("nothing", [None, np.nan, pd.NA, pd.NaT, "", "  "])
def test_a_column_without_any_value_is_not_taken(nothing: object) -> None:
    df = pd.DataFrame(
        {"first_name": pd.Series([nothing, nothing], dtype=object), "sex": ["m", "f"]}
    )
    found = detect(df)
    assert found.columns == {"gender": "sex"}
    assert found.doubts == []


def test_missing_values_are_no_values() -> None:
    assert detect_columns(pd.DataFrame({"sex": [None, "m", None, "f", None, None]})) == {
        "gender": "sex"
    }


def test_only_the_first_ten_thousand_values_are_looked_at() -> None:
    jobs = ["Clerk"] * 15_000
    assert detect_columns(frame(title=["Mr", "Mrs"] * 2_500 + jobs)) == {"title": "title"}
    assert detect_columns(frame(title=["Mr", "Mrs"] * 2_499 + jobs)) == {}


def test_missing_values_do_not_count_among_the_first() -> None:
    values = [None] * 10_001 + ["m", "f"]
    assert detect_columns(pd.DataFrame({"sex": values})) == {"gender": "sex"}


@pytest.mark.parametrize("rows", [0, 1])
def test_tables_of_hardly_anything(rows: int) -> None:
    assert detect_columns(pd.DataFrame()) == {}
    df = frame(sex=["m"][:rows], email=["a@b.co"][:rows])
    assert detect_columns(df) == ({"gender": "sex", "email": "email"} if rows else {})


def test_columns_whose_names_are_no_text_or_not_unique_are_not_taken() -> None:
    df = pd.DataFrame([["m", "m", "f", "a@b.co"]], columns=[7, "sex", "sex", "email"])
    assert detect_columns(df) == {"email": "email"}


def test_values_of_other_types_are_judged_by_their_text() -> None:
    df = pd.DataFrame(
        {
            "phone": [447700900123, 447700900124],
            "gender": pd.Categorical(["m", "f"]),
            "email": [["a"], {"b": 1}],
            "title": [True, False],
        }
    )
    assert detect_columns(df) == {"gender": "gender", "mobile_number": "phone"}


def test_the_table_is_left_as_it_is() -> None:
    df = frame(sex=["m", "f"], name=["Ann Lee", "Bo Ray"])
    before = df.copy(deep=True)
    detect(df)
    pd.testing.assert_frame_equal(df, before)


def _words() -> st.SearchStrategy[str]:
    likely = [*NAMES["gender"], *NAMES["fullname"], *NAMES["mobile_number"], *NAMES["country"]]
    values = [value for each in VALUES.values() for value in each]
    return st.one_of(
        st.sampled_from([*likely, *values, *ATTRIBUTES]),
        st.text(max_size=12),
        st.text(alphabet=st.characters(), max_size=4),
    )


@st.composite
def _frames(draw: st.DrawFn) -> pd.DataFrame:
    names = draw(st.lists(_words(), max_size=6))
    rows = draw(st.integers(0, 5))
    cells = st.lists(st.one_of(st.none(), _words()), min_size=rows, max_size=rows)
    columns = [pd.Series(draw(cells), dtype=object) for _ in names]
    df = pd.concat(columns, axis="columns") if columns else pd.DataFrame(index=range(rows))
    df.columns = pd.Index(names, dtype=object)
    return df


@settings(max_examples=300)
@given(_frames())
def test_any_table_gives_each_attribute_a_column_of_its_own(df: pd.DataFrame) -> None:
    found = detect(df)
    columns = found.columns
    assert set(columns.values()) <= set(df.columns)
    assert len(set(columns.values())) == len(columns)
    assert list(columns) == [attribute for attribute in ATTRIBUTES if attribute in columns]
    assert all(df[column].notna().any() for column in columns.values())
    assert not {doubt.attribute for doubt in found.doubts} & set(columns)
    assert detect(df.copy()) == found


PEOPLE = ["Anna Schmidt", "Weber, Günter", "Maria de Souza", "John O'Brien"]


@pytest.mark.parametrize(
    "name", ["recipient", "Empfänger", "Kundenname", "ship_to", "Ansprechpartner", "destinataire"]
)
def test_somebody_who_is_named_in_full(name: str) -> None:
    (choice,) = detect(frame(id=["1", "2", "3", "4"], **{name: PEOPLE})).choices
    assert choice == Choice("fullname", name, "name and values")


@pytest.mark.parametrize("values", [["17", "18"], ["Acme Ltd", "Bolt GmbH"], ["C-1", "C-2"]])
def test_somebody_who_is_not_named(values: list[str]) -> None:
    assert detect_columns(frame(last_name=["Lee", "Ray"], customer=values)) == {
        "lastname": "last_name"
    }


def test_full_names_are_known_by_first_names_where_there_is_no_other_name() -> None:
    (choice,) = detect(frame(notes=PEOPLE)).choices
    assert choice == Choice("fullname", "notes", "values")
    with_names = frame(first_name=["A", "B", "C", "D"], notes=PEOPLE)
    assert detect_columns(with_names) == {"firstname": "first_name"}
    for values in (
        ["Blue Chair", "Red Table"],
        ["Weber GmbH", "Anna Ltd"],
        ["Anna", "Maria"],
        ["Anna Schmidt called", "John O'Brien approved the order"],
        ["Maria de Souza left", "Weber, Günter is away"],
    ):
        assert detect_columns(frame(notes=values)) == {}
    assert detect_columns(frame(referred_by=PEOPLE, mothers_name=PEOPLE)) == {
        "fullname": "referred_by"
    }

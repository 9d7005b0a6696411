"""People of one household who share a family name share the made-up one."""

from __future__ import annotations

from typing import Any

import numpy as np
import pandas as pd
import pytest

pytest.importorskip("pyarrow", reason="People are replaced by way of Arrow")

import pyarrow as pa
from faker import Faker

import vantrel
from support.replacing import SECRET, made_of
from vantrel.replacing.columns.of_person import OfPerson
from vantrel.replacing.columns.roles import find_roles
from vantrel.replacing.making.families import forms_of, stems
from vantrel.replacing.replacer import Replacer
from vantrel.replacing.values.names import folded, last_names


def households(names: list[tuple[str, str]], country: str = "GB", homes: int = 100) -> pd.DataFrame:
    """Households of as many people each as there are names, of men and of women by turns."""
    rows = [
        (home, sex, f"Q{sex}", last)
        for home in range(homes)
        for man, woman in names
        for sex, last in (("m", man), ("f", woman))
    ]
    table = pd.DataFrame(rows, columns=["home", "sex", "first_name", "last_name"])
    return table.assign(id=np.arange(len(rows)), country=country, email="q@q.org")


def replaced(table: pd.DataFrame, **asked: Any) -> pd.DataFrame:
    asked = {"key": "id", "household": "home"} | asked
    made: pd.DataFrame = vantrel.replace(table, secret=SECRET, **asked)
    return made


def test_families_of_a_household_share_a_name_and_others_do_not() -> None:
    table = households([("Qa", "qA"), ("Qb", "Qb")])
    made = replaced(table)
    families = made["last_name"].to_numpy().reshape(100, 2, 2)
    assert (families[:, :, 0] == families[:, :, 1]).all()
    assert (families[:, 0, 0] != families[:, 1, 0]).mean() > 0.95
    assert len(set(families[:, 0, 0])) > 50
    emails = made["email"].str.split(".").str[1]
    assert (emails == made["last_name"].str.lower().str.replace("'", "")).mean() > 0.9
    alone = replaced(table, household=None)
    assert made["first_name"].equals(alone["first_name"])
    assert (made["last_name"] == alone["last_name"]).mean() < 0.1


@pytest.mark.parametrize("gap", [None, "", " "])
def test_people_without_a_household_are_who_they_are_alone(gap: Any) -> None:
    table = households([("Qa", "Qa")], homes=10)
    some = table.assign(home=table["home"].astype(object))
    some.loc[:9, "home"] = gap
    pd.testing.assert_frame_equal(
        replaced(some).drop(columns="home").head(10),
        replaced(table, household=None).drop(columns="home").head(10),
    )


@pytest.mark.parametrize(
    ("country", "man", "woman"),
    [("CZ", "Qanák", "Qanáková"), ("CZ", "Qaský", "Qaská"), ("RU", "Курков", "Куркова")],
)
def test_names_have_the_form_of_each_ones_gender(country: str, man: str, woman: str) -> None:
    made = replaced(households([(man, woman)], country))
    men, women = (made.loc[made["sex"] == sex, "last_name"].tolist() for sex in "mf")
    locale = {"CZ": "cs_CZ", "RU": "ru_RU"}[country]
    known = Faker(locale).factories[0].last_name.__self__
    assert set(men) <= set(known.last_names_male)
    assert set(women) <= set(known.last_names_female)
    stemmed = [stems(folded(pa.array(each))).to_pylist() for each in (men, women)]
    assert stemmed[0] == stemmed[1]
    assert len(set(men)) > 30


def test_full_names_are_of_families_too() -> None:
    table = households([("Qanák", "Qanáková")], "CZ", homes=50)
    joined = table.assign(full_name=table["first_name"] + " " + table["last_name"])
    turned = table.assign(full_name=table["last_name"] + ", " + table["first_name"])
    expected = replaced(table)["last_name"].tolist()
    for each in (joined, turned):
        made = replaced(each.drop(columns=["first_name", "last_name"]))["full_name"]
        last = made.str.split(", ").str[0].str.split(" ").str[-1]
        assert last.tolist() == expected


def test_where_forms_are_not_known_each_gender_has_its_own() -> None:
    made = replaced(households([("Qанов", "Qанова"), ("Qанов", "Qанова")], "BG"))
    for sex in "mf":
        names = made.loc[made["sex"] == sex, "last_name"].to_numpy().reshape(100, 2)
        assert (names[:, 0] == names[:, 1]).all()
        assert len(set(names[:, 0])) > 15


@pytest.mark.parametrize(("country", "is_form_shared"), [("GB", True), ("CZ", False), ("CZ", True)])
def test_nobody_gets_her_own_name_and_families_still_share_theirs(
    country: str, is_form_shared: bool
) -> None:
    locale = {"GB": "en_GB", "CZ": "cs_CZ"}[country]
    known = Faker(locale).factories[0].last_name.__self__
    men = list(getattr(known, "last_names_male", None) or known.last_names)
    women = list(getattr(known, "last_names_female", None) or known.last_names)
    forms = list(forms_of(men, women).items())[:90]
    real = [(man, man) for man, _ in forms] if is_form_shared else forms
    table = households(real, country, homes=20)
    made = replaced(table)
    assert (made["last_name"] != table["last_name"]).all()
    prints = [last_names(stems(folded(pa.array(made["last_name"].iloc[at::2])))) for at in (0, 1)]
    assert (prints[0] == prints[1]).all()


def test_another_table_tells_the_household() -> None:
    table = households([("Qa", "Qa")], homes=20)
    letters = table[["id", "last_name"]]
    replacer = Replacer(SECRET)
    made = replacer.replace(table, "id", household="home")
    again = replacer.replace(letters, "id")
    assert again["last_name"].equals(made["last_name"])
    told = replaced(letters, household=None, people=table)
    assert not told["last_name"].equals(made["last_name"])


@pytest.mark.parametrize("rows", [1, 7])
def test_batches_do_not_matter(rows: int) -> None:
    table = households([("Qa", "Qa"), ("Qb", "Qc")], "CZ", homes=10)
    roles = find_roles(table, key="id", household="home")
    pd.testing.assert_frame_equal(
        made_of([table], [roles], rows)[0], made_of([table], [roles], 1_000)[0]
    )


def test_the_household_of_the_person_whose_name_it_bears() -> None:
    table = pd.DataFrame(
        {
            "buyer_last_name": ["Qa", "Qa"],
            "buyer_first_name": ["Qb", "Qc"],
            "seller_last_name": ["Qd", "Qd"],
            "seller_first_name": ["Qe", "Qf"],
            "home": [1, 1],
            "buyer_home": [1, 1],
        }
    )
    homes = [
        [person.household for person in find_roles(table, household=column).people]
        for column in ("home", "buyer_home")
    ]
    assert homes == [["home", "home"], ["buyer_home", ""]]
    people = [OfPerson(name, household="home") for name in ("buyer", "seller")]
    roles = find_roles(table, people=people, has_others=True)
    assert [person.household for person in roles.people] == ["home", "home"]
    assert "home" in roles.needed


def test_names_in_latin_letters_have_forms_too() -> None:
    names = replaced(households([("Курков", "Куркова")], "RU"), latin=True)["last_name"].tolist()
    assert [f"{man}a" for man in names[::2]] == names[1::2]


def test_columns_of_households_that_are_not_there() -> None:
    table = households([("Qa", "Qa")], homes=2)
    with pytest.raises(vantrel.ReplaceError) as caught:
        replaced(table, household="hom")
    assert str(caught.value) == (
        "The table has no column 'hom' for households. Did you mean 'home'? Its columns are:"
        " 'home', 'sex', 'first_name', 'last_name', 'id', 'country', 'email'."
    )
    with pytest.raises(vantrel.ArgumentTypeError) as wrong:
        replaced(table, household=["home"])
    assert str(wrong.value) == "A column is named by a text, not by ['home']."


def test_a_household_that_is_itself_replaced() -> None:
    table = households([("Qa", "Qa")], homes=2)
    with pytest.raises(vantrel.ReplaceError) as caught:
        replaced(table, household="last_name")
    assert str(caught.value) == (
        "The table: column 'last_name' is replaced, as lastname, and so cannot tell households: name"
        " one that stays."
    )
    people = [OfPerson("", ("id",), {"lastname": ("last_name",)}, household="last_name", place="Q")]
    with pytest.raises(
        vantrel.ReplaceError, match=r"^Q, household: column 'last_name' is replaced"
    ):
        find_roles(table, people=people)
    kept = find_roles(table, household="last_name", keep=["lastname"])
    assert [person.household for person in kept.people] == ["last_name"]


def test_forms_of_names() -> None:
    men = ["Novák", "Svoboda", "Novotný", "Němec", "Beránek", "Ivanov", "Kowalski", "Lee", "Dej"]
    women = ["Nováková", "Svobodová", "Novotná", "Němcová", "Beránková", "Ivanova", "Kowalska"]
    assert list(forms_of(men, [*women, "Lee"]).items()) == list(
        zip(men[:8], [*women, "Lee"], strict=True)
    )
    both = [stems(folded(pa.array(each))).to_pylist() for each in (men[:7], women)]
    assert both[0] == both[1]
    assert len(set(both[0])) == 7

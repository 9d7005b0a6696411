"""What tells the gender of a person: her rows, her title, or else her first name."""

from __future__ import annotations

import pandas as pd
import pytest

pytest.importorskip("pyarrow", reason="People are replaced by way of Arrow")

import vantrel
from support.replacing import SECRET
from vantrel.first_names import genders_of_first_names
from vantrel.replacing.replacer import Replacer


def test_first_names_contradict_no_gender_that_is_told() -> None:
    table = pd.DataFrame(
        {
            "id": [number + kind for number in range(0, 40, 2) for kind in (0, 0, 1, 1)],
            "sex": [None, "f", None, None] * 20,
            "first_name": ["Hans", "Hans", "Hans", "Anna"] * 20,
            "country": "DE",
        }
    )
    replacer = Replacer(SECRET)
    made = replacer.replace(table, key="id")["first_name"]
    assert not [note for note in replacer.notes if "contradict" in note]
    genders = made.str.lower().map(genders_of_first_names("de_DE"))
    assert set(genders[table["id"] % 2 == 0].dropna()) == {"F"}
    assert set(genders[table["id"] % 2 == 1].dropna()) == {"M"}


GENDERS = {"Hans": "M", "Anna-Lena": "F", "Andrea": "F", "Prof. Dr. Eva": "F", "Qx": None}


def test_a_first_name_tells_the_gender_where_nothing_else_does() -> None:
    table = pd.DataFrame({"full_name": [f"{name} Ott" for name in GENDERS], "country": "DE"})
    replacer = Replacer(SECRET)
    made = replacer.replace(pd.concat([table] * 40).assign(id=range(200)), key="id")
    known = genders_of_first_names("de_DE")
    first = made["full_name"].str.extract(r"^(?:Prof\. Dr\. )?(\S+)")[0].str.lower().map(known)
    for name, gender in zip(GENDERS, GENDERS.values(), strict=True):
        found = set(first[made.index == list(GENDERS).index(name)].dropna())
        assert found == ({"F", "M"} if gender is None else {gender})
    assert "The gender of 40 of 200 people is not known: they have names of any." in replacer.notes


@pytest.mark.parametrize("column", ["gender", "title"])
def test_titles_tell_genders_also_where_genders_are_looked_for(column: str) -> None:
    table = pd.DataFrame({"id": range(60), "first_name": "Qx", "anrede": ["Herr", "Frau Dr."] * 30})
    made = vantrel.replace(table, "id", SECRET, columns={column: "anrede"}, place="DE")[
        "first_name"
    ].str.lower()
    known = genders_of_first_names("de_DE")
    assert set(made[::2].map(known).dropna()) == {"M"}
    assert set(made[1::2].map(known).dropna()) == {"F"}


@pytest.mark.parametrize(("country", "gender"), [("IT", "M"), ("DE", "F")])
def test_a_first_name_tells_what_it_tells_in_its_country(country: str, gender: str) -> None:
    table = pd.DataFrame({"id": range(40), "first_name": "Gabriele", "country": country})
    made = vantrel.replace(table, "id", SECRET)["first_name"].str.lower()
    known = genders_of_first_names(f"{country.lower()}_{country}")
    assert set(made.map(known).dropna()) == {gender}

"""Whether whole names are those of the people of the same rows."""

from __future__ import annotations

from collections.abc import Sequence

import pandas as pd
import pytest

from vantrel.detection import detect_columns
from vantrel.detection.whose import are_of_others

FIRST = ["Mareike", "Jörg", "Anna Maria"]
LAST = ["Weiß", "Müller", "Łukasz"]
OWN = [("vorname", "nachname")]


def table(**more: Sequence[str | None]) -> pd.DataFrame:
    return pd.DataFrame({"vorname": FIRST, "nachname": LAST, **more}, dtype=object)


@pytest.mark.parametrize(
    ("names", "of_others"),
    [
        (["Mareike Weiß", "Jörg Müller", "Anna Maria Łukasz"], False),
        (["WEISS, MAREIKE", "Muller, Jorg", "Łukasz, Anna"], False),
        (["M. Weiß", "Dr. Jörg Karl Müller", None], False),
        (["Jürgen Weiß", "Heike Müller", "Anna Maria Łukasz"], True),
        (["Bauer, Susanne", "Thomas Bauer", "Peter Krüger"], True),
        ([None, None, None], False),
    ],
)
def test_names_of_the_people_of_the_rows(names: Sequence[str | None], *, of_others: bool) -> None:
    assert are_of_others(table(names=names), "names", OWN) is of_others


def test_names_that_agree_with_any_of_several() -> None:
    df = table(whole=["Uwe Groß"] * 3, names=["Uwe Groß"] * 3)
    assert are_of_others(df, "names", OWN)
    assert not are_of_others(df, "names", [*OWN, ("whole",)])


def test_names_as_categories() -> None:
    names = ["Uwe Groß", None, "Uwe Groß"]
    assert are_of_others(table(names=names).astype("category"), "names", OWN)


def test_names_in_one_word() -> None:
    df = pd.DataFrame({"vorname": ["芳", "伟"], "nachname": ["王", "李"], "x": ["王芳", "李伟"]})
    assert not are_of_others(df, "x", OWN)
    assert are_of_others(df.assign(x=["李伟", "王芳"]), "x", OWN)


def test_names_that_were_moved_up_tell_nothing() -> None:
    moved = ["Jörg Müller", "Anna Maria Łukasz", None]
    assert not are_of_others(table(names=moved), "names", OWN)
    assert are_of_others(table(names=["Uwe Groß", None, "Uwe Groß"]), "names", OWN)


def test_full_names_of_others_are_not_taken_beside_first_and_last_names() -> None:
    clerks = ["Bauer, Susanne", "Groß, Uwe", "Krüger, Peter"]
    own = ["Weiß, Mareike", "Müller, Jörg", "Łukasz, Anna Maria"]
    halves = {"firstname": "vorname", "lastname": "nachname"}
    assert detect_columns(table(sachbearbeiter=clerks)) == halves
    assert detect_columns(table(sachbearbeiter=clerks, kontoinhaber=own)) == {
        **halves,
        "fullname": "kontoinhaber",
    }
    assert detect_columns(table(full_name=clerks)) == {**halves, "fullname": "full_name"}
    assert detect_columns(table(sachbearbeiter=clerks)[["vorname", "sachbearbeiter"]]) == {
        "firstname": "vorname",
        "fullname": "sachbearbeiter",
    }

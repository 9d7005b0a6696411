"""What is asked of other columns, and what of it is refused."""

from __future__ import annotations

from typing import Any

import pandas as pd
import pytest

pytest.importorskip("pyarrow", reason="People are replaced by way of Arrow")

import vantrel
from support.replacing import SECRET, customers
from vantrel.errors import ArgumentTypeError, ReplaceError
from vantrel.replacing.others.action import Action, read_action

ACTIONS = "Actions are: keep, blank, fake:PROVIDER, shift:DAYS, hash."
DAYS = "Column 'c': shift is followed by a whole number of days from 1 to 3650, as in 'shift:180'"
DOCUMENTED = (
    "Those of its documentation that need no arguments will do, as in 'fake:street_address'."
)


@pytest.mark.parametrize(
    ("text", "action"),
    [
        ("keep", Action("keep")),
        ("blank", Action("blank")),
        ("hash", Action("hash")),
        ("fake:iban", Action("fake", provider="iban")),
        ("shift:1", Action("shift", days=1)),
        ("shift:3650:MM/DD/YYYY", Action("shift", days=3650, form="MM/DD/YYYY")),
    ],
)
def test_an_action_is_written_as_it_is_read(text: str, action: Action) -> None:
    assert read_action(text, "c") == action
    assert str(action) == text


@pytest.mark.parametrize(
    ("text", "message"),
    [
        ("", f"Column 'c': '' is no action. {ACTIONS}"),
        ("hsh", f"Column 'c': 'hsh' is no action. Did you mean 'hash'? {ACTIONS}"),
        ("hash:7", "Column 'c': hash has nothing behind it: write 'hash'."),
        ("blank:", "Column 'c': blank has nothing behind it: write 'blank'."),
        ("shift", f"{DAYS}, not by ''."),
        ("shift:0", f"{DAYS}, not by '0'."),
        ("shift:3651", f"{DAYS}, not by '3651'."),
        ("shift:-5", f"{DAYS}, not by '-5'."),
        ("shift:1.5", f"{DAYS}, not by '1.5'."),
        (
            "shift:9:DD.MM.YYY",
            "Column 'c': 'DD.MM.YYY' is no form of dates. Did you mean 'DD.MM.YYYY'? Forms are:"
            " 'YYYY-MM-DD', 'DD.MM.YYYY', 'DD/MM/YYYY', 'MM/DD/YYYY', 'YYYY/MM/DD', 'YYYYMMDD'.",
        ),
        ("fake", f"Column 'c': Faker has no method ''. {DOCUMENTED}"),
        (
            "fake:street_adress",
            "Column 'c': Faker has no method 'street_adress'. Did you mean 'street_address'?"
            f" {DOCUMENTED}",
        ),
        ("fake:__init__", f"Column 'c': Faker has no method '__init__'. {DOCUMENTED}"),
        ("fake:enum", "Column 'c': Faker's method 'enum' needs arguments: name another one."),
        (
            "fake:profile",
            "Column 'c': Faker's method 'profile' gives no text, number or date, but dict: name"
            " another one.",
        ),
        (
            "fake:words",
            "Column 'c': Faker's method 'words' gives no text, number or date, but list: name"
            " another one.",
        ),
        (
            "fake:binary",
            "Column 'c': Faker's method 'binary' gives no text, number or date, but bytes: name"
            " another one.",
        ),
        (
            "fake:boolean",
            "Column 'c': Faker's method 'boolean' gives no text, number or date, but bool: name"
            " another one.",
        ),
        (
            "fake:color",
            "Column 'c': Faker's method 'color' gives another value each time: name another one.",
        ),
        (
            "fake:date_time",
            "Column 'c': Faker's method 'date_time' goes by the time at which it is called, so that"
            " a person would have several values: name another one.",
        ),
    ],
)
def test_wrong_actions(text: str, message: str) -> None:
    with pytest.raises(ReplaceError) as caught:
        read_action(text, "c")
    assert str(caught.value) == message


@pytest.mark.parametrize(
    ("others", "options", "message"),
    [
        (
            {"notee": "blank"},
            {},
            "The table has no column 'notee' to change. Did you mean 'note'? Its columns are:"
            " 'customer_id', 'sex', 'first_name', 'last_name', 'email', 'username', 'password',"
            " 'mobile', 'country', 'note'.",
        ),
        (
            {"email": "hash"},
            {},
            "Column 'email' is replaced, as email: it has no action besides. Without"
            " others={'email': 'hash'} it is replaced; keep=['email'] keeps it.",
        ),
        (
            {"email": "hash"},
            {"keep": ["email"]},
            "Column 'email' is kept, as email, and 'hash' would change it: take one of the two.",
        ),
        (
            {"country": "fake:country"},
            {},
            "Column 'country' tells the country of people, which made-up ones have, too: keep or"
            " blank it.",
        ),
        (
            {"note": "blank"},
            {"scrub": ["note"]},
            "Column 'note' is to be scrubbed, and 'blank' decides about it, too: take one of the"
            " two.",
        ),
    ],
)
def test_what_contradicts(others: dict[str, str], options: dict[str, Any], message: str) -> None:
    with pytest.raises(ReplaceError) as caught:
        vantrel.replace(customers(20), "customer_id", SECRET, others=others, **options)
    assert str(caught.value) == message


@pytest.mark.parametrize(
    ("others", "message"),
    [
        (
            "note",
            "The actions of other columns are a dictionary, as in others={'notes': 'blank'}, not a"
            " str.",
        ),
        ({"note": None}, "The action of column 'note' is a text such as 'hash', not None."),
    ],
)
def test_arguments_of_another_type(others: Any, message: str) -> None:
    with pytest.raises(ArgumentTypeError) as caught:
        vantrel.replace(customers(20), "customer_id", SECRET, others=others)
    assert str(caught.value) == message


def test_what_agrees() -> None:
    others = {"email": "keep", "country": "blank", "sex": "hash", "customer_id": "hash"}
    made = vantrel.replace(
        customers(20), "customer_id", SECRET, others=others, keep=["email"], scrub=["note"]
    )
    real = customers(20)
    plain = vantrel.replace(real, "customer_id", SECRET, keep=["email"])
    assert made["country"].isna().all()
    pd.testing.assert_series_equal(made["email"], real["email"])
    replaced = ["first_name", "last_name", "username", "mobile"]
    pd.testing.assert_frame_equal(made[replaced], plain[replaced])  # the key decided before

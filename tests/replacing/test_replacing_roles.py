"""What is asked of a table, and what is found in it."""

from __future__ import annotations

from typing import Any

import pandas as pd
import pytest

pytest.importorskip("pyarrow", reason="People are replaced by way of Arrow")

import vantrel
from support.replacing import SECRET, customers
from vantrel.replacing.columns.roles import find_roles
from vantrel.replacing.replacer import Replacer

COLUMNS = (
    "'customer_id', 'sex', 'first_name', 'last_name', 'email', 'username', 'password', 'mobile',"
    " 'country', 'note'"
)


@pytest.fixture(scope="module")
def table() -> pd.DataFrame:
    return customers(20)


def test_roles_are_found(table: pd.DataFrame) -> None:
    roles = find_roles(table, key=["customer_id", "email"])
    (person,) = roles.people
    assert person.key == ("customer_id", "email")
    assert person.is_key_named
    assert person.name == ""
    assert roles.replaced == {
        "first_name": "firstname",
        "last_name": "lastname",
        "email": "email",
        "username": "username",
        "password": "password",
        "mobile": "mobile_number",
    }
    assert person.columns["gender"] == ("sex",)
    assert roles.needed[:2] == ("customer_id", "email")
    assert len(set(roles.needed)) == len(roles.needed)


@pytest.mark.parametrize(
    ("left_out", "key"),
    [
        ([], ("email",)),
        (["email"], ("first_name", "last_name")),
        (["email", "last_name"], ()),
    ],
)
def test_keys_that_are_not_named(table: pd.DataFrame, left_out: list[str], key: tuple[str]) -> None:
    (person,) = find_roles(table.drop(columns=left_out)).people
    assert person.key == key
    assert not person.is_key_named


@pytest.mark.parametrize("email", ["contact_email", "managers_email"])
def test_an_address_that_is_called_after_others_is_no_key_beside_names(
    table: pd.DataFrame, email: str
) -> None:
    table = table.rename(columns={"email": email})
    keys = {"username": ("first_name", "last_name"), "last_name": (email,)}
    for left_out, key in keys.items():
        (person,) = find_roles(table.drop(columns=left_out)).people
        assert person.columns["email"] == (email,)
        assert person.key == key


def test_the_full_name_is_a_key(table: pd.DataFrame) -> None:
    names = table[["note"]].assign(full_name=[f"Qa{number} Qb" for number in range(20)])
    assert find_roles(names).people[0].key == ("full_name",)


@pytest.mark.parametrize(
    ("asked", "error", "message"),
    [
        (
            {"key": "custmer_id"},
            vantrel.ReplaceError,
            "The table has no column 'custmer_id' for the key. Did you mean 'customer_id'? Its"
            f" columns are: {COLUMNS}.",
        ),
        (
            {"key": ["customer_id", "tenant"]},
            vantrel.ReplaceError,
            f"The table has no column 'tenant' for the key. Its columns are: {COLUMNS}.",
        ),
        (
            {"columns": {"email": ["email", "mail"]}},
            vantrel.ReplaceError,
            f"The table has no column 'mail' for 'email'. Did you mean 'email'? Its columns are:"
            f" {COLUMNS}.",
        ),
        (
            {"columns": {"firstname": "note", "lastname": ["last_name", "note"]}},
            vantrel.ReplaceError,
            "The table: column 'note' is given to 'firstname' and 'lastname': a column holds one"
            " attribute.",
        ),
        (
            {"columns": {"surname": "note"}},
            vantrel.ArgumentError,
            "'surname' is no attribute of a person. Did you mean 'username'? Known are: gender,"
            " title, firstname, lastname, fullname, email, username, password, mobile_number,"
            " home_number, work_number, country.",
        ),
        (
            {"keep": ["e-mail"]},
            vantrel.ArgumentError,
            "'e-mail' is no attribute of a person. Did you mean 'email'? Known are: gender, title,"
            " firstname, lastname, fullname, email, username, password, mobile_number, home_number,"
            " work_number, country.",
        ),
        (
            {"keep": "email"},
            vantrel.ArgumentTypeError,
            "'keep' is a list of attributes: write keep=['email'].",
        ),
        (
            {"scrub": "note"},
            vantrel.ArgumentTypeError,
            "'scrub' is a list of columns: write scrub=['note'].",
        ),
        (
            {"scrub": ["notes"]},
            vantrel.ReplaceError,
            "The table has no column 'notes' to scrub. Did you mean 'note'? Its columns are:"
            f" {COLUMNS}.",
        ),
        (
            {"scrub": ["email"]},
            vantrel.ReplaceError,
            "Column 'email' is replaced whole, as email: it need not be scrubbed.",
        ),
        (
            {"key": [3]},
            vantrel.ArgumentTypeError,
            "A column is named by a text, not by 3.",
        ),
    ],
    ids=lambda value: str(value)[:40],
)
def test_what_is_asked_and_cannot_be(
    table: pd.DataFrame, asked: dict[str, Any], error: type[Exception], message: str
) -> None:
    with pytest.raises(error) as caught:
        vantrel.replace(table, secret=SECRET, **asked)
    assert str(caught.value) == message


def test_nothing_to_replace(table: pd.DataFrame) -> None:
    kinds = ["firstname", "lastname", "email", "username", "password", "mobile_number"]
    with pytest.raises(vantrel.ReplaceError) as caught:
        vantrel.replace(table.assign(middle=1, e_mail=5)[["note", "e_mail"]], secret=SECRET)
    assert str(caught.value) == (
        "The table has no column to replace that is found by its name and values: name one, as in"
        " columns={'lastname': 'COLUMN'}. Column 'e_mail' is not taken for email: its values do not"
        " look so. Its columns are: 'note', 'e_mail'."
    )
    with pytest.raises(vantrel.ReplaceError) as caught:
        vantrel.replace(table, secret=SECRET, keep=kinds)
    assert str(caught.value) == (
        "The table has no column to replace that is found by its name and values: name one, as in"
        " columns={'lastname': 'COLUMN'}. Kept as they are: email, firstname, lastname,"
        f" mobile_number, password, username. Its columns are: {COLUMNS}."
    )


@pytest.mark.parametrize("missing", [None, "", float("nan")])
def test_a_key_that_is_wholly_missing(table: pd.DataFrame, missing: Any) -> None:
    with pytest.raises(vantrel.ReplaceError) as caught:
        vantrel.replace(table.assign(customer_id=missing), "customer_id", SECRET)
    assert str(caught.value) == (
        "In table 1 the key 'customer_id' is missing in every row: name another one, or none."
    )


def test_people_without_the_key_of_the_table(table: pd.DataFrame) -> None:
    with pytest.raises(vantrel.ReplaceError) as caught:
        vantrel.replace(table, "customer_id", SECRET, people=table[["sex"]])
    assert str(caught.value) == (
        "The table of people has no column 'customer_id' for the key: name its own, as in"
        " people_key='COLUMN'. Its columns are: 'sex'."
    )


def test_a_secret_that_is_none() -> None:
    with pytest.raises(vantrel.ArgumentTypeError) as wrong:
        Replacer("secret")  # type: ignore[arg-type]  # is what it is about
    assert str(wrong.value) == (
        "A secret is bytes, such as secrets.token_bytes(32) gives; this is a str."
    )
    for secret in (b"short", b"x" * 65):
        with pytest.raises(vantrel.SecretError) as caught:
            Replacer(secret)
        assert str(caught.value) == (
            f"A secret has 16 to 64 bytes, not {len(secret)}: take secrets.token_bytes(32), and keep"
            " it."
        )

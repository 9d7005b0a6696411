"""Which people the names of columns tell apart."""

from __future__ import annotations

import pytest

from vantrel.detection.groups import (
    groups_of,
    is_of_somebody_else,
    owner_of,
    people_beside,
    without_label,
)

TOLD_APART = [
    (
        "buyer_first_name BuyerEmail dob_buyer seller_name sellerEmail SELLER-ID total",
        {
            "buyer": {"buyer_first_name": "first_name", "BuyerEmail": "email", "dob_buyer": "dob"},
            "seller": {"seller_name": "name", "sellerEmail": "email", "SELLER-ID": "id"},
        },
    ),
    (
        "id first_name last_name emergency_contact_name emergency_contact_phone ward",
        {
            "": {each: each for each in ("id", "first_name", "last_name", "ward")},
            "emergency_contact": {
                "emergency_contact_name": "name",
                "emergency_contact_phone": "phone",
            },
        },
    ),
    (
        "vorname nachname Sachbearbeiter vertreter_name",
        {
            "": {"vorname": "vorname", "nachname": "nachname"},
            "sachbearbeiter": {"Sachbearbeiter": "Sachbearbeiter"},
            "vertreter": {"vertreter_name": "name"},
        },
    ),
    ("name contact_name", {"": {"name": "name"}, "contact": {"contact_name": "name"}}),
    ("käufer verkäufer", {"kaufer": {"käufer": "käufer"}, "verkaufer": {"verkäufer": "verkäufer"}}),
    (
        "buyer_email seller_email",
        {"buyer": {"buyer_email": "email"}, "seller": {"seller_email": "email"}},
    ),
    (
        "driver1_name driver2_name driver2_licence",
        {
            "driver_1": {"driver1_name": "name"},
            "driver_2": {"driver2_name": "name", "driver2_licence": "licence"},
        },
    ),
    (
        "buyer_name buyer_home_email seller_name seller_home_email",
        {
            "buyer": {"buyer_name": "name", "buyer_home_email": "home_email"},
            "seller": {"seller_name": "name", "seller_home_email": "home_email"},
        },
    ),
    (
        "owner_name co_owner_name driver_name driver_2_name",
        {
            "owner": {"owner_name": "name"},
            "co_owner": {"co_owner_name": "name"},
            "driver": {"driver_name": "name"},
            "driver_2": {"driver_2_name": "name"},
        },
    ),
    (
        "customer_name customer_email user_name user_email",
        {
            "customer": {"customer_name": "name", "customer_email": "email"},
            "user": {"user_name": "user_name", "user_email": "email"},
        },
    ),
    (
        "vendors_name brokers_name landlords_name",
        {
            "brokers": {"brokers_name": "name"},
            "landlords": {"landlords_name": "name"},
        },
    ),
    (
        "kaeufer_vorname verkaeufer_vorname",
        {
            "kaeufer": {"kaeufer_vorname": "vorname"},
            "verkaeufer": {"verkaeufer_vorname": "vorname"},
        },
    ),
    (
        "acheteur_nom vendeur_nom",
        {"acheteur": {"acheteur_nom": "nom"}, "vendeur": {"vendeur_nom": "nom"}},
    ),
]

TOGETHER = [
    "id first_name last_name email",
    "customer_id customer_first_name customer_last_name customer_email",
    "full_name contact_email",
    "name contact_phone",
    "first_name last_name customer_name",
    "email billing_email",
    "work_phone home_phone mobile_phone name",
    "legal_name display_name",
    "first_name first_name_2",
    "company_name product_name name",
    "birth_name maiden_name first_name last_name",
    "customer_first_name customer_last_name customer_home_email customer_work_email",
    "customer_id customer_home_email customer_work_email",
    "customer_first_name customer_last_name customer_display_name customer_legal_name",
    "customer_name customer_company_name customer_street_name customer_city_name",
    "",
]


@pytest.mark.parametrize(("columns", "groups"), TOLD_APART)
def test_people_whom_names_tell_apart(columns: str, groups: dict[str, dict[str, str]]) -> None:
    assert groups_of(columns.split()) == groups


@pytest.mark.parametrize("columns", TOGETHER)
def test_names_that_tell_nobody_apart(columns: str) -> None:
    assert groups_of(columns.split()) == {}


def test_names_that_are_no_texts_are_nobodys() -> None:
    assert groups_of([1, None, ("buyer_name",)]) == {}
    assert groups_of(["buyer_name", 1, "seller_name", "имя"]) == {
        "buyer": {"buyer_name": "name"},
        "seller": {"seller_name": "name"},
    }


@pytest.mark.parametrize(
    ("column", "owner"),
    [
        ("contactName", "contact"),
        ("contact_person_name", "contact_person"),
        ("name_contact", "contact"),
        ("contact", "contact"),
        ("contacts_name", ""),
        ("name", ""),
    ],
)
def test_the_owner_of_a_column(column: str, owner: str) -> None:
    assert owner_of(column, ["", "contact", "contact_person"]) == owner


def test_what_is_left_of_a_name() -> None:
    assert without_label("buyer_first_name", "buyer") == "first_name"
    assert without_label("Buyer", "buyer") == "Buyer"
    assert without_label("name", "buyer") == "name"
    assert without_label("name", "") == "name"


@pytest.mark.parametrize(
    ("column", "is_of_another"),
    [
        ("agent_email", True),
        ("contact", True),
        ("contact_number", False),
        ("customer_email", False),
        ("seller_email", False),
        ("broker_email", False),
        ("billing_email", False),
    ],
)
def test_columns_of_somebody_who_is_not_there(column: str, is_of_another: bool) -> None:
    assert is_of_somebody_else(column, ["", "seller", "broker"]) == is_of_another


@pytest.mark.parametrize(
    ("attributes", "groups"),
    [
        (
            {"p2_first_name": "firstname", "P2 Email": "email", "email": "email"},
            [("p2_first_name", "P2 Email")],
        ),
        ({"toName": "fullname", "toPhone": "mobile_number"}, [("toName", "toPhone")]),
        (
            {"first_name_2": "firstname", "last_name_2": "lastname", "email_3": "email"},
            [("first_name_2", "last_name_2")],
        ),
        (
            {"a_name": "fullname", "b_name": "fullname", "b_mail": "email", "a_tel": "home_number"},
            [("a_name", "a_tel"), ("b_name", "b_mail")],
        ),
        ({"email_2": "email", "phone_2": "mobile_number"}, []),
        ({"p2_name": "fullname", "p3_email": "email", "billing": "email"}, []),
        ({"p2_name": "fullname", "p2_full_name": "fullname"}, []),
        ({}, []),
    ],
)
def test_people_who_are_called_nothing_known(
    attributes: dict[str, str], groups: list[tuple[str, ...]]
) -> None:
    assert people_beside(attributes) == groups

"""Several people in a row: each is who she would be in a table of her own."""

from __future__ import annotations

from typing import Any

import pandas as pd
import pytest

pytest.importorskip("pyarrow", reason="People are replaced by way of Arrow")

import pyarrow as pa

import vantrel
from support.replacing import SECRET, customers, made_of
from vantrel.replacing.columns.of_person import OfPerson
from vantrel.replacing.columns.roles import find_roles
from vantrel.replacing.people.people import People
from vantrel.replacing.replacer import Replacer

PARTS = ["first_name", "last_name", "email", "mobile"]
KEYS = {"buyer": "buyer_id", "seller": "seller_id"}


@pytest.fixture(scope="module")
def users() -> pd.DataFrame:
    return customers(60).rename(columns={"customer_id": "id"})


@pytest.fixture(scope="module")
def orders(users: pd.DataFrame) -> pd.DataFrame:
    """Buyers and sellers, who tell their gender and country themselves; some buy what they sell."""
    columns = {"id": "id", "sex": "sex", "country": "country", **{each: each for each in PARTS}}
    buyers = users.sample(200, replace=True, random_state=1)[list(columns)].reset_index(drop=True)
    sellers = users.sample(200, replace=True, random_state=2)[list(columns)].reset_index(drop=True)
    both = [buyers.add_prefix("buyer_"), sellers.add_prefix("seller_")]
    return pd.concat([*both, pd.Series(range(200), name="order")], axis="columns")


def made_in_batches(table: pd.DataFrame, rows: int, key: Any = KEYS) -> pd.DataFrame:
    return made_of([table], [find_roles(table, key=key)], rows)[0]


def test_each_is_who_she_is_in_a_table_of_her_own(orders: pd.DataFrame) -> None:
    both = vantrel.replace(orders, KEYS, SECRET)
    for name, key in KEYS.items():
        own = [column for column in map(str, orders) if column.startswith(name)]
        alone = vantrel.replace(orders[own], key, SECRET)
        pd.testing.assert_frame_equal(both[own], alone)
        assert (both[own] != orders[own]).any().sum() == len(PARTS)
    assert both["order"].equals(orders["order"])


def test_equal_keys_are_one_person_wherever_they_stand(
    users: pd.DataFrame, orders: pd.DataFrame
) -> None:
    known = vantrel.replace(users, "id", SECRET).set_index("id")
    told = [f"{name}_{each}" for name in KEYS for each in ("sex", "country")]
    bare = orders.drop(columns=told)
    replacer = Replacer(SECRET)
    replacer.replace(users, "id")
    made = replacer.replace(bare, KEYS)
    for name, key in KEYS.items():
        for part in PARTS:
            expected = known[part].loc[orders[key]].tolist()
            assert made[f"{name}_{part}"].tolist() == expected
    assert replacer.report is not None
    assert replacer.report.people == 60


@pytest.mark.parametrize("rows", [1, 7, 1_000])
def test_batches_do_not_matter_even_where_rows_contradict(orders: pd.DataFrame, rows: int) -> None:
    odd = orders.assign(seller_country=orders["buyer_country"], seller_sex=orders["buyer_sex"])
    few = odd.head(80)
    pd.testing.assert_frame_equal(made_in_batches(few, rows), made_in_batches(few, 13))


def test_the_kind_of_a_key_tells_people_apart(orders: pd.DataFrame) -> None:
    def of(buyer: str, seller: str) -> pd.DataFrame:
        people = [
            OfPerson(name, (f"{name}_id",), {"email": (f"{name}_email",)}, of=kind)
            for name, kind in (("buyer", buyer), ("seller", seller))
        ]
        return made_of([orders], [find_roles(orders, people=people)])[0]

    plain, same, other = of("", ""), of("user", "user"), of("user", "shop")
    assert (
        plain["buyer_email"].tolist()
        == made_in_batches(orders[["buyer_id", "buyer_email"]], 100, "buyer_id")[
            "buyer_email"
        ].tolist()
    )
    assert not set(plain["buyer_email"]) & set(same["buyer_email"])
    assert same["buyer_email"].equals(other["buyer_email"])
    assert set(same["buyer_email"]) & set(same["seller_email"])
    assert not set(other["buyer_email"]) & set(other["seller_email"])


def test_a_kind_never_makes_the_key_of_another(orders: pd.DataFrame) -> None:
    kinds = ["", "a", "ab", "b"]
    keys = ["b7", "7", "a7", "ab7", "\0of1:a1:7:"]
    people = People(SECRET)
    made = set()
    for kind in kinds:
        table = pd.DataFrame({"id": keys, "email": "x@y.org"})
        roles = find_roles(table, people=[OfPerson("", ("id",), {"email": ("email",)}, of=kind)])
        batch = pa.RecordBatch.from_pandas(table)
        people.learn(batch, roles, kind)
        people.settle()
        made |= set(people.replaced(batch, roles).columns["email"].to_pylist())
    assert len(made) == len(kinds) * len(keys)


def test_keys_go_to_whom_their_name_tells(orders: pd.DataFrame) -> None:
    def keys(key: Any, more: Any = ()) -> list[tuple[str, ...]]:
        return [person.key for person in find_roles(orders, key=key, more_keys=more).people]

    assert keys("seller_id") == [("buyer_email",), ("seller_id",)]
    assert keys("order") == [("order",), ("seller_email",)]
    assert keys(["buyer_id", "order"]) == [("buyer_id", "order"), ("seller_email",)]
    assert keys("buyer_id", ["seller_id"]) == keys(KEYS) == [("buyer_id",), ("seller_id",)]
    assert keys(["order", "seller_id"]) == [("buyer_email",), ("order", "seller_id")]
    assert keys(["order", "buyer_id"], [["order", "seller_id"]]) == [
        ("order", "buyer_id"),
        ("order", "seller_id"),
    ]
    assert keys({"seller": "buyer_id"}) == [("buyer_email",), ("buyer_id",)]
    assert keys(None) == [("buyer_email",), ("seller_email",)]


def test_columns_go_to_whom_their_name_tells(orders: pd.DataFrame) -> None:
    table = orders.assign(seller_box="x", box="y")
    roles = find_roles(table, columns={"username": ["seller_box", "box"]})
    buyer, seller = roles.people
    assert (buyer.columns["username"], seller.columns["username"]) == (("box",), ("seller_box",))
    assert (buyer.name, seller.name) == ("buyer", "seller")
    roles = find_roles(table, columns={"email": []})
    assert not [person for person in roles.people if "email" in person.columns]


def test_columns_without_a_label_are_the_first_persons(users: pd.DataFrame) -> None:
    table = users.assign(contact_name="Qx Qy", contact_email="q@q.org", contact_note="z")
    patient, contact = find_roles(table).people
    assert (patient.name, contact.name) == ("", "contact")
    assert patient.columns["email"] == ("email",)
    assert contact.columns == {"fullname": ("contact_name",), "email": ("contact_email",)}
    renamed = table.rename(
        columns={"first_name": "buyer_first_name", "last_name": "buyer_last_name"}
    )
    buyer, contact = find_roles(renamed).people
    assert buyer.columns["email"] == ("email",)
    assert buyer.columns["gender"] == ("sex",)
    assert find_roles(renamed).owner("note") == buyer
    assert find_roles(renamed).owner("contact_note") == contact


def test_what_is_called_as_a_column_of_the_first_person_is_not_hers(orders: pd.DataFrame) -> None:
    table = orders.assign(email=[f"q{number}@q.org" for number in range(200)])
    roles = find_roles(table)
    assert roles.people[0].columns["email"] == ("buyer_email",)
    assert [choice.column for choice in roles.further] == ["email"]


def test_columns_that_are_named_are_beside_those_of_a_plan(orders: pd.DataFrame) -> None:
    people = [OfPerson(name, (), {"email": (f"{name}_email",)}) for name in KEYS]
    table = orders.assign(seller_mail="q@q.org")
    named = {"email": ["seller_mail", "seller_email"]}
    _, seller = find_roles(table, people=people, columns=named).people
    assert seller.columns["email"] == ("seller_mail", "seller_email")
    _, seller = find_roles(table, people=people, columns={"email": ["seller_mail"]}).people
    assert seller.columns["email"] == ("seller_mail", "seller_email")
    _, seller = find_roles(table, people=people, columns={"email": []}, has_others=True).people
    assert "email" not in seller.columns


def test_what_is_of_somebody_else_is_not_the_first_persons(orders: pd.DataFrame) -> None:
    accounts = {"buyer_email": "agent_email", "buyer_mobile": "agent_mobile"}
    table = orders.rename(columns=accounts).drop(columns=["seller_email", "seller_mobile"])
    roles = find_roles(table)
    assert roles.people[0].key == ("buyer_first_name", "buyer_last_name")
    assert {choice.column for choice in roles.further} == set(accounts.values())


@pytest.mark.parametrize("rows", [0, 20])
def test_a_person_with_a_key_whom_no_row_has(orders: pd.DataFrame, rows: int) -> None:
    table = orders.head(rows).copy()
    sellers = [column for column in map(str, table) if column.startswith("seller")]
    table[sellers] = None
    out = vantrel.replace(table, KEYS, SECRET)
    alone = vantrel.replace(table.drop(columns=sellers), "buyer_id", SECRET)
    pd.testing.assert_frame_equal(out.drop(columns=sellers), alone)
    assert out[sellers].isna().all(axis=None)


def test_labels_whose_columns_hold_nothing_of_a_person_are_none(users: pd.DataFrame) -> None:
    table = users.assign(contact_name=range(60), guardian_first_name=1)
    (person,) = find_roles(table, key="id").people
    assert person.name == ""
    assert person.columns["firstname"] == ("first_name",)


def test_nobody_is_counted_where_there_is_nobody(users: pd.DataFrame) -> None:
    table = users.assign(
        contact_id=users["id"] + 500, contact_name="Qx Qy", contact_email="q@q.org"
    )
    table.loc[5:, ["contact_id", "contact_name", "contact_email"]] = None
    table.loc[7, "contact_name"] = "Qx Qz"
    replacer = Replacer(SECRET)
    made = replacer.replace(table, {"": "id", "contact": "contact_id"})
    assert replacer.report is not None
    assert replacer.report.tables["table 1"].without_key == {"contact": 1}
    assert replacer.report.people == 60 + 5 + 1
    assert made["contact_name"].notna().sum() == 6
    assert "1 row without a key of 'contact': each is a person of its own." in replacer.notes
    nobody = table.assign(contact_id=None, contact_name=None, contact_email=None)
    people = [
        OfPerson("", ("id",), {"email": ("email",)}),
        OfPerson("contact", ("contact_id",), {"email": ("contact_email",)}),
    ]
    roles = find_roles(nobody, people=people)
    (made,) = made_of([nobody.astype(object)], [roles])
    assert made["contact_email"].isna().all()
    assert (made["email"] != table["email"]).all()


def test_a_key_that_is_missing_where_somebody_is(orders: pd.DataFrame) -> None:
    with pytest.raises(vantrel.ReplaceError) as caught:
        vantrel.replace(orders.assign(seller_id=None), KEYS, SECRET)
    assert str(caught.value) == (
        "In table 1 the key 'seller_id' of 'seller' is missing in every row: name another one, or"
        " none."
    )


def test_two_people_of_a_row_who_have_no_keys_are_two(orders: pd.DataFrame) -> None:
    columns = {"buyer_first_name": "Qa", "seller_first_name": "Qa"}
    made = vantrel.replace(orders[["order"]].assign(**columns), secret=SECRET)
    is_same = made["buyer_first_name"] == made["seller_first_name"]
    assert is_same.mean() < 0.2


def test_all_people_of_a_row_are_looked_for_and_scrubbed(orders: pd.DataFrame) -> None:
    names = {
        name: orders[f"{name}_first_name"] + " " + orders[f"{name}_last_name"] for name in KEYS
    }
    told = orders.assign(note=names["buyer"] + " asked " + names["seller"], other=names["seller"])
    replacer = Replacer(SECRET)
    out = replacer.replace(told, KEYS, scrub=["note"])
    made = {name: out[f"{name}_first_name"] + " " + out[f"{name}_last_name"] for name in KEYS}
    is_other = orders["buyer_id"] != orders["seller_id"]
    expected = made["buyer"] + " asked " + made["seller"]
    assert out["note"][is_other].tolist() == expected[is_other].tolist()
    assert [
        note for note in replacer.notes if "names the row's person" in note or "name the" in note
    ] == [
        "Column 'other': 200 cells still name the row's person (rows 1, 2, 3): add scrub=['other']."
    ]


def test_actions_follow_the_person_whose_name_a_column_bears(orders: pd.DataFrame) -> None:
    dated = orders.assign(buyer_born="1980-05-06", seller_born="1980-05-06", ordered="2026-01-01")
    actions = dict.fromkeys(("buyer_born", "seller_born", "ordered"), "shift:180")
    out = vantrel.replace(dated, KEYS, SECRET, others=actions)
    moved = {
        column: pd.to_datetime(out[column]) - pd.to_datetime(dated[column]) for column in actions
    }
    assert moved["ordered"].equals(moved["buyer_born"].rename("ordered"))
    days: dict[int, pd.Timedelta] = {}
    for name, key in KEYS.items():
        for person, shift in zip(orders[key], moved[f"{name}_born"], strict=True):
            assert days.setdefault(person, shift) == shift
    assert len(set(days.values())) > 10


@pytest.mark.parametrize(
    ("key", "message"),
    [
        (
            {"byer": "buyer_id"},
            "The table has nobody called 'byer' in its rows. Did you mean 'buyer'? People are:"
            " 'buyer', 'seller'.",
        ),
        (
            {"seller": "seler_id"},
            "The table has no column 'seler_id' for the key. Did you mean 'seller_id'? Its columns"
            " are:",
        ),
    ],
)
def test_keys_of_nobody(orders: pd.DataFrame, key: Any, message: str) -> None:
    with pytest.raises(vantrel.ReplaceError) as caught:
        vantrel.replace(orders, key, SECRET)
    assert str(caught.value).startswith(message)


def test_keys_of_several_where_there_is_one(users: pd.DataFrame) -> None:
    with pytest.raises(vantrel.ReplaceError) as caught:
        vantrel.replace(users, {"buyer": "id"}, SECRET)
    assert str(caught.value) == (
        "The table has nobody called 'buyer' in its rows. Its rows have one person each: name the"
        " key alone."
    )
    with pytest.raises(vantrel.ReplaceError) as caught:
        find_roles(users, key="id", more_keys=["email"])
    assert str(caught.value) == (
        "The table: there are two keys, 'id' and 'email'. Join the columns of one key, as in"
        " key=['id', 'email']."
    )


def test_a_column_of_two_people_is_refused(orders: pd.DataFrame) -> None:
    with pytest.raises(vantrel.ReplaceError) as caught:
        find_roles(
            orders, people=[OfPerson(name, columns={"email": ("buyer_email",)}) for name in KEYS]
        )
    assert str(caught.value) == (
        "The table: column 'buyer_email' is given to 'buyer' and 'seller': it holds the values of"
        " one person."
    )


def test_people_may_have_a_key_of_another_name(users: pd.DataFrame, orders: pd.DataFrame) -> None:
    told = [f"{name}_{each}" for name in KEYS for each in ("sex", "country")]
    bare = orders.drop(columns=told)
    known = vantrel.replace(users, "id", SECRET).set_index("id")
    made = vantrel.replace(bare, KEYS, SECRET, people=users, people_key="id")
    alone = vantrel.replace(
        bare.filter(like="seller"), "seller_id", SECRET, people=users, people_key="id"
    )
    for part in PARTS:
        expected = known[part].loc[orders["seller_id"]].tolist()
        assert made[f"seller_{part}"].tolist() == alone[f"seller_{part}"].tolist() == expected


def test_people_may_themselves_be_several(orders: pd.DataFrame) -> None:
    bare = orders.drop(columns=[f"{name}_country" for name in KEYS])
    made = vantrel.replace(bare, KEYS, SECRET, people=orders)
    assert made["seller_email"].equals(vantrel.replace(orders, KEYS, SECRET)["seller_email"])


def test_people_without_the_keys_of_several(users: pd.DataFrame, orders: pd.DataFrame) -> None:
    columns = "'id', 'first_name', 'email'"
    with pytest.raises(vantrel.ReplaceError) as caught:
        vantrel.replace(orders, KEYS, SECRET, people=users[["id", "first_name", "email"]])
    assert str(caught.value) == (
        "The table of people has no column 'buyer_id' for the key: name its own, as in"
        f" people_key='COLUMN'. Its columns are: {columns}."
    )
    with pytest.raises(vantrel.ReplaceError) as caught:
        vantrel.replace(
            orders, KEYS, SECRET, people=users[["id", "first_name", "email"]], people_key="ids"
        )
    assert str(caught.value) == (
        "Table people has no column 'ids' for the key. Did you mean 'id'? Its columns are:"
        f" {columns}."
    )
    with pytest.raises(vantrel.ArgumentError) as wrong:
        vantrel.replace(orders, KEYS, SECRET, people_key="id")
    assert str(wrong.value) == "people_key names the key of a table of people, and none is given."

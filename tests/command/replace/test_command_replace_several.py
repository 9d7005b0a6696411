"""``vantrel replace``: tables with several people in a row."""

from __future__ import annotations

import csv
import json
from pathlib import Path

import pytest

from support.command import fail, succeed

pytest.importorskip("pyarrow", reason="replacing people needs pyarrow")

FIRST = [f"Q{chr(97 + n % 26)}{chr(97 + n // 26)}" for n in range(30)]
NAMES = [f"{first} Z{first[1:]}" for first in FIRST]
USERS = "id,sex,land,first_name,last_name,email\n" + "".join(
    f"{n},{'fm'[n % 2]},GB,{NAMES[n].replace(' ', ',')},q{n}@q.org\n" for n in range(30)
)
ORDERS = "order,buyer_id,buyer_name,buyer_email,buyer_dob,sellerId,sellerName,memo\n" + "".join(
    f"{n + 100},{b},{NAMES[b]},q{b}@q.org,19{40 + b}-05-06,{s},{NAMES[s]},of {NAMES[s]}\n"
    for n, b, s in ((each, each % 30, each * 7 % 30) for each in range(60))
)
KEYS = "--key users:id --key orders:buyer_id --key orders:sellerId"
PLAN = f"replace users.csv orders.csv {KEYS} --write-plan plan.toml"
RUN = "replace users.csv orders.csv -o {} --plan plan.toml --secret s"


@pytest.fixture(autouse=True)
def tables() -> None:
    Path("users.csv").write_text(USERS)
    Path("orders.csv").write_text(ORDERS)


def rows(path: str) -> list[dict[str, str]]:
    with Path(path).open(newline="") as file:
        return list(csv.DictReader(file))


def test_buyers_and_sellers_are_the_users_of_their_keys() -> None:
    result = succeed(f"replace users.csv orders.csv -o out {KEYS} --secret s --scrub memo")
    users = {row["id"]: row for row in rows("out/users.csv")}
    for row in rows("out/orders.csv"):
        names = {
            key: f"{users[row[key]]['first_name']} {users[row[key]]['last_name']}"
            for key in ("buyer_id", "sellerId")
        }
        assert row["buyer_name"] == names["buyer_id"]
        assert row["buyer_email"] == users[row["buyer_id"]]["email"]
        assert row["sellerName"] == names["sellerId"]
        assert row["memo"] == f"of {names['sellerId']}"
    assert result.stdout.splitlines()[-11:] == [
        "orders.csv: buyer",
        "Attribute  Column       Found by",
        "fullname   buyer_name   name and values  replaced",
        "email      buyer_email  name and values  replaced",
        "           memo         --scrub          scrubbed",
        "",
        "orders.csv: seller",
        "Attribute  Column      Found by",
        "fullname   sellerName  name and values  replaced",
        "Other columns stay: 'order', 'buyer_id', 'buyer_dob', 'sellerId'.",
        "Replaced the people of 60 rows; wrote out/orders.csv.",
    ]


def test_the_record_tells_of_each() -> None:
    succeed(f"replace users.csv orders.csv -o out {KEYS} --secret s")
    record = json.loads(Path("out/orders.csv.made.json").read_text())
    assert record["people_of_a_row"] == {
        "buyer": {
            "key": ["buyer_id"],
            "columns": {"fullname": ["buyer_name"], "email": ["buyer_email"]},
            "replaced": {"buyer_name": "fullname", "buyer_email": "email"},
            "kept": [],
        },
        "seller": {
            "key": ["sellerId"],
            "columns": {"fullname": ["sellerName"]},
            "replaced": {"sellerName": "fullname"},
            "kept": [],
        },
    }
    assert "key" not in record
    assert json.loads(Path("out/users.csv.made.json").read_text())["key"] == ["id"]


def test_keys_that_are_not_named_are_told_for_each() -> None:
    told = succeed("replace orders.csv -o out.csv --key sellerId --secret s").stderr.splitlines()
    assert told[0] == (
        "vantrel: note: No key of 'buyer' was named: 'buyer_email' tells who is who."
    )
    assert not [note for note in told if "of 'seller'" in note]


def test_a_plan_has_all_people_of_a_row_and_makes_what_its_options_make() -> None:
    succeed(PLAN)
    blocks = Path("plan.toml").read_text().split("\n\n")
    assert blocks[5:] == [
        '[[tables."orders.csv".people]]\nname = "buyer"\nkey = ["buyer_id"] # named',
        '[tables."orders.csv".people.columns]\n'
        'fullname = "buyer_name" # replaced; found by its name and values\n'
        'email = "buyer_email" # replaced; found by its name and values',
        '[[tables."orders.csv".people]]\nname = "seller"\nkey = ["sellerId"] # named',
        '[tables."orders.csv".people.columns]\n'
        'fullname = "sellerName" # replaced; found by its name and values',
        '[tables."orders.csv".other]\norder = "keep"\nbuyer_id = "keep" # the key of buyer\n'
        'buyer_dob = "undecided" # date of birth: its name says so, and 100% of its different values'
        ' are days that lie as far apart as births do\nsellerId = "keep" # the key of seller\n'
        'memo = "undecided" # 60 cells still name the row\'s person (rows 1, 2, 3)\n',
    ]
    succeed(RUN.format("planned"))
    succeed(f"replace users.csv orders.csv -o plain {KEYS} --secret s")
    for name in ("users.csv", "orders.csv"):
        assert Path("planned", name).read_bytes() == Path("plain", name).read_bytes()


def test_options_come_before_the_plan_for_whom_their_column_names() -> None:
    succeed(PLAN)
    succeed(RUN.format("planned"))
    asked = "--key orders:order --column orders:username=sellerId --other buyer_dob=shift:9"
    succeed(RUN.format("asked") + f" {asked}")
    planned, made, real = (rows(f"{each}orders.csv") for each in ("planned/", "asked/", ""))
    for before, after, was in zip(planned, made, real, strict=True):
        assert after["buyer_email"] != before["buyer_email"]
        assert after["sellerName"] == before["sellerName"]
        first, *_ = before["sellerName"].split()
        assert after["sellerId"].startswith(first.lower())
        assert after["buyer_dob"] != was["buyer_dob"]


def test_a_kind_of_person_joins_its_keys_and_no_others() -> None:
    succeed(PLAN)
    text = Path("plan.toml").read_text()
    for key in ('key = ["sellerId"]', 'key = ["id"]'):
        text = text.replace(key, f'of = "customer"\n{key}')
    Path("plan.toml").write_text(text)
    succeed(RUN.format("out"))
    users = {row["id"]: row for row in rows("out/users.csv")}
    emails = {row["email"] for row in users.values()}
    for row in rows("out/orders.csv"):
        user = users[row["sellerId"]]
        assert row["sellerName"] == f"{user['first_name']} {user['last_name']}"
        assert row["buyer_email"] not in emails
    assert json.loads(Path("out/users.csv.made.json").read_text())["of"] == "customer"


def test_a_plan_of_somebody_whose_columns_bear_no_name() -> None:
    lines = [f"{n},{name},q{n}@q.org,X{name},+44 20 79460{n:03}" for n, name in enumerate(NAMES)]
    head = "id,full_name,email,emergency_contact_name,emergency_contact_phone"
    Path("patients.csv").write_text("\n".join([head, *lines]))
    succeed("replace patients.csv --key id --write-plan plan.toml")
    assert Path("plan.toml").read_text().split("\n\n")[2:] == [
        '[[tables."patients.csv".people]]\nkey = ["id"] # named',
        '[tables."patients.csv".people.columns]\n'
        'fullname = "full_name" # replaced; found by its name\n'
        'email = "email" # replaced; found by its name and values',
        '[[tables."patients.csv".people]]\nname = "emergency_contact"\n'
        'key = ["emergency_contact_name"] # chosen, as none was named',
        '[tables."patients.csv".people.columns]\n'
        'fullname = "emergency_contact_name" # replaced; found by its name and values\n'
        'mobile_number = "emergency_contact_phone" # replaced; found by its name and values',
        '[tables."patients.csv".other]\nid = "keep" # the key\n',
    ]
    succeed("replace patients.csv -o a.csv --plan plan.toml --secret s")
    succeed("replace patients.csv -o b.csv --key id --secret s")
    assert Path("a.csv").read_bytes() == Path("b.csv").read_bytes()


HEAD = 'format = "vantrel-plan"\nschema_version = 1\n'
BUYER = '[[tables.a.people]]\nname = "buyer"\ncolumns = {email = "x"}\n'
NOBODY = "[[tables.a.people]]\ncolumns = {}\n"
BAD = [
    (
        BUYER + BUYER,
        "Table 'a' has several people in a row who are called 'buyer': tell them apart, as in name ="
        ' "buyer".',
    ),
    (
        NOBODY + NOBODY,
        "Table 'a' has several people in a row who are without a name: tell them apart, as in name ="
        ' "buyer".',
    ),
    (
        BUYER + BUYER.replace("buyer", "seller"),
        "Table 'a': column 'x' is given to 'buyer' and 'seller': it holds the values of one person.",
    ),
    (
        BUYER.replace('"x"', '"x", username = "x"'),
        "Table 'a': column 'x' is given to 'email' and 'username' of 'buyer': a column holds one"
        " attribute.",
    ),
    (
        BUYER + NOBODY.replace("{}", '{country = "x"}'),
        "Table 'a': column 'x' is given to 'email' of 'buyer' and 'country': a column holds one"
        " attribute.",
    ),
    (
        BUYER + NOBODY.replace("{}", '{emial = "y"}'),
        "Table 'a': 'emial' is no attribute. Did you mean 'email'?",
    ),
    (
        NOBODY + BUYER + '[tables.a.other]\nx = "hash"',
        "Table 'a': column 'x' is the person's and in other, too.",
    ),
    (
        BUYER + BUYER.replace('"buyer"', '"Buyer "').replace('"x"', '"y"'),
        "Table 'a' has several people in a row who are called 'buyer' and 'Buyer ': tell them apart,"
        ' as in name = "buyer".',
    ),
    (
        BUYER + 'of = " "',
        "Table 'a', person 'buyer': of = ' ' names no kind of person: write one, such as of ="
        ' "customer", or leave it out.',
    ),
    (NOBODY + "of = 3", "Table 'a': Expected `str`, got `int` - at `$.people[0].of`."),
    (
        NOBODY + 'kind = "a"',
        "Table 'a': Object contains unknown field `kind` - at `$.people[0]`.",
    ),
    ("[tables]\na = 3", "Table 'a': Expected `object`, got `int`."),
]


@pytest.mark.parametrize(("text", "message"), BAD)
def test_bad_plans(text: str, message: str) -> None:
    Path("plan.toml").write_text(HEAD + text)
    assert fail(RUN.format("out"), 1) == f"Plan plan.toml: {message}"


def test_country_and_gender_may_be_those_of_several() -> None:
    Path("pairs.csv").write_text("a,b,land\n" + "".join(f"{name},X{name},DE\n" for name in FIRST))
    people = "".join(
        f'[[tables."pairs.csv".people]]\nname = "{name}"\n'
        f'columns = {{firstname = "{name}", country = "land"}}\n'
        for name in "ab"
    )
    Path("plan.toml").write_text(HEAD + people)
    told = succeed("replace pairs.csv -o out.csv --plan plan.toml --secret s").stderr
    assert "The country of" not in told


def homes() -> str:
    """Two families of two in each of ten households."""
    rows = [f"{n},{n // 4},{'fm'[n % 2]},GB,Q{chr(97 + n)},Z{'ab'[n % 4 // 2]}" for n in range(20)]
    return "\n".join(["id,home,sex,land,first_name,last_name", *rows])


def test_households_are_named_by_an_option_or_a_plan() -> None:
    Path("homes.csv").write_text(homes())
    Path("other.csv").write_text("id,last_name\n0,Za\n")
    both = "replace homes.csv other.csv --key id"
    succeed(f"{both} -o a --household home --secret s")
    succeed(f"{both} -o b --household homes:home --secret s")
    succeed(f"{both} --household home --write-plan plan.toml")
    text = Path("plan.toml").read_text()
    assert text.count("household = ") == 1 + 1
    assert 'household = "home" # people of one share family names\n' in text
    succeed("replace homes.csv other.csv -o c --plan plan.toml --secret s")
    for name in ("homes.csv", "other.csv"):
        made = {Path(folder, name).read_bytes() for folder in "abc"}
        assert len(made) == 1
    names = [row["last_name"] for row in rows("a/homes.csv")]
    assert names[::2] == names[1::2]
    assert rows("a/other.csv")[0]["last_name"] == names[0]
    assert json.loads(Path("a/homes.csv.made.json").read_text())["household"] == "home"


def test_households_that_are_not_there() -> None:
    Path("homes.csv").write_text(homes())
    line = "replace homes.csv users.csv -o out --key id --secret s --household"
    columns = "'id', 'sex', 'land', 'first_name', 'last_name', 'email'"
    assert fail(f"{line} hom", 1) == (
        "No table has a column 'hom' for households. Did you mean 'home'? Columns are: 'id', 'home',"
        " 'sex', 'land', 'first_name', 'last_name', 'email'."
    )
    assert fail(f"{line} users:home", 1) == (
        f"Table users.csv has no column 'home' for households. Its columns are: {columns}."
    )
    assert "There are two columns of households, 'home' and 'sex': name one of each table." in fail(
        f"{line} homes:home --household homes:sex", 2
    )
    succeed("replace homes.csv --key id --household home --write-plan plan.toml")
    text = Path("plan.toml").read_text().replace('household = "home"', 'household = "homes"')
    Path("plan.toml").write_text(text)
    assert fail("replace homes.csv -o out.csv --plan plan.toml", 1) == (
        "Plan plan.toml: table 'homes.csv', household: there is no column 'homes'. Did you mean"
        " 'home'? Columns are: 'id', 'home', 'sex', 'land', 'first_name', 'last_name'."
    )


@pytest.mark.parametrize(
    ("planned", "written", "place"),
    [
        ('key = ["buyer_id"]', 'key = ["buyr_id"]', "person 'buyer', key: there is no column 'buyr_id'"),
        ('"sellerName"', '"selerName"', "person 'seller', fullname: there is no column 'selerName'"),
    ],
)  # fmt: skip
def test_a_column_of_a_plan_that_is_not_there(planned: str, written: str, place: str) -> None:
    succeed(PLAN)
    text = Path("plan.toml").read_text()
    assert planned in text
    Path("plan.toml").write_text(text.replace(planned, written))
    column = planned.split('"')[1]
    assert fail(RUN.format("out"), 1) == (
        f"Plan plan.toml: table 'orders.csv', {place}. Did you mean {column!r}? Columns are: 'order',"
        " 'buyer_id', 'buyer_name', 'buyer_email', 'buyer_dob', 'sellerId', 'sellerName', 'memo'."
    )


def test_a_key_of_a_plan_that_is_not_there_but_named_otherwise() -> None:
    succeed(PLAN)
    text = Path("plan.toml").read_text()
    Path("plan.toml").write_text(text.replace('key = ["sellerId"]', 'key = ["seler"]'))
    succeed(RUN.format("out") + " --key orders:sellerId --other orders:sellerId=keep")

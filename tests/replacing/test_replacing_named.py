"""Texts and tables that still name people: what is noticed there, and what scrubbing makes of it."""

from __future__ import annotations

import pandas as pd
import pytest

pa = pytest.importorskip("pyarrow", reason="People are replaced by way of Arrow")

import vantrel  # noqa: E402 - after the line that skips
from support.replacing import SECRET  # noqa: E402 - needs pyarrow
from vantrel.replacing.replacer import Replacer  # noqa: E402 - as above


def test_who_is_named_in_one_table_is_found_in_another() -> None:
    customers = pd.DataFrame(
        {
            "id": [1, 2, 3],
            "first_name": ["Günter", "Ann", "Bo"],
            "last_name": ["Weber", "de Vries", "Ray"],
            "email": ["g@x.org", "a@x.org", "b@x.org"],
        }
    )
    orders = pd.DataFrame(
        {
            "id": [1, 2, 3, 1],
            "email": ["g@x.org", "a@x.org", "b@x.org", "g@x.org"],
            "sent_to": ["GÜNTER WEBER 1", "Vries, Ann 2", "nobody 3", "Bo Ray 4"],
        }
    )
    replacer = Replacer(SECRET)
    made = replacer.replace(customers, key="id").set_index("id")
    same = replacer.replace(orders, key="id")
    assert same["sent_to"].equals(orders["sent_to"])
    assert [note for note in replacer.notes if "still name" in note] == [
        "Column 'sent_to': 2 cells still name the row's person (rows 1, 2): add scrub=['sent_to']."
    ]
    scrubbed = replacer.replace(orders, key="id", scrub=["sent_to"])
    first, last = made["first_name"], made["last_name"]
    assert scrubbed["sent_to"].tolist() == [
        f"{first[1].upper()} {last[1].upper()} 1",
        f"{last[2]}, {first[2]} 2",
        "nobody 3",
        "Bo Ray 4",
    ]
    assert not [note for note in replacer.notes if "still name" in note]


def test_a_second_column_of_an_attribute_is_looked_for_too() -> None:
    table = pd.DataFrame(
        {"id": [1], "email": ["a@x.org"], "mail2": ["b@x.org"], "memo": ["to B@x.org"]}
    )
    replacer = Replacer(SECRET)
    replacer.replace(table, key="id", columns={"email": ["email", "mail2"]})
    assert "Column 'memo': 1 cell still names the row's person (row 1): add scrub=['memo']." in (
        replacer.notes
    )


def test_what_is_scrubbed_is_in_the_case_of_its_text() -> None:
    table = pd.DataFrame(
        {
            "id": [1, 2],
            "first_name": ["ANN", "BEN"],
            "last_name": ["STONE", "HILL"],
            "full_name": ["STONE, ANN", "BEN HILL"],
            "memo": ["Ann Stone met ANN STONE, not ann stone", "for Stone, or Ben Hill"],
        }
    )
    made = vantrel.replace(table, "id", SECRET, scrub=["memo"])
    ann, ben = made.to_dict("records")
    assert ann["full_name"] == f"{ann['last_name']}, {ann['first_name']}"
    assert ben["full_name"] == f"{ben['first_name']} {ben['last_name']}"
    whole = f"{ann['first_name']} {ann['last_name']}"
    assert ann["memo"] == f"{whole.title()} met {whole}, not {whole.lower()}"
    assert ben["memo"] == f"for Stone, or {ben['full_name'].title()}"
    assert whole.isupper()


def test_addresses_in_texts_belong_to_nobody_after_scrubbing() -> None:
    customers = pd.DataFrame(
        {
            "id": [1, 2],
            "first_name": ["Ann", "Tom"],
            "last_name": ["Lee", "Ray"],
            "email": ["ann@work.org", "tom@ray.com"],
            "memo": ["private: ann.lee@gmail.com", "ray-tom@mail.de, not ann@mail.de"],
        }
    )
    replacer = Replacer(SECRET)
    made = replacer.replace(customers, key="id", scrub=["memo"])
    ann, tom = made["email"]
    assert made["memo"].tolist() == [f"private: {ann}", f"{tom}, not ann@mail.de"]
    no_addresses = customers[["id", "first_name", "memo"]]
    assert replacer.replace(no_addresses, key="id", scrub=["memo"])["memo"].equals(made["memo"])
    orders = pd.DataFrame({"id": [2], "mobile": ["0171 5550100"], "memo": ["to TOM@RAY.COM"]})
    assert replacer.replace(orders, key="id", scrub=["memo"])["memo"][0] == f"to {tom.upper()}"


@pytest.mark.parametrize("name", ["Anna van den Berg", "ANNA VAN DEN BERG", "Anna Berg"])
def test_first_names_before_particles_are_noticed(name: str) -> None:
    texts = ["Anna phoned", "for Mr Berg", "Anna Berg, not Anne", "mad as van den Vries"]
    table = pd.DataFrame({"id": 1, "full_name": name, "memo": texts})
    replacer = Replacer(SECRET)
    replacer.replace(table, key="id")
    told = "Column 'memo': 1 cell still names the row's person (row 3)"
    assert any(note.startswith(told) for note in replacer.notes)
    made = replacer.replace(table, key="id", scrub=["memo"])
    first, last = made["full_name"][0].title().split()
    assert made["memo"].tolist() == [
        f"{first} phoned",
        f"for Mr {last}",
        f"{first} {last}, not Anne",
        "mad as van den Vries",
    ]
    assert not any("name alone" in note for note in replacer.notes)


@pytest.mark.parametrize("particles", ["van den", "von", "de", "De la"])
def test_particles_belong_to_last_names(particles: str) -> None:
    name = f"Anna Maria {particles} Berg"
    memo = [f"Ms {particles} Berg", "Anna Maria"]
    table = pd.DataFrame({"id": 1, "full_name": name, "memo": memo})
    made = vantrel.replace(table, "id", SECRET, scrub=["memo"])
    first, last = made["full_name"][0].split()
    assert made["memo"].tolist() == [f"Ms {last}", first]


def test_accents_do_not_hide_a_person() -> None:
    table = pd.DataFrame(
        {
            "id": [1, 2, 3, 4],
            "first_name": ["José", "Eva", "John", "Ann"],
            "last_name": ["Müller", "Novak", "O’Brien", "Lee"],
            "country": "ES",
            "memo": ["for Jose Muller", "Éva NOVÁK", "John O'Brien", "nobody"],
        }
    )
    replacer = Replacer(SECRET)
    made = replacer.replace(table, key="id", scrub=["memo"])
    first, last = made["first_name"], made["last_name"]
    assert made["memo"].tolist() == [
        f"for {first[0]} {last[0]}",
        f"{first[1]} {last[1].upper()}",
        f"{first[2]} {last[2]}",
        "nobody",
    ]
    replaced, *notes = replacer.notes
    assert replaced.endswith(", 'memo' (scrubbed).")
    assert not [note for note in notes if "memo" in note]
    replacer.replace(table, key="id")
    assert "(rows 1, 2, 3)" in next(note for note in replacer.notes if "memo" in note)
    replacer.replace(table, key="id", keep=["lastname"])
    assert not [note for note in replacer.notes if "rows 1" in note]


def test_numbers_of_any_type_are_searched() -> None:
    rows = {"id": [1], "mobile": ["07700 900123"], "a": [7_700_900_123.0], "b": [7_700_900_123]}
    replacer = Replacer(SECRET)
    replacer.replace(pa.table(rows), key="id", columns={"mobile_number": "mobile"})
    told = [note.split(":")[0] for note in replacer.notes if "still names" in note]
    assert told == ["Column 'a'", "Column 'b'"]

"""People who are still named in columns that passed through are found, and replaced there."""

from __future__ import annotations

import re
from collections.abc import Mapping

import pytest
from hypothesis import given
from hypothesis import strategies as st

pytest.importorskip("pyarrow", reason="leaks are looked for with pyarrow")

import pyarrow as pa

from vantrel.replacing.leaks import Known, Leak, LeakSearch, Names, PrintedWords, Value, scrubbed
from vantrel.replacing.values.names import first_names, folded, last_names

ANN = {
    "firstname": "Ann",
    "lastname": "de Vries",
    "email": "a.vries@example.org",
    "username": "ann_77",
    "mobile_number": "+31 6 1234 5678",
    "home_number": "010-234567",
}
EVE = {
    "firstname": "Eve",
    "lastname": "Ortiz",
    "email": "eve@example.com",
    "username": "ortiz9",
    "mobile_number": "+1 555 0100",
    "home_number": "0400 11",
}


def values_of(
    rows: int, real: Mapping[str, str], made: Mapping[str, str | None] | None = None
) -> list[Value]:
    """What one person is known by in so many rows, and what takes its place."""
    return [
        Value(attribute, pa.array([value] * rows), _repeated((made or {}).get(attribute), rows))
        for attribute, value in real.items()
    ]


def _repeated(value: str | None, rows: int) -> pa.Array:
    return pa.array([value] * rows, pa.string())


def leaks(cells: pa.Array, person: dict[str, str] = ANN, first_row: int = 1) -> list[Leak]:
    search = LeakSearch()
    search.look(
        pa.record_batch({"notes": cells}), [Known(values_of(len(cells), person))], first_row
    )
    return search.found()


def kind(cell: str, person: dict[str, str] = ANN) -> str | None:
    """What of a person a cell has, between cells that have nothing and might run together."""
    found = leaks(pa.array(["x", cell, "y", None, ""]), person)
    assert all((leak.cells, leak.rows) == (1, (2,)) for leak in found)
    return found[0].kind if found else None


PERSON = [
    "Ann de Vries",
    "DE VRIES, ANN",
    "(Ann)de vries",
    "Mr de Vries asks for Ann.",
    "mail to A.Vries@Example.ORG!",
    "<a.vries@example.org>",
    "user ann_77",
    "ANN_77",
    "call +31 6 1234 5678",
    "call 0031612345678.",
    "tel:06-12345678",
    "06 / 12 34 56 78",
    "010234567",
    "(010) 23 45 67",
    "2024-05-01 010-234567",
]
NAME = ["Ann", "ann called", "ANN!", "Ms de  Vries, de Vries", "ask ann-marie", "annabel, ann"]
NOTHING = [
    "Anna de Vriesland",
    "Joann",
    "Annä",
    "Vries",
    "a.vries@example.or",
    "xa.vries@example.org",
    "ann778 of Anne",
    "31612345679",
    "316123456789",
    "9999910234567",
    "10234567890",
    "10.23.45",
    "",
    "@",
]


@pytest.mark.parametrize("cell", PERSON)
def test_the_row_s_person(cell: str) -> None:
    assert kind(cell) == "person"


@pytest.mark.parametrize("cell", NAME)
def test_a_name_alone(cell: str) -> None:
    assert kind(cell) == "name"


@pytest.mark.parametrize("cell", NOTHING)
def test_nothing_of_the_person(cell: str) -> None:
    assert kind(cell) is None


@pytest.mark.parametrize("digits", ["123456", "1234567", "12345678", "123456789"])
def test_cells_that_are_nothing_but_a_number(digits: str) -> None:
    (leak,) = leaks(pa.array([digits] * 2), {"mobile_number": digits})
    assert (leak.kind, leak.cells) == ("person", 2)
    assert not leaks(pa.array([digits[1:] + "0"]), {"mobile_number": digits})


def test_who_has_no_name_is_not_the_person_of_the_next_row() -> None:
    search = LeakSearch()
    names = Value("firstname", pa.array([None, "", "Ann"]))
    search.look(pa.record_batch({"notes": pa.array(["Ann", "Ann", "Eve"])}), [Known([names])], 1)
    assert not search.found()


@pytest.mark.parametrize(
    ("name", "cell"),
    [("Strauß", "STRAUSS"), ("ΝΊΚΟΣ", "νίκος"), ("李小龙", "客户：李小龙。"), ("O'Neil", "O'NEIL")],
)
def test_names_in_any_script_and_case(name: str, cell: str) -> None:
    assert kind(f"für {cell}–x", {"firstname": name}) == "name"
    assert kind(f"{cell}é", {"firstname": name}) is None or cell.endswith("。")


@pytest.mark.parametrize("cell", ["Ann Maria Lee", "Lee, Ann Maria", "ANN MARIA-LEE"])
def test_full_names(cell: str) -> None:
    assert kind(cell, {"fullname": "Ann Maria Lee"}) == "person"
    assert kind(cell, {"fullname": "Ann Maria Leeds"}) is None
    assert kind(cell, {"fullname": "Ann"}) is None


def test_short_user_names_and_numbers_are_no_leaks() -> None:
    assert kind("x1 y", {"username": "x1"}) is None
    assert kind("12345", {"work_number": "12345"}) is None
    assert kind("123456", {"work_number": "123456"}) == "person"


def test_user_names_of_digits_are_found_in_columns_that_have_no_letters() -> None:
    cells = pa.array(["4711", "12; 7", "47 11"])
    (leak,) = leaks(cells, {"username": "4711"})
    assert (leak.kind, leak.cells, leak.rows) == ("person", 1, (1,))
    assert leaks(cells, {"username": "x4711"}) == []


def test_zeros_in_front_of_a_number_do_not_count() -> None:
    assert kind("no. 5, 1234567", {"work_number": "0123-4567"}) == "person"
    assert kind("0-0123456", {"work_number": "123456"}) == "person"
    assert kind("12345", {"work_number": "00012345"}) is None


def test_a_day_is_no_number() -> None:
    assert kind("on 2024-05-17", {"mobile_number": "+49 30 20240517"}) is None
    for cell in ("2024-05-1", "20240517", "2024-05-17-3", "2024 05 17", "2024-13-17"):
        digits = re.sub(r"\D", "", cell)
        assert kind(f"on {cell}", {"mobile_number": f"+49 30 1{digits}"}) is None
        found = kind(f"on {cell}", {"mobile_number": f"+49 {digits}"})
        assert found == ("person" if len(digits) >= 8 else None)


def test_other_rows_people_are_no_leaks() -> None:
    search = LeakSearch()
    real = [
        Value("firstname", pa.array(["Ann", "Bo", None])),
        Value("lastname", pa.array(["Lee", "Ray", "Kim"])),
    ]
    search.look(pa.record_batch({"notes": ["Bo Ray", "Ann Lee", "Ann Lee"]}), [Known(real)], 1)
    assert search.found() == []


def test_what_is_told() -> None:
    cells = pa.array(["Ann", "ann_77", "x", "ann_77 Ann", None, "06 12345678", "ANN_77"])
    search = LeakSearch()
    for first_row in (1, 8):
        batch = pa.record_batch({"id": pa.array(range(7)), "notes": cells})
        search.look(batch, [Known(values_of(7, ANN))], first_row)
    assert search.found() == [
        Leak("notes", "person", 8, (2, 4, 6)),
        Leak("notes", "name", 2, (1, 8)),
    ]
    assert list(map(str, search.found())) == [
        "Column 'notes': 8 cells still name the row's person (rows 2, 4, 6)",
        "Column 'notes': 2 cells have the row's first or last name alone (rows 1, 8)",
    ]
    assert [str(Leak("a", kind, 1, (5,))) for kind in ("person", "name")] == [
        "Column 'a': 1 cell still names the row's person (row 5)",
        "Column 'a': 1 cell has the row's first or last name alone (row 5)",
    ]


@pytest.mark.parametrize(
    "cells",
    [
        pa.array(["x", "Ann"]).dictionary_encode(),
        pa.array(["x", "Ann"], pa.large_string()),
        pa.array(["x", "Ann"], pa.string_view()),
        pa.array([[], ["x", "Ann"]]),
        pa.array([{"to": None}, {"to": "Ann"}]),
    ],
    ids=lambda cells: str(cells.type),
)
def test_texts_of_any_type(cells: pa.Array) -> None:
    assert leaks(cells) == [Leak("notes", "name", 1, (2,))]


def test_whole_numbers_are_telephone_numbers() -> None:
    assert leaks(pa.array([5, 31612345678, None])) == [Leak("notes", "person", 1, (2,))]


def test_what_cannot_name_anybody() -> None:
    assert leaks(pa.array([1.5, None])) == []
    assert leaks(pa.array([True])) == []
    assert leaks(pa.array([], pa.string())) == []
    assert leaks(pa.nulls(3)) == []


def test_parts_of_longer_arrays() -> None:
    cells = pa.array(["Ann", "x", "Ann", None, "Ann 06-12345678"])
    assert leaks(cells.slice(1, 1)) == []
    assert leaks(cells.slice(1, 2)) == [Leak("notes", "name", 1, (2,))]
    assert leaks(cells.slice(3)) == [Leak("notes", "person", 1, (2,))]


def test_a_table_without_any() -> None:
    rows = 5_000
    search = LeakSearch()
    passed = {
        "id": [str(n) for n in range(rows)],
        "day": [f"20{n % 90 + 10}-05-{n % 28 + 1}" for n in range(rows)],
        "notes": [f"order {n * 7919} of first{(n + 1) % rows}, last{n + 2}" for n in range(rows)],
    }
    real = {
        "firstname": [f"First{n}" for n in range(rows)],
        "lastname": [f"Last{n}" for n in range(rows)],
        "email": [f"first{n}@example.org" for n in range(rows)],
        "home_number": [f"030 {5_550_000 + n}" for n in range(rows)],
    }
    values = [Value(attribute, pa.array(each)) for attribute, each in real.items()]
    search.look(pa.record_batch(passed), [Known(values)], 1)
    assert search.found() == []


def scrub(cells: list[str | None]) -> list[str | None]:
    values = values_of(len(cells), ANN, EVE)
    new: list[str | None] = scrubbed(pa.array(cells, pa.string()), values, "notes").to_pylist()
    return new


def test_made_up_values_take_the_place_of_real_ones() -> None:
    replaced = {
        "Ann de Vries": "Eve Ortiz",
        "ANN, DE VRIES, ann": "EVE, ORTIZ, eve",
        "<a.vries@example.org> (ann_77)": "<eve@example.com> (ortiz9)",
        "call +31612345678, or (010) 234567!": "call +1 555 0100, or 0400 11!",
        "06-12345678 / Anna Vries": "+1 555 0100 / Anna Vries",
        "Grüße, Ann": "Grüße, Eve",
        "ßß Ann İ ANN": "ßß Eve İ EVE",
        "nobody": "nobody",
        "": "",
    }
    assert scrub([*replaced, None]) == [*replaced.values(), None]


def test_what_was_made_up_is_not_replaced_again() -> None:
    real, made = {"firstname": "Ann", "lastname": "Lee"}, {"firstname": "Lee", "lastname": "Ann"}
    assert scrubbed(pa.array(["Ann Lee"]), values_of(1, real, made), "notes").to_pylist() == [
        "Lee Ann"
    ]


def test_what_is_not_made_up_stays() -> None:
    cells = pa.array(["Ann de Vries, ann_77"]).dictionary_encode()
    new = scrubbed(cells, values_of(1, ANN, {"firstname": None, "username": "eve1"}), "notes")
    assert new.type == cells.type
    assert new.to_pylist() == ["Ann de Vries, eve1"]


def test_nothing_is_left_after_scrubbing() -> None:
    cells = [*PERSON, *NAME]
    assert leaks(scrubbed(pa.array(cells), values_of(len(cells), ANN, EVE), "notes")) == []


MADE_ADDRESS = "eve.ortiz.77@hill.example"
ADDRESSES = {
    "private: ann.lee@gmail.com, Ann": f"private: {MADE_ADDRESS}, Eve",
    "<ANN@GMAIL.COM>": f"<{MADE_ADDRESS.upper()}>",
    "'info@lee.org'.": f"'{MADE_ADDRESS}'.",
    "mailto:ann.lee+x@mail.co.uk; Lee": f"mailto:{MADE_ADDRESS}; Ortiz",
    "Ann.Lee@work.org": MADE_ADDRESS,
    "ann lee@work.org": f"eve {MADE_ADDRESS}",
    "joann@gmail.com @ Lee": "joann@gmail.com @ Ortiz",
}


@pytest.mark.parametrize("cell", ADDRESSES)
def test_other_addresses_with_a_name_in_them_become_the_made_up_one(cell: str) -> None:
    real = {"firstname": "Ann", "lastname": "Lee", "email": "lee@work.org"}
    made = {"firstname": "Eve", "lastname": "Ortiz", "email": MADE_ADDRESS}
    values = [
        value._replace(address=pa.array([MADE_ADDRESS])) for value in values_of(1, real, made)
    ]
    assert scrubbed(pa.array([cell]), values, "notes").to_pylist() == [ADDRESSES[cell]]


def names_of(*people: tuple[str, str]) -> Names:
    """The prints of people's names, as another table tells them."""
    first, last = (folded(pa.array(part, pa.string())) for part in zip(*people, strict=True))
    return Names(first_names(first), last_names(last))


NAMED_BY_OTHERS = {
    "Ann de Vries": "person",
    "VRIES, ANN": "person",
    "for Ann (Mr Vries)": "person",
    "Ann": "name",
    "Anna Vriesland": None,
    "": None,
}


def test_people_whom_another_table_names_are_found() -> None:
    cells = pa.array([*NAMED_BY_OTHERS, None])
    search = LeakSearch()
    names = names_of(*[("Ann Mary", "de Vries")] * len(cells))
    search.look(pa.record_batch({"notes": cells}), [Known([], names)], 1)
    assert search.found() == [
        Leak("notes", "person", 3, (1, 2, 3)),
        Leak("notes", "name", 1, (4,)),
    ]


def test_accents_do_not_hide_whom_another_table_names() -> None:
    cells = pa.array(["Günter Jürgens-Weiß", "Gunter Jurgens-Weiß!", "Günter", "Gun ter"])
    search = LeakSearch()
    names = names_of(*[("Günter", "Jürgens-Weiß")] * 4)
    search.look(pa.record_batch({"notes": cells}), [Known([], names)], 1)
    assert search.found() == [Leak("notes", "person", 2, (1, 2)), Leak("notes", "name", 1, (3,))]


def test_names_are_found_in_the_rows_of_their_people_alone() -> None:
    people = [("Ann", "Lee"), ("Bo", "Ray"), ("", "")]
    texts = pa.array(["Bo, not Ann Lée", "Bo, not Ann Lée", "Ann Bo"])
    first, last, _ = names_of(*people)
    words = PrintedWords(texts)
    assert words.found(first).to_pylist() == ["Ann", "Bo", None]
    assert words.found(last).to_pylist() == ["Lée", None, None]
    assert PrintedWords(pa.array([], pa.string())).found(first[:0]).to_pylist() == []


WORDS = st.text("aAbßſéİ1_ .-'@李\N{COMBINING ACUTE ACCENT}", max_size=6)
NUMBERS = st.text("0123 -(+.", max_size=14)


def plainly_has(attribute: str, text: str, value: str | None) -> bool:
    """Searches as one would write it down, at every place of the text."""
    if value is None:
        return False
    if attribute == "mobile_number":
        return plainly_has_number(text, value)
    if attribute == "username" and len(value) < 3:
        return False
    folded, wanted = text.casefold(), value.strip().casefold()
    return any(sign.isalnum() for sign in wanted) and any(
        folded.startswith(wanted, place)
        and not folded[:place][-1:].isalnum()
        and not folded[place + len(wanted) :][:1].isalnum()
        for place in range(len(folded))
    )


def plainly_has_number(text: str, value: str) -> bool:
    wanted = re.sub(r"\D", "", value).lstrip("0")
    day = r"(?<![\d-])(19|20)\d\d-(0[1-9]|1[0-2])-(0[1-9]|[12]\d|3[01])(?![\d-])"
    groups = re.split("([0-9]+)", re.sub(day, "x", text))
    for first in range(1, len(groups), 2):
        digits = ""
        for place in range(first, len(groups), 2):
            if place > first and not re.fullmatch(r"[ ().+/-]{1,3}", groups[place - 1]):
                break
            digits = (digits + groups[place]).lstrip("0")
            shorter, longer = sorted([digits, wanted], key=len)
            is_part = len(shorter) >= 8 and len(longer) - len(shorter) <= 4
            if len(wanted) >= 6 and (digits == wanted or (is_part and longer.endswith(shorter))):
                return True
    return False


type Row = tuple[dict[str, str | None], str | None]


@st.composite
def rows(draw: st.DrawFn) -> Row:
    """A person and a cell, more often than not with something of hers in it."""
    values = {
        "firstname": draw(st.none() | WORDS),
        "lastname": draw(st.none() | WORDS),
        "email": draw(st.none() | WORDS),
        "username": draw(st.none() | WORDS),
        "mobile_number": draw(st.none() | NUMBERS),
    }
    parts = [WORDS, NUMBERS, *(st.just(value) for value in values.values() if value)]
    cell = "".join(
        part.upper() if draw(st.booleans()) else part
        for part in draw(st.lists(st.one_of(parts), max_size=5))
    )
    return values, draw(st.sampled_from([cell, cell, cell, None]))


@given(st.lists(rows(), min_size=1, max_size=6))
def test_the_same_is_found_as_by_a_plain_search(table: list[Row]) -> None:
    people, cells = [person for person, _ in table], [cell for _, cell in table]
    kinds = []
    for person, cell in table:
        has = {each: cell is not None and plainly_has(each, cell, person[each]) for each in person}
        alone = has.pop("firstname"), has.pop("lastname")
        is_person = all(alone) or any(has.values())
        kinds.append("person" if is_person else "name" if any(alone) else None)
    search = LeakSearch()
    real = [Value(each, pa.array([p[each] for p in people], pa.string())) for each in people[0]]
    search.look(pa.record_batch({"notes": pa.array(cells, pa.string())}), [Known(real)], 0)
    expected = [
        (kind, kinds.count(kind), tuple(n for n, each in enumerate(kinds) if each == kind)[:3])
        for kind in ("person", "name")
        if kind in kinds
    ]
    assert [(leak.kind, leak.cells, leak.rows) for leak in search.found()] == expected


def test_slices_of_large_texts_are_searched_to_their_ends() -> None:
    names = pa.array([f"Qa{number} {'Qb' * number}" for number in range(9)], pa.large_string())
    value = Value("email", names[5:], None)
    search = LeakSearch()
    search.look(pa.record_batch({"note": names[5:]}), [Known([value])], 1)
    assert [leak.cells for leak in search.found()] == [4]

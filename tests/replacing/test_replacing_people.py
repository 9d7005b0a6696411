"""Which people come of which keys."""

from __future__ import annotations

import re
import unicodedata
from typing import Any

import numpy as np
import pandas as pd
import pytest

pytest.importorskip("pyarrow", reason="People are replaced by way of Arrow")

import pyarrow as pa
from faker import Faker

import vantrel
from support.replacing import (
    SECRET,
    customers,
    made_of,
    replaced_in_batches,
)
from vantrel.errors import ReplaceError
from vantrel.replacing.columns.roles import find_roles
from vantrel.replacing.people import people as people_module
from vantrel.replacing.replacer import Replacer
from vantrel.replacing.values.form import in_form_of_numbers
from vantrel.replacing.values.keys import digests


@pytest.fixture(scope="module")
def table() -> pd.DataFrame:
    return customers()


@pytest.fixture(scope="module")
def made(table: pd.DataFrame) -> pd.DataFrame:
    return replaced_in_batches(table, 100)


def test_all_columns_of_a_person_are_replaced(table: pd.DataFrame, made: pd.DataFrame) -> None:
    replaced = ["first_name", "last_name", "email", "username", "password", "mobile"]
    assert list(made) == replaced
    assert (made != table[replaced]).all().all()


@pytest.mark.parametrize("rows", [1, 7, 1_000])
def test_batches_do_not_matter(table: pd.DataFrame, made: pd.DataFrame, rows: int) -> None:
    few = table.head(60)
    pd.testing.assert_frame_equal(replaced_in_batches(few, rows), made.head(60))


def test_other_rows_and_their_order_do_not_matter(table: pd.DataFrame, made: pd.DataFrame) -> None:
    shuffled = table.sample(frac=1, random_state=1)
    pd.testing.assert_frame_equal(replaced_in_batches(shuffled, 100), made.loc[shuffled.index])
    half = table.iloc[::2]
    pd.testing.assert_frame_equal(replaced_in_batches(half, 100), made.loc[half.index])
    more = pd.concat([customers(30, seed=5).assign(customer_id=range(30)), table])
    pd.testing.assert_frame_equal(replaced_in_batches(more, 100).iloc[30:], made)


def test_the_type_of_the_key_does_not_matter(table: pd.DataFrame, made: pd.DataFrame) -> None:
    for dtype in ("str", "float64", "Int32", "category"):
        other = table.assign(customer_id=table["customer_id"].astype(dtype))
        pd.testing.assert_frame_equal(replaced_in_batches(other, 100), made)


def test_one_person_in_all_tables(table: pd.DataFrame, made: pd.DataFrame) -> None:
    rng = np.random.default_rng(2)
    at = rng.integers(0, len(table), 1_000)
    orders = pd.DataFrame(
        {
            "order": range(1_000),
            "customer_id": table["customer_id"].to_numpy()[at].astype(str),
            "full_name": "Qc Qd",
            "contact_email": "qc@qd.org",
        }
    )
    roles = [find_roles(table, key="customer_id"), find_roles(orders, key="customer_id")]
    own, others = made_of([table, orders], roles)
    pd.testing.assert_frame_equal(own, made)
    whose = own.iloc[at].reset_index(drop=True)
    assert (others["contact_email"] == whose["email"]).all()
    joined = whose["first_name"] + " " + whose["last_name"]
    is_western = (table["country"].iloc[at] != "JP").to_numpy()
    assert (others["full_name"] == joined)[is_western].all()
    turned = whose["last_name"] + " " + whose["first_name"]
    assert (others["full_name"] == turned)[~is_western].all()


def test_names_follow_gender_and_country(table: pd.DataFrame, made: pd.DataFrame) -> None:
    locales = {"GB": "en_GB", "DE": "de_DE", "FR": "fr_FR", "JP": "ja_JP"}
    for (country, sex), rows in table.groupby(["country", "sex"]):
        (generator,) = Faker(locales[str(country)]).factories
        known = generator.first_name.__self__
        names = known.first_names_female if sex == "f" else known.first_names_male
        assert set(made.loc[rows.index, "first_name"]) <= set(names)


def test_names_of_people_without_a_gender_are_of_either(table: pd.DataFrame) -> None:
    made = replaced_in_batches(table.assign(sex=None, country="DE"), 100)
    (generator,) = Faker("de_DE").factories
    is_womans = made["first_name"].isin(generator.first_name.__self__.first_names_female)
    assert 0.3 < is_womans.mean() < 0.8


def test_a_title_tells_a_gender_that_is_missing(table: pd.DataFrame, made: pd.DataFrame) -> None:
    titles = table["sex"].map({"f": "Mrs", "m": "Mr"})
    without = table.assign(sex=None, title=titles)
    pd.testing.assert_frame_equal(replaced_in_batches(without, 100), made)
    pd.testing.assert_frame_equal(replaced_in_batches(table.assign(title="Dr"), 100), made)


def test_accounts_agree_with_names_and_differ(table: pd.DataFrame, made: pd.DataFrame) -> None:
    assert made["email"].str.fullmatch(r"[a-z0-9._-]{1,64}@[a-z0-9-]+\.example").all()
    assert (made["email"].str.partition("@")[0] == made["username"]).all()
    assert made["username"].is_unique
    assert made["username"].str.fullmatch(r"[a-z0-9_-]+(\.[a-z0-9_-]+)*\.[a-km-np-z2-9]{10}").all()
    british = made[table["country"] == "GB"]
    start = (british["first_name"] + "." + british["last_name"]).str.lower()
    start = start.str.replace(r"[^a-z.-]", "", regex=True)
    ends = british["username"].str.slice(0, -11)
    assert (ends == start).mean() > 0.98
    assert made["email"].str.partition("@")[2].nunique() > 100


def test_passwords_and_numbers_come_from_the_hash(made: pd.DataFrame, table: pd.DataFrame) -> None:
    assert made["password"].is_unique
    assert set(made["password"].str.len()) == {12, 13, 14, 15, 16}
    for pattern in ("[a-z]", "[A-Z]", "[0-9]", "[!?]"):
        assert made["password"].str.contains(pattern).all()
    numbers = made.loc[table["country"] == "GB", "mobile"]
    assert numbers.str.fullmatch(r"\+44 7700 900\d{3}").all()
    assert numbers.nunique() > 0.8 * len(numbers)
    digits = numbers.str.slice(-3).str.cat().replace(" ", "")
    assert all(0.06 < digits.count(digit) / len(digits) < 0.14 for digit in "0123456789")


FORMS = {
    "0170 1234567": r"07700 900\d{3}|06( \d\d){4}|\d{3} \d{3} \d{4}",
    "+49 170 1234567": r"\+44 7700 900\d{3}|\+33 6( \d\d){4}|\+39 \d{3} \d{3} \d{4}",
    "+491701234567": r"\+447700900\d{3}|\+336\d{8}|\+39\d{10}",
    "00491701234567": r"00447700900\d{3}|00336\d{8}|0039\d{10}",
    "0170/1234567": r"07700 900\d{3}|06( \d\d){4}|\d{3} \d{3} \d{4}",
    "01701234567": r"07700900\d{3}|06\d{8}|\d{10}",
}


@pytest.mark.parametrize("no_real", [False, True])
def test_numbers_have_codes_of_countries_and_blanks_where_the_real_ones_have(
    *, no_real: bool
) -> None:
    ids, countries = range(300), ["GB", "FR", "IT"] * 100
    table = pd.DataFrame({"id": ids, "country": countries})
    taken = [f"07700 900{end:03}" for end in range(500)]
    others = pd.DataFrame({"id": range(1_000, 1_500), "mobile": taken})
    national: list[str] = []
    for written, form in FORMS.items():
        replacer = Replacer(SECRET, no_real=no_real)
        made = replacer.replace(table.assign(mobile=written), "id", others)["mobile"]
        assert made.str.fullmatch(form).all(), written
        digits = made.str.replace(r"\D", "", regex=True).str[-9:].tolist()
        national = national or digits
        assert digits == national
    assert not no_real or min(national[::3]) >= "700900500"


WRITTEN = {
    "1234567": "07700900123",
    "+1234567": "+447700900123",
    "001234567": "00447700900123",
    "++1234567": "+44 7700 900123",
    "+": "+44 7700 900123",
    "12 34567": "07700 900123",
    "12345x67": "07700 900123",
    "\u0661\u0662\u0663\u0664": "07700 900123",
    "": "07700 900123",
    None: "07700 900123",
}


def test_numbers_are_bare_where_the_real_ones_are_digits_behind_one_plus_at_most() -> None:
    real = pa.array(WRITTEN, pa.string())
    made, abroad = (
        pa.array([number] * len(real)) for number in ("07700 900123", "+44 7700 900123")
    )
    written = in_form_of_numbers(real, made, lambda: abroad)
    assert dict(zip(WRITTEN, written.to_pylist(), strict=True)) == WRITTEN


def chi_squared(counts: pd.Series, shares: pd.Series) -> float:
    """How far counts are from shares, in standard deviations of what chance has it."""
    expected = shares / shares.sum() * counts.sum()
    assert (expected >= 5).all()
    distance = ((counts.reindex(shares.index, fill_value=0) - expected) ** 2 / expected).sum()
    return float((distance - len(shares)) / np.sqrt(2 * len(shares)))


def test_names_are_as_frequent_as_faker_has_them() -> None:
    people = pd.DataFrame({"id": range(30_000), "sex": "f", "first_name": "Qa", "land": "US"})
    made = vantrel.replace(people, "id", SECRET, columns={"country": "land"})["first_name"]
    (generator,) = Faker("en_US").factories
    weights = pd.Series(generator.first_name.__self__.first_names_female)
    assert abs(chi_squared(made.value_counts(), weights)) < 8
    even = pd.Series(np.random.default_rng(1).choice(weights.index, len(people)))
    assert chi_squared(even.value_counts(), weights) > 100


def test_two_secrets_give_people_who_have_nothing_to_do_with_each_other(
    table: pd.DataFrame, made: pd.DataFrame
) -> None:
    other = replaced_in_batches(table, 100, b"another secret, of 32 bytes too.")
    for column in ("email", "username", "password"):
        assert not set(made[column]) & set(other[column])
    for column in ("first_name", "last_name"):
        by_chance = np.mean(
            [
                (made[column].sample(frac=1, random_state=seed).to_numpy() == other[column]).mean()
                for seed in range(50)
            ]
        )
        assert (made[column] == other[column]).mean() < by_chance + 0.06


def test_nobody_gets_a_name_of_her_own(table: pd.DataFrame, made: pd.DataFrame) -> None:
    def disguised(name: str) -> str:
        return unicodedata.normalize("NFD", name.upper())

    few = table.index[:50]
    real = table.copy()
    real.loc[few, "first_name"] = made.loc[few, "first_name"].map(disguised)
    real.loc[few, "last_name"] = made.loc[few, "last_name"].str.lower() + " "
    other = replaced_in_batches(real, 100)
    for column in ("first_name", "last_name"):
        assert (other.loc[few, column] != made.loc[few, column]).all()
    others = table.index[50:]
    pd.testing.assert_frame_equal(other.loc[others], made.loc[others])
    pd.testing.assert_series_equal(other["mobile"], made["mobile"])


@pytest.mark.parametrize("form", ["{first} {last}", "{last}, {first}", " {first}  {last} "])
def test_nobody_gets_a_half_of_her_full_name(
    table: pd.DataFrame, made: pd.DataFrame, form: str
) -> None:
    western = table[table["country"] != "JP"].drop(columns=["first_name", "last_name"])
    own = made.loc[western.index]
    names = [
        form.format(first=first, last=last)
        for first, last in zip(own["first_name"], own["last_name"], strict=True)
    ]
    full = replaced_in_batches(western.assign(full_name=names), 100)["full_name"]
    for name, first, last in zip(full, own["first_name"], own["last_name"], strict=True):
        assert name.split()[0] != first.split()[0]
        assert name.split()[-1] != last.split()[-1]


def test_the_real_name_is_that_of_the_first_table(table: pd.DataFrame, made: pd.DataFrame) -> None:
    orders = pd.DataFrame(
        {"customer_id": table["customer_id"], "full_name": made["first_name"] + " Q"}
    )
    roles = [find_roles(each, key="customer_id") for each in (table, orders)]
    first, _ = made_of([table, orders], roles)
    pd.testing.assert_frame_equal(first, made)
    _, second = made_of([orders, table], roles[::-1])
    assert (second["first_name"] != made["first_name"]).all()


def test_gaps_stay(table: pd.DataFrame, made: pd.DataFrame) -> None:
    holes = table.astype(object)
    gaps = {"first_name": None, "email": "", "mobile": "  ", "password": float("nan")}
    for number, (column, gap) in enumerate(gaps.items()):
        holes.loc[number::4, column] = gap
    out = vantrel.replace(holes, "customer_id", SECRET)
    for name in made:
        old, new = holes[name], out[name]
        is_gap = old.isna() | (old.astype(str).str.strip() == "")
        assert is_gap.any() == (name in gaps)
        assert new[is_gap].map(repr).tolist() == old[is_gap].map(repr).tolist()
        assert (new == made[name])[~is_gap].all()


@pytest.mark.parametrize("word", ["NULL", "\\N", "n/a", "N/A", "-", "?", " NULL "])
def test_words_for_nothing_stay_and_are_nobody(word: str) -> None:
    people = pd.DataFrame(
        {
            "first_name": ["Ann", "Tom", word, "Null"],
            "email": [word, word, "x@y.org", "n@y.org"],
            "mobile": ["0171 5550100", word, word, "0171 5550101"],
            "note": ["x", "y", f"{word} of x", "z"],
        }
    )
    replacer = Replacer(SECRET)
    out = replacer.replace(people)
    assert ((out == word) == (people == word)).all(axis=None)
    assert ((out != people) == (people != word)).drop(columns="note").all(axis=None)
    assert out["note"].equals(people["note"])
    assert not any("name alone" in note or "still name" in note for note in replacer.notes)
    assert replacer.report is not None
    assert replacer.report.people == 4
    assert replacer.report.tables["table 1"].without_key == {"": 2}
    with pytest.raises(ReplaceError, match="is missing in every row"):
        vantrel.replace(people.iloc[:2], "email", SECRET)


def test_rows_without_a_key_are_people_of_their_own(
    table: pd.DataFrame, made: pd.DataFrame
) -> None:
    some = table.assign(customer_id=table["customer_id"].astype("Int64"))
    some.loc[:99, "customer_id"] = pd.NA
    out = replaced_in_batches(some, 64)
    pd.testing.assert_frame_equal(out.iloc[100:], made.iloc[100:])
    assert out["email"].is_unique
    assert not set(out["email"].head(100)) & set(made["email"])
    shuffled = some.sample(frac=1, random_state=3)[some.columns[::-1]]
    pd.testing.assert_frame_equal(replaced_in_batches(shuffled, 50)[out.columns].sort_index(), out)


def test_the_address_is_the_key_without_another(table: pd.DataFrame) -> None:
    doubled = pd.concat([table, table.assign(email=table["email"].str.upper())])
    out = replaced_in_batches(doubled.drop(columns="customer_id"), 100, key=None)
    assert (out["email"].iloc[:400] == out["email"].iloc[400:]).all()
    assert out["email"].nunique() == 400


def test_without_key_and_names_each_row_is_a_person() -> None:
    rows = pd.DataFrame({"first_name": ["Anna"] * 50, "visits": range(50)})
    replacer = Replacer(SECRET)
    out = replacer.replace(rows)
    assert out["first_name"].nunique() > 25
    assert replacer.report is not None
    assert replacer.report.people == 50
    assert replacer.report.tables["table 1"].without_key == {"": 50}


def test_contradictions_are_counted_by_table() -> None:
    rows = pd.DataFrame(
        {
            "id": [1, 1, 2, 2, 3, None],
            "sex": ["f", "m", "f", "f", "m", "f"],
            "country": ["DE", "Germany", "DE", "FR", None, "IT"],
            "first_name": "Qa",
        }
    )
    replacer = Replacer(SECRET)
    out = replacer.replace(rows, "id")
    assert out["first_name"].iloc[0] == out["first_name"].iloc[1]
    replacer.replace(rows.assign(sex="f"), "id")
    assert replacer.report is not None
    tables = replacer.report.tables
    assert tables["table 1"].contradictions == {"gender": 1, "country": 1}
    assert tables["table 2"].contradictions == {"gender": 1, "country": 1}


@pytest.fixture(scope="module")
def british() -> pd.DataFrame:
    real = vantrel.people(
        3_000, columns=["gender", "firstname", "lastname", "mobile_number"], seed=1
    )
    return real.assign(id=range(3_000))


def test_those_who_got_what_a_real_person_bears_are_counted(british: pd.DataFrame) -> None:
    replacer = Replacer(SECRET)
    out = replacer.replace(british, "id")
    assert replacer.report is not None
    real = set(british["firstname"] + " " + british["lastname"])
    names = int((out["firstname"] + " " + out["lastname"]).isin(real).sum())
    numbers = int(out["mobile_number"].isin(british["mobile_number"]).sum())
    assert replacer.report.borne == {"full names": names, "telephone numbers": numbers}
    by_chance = replacer.report.by_chance
    assert names == pytest.approx(by_chance["full names"], rel=0.4)
    assert numbers == pytest.approx(by_chance["telephone numbers"], rel=0.1)


def test_nobody_bears_what_a_real_person_does_if_that_is_asked(british: pd.DataFrame) -> None:
    few = british.head(500)
    usual = Replacer(SECRET).replace(few, "id")
    replacer = Replacer(SECRET, no_real=True)
    out = replacer.replace(few, "id")
    assert replacer.report is not None
    assert replacer.report.borne == {"full names": 0, "telephone numbers": 0}
    assert not set(out["mobile_number"]) & set(few["mobile_number"])
    real = set(few["firstname"] + few["lastname"])
    assert not set(out["firstname"] + out["lastname"]) & real
    was_free = ~(usual["firstname"] + usual["lastname"]).isin(real)
    pd.testing.assert_series_equal(out["lastname"][was_free], usual["lastname"][was_free])


def test_who_gets_another_number_keeps_what_else_is_made_for_her(british: pd.DataFrame) -> None:
    few = british[["id", "mobile_number"]].head(500).assign(note="called")
    usual, other = (
        Replacer(SECRET, no_real=no_real).replace(few, "id", others={"note": "fake:word"})
        for no_real in (False, True)
    )
    assert (usual["mobile_number"] != other["mobile_number"]).any()
    pd.testing.assert_series_equal(usual["note"], other["note"])


def test_real_addresses_are_compared_where_they_could_be_made_up() -> None:
    rows = pd.DataFrame({"id": range(20), "email": [f"q{n}@qb.org" for n in range(20)]})
    made = Replacer(SECRET).replace(rows, "id")["email"]
    replacer = Replacer(SECRET)
    replacer.replace(rows.assign(email=made.str.upper()), "id")
    assert replacer.report is not None
    assert replacer.report.borne["e-mail addresses"] == 20
    assert replacer.report.by_chance["e-mail addresses"] == 0


def test_two_people_of_one_user_name_end_the_run(monkeypatch: pytest.MonkeyPatch) -> None:
    def alike(keys: Any, secret: bytes) -> Any:
        return digests([b"one" for _ in keys], secret)

    rows = pd.DataFrame({"id": [1, 2, 3, None], "email": [f"q{n}@qb.org" for n in range(4)]})
    monkeypatch.setattr(people_module, "digests", alike)
    with pytest.raises(vantrel.ReplaceError) as caught:
        vantrel.replace(rows, "id", SECRET)
    assert str(caught.value) == (
        "3 user names would be of two people, as chance has it once in a great while: take another"
        " secret, with which everybody becomes another person."
    )
    vantrel.replace(
        rows.rename(columns={"email": "mobile"}), "id", SECRET, columns={"mobile_number": "mobile"}
    )


def test_countries_without_names_of_their_own_are_warned_of_once() -> None:
    rows = pd.DataFrame({"id": [1, 2], "first_name": "Qa", "country": ["Malta", "GB"]})
    with pytest.warns(vantrel.BorrowedNamesWarning) as caught:
        vantrel.replace(pd.concat([rows] * 3), "id", SECRET)
    assert len(caught) == 1
    assert re.search("Malta", str(caught[0].message))


def test_people_without_a_country_live_where_it_is_said() -> None:
    rows = pd.DataFrame({"id": range(30), "sex": "f", "last_name": "Qa"})
    germans = vantrel.replace(rows, "id", SECRET, place="DE")
    told = vantrel.replace(rows.assign(country="Deutschland"), "id", SECRET)
    assert germans["last_name"].tolist() == told["last_name"].tolist()
    assert (
        germans["last_name"].tolist() != vantrel.replace(rows, "id", SECRET)["last_name"].tolist()
    )
    with pytest.raises(vantrel.UnknownPlaceError):
        Replacer(SECRET, place="Atlantis")


def test_names_are_in_the_form_of_the_real_ones() -> None:
    table = pd.DataFrame(
        {
            "id": [1, 1, 1, 1, 1],
            "sex": "f",
            "country": "JP",
            "full_name": ["Qa Qb", "QB, QA", "Qb, Qa", "QA QB", ""],
            "last_name": ["Qb", "QB", "Q.B.", "QBX", ""],
        }
    )
    made = replaced_in_batches(table, 2, key="id").assign(country="JP")
    plain, *others = made["full_name"]
    last = made["last_name"][0]
    first = plain.replace(last, "").strip()
    assert others[:3] == [f"{last}, {first}", f"{last}, {first}", plain]
    german = replaced_in_batches(table.assign(country="DE"), 2, key="id")
    name = german["last_name"][0]
    assert german["last_name"].tolist() == [name, name, name, name.upper(), ""]
    plain, *others = german["full_name"]
    first, last = plain.split(" ")
    assert others == [f"{last.upper()}, {first.upper()}", f"{last}, {first}", plain.upper(), ""]

"""Columns of accounts: what is odd is rewritten, and all else stays as it is."""

from __future__ import annotations

import numpy as np
import pandas as pd
import pytest
from faker import Faker
from faker.providers.internet import Provider as Internet

import vantrel
from vantrel.sampling.addresses import Accounts, name_nobody, told_apart
from vantrel.sampling.texts import Column, joined, lines_of, parted, replaced

PLACES = ("en_GB", "de_DE", "ru_RU")
LANGUAGES = ("en", "de", "ru")


def column(texts: list[str]) -> Column:
    return pd.Series(texts, dtype=pd.Series(["x"]).dtype).array


def accounts(domain: str, fakers: list[Faker] | None = None) -> Accounts:
    made = fakers or [Faker(place) for place in PLACES]
    for faker in made if fakers is None else ():
        name_nobody(faker)
    return Accounts(LANGUAGES[: len(made)], made, domain)


@pytest.mark.parametrize("texts", [[], [""], ["a"], ["", "b", ""], ["ä", "直子", "z" * 40]])
def test_columns_become_bytes_and_come_back(texts: list[str]) -> None:
    there = column(texts)
    whole = "".join(f"{text}\n" for text in texts)
    assert joined(there) == whole.encode()
    signs, starts, ends = lines_of(there)
    cut = [signs[start:end].tobytes().decode() for start, end in zip(starts, ends, strict=True)]
    assert cut == texts
    plain = [text for text in texts if text.isascii()]
    back = parted("".join(f"{text}\n" for text in plain).encode(), there.dtype)
    assert back.tolist() == plain
    assert back.dtype == there.dtype


def test_a_part_of_a_column_is_read_as_it_is() -> None:
    part = column(["ab", "c", "def", "g"])[1:3]
    assert joined(part) == b"c\ndef\n"
    signs, starts, ends = lines_of(part)
    assert [signs[a:b].tobytes() for a, b in zip(starts, ends, strict=True)] == [b"c", b"def"]


def test_others_stand_in_their_places() -> None:
    there = column(["a", "b", "c", "d"])
    assert replaced(there, np.array([3, 1]), column(["x", "y"])).tolist() == ["a", "y", "c", "x"]


def test_user_names_that_became_alike_end_in_numbers() -> None:
    there = column(["a-b", "c", "a-b", "a-b2", "a-b"])
    assert told_apart(there).tolist() == ["a-b", "c", "a-b3", "a-b2", "a-b4"]
    assert told_apart(there[:2]).tolist() == ["a-b", "c"]
    assert told_apart(column([])).tolist() == []


def test_no_user_name_comes_twice_in_a_block_though_accents_fall() -> None:
    assert vantrel.people(40_000, countries=["SE"], columns=["username"], seed=1)[
        "username"
    ].is_unique


USERNAMES = {
    "anna.o'neil5": "anna.oneil5",
    "jörg-müller": "joerg-mueller",
    "hans-j..meier": "hans-j.meier",
    ".anna_": "anna_",
    "anna.": "anna",
    "анна_щукина7": "anna_shchukina7",
    "--": "--",
}


@pytest.mark.parametrize(("text", "written"), USERNAMES.items())
def test_user_names_are_such_as_every_system_takes(text: str, written: str) -> None:
    texts = column(["tom", text, "anna.b-c_9", text])
    places = np.array([0, 2 if "щ" in text else 1, 0, 2 if "щ" in text else 1])
    made = accounts("reserved").usernames(texts, places)
    assert made.tolist() == ["tom", written, "anna.b-c_9", written]


def test_a_letter_is_written_as_the_language_of_its_row_does() -> None:
    made = accounts("reserved").usernames(column(["öl", "öl", "öl"]), np.array([1, 0, 1]))
    assert made.tolist() == ["oel", "ol", "oel"]


def test_what_is_in_order_is_not_touched() -> None:
    texts = column(["tom@smith.example", "a.b-c_9@x-y.example"])
    assert accounts("reserved").addresses(texts, np.array([0, 1])) is texts


ADDRESSES = {
    "tom@-x-.example": "tom@x.example",
    "tom@.example": "tom@mail.example",
    "@x.example": "nobody@x.example",
    "tom.@x.example": "tom@x.example",
    "jörg@müller.example": "joerg@mueller.example",
}


@pytest.mark.parametrize(("text", "written"), ADDRESSES.items())
def test_addresses_are_such_as_every_system_takes(text: str, written: str) -> None:
    texts = column([text, "anna@jones.example"])
    made = accounts("reserved").addresses(texts, np.array([1, 0]))
    assert made.tolist() == [written, "anna@jones.example"]


def test_a_locale_with_domains_of_its_own_gets_none_that_may_belong_to_anybody() -> None:
    class Own(Internet):
        def domain_name(self, levels: int = 1) -> str:
            return "mail.firm.co.uk"

    own, usual = Faker("en_GB"), Faker("en_GB")
    own.add_provider(Own)
    for faker in (own, usual):
        name_nobody(faker)
    texts = column(["a@mail.firm.co.uk", "b@x.example"])
    made = accounts("reserved", [own, usual]).addresses(texts, np.array([0, 1]))
    assert made.tolist() == ["a@mail.example", "b@x.example"]


def test_all_get_the_one_domain() -> None:
    texts = column(["a@b.de", "ä@c.co.uk"])
    assert accounts("x.org").addresses(texts, np.array([0, 1])).tolist() == ["a@x.org", "ae@x.org"]


def test_domains_stay_as_faker_makes_them() -> None:
    texts = column(["a@b.de", "ä@c.co.uk"])
    made = accounts("as-made").addresses(texts, np.array([0, 1]))
    assert made.tolist() == ["a@b.de", "ae@c.co.uk"]

"""Columns that are told by their values alone to be personal, and columns that only look so."""

from __future__ import annotations

import random
from collections.abc import Callable
from datetime import date, timedelta
from itertools import count
from types import ModuleType

import pandas as pd
import pytest
from faker import Faker
from stdnum import imei, isbn, luhn
from stdnum.gb import nhs
from stdnum.nl import bsn

from vantrel.detection.personal import Finding, Kind, find_personal, numbers

ROWS = 60


def found(values: list[str], name: str = "x") -> tuple[Finding, ...]:
    return find_personal(pd.DataFrame({name: values}))


def kinds(values: list[str], name: str = "x") -> list[Kind]:
    return [finding.kind for finding in found(values, name)]


def made(locale: str, make: Callable[[Faker], object], rows: int = ROWS) -> list[str]:
    fake = Faker(locale)
    fake.seed_instance(7)
    return [str(make(fake)) for _ in range(rows)]


def day_of_birth(fake: Faker) -> date:
    """The same on whichever day the test runs."""
    return fake.date_between(date(1930, 1, 1), date(2015, 12, 31))


def with_check_digit(start: str) -> str:
    return start + str(luhn.calc_check_digit(start))


def with_last_digit(kind: ModuleType, number: str) -> str:
    """The next number of a kind whose check digit may be any of ten, though a sum has eleven."""
    following = (str(each) for each in count(int(number)))
    return next(text for each in following if kind.is_valid(text := each.rjust(len(number), "0")))


PLANTED: dict[str, tuple[Kind, str, Callable[[Faker], object]]] = {
    "births": (Kind.BIRTH, "en_US", lambda f: day_of_birth(f)),
    "births in German": (Kind.BIRTH, "de_DE", lambda f: day_of_birth(f).strftime("%d.%m.%Y")),
    "births in American": (Kind.BIRTH, "en_US", lambda f: day_of_birth(f).strftime("%m/%d/%Y")),
    "births as numbers": (Kind.BIRTH, "en_US", lambda f: day_of_birth(f).strftime("%Y%m%d")),
    "births at midnight": (Kind.BIRTH, "en_US", lambda f: f"{day_of_birth(f)} 00:00:00"),
    "IBANs": (Kind.ACCOUNT, "de_DE", lambda f: f.iban()),
    "IBANs in groups": (Kind.ACCOUNT, "fr_FR", lambda f: " ".join([(i := f.iban())[:4], i[4:]])),
    "Visa": (Kind.CARD, "en_US", lambda f: f.credit_card_number("visa")),
    "Mastercard": (Kind.CARD, "en_US", lambda f: f.credit_card_number("mastercard")),
    "American Express": (Kind.CARD, "en_US", lambda f: f.credit_card_number("amex")),
    "all cards": (Kind.CARD, "en_US", lambda f: f.credit_card_number()),
    "PESEL": (Kind.OFFICIAL, "pl_PL", lambda f: f.pesel()),
    "NIF": (Kind.OFFICIAL, "es_ES", lambda f: f.nif()),
    "NIE": (Kind.OFFICIAL, "es_ES", lambda f: f.nie()),
    "codice fiscale": (Kind.OFFICIAL, "it_IT", lambda f: f.ssn()),
    "NIR": (Kind.OFFICIAL, "fr_FR", lambda f: f.ssn()),
    "SSN": (Kind.OFFICIAL, "en_US", lambda f: f.ssn()),
    "NINO": (Kind.OFFICIAL, "en_GB", lambda f: f.bothify("AB ## ## ## C")),
    "HETU": (Kind.OFFICIAL, "fi_FI", lambda f: f.ssn()),
    "fødselsnummer": (Kind.OFFICIAL, "no_NO", lambda f: f.ssn()),
    "personnummer": (Kind.OFFICIAL, "sv_SE", lambda f: f.ssn()),
    "CNP": (Kind.OFFICIAL, "ro_RO", lambda f: f.ssn()),
    "isikukood": (Kind.OFFICIAL, "et_EE", lambda f: f.ssn()),
    "CPF": (Kind.OFFICIAL, "pt_BR", lambda f: f.cpf()),
    "NISS": (Kind.OFFICIAL, "nl_BE", lambda f: f.ssn()),
    "AHV": (Kind.OFFICIAL, "de_CH", lambda f: f.ssn()),
    "BSN": (Kind.OFFICIAL, "nl_NL", lambda f: with_last_digit(bsn, f.numerify("%########"))),
    "NHS": (Kind.OFFICIAL, "en_GB", lambda f: with_last_digit(nhs, f.numerify("4#########"))),
    "NHS in groups": (Kind.OFFICIAL, "en_GB", lambda f: nhs.format(with_last_digit(nhs, f.numerify("7#########")))),
    "CHI": (Kind.OFFICIAL, "en_GB", lambda f: with_last_digit(nhs, f"{day_of_birth(f):%d%m%y}{f.numerify('####')}")),
    "IPv4": (Kind.IP, "en_US", lambda f: f.ipv4()),
    "private IPv4": (Kind.IP, "en_US", lambda f: f.ipv4_private(network=False, address_class="c")),
    "IPv6": (Kind.IP, "en_US", lambda f: f.ipv6()),
    "MAC": (Kind.DEVICE, "en_US", lambda f: f.mac_address()),
    "MAC in Windows": (Kind.DEVICE, "en_US", lambda f: f.mac_address().upper().replace(":", "-")),
    "IMEI": (Kind.DEVICE, "en_US", lambda f: with_check_digit(f"35{f.numerify('#' * 12)}")),
    "positions": (Kind.POSITION, "en_US", lambda f: f"{f.latitude()}, {f.longitude()}"),
    "points": (Kind.POSITION, "en_US", lambda f: f"POINT({f.longitude()} {f.latitude()})"),
    "degrees": (Kind.POSITION, "en_US", lambda f: f"{f.random_int(0, 89)}°31'12\"N {f.random_int(0, 179)}°24'18\"E"),
    "pages": (Kind.PROFILE, "en_US", lambda f: f"https://www.linkedin.com/in/{f.user_name()}"),
    "names": (Kind.PEOPLE, "en_GB", lambda f: f"{f.first_name()} {f.last_name()}"),
    "names turned": (Kind.PEOPLE, "de_DE", lambda f: f"{f.last_name()}, {f.first_name()}"),
    "English notes": (Kind.PROSE, "en_GB", lambda f: f"Spoke to {f.first_name()} on the phone"),
    "notes in capitals": (Kind.PROSE, "en_GB", lambda f: f"CALL {f.first_name()} AFTER SIX".upper()),
    "Spanish abbreviations": (Kind.STREET, "es_ES", lambda f: f"C/ {f.last_name()} {f.random_digit()}"),
    "Portuguese abbreviations": (Kind.STREET, "pt_PT", lambda f: f"R. {f.last_name()}, s/n"),
    "German notes": (Kind.PROSE, "de_DE", lambda f: f"Bitte bei Frau {f.last_name()} klingeln"),
    "French notes": (Kind.PROSE, "fr_FR", lambda f: f"demander Mme {f.last_name()} au guichet"),
    "Polish notes": (Kind.PROSE, "pl_PL", lambda f: f"odbiera {f.first_name()} z pokoju 3"),
    **{
        f"streets of {locale}": (Kind.STREET, locale, lambda f: f.street_address())
        for locale in (
            "en_US", "en_GB", "de_DE", "fr_FR", "es_ES", "it_IT", "nl_NL", "pl_PL", "pt_PT",
            "sv_SE", "da_DK", "fi_FI", "hu_HU",
        )
    },
}  # fmt: skip


@pytest.mark.parametrize("planted", PLANTED)
def test_planted_columns_are_found(planted: str) -> None:
    kind, locale, make = PLANTED[planted]
    assert kinds(made(locale, make)) == [kind]


def test_what_was_seen_is_told() -> None:
    values = made("pl_PL", lambda f: f.pesel(), 9)
    why = "90.0% of its different values are valid Polish PESEL numbers"
    assert found([*values, "unknown"]) == (Finding("x", Kind.OFFICIAL, why),)


def test_five_of_five_tell_and_four_of_four_do_not() -> None:
    ibans = made("de_DE", lambda f: f.iban(), 5)
    assert kinds(ibans) == [Kind.ACCOUNT]
    assert kinds(ibans[:4]) == []


def test_four_of_five_values_must_be_of_a_kind() -> None:
    ibans = made("de_DE", lambda f: f.iban(), 8)
    assert kinds([*ibans, "none", "-"]) == [Kind.ACCOUNT]
    assert kinds([*ibans, "none", "-", "?"]) == []


def test_values_that_are_repeated_count_once() -> None:
    ibans = made("de_DE", lambda f: f.iban(), 4)
    assert kinds(ibans * 20) == []
    assert kinds(["unknown"] * 500 + made("de_DE", lambda f: f.iban(), 5)) == [Kind.ACCOUNT]


def test_addresses_names_and_days_of_things_are_nobodys() -> None:
    assert not kinds(made("fr_FR", lambda f: f.street_address()), "store_place")
    assert not kinds(made("en_GB", lambda f: f"{f.first_name()} {f.last_name()}"), "product_name")
    assert not kinds(made("en_GB", lambda f: day_of_birth(f)), "company_since")


def test_numbers_and_notes_are_somebodys_whatever_they_are_named_after() -> None:
    assert kinds(made("de_DE", lambda f: f.iban()), "company_iban") == [Kind.ACCOUNT]
    notes = made("en_GB", lambda f: f"{f.first_name()} asks for it in blue")
    assert kinds(notes, "product_notes") == [Kind.PROSE]


def _orders(seed: int, days: int) -> list[str]:
    rng = random.Random(seed)
    return [str(date(2025, 12, 31) - timedelta(rng.randrange(days))) for _ in range(200)]


def _contracts() -> list[str]:
    """Days of fifty years, from Monday to Friday."""
    days = (date(1970, 1, 1) + timedelta(37 * step) for step in range(480))
    return [str(day) for day in days if day.weekday() < 5]


def _spread(start: int, step: int, rows: int = 2_000) -> list[str]:
    return [str(start + step * row) for row in range(rows)]


def made_books(start: str, rows: int) -> list[str]:
    """Numbers of books of ten digits, or nine and an X."""
    rng = random.Random(5)
    starts = [
        f"{start}{rng.randrange(10 ** (9 - len(start))):0{9 - len(start)}}" for _ in range(rows)
    ]
    digits = "0123456789X"
    return [each + next(last for last in digits if isbn.is_valid(each + last)) for each in starts]


LOOKALIKES: dict[str, list[str]] = {
    "orders of a year": _orders(1, 365),
    "orders of fifteen years": _orders(2, 15 * 365),
    "contracts of fifty years": _contracts(),
    "times of a log": [f"{day} 10:{row % 60:02}:07" for row, day in enumerate(_orders(3, 30_000))],
    "orders of a year long past": [f"1980-{month:02}-{day:02}" for month in range(1, 13) for day in (1, 8, 20)],
    "orders of a growing shop": [str(date(1985, 1, 1) + timedelta(int(14_900 * (row / 300) ** 0.5))) for row in range(300)],
    "too few births": [f"{year}-03-05" for year in range(1935, 1992, 3)],
    "births and days to come": [f"{year}-03-05" for year in (*range(1940, 2000), *range(2040, 2080))],
    "days to come": [f"{year}-03-05" for year in range(2040, 2100)],
    "historic days": [f"{year}-03-05" for year in range(1700, 1900)],
    "years": [str(year) for year in range(1930, 2020)],
    "numbers of seven digits": _spread(1_950_101, 937),
    **{f"numbers of {n} digits": _spread(10 ** (n - 1) + 1, 1) for n in range(8, 20)},
    **{f"numbers of {n} digits by {s}": _spread(4 * 10 ** (n - 1), s) for n in (13, 15, 16, 19) for s in (8, 9, 10, 11, 99)},
    "invoices that begin as cards": _spread(4_539_000_000_000_000, 7),
    "devices in order": _spread(350_000_000_000_000, 3),
    "days and numbers": [f"260{1 + row % 9}{1 + row % 28:02}{row:05}" for row in range(2_000)],
    "times as numbers": _spread(1_700_000_000, 61),
    "times in milliseconds": _spread(1_700_000_000_000, 61_007),
    "articles": made("en_US", lambda f: f.ean13(), 500),
    "books": made("en_US", lambda f: f.isbn13(), 500),
    "books of Japan": made_books("4", 40),
    "books of Germany": made_books("33", 40),
    "product codes": made("en_US", lambda f: f.bothify("??-####-??").upper(), 500),
    "long codes": made("en_US", lambda f: f.bothify("??######?").upper(), 500),
    "versions of four parts": [f"{a}.{b}.{c}.0" for a in range(9) for b in range(9) for c in range(9)],
    "paragraphs": [f"{a}.{b}" for a in range(1, 20) for b in range(1, 9)],
    "times of day": [f"{hour:02}:{minute:02}:00" for hour in range(24) for minute in range(0, 60, 7)],
    "amounts": [f"{cents / 100:.2f}" for cents in range(-9_000, 9_000, 37)],
    "exact amounts": [f"{part / 1e6:.6f}" for part in range(-90_000_000, 90_000_000, 98_765)],
    "prices in pairs": [f"{row}.99, {row + 5}.49" for row in range(80)],
    "sizes": [f"{row} x {row + 5}" for row in range(80)],
    "pairs beyond the poles": [f"{row}.12345, 13.12345" for row in range(91, 400)],
    "postcodes": made("de_DE", lambda f: f.postcode(), 500),
    "house numbers": [f"{number}{letter}" for number in range(60) for letter in ("", "a")],
    "status": ["open", "waiting for approval", "sent to customer", "paid in full", "closed"] * 40,
    "towns": made("de_DE", lambda f: f.city(), 500),
    "countries": made("en_US", lambda f: f.country(), 500),
    "firms": made("en_US", lambda f: f.company(), 500),
    "German firms": made("de_DE", lambda f: f.company(), 500),
    "slogans": made("en_US", lambda f: f.catch_phrase(), 500),
    "jobs": made("en_US", lambda f: f.job(), 500),
    "senior jobs": made("en_US", lambda f: f"Sr {f.job()} Lead", 500),
    "descriptions": made("en_US", lambda f: f.sentence(12), 500),
    "German descriptions": made("de_DE", lambda f: f.sentence(12), 500),
    "French descriptions": made("fr_FR", lambda f: f.sentence(12), 500),
    "Spanish descriptions": made("es_ES", lambda f: f.sentence(12), 500),
    "addresses of pages": made("en_US", lambda f: f.url() + f.uri_path(), 500),
    "browsers": made("en_US", lambda f: f.user_agent(), 500),
    "identifiers": made("en_US", lambda f: f.uuid4(), 500),
    "vehicles": made("en_US", lambda f: f.vin(), 500),
    "banks": made("en_US", lambda f: f.swift(), 500),
    "words that are names, too": [
        f"{word} be looked at by the shop" for word in ("Will", "May", "Bill", "Grace", "Mark", "Hope", "Summer", "Rob", "August", "London")
    ],
    "abbreviations": [f"waits for the {word} form" for word in ("ADA", "IDA", "EVA", "LEO", "MAX", "TIM", "ANNA")],
    "walks": [f"From hut {row} the way leads over the pass and down the valley to the lake, then along the road and up again" for row in range(80)],
    "parks": made("en_US", lambda f: f"{f.color_name()} Park", 60),
    "one name in all texts": [f"The chair Ingrid with {row} screws" for row in range(80)],
    "measures": [f"{row}-pack of {row + 3} mm screws" for row in range(200)],
}  # fmt: skip


@pytest.mark.parametrize("lookalike", LOOKALIKES)
def test_columns_that_only_look_personal_are_left_alone(lookalike: str) -> None:
    assert found(LOOKALIKES[lookalike]) == ()


@pytest.mark.parametrize("module", sorted({*numbers.OFFICIAL} - {"us.ssn", "ch.ssn"}))
def test_hardly_any_number_passes_for_an_official_one_by_chance(module: str) -> None:
    is_valid = numbers.check_of(module, numbers.OFFICIAL[module][0])
    rng = random.Random(3)
    for digits in range(7, 17):
        texts = [f"{rng.randrange(10**digits):0{digits}}" for _ in range(2_000)]
        assert sum(map(bool, map(is_valid, texts))) <= 0.03 * len(texts), digits


@pytest.mark.parametrize("module", sorted(numbers.WEAK))
def test_one_number_in_eleven_passes_for_one_of_a_single_check_digit(module: str) -> None:
    form, _ = numbers.WEAK[module]
    is_valid = numbers.check_of(module, form)
    rng = random.Random(3)
    texts = [f"{rng.randrange(10**9, 10**10)}"[: 9 + (module == "gb.nhs")] for _ in range(3_000)]
    passing = [text for text in texts if is_valid(text)]
    assert len(passing) <= 0.11 * len(texts)
    assert kinds(texts) == []
    wrong = [str(int(text) + 1) for text in passing[:3]]
    assert kinds(passing[:39]) == []
    assert kinds(passing[:40]) == [Kind.OFFICIAL]
    assert kinds([*passing[:56], *wrong]) == []
    assert kinds([*passing[:57], *wrong]) == [Kind.OFFICIAL]


def test_one_imei_in_ten_passes_by_chance() -> None:
    passing = sum(imei.is_valid(text) for text in _spread(350_000_000_000_000, 1))
    assert passing == 200

"""Addresses, numbers and names of all of Faker's locales at once."""

from __future__ import annotations

import re
from pathlib import Path
from typing import Any

import pandas as pd
import phonenumbers
import pytest

import vantrel
from vantrel.rows import Ways
from vantrel.sampling.names import has_gendered_last_names, order_of_names
from vantrel.sampling.phones import formats_of
from vantrel.util.locale.locale import Provider, get_country_to_provder_map, valid_locales

# The pattern of HTML's e-mail input.
HTML = re.compile(
    r"[a-zA-Z0-9.!#$%&'*+/=?^_`{|}~-]+@[a-zA-Z0-9](?:[a-zA-Z0-9-]{0,61}[a-zA-Z0-9])?"
    r"(?:\.[a-zA-Z0-9](?:[a-zA-Z0-9-]{0,61}[a-zA-Z0-9])?)*"
)
LOCALES = [each for each in valid_locales(Provider.PERSON) if each != "fr_QC"]  # is fr_CA


def table(places: list[str], rows: int = 100) -> pd.DataFrame:
    """As many women as men of each place."""
    land = [place for place in places for _ in range(rows)]
    return pd.DataFrame({"sex": ["f", "m"] * (len(land) // 2), "land": land})


def sampled(places: list[str], rows: int = 100, ways: Ways | None = None) -> pd.DataFrame:
    generated = ["firstname", "lastname", "fullname", "email", "username"]
    generated += ["mobile_number", "home_number", "work_number"]
    df = table(places, rows)
    model = vantrel.fit(df, gender="sex", country="land", detect=False, generate=generated)
    model.meta.ways = ways or model.meta.ways
    return vantrel.sample(model, conditions=df, seed=3)


@pytest.fixture(scope="module")
def everybody() -> pd.DataFrame:
    return sampled(LOCALES)


def test_addresses_pass_the_pattern_of_html_and_belong_to_nobody(everybody: pd.DataFrame) -> None:
    assert everybody["email"].map(HTML.fullmatch).notna().all()
    assert everybody["email"].str.fullmatch(r"[a-z0-9._-]+@[a-z0-9-]+\.example").all()
    assert not everybody["email"].str.contains(r"\.\.|\.@|^\.|@-|-\.example").any()
    assert everybody["username"].str.fullmatch(r"[a-z0-9._-]+").all()
    assert (everybody["email"].str.partition("@")[2].groupby(everybody["land"]).nunique() > 3).all()


def test_letters_are_written_as_the_language_does() -> None:
    people = sampled(["DE", "PL", "JP"], 2_000)
    german = people[(people["land"] == "DE") & people["lastname"].str.contains("ö")]
    assert german["email"].str.contains("oe").all()
    polish = people[(people["land"] == "PL") & people["lastname"].str.contains("ł")]
    assert polish["username"].str.contains("l").all()
    naoko = people[people["firstname"] == "直子"]
    assert len(naoko) > 10
    assert naoko["username"].str.startswith("naoko").all()


def test_one_domain_for_all_and_those_that_faker_makes() -> None:
    one = sampled(["DE"], 50, Ways(email_domain="example.org"))
    assert one["email"].str.fullmatch(r"[a-z0-9._-]+@example\.org").all()
    other = sampled(["DE"], 50, Ways(email_domain="as-made"))
    assert other["email"].str.fullmatch(r"[a-z0-9._-]+@[a-z0-9.-]+\.(de|com|org|net)").all()


def region(locale: str) -> str:
    return locale.partition("_")[2]


@pytest.mark.parametrize("kind", ["mobile_number", "home_number", "work_number"])
def test_numbers_are_valid_in_their_country(kind: str) -> None:
    people = sampled(LOCALES, 40, Ways(phone_numbers="valid"))
    regions = people["land"].map(region)
    known = regions.isin(phonenumbers.SUPPORTED_REGIONS)
    assert known.mean() > 0.9
    usual = {"mobile_number": "MOBILE", "home_number": "FIXED_LINE", "work_number": "FIXED_LINE"}
    types = {getattr(phonenumbers.PhoneNumberType, usual[kind]), 2}  # of either
    for text, code in zip(people.loc[known, kind], regions[known], strict=True):
        number = phonenumbers.parse(text, code)
        assert phonenumbers.is_valid_number(number), (text, code)
        assert phonenumbers.number_type(number) in types, (text, code)


def test_numbers_are_kept_for_fiction_where_there_are_such() -> None:
    people = sampled(["GB", "US", "FR", "DE", "SE", "CA"], 40)
    for land in people["land"].unique():
        for column, kind in (("mobile_number", "mobile"), ("home_number", "fixed")):
            formats = formats_of(land, kind, is_valid=False)
            forms = "|".join(re.escape(each).replace("x", r"\d") for each in formats)
            assert people.loc[people["land"] == land, column].str.fullmatch(forms).all()


def test_a_format_that_was_set_is_kept_for_all_countries() -> None:
    config = vantrel.config.PersonModelConfig(mobile_number_format="+00 xx")
    df = table(["GB", "DE"])
    model = vantrel.fit(
        df, gender="sex", country="land", detect=False, generate=["mobile_number"], config=config
    )
    assert vantrel.sample(model, 50, seed=1)["mobile_number"].str.fullmatch(r"\+00 \d\d").all()


def test_a_format_for_all_countries_gives_way_to_those_of_single_ones() -> None:
    df = table(["GB", "DE"])
    formats = {"*": {"mobile_number": "1-x", "work_number": "2-x"}, "DE": {"work_number": "3-x"}}
    columns: dict[str, Any] = {"gender": "sex", "country": "land"}
    generated = ["mobile_number", "work_number"]
    model = vantrel.fit(df, detect=False, generate=generated, phone_formats=formats, **columns)
    people = vantrel.sample(model, 50, seed=1)
    assert people["mobile_number"].str.fullmatch(r"1-\d").all()
    starts = people["work_number"].str[:2].groupby(people["land"]).unique().map(list)
    assert starts.to_dict() == {"DE": ["3-"], "GB": ["2-"]}
    assert "1-x, each x a random digit" in str(vantrel.describe(model))


def test_last_names_are_known_to_follow_the_gender_where_they_do() -> None:
    fakers = get_country_to_provder_map(LOCALES, Provider.PERSON)
    gendered = {each for each in LOCALES if has_gendered_last_names(fakers[each])}
    expected = {"ru_RU", "cs_CZ", "el_GR", "is_IS", "bg_BG", "lv_LV", "sk_SK", "uk_UA", "lt_LT"}
    assert expected & set(LOCALES) <= gendered  # an old Faker has fewer
    assert not {"en_GB", "de_DE", "ja_JP", "fr_FR"} & gendered


def test_full_names_have_the_order_and_separator_of_the_language(everybody: pd.DataFrame) -> None:
    fakers = get_country_to_provder_map(LOCALES, Provider.PERSON)
    orders = {place: order_of_names(faker) for place, faker in fakers.items()}
    others = {place: tuple(order) for place, order in orders.items() if order != (False, " ")}
    of_their_own = {"ja_JP", "zh_CN", "zh_TW", "ko_KR", "hu_HU"}
    assert {place: others.get(place) for place in of_their_own} == {
        "ja_JP": (True, " "),
        "zh_CN": (True, ""),
        "zh_TW": (True, ""),
        "ko_KR": (True, ""),
        "hu_HU": (True, " "),
    }
    assert set(others) - of_their_own <= {"fr_DZ"}  # as Faker has it
    for land, (is_last_first, separator) in orders.items():
        own = everybody[everybody["land"] == land]
        names = ["lastname", "firstname"] if is_last_first else ["firstname", "lastname"]
        assert own["fullname"].tolist() == (own[names[0]] + separator + own[names[1]]).tolist()


@pytest.mark.parametrize(
    ("asked", "message"),
    [
        (
            {"email_domain": "a b"},
            "'email_domain' is a domain such as 'example.org', or 'reserved' or 'as-made', not 'a b'.",
        ),
        ({"phone_numbers": "all"}, "'phone_numbers' are 'fiction' or 'valid', not 'all'."),
        (
            {"phone_formats": {"DE": {"mobile": "1"}}},
            "'phone_formats' are formats in ASCII of mobile_number, home_number or work_number by"
            " country, as in {'DE': {'mobile_number': '0151 xxxxxxx'}}, not {'DE': {'mobile': '1'}}.",
        ),
        (
            {"phone_formats": {"DE": {"work_number": "1"}, "Germany": {"mobile_number": "2"}}},
            "'phone_formats' has one country twice, as 'DE' and 'Germany': leave one out.",
        ),
        (
            {"locales": {"India": "en_IN", "IN": "hi_IN"}},
            "'locales' has one country twice, as 'India' and 'IN': leave one out.",
        ),
    ],
)
def test_ways_that_are_none_are_refused(asked: dict[str, Any], message: str) -> None:
    with pytest.raises(vantrel.ArgumentError) as caught:
        vantrel.fit(table(["DE"]), **asked)
    assert str(caught.value) == message


def test_ways_are_kept_in_the_file(tmp_path: Path) -> None:
    df = table(["DE"])
    model = vantrel.fit(df, generate=["email"], email_domain="example.org", phone_numbers="valid")
    vantrel.save(model, tmp_path / "m.json")
    loaded = vantrel.load(tmp_path / "m.json")
    assert loaded.meta.ways == Ways("example.org", "valid")
    assert vantrel.sample(loaded, 5, seed=1)["email"].str.endswith("@example.org").all()


def test_a_country_gets_the_names_of_the_locale_that_was_named() -> None:
    df = table(["India", "GB"])
    asked: dict[str, Any] = {
        "gender": "sex",
        "country": "land",
        "detect": False,
        "generate": ["firstname"],
    }
    usual = vantrel.sample(vantrel.fit(df, locales={"IN": "hi_IN"}, **asked), 200, seed=1)
    indian = usual["land"] == "India"
    assert not usual.loc[indian, "firstname"].map(str.isascii).any()
    english = vantrel.sample(vantrel.fit(df, locales={"IN": "en_IN"}, **asked), 200, seed=1)
    assert english["firstname"].map(str.isascii).all()
    with pytest.raises(vantrel.UnknownPlaceError):
        vantrel.fit(df, locales={"Indja": "en_IN"}, **asked)


def test_locales_of_countries_need_a_column_of_countries() -> None:
    df = table(["India"])[["sex"]]
    with pytest.raises(vantrel.FittingError) as caught:
        vantrel.fit(df, locales={"India": "en_IN"}, generate=["firstname"])
    assert str(caught.value) == (
        "There are locales of countries, and no column of countries: name it, as in"
        " country='COLUMN', or tell where all people are from, as in locales=['en_IN']."
    )


@pytest.mark.parametrize("exact", ["yes", None, 1])
def test_exact_is_true_or_false(exact: Any) -> None:
    model = vantrel.fit(table(["DE"]))
    with pytest.raises(vantrel.ArgumentTypeError) as caught:
        vantrel.sample(model, 5, exact=exact)
    assert str(caught.value) == f"'exact' is True or False, not {exact!r}."

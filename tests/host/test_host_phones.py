"""Telephone numbers: formats of single countries, ranges for fiction, and more people than numbers."""

from __future__ import annotations

import logging
from typing import Any

import pandas as pd
import phonenumbers
import pytest

import vantrel
from vantrel.config import PersonModelConfig
from vantrel.sampling.phones import formats_of, numbers_in
from vantrel.storage.models import dumps, loads

NUMBERS = ["mobile_number", "home_number"]


def fitted(places: list[str], **asked: Any) -> Any:
    df = pd.DataFrame({"sex": ["f", "m"] * 100, "land": (places * 200)[:200]})
    asked = {"generate": NUMBERS} | asked
    return vantrel.fit(df, gender="sex", country="land", detect=False, **asked)


def by_land(people: pd.DataFrame, column: str, pattern: str) -> dict[str, float]:
    """The share of each country's numbers that are of a form."""
    matching = people[column].str.fullmatch(pattern)
    return {
        str(land): float(share) for land, share in matching.groupby(people["land"]).mean().items()
    }


def test_a_format_of_a_country_is_that_of_its_people_alone() -> None:
    formats = {"Germany": {"mobile_number": "+49 151 xxx-xxx"}, "FR": {"home_number": "x"}}
    model = fitted(["DE", "FR", "GB"], phone_formats=formats)
    people = vantrel.sample(loads(dumps(model)), 300, seed=1)
    assert by_land(people, "mobile_number", r"\+49 151 \d{3}-\d{3}") == {"DE": 1, "FR": 0, "GB": 0}
    assert by_land(people, "home_number", r"\d") == {"DE": 0, "FR": 1, "GB": 0}
    assert people.loc[people["land"] == "FR", "mobile_number"].str.startswith("06 39 98").all()


def test_it_comes_before_a_format_of_all_countries() -> None:
    config = PersonModelConfig(mobile_number_format="+00 xx")
    formats = {"DE": {"mobile_number": "+49 xx"}}
    model = fitted(["DE", "GB"], phone_formats=formats, config=config)
    people = vantrel.sample(model, 200, seed=1)
    assert by_land(people, "mobile_number", r"\+49 \d\d") == {"DE": 1, "GB": 0}
    assert by_land(people, "mobile_number", r"\+00 \d\d") == {"DE": 0, "GB": 1}


@pytest.mark.parametrize(
    "formats",
    [
        5,
        "DE",
        {"DE": "0151"},
        {"DE": {"mobile": "x"}},
        {"DE": {"home_number": "1\n"}},
        {"DE": {"home_number": ""}},
    ],
)
def test_formats_that_are_none_are_refused(formats: Any) -> None:
    with pytest.raises(vantrel.ArgumentError) as caught:
        fitted(["DE"], phone_formats=formats)
    assert str(caught.value) == (
        "'phone_formats' are formats in ASCII of mobile_number, home_number or work_number by"
        f" country, as in {{'DE': {{'mobile_number': '0151 xxxxxxx'}}}}, not {formats!r}."
    )


def test_formats_of_what_is_no_country_are_refused() -> None:
    with pytest.raises(vantrel.UnknownPlaceError) as caught:
        fitted(["DE"], phone_formats={"Grmany": {}})
    assert str(caught.value) == (
        "'Grmany' is neither a country nor a locale. Did you mean 'Germany'? Write a country as its"
        " ISO code, its English name or its name in its own language, a locale as 'en_GB'."
    )


def test_show_tells_formats_and_letters() -> None:
    model = fitted(["DE"], phone_formats={"DE": {"home_number": "x"}}, latin=True)
    shown = str(vantrel.describe(model))
    assert 'phone_formats {"DE": {"home_number": "x"}}' in " ".join(shown.split())
    assert "latin true" in " ".join(shown.split())
    assert "Settings" not in str(vantrel.describe(fitted(["DE"])))


@pytest.mark.parametrize(("region", "own", "other"), [("US", "212", "416"), ("CA", "416", "212")])
def test_north_americans_have_the_numbers_of_all_their_area_codes(
    region: str, own: str, other: str
) -> None:
    formats = formats_of(region, "mobile", is_valid=False)
    assert f"({own}) 555-01xx" in formats
    assert f"({other}) 555-01xx" not in formats
    assert all(each.endswith(") 555-01xx") for each in formats)
    assert numbers_in(formats) == 100 * len(formats)
    assert len(formats) > (40 if region == "CA" else 300)
    for each in formats:
        number = phonenumbers.parse(each.replace("x", "5"), region)
        assert phonenumbers.region_code_for_number(number) in (region, None)


REMEDY = " With phone_numbers='valid', fit and people take others, which may be somebody's."


def note(people: str) -> str:
    return (
        "Some telephone numbers come more than once: mobile_number in GB (1,000 kept for fiction,"
        f" for {people} people).{REMEDY}"
    )


def told(caplog: pytest.LogCaptureFixture, model: Any, *given: Any, **asked: Any) -> list[str]:
    caplog.clear()
    with caplog.at_level(logging.INFO, "vantrel.notes"):
        vantrel.sample(model, *given, seed=1, **asked)
    return caplog.messages


def test_more_people_than_numbers_are_told_of(caplog: pytest.LogCaptureFixture) -> None:
    model = fitted(["GB", "FR", "United Kingdom"])
    assert told(caplog, model, 1_490) == []
    assert told(caplog, model, 1_510) == [note("1,004")]
    assert told(caplog, model, 1_510, exact=True) == []
    assert told(caplog, fitted(["GB"], phone_numbers="valid"), 1_510) == []
    own = fitted(["GB", "FR"], phone_formats={"GB": {"mobile_number": "0 xxxx"}})
    assert told(caplog, own, 3_000) == []
    few = fitted(["GB"], phone_formats={"GB": {"mobile_number": "0 x"}})
    assert told(caplog, few, 11) == [
        "Some telephone numbers come more than once: mobile_number in GB (10, for 11 people)."
    ]
    assert told(caplog, fitted(["GB", "FR"], generate=["email"]), 9_000) == []


def test_given_countries_are_counted_and_so_are_locales(caplog: pytest.LogCaptureFixture) -> None:
    model = fitted(["GB", "FR"])
    lands = pd.Series(["GB"] * 1_001 + ["zz", None] * 500, dtype=object)
    given = lands.to_frame("land")
    assert told(caplog, model, conditions=given) == [note("1,001")]
    assert told(caplog, model, conditions=given[1:]) == []
    df = pd.DataFrame({"sex": ["f", "m"] * 10})
    british = vantrel.fit(df, generate=["mobile_number"], locales=["en_GB", "fr_FR"])
    assert told(caplog, british, 2_002) == [note("1,001")]
    assert told(caplog, british, 2_000) == []


@pytest.mark.parametrize("region", ["PL", "AT", "CH", "FI", "DE", "IT", "LU"])
@pytest.mark.parametrize("kind", ["mobile", "fixed"])
def test_valid_numbers_are_as_long_as_usual_and_many(region: str, kind: str) -> None:
    types = phonenumbers.PhoneNumberType
    usual = types.MOBILE if kind == "mobile" else types.FIXED_LINE
    example = phonenumbers.example_number_for_type(region, usual)
    assert example
    formats = formats_of(region, kind, is_valid=True)
    made = [phonenumbers.parse(each.replace("x", "5"), region) for each in formats]
    lengths = {len(phonenumbers.national_significant_number(each)) for each in (*made, example)}
    assert len(lengths) == 1
    assert numbers_in(formats) > 100_000


@pytest.mark.parametrize(
    ("region", "starts"),
    [("BG", {"087", "088", "089"}), ("CH", {"075", "076", "077", "078", "079"})],
)
def test_mobile_numbers_begin_as_people_have_them(region: str, starts: set[str]) -> None:
    formats = formats_of(region, "mobile", is_valid=True)
    assert {each[:3] for each in formats} == starts
    assert {len(each.replace(" ", "")) for each in formats} == {10}

"""Countries, locales and their generators of names."""

import locale as standard_locale
import warnings
from typing import Any

import numpy as np
import pandas as pd
import pytest
from faker import Faker
from faker.config import AVAILABLE_LOCALES

from vantrel.util.locale import countries
from vantrel.util.locale.countries import (
    country_codes,
    country_name,
    folded,
    foreign_names,
    stands_for_nothing,
)
from vantrel.util.locale.faker_locales import locale_for_country
from vantrel.util.locale.locale import (
    Provider,
    get_country_to_provder_map,
    get_supported_country_codes,
    get_supported_country_names,
    recognise,
    told_unknown,
    unknown_places,
    valid_locales,
)


def locales_for(*places: str) -> list[str]:
    providers = get_country_to_provder_map(list(places), Provider.PERSON)
    return [provider.locales[0] for provider in providers.values()]


@pytest.mark.parametrize(
    ("written", "locale"),
    [
        ("GB", "en_GB"),
        ("gb", "en_GB"),
        ("GBR", "en_GB"),
        ("United Kingdom", "en_GB"),
        ("UK", "en_GB"),
        ("U.K.", "en_GB"),
        ("Great Britain", "en_GB"),
        ("Scotland", "en_GB"),
        ("USA", "en_US"),
        ("U.S.A.", "en_US"),
        ("the United States of America", "en_US"),
        ("United States", "en_US"),
        ("Russia", "ru_RU"),
        ("South Korea", "ko_KR"),
        ("Korea, Republic of", "ko_KR"),
        ("Turkey", "tr_TR"),
        ("Türkiye", "tr_TR"),
        ("TURKIYE", "tr_TR"),
        ("Czech Republic", "cs_CZ"),
        ("Viet Nam", "vi_VN"),
        ("Vietnam", "vi_VN"),
        ("Holland", "nl_NL"),
        (" Germany ", "de_DE"),
        ("pt_BR", "pt_BR"),
        ("pt-BR", "pt_BR"),
        ("PT_br", "pt_BR"),
        ("Deutschland", "de_DE"),
        ("österreich", "de_AT"),
        ("OSTERREICH", "de_AT"),
        ("Schweiz", "de_CH"),
        ("Suisse", "de_CH"),
        ("Polska", "pl_PL"),
        ("Россия", "ru_RU"),
        ("日本", "ja_JP"),
    ],
)
def test_a_place_may_be_written_in_many_ways(written: str, locale: str) -> None:
    assert locales_for(written) == [locale]


# An old Faker has names of one of the two languages only.
NIGERIAN = "en_NG" if "en_NG" in AVAILABLE_LOCALES else "yo_NG"


@pytest.mark.parametrize(
    ("country", "locale"),
    [("CH", "de_CH"), ("BE", "nl_BE"), ("IN", "hi_IN"), ("TH", "th_TH"), ("NG", NIGERIAN)],
)
def test_of_several_locales_the_most_spoken_official_language_is_taken(
    country: str, locale: str
) -> None:
    assert locales_for(country) == [locale]
    assert get_supported_country_codes(Provider.PERSON)[country][0] == locale


def test_each_value_gets_an_instance_of_its_own_under_its_very_spelling() -> None:
    providers = get_country_to_provder_map(["USA", "US", "USA"], Provider.PERSON)
    assert type(providers) is dict
    assert list(providers) == ["USA", "US"]
    assert providers["USA"] is not providers["US"]
    assert all(type(provider) is Faker for provider in providers.values())


def test_missing_values_are_left_out() -> None:
    places: list[Any] = [None, "GB", float("nan"), pd.NA, np.nan]
    assert list(get_country_to_provder_map(places, Provider.PERSON)) == ["GB"]


def test_no_places_give_an_empty_map() -> None:
    assert get_country_to_provder_map([], Provider.PERSON) == {}


def test_namibia_is_not_a_missing_value() -> None:
    with pytest.warns(UserWarning, match="NA \\(en_GB\\)"):
        assert locales_for("NA") == ["en_GB"]


def test_words_for_nothing_are_no_country_however_they_are_written() -> None:
    spellings = ["n/a", "N/A", "N.A.", "n.a", "na", "Na.", "<NA>", "#N/A", "n\\a", "N A", "NaN"]
    words = ["-", "?", "", "none", "NULL", "Unknown", "unk", "TBD", "Other", "others", "not known"]
    assert unknown_places([*spellings, *words]) == [*spellings, *words]
    assert recognise(" NA ") == recognise("Namibia") == recognise("NAM")
    for word in [*spellings, *words]:
        assert "Did you mean" not in told_unknown([word])


def test_words_for_nothing_are_no_names_of_countries() -> None:
    names = {*country_codes(), *foreign_names(), *map(folded, AVAILABLE_LOCALES)}
    assert set(filter(stands_for_nothing, names)) == {"na"}


def test_one_warning_names_all_places_without_names_of_their_own() -> None:
    with pytest.warns(UserWarning) as caught:
        locales = locales_for("GB", "Namibia", "Peru", "en_AU", "Hong Kong", "Tajikistan")
    assert locales == ["en_GB", "en_GB", "es_ES", "en_GB", "zh_TW", "en_GB"]
    assert [str(warning.message) for warning in caught] == [
        "Faker has no person names of its own for these; they get those of the locale in brackets:"
        " Namibia (en_GB), Peru (es_ES), en_AU (en_GB), Hong Kong (zh_TW), Tajikistan (en_GB)."
    ]


@pytest.mark.parametrize(
    ("locale", "instead"),
    [("it_CH", "it_IT"), ("ar_EG", "ar_AA"), ("dk_DK", "da_DK"), ("tl_PH", "en_GB")],
)
def test_a_locale_without_names_gets_those_of_its_language_or_its_country(
    locale: str, instead: str
) -> None:
    with pytest.warns(UserWarning):
        assert locales_for(locale) == [instead]


def test_a_warning_points_at_the_caller() -> None:
    with pytest.warns(UserWarning) as caught:
        get_country_to_provder_map(["Namibia"], Provider.PERSON)
    assert caught[0].filename == __file__


def test_a_locale_written_exactly_comes_before_a_country() -> None:
    with pytest.warns(UserWarning, match="la \\(en_GB\\)"):
        locales_for("la")  # Latin
    assert country_codes()[folded("LA")] == "LA"  # Laos


def test_names_in_other_languages_come_last(monkeypatch: pytest.MonkeyPatch) -> None:
    names = dict.fromkeys(["germany", "de", "deu", "pt br", "la", "helvetia"], "CH")
    monkeypatch.setattr("vantrel.util.locale.locale.foreign_names", lambda: names)
    found = [recognise(place) for place in ("Germany", "DE", "DEU", "PT_br", "la", "Helvetia")]
    assert [place and (place.country or place.locale) for place in found] == [
        "DE", "DE", "DE", "pt_BR", "la", "CH",
    ]  # fmt: skip


def test_a_name_that_two_countries_share_is_neither(monkeypatch: pytest.MonkeyPatch) -> None:
    names = {"DE": "Alemannia", "AT": "alemannia", "CH": "Helvetia", "LI": "France", "IM": "Man"}
    country_codes()  # reads the English names
    monkeypatch.setattr(countries, "_names_in", lambda language: names)
    assert foreign_names.__wrapped__() == {"helvetia": "CH"}


def test_names_in_other_languages_are_read_only_when_nothing_else_is_known() -> None:
    foreign_names.cache_clear()
    locales_for("GB", "Germany", "pt-br")
    assert foreign_names.cache_info().misses == 0
    locales_for("Deutschland", "Schweiz", "Frankreich", "Polen")
    assert foreign_names.cache_info().misses == 1


@pytest.mark.parametrize(
    ("place", "hint"),
    [
        ("Germny", " Did you mean 'Germany'"),
        ("Österreih", " Did you mean 'Austria'?"),
        ("en_XX", " Write a country"),
        ("qqqqqqqq", " Write a country"),
        ("", " Write a country"),
    ],
)
def test_what_is_no_place_is_refused_with_the_nearest_names(place: str, hint: str) -> None:
    with pytest.raises(ValueError) as caught:
        locales_for("GB", place)
    assert str(caught.value).startswith(f"{place!r} is neither a country nor a locale.{hint}")
    assert str(caught.value).endswith(
        " Write a country as its ISO code, its English name or its name in its own language, a"
        " locale as 'en_GB'."
    )


def test_all_unknown_places_are_named_at_once() -> None:
    with pytest.raises(ValueError) as caught:
        locales_for("GB", "Germny", "qqqqqqqq")
    assert str(caught.value) == (
        "These are neither countries nor locales: 'Germny' (did you mean 'Germany'?), 'qqqqqqqq'."
        " Write a country as its ISO code, its English name or its name in its own language, a"
        " locale as 'en_GB'."
    )


def test_of_many_unknown_places_some_are_named() -> None:
    with pytest.raises(ValueError, match=r"'qqqq19' and 2 more\. Write"):
        locales_for(*(f"qqqq{i}" for i in range(22)))


def test_countries_and_locales_are_those_with_names_of_their_own() -> None:
    codes = get_supported_country_codes(Provider.PERSON)
    locales = valid_locales(Provider.PERSON)
    assert type(codes) is dict
    assert type(locales) is list
    assert all(type(own) is list for own in codes.values())
    assert list(codes) == sorted(codes)
    assert locales == sorted(locales)
    assert {locale for own in codes.values() for locale in own} <= set(locales)
    assert codes["GB"] == ["en_GB"]
    assert "AU" not in codes
    assert "en_AU" not in locales
    assert "QC" not in codes  # fr_QC is a locale, Quebec no country
    assert "fr_QC" in locales


def test_names_are_the_codes_written_out() -> None:
    names = get_supported_country_names(Provider.PERSON)
    codes = get_supported_country_codes(Provider.PERSON)
    assert type(names) is dict
    assert names == {country_name(code): own for code, own in codes.items()}
    assert list(names) == sorted(names)


def test_results_are_the_callers_own() -> None:
    get_supported_country_codes(Provider.PERSON)["GB"].append("zz")
    get_supported_country_names(Provider.PERSON)["France"].append("zz")
    valid_locales(Provider.PERSON).append("zz")
    assert get_supported_country_codes(Provider.PERSON)["GB"] == ["en_GB"]
    assert get_supported_country_names(Provider.PERSON)["France"] == ["fr_FR"]
    assert "zz" not in valid_locales(Provider.PERSON)


def test_another_provider_is_refused() -> None:
    with pytest.raises(ValueError, match=r"^No locales are known for 'person': use"):
        valid_locales("person")  # type: ignore[arg-type]  # that is the test


def test_what_counts_as_own_names_is_what_faker_really_takes() -> None:
    american = set()
    for locale in AVAILABLE_LOCALES:
        with warnings.catch_warnings():
            warnings.simplefilter("ignore", UserWarning)  # some locales are deprecated
            providers = Faker(locale).providers
        (source,) = {p.__lang__ for p in providers if p.__provider__ == "faker.providers.person"}
        if source != standard_locale.normalize(locale).split(".")[0]:
            american.add(locale)
    assert set(AVAILABLE_LOCALES) - american == set(valid_locales(Provider.PERSON))


def test_every_country_and_locale_has_a_generator_that_works() -> None:
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", UserWarning)
        chosen = {locale_for_country(code)[0] for code in set(country_codes().values())}
        providers = get_country_to_provder_map([*chosen, *AVAILABLE_LOCALES], Provider.PERSON)
    assert all(provider.first_name() and provider.last_name() for provider in providers.values())

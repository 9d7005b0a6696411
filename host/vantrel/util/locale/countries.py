"""Recognises countries however people write them."""

import unicodedata
from collections import defaultdict
from functools import cache

import pycountry
from babel import Locale, UnknownLocaleError
from babel.languages import get_official_languages

# Two-letter codes that are in use though the standard has none for the territory.
_BEYOND_THE_STANDARD = {"XK": "XKX"}

# Names in use that neither the standard nor babel's English names have.
_ALIASES = {
    "AE": ["UAE", "Emirates"],
    "BN": ["Brunei Darussalam"],
    "CD": ["DR Congo", "DRC", "Democratic Republic of the Congo"],
    "CG": ["Republic of the Congo", "Congo"],
    "CI": ["Ivory Coast"],
    "CV": ["Cabo Verde"],
    "CZ": ["Czech Republic"],
    "FM": ["Micronesia"],
    "GB": ["UK", "Great Britain", "Britain", "England", "Scotland", "Wales", "Northern Ireland"],
    "HK": ["Hong Kong"],
    "KR": ["Korea", "Republic of Korea"],
    "KP": ["DPRK"],
    "MK": ["Macedonia", "FYROM"],
    "MM": ["Burma"],
    "MO": ["Macau", "Macao"],
    "NL": ["Holland"],
    "PS": ["Palestine"],
    "RU": ["Russia"],
    "SZ": ["Swaziland"],
    "TL": ["East Timor"],
    "TR": ["Turkey"],
    "US": ["USA", "United States of America", "America"],
    "VA": ["Vatican", "Holy See"],
    "VN": ["Viet Nam"],
}

# What people write, folded, where they know no country.
_NOTHING = frozenset(
    (
        *("", "na", "n a", "nk", "n k", "nan", "nil", "none", "null", "void", "empty", "missing"),
        *("unk", "unknown", "unspecified", "undisclosed", "undefined", "any", "other", "others"),
        *("not applicable", "not available", "not given", "not known", "not specified"),
        *("not stated", "no answer", "unknown country", "other country"),
        *("tba", "tbc", "tbd", "xx", "zz"),
    )
)


def stands_for_nothing(text: str) -> bool:
    """Whether a text is one of those that people write where they know no country.

    Case, dots and blanks do not count, with one exception: "NA" in capitals is Namibia, as the
    standard has it. pandas reads that as a missing value unless it is told otherwise, so whoever
    has it in a frame has kept it for the sake of the code. "na", "N.A." and "n/a" are not read so,
    or not in all forms; they come from people who had nothing to say.
    """
    return text.strip() != "NA" and folded(text) in _NOTHING


def folded(name: str) -> str:
    """Strips a name of what does not tell countries apart: case, accents, dots, "the"."""
    decomposed = unicodedata.normalize("NFKD", name.casefold().replace("&", " and "))
    plain = "".join(c for c in decomposed if not unicodedata.combining(c) and c != ".")
    words = "".join(c if c.isalnum() else " " for c in plain).split()
    return " ".join(words[1:] if words[:1] == ["the"] else words)


def country_name(code: str) -> str:
    """Gives the English name of a country.

    Args:
        code: The two-letter code, in capitals.
    """
    return _english_names()[code]


@cache
def country_codes() -> dict[str, str]:
    """Maps every folded way to write a country to its two-letter code."""
    codes: dict[str, str] = {}
    english = _english_names()
    for country in pycountry.countries:
        for spelling in ("alpha_2", "alpha_3", "name", "common_name", "official_name"):
            if hasattr(country, spelling):
                codes.setdefault(folded(getattr(country, spelling)), country.alpha_2)
        codes.setdefault(folded(english[country.alpha_2]), country.alpha_2)
    for code, alpha_3 in _BEYOND_THE_STANDARD.items():
        for spelling in (code, alpha_3, english[code]):
            codes.setdefault(folded(spelling), code)
    for code, names in _ALIASES.items():
        for name in names:
            codes.setdefault(folded(name), code)
    return codes


@cache
def foreign_names() -> dict[str, str]:
    """Maps the folded names of countries in all official languages to their two-letter codes.

    Names that another country shares, or that mean one in English, are left out, and so are those
    of up to three letters: "Man" is an island in Danish. The first call takes up to a second: it
    reads the names of all these languages.
    """
    known = country_codes()
    countries = set(known.values())
    codes: dict[str, set[str]] = defaultdict(set)
    for language in {each for code in countries for each in official_languages(code)}:
        for code, name in _names_in(language).items():
            if code in countries:
                codes[folded(name)].add(code)
    return {
        name: min(of)
        for name, of in codes.items()
        if len(of) == 1 and name not in known and not (len(name) <= 3 and name.isascii())
    }


def official_languages(code: str) -> tuple[str, ...]:
    """Lists the languages of a country, the most spoken first.

    Args:
        code: The two-letter code, in capitals.
    """
    return tuple(get_official_languages(code, de_facto=True))


@cache
def _names_in(language: str) -> dict[str, str]:
    try:
        return dict(Locale.parse(language).territories)
    except UnknownLocaleError:  # babel knows of the language and not its words
        return {}


def _english_names() -> dict[str, str]:
    return _names_in("en")

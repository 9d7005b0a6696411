"""Recognises the parts of postal addresses."""

from __future__ import annotations

import re

from vantrel.detection.names import words_of
from vantrel.detection.personal.texts import told

# Words for streets, folded as names of columns are, and what streets of one word end in.
_STREETS = frozenset(
    """
    street st road rd avenue ave lane ln drive dr way court ct place pl boulevard blvd square sq
    close terrace crescent gardens row hill park parkway pkwy highway hwy circle cir trail grove
    mews walk rise view green alley bridge brook burg bypass canyon cape causeway center centre
    cliff club common corner course cove creek crest crossing crossroad curve dale dam divide
    estate expressway extension fall falls ferry field flat ford forest forge fork fort freeway
    garden gateway glen harbor haven heights hollow inlet island isle junction key knoll lake land
    landing light loaf lock lodge loop mall manor meadow mill mission motorway mount mountain neck
    orchard oval overpass parks pass passage path pike pine plain plaza point port prairie radial
    ramp ranch rapid rest ridge river route run shoal shore skyway spring spur squares station
    stravenue stream summit throughway trace track trafficway tunnel turnpike underpass union
    valley viaduct village ville vista well pines
    strasse str weg platz allee gasse ring damm ufer chaussee steig markt
    rue chemin impasse quai cours place avenue av bd route passage sentier
    via viale piazza corso strada vicolo largo contrada borgo piazzale rotonda stretto incrocio
    calle pasadizo vial avenida avda plaza paseo camino ronda pasaje glorieta cuesta callejon
    urbanizacion acceso alameda canada rambla carrer cl
    rua travessa praca estrada beco rotunda
    ulica ul aleja al plac os osiedle ulice namesti nam trida
    utca ut ter korut koz sor fasor setany
    strada bulevardul soseaua calea aleea drumul intrarea str
    sokak sokagi cadde caddesi mahallesi mah bulvari cad sok
    gade vej vei veien gata gaten alle plads plass
    """.split()
)
_ENDINGS = tuple(
    """
    strasse str weg platz allee gasse ring damm ufer chaussee steig
    straat laan plein gracht kade dijk singel boulevard hof pad steeg dreef baan
    gatan vagen grand stigen torget gade vej vejen veien gata gaten alle vangen straede
    katu tie kuja polku bulevardi
    """.split()
)
# "C/ Mayor 5", "R. do Sol, 7"
_ABBREVIATED = re.compile(r"(?:[Cc][./]|[Rr]\.)\s*[^\W\d_]")
_NUMBERED = re.compile(r"\d|\b[Ss]/[Nn]\b")  # s/n: sin número, sem número

# An address with a flat, a town and a country has no more words; descriptions often have.
_MOST_WORDS = 16

_LETTER = re.compile(r"[^\W\d_]")
_HOUSE_NUMBER = re.compile(
    r"(?:no?\.?\s*|nr\.?\s*)?\d{1,5}\s*[a-z]?(?:\s*[-/+]\s*\d*\s*[a-z]?)?", re.IGNORECASE
)
_POSTCODE = re.compile(r"(?=.*\d)[A-Z\d][A-Z\d -]{1,10}[A-Z\d]", re.IGNORECASE)
_LONGEST_WORD, _LONGEST_CITY = 30, 60


def can_be_street(text: str) -> bool:
    """Whether a text may be a street or a whole address, and not one in a network or of a bank."""
    longest = max(map(len, text.split()), default=0)
    return bool(_LETTER.search(text)) and "@" not in text and longest <= _LONGEST_WORD


def can_be_house_number(text: str) -> bool:
    """Whether a text may be the number of a house."""
    return bool(_HOUSE_NUMBER.fullmatch(text))


def can_be_postcode(text: str) -> bool:
    """Whether a text may be a postcode of any country."""
    return bool(_POSTCODE.fullmatch(text))


def can_be_city(text: str) -> bool:
    """Whether a text may be the name of a town."""
    return bool(_LETTER.match(text)) and "@" not in text and len(text) <= _LONGEST_CITY


def told_streets(texts: list[str]) -> str | None:
    """Tells whether values are streets with the number of a house."""
    return told(texts, _is_street, "are streets with a house number")


def _is_street(text: str) -> bool:
    if not _NUMBERED.search(text):
        return False
    words = words_of(text)
    is_street = bool(_ABBREVIATED.match(text)) or any(map(_is_word_for_street, words))
    return is_street and len(words) <= _MOST_WORDS


def _is_word_for_street(word: str) -> bool:
    return word in _STREETS or word.removesuffix("s") in _STREETS or word.endswith(_ENDINGS)

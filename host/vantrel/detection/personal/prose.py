"""Recognises names of people, by themselves and within sentences."""

from __future__ import annotations

import re
from collections.abc import Iterator
from functools import cache
from importlib import import_module

from vantrel.detection.personal.texts import seen, told
from vantrel.detection.values import is_full_name

# The languages that write names with capitals and whose tables are likeliest to come.
_LOCALES = """
    en_GB en_US de_DE de_AT de_CH fr_FR es_ES es_MX it_IT nl_NL nl_BE pl_PL pt_PT pt_BR sv_SE da_DK
    no_NO fi_FI cs_CZ sk_SK hu_HU ro_RO tr_TR hr_HR sl_SI
""".split()
_LISTS = ("first_names", "first_names_female", "first_names_male")

# First names that are also words at the beginning of a sentence, months, places or goods.
_WORDS = frozenset(
    """
    abril alle among amor ante april art august austin beat bello berg best bett bill blanca bonnie
    brooklyn campo can cara carolina chance charity charlotte chase che chelsea chi christian cielo
    clair clay cliff dale dallas dawn day dean del della deviner dolores dom domenica domingo don
    drew duke durante dünya día earl eden else ever faith fleur floor florence forest franc francia
    frank gala gale gene georgia gioia glen gold golden grace grant grazia greco gun guy harmony
    hasta heather holly hope houston indie iris isla israel ivy jackson jersey job jordan joy juin
    julio june junio junior justice kapitola karta king klas kort lance land lane lien line london
    long lot love luce luna mad madison magni maj man mar mark martes may mercedes merit miles mille
    min mini mír nada norma nula oba olive ona page paris pat patience peace pearl penny per pero
    pietra precious price prima prince prudence queen ray rich river rob roman rosa rose royal ruby
    sad sage salud san sandy santa santiago savannah segundo sera server sever sky sol sole star
    steen stein stella sterling stone storm sue summer sunny sydney tage tan til tor trinity una uno
    urban valný van veer ver verde victoria vida vide villa ville vino vinný violet virginia vita
    von vorm wade ward washington west will wolf wood yeni young zak
    """.split()
)
_SHORTEST = 3

_TITLES = r"""(?:Mr|Mrs|Ms|Miss|Mx|Dr|Prof|Herrn?|Frau|Fräulein|Monsieur|Madame|Mme|Mlle|Sra|Srta
    |Señora?|Don|Doña|Dona|Sig|Signora?|Sig\.ra|Dott|Dhr|Mevr|Mevrouw|Meneer|Pani?|Pana|Paní)"""
_CAPITALISED = r"[^\W\d_a-zß-öø-ÿ][^\W\d_]+"
_TITLED = re.compile(rf"\b{_TITLES}\.?\s+{_CAPITALISED}", re.VERBOSE)
_WORD = re.compile(r"[^\W\d_]+")

# In sentences names are told by fewer: most notes are of things.
_LEAST_SENTENCES = 0.5
_FEWEST_WORDS = 3
_LEAST_NAMING = 0.1
_FEWEST_NAMED = 5


def told_names(texts: list[str]) -> str | None:
    """Tells whether values are first and last names, and no more."""
    return told(texts, _is_persons_name, "are a first name and another name")


def told_sentences(texts: list[str]) -> str | None:
    """Tells whether many of the values are several words with somebody's name in them."""
    sentences = [text for text in texts if text.count(" ") >= _FEWEST_WORDS - 1]
    if len(sentences) < _LEAST_SENTENCES * len(texts):
        return None
    names = [name for name in map(_name_in, sentences) if name]
    if len(names) < _LEAST_NAMING * len(texts) or len(set(names)) < _FEWEST_NAMED:
        return None
    return seen(
        len(names) / len(texts), "are texts with a first name or a title such as Mr in them"
    )


def _is_persons_name(text: str) -> bool:
    words = _WORD.findall(text.partition(",")[2] or text)
    if not words or words[0].lower() not in _first_names():
        return False
    return words[-1][0].isupper() and is_full_name(text)


def _name_in(text: str) -> str | None:
    """The first name in a text that is of a person, with its title if it has one."""
    if titled := _TITLED.search(text):
        return titled[0]
    return next(_first_names_in(text), None)


def _first_names_in(text: str) -> Iterator[str]:
    known, is_in_capitals = _first_names(), text.isupper()
    for word in _WORD.findall(text):
        is_abbreviation = word.isupper() and not is_in_capitals
        if word[0].isupper() and not is_abbreviation and word.lower() in known:
            yield word


@cache
def _first_names() -> frozenset[str]:
    """First names in small letters that are hardly ever something else."""
    providers = [import_module(f"faker.providers.person.{each}").Provider for each in _LOCALES]
    names = {
        name.lower()
        for provider in providers
        for names in _LISTS
        for name in getattr(provider, names, ())
        if len(name) >= _SHORTEST
    }
    return frozenset(names - _WORDS)

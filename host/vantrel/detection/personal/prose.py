"""Recognises names of people, by themselves and within sentences."""

from __future__ import annotations

import re
from collections.abc import Iterator

from vantrel.detection.personal.texts import seen, told
from vantrel.detection.values import is_full_name
from vantrel.first_names import first_names

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


def can_be_name(text: str) -> bool:
    """Whether a value has letters and no more than a name has."""
    return bool(_WORD.search(text)) and "@" not in text and not any(map(str.isdigit, text))


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
    if not words or words[0].lower() not in first_names():
        return False
    return words[-1][0].isupper() and is_full_name(text)


def _name_in(text: str) -> str | None:
    """The first name in a text that is of a person, with its title if it has one."""
    if titled := _TITLED.search(text):
        return titled[0]
    return next(_first_names_in(text), None)


def _first_names_in(text: str) -> Iterator[str]:
    known, is_in_capitals = first_names(), text.isupper()
    for word in _WORD.findall(text):
        is_abbreviation = word.isupper() and not is_in_capitals
        if word[0].isupper() and not is_abbreviation and word.lower() in known:
            yield word

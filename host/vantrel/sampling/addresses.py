"""Turns e-mail addresses and user names into such as every system takes, and that belong to nobody."""

from __future__ import annotations

import re
from collections.abc import Iterable, Mapping
from functools import cache
from typing import Any

import numpy as np
import pandas as pd
from anyascii import anyascii
from faker import Faker

from vantrel.rows.form import AS_MADE, RESERVED

# What a language makes of its letters where they cannot be written, if not just the plain letter.
_GERMAN = {"ä": "ae", "ö": "oe", "ü": "ue", "ß": "ss"}
_DANISH = {"æ": "ae", "ø": "oe", "å": "aa"}
_LETTERS = {"de": _GERMAN, "da": _DANISH, "no": _DANISH, "nb": _DANISH, "nn": _DANISH}

_KEPT = frozenset("abcdefghijklmnopqrstuvwxyz0123456789._-@\n")
_LABEL = re.compile(r"@[^a-z0-9\n]*([a-z0-9-]{0,60}[a-z0-9])?[^\n]*")
# Dots that begin or end a name, or stand beside each other.
_ODD_DOTS = re.compile(r"(?m)^\.+|\.+(?=[.@]|$)")


class Names:
    """Writes what is made of the names of places in ASCII, as their languages do.

    Args:
        languages: The language of each place by its number, as in "de".
        fakers: What makes the names of each.
    """

    def __init__(self, languages: Iterable[str], fakers: Iterable[Faker]) -> None:
        codes, self._languages = pd.factorize(np.array(list(languages), dtype=object))
        self._language_of = codes
        self._readings = {
            language: _readings(faker)
            for language, faker in zip(self._languages[codes], fakers, strict=True)
        }

    def accounts(self, texts: pd.Series, places: Any, domain: str | None = None) -> pd.Series:
        """Rewrites user names, or addresses if a domain is given, each of the place of its row."""
        made = np.empty(len(texts), dtype=object)
        whole = texts.to_numpy(dtype=object)
        languages = self._language_of[places]
        for number, language in enumerate(self._languages):
            members = np.flatnonzero(languages == number)
            if len(members):
                joined = "\n".join(whole[members].tolist())
                plain = _plain(joined, language, self._readings[language])
                made[members] = _with_domain(plain, domain).split("\n")
        return pd.Series(made, index=texts.index, dtype=texts.dtype)


def _plain(text: str, language: str, readings: Mapping[str, str]) -> str:
    """Writes a text in ASCII, without signs that an account cannot have."""
    if not text.isascii():
        for name, reading in readings.items():
            text = text.replace(name, reading)
        text = text.lower()
    return text.translate(_Letters.of(language))


class _Letters(dict[int, str]):
    """What becomes of each letter in a language; filled as letters come."""

    def __init__(self, language: str) -> None:
        super().__init__()
        self._own = _LETTERS.get(language, {})

    def __missing__(self, code: int) -> str:
        letter = chr(code)
        plain = self._own.get(letter) or anyascii(letter).lower()
        self[code] = "".join(each for each in plain if each in _KEPT)
        return self[code]

    @staticmethod
    @cache
    def of(language: str) -> _Letters:
        return _Letters(language)


def _with_domain(text: str, domain: str | None) -> str:
    text = _ODD_DOTS.sub("", text)
    if domain is None:
        return text
    text = re.sub(r"(?m)^@", "nobody@", text)
    if domain == AS_MADE:
        return text
    if domain != RESERVED:
        return re.sub(r"@[^\n]*", f"@{domain}", text)
    return _LABEL.sub(r"@\1.example", text).replace("@.", "@mail.")


def _readings(faker: Faker) -> dict[str, str]:
    """How names that are written in signs are read, where Faker tells, the longest first."""
    (generator,) = faker.factories
    provider = generator.first_name.__self__
    pairs = [*getattr(provider, "first_name_pairs", ()), *getattr(provider, "last_name_pairs", ())]
    found = {written: read.lower() for written, _, read in pairs}
    return dict(sorted(found.items(), key=lambda item: -len(item[0])))

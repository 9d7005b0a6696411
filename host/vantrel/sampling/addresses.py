"""Makes e-mail addresses and user names such as every system takes, and that belong to nobody."""

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
from vantrel.sampling.names import readings_of

# What a language makes of its letters where they cannot be written, if not just the plain letter.
_GERMAN = {"ä": "ae", "ö": "oe", "ü": "ue", "ß": "ss"}
_DANISH = {"æ": "ae", "ø": "oe", "å": "aa"}
_LETTERS = {"de": _GERMAN, "da": _DANISH, "no": _DANISH, "nb": _DANISH, "nn": _DANISH}

_KEPT = frozenset("abcdefghijklmnopqrstuvwxyz0123456789._-@\n")
_DELETED = bytes(sorted(set(range(256)) - set(map(ord, _KEPT))))
# Beyond so many letters it is quicker to look each of a text up than to look for each.
_FEW_LETTERS = 60

# What no account may have, and what takes its place: "Hans-J." has a dot of his own.
_MENDED = ((b"..", b"."), (b".@", b"@"), (b"\n.", b"\n"), (b".\n", b"\n"), (b"\n@", b"\nnobody@"))
# The signs that stand beside each other in all of these.
_ENDS = np.isin(np.arange(256), [ord(sign) for sign in ".@\n"])
# Labels of domains that begin or end with a hyphen, or have nothing between.
_ODD_LABELS = (b"@-", b"@.", b"-.example\n")
_LABEL = re.compile(rb"@-*([a-z0-9-]*[a-z0-9])?-*\.example\n")


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
                made[members] = _with_domain(plain, domain).decode("ascii").split("\n")
        return pd.Series(made, index=texts.index, dtype=texts.dtype)


def _plain(text: str, language: str, readings: Mapping[str, str]) -> bytes:
    """Writes a text in ASCII, without signs that an account cannot have."""
    if not text.isascii():
        for name, reading in readings.items():
            text = text.replace(name, reading)
        codes = np.frombuffer(text.encode("utf-32-le"), dtype=np.uint32)
        letters, found = _Letters.of(language), np.unique(codes[codes > 127]).tolist()
        if len(found) > _FEW_LETTERS:
            text = text.translate(letters)
        else:
            for code in found:
                text = text.replace(chr(code), letters[code])
    return text.encode("ascii").translate(None, _DELETED)


class _Letters(dict[int, str]):
    """What becomes of each letter in a language; filled as letters come."""

    def __init__(self, language: str) -> None:
        super().__init__()
        self._own = _LETTERS.get(language, {})

    def __missing__(self, code: int) -> str:
        letter = chr(code)
        plain = self._own.get(letter) or anyascii(letter).lower()
        self[code] = "".join(each for each in plain if each in _KEPT) if code > 127 else letter
        return self[code]

    @staticmethod
    @cache
    def of(language: str) -> _Letters:
        return _Letters(language)


def _with_domain(text: bytes, domain: str | None) -> bytes:
    """Gives the addresses of lines their domain; user names have none."""
    lines = text + b"\n"
    if domain == RESERVED:
        lines = _without_domains(lines, keep_label=True).replace(b"\n", b".example\n")
    elif domain not in (None, AS_MADE):
        lines = _without_domains(lines, keep_label=False).replace(b"\n", f"{domain}\n".encode())
    lines = b"\n" + lines
    is_end = _ENDS[np.frombuffer(lines, dtype=np.uint8)]
    if (is_end[:-1] & is_end[1:]).any():  # quicker than to look for each of them
        for odd, mended in _MENDED:
            while odd in lines:
                lines = lines.replace(odd, mended)
    if domain == RESERVED and any(odd in lines for odd in _ODD_LABELS):
        lines = _LABEL.sub(rb"@\1.example\n", lines).replace(b"@.", b"@mail.")
    return lines[1:-1]


def _without_domains(lines: bytes, *, keep_label: bool) -> bytes:
    """Cuts the domain out of each line, from its first dot on where its first label is kept."""
    signs = np.frombuffer(lines, dtype=np.uint8)
    ends, starts = np.flatnonzero(signs == ord("\n")), np.flatnonzero(signs == ord("@")) + 1
    if keep_label:
        dots = np.append(np.flatnonzero(signs == ord(".")), len(signs))
        starts = np.minimum(dots[np.searchsorted(dots, starts)], ends)
    change = np.zeros(len(signs) + 1, dtype=np.int8)
    change[starts] += 1
    change[ends] -= 1  # where both are one place, nothing changes
    left: bytes = signs[np.cumsum(change[:-1], dtype=np.int8) == 0].tobytes()
    return left


def _readings(faker: Faker) -> dict[str, str]:
    """How names that are written in signs are read, where Faker tells, the longest first."""
    found = {written: read.lower() for written, read in readings_of(faker).items()}
    return dict(sorted(found.items(), key=lambda item: -len(item[0])))

"""Makes e-mail addresses and user names such as every system takes, and that belong to nobody."""

from __future__ import annotations

import re
from collections.abc import Mapping, Sequence
from functools import cache
from itertools import count
from typing import Any

import numpy as np
import pandas as pd
from faker import Faker

from vantrel.rows.drawing import Places
from vantrel.rows.form import AS_MADE, RESERVED
from vantrel.sampling.letters import letter, with_groups
from vantrel.sampling.names import readings_of
from vantrel.sampling.texts import Column, joined, lines_of, parted, replaced

_KEPT = frozenset("abcdefghijklmnopqrstuvwxyz0123456789._-@\n")
_EXAMPLE = "example"

# What no account may have, and what takes its place: "Hans-J." has a dot of his own.
_MENDED = ((b"..", b"."), (b".@", b"@"), (b"\n.", b"\n"), (b".\n", b"\n"), (b"\n@", b"\nnobody@"))
# Labels of domains that begin or end with a hyphen, or have nothing between.
_ODD_LABELS = (b"@-", b"@.", b"-.example\n")
_LABEL = re.compile(rb"@-*([a-z0-9-]*[a-z0-9])?-*\.example\n")


def name_nobody(faker: Faker) -> None:
    """Has an instance make domains under the name that is kept for examples."""
    (generator,) = faker.factories
    generator.tld.__self__.tlds = (_EXAMPLE,)


class Accounts:
    """Writes what is made of the names of places in ASCII, as their languages do.

    Args:
        languages: The language of each place by its number, as in "de".
        fakers: What makes the names of each.
        domain: The domain of addresses. Where it is "reserved", :func:`name_nobody` has been
            called with the fakers.
    """

    def __init__(self, languages: Sequence[str], fakers: Sequence[Faker], domain: str) -> None:
        self._language_of, self._languages = pd.factorize(np.array(languages, dtype=object))
        self._readings = {
            language: _readings(faker) for language, faker in zip(languages, fakers, strict=True)
        }
        self._domain = domain
        # Where a locale makes domains in a way of its own, and where all get the one.
        self._has_other_domains = np.array(
            [
                domain != AS_MADE and (domain != RESERVED or not _names_nobody(faker))
                for faker in fakers
            ]
        )

    def usernames(self, texts: Column, places: Places) -> Column:
        """Rewrites user names, of the place of each row, that not every system takes."""
        return self._rewritten(texts, places, _odd_texts(texts), None)

    def addresses(self, texts: Column, places: Places) -> Column:
        """Rewrites addresses that not every system takes, or that are not of the domain."""
        odd = _odd_texts(texts) | self._has_other_domains[places]
        return self._rewritten(texts, places, odd, self._domain)

    def _rewritten(self, texts: Column, places: Places, is_odd: Any, domain: str | None) -> Column:
        if not is_odd.any():
            return texts
        odd = np.flatnonzero(is_odd)
        languages = self._language_of[places[odd]]
        members, rewritten = [], []
        for number in np.unique(languages):
            language = self._languages[number]
            members.append(odd[languages == number])
            plain = _plain(joined(texts.take(members[-1])), language, self._readings[language])
            rewritten.append(_with_domain(plain, domain))
        return replaced(texts, np.concatenate(members), parted(b"".join(rewritten), texts.dtype))


def told_apart(usernames: Column) -> Column:
    """Ends user names that have become alike in numbers, as those of Bäckman and Backman."""
    names = pd.Series(usernames)
    again = np.flatnonzero(names.duplicated())
    if not len(again):
        return usernames
    taken, made = set(names), []
    for name in names.iloc[again]:
        made.append(next(each for end in count(2) if (each := f"{name}{end}") not in taken))
        taken.add(made[-1])
    return replaced(usernames, again, pd.Series(made, dtype=names.dtype).array)


def _names_nobody(faker: Faker) -> bool:
    name: str = faker.domain_name()
    return name.endswith(f".{_EXAMPLE}")


def _odd_texts(texts: Column) -> Any:
    """Tells of each text whether no account may have it; of some with hyphens though all may."""
    signs, starts, ends = lines_of(texts)
    signs = np.append(signs, np.uint8(ord("\n")))  # where an empty text at the very end starts
    is_mark = (signs == ord(".")) | (signs == ord("@")) | (signs == ord("-"))
    is_letter_or_digit = (signs - ord("a") < 26) | (signs - ord("0") < 10)
    is_odd = ~(is_mark | is_letter_or_digit | (signs == ord("_")) | (signs == ord("\n")))
    is_odd[1:] |= is_mark[1:] & is_mark[:-1]
    for outer in (starts, ends - 1):
        is_odd[outer] |= is_mark[outer]
    if not is_odd.any():
        return np.zeros(len(starts), dtype=bool)
    return np.logical_or.reduceat(is_odd, starts)


def _plain(lines: bytes, language: str, readings: Mapping[str, str]) -> bytes:
    """Writes lines in ASCII, without signs that an account cannot have."""
    text = lines.decode()
    if not text.isascii():
        for name, reading in readings.items():
            text = text.replace(name, reading)
        text = with_groups(text, language)
    codes = np.frombuffer(text.encode("utf-32-le"), dtype=np.uint32)
    # Each letter has the width of the longest; what is filled up is taken out again.
    plain: bytes = _Letters.of(language).table(codes)[codes].tobytes()
    return plain.translate(None, b"\0")


class _Letters(dict[int, str]):
    """What becomes of each letter in a language; filled as letters come."""

    def __init__(self, language: str) -> None:
        super().__init__()
        self._language = language

    def __missing__(self, code: int) -> str:
        plain = chr(code) if code < 128 else letter(chr(code), self._language).lower()
        self[code] = "".join(each for each in plain if each in _KEPT)
        return self[code]

    def table(self, codes: Any) -> Any:
        """Gives what becomes of each of these letters, as a table by their codes."""
        is_there = np.zeros(int(codes.max(initial=0)) + 1, dtype=bool)
        is_there[codes] = True
        found = np.flatnonzero(is_there)
        plain = np.array([self[code] for code in found.tolist()], dtype=np.bytes_)
        table = np.zeros(len(is_there), dtype=plain.dtype)
        table[found] = plain
        return table

    @staticmethod
    @cache
    def of(language: str) -> _Letters:
        return _Letters(language)


def _with_domain(lines: bytes, domain: str | None) -> bytes:
    """Gives the addresses of lines their domain; user names have none."""
    if domain == RESERVED and lines.count(b".example\n") < lines.count(b"\n"):
        lines = _without_domains(lines, keep_label=True).replace(b"\n", b".example\n")
    elif domain not in (None, RESERVED, AS_MADE):
        lines = _without_domains(lines, keep_label=False).replace(b"\n", f"{domain}\n".encode())
    lines = b"\n" + lines
    for odd, mended in _MENDED:
        while odd in lines:
            lines = lines.replace(odd, mended)
    if domain == RESERVED and any(odd in lines for odd in _ODD_LABELS):
        lines = _LABEL.sub(rb"@\1.example\n", lines).replace(b"@.", b"@mail.")
    return lines[1:]


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

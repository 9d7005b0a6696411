"""Writes names in Latin letters, whatever letters or signs their languages have."""

from __future__ import annotations

import re
from collections.abc import Sequence

import numpy as np
import pandas as pd
from faker import Faker

from vantrel.rows.drawing import Places
from vantrel.sampling.letters import letter, with_groups
from vantrel.sampling.names import readings_of
from vantrel.sampling.texts import Column

# The blocks of Unicode that have Latin letters, and the marks that stand between these.
_LATIN = re.compile("[\0-\u02ff\u1e00-\u1eff\u2010-\u201f]*")
# A soft sign and the like is no letter here.
_NO_LETTERS = re.compile("[^A-Za-z. -]")
_WORD = re.compile("[^ -]+")


class LatinNames:
    """Writes names of places in Latin letters. Those that are written so stay as they are.

    Args:
        languages: The language of each place by its number, as in "de".
        fakers: What makes the names of each. Where it tells how a name is read, that is taken.
    """

    def __init__(self, languages: Sequence[str], fakers: Sequence[Faker]) -> None:
        self._languages = languages
        self._readings = [readings_of(faker) for faker in fakers]

    def written(self, names: Column, places: Places) -> Column:
        """Writes each name as it is at the place of its row."""
        codes, distinct = names.factorize()
        pairs, of_row = np.unique(codes * len(self._readings) + places, return_inverse=True)
        texts = distinct.tolist()
        made = [
            _in_latin(texts[code], self._languages[place], self._readings[place])
            for code, place in zip(*divmod(pairs, len(self._readings)), strict=True)
        ]
        return pd.array(made, dtype=names.dtype).take(of_row)


def _in_latin(name: str, language: str, readings: dict[str, str]) -> str:
    if _LATIN.fullmatch(name):
        return name
    if name in readings:
        return readings[name]
    small = with_groups(name.lower(), language)
    plain = "".join(letter(sign, language) for sign in small)
    return _WORD.sub(lambda word: word[0].capitalize(), _NO_LETTERS.sub("", plain))

"""Letters of other scripts, as the countries that use them write them in Latin ones."""

from __future__ import annotations

import numpy as np
import pandas as pd
import pytest

import vantrel
from vantrel.sampling.latin import LatinNames
from vantrel.sampling.letters import letter, with_groups
from vantrel.util.locale.locale import Provider, get_country_to_provder_map

WRITTEN = {
    "bg": {
        "христо": "hristo",
        "щерев": "shterev",
        "ъглев": "aglev",
        "кръстев": "krastev",
        "мария_мария7": "maria_maria7",
        "кирияков": "kiriyakov",
    },
    "da": {"ærø-ås": "aeroe-aas"},
    "de": {"jörg.weiß": "joerg.weiss"},
    "el": {
        "παπαδόπουλος": "papadopoulos",
        "νταού": "ntaou",
        "παύλος": "pavlos",
        "λευτέρης_ευ": "lefteris_ef",
        "ευγενία": "evgenia",
        "άγγελος": "angelos",
        "μπάμπης": "bampis",
        "χαράλαμπος": "charalampos",
    },
    "uk": {
        "ганна": "hanna",
        "ґудзь": "gudz'",
        "юрій": "yurii",
        "ілля_юрій7": "illia_yurii7",
        "їжак": "yizhak",
        "згурський": "zghurs'kyi",
        "євген": "yevhen",
        "вʼячеслав": "viacheslav",
        "в'ячеслав": "viacheslav",
    },
    "ru": {"игорь": "igor'", "щукин": "shchukin"},
}


@pytest.mark.parametrize("language", WRITTEN)
def test_letters_are_written_as_the_country_does(language: str) -> None:
    for text, written in WRITTEN[language].items():
        assert "".join(letter(each, language) for each in with_groups(text, language)) == written


def test_names_are_written_so() -> None:
    places = ["uk_UA", "ru_RU", "bg_BG", "el_GR"]
    fakers = get_country_to_provder_map(places, Provider.PERSON)
    latin = LatinNames([place[:2] for place in places], list(fakers.values()))
    names = pd.Series(["Ганна", "Ганна", "Ъглев", "Εύα-Άγγελος"]).array
    made = latin.written(names, np.arange(4))
    assert made.tolist() == ["Hanna", "Ganna", "Aglev", "Eva-Angelos"]


def test_so_are_user_names_and_addresses() -> None:
    asked = {"countries": ["UA"], "columns": ["firstname", "username", "email"], "seed": 1}
    people = vantrel.people(2_000, **asked)  # type: ignore[arg-type]  # as the names tell
    starting = people["firstname"].str.match("[ГЄЮЯ][а-щ]+$")
    assert starting.sum() > 50
    assert people.loc[starting, "username"].str.contains("h|ye|yu|ya").all()
    assert people.loc[starting, "email"].str.contains("h|ye|yu|ya").all()

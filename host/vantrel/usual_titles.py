"""The titles that are usual in a language."""

from __future__ import annotations

from collections.abc import Mapping

# By language and gender, each with its share. A language that is not here has none that are usual
# before a name: Danish, Finnish, Norwegian and Swedish have gone out of use, Hungarian, Japanese,
# Korean and Turkish ones stand behind it. Nor are there any for other genders, but in English.
_TITLES: dict[str, dict[str, dict[str | None, float]]] = {
    "en": {
        "F": {"Mrs": 0.4, "Ms": 0.35, "Miss": 0.22, "Dr": 0.03},
        "M": {"Mr": 0.97, "Dr": 0.03},
        "NB": {"Mx": 1},
    },
    "bg": {"F": {"Г-жа": 1}, "M": {"Г-н": 1}},
    "cs": {"F": {"Paní": 1}, "M": {"Pan": 1}},
    "de": {"F": {"Frau": 0.98, "Dr.": 0.02}, "M": {"Herr": 0.98, "Dr.": 0.02}},
    "el": {"F": {"Κα": 1}, "M": {"Κος": 1}},
    "es": {"F": {"Sra.": 0.9, "Srta.": 0.1}, "M": {"Sr.": 1}},
    "fr": {"F": {"Mme": 0.97, "Mlle": 0.03}, "M": {"M.": 1}},
    "hi": {"F": {"श्रीमती": 1}, "M": {"श्री": 1}},
    "hr": {"F": {"Gospođa": 1}, "M": {"Gospodin": 1}},
    "id": {"F": {"Ibu": 1}, "M": {"Bapak": 1}},
    "it": {"F": {"Sig.ra": 1}, "M": {"Sig.": 1}},
    "nl": {"F": {"Mevr.": 1}, "M": {"Dhr.": 1}},
    "pl": {"F": {"Pani": 1}, "M": {"Pan": 1}},
    "pt": {"F": {"Sra.": 1}, "M": {"Sr.": 1}},
    "ro": {"F": {"Doamna": 1}, "M": {"Domnul": 1}},
    "sk": {"F": {"Pani": 1}, "M": {"Pán": 1}},
    "sl": {"F": {"Gospa": 1}, "M": {"Gospod": 1}},
    "th": {"F": {"นาง": 0.5, "นางสาว": 0.5}, "M": {"นาย": 1}},
    "uk": {"F": {"Пані": 1}, "M": {"Пан": 1}},
    "vi": {"F": {"Bà": 1}, "M": {"Ông": 1}},
}
_NO_TITLE: Mapping[str | None, float] = {None: 1}
_IN_OTHER_LETTERS = frozenset(("bg", "el", "hi", "th", "uk"))


def usual_titles(language: str, key: str, *, latin: bool = False) -> Mapping[str | None, float]:
    """Gives the titles of a gender with their shares; None is a person without.

    Args:
        language: The language by its code, as in "de".
        key: The gender by its key.
        latin: Whether only titles in Latin letters will do.
    """
    if latin and language in _IN_OTHER_LETTERS:
        return _NO_TITLE
    return _TITLES.get(language, {}).get(key, _NO_TITLE)

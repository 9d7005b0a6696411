"""Writes small letters of any script in ASCII, as the countries that use them do.

Where a language has no ways of its own here, each letter is written as usual.
"""

from __future__ import annotations

import re

from anyascii import anyascii

_GERMAN = {"ä": "ae", "ö": "oe", "ü": "ue", "ß": "ss"}
_DANISH = {"æ": "ae", "ø": "oe", "å": "aa"}
# Law on transliteration, 2009
_BULGARIAN = {"х": "h", "ъ": "a", "щ": "sht", "ь": "y"}
# Resolution 55 of the cabinet, 2010
_UKRAINIAN = {"г": "h", "и": "y", "й": "i", "є": "ie", "ї": "i", "ю": "iu", "я": "ia"}
_LETTERS = {
    "bg": _BULGARIAN,
    "da": _DANISH,
    "de": _GERMAN,
    "nb": _DANISH,
    "nn": _DANISH,
    "no": _DANISH,
    "uk": _UKRAINIAN,
}

# A digit or an underscore is in no word here.
_LETTER = r"[^\W\d_]"
_END = f"(?!{_LETTER})"


def _at_start(letters: str) -> str:
    """Makes a pattern of letters that begin a word, quick where there are no such letters."""
    return f"{letters}(?<!{_LETTER}{letters})"


# ELOT 743: an upsilon is a consonant after some vowels, and a voiceless one before such.
_GREEK = (
    ("ο[υύ]", "ou"),
    (f"(?<=[αεη])[υύ](?=[θκξπστφχψ]|ς?{_END})", "f"),
    ("(?<=[αεη])[υύ]", "v"),
    ("γ(?=[γξχ])", "n"),
    (f"{_at_start('μπ')}|μπ{_END}", "b"),
)
_UKRAINIAN_STARTS = {"є": "ye", "ї": "yi", "й": "y", "ю": "yu", "я": "ya"}
_TOGETHER = {
    "bg": ((f"ия{_END}", "ia"),),
    "el": _GREEK,
    "uk": (
        ("['’ʼ]", ""),
        ("зг", "zgh"),
        *((_at_start(first), written) for first, written in _UKRAINIAN_STARTS.items()),
    ),
}


def with_groups(text: str, language: str) -> str:
    """Writes what a language writes otherwise than letter by letter; all else stays."""
    for group, written in _TOGETHER.get(language, ()):
        text = re.sub(group, written, text)
    return text


def letter(sign: str, language: str) -> str:
    """Writes a single letter."""
    return _LETTERS.get(language, {}).get(sign) or anyascii(sign)

"""Tells which symbols of a pattern have characters in common.

It is ``re`` that tells which characters fit a symbol: nobody else knows all that there is to case
and classes. It is asked about all characters up to U+FFFF. Classes name none beyond, so that those
differ there only in being letters, digits or neither: one of each stands for all, besides the ones
that stand in the pattern.
"""

import re
from collections.abc import Iterable
from functools import lru_cache

MOST_SYMBOLS = 100

_COMMON = "".join(map(chr, range(0x10000)))
BEYOND = "\U00010000\U0001d7ce\U0001f600"


def is_rare(character: str) -> bool:
    """Tells whether a character is beyond U+FFFF."""
    return character > _COMMON[-1]


def rare_characters(symbols: Iterable[str]) -> str:
    """Gives the characters beyond U+FFFF that stand in symbols, each once and in order."""
    return "".join(sorted(set(filter(is_rare, "".join(symbols)))))


@lru_cache(maxsize=MOST_SYMBOLS**2)
def share(one: str, other: str, rare: str) -> bool:
    """Tells whether some character fits both symbols.

    Args:
        one: A character or a class, as in a pattern.
        other: Another.
        rare: The rare characters of the pattern.
    """
    return one == other or bool(_characters(one, rare) & _characters(other, rare))


@lru_cache(maxsize=MOST_SYMBOLS)
def _characters(symbol: str, rare: str) -> int:
    """Gives the set of the characters that fit a symbol, as bits."""
    characters = 0
    for run in re.finditer(f"(?:{symbol})+", _COMMON + BEYOND + rare, re.IGNORECASE):
        characters |= ((1 << (run.end() - run.start())) - 1) << run.start()
    return characters

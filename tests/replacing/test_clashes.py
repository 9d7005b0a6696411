"""How likely two people are to share an account: what the documents say comes from the pools."""

from __future__ import annotations

import re
from collections import Counter
from itertools import product
from pathlib import Path

import pytest

pytest.importorskip("pyarrow", reason="People are replaced by way of Arrow")

from vantrel.replacing.making.pools import _drawn
from vantrel.replacing.people.made import CODE_BITS

DOCUMENT = Path(__file__).parents[2] / "docs/replace.md"


def spellings(locale: str, gender: str, part: str) -> Counter[str]:
    """How often each spelling in accounts is drawn."""
    drawn = _drawn(locale, gender, latin=False)
    return Counter(drawn.plain.take(getattr(drawn.pool, part).astype("int64")).to_pylist())


def agreement(locale: str) -> float:
    """The probability that two people, each a woman or a man alike, have one spelling."""
    genders = [
        [spellings(locale, gender, part) for part in ("first", "last")] for gender in ("F", "M")
    ]
    shares = [
        _shared(one[0], other[0]) * _shared(one[1], other[1])
        for one, other in product(genders, repeat=2)
    ]
    return sum(shares) / len(shares)


def _shared(one: Counter[str], other: Counter[str]) -> float:
    pairs = sum(count * other[text] for text, count in one.items())
    return pairs / one.total() / other.total()


def number(text: str) -> float:
    mantissa, _, exponent = text.partition(" × 10")
    digits = str.maketrans("⁰¹²³⁴⁵⁶⁷⁸⁹⁻", "0123456789-")
    return float(f"{mantissa}e{exponent.translate(digits) or 0}")


@pytest.mark.parametrize(
    ("names", "locale"), [("all of one name", None), ("British", "en_GB"), ("German", "de_DE")]
)
def test_the_document_tells_how_likely_a_clash_is(names: str, locale: str | None) -> None:
    row = next(
        line for line in DOCUMENT.read_text().splitlines() if line.startswith("|") and names in line
    )
    told = [cell.strip() for cell in row.split("|")[2:4]]
    same = agreement(locale) if locale else 1.0
    for people, cell in zip((10**6, 10**9), told, strict=True):
        expected = people**2 / 2 / 2**CODE_BITS * same  # of pairs; also the probability, if small
        if expected > 10:
            assert cell == "certain"
        else:
            assert number(cell) == pytest.approx(expected, rel=0.05)
    assert f"{CODE_BITS} bits" in re.sub(r"\s+", " ", DOCUMENT.read_text())

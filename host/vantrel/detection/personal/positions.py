"""Recognises geographic positions."""

from __future__ import annotations

import re

from vantrel.detection.personal.texts import told

_HIGHEST = 90, 180  # degrees of latitude, of longitude

# A number alone must have decimals, or every rank would be a position.
_DEGREES = re.compile(r"([-+]?\d{1,3}\.\d+)\s*°?\s*[NSEWO]?")
_NUMBER = r"[-+]?\d{1,3}(?:\.\d+)?"
# Not a name of a place in front, but what databases write: "POINT (13.4 52.5)", "SRID=4326;POINT".
_PAIR = re.compile(
    rf"(?:(?:SRID=\d+;)?(POINT)\s*)?[(\[]?\s*({_NUMBER})\s*(?:[,;]\s*|\s+)({_NUMBER})\s*[)\]]?"
)
_SEXAGESIMAL = re.compile(
    r"\d{1,3}\s*°\s*\d{1,2}\s*['′](?:\s*\d{1,2}(?:\.\d+)?\s*[\"″])?\s*[NSEWO]"
    r"(?:[,;]?\s*\d{1,3}\s*°.*)?"
)
# With as many decimals a position is that of a house or a street, and no price or measure.
_LEAST_DECIMALS = 3


def can_be_position(text: str) -> bool:
    """Whether a text is a latitude, a longitude or both."""
    text = text.replace(",", ".") if text.count(",") == 1 and "." not in text else text
    if degrees := _DEGREES.fullmatch(text):
        return abs(float(degrees[1])) <= max(_HIGHEST)
    return bool(_pair(text) or _SEXAGESIMAL.fullmatch(text))


def told_positions(texts: list[str]) -> str | None:
    """Tells whether values are pairs of degrees that are exact to some 100 metres."""
    return told(texts, _is_exact, "are pairs of a latitude and a longitude")


def _is_exact(text: str) -> bool:
    pair = _pair(text)
    if pair is None:
        return bool(_SEXAGESIMAL.fullmatch(text))
    return all(len(part.partition(".")[2]) >= _LEAST_DECIMALS for part in pair)


def _pair(text: str) -> tuple[str, str] | None:
    """The latitude and the longitude of a text."""
    match = _PAIR.fullmatch(text)
    if match is None:
        return None
    latitude, longitude = match.group(3, 2) if match[1] else match.group(2, 3)
    is_within = all(
        abs(float(part)) <= highest
        for part, highest in zip((latitude, longitude), _HIGHEST, strict=True)
    )
    return (latitude, longitude) if is_within else None

"""Recognises dates of birth."""

from __future__ import annotations

import math
import re
from collections.abc import Iterator
from datetime import UTC, date, datetime

from vantrel.detection.personal.texts import seen

_OLDEST = 110
_FEWEST = 20
_TELLING = 0.8

# People of a table are of many ages. Orders, contracts and visits are of the last few years.
_LEAST_SPREAD = 20
_LEAST_MEDIAN = 18

_WEEKEND = 2 / 7

_TIME = r"(?:[ T]00:00(?::00(?:\.0+)?)?(?:Z|\+00:00)?)?"
_YEAR_FIRST = re.compile(rf"(\d{{4}})([-/.])(\d\d?)\2(\d\d?){_TIME}")
_JOINED = re.compile(r"(\d{4})()(\d\d)(\d\d)")
_YEAR_LAST = re.compile(rf"(\d\d?)([-/.])(\d\d?)\2(\d{{4}}){_TIME}")
_HAS_YEAR = re.compile(r"(?<!\d)(?:1[89]|20)\d\d(?!\d)")
_SHORT_DATE = re.compile(r"\d\d?[-/. ]{1,2}(?:\d\d?|[^\W\d_]{3,9}\.?)[-/. ]{1,2}\d\d")


def can_be_birth(text: str) -> bool:
    """Whether a text is a date of any kind, or a year, of somebody who may live."""
    if len(text) > 40:
        return False
    if day := _date(text):
        return 0 <= _today().year - day.year <= _OLDEST
    return bool(_HAS_YEAR.search(text) or _SHORT_DATE.fullmatch(text))


def told_births(texts: list[str]) -> str | None:
    """Tells whether values are dates that lie as births do: over decades, on all days alike."""
    days = sorted(_births(texts))
    if len(days) < max(_FEWEST, _TELLING * len(texts)):
        return None
    years = [day.year for day in days]
    spread = years[len(years) * 19 // 20] - years[len(years) // 20]
    median_age = _today().year - years[len(years) // 2]
    if spread < _LEAST_SPREAD or median_age < _LEAST_MEDIAN or _keep_to_working_days(days):
        return None
    return seen(len(days) / len(texts), "are days that lie as far apart as births do")


def _births(texts: list[str]) -> Iterator[date]:
    today = _today()
    for text in texts:
        day = _date(text)
        if day and day <= today and today.year - day.year <= _OLDEST:
            yield day


def _keep_to_working_days(days: list[date]) -> bool:
    """Whether so few days are of a weekend that it is no chance, as of contracts and releases."""
    expected = _WEEKEND * len(days)
    deviation = math.sqrt(expected * (1 - _WEEKEND))
    return sum(day.weekday() >= 5 for day in days) < expected - 3 * deviation


def _date(text: str) -> date | None:
    """Reads a date without a time of day; whether the day or the month is first does not matter."""
    if match := _YEAR_FIRST.fullmatch(text) or _JOINED.fullmatch(text):
        year, first, second = map(int, match.group(1, 3, 4))
    elif match := _YEAR_LAST.fullmatch(text):
        first, second, year = map(int, match.group(1, 3, 4))
    else:
        return None
    month, day = (first, second) if first <= 12 else (second, first)
    try:
        return date(year, month, day)
    except ValueError:
        return None


def _today() -> date:
    return datetime.now(UTC).date()

"""Telephone numbers as people of a country write them.

A format is a number in which each "x" stands for any digit.
"""

from __future__ import annotations

import random
import re
from collections.abc import Iterable, Sequence
from functools import cache
from itertools import chain
from typing import Any, NamedTuple

import numpy as np
import phonenumbers
from phonenumbers import PhoneMetadata, PhoneNumberDesc, PhoneNumberFormat

from vantrel.config import PersonModelConfig
from vantrel.model.models.person import PersonModel
from vantrel.rows import EVERYWHERE, Ways
from vantrel.rows.drawing import Places
from vantrel.rows.form import PhoneAttribute, PhoneFormat
from vantrel.sampling.texts import Column, parted, replaced
from vantrel.util.locale.locale import recognise_known

# What regulators keep for plays and books, so that nobody is ever called.
_BRITISH_CITIES = (113, 114, 115, 116, 117, 118, 121, 131, 141, 151, 161)
_FICTION: dict[str, dict[str, list[str]]] = {
    # Ofcom, "Telephone numbers for use in TV and radio drama programmes"
    "GB": {
        "mobile": ["07700 900xxx"],
        "fixed": [
            *(f"0{city} 496 0xxx" for city in _BRITISH_CITIES),
            "020 7946 0xxx",
            "0191 498 0xxx",
            "028 9649 6xxx",
            "029 2018 0xxx",
            "01632 960xxx",
        ],
    },
    # ARCEP, decision 2018-0881, numbers for audiovisual works
    "FR": {
        "mobile": ["06 39 98 xx xx"],
        "fixed": [
            f"{start} xx xx"
            for start in ("01 99 00", "02 61 91", "03 53 01", "04 65 71", "05 36 49")
        ],
    },
    # Bundesnetzagentur, "Rufnummern für Medienproduktionen"
    "DE": {
        "mobile": ["0171 39200xx", "0176 040690xx"],
        "fixed": ["030 23125xxx", "040 66969xxx", "069 90009xxx", "0221 4710xxx", "089 99998xxx"],
    },
    # PTS, numbers for use in books and films
    "SE": {
        "mobile": [f"070-174 06 {tens}x" for tens in range(1, 10)],
        "fixed": ["08-465 004 xx", "031-390 06 xx", "040-628 04 xx"],
    },
    # ACMA, numbers for use in television shows, films and creative works
    "AU": {
        "mobile": [
            f"0491 {number}"
            for number in ("570 006", "570 156", "570 157", "570 158", "570 159", "570 110")
        ],
        "fixed": [f"(0{area}) {start} xxxx" for area in (2, 3, 7, 8) for start in (5550, 7010)],
    },
}
# What people have where that is not all that is as long as the example: by the numbering plans of
# the Communications Regulation Commission and of BAKOM
_IN_USE = {("BG", "mobile"): "8[7-9].{7}", ("CH", "mobile"): "7[5-9].{7}"}
# There the North American Numbering Plan keeps a hundred numbers of each area code.
_NORTH_AMERICA = ("CA", "US")
_AREA_CODES = range(200, 1_000)

KIND: dict[PhoneAttribute, str] = {
    "mobile_number": "mobile",
    "home_number": "fixed",
    "work_number": "fixed",
}

# As many beginnings of numbers as make two people of a country seldom alike.
_MOST_FORMATS = 48
_TRIES = 40 * _MOST_FORMATS
# A number is grouped by its first digits; so many are not left open.
_LEADING = 4


class FormatTable(NamedTuple):
    """The formats of places, each a row of characters that is filled up with zeros.

    Attributes:
        counts: How many formats each place has.
        starts: The number of the first of them.
        signs: The characters of each format.
    """

    counts: Places
    starts: Places
    signs: Any

    @classmethod
    def of(cls, of_places: Sequence[Sequence[str]]) -> FormatTable:
        """Takes the formats of each place."""
        counts = np.array([len(formats) for formats in of_places])
        width = max(map(len, chain.from_iterable(of_places)))
        texts = b"".join(each.encode().ljust(width, b"\0") for each in chain(*of_places))
        signs = np.frombuffer(texts, dtype=np.uint8).reshape(-1, width)
        return cls(counts, np.cumsum(counts) - counts, signs)


class Numbers:
    """Makes numbers of one kind for the people of places.

    Args:
        of_places: The formats of each place, as :func:`formats_of` gives them; none where a number
            stays as it is.
    """

    def __init__(self, of_places: Sequence[Sequence[str]]) -> None:
        self._count, self._start, signs = FormatTable.of(of_places)
        line_breaks = np.full(len(signs), ord("\n"), dtype=np.uint8)
        self._formats = np.column_stack([signs, line_breaks])
        self.is_for_all = bool(self._count.all())

    def made(
        self,
        places: Places,
        rng: np.random.Generator,
        texts: Column | None,
        dtype: Any,
    ) -> Column:
        """Makes numbers.

        Args:
            places: The place of each row.
            rng: What to draw with.
            texts: What stays where a place has no formats; None if all have.
            dtype: The type of the column.
        """
        members = np.flatnonzero(self._count[places])
        of_place = places[members]
        rows = self._formats[self._start[of_place] + rng.integers(self._count[of_place])]
        is_open = rows == ord("x")
        opened = np.count_nonzero(is_open)
        rows[is_open] = rng.integers(ord("0"), ord("9") + 1, size=opened, dtype=np.uint8)
        numbers = parted(rows.tobytes().translate(None, b"\0"), dtype)
        return numbers if texts is None else replaced(texts, members, numbers)


def has_usual_format(model: PersonModel, attribute: str) -> bool:
    """Whether nobody has set a format, which is that of all countries then."""
    ways: Ways = model.meta.ways or Ways()
    name = f"{attribute}_format"
    is_usual = bool(getattr(model.config, name) == getattr(PersonModelConfig(), name))
    return is_usual and attribute not in ways.phone_formats.get(EVERYWHERE, {})


def formats_by_country(ways: Ways) -> dict[str, dict[PhoneAttribute, PhoneFormat]]:
    """Gives the formats of single countries."""
    return {place: own for place, own in ways.phone_formats.items() if place != EVERYWHERE}


def number_formats(
    model: PersonModel, regions: Sequence[str]
) -> dict[PhoneAttribute, list[list[str]]]:
    """Gives the formats of the numbers that a model makes.

    What is set for a country comes first, then what is set for all. Of that a format of the
    configuration is not here, for it is the bare model that makes such numbers.

    Args:
        model: The model.
        regions: The two-letter code of each place's country, "" where it has none.

    Returns:
        For each attribute the formats of each place.
    """
    ways: Ways = model.meta.ways or Ways()
    everywhere = ways.phone_formats.get(EVERYWHERE, {})
    own = {region_of(place): everywhere | own for place, own in formats_by_country(ways).items()}
    is_valid = ways.phone_numbers == "valid"

    def of(attribute: PhoneAttribute, region: str) -> list[str]:
        if is_set := own.get(region, everywhere).get(attribute):
            return [is_set]
        has_usual = has_usual_format(model, attribute)
        return formats_of(region, KIND[attribute], is_valid=is_valid) if has_usual else []

    return {
        attribute: [of(attribute, region) for region in regions]
        for attribute in KIND
        if attribute in model.params
    }


def region_of(place: str) -> str:
    """Gives the two-letter code of a place's country, "" if it has none."""
    found = recognise_known(place)
    return found.country or found.locale.partition("_")[2]


@cache
def formats_of(region: str, kind: str, *, is_valid: bool) -> list[str]:
    """Gives the formats of the numbers of a country.

    Args:
        region: Its two-letter code; "" has none.
        kind: ``mobile`` or ``fixed``.
        is_valid: Whether all shall be valid, also where some are kept for fiction.
    """
    kept = [] if is_valid else _kept_for_fiction(region, kind)
    return kept or _valid_formats(region, kind)


def is_kept_for_fiction(formats: Sequence[str], region: str, attribute: PhoneAttribute) -> bool:
    """Whether formats are those of the numbers that a country keeps for fiction."""
    return formats == _kept_for_fiction(region, KIND[attribute])


def numbers_in(formats: Iterable[str]) -> int:
    """Counts the numbers of formats; those of two count twice."""
    return sum(10 ** each.count("x") for each in formats)


def _kept_for_fiction(region: str, kind: str) -> list[str]:
    if region not in _NORTH_AMERICA:
        return _FICTION.get(region, {}).get(kind, [])
    described = _described(region, kind)
    pattern = re.compile((described and described.national_number_pattern) or "")
    return [f"({area}) 555-01xx" for area in _AREA_CODES if pattern.fullmatch(f"{area}5550100")]


def _described(region: str, kind: str) -> PhoneNumberDesc | None:
    """What is known of the numbers of one kind in a country, if there are such."""
    metadata = PhoneMetadata.metadata_for_region(region, None)
    found = metadata and getattr(metadata, "mobile" if kind == "mobile" else "fixed_line")
    return found if found and found.national_number_pattern else None


def _valid_formats(region: str, kind: str) -> list[str]:
    """Makes formats of which every number is valid, by the pattern of the region's numbers.

    A pattern may allow for many lengths; what people have is as long as its example.
    """
    described = _described(region, kind)
    if not described:
        return []
    as_long = f".{{{len(described.example_number or '')}}}"
    is_in_use = re.compile(_IN_USE.get((region, kind), as_long)).fullmatch
    parsed = re._parser.parse(described.national_number_pattern)  # type: ignore[attr-defined]  # not told
    source = random.Random(f"{region} {kind}")  # the same in every process
    found: dict[str, None] = {}
    for _ in range(_TRIES):
        digits = "".join(_walk(parsed, source))
        if is_in_use(digits) and (layout := _layout(digits, region, source)):
            found[layout] = None
        if len(found) == _MOST_FORMATS:
            break
    return list(found)


def _walk(parsed: Any, source: random.Random) -> list[str]:
    """Goes one way through a pattern; a digit that may be any is an "x"."""
    made: list[str] = []
    for operation, value in parsed:
        name = str(operation)
        if name == "LITERAL":
            made.append(chr(value))
        elif name == "IN":
            made.append(_one_of(value, source))
        elif name == "MAX_REPEAT":
            least, most, inner = value
            for _ in range(source.randint(least, min(most, 15))):
                made += _walk(inner, source)
        elif name == "SUBPATTERN":
            made += _walk(value[-1], source)
        elif name == "BRANCH":
            made += _walk(source.choice(value[1]), source)
    return made


def _one_of(choices: Any, source: random.Random) -> str:
    digits: list[str] = []
    for operation, value in choices:
        if str(operation) == "CATEGORY":
            return "x"
        first, last = value if str(operation) == "RANGE" else (value, value)
        digits += map(chr, range(first, last + 1))
    return source.choice(digits)


def _layout(digits: str, region: str, source: random.Random) -> str | None:
    """Writes a number as in its country, if its open digits have no say in it."""
    start = re.sub("x", lambda _: str(source.randint(0, 9)), digits[:_LEADING])
    national = start + digits[_LEADING:]
    layouts = {_written(national, region, fill) for fill in (0, 5, 9, None)}
    return layouts.pop() if len(layouts) == 1 else None


def _written(national: str, region: str, fill: int | None) -> str | None:
    """Writes a number with its open digits filled, and then opens them again."""
    filled = "".join(
        str((place * 3 + 1) % 10 if fill is None else fill) if digit == "x" else digit
        for place, digit in enumerate(national)
    )
    try:
        number = phonenumbers.parse(filled, region)
    except phonenumbers.NumberParseException:
        return None
    if not phonenumbers.is_valid_number(number):
        return None
    text = phonenumbers.format_number(number, PhoneNumberFormat.NATIONAL)
    if not text.isascii() or not re.sub(r"\D", "", text).endswith(filled):
        text = filled
    signs = list(text)
    places = [place for place, sign in enumerate(signs) if sign.isdigit()][-len(national) :]
    for place, digit in zip(places, national, strict=True):
        signs[place] = digit
    return "".join(signs)

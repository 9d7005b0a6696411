"""What is kept of a table's rows, in memory and in a model file."""

from __future__ import annotations

import math
from typing import Annotated, Literal

from msgspec import Meta, Struct

from vantrel.util.locale.locale import refuse_unknown

DEFAULT_MIN_COUNT = 5

# So that a file stays within the size that a model may have.
MOST_COMBINATIONS = 20_000

PARTS = ("gender", "title", "country", "gaps")
"""The parts of a combination, in this order."""

ANY = -1
"""Stands for a part that is drawn by counts of its own."""

Count = Annotated[int, Meta(ge=0, le=10**15)]
Share = Annotated[float, Meta(ge=0, le=1)]
Place = Annotated[int, Meta(ge=ANY, le=10**9)]
Value = Annotated[str, Meta(max_length=1_000)] | None
Column = Annotated[str, Meta(min_length=1, max_length=1_000)]
Part = Literal["gender", "title", "country"]
Key = Literal["F", "M", "NB", "A", ""]


EVERYWHERE = "*"
"""Stands for all countries that have no formats of their own."""

RESERVED, AS_MADE = "reserved", "as-made"
"""Domains that belong to nobody, and those that Faker makes."""

type PhoneAttribute = Literal["mobile_number", "home_number", "work_number"]
type PhoneFormat = Annotated[str, Meta(min_length=1, max_length=100, pattern=r"^[ -~]*\Z")]
"""A number in which each "x" stands for any digit."""

type FullNames = Literal["Last, First", "LAST, First", "LAST First", "First LAST"]
"""How a table may write full names, if not as each language does."""

_HTML_LABEL = "[a-zA-Z0-9]([a-zA-Z0-9-]{0,61}[a-zA-Z0-9])?"


class Ways(Struct, forbid_unknown_fields=True, frozen=True):
    """How people are reached.

    Args:
        email_domain: The domain of all e-mail addresses; "reserved" for as many as there are under
            a name that is kept for examples, "as-made" for those that Faker makes.
        phone_numbers: "fiction" for numbers that regulators keep for it, and valid ones in
            countries without such; "valid" for valid ones everywhere.
        locales: The locales of Faker whose names the people of some countries get.
        latin: Whether names are written in Latin letters, whatever the language's own are.
        phone_formats: The formats of some attributes' numbers in some countries, or
            :data:`EVERYWHERE`. They come before all else that tells how numbers are made.
        full_names: How full names are written, if not as each language does.
    """

    email_domain: Annotated[
        str,
        Meta(max_length=253, pattern=rf"^(reserved|as-made|{_HTML_LABEL}(\.{_HTML_LABEL})+)\Z"),
    ] = RESERVED
    phone_numbers: Literal["fiction", "valid"] = "fiction"
    locales: dict[str, str] = {}
    latin: bool = False
    phone_formats: dict[str, dict[PhoneAttribute, PhoneFormat]] = {}
    full_names: FullNames | None = None

    def __post_init__(self) -> None:
        countries = [place for place in self.phone_formats if place != EVERYWHERE]
        refuse_unknown([*self.locales, *self.locales.values(), *countries])


class LeftOut(Struct, forbid_unknown_fields=True, frozen=True):
    """How much of a column is in the model in no form, as it is too rare.

    Args:
        values: The number of its distinct values.
        rows: The number of the rows that have them.
    """

    values: Count
    rows: Count


class Rows(Struct, forbid_unknown_fields=True, frozen=True, kw_only=True):
    """The combinations of gender, title, country and gaps, and how many rows have each.

    A combination in fewer rows than ``min_count`` is not here as such: some of its parts are
    :data:`ANY`, and its rows are among the counts of these.

    Args:
        min_count: The fewest rows of what is kept.
        gender: The values of the gender column; None is a missing one. Just None if there is no
            such column. So for ``title`` and ``country``.
        gaps: What else is missing together, by the names of the columns. None stands for whatever
            is too rare: there each column is missing by its share in ``gaps_apart``.
        gaps_apart: See there.
        combinations: The place of each part, or :data:`ANY`, in the order of :data:`PARTS`, and the
            number of rows.
        any_gender: How often each gender is where a combination has any.
        any_title: The same for titles, by the key of the row's gender; how often each is with the
            gender at all, where too few are left open.
        any_country: The same for countries.
        any_gaps: The same for gaps.
        left_out: What is too rare to be kept, by attribute.
    """

    min_count: Annotated[int, Meta(ge=1, le=10**15)]
    gender: Annotated[list[Value], Meta(min_length=1)]
    title: Annotated[list[Value], Meta(min_length=1)]
    country: Annotated[list[Value], Meta(min_length=1)]
    gaps: Annotated[list[list[Column] | None], Meta(min_length=1)]
    gaps_apart: dict[str, Share]
    combinations: Annotated[
        list[tuple[Place, Place, Place, Place, Count]],
        Meta(min_length=1, max_length=MOST_COMBINATIONS + 1),
    ]
    any_gender: list[Count]
    any_title: dict[Key, list[Count]]
    any_country: list[Count]
    any_gaps: list[Count]
    left_out: dict[Part, LeftOut]

    def __post_init__(self) -> None:
        for attribute, counts in self._counts():
            values = getattr(self, attribute)
            if len(counts) != len(values):
                raise ValueError(
                    f"Of {len(values)} values of {attribute!r} there are {len(counts)} counts"
                )
            if not sum(counts):
                raise ValueError(f"None of the counts of {attribute!r} is above 0")
        for part in PARTS:
            values = list(map(repr, getattr(self, part)))  # those of gaps are lists
            if len(set(values)) < len(values):
                raise ValueError(f"Of {part!r} one is there twice")
        for place, part in enumerate(PARTS):
            most = len(getattr(self, part))
            if any(cells[place] >= most for cells in self.combinations):
                raise ValueError(f"A combination has a {part!r} beyond the {most} that there are")
        if not 0 < sum(count for *_, count in self.combinations) < math.inf:
            raise ValueError("No combination has a row")

    def _counts(self) -> list[tuple[str, list[int]]]:
        titles = [("title", counts) for counts in self.any_title.values()]
        alone = [(part, getattr(self, f"any_{part}")) for part in PARTS if part != "title"]
        return alone + titles

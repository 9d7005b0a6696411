"""Dates in texts: told by their form, read into days, and written as they were."""

from __future__ import annotations

from functools import cache
from typing import Any, NamedTuple

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from vantrel.replacing.others.action import FORMS

FIRST_DAY, LAST_DAY = (
    int(np.datetime64(day, "D").astype(np.int64)) for day in ("0001-01-01", "9999-12-31")
)
"""The days that a date of four digits a year can be, counted from 1970."""

_PARTS = {"YYYY": "year", "MM": "month", "DD": "day"}
_TIME = (
    r"[ T]\d{1,2}:\d{2}(?::\d{2}(?:[.,]\d+)?)?"
    r"(?: ?[AaPp]\.?[Mm]\.?)?(?: ?(?:Z|UTC|[+-]\d{2}(?::?\d{2})?))?"
)


class Dates(NamedTuple):
    """The dates of some texts.

    Attributes:
        days: Counted from 1970; 0 where a text is no date.
        is_date: Where it is one.
        parts: The year, month, day and rest of each, as they are written.
    """

    days: Any
    is_date: Any
    parts: dict[str, pa.Array]


def read_dates(texts: pa.Array, form: str) -> Dates:
    """Reads texts of one form."""
    found = pc.extract_regex(pc.utf8_trim_whitespace(texts), _pattern(form))
    parts = {name: pc.struct_field(found, name) for name in (*_PARTS.values(), "rest")}
    year, month, day = (_numbers(parts[name]) for name in _PARTS.values())
    months = ((year - 1970) * 12 + month - 1).astype("datetime64[M]")
    dates = months.astype("datetime64[D]") + (day - 1)
    is_date = (year > 0) & (month >= 1) & (month <= 12) & (day >= 1)
    is_date &= dates.astype("datetime64[M]") == months
    return Dates(np.where(is_date, dates.astype(np.int64), 0), is_date, parts)


def written(days: Any, form: str, parts: dict[str, pa.Array]) -> pa.Array:
    """Writes days in a form, without the zeros that were not written before."""
    dates = days.astype("datetime64[D]")
    months, years = dates.astype("datetime64[M]"), dates.astype("datetime64[Y]")
    numbers = {
        "YYYY": years.astype(np.int64) + 1970,
        "MM": (months - years).astype(np.int64) + 1,
        "DD": (dates - months).astype(np.int64) + 1,
    }
    is_short = pc.or_(*(pc.equal(pc.utf8_length(parts[part]), 1) for part in ("month", "day")))
    pieces = {name: _padded(numbers[name], len(name), is_short) for name in _PARTS}
    order = sorted(pieces, key=form.index)
    between = form.replace("YYYY", "").replace("MM", "").replace("DD", "")[:1]
    date = pc.binary_join_element_wise(*(pieces[name] for name in order), between)
    return pc.binary_join_element_wise(date, parts["rest"], "")


def likely_forms(texts: pa.Array) -> list[str]:
    """Gives the forms in which most texts are dates, and at least half of them."""
    counts = {form: int(read_dates(texts, form).is_date.sum()) for form in FORMS}
    most = max(counts.values())
    return [form for form, count in counts.items() if count == most and 2 * count >= len(texts)]


@cache
def _pattern(form: str) -> str:
    few = "2" if form == "YYYYMMDD" else "1,2"
    digits = {"YYYY": r"(?P<year>\d{4})", "MM": rf"(?P<month>\d{{{few}}})"}
    digits["DD"] = rf"(?P<day>\d{{{few}}})"
    pattern = form.replace(".", r"\.")
    for name, group in digits.items():
        pattern = pattern.replace(name, group)
    return rf"^{pattern}(?P<rest>(?:{_TIME})?)$"


def _numbers(texts: pa.Array) -> Any:
    return texts.cast(pa.int64()).fill_null(0).to_numpy(zero_copy_only=False)


def _padded(numbers: Any, width: int, is_short: pa.Array) -> pa.Array:
    """Writes numbers with leading zeros, or without."""
    texts = pa.array(numbers).cast(pa.string())
    return pc.if_else(is_short, texts, pc.utf8_lpad(texts, width, "0"))

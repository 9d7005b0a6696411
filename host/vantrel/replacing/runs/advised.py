"""What is likely to be wanted of columns that look personal, as far as these can hold it."""

from __future__ import annotations

from collections.abc import Iterable

import pandas as pd
import pyarrow as pa

from vantrel.detection.personal import Finding, Kind
from vantrel.replacing.fates import SCRUB
from vantrel.replacing.others.dates import likely_forms
from vantrel.replacing.others.decided import texts_of
from vantrel.replacing.others.hashed import is_number
from vantrel.replacing.others.shifted import holds_dates
from vantrel.replacing.values.cells import holds_texts

BLANK = "blank"

_SHIFT, _HASH, _CARD = "shift:180", "hash", "fake:credit_card_number"

# The others are best blank.
_LIKELY = {
    Kind.BIRTH: _SHIFT,
    Kind.STREET: "fake:street_address",
    Kind.POSTCODE: "fake:postcode",
    Kind.CITY: "fake:city",
    Kind.ACCOUNT: "fake:iban",
    Kind.CARD: _CARD,
    Kind.OFFICIAL: _HASH,
    Kind.DOCUMENT: _HASH,
    Kind.IP: "fake:ipv4",
    Kind.PEOPLE: SCRUB,
    Kind.PROSE: SCRUB,
}


def advised(table: pd.DataFrame, types: pa.Schema, found: Iterable[Finding]) -> dict[str, str]:
    """Gives a fate for each column that looks personal.

    Args:
        table: As much of the table as tells how its dates are written.
        types: The types of its columns.
        found: What looks personal.
    """
    return {
        each.column: _fate(each.kind, types.field(each.column).type, texts_of(table, each.column))
        for each in found
    }


def _fate(kind: Kind, column: pa.DataType, texts: pa.Array) -> str:
    fate, values = _LIKELY.get(kind, BLANK), _values_of(column)
    if fate == _SHIFT:
        return fate if holds_dates(values) and likely_forms(texts) else BLANK
    if holds_texts(values) or (fate == _CARD and pa.types.is_int64(column)):
        return fate
    return _HASH if is_number(values) else BLANK


def _values_of(column: pa.DataType) -> pa.DataType:
    return column.value_type if pa.types.is_dictionary(column) else column

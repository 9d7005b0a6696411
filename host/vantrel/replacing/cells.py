"""Puts made-up values into the cells of a column that are not empty, in the column's own type."""

from __future__ import annotations

from typing import Any

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from vantrel.errors import ReplaceError
from vantrel.replacing.prints import layout

_BLANK = ord(" ")


def is_text(kind: pa.DataType) -> bool:
    """Whether values of a type are texts."""
    return bool(
        pa.types.is_string(kind) or pa.types.is_large_string(kind) or pa.types.is_string_view(kind)
    )


def put_in(made: pa.Array, column: pa.Array, name: str) -> pa.Array:
    """Gives a column with made-up values; what is missing, empty or blank stays as it is.

    Args:
        made: A string for each row.
        column: The values that are replaced.
        name: What an error calls the column.

    Raises:
        ReplaceError: The column's type cannot hold them.
    """
    kind = column.type
    if pa.types.is_dictionary(kind):
        return _encoded(put_in(made, column.dictionary_decode(), name), kind)
    if pa.types.is_null(kind):
        return column
    if is_text(kind):
        texts = column.cast(pa.string())
        is_gap = _gaps(texts)
        if is_gap.any():
            made = pc.if_else(pa.array(is_gap), texts, made)
        return made.cast(kind)
    return pc.if_else(column.is_valid(), _as_number(made, kind, name), column)


def _gaps(texts: pa.Array) -> Any:
    """Tells where a text is missing, empty or nothing but blanks."""
    data, starts, lengths = layout(texts)
    is_gap = (lengths == 0) | (np.append(data, 0)[starts] <= _BLANK)
    if is_gap.any():  # or else only begins with a blank
        blank = pc.equal(pc.utf8_trim_whitespace(texts), "")
        is_gap = pc.fill_null(blank, True).to_numpy(zero_copy_only=False)
    return is_gap


def _encoded(column: pa.Array, kind: pa.DictionaryType) -> pa.Array:
    encoded = column.dictionary_encode()
    return pa.DictionaryArray.from_arrays(
        encoded.indices.cast(kind.index_type), encoded.dictionary, ordered=kind.ordered
    )


def _as_number(made: pa.Array, kind: pa.DataType, name: str) -> pa.Array:
    """Reads the digits of made-up values as numbers: of telephones, as a rule."""
    digits = pc.replace_substring_regex(made, "[^0-9]+", "")
    try:
        return digits.cast(kind)
    except (pa.ArrowInvalid, pa.ArrowNotImplementedError) as error:
        raise ReplaceError(
            f"Column {name!r} is of type {kind}, which cannot hold what is made up for it: make it"
            " text, or keep it."
        ) from error

"""How a table writes things.

Names have titles before them, the last name before a comma, or are in capitals. Telephone numbers
begin with the code of the country, or have no blanks.
"""

from __future__ import annotations

from collections.abc import Callable

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from vantrel.replacing.values.prints import layout

# What stands before names and is none itself, as "Dean" and "Phil" may be.
_TITLES = (
    r"(?i)^\s*(?P<titles>(?:(?:mr|mrs|miss|ms|mx|sir|dame|professor|prof|doctor|dr"
    r"|(?:med|phil|jur|rer|nat|h)\.(?:\s?(?:c|nat|pol|oec)\.)?|dipl\.-?ing|herrn?|frau|fräulein"
    r"|mme|mlle|madame|monsieur|mademoiselle|señora?|sra?|señorita|srta|signora?|sig|dott|dottoressa"
    r"|mevrouw|mevr|meneer|dhr|fru)(?:\.\s*|\s+))+)(?P<name>\S.*)$"
)
_PARTS = pa.struct({"titles": pa.string(), "name": pa.string()})

# What a telephone number without blanks and other signs between its digits consists of.
_IS_OF_BARE = np.isin(np.arange(256), list(b"+0123456789"))

# Shorter texts in capitals may be initials, and so may those with a full stop.
_FEWEST_CAPITALS = 3


def titles_of(names: pa.Array) -> pa.Array:
    """Gives the titles before full names, with the blanks behind them; missing where none is."""
    return pc.struct_field(_parted(names), "titles")


def without_titles(names: pa.Array) -> pa.Array:
    """Gives full names without the titles before them."""
    return pc.coalesce(pc.struct_field(_parted(names), "name"), names)


def in_form_of(real: pa.Array, made: pa.Array, inverted: Callable[[], pa.Array]) -> pa.Array:
    """Writes full names as the real ones are, but for their case.

    Args:
        real: The texts that are replaced.
        made: A name for each.
        inverted: Makes the same with the last name first, before a comma.
    """
    has_comma = pc.fill_null(pc.match_substring(real, ","), False)
    if pc.any(has_comma).as_py():
        made = pc.if_else(has_comma, inverted(), made)
    titles = titles_of(real)
    return made if titles.null_count == len(titles) else _joined(titles, made)


def in_case_of(real: pa.Array, made: pa.Array) -> pa.Array:
    """Writes names in capitals where the real ones are."""
    is_upper = pc.fill_null(pc.utf8_is_upper(real), False)
    if not pc.any(is_upper).as_py():  # as of most batches, and the rest takes several times as long
        return made
    is_long = pc.greater_equal(pc.utf8_length(real), _FEWEST_CAPITALS)
    is_upper = pc.and_not(pc.and_(is_upper, is_long), pc.match_substring(real, "."))
    return pc.if_else(pc.fill_null(is_upper, False), pc.utf8_upper(made), made)


def in_form_of_numbers(
    real: pa.Array, made: pa.Array, international: Callable[[], pa.Array]
) -> pa.Array:
    """Writes telephone numbers as the real ones are.

    Args:
        real: The texts that are replaced.
        made: A number for each.
        international: Makes the same with "+" and the code of the country.
    """
    for start in ("+", "00"):
        is_abroad = pc.fill_null(pc.starts_with(real, start), False)
        if pc.any(is_abroad).as_py():
            written = pc.replace_substring(international(), "+", start, max_replacements=1)
            made = pc.if_else(is_abroad, written, made)
    # Patterns would take ten times as long as this, and so would they to make numbers bare.
    is_bare = pc.ascii_is_decimal(pc.ascii_ltrim(real, "+"))
    is_bare = pc.fill_null(pc.and_not(is_bare, pc.starts_with(real, "++")), False)
    return pc.if_else(is_bare, _bare(made), made) if pc.any(is_bare).as_py() else made


def _bare(numbers: pa.Array) -> pa.Array:
    data, starts, _ = layout(numbers)
    is_kept = _IS_OF_BARE[data]
    before = np.append(np.int32(0), np.cumsum(is_kept, dtype=np.int32))
    offsets = before[np.append(starts, len(data))]
    return pa.StringArray.from_buffers(
        len(numbers), pa.py_buffer(offsets), pa.py_buffer(data[is_kept])
    )


def _parted(names: pa.Array) -> pa.Array:
    """Parts full names that have titles; where none has any, for a third of what parting takes."""
    if not pc.any(pc.match_substring_regex(names, _TITLES)).as_py():
        return pa.nulls(len(names), _PARTS)
    return pc.extract_regex(names, _TITLES)


def _joined(titles: pa.Array, names: pa.Array) -> pa.Array:
    return pc.binary_join_element_wise(pc.fill_null(titles, ""), names, "")

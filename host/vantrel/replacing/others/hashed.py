"""Gives the values of a column others of the same form, each its own and everywhere the same."""

from __future__ import annotations

import pyarrow as pa
import pyarrow.compute as pc

from vantrel.errors import ReplaceError
from vantrel.replacing.others.permuted import WHOLE_NUMBER, permuted_texts
from vantrel.replacing.values.cells import put_in
from vantrel.replacing.values.keys import as_texts, canonical, is_text
from vantrel.wording import shown


def hashed(column: pa.Array, name: str, key: bytes) -> pa.Array:
    """Gives each value of a column another one.

    Args:
        column: Texts or whole numbers. Gaps, such as blank cells, stay.
        name: What an error calls the column.
        key: What decides which.

    Raises:
        ReplaceError: The values are of another kind, or others do not fit into the column.
    """
    kind = column.type.value_type if pa.types.is_dictionary(column.type) else column.type
    if pa.types.is_null(kind):
        return column
    if not (is_text(kind) or is_number(kind)):
        raise _unusable(name, f"is of type {kind}")
    encoded = as_texts(column).dictionary_encode()
    keys = canonical(encoded.dictionary).cast(pa.string())
    if is_number(kind) and pc.all(pc.match_substring_regex(keys, WHOLE_NUMBER)).as_py() is False:
        raise _unusable(name, "has numbers with a fraction, or too large for their type")
    images = permuted_texts(keys.drop_null(), key)
    images = pc.replace_with_mask(keys, keys.is_valid(), images)
    if is_text(kind):
        images = _in_form_of(encoded.dictionary, keys, images)
    new = images.take(encoded.indices)
    made = put_in(new, column, name, read=lambda texts: texts)
    if pa.types.is_floating(kind) and not as_texts(made).equals(new):
        raise _unusable(name, f"has numbers that {kind} does not hold to the last digit")
    return made


def is_number(kind: pa.DataType) -> bool:
    """Whether values of a type are numbers, which may be whole ones."""
    tests = (pa.types.is_integer, pa.types.is_floating, pa.types.is_decimal)
    return any(test(kind) for test in tests)


def _unusable(name: str, reason: str) -> ReplaceError:
    return ReplaceError(
        f"Column {shown(repr(name))} {reason}: only texts and whole numbers can be hashed."
    )


def _in_form_of(cells: pa.Array, keys: pa.Array, images: pa.Array) -> pa.Array:
    """Writes images as the cells are, whose keys may be written otherwise: "7.0", "Ann@web.de"."""
    is_other = pc.fill_null(pc.not_equal(cells, keys), False)
    if not pc.any(is_other).as_py():
        return images
    others = (each.filter(is_other).to_pylist() for each in (cells, keys, images))
    written = [_written(*each) for each in zip(*others, strict=True)]
    return pc.replace_with_mask(images, is_other, pa.array(written, pa.string()))


def _written(cell: str, key: str, image: str) -> str:
    if cell.count("-") < key.count("-"):  # a UUID without any
        key, image = key.replace("-", ""), image.replace("-", "")
    start = cell.lower().find(key.lower())
    end = start + len(key)
    if start < 0 or len(cell.lower()) != len(cell):  # a time, written in another way
        return image
    own = cell[start:end]
    if own.isupper():  # where a letter of a UUID takes the place of a digit, too
        own = "A" * len(own)
    letters = zip(own, image, strict=True)
    return cell[:start] + "".join(_in_case_of(*each) for each in letters) + cell[end:]


def _in_case_of(old: str, new: str) -> str:
    return new.upper() if old.isupper() and len(new.upper()) == 1 else new

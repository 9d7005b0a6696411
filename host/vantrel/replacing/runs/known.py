"""What people are known by before they are replaced: what is looked for in other columns."""

from __future__ import annotations

from collections.abc import Iterable, Iterator

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from vantrel.attributes import NAMES
from vantrel.replacing.columns.person import Person
from vantrel.replacing.leaks import Known, Names, Value
from vantrel.replacing.people.people import NewPerson
from vantrel.replacing.values.form import in_form_of, without_titles
from vantrel.replacing.values.keys import as_texts, is_text

# "Smith, John" and "John Smith"; of several words the last is apart, with particles before it.
_PARTICLES = r"(?:(?i:van|von|zu|der|den|ter|ten|de|del|della|di|da|dos|du|la)\s+)*"
_TWO_NAMES = (
    r"^\s*(?:(?P<before>[^,]*[^,\s])\s*,\s*(?P<behind>.*\S)"
    rf"|(?P<start>.*?\S)\s+(?P<end>{_PARTICLES}\S+))\s*$"
)

_PARTS = ("firstname", "lastname")


def known_of(new: NewPerson, *, with_made: bool) -> Known:
    """Gives what one person of each row is known by; the parts of full names, too.

    Args:
        new: What becomes of her.
        with_made: Whether what takes the place of each value is needed, too.
    """
    values = []
    for column, attribute in new.person.replaced.items():
        made = _made(new, column, attribute) if with_made else None
        values.append(Value(attribute, new.real[column], made))
    missing = [part for part in _PARTS if part not in new.person.columns]
    for _, real, made, _ in [each for each in values if missing and each.attribute == "fullname"]:
        of_made = (None, None) if made is None else _halves(made)
        parts = zip(_PARTS, _halves(real), of_made, strict=True)
        values += [Value(*part) for part in parts if part[0] in missing]
    return Known(values, _names(new, values))


def _made(new: NewPerson, column: str, attribute: str) -> pa.Array:
    """What is written in texts: names not in the case of their column, which texts may not have."""
    if attribute == "fullname":
        return in_form_of(new.real[column], new.made.column(attribute), new.made.inverted)
    if attribute in NAMES:
        return new.made.column(attribute)
    return as_texts(new.columns[column])


def found_by_print(texts: pa.Array, known: Known, new: NewPerson) -> Iterator[Value]:
    """Gives the names that another table tells, as they are in texts."""
    if known.names is None or not is_text(texts.type):
        return
    words = known.names.words_in(texts.cast(pa.string()))
    for part, wanted in zip(_PARTS, (known.names.first, known.names.last), strict=True):
        yield Value(part, words.found(wanted), new.made.column(part))


def _names(new: NewPerson, values: Iterable[Value]) -> Names | None:
    """Gives the names to look for by prints; None where names are to stay."""
    if not new.person.kept.isdisjoint(NAMES):
        return None
    if not _has_names(new.person):
        return Names(new.told.first, new.told.last)
    parts = [value.real for value in values if value.attribute in _PARTS]
    plain = [pc.fill_null(_is_plain(part), True) for part in parts]
    is_plain = np.logical_and.reduce([each.to_numpy(zero_copy_only=False) for each in plain])
    return Names(new.told.first, new.told.last, ~is_plain)


def _is_plain(names: pa.Array) -> pa.Array:
    """Tells which names texts have letter by letter or not at all: one word of ASCII."""
    return pc.and_not(pc.string_is_ascii(names), pc.match_substring(names, " "))


def _has_names(person: Person) -> bool:
    return "fullname" in person.columns or person.columns.keys() >= set(_PARTS)


def _halves(names: pa.Array) -> tuple[pa.Array, pa.Array]:
    """Gives the first and the last names of full ones, missing where there is one word."""
    found = pc.extract_regex(without_titles(names), _TWO_NAMES)
    before, behind, start, end = (
        pc.if_else(pc.equal(part, ""), None, part) for part in found.flatten()
    )
    return pc.coalesce(behind, start), pc.coalesce(before, end)

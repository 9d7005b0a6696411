"""What the rows of a table tell of a person: gender, country, and the prints of real names.

A gender is told by its own column, else by a title. Where no row of a person tells one, her first
name does if Faker's lists have it for one gender alone.
"""

from __future__ import annotations

from collections.abc import Callable
from typing import Any, NamedTuple

import numpy as np
import pyarrow as pa

from vantrel.config import PersonModelConfig
from vantrel.genders import keys_of
from vantrel.replacing.columns.person import Person
from vantrel.replacing.making.families import stems
from vantrel.replacing.making.places import GENDERS, Places
from vantrel.replacing.people.by_name import genders_by_name
from vantrel.replacing.values.form import titles_of, without_titles
from vantrel.replacing.values.keys import as_texts, canonical
from vantrel.replacing.values.names import first_names, folded, halves, last_names, paired
from vantrel.replacing.values.prints import Prints, prints

_CONFIG = PersonModelConfig()


class Told(NamedTuple):
    """What is told of people; 0 is what is not.

    Attributes:
        gender: The code of each one's gender, a place in :data:`GENDERS`.
        place: The number of each one's country in :class:`Places`.
        first: The print of each one's real first name.
        last: The same of last names.
        family: The print of each one's household and real family name together, which is alike in
            all forms of it.
    """

    gender: Any
    place: Any
    first: Any
    last: Any
    family: Any

    def of(self, rows: Any) -> Told:
        """Gives what is told of some of them."""
        return Told(*(values[rows] for values in self))


def told_by(batch: pa.RecordBatch, person: Person, places: Places) -> Told:
    """Reads what each row tells of a person."""
    place = _first_told(batch, person, "country", _numbers_in(places))
    is_last_first = places.is_last_first[place]
    first, last = _names(batch, person, is_last_first)
    family = np.zeros(batch.num_rows, dtype=np.uint64)
    if person.household:
        alike = _names(batch, person, is_last_first, lambda names: stems(folded(names)))[1]
        names = np.where(places.has_forms[place], alike, last)
        family = paired(prints(canonical(batch.column(person.household))), names)
    return Told(_genders(batch, person), place, first, last, family)


def with_genders_by_name(told: Told, places: Places) -> Told:
    """Adds the genders of those of whom only the first name tells one."""
    gender = told.gender.copy()
    untold = np.flatnonzero(gender == 0)
    gender[untold] = genders_by_name(told.first[untold], told.place[untold], places)
    return told._replace(gender=gender)


def _genders(batch: pa.RecordBatch, person: Person) -> Any:
    """Reads the codes of genders and of titles, also those that stand in the other's column."""
    told = np.zeros(batch.num_rows, dtype=np.uint8)
    for attribute, other in (("gender", "title"), ("title", "gender")):
        own = _first_told(batch, person, attribute, _codes_of(attribute, other))
        told = np.where(told == 0, own, told)
    for column in person.columns.get("fullname", ()):
        if not told.all():
            titles = titles_of(as_texts(batch.column(column)))
            told = np.where(told == 0, by_value(titles, _codes_of("title")), told)
    return told


def _first_told(
    batch: pa.RecordBatch, person: Person, attribute: str, read: Callable[[pa.Array], Any]
) -> Any:
    """Reads the columns of an attribute; the first that tells something counts."""
    told = np.zeros(batch.num_rows, dtype=read(pa.array([], pa.string())).dtype)
    for column in person.columns.get(attribute, ()):
        told = np.where(told == 0, by_value(batch.column(column), read), told)
    return told


def by_value(column: pa.Array, read: Callable[[pa.Array], Any]) -> Any:
    """Has each distinct text of a column read once; what is missing gives 0.

    Args:
        column: The column.
        read: Makes an array of codes, or of prints, of an array of texts.
    """
    encoded = as_texts(column).dictionary_encode()
    made = read(encoded.dictionary)
    made = np.append(made, made.dtype.type(0))
    indices = encoded.indices.cast(pa.int64()).fill_null(len(encoded.dictionary))
    return made[indices.to_numpy(zero_copy_only=False)]


def _numbers_in(places: Places) -> Callable[[pa.Array], Any]:
    return lambda texts: np.array(
        [places.number(text) for text in texts.to_pylist()], dtype=np.uint16
    )


def _codes_of(*attributes: str) -> Callable[[pa.Array], Any]:
    """Reads the codes of genders as one attribute tells them, or else the next one."""

    def read(texts: pa.Array) -> Any:
        words = [[text, *text.split()] for text in texts.to_pylist()]  # "Frau Dr."
        distinct = {word for those in words for word in those}
        keys = [keys_of(distinct, _CONFIG, attribute) for attribute in attributes]
        found = ([own[word] for own in keys for word in those if word in own] for those in words)
        codes = [next((GENDERS.index(key) for key in each if key in GENDERS), 0) for each in found]
        return np.array(codes, dtype=np.uint8)

    return read


def _names(
    batch: pa.RecordBatch,
    person: Person,
    is_last_first: Any,
    plain: Callable[[pa.Array], pa.Array] = folded,
) -> tuple[Prints, Prints]:
    """The prints of first and last names, of full names where there is no other.

    Args:
        batch: The rows.
        person: Whose names.
        is_last_first: Whether the language of each has the last name first.
        plain: Takes from names what does not tell them apart.
    """
    first = _first_told(batch, person, "firstname", lambda names: first_names(plain(names)))
    last = _first_told(batch, person, "lastname", lambda names: last_names(plain(names)))
    for column in person.columns.get("fullname", ()):
        if first.all() and last.all():
            break
        whole = without_titles(as_texts(batch.column(column)))
        start, end = halves(plain(whole), is_last_first)
        first, last = np.where(first, first, start), np.where(last, last, end)
    return first, last

"""The names, numbers and addresses that the real people of the tables bear, as prints."""

from __future__ import annotations

from typing import Any

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from vantrel.attributes import PHONES
from vantrel.replacing.columns.person import Person
from vantrel.replacing.making.numbers import ends_of_numbers
from vantrel.replacing.people.told import Told
from vantrel.replacing.values.keys import as_texts
from vantrel.replacing.values.names import paired
from vantrel.replacing.values.prints import WORD, Prints, layout, prints, words_from_each_byte

_FEWEST_TO_MERGE = 1_000_000

# Made-up addresses are under such domains alone, so no other real one can be among them.
_RESERVED = np.uint64(int.from_bytes(b".example", "little"))
_LOWER_CASE = np.uint64(int.from_bytes(b"\x20" * WORD, "little"))  # a full stop has this bit, too


class Distinct:
    """A growing set of prints, eight bytes each; 0 is never in it."""

    def __init__(self) -> None:
        self._sorted: Prints = np.zeros(0, dtype=np.uint64)
        self._new: list[Prints] = []
        self._new_count = 0

    def __len__(self) -> int:
        self._merge()
        return len(self._sorted)

    def add(self, values: Prints) -> None:
        """Adds prints."""
        self._new.append(values)
        self._new_count += len(values)
        if self._new_count > max(_FEWEST_TO_MERGE, len(self._sorted)):
            self._merge()

    def has(self, values: Prints) -> Any:
        """Tells of each print whether it was added."""
        if not len(self):
            return np.zeros(len(values), dtype=bool)
        places = np.searchsorted(self._sorted, values)
        return self._sorted.take(places, mode="clip") == values

    def _merge(self) -> None:
        if self._new:
            merged = np.sort(np.concatenate([self._sorted, *self._new]))
            self._sorted = merged[merged != np.append(np.uint64(0), merged[:-1])]
            self._new, self._new_count = [], 0


class RealPeople:
    """What real people bear.

    Attributes:
        names: First and last names together.
        numbers: Telephone numbers, by their last digits.
        addresses: Those e-mail addresses that could be made up.
    """

    def __init__(self) -> None:
        self.names, self.numbers, self.addresses = Distinct(), Distinct(), Distinct()

    def learn(self, batch: pa.RecordBatch, person: Person, told: Told) -> None:
        """Takes in what the rows of a batch have of a person."""
        self.names.add(paired(told.first, told.last))
        for attribute in PHONES:
            for column in person.columns.get(attribute, ()):
                self.numbers.add(ends_of_numbers(as_texts(batch.column(column))))
        for column in person.columns.get("email", ()):
            texts = as_texts(batch.column(column))
            self.addresses.add(prints_of_addresses(texts))


def prints_of_addresses(texts: pa.Array) -> Prints:
    """Gives the prints of those addresses that could be made up."""
    data, starts, lengths = layout(texts)
    places = np.maximum(starts + lengths - WORD, 0)
    ends = words_from_each_byte(data)[places] | _LOWER_CASE
    could_be = texts.filter(pa.array((ends == _RESERVED) & (lengths > WORD)))
    return prints(pc.utf8_lower(could_be))

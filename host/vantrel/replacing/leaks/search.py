"""Looks for people who are still named where their columns were replaced."""

from __future__ import annotations

from collections.abc import Iterator, Mapping
from dataclasses import dataclass
from typing import Any, Literal

import numpy as np
import pyarrow as pa

from vantrel.attributes import PHONES
from vantrel.hints import in_rows
from vantrel.replacing.leaks.cells import Cells, Integers
from vantrel.replacing.leaks.exact import is_found
from vantrel.wording import counted, shown

# What of a person is looked for. First and last names alone are those of many.
SOUGHT = ("firstname", "lastname", "fullname", "email", "username", *PHONES)

_MOST_ROWS = 3

type Kind = Literal["person", "name"]
type Flags = np.ndarray[Any, np.dtype[np.bool]]


@dataclass
class Leak:
    """What is left of people in a column.

    Attributes:
        column: The column.
        kind: Whether its cells name the row's person, or have a first or last name alone.
        cells: In how many cells.
        rows: The first of the rows.
    """

    column: str
    kind: Kind
    cells: int
    rows: tuple[int, ...]

    def __str__(self) -> str:
        """Tells it in a line."""
        one = self.cells == 1
        if self.kind == "person":
            does = f"still {'names' if one else 'name'} the row's person"
        else:
            does = f"{'has' if one else 'have'} the row's first or last name alone"
        cells = counted(self.cells, "cell")
        return f"Column {shown(repr(self.column))}: {cells} {does} ({in_rows(self.rows)})"


class LeakSearch:
    """Searches the columns that pass through for what each row's own person is known by."""

    def __init__(self) -> None:
        """Begins with nothing found."""
        self._leaks: dict[tuple[str, Kind], Leak] = {}

    def look(self, passed: pa.RecordBatch, real: Mapping[str, pa.Array], first_row: int) -> None:
        """Looks at some rows.

        Args:
            passed: The columns that pass through.
            real: What stood in the same rows, by attribute, before it was replaced.
            first_row: The number of the first of the rows.
        """
        wanted = Wanted(real)
        for column, values in zip(passed.schema.names, passed.columns, strict=True):
            texts = _texts(values)
            if texts is None:
                continue
            has = wanted.found_in(texts)
            nobody = np.zeros(len(texts), dtype=bool)
            first, last = has.pop("firstname", nobody), has.pop("lastname", nobody)
            names_person = np.logical_or.reduce([first & last, *has.values()])
            self._add(column, "person", names_person, first_row)
            self._add(column, "name", (first | last) & ~names_person, first_row)

    def found(self) -> list[Leak]:
        """What was found; people first, and columns in the order in which they came up."""
        return sorted(self._leaks.values(), key=lambda leak: leak.kind != "person")

    def _add(self, column: str, kind: Kind, is_leak: Flags, first_row: int) -> None:
        rows = np.flatnonzero(is_leak)
        if len(rows):
            leak = self._leaks.setdefault((column, kind), Leak(column, kind, 0, ()))
            leak.cells += len(rows)
            leak.rows = (*leak.rows, *(rows[:_MOST_ROWS] + first_row).tolist())[:_MOST_ROWS]


class Wanted:
    """What the people of some rows are known by."""

    def __init__(self, real: Mapping[str, pa.Array]) -> None:
        """Takes the values by attribute; others than are looked for may be among them."""
        self.values = {
            attribute: real[attribute].cast(pa.string())
            for attribute in SOUGHT
            if attribute in real
        }
        cells = {attribute: Cells(values) for attribute, values in self.values.items()}
        self._numbers = {
            each: cells.pop(each).ends_of_numbers() for each in PHONES if each in cells
        }
        self._words = {each: values.first_words() for each, values in cells.items()}

    def maybe_in(self, texts: pa.Array) -> Iterator[tuple[str, Integers]]:
        """Tells of each attribute in which rows a text may have its value; all others do not."""
        cells = Cells(texts)
        for attribute, words in self._words.items():
            yield attribute, cells.may_have_word(words)
        for attribute, numbers in self._numbers.items():
            yield attribute, cells.may_have_number(numbers)

    def found_in(self, texts: pa.Array) -> dict[str, Flags]:
        """Tells of each attribute in which rows a text has its value."""
        has = {}
        for attribute, rows in self.maybe_in(texts):
            has[attribute] = np.zeros(len(texts), dtype=bool)
            pairs = zip(
                texts.take(pa.array(rows)).to_pylist(),
                self.values[attribute].take(pa.array(rows)).to_pylist(),
                strict=True,
            )
            has[attribute][rows] = [is_found(attribute, text, value) for text, value in pairs]
        return has


def _texts(values: pa.Array) -> pa.Array | None:
    """The cells of a column as texts; None where it is of a type that can name nobody."""
    kind = values.type.value_type if pa.types.is_dictionary(values.type) else values.type
    if pa.types.is_nested(kind):
        texts = [None if value is None else str(value) for value in values.to_pylist()]
        return pa.array(texts, pa.string())
    return values.cast(pa.string()) if is_text(kind) or pa.types.is_integer(kind) else None


def is_text(kind: pa.DataType) -> bool:
    """Whether values of a type are texts, or a dictionary of them."""
    kind = kind.value_type if pa.types.is_dictionary(kind) else kind
    return any(
        test(kind)
        for test in (pa.types.is_string, pa.types.is_large_string, pa.types.is_string_view)
    )

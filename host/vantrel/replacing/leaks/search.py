"""Looks for people who are still named where their columns were replaced."""

from __future__ import annotations

from collections.abc import Iterable, Iterator, Sequence
from dataclasses import dataclass
from typing import Any, Literal, NamedTuple

import numpy as np
import pyarrow as pa

from vantrel.attributes import PHONES
from vantrel.hints import in_rows
from vantrel.replacing.leaks.by_print import PrintedWords
from vantrel.replacing.leaks.cells import Cells, Integers
from vantrel.replacing.leaks.exact import is_found
from vantrel.replacing.prints import Prints
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


class Value(NamedTuple):
    """What the people of some rows are known by.

    Attributes:
        attribute: What it is.
        real: What stood in each row before it was replaced.
        made: What takes its place; missing where nothing does.
    """

    attribute: str
    real: pa.Array
    made: pa.Array | None = None


class Names(NamedTuple):
    """The prints of the first and last names of the people of some rows, told by other tables."""

    first: Prints
    last: Prints


class LeakSearch:
    """Searches the columns that pass through for what each row's own person is known by."""

    def __init__(self) -> None:
        """Begins with nothing found."""
        self._leaks: dict[tuple[str, Kind], Leak] = {}

    def look(
        self,
        passed: pa.RecordBatch,
        values: Sequence[Value],
        first_row: int,
        names: Names | None = None,
    ) -> None:
        """Looks at some rows.

        Args:
            passed: The columns that pass through.
            values: What the people of the same rows are known by.
            first_row: The number of the first of the rows.
            names: Their names where the table does not have them.
        """
        wanted = Wanted(values)
        for column, cells in zip(passed.schema.names, passed.columns, strict=True):
            texts = _texts(cells)
            if texts is None:
                continue
            has = wanted.found_in(texts)
            if names is not None:
                words = PrintedWords(texts)
                has["firstname"][words.rows_with(names.first)] = True
                has["lastname"][words.rows_with(names.last)] = True
            first, last = has.pop("firstname"), has.pop("lastname")
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

    def __init__(self, values: Iterable[Value]) -> None:
        """Takes values; others than are looked for may be among them."""
        self._values = [
            value._replace(real=value.real.cast(pa.string()))
            for value in values
            if value.attribute in SOUGHT
        ]
        cells = [Cells(value.real) for value in self._values]
        self._keys = [
            each.ends_of_numbers() if value.attribute in PHONES else each.first_words()
            for value, each in zip(self._values, cells, strict=True)
        ]

    def maybe_in(self, texts: pa.Array) -> Iterator[tuple[Value, Integers]]:
        """Tells of each value in which rows a text may have it; all others do not."""
        cells = Cells(texts)
        for value, key in zip(self._values, self._keys, strict=True):
            yield value, cells.may_have(key)

    def found_in(self, texts: pa.Array) -> dict[str, Flags]:
        """Tells of each attribute that is looked for in which rows a text has a value of it."""
        has = {attribute: np.zeros(len(texts), dtype=bool) for attribute in SOUGHT}
        for (attribute, real, _), rows in self.maybe_in(texts):
            pairs = zip(
                texts.take(pa.array(rows)).to_pylist(),
                real.take(pa.array(rows)).to_pylist(),
                strict=True,
            )
            is_there = [is_found(attribute, text, value) for text, value in pairs]
            has[attribute][rows] |= np.array(is_there, dtype=bool)
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

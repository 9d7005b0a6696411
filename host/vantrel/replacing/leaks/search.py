"""Looks for people who are still named where their columns were replaced."""

from __future__ import annotations

from collections.abc import Iterable, Iterator, Sequence
from dataclasses import dataclass
from typing import Any, Literal, NamedTuple

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from vantrel.attributes import PHONES
from vantrel.hints import in_rows
from vantrel.replacing.leaks.by_print import PrintedWords
from vantrel.replacing.leaks.cells import Cells, Integers
from vantrel.replacing.leaks.exact import is_found
from vantrel.replacing.values.keys import as_texts, is_text
from vantrel.replacing.values.prints import Prints, is_all_ascii
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

    def add(self, cells: int, rows: Iterable[int]) -> None:
        """Adds cells in rows behind those that are there."""
        self.cells += cells
        self.rows = (*self.rows, *rows)[:_MOST_ROWS]

    def __str__(self) -> str:
        """Tells it in a line."""
        return f"Column {shown(repr(self.column))}: {self.told}"

    @property
    def told(self) -> str:
        """Tells it beside the name of the column."""
        one = self.cells == 1
        if self.kind == "person":
            does = f"still {'names' if one else 'name'} the row's person"
        else:
            does = f"{'has' if one else 'have'} the row's first or last name alone"
        cells = counted(self.cells, "cell")
        return f"{cells} {does} ({in_rows(self.rows)})"


def people_first(leaks: Iterable[Leak]) -> list[Leak]:
    """Sorts leaks: those that name people come first, else columns stay in their order."""
    return sorted(leaks, key=lambda leak: leak.kind != "person")


class Value(NamedTuple):
    """What the people of some rows are known by.

    Attributes:
        attribute: What it is.
        real: What stood in each row before it was replaced.
        made: What takes its place; missing where nothing does.
        address: The made-up e-mail address of the same people, for addresses that have it in them.
    """

    attribute: str
    real: pa.Array
    made: pa.Array | None = None
    address: pa.Array | None = None


class Names(NamedTuple):
    """The prints of the first and last names of the people of some rows.

    Attributes:
        first: Of first names.
        last: Of last names.
        is_sought: In which rows these are looked for, besides those whose cell has other letters
            than ASCII's; None if in all, as the table itself does not have the names.
    """

    first: Prints
    last: Prints
    is_sought: Flags | None = None

    def words_in(self, texts: pa.Array) -> PrintedWords:
        """The words of those cells in which the names are looked for."""
        if self.is_sought is None or is_all_ascii(texts):
            return PrintedWords(texts, self.is_sought)
        is_ascii = pc.fill_null(pc.string_is_ascii(texts), True)
        return PrintedWords(texts, self.is_sought | ~is_ascii.to_numpy(zero_copy_only=False))


class Known(NamedTuple):
    """What is known of one person of each row, to look for.

    Attributes:
        values: What she is known by.
        names: Her names without regard to accents, or where the table does not have them; None
            where they are to stay.
    """

    values: Sequence[Value]
    names: Names | None = None


class LeakSearch:
    """Searches the columns that pass through for what each row's own people are known by."""

    def __init__(self) -> None:
        """Begins with nothing found."""
        self._leaks: dict[tuple[str, Kind], Leak] = {}

    def look(
        self,
        passed: pa.RecordBatch,
        people: Sequence[Known],
        first_row: int,
    ) -> None:
        """Looks at some rows.

        Args:
            passed: The columns that pass through.
            people: The people of the same rows.
            first_row: The number of the first of the rows.
        """
        wanted = [(Wanted(values), names) for values, names in people]
        for column, cells in zip(passed.schema.names, passed.columns, strict=True):
            texts = _texts(cells)
            if texts is None:
                continue
            found = [_found(texts, *each) for each in wanted]
            names_person = np.logical_or.reduce([is_named for is_named, _ in found])
            has_name = np.logical_or.reduce([has_part for _, has_part in found])
            self._add(column, "person", names_person, first_row)
            self._add(column, "name", has_name & ~names_person, first_row)

    def found(self) -> list[Leak]:
        """What was found; people first, and columns in the order in which they came up."""
        return people_first(self._leaks.values())

    def _add(self, column: str, kind: Kind, is_leak: Flags, first_row: int) -> None:
        rows = np.flatnonzero(is_leak)
        if len(rows):
            leak = self._leaks.setdefault((column, kind), Leak(column, kind, 0, ()))
            leak.add(len(rows), (rows[:_MOST_ROWS] + first_row).tolist())


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
        for (attribute, real, *_), rows in self.maybe_in(texts):
            if not len(rows):
                continue
            pairs = zip(
                texts.take(pa.array(rows)).to_pylist(),
                real.take(pa.array(rows)).to_pylist(),
                strict=True,
            )
            is_there = [is_found(attribute, text, value) for text, value in pairs]
            has[attribute][rows] |= np.array(is_there, dtype=bool)
        return has


def _found(texts: pa.Array, wanted: Wanted, names: Names | None) -> tuple[Flags, Flags]:
    """Tells which texts name the person of their row, and which have a first or a last name."""
    has = wanted.found_in(texts)
    if names is not None:
        words = names.words_in(texts)
        has["firstname"][words.rows_with(names.first)] = True
        has["lastname"][words.rows_with(names.last)] = True
    first, last = has.pop("firstname"), has.pop("lastname")
    return np.logical_or.reduce([first & last, *has.values()]), first | last


def _texts(values: pa.Array) -> pa.Array | None:
    """The cells of a column as texts; None where it is of a type that can name nobody."""
    kind = values.type
    of_nobody = (pa.types.is_temporal, pa.types.is_boolean, pa.types.is_null)
    if any(test(kind) for test in of_nobody):
        return None
    return values.cast(pa.string()) if is_text(kind) else as_texts(values)

"""What is done in another way by each kind of database."""

from __future__ import annotations

from collections.abc import Iterator, Mapping, Sequence
from typing import TYPE_CHECKING, Any, Literal, NamedTuple, Protocol

if TYPE_CHECKING:
    import pyarrow as pa
    from sqlalchemy import Engine as Connector

type Kind = Literal["table", "view", "foreign table", "partition", "parent", "virtual table"]
"""What a name stands for. A ``parent`` is a table from which others inherit rows."""

TABLE: Kind = "table"


class Reference(NamedTuple):
    """A column that refers to another, by itself or with others, all by plain names.

    The other one is None where the database does not tell which it is.
    """

    schema: str
    table: str
    column: str
    to_schema: str
    to_table: str
    to_column: str | None


class Engine(Protocol):
    """A kind of database, over an open connection of its driver once :meth:`begin` was called.

    Tables and columns are named as SQL names them (:func:`quoted`) where nothing else is said.
    """

    def connector(self, *, is_changing: bool) -> Connector:
        """What makes one connection."""

    def begin(self, driver: Any, *, is_changing: bool) -> None:
        """Begins the transaction, which sees one state of the tables that nobody else changes."""

    def settle(self) -> None:
        """Checks what would otherwise be checked where the transaction ends."""

    def kinds(self, schema: str) -> Mapping[str, Kind]:
        """What there is in a schema, by plain names."""

    def references(self, schema: str) -> Sequence[Reference]:
        """Which columns of a schema refer to others, or are referred to."""

    def lock(self, tables: Sequence[str]) -> None:
        """Keeps others from changing tables."""

    def hindrance(self, table: str, *, is_changing: bool) -> str | None:
        """What keeps the user from reading all rows of a table, or changing them, if anything."""

    def side_effects(self, schema: str, table: str) -> list[str]:
        """What else runs where rows of a table are changed, as a note names it.

        Schema and table are plain names.
        """

    def is_whole(self, table: str, column: str, declared: Any) -> bool:
        """Whether a column has nothing but whole numbers of 64 bits at most."""

    def holds_bytes(self, table: str, column: str, declared: Any) -> bool:
        """Whether a column has bytes in some rows."""

    def lengths(self, table: str) -> Mapping[str, int]:
        """How many characters columns hold, by plain names, where more than their types tell."""

    def as_text(self, column: str, declared: Any = None) -> str:
        """A column in SQL, of a type if one is told, as a text that loses nothing."""

    def key(self, column: str) -> str:
        """What rows are found by, in SQL: equal where the values of a column of the key are."""

    def read(self, table: str, cells: Mapping[pa.Field, str]) -> Iterator[pa.RecordBatch]:
        """Reads what stands in rows, in SQL, into columns of Arrow, in parts of a table."""

    def becoming(self, old: str, made: str) -> str:
        """What a cell of some value becomes, in SQL, where another one was made for it."""

    def put(self, table: str, columns: Mapping[str, pa.Array]) -> None:
        """Adds rows to some columns of a table."""

    def refused_cell(self, error: Exception) -> tuple[str, str] | None:
        """Which column :meth:`put` could not fill, and why, where the error tells."""


def quoted(*names: str) -> str:
    """Writes a name, or one within others, as SQL does."""
    return ".".join('"' + name.replace('"', '""') + '"' for name in names)

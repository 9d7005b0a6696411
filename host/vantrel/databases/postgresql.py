"""PostgreSQL, by way of psycopg."""

from __future__ import annotations

import re
from collections.abc import Iterator, Mapping, Sequence
from threading import Lock
from typing import Any

import pyarrow as pa
import pyarrow.compute as pc
import pyarrow.csv
from sqlalchemy import Engine as Connector
from sqlalchemy import Integer, LargeBinary, NullPool, create_engine
from sqlalchemy.dialects.postgresql import INET

from vantrel.databases.address import Address
from vantrel.databases.engine import Kind, Reference, quoted
from vantrel.databases.fetching import ahead, fetched

# Dates and times that Arrow writes and reads alike; rows in one order in both passes; an error in
# place of rows that are hidden from the user; and no waiting for a table that is in use.
_SETTINGS = """
    SET LOCAL datestyle = 'ISO, YMD';
    SET LOCAL timezone = 'UTC';
    SET LOCAL synchronize_seqscans = off;
    SET LOCAL row_security = off;
    SET LOCAL lock_timeout = '10s';
"""

_KINDS = """
    SELECT c.relname, c.relkind, c.relispartition,
           EXISTS (SELECT 1 FROM pg_catalog.pg_inherits i WHERE i.inhparent = c.oid)
    FROM pg_catalog.pg_class c JOIN pg_catalog.pg_namespace n ON n.oid = c.relnamespace
    WHERE n.nspname = %s AND c.relkind IN ('r', 'p', 'v', 'm', 'f')
"""

# Those that partitions have from whole tables are left out.
_REFERENCES = """
    SELECT own_schema.nspname, own.relname, own_column.attname,
           other_schema.nspname, other.relname, other_column.attname
    FROM pg_catalog.pg_constraint k
    CROSS JOIN LATERAL unnest(k.conkey, k.confkey) AS pair (own, other)
    JOIN pg_catalog.pg_class own ON own.oid = k.conrelid
    JOIN pg_catalog.pg_namespace own_schema ON own_schema.oid = own.relnamespace
    JOIN pg_catalog.pg_attribute own_column
      ON own_column.attrelid = k.conrelid AND own_column.attnum = pair.own
    JOIN pg_catalog.pg_class other ON other.oid = k.confrelid
    JOIN pg_catalog.pg_namespace other_schema ON other_schema.oid = other.relnamespace
    JOIN pg_catalog.pg_attribute other_column
      ON other_column.attrelid = k.confrelid AND other_column.attnum = pair.other
    WHERE k.contype = 'f' AND k.conparentid = 0
      AND %s IN (own_schema.nspname, other_schema.nspname)
"""

# Of the bits of a trigger's type 16 stands for changes, and 1 for what runs row by row: only that
# runs in partitions, be it their own or what they have from the whole table, which is a copy there.
_SIDE_EFFECTS = """
    SELECT 'trigger', t.tgname, CASE WHEN c.oid <> %(table)s::regclass THEN c.relname END
    FROM pg_catalog.pg_trigger t JOIN pg_catalog.pg_class c ON c.oid = t.tgrelid
    WHERE NOT t.tgisinternal AND t.tgenabled <> 'D' AND t.tgtype & 16 <> 0 AND t.tgparentid = 0
      AND (c.oid = %(table)s::regclass OR t.tgtype & 1 <> 0
           AND c.oid IN (SELECT relid FROM pg_catalog.pg_partition_tree(%(table)s::regclass)))
    UNION ALL
    SELECT 'rule', rulename, NULL FROM pg_catalog.pg_rewrite
    WHERE ev_class = %(table)s::regclass AND ev_type = '2' AND ev_enabled <> 'D'
    ORDER BY 1 DESC, 3 NULLS FIRST, 2
"""

# A column of a domain holds what the type does that the domain is of, or the domain of that.
_LENGTHS = """
    WITH RECURSIVE told (name, kind, modifier) AS (
        SELECT attname, atttypid::regtype, atttypmod FROM pg_catalog.pg_attribute
        WHERE attrelid = %(table)s::regclass AND attnum > 0 AND NOT attisdropped
        UNION ALL
        SELECT o.name, t.typbasetype::regtype, t.typtypmod
        FROM told o JOIN pg_catalog.pg_type t ON t.oid = o.kind WHERE t.typtype = 'd'
    )
    SELECT name, CASE kind WHEN '"char"'::regtype THEN 1 WHEN 'name'::regtype THEN 63
                 ELSE modifier - 4 END
    FROM told
    WHERE kind IN ('"char"'::regtype, 'name'::regtype)
       OR kind IN ('varchar'::regtype, 'bpchar'::regtype) AND modifier > 0
"""

# What must be true, and what is told where it is not.
_LACKS = "the user of the address lacks the right"
_TO_READ = {
    "has_table_privilege(%(table)s::regclass, 'SELECT')": f"{_LACKS} SELECT on it.",
    "NOT row_security_active(%(table)s::regclass)": (
        "row level security hides rows from the user of the address. Its owner sees all, unless"
        " that is forced, and so does a user with BYPASSRLS."
    ),
}
_TO_CHANGE = {
    "has_table_privilege(%(table)s::regclass, 'UPDATE')": f"{_LACKS} UPDATE on it.",
    "has_database_privilege(current_database(), 'TEMPORARY')": (
        f"{_LACKS} TEMPORARY on the database."
    ),
}

# Where COPY was when it failed, as told in whatever language the server speaks.
_COPIED = re.compile(r"COPY vantrel_new_\d+\b.*?\b(new_\d+)\b")


class Postgresql:
    """A database of PostgreSQL."""

    def __init__(self, address: Address) -> None:
        self._address = address
        self._driver: Any = None
        self._lock = Lock()

    def connector(self, *, is_changing: bool) -> Connector:
        """What makes one connection."""
        del is_changing  # is of the transaction here
        return create_engine(
            self._address.url, poolclass=NullPool, connect_args={"client_encoding": "utf8"}
        )

    def begin(self, driver: Any, *, is_changing: bool) -> None:
        """Begins the transaction; one that changes locks its tables before it looks at them."""
        import psycopg

        self._driver = driver
        levels = psycopg.IsolationLevel
        driver.isolation_level = levels.READ_COMMITTED if is_changing else levels.REPEATABLE_READ
        driver.execute(_SETTINGS)

    def settle(self) -> None:
        """Checks the constraints that are deferred to the end."""
        self._driver.execute("SET CONSTRAINTS ALL IMMEDIATE")

    def kinds(self, schema: str) -> Mapping[str, Kind]:
        """What there is in a schema, by name."""
        rows = self._driver.execute(_KINDS, [schema]).fetchall()
        return {name: _kind(*told) for name, *told in rows}

    def references(self, schema: str) -> Sequence[Reference]:
        """Which columns of a schema refer to others, or are referred to from any schema."""
        return [Reference(*row) for row in self._driver.execute(_REFERENCES, [schema])]

    def lock(self, tables: Sequence[str]) -> None:
        """Keeps others from changing tables; they can still read them."""
        self._driver.execute(f"LOCK TABLE {', '.join(tables)} IN SHARE ROW EXCLUSIVE MODE")

    def hindrance(self, table: str, *, is_changing: bool) -> str | None:
        """What keeps the user from reading all rows of a table, or changing them, if anything."""
        needs = {**_TO_READ, **(_TO_CHANGE if is_changing else {})}
        query = f"SELECT {', '.join(needs)}"
        rights = self._driver.execute(query, {"table": table}).fetchone()
        told = zip(needs.values(), rights, strict=True)
        return next((hindrance for hindrance, has in told if not has), None)

    def side_effects(self, schema: str, table: str) -> list[str]:
        """The triggers and rules that run where rows are changed."""
        found = self._driver.execute(_SIDE_EFFECTS, {"table": quoted(schema, table)}).fetchall()
        return [
            f"{kind} {name!r}" + (f" of {part!r}" if part else "") for kind, name, part in found
        ]

    def is_whole(self, table: str, column: str, declared: Any) -> bool:
        """Whether a column is of integers."""
        del table, column  # types tell
        return isinstance(declared, Integer)

    def holds_bytes(self, table: str, column: str, declared: Any) -> bool:
        """Whether a column is of bytes."""
        del table, column  # types tell
        return isinstance(declared, LargeBinary)

    def lengths(self, table: str) -> Mapping[str, int]:
        """How many characters columns hold, those of domains and of types that cut, too."""
        return dict(self._driver.execute(_LENGTHS, {"table": table}).fetchall())

    def as_text(self, column: str, declared: Any = None) -> str:
        """A column in SQL as a text, which every type has."""
        # As a text, an IP address would have /32 at its end, which nobody writes.
        return f"abbrev({column})" if isinstance(declared, INET) else f"{column}::text"

    def key(self, column: str) -> str:
        """The column itself."""
        return column

    def read(self, table: str, cells: Mapping[pa.Field, str]) -> Iterator[pa.RecordBatch]:
        """Reads by a cursor of the server, and each row as one text.

        That is all but CSV, which Arrow reads without an object of Python for each cell: in
        parentheses, and with backslashes doubled.
        """
        schema = pa.schema(list(cells))
        with self._driver.cursor(name="vantrel") as cursor:
            cursor.execute(f"SELECT ROW({', '.join(cells.values())})::text FROM {table}")
            # The server reads while these rows are worked on, but not while it is given others.
            for rows in ahead(fetched(cursor), self._lock):
                yield _read_rows("".join([row[1:-1] + "\n" for (row,) in rows]), schema)

    def becoming(self, old: str, made: str) -> str:
        """What was made, whatever was there."""
        del old  # its column has a type, which what was made has, too
        return made

    def put(self, table: str, columns: Mapping[str, pa.Array]) -> None:
        """Adds rows by COPY, as CSV: an empty text in quotation marks, a missing one without."""
        sink = pa.BufferOutputStream()
        options = pa.csv.WriteOptions(include_header=False)
        pa.csv.write_csv(pa.table(dict(columns)), sink, options)
        with (
            self._lock,
            self._driver.cursor() as cursor,
            cursor.copy(f"COPY {table} ({', '.join(columns)}) FROM STDIN (FORMAT csv)") as copy,
        ):
            copy.write(memoryview(sink.getvalue()))

    def refused_cell(self, error: Exception) -> tuple[str, str] | None:
        """The column that COPY tells, and why it refused a value."""
        told: Any = getattr(error, "diag", None)
        place = _COPIED.search(getattr(told, "context", None) or "")
        return (place[1], told.message_primary) if place else None


def _read_rows(text: str, schema: pa.Schema) -> pa.RecordBatch:
    """Reads rows as PostgreSQL writes them, without their parentheses."""
    data = text.encode()
    places = [str(place) for place in range(len(schema))]
    rows = pa.csv.read_csv(
        pa.py_buffer(data),
        pa.csv.ReadOptions(column_names=places, block_size=len(data) + 1),
        pa.csv.ParseOptions(newlines_in_values=True, ignore_empty_lines=False),
        pa.csv.ConvertOptions(
            column_types=dict(zip(places, schema.types, strict=True)),
            null_values=[""],
            strings_can_be_null=True,
            quoted_strings_can_be_null=False,
            check_utf8=False,
        ),
    )
    columns = [column.combine_chunks() for column in rows.columns]
    if b"\\" in data:
        columns = [
            pc.replace_substring(column, "\\\\", "\\")
            if pa.types.is_string(column.type)
            else column
            for column in columns
        ]
    return pa.RecordBatch.from_arrays(columns, schema=schema)


def _kind(relation: str, is_partition: bool, has_children: bool) -> Kind:
    if relation in "vm":
        return "view"
    if relation == "f":
        return "foreign table"
    if is_partition:
        return "partition"
    return "parent" if has_children and relation == "r" else "table"

"""Replaces the people of tables in memory."""

from __future__ import annotations

import logging
from collections.abc import Iterable, Iterator, Mapping, Sequence
from typing import TYPE_CHECKING, Any

import pandas as pd

from vantrel.arguments import as_frame, kind_of, refuse_text
from vantrel.errors import ArgumentError, ArgumentTypeError, ReplaceError
from vantrel.fitting.checks import check_ways
from vantrel.hints import argument, listed
from vantrel.replacing import require_pyarrow
from vantrel.replacing.columns.roles import (
    Columns,
    Keys,
    Roles,
    find_roles,
    key_columns,
    refuse_scrub,
)
from vantrel.replacing.runs.notes import (
    note_on_columns,
    notes_on_index,
    notes_on_people,
    notes_on_table,
    notes_on_undecided,
)
from vantrel.replacing.runs.remedies import Arguments
from vantrel.replacing.runs.secret import checked_secret
from vantrel.rows import Ways
from vantrel.util.locale.faker_locales import DEFAULT_LOCALE

if TYPE_CHECKING:
    import pyarrow as pa

    from vantrel.replacing.people.people import People
    from vantrel.replacing.people.report import Report

_log = logging.getLogger(__name__)

_ROWS_OF_A_BATCH = 100_000


class Replacer:
    """Replaces the people of several tables, one after the other: equal keys are one person.

    What an earlier table tells of a person holds for the later ones, which need not have it: give
    the table with genders and countries first.

    Args:
        secret: 16 to 64 bytes, such as ``secrets.token_bytes(32)`` gives. With the same secret the
            same keys become the same people at any time; whoever has it can tell who became whom.
            If None, it is the one of the environment variable ``VANTREL_SECRET``, or else one that
            nobody ever knows.
        place: The country, or locale of Faker, of the people for whom no table tells one.
        no_real: Whether nobody gets the full name or the telephone number of a real person of the
            tables. People then depend on these tables, too.
        phone_numbers: ``"fiction"`` for numbers that are kept for fiction, where a country has
            such, or ``"valid"`` for any.
        latin: Whether names are written in Latin letters.

    Attributes:
        roles: What the columns of the last table were taken for; None before.
        report: What came of all tables until now; None before.
        notes: What is to be told of the last table: who the rows were taken for, and who is still
            named in other columns. They are also logged.

    Raises:
        ArgumentTypeError: The secret is no bytes.
        SecretError: It is too short or too long.
        UnknownPlaceError: The place is not known.
        MissingPackageError: There is no pyarrow.
    """

    def __init__(
        self,
        secret: bytes | None = None,
        *,
        place: str = DEFAULT_LOCALE,
        no_real: bool = False,
        phone_numbers: str = "fiction",
        latin: bool = False,
    ) -> None:
        ways = check_ways(phone_numbers=phone_numbers, latin=latin)
        self._people = _people(checked_secret(secret), place, no_real, ways)
        self._no_real = no_real
        self.roles: Roles | None = None
        self.report: Report | None = None
        self.notes: list[str] = []

    def replace(
        self,
        df: Any,
        key: Keys | None = None,
        people: Any = None,
        columns: Columns | None = None,
        keep: Iterable[str] = (),
        scrub: Iterable[str] = (),
        others: Mapping[str, str] | None = None,
        household: str | None = None,
        *,
        people_key: Keys | None = None,
    ) -> Any:
        """Replaces the people of a table; see :func:`replace`."""
        from vantrel.replacing.others.decided import decided
        from vantrel.replacing.runs.advised import advised
        from vantrel.replacing.runs.frames import excerpt, like, with_columns
        from vantrel.replacing.runs.passing import Passing

        refuse_text(scrub, "scrub", "columns")
        scrub = list(scrub)
        name = f"table {len(self._people.tables) + 1}"
        table = _opened(df, "A table")
        others, household = _checked(others), _checked_household(household)
        if people is not None:
            known = _opened(people, "A table of people")
            if people_key is None:
                _refuse_without_key(_names(known), key)
            self._learn_only(known, key if people_key is None else people_key, household, name)
        elif people_key is not None:
            raise ArgumentError("people_key names the key of a table of people, and none is given.")
        first = excerpt(table)
        roles = find_roles(
            first,
            key=key,
            columns=columns,
            keep=keep,
            decided=others,
            scrub=scrub,
            has_others=bool(others or scrub),
            household=household,
        )
        refuse_scrub(_names(table), roles, scrub)
        actions = decided(first, roles, others, scrub)
        batches = list(_batches(table))
        for batch in batches:
            self._people.learn(batch, roles, name)
        self._people.settle()
        passing = Passing(self._people, roles, scrub, actions)
        made = _joined(map(passing, batches))
        self.roles, self.report = roles, self._people.finish()
        likely = advised(first, batches[0].schema, roles.personal)
        remedies = Arguments(has_plans=False)
        self.notes = [
            note_on_columns(roles, actions, scrub),
            *notes_on_index(table),
            *notes_on_table(roles, actions, self.report.tables[name], passing.leaks(), remedies),
            *notes_on_undecided(roles, (), likely, remedies),
            *passing.notes(),
            *notes_on_people(self.report, no_real=self._no_real),
        ]
        for note in self.notes:
            _log.info(note)
        replaced = with_columns(table, made)
        return replaced if isinstance(df, pd.DataFrame) else like(replaced, df)

    def _learn_only(
        self, table: pd.DataFrame | pa.Table, key: Keys | None, household: str, name: str
    ) -> None:
        """Learns who is who from a table that is not replaced."""
        from vantrel.replacing.runs.frames import excerpt

        own = household if household in _names(table) else ""
        roles = find_roles(excerpt(table), key=key, name="people", is_only_read=True, household=own)
        for batch in _batches(table):
            self._people.learn(batch, roles, f"people of {name}")
        self._people.end_what_is_only_read()


def replace(
    df: Any,
    key: Keys | None = None,
    secret: bytes | None = None,
    people: Any = None,
    columns: Columns | None = None,
    keep: Iterable[str] = (),
    scrub: Iterable[str] = (),
    others: Mapping[str, str] | None = None,
    household: str | None = None,
    *,
    people_key: Keys | None = None,
    place: str = DEFAULT_LOCALE,
    no_real: bool = False,
    phone_numbers: str = "fiction",
    latin: bool = False,
) -> Any:
    """Replaces the people of a table by made-up ones, and leaves all else as it is.

    Names, e-mail addresses, user names, passwords and telephone numbers are replaced. Gender, title
    and country are read and stay, and the made-up person agrees with them. A cell that is missing
    or blank, or has "NULL", "\\N", "n/a", "N/A", "-" or "?", stays so. The same key
    is the same person in every row.

    Args:
        df: A frame of pandas, or of polars, DuckDB or pyarrow. Not changed.
        key: The column that names the person of each row, or several together. It is the same key
            whatever type it is stored in: 7, "7" and 7.0. If None, the e-mail address is the key,
            without regard to case, or else the full name, or else each row is a person. A row
            without a key is a person of its own, known by all that stands in it. Where a row has
            several people, found by what their columns' names have in common, this is the key of
            the one whose name it bears, else of the first; ``{"buyer": "buyer_id", "seller":
            "seller_id"}`` names those of several.
        secret: 16 to 64 bytes that decide who becomes whom; see :class:`Replacer`.
        people: A table with the genders and countries of the people, which the first need not have.
        columns: The column, or columns, of attributes that are not to be found by their names and
            values, as in ``{"email": ["email", "billing_email"]}``.
        keep: Attributes that stay as they are.
        scrub: Columns of other things in which the names of the row's person are replaced, too.
        others: What becomes of other columns: ``"keep"``; ``"blank"``; ``"hash"``, another value of
            the same form, the same everywhere; ``"shift:DAYS"``, all dates of a person moved by the
            same number of days up to so many; ``"fake:PROVIDER"``, what this method of Faker gives,
            one value for each person.
        household: The column that tells households: people of one who share a family name share
            the made-up one, in the form of each one's gender.
        people_key: The key of the table of people, in the same way. If None, it is that of the
            first: name it where it is called otherwise, as "customer_id" is where deals have a
            "buyer_id" and a "seller_id".
        place: The country, or locale of Faker, of the people for whom no table tells one.
        no_real: Whether nobody gets the full name or the telephone number of a real person of the
            tables. People then depend on these tables, too.
        phone_numbers: ``"fiction"`` for numbers that are kept for fiction, where a country has
            such, or ``"valid"`` for any.
        latin: Whether names are written in Latin letters.

    Returns:
        A frame with the same index, columns and types. A table of pyarrow or polars comes back as
        one; from others, such as a relation of DuckDB, a frame of pandas is made.

    Raises:
        ArgumentTypeError: The table or the secret is none, or there is a text in the place of
            several.
        ArgumentError: An attribute, or which numbers are wanted, is not known, or there is a key of
            people without people.
        ReplaceError: A column is not there, there is nothing to replace, the key is missing in all
            rows, or two people would get one e-mail address.
        SecretError: The secret is too short or too long.
        UnknownPlaceError: The place is not known.
        MissingPackageError: There is no pyarrow.

    Warns:
        BorrowedNamesWarning: Faker has no names of some countries.
    """
    replacer = Replacer(
        secret, place=place, no_real=no_real, phone_numbers=phone_numbers, latin=latin
    )
    return replacer.replace(
        df, key, people, columns, keep, scrub, others, household, people_key=people_key
    )


def _people(secret: bytes, place: str, no_real: bool, ways: Ways) -> People:
    require_pyarrow()
    from vantrel.replacing.people.people import People

    return People(secret, place=place, no_real=no_real, ways=ways)


def _opened(table: Any, what: str) -> pd.DataFrame | pa.Table:
    """Gives a frame of pandas as it is, and any other table as one of Arrow."""
    import pyarrow as pa

    if isinstance(table, pd.DataFrame) or not hasattr(table, "__arrow_c_stream__"):
        return as_frame(table, what)
    try:
        opened = pa.table(table)
    except (pa.ArrowException, TypeError, ValueError):
        return as_frame(table, what)  # which tells what is wrong
    as_frame(opened.slice(0, 0), what)
    return opened


def _checked(others: Any) -> Mapping[str, str]:
    """Refuses what does not name the action of each column."""
    if others is not None and not isinstance(others, Mapping):
        raise ArgumentTypeError(
            "The actions of other columns are a dictionary, as in"
            f" others={{'notes': 'blank'}}, not {kind_of(others)}."
        )
    return others or {}


def _checked_household(household: object) -> str:
    """Refuses what is not the name of a column."""
    if household is not None and not isinstance(household, str):
        raise ArgumentTypeError(f"A column is named by a text, not by {household!r}.")
    return household or ""


def _refuse_without_key(names: Sequence[str], key: Keys | None) -> None:
    """Refuses a table of people that has not the key of the table that is replaced."""
    for column in key_columns(key):
        if column not in names:
            raise ReplaceError(
                f"The table of people has no column {column!r} for the key: name its own, as in"
                f" {argument('people_key', 'COLUMN')}. Its columns are: {listed(names)}."
            )


def _names(table: pd.DataFrame | pa.Table) -> list[str]:
    return list(table.columns) if isinstance(table, pd.DataFrame) else table.column_names


def _batches(table: pd.DataFrame | pa.Table) -> Iterator[pa.RecordBatch]:
    """Gives the rows in parts; with all their columns, as those without a key are known by them."""
    import pyarrow as pa

    from vantrel.replacing.runs.frames import arrow_of

    rows = arrow_of(table)
    parts = rows.to_batches(max_chunksize=_ROWS_OF_A_BATCH)
    return iter(parts or [pa.RecordBatch.from_pylist([], rows.schema)])


def _joined(batches: Iterable[Mapping[str, pa.Array]]) -> dict[str, pa.ChunkedArray]:
    import pyarrow as pa

    found: dict[str, list[pa.Array]] = {}
    for batch in batches:
        for column, values in batch.items():
            found.setdefault(column, []).append(values)
    return {column: pa.chunked_array(values) for column, values in found.items()}

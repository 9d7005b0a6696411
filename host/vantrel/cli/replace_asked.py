"""Reads what options of ``vantrel replace`` ask of tables."""

from __future__ import annotations

from collections.abc import Sequence
from dataclasses import dataclass, replace
from pathlib import Path
from typing import TYPE_CHECKING

import click

from vantrel.cli.options import attribute_and_column

if TYPE_CHECKING:
    from vantrel.replacing.runs.asked import Asked, OfTable

type Texts = tuple[str, ...]


@dataclass(frozen=True)
class Wanted:
    """The options that say what becomes of tables, as they were given."""

    keys: Texts
    columns: Texts
    others: Texts
    households: Texts
    plan: Path | None
    people: Path | None
    keep: list[str]
    scrub: Texts
    fail_on_leak: bool
    strict: bool
    no_real: bool
    place: str | None
    phone_numbers: str | None
    latin: bool

    def asked(self, tables: Sequence[Path]) -> Asked:
        """Reads them; ``tables`` are those that they may name."""
        from vantrel.fitting.checks import check_ways
        from vantrel.replacing.plan import read_plan
        from vantrel.replacing.runs.asked import Asked, OfTable
        from vantrel.util.locale.faker_locales import DEFAULT_LOCALE

        of_all, of_tables = _of_tables(self, tables)
        return Asked(
            OfTable(keep=frozenset(self.keep)).over(of_all),
            of_tables,
            read_plan(self.plan) if self.plan else None,
            place=self.place or DEFAULT_LOCALE,
            no_real=self.no_real,
            ways=check_ways(phone_numbers=self.phone_numbers or "fiction", latin=self.latin),
            fail_on_leak=self.fail_on_leak,
            strict=self.strict,
        )

    def asked_of_database(self, tables: Sequence[str]) -> Asked:
        """The same for tables of a database, behind whose names a dot may stand for the colon."""
        paths = list(map(Path, tables))
        return replace(
            self,
            keys=_with_colons(self.keys, tables),
            columns=_with_colons(self.columns, tables),
            others=_with_colons(self.others, tables),
            households=_with_colons(self.households, tables),
            scrub=_with_colons(self.scrub, tables),
        ).asked(paths)


def _with_colons(given: Texts, tables: Sequence[str]) -> Texts:
    longest_first = sorted(tables, key=len, reverse=True)

    def written(text: str) -> str:
        table = next((name for name in longest_first if text.startswith(f"{name}.")), None)
        return text if table is None else f"{table}:{text[len(table) + 1 :]}"

    return tuple(map(written, given))


def _tables_and_rest(text: str, inputs: Sequence[Path]) -> tuple[list[str | None], str]:
    """Splits off what is before the first colon if it names tables, and gives their names."""
    from vantrel.replacing.runs.asked import names_of

    table, colon, rest = text.partition(":")
    whole = [path.name for path in inputs if colon and table == path.name]
    found = whole or [path.name for path in inputs if colon and table in names_of(path)]
    return ([*dict.fromkeys(found)], rest) if found else ([None], text)


def _keys(given: Texts, inputs: Sequence[Path]) -> dict[str | None, list[Texts]]:
    keys: dict[str | None, list[Texts]] = {}
    for text in given:
        tables, columns = _tables_and_rest(text, inputs)
        for table in tables:
            keys.setdefault(table, []).append(tuple(columns.split(",")))
    return keys


def _scrubbed(given: Texts, inputs: Sequence[Path]) -> dict[str | None, list[str]]:
    found: dict[str | None, list[str]] = {}
    for text in given:
        tables, column = _tables_and_rest(text, inputs)
        for table in tables:
            found.setdefault(table, []).append(column)
    return found


def _columns(given: Texts, inputs: Sequence[Path]) -> dict[str | None, dict[str, list[str]]]:
    found: dict[str | None, dict[str, list[str]]] = {}
    for text in given:
        tables, pair = _tables_and_rest(text, inputs)
        attribute, column = attribute_and_column(pair, "[TABLE:]ATTRIBUTE=COLUMN")
        for table in tables:
            found.setdefault(table, {}).setdefault(attribute, []).append(column)
    return found


def _others(given: Texts, inputs: Sequence[Path]) -> dict[str | None, dict[str, str]]:
    found: dict[str | None, dict[str, str]] = {}
    for text in given:
        tables, pair = _tables_and_rest(text, inputs)
        column, equals, action = pair.rpartition("=")
        if not (column and equals and action):
            raise click.BadParameter(
                f"{text!r} is not of the form [TABLE:]COLUMN=ACTION.", param_hint="'--other'"
            )
        for table in tables:
            if column in found.setdefault(table, {}):
                raise click.UsageError(f"There are two actions of column {column!r}: name one.")
            found[table][column] = action
    return found


def _households(given: Texts, inputs: Sequence[Path]) -> dict[str | None, str]:
    found: dict[str | None, str] = {}
    for text in given:
        tables, column = _tables_and_rest(text, inputs)
        for table in tables:
            if table in found:
                raise click.UsageError(
                    f"There are two columns of households, {found[table]!r} and {column!r}: name"
                    " one of each table."
                )
            found[table] = column
    return found


def _of_tables(wanted: Wanted, inputs: Sequence[Path]) -> tuple[OfTable, dict[str, OfTable]]:
    """Gives what is asked of all tables, and of single ones by their names."""
    from vantrel.replacing.runs.asked import OfTable

    keys_of, columns_of = _keys(wanted.keys, inputs), _columns(wanted.columns, inputs)
    scrubbed_of, others_of = _scrubbed(wanted.scrub, inputs), _others(wanted.others, inputs)
    households_of = _households(wanted.households, inputs)

    def asked(table: str | None) -> OfTable:
        return OfTable(
            tuple(keys_of.get(table, ())),
            columns_of.get(table, {}),
            scrub=tuple(scrubbed_of.get(table, ())),
            others=others_of.get(table, {}),
            household=households_of.get(table, ""),
        )

    named_tables = {**keys_of, **columns_of, **scrubbed_of, **others_of, **households_of}
    return asked(None), {table: asked(table) for table in named_tables if table}

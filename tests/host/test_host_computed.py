"""What reports compute of each row once."""

import string
from typing import Any

import pandas as pd
import pytest

from vantrel.reporting.nearness.forms import folded, plain
from vantrel.tables import Table, frame_table

ROWS = 70_000  # more than are kept together


def numbers(rows: int = ROWS) -> Table:
    return frame_table(pd.DataFrame({"number": [str(number) for number in range(rows)]}))


def test_what_is_computed_stands_in_its_row() -> None:
    table = numbers()
    doubled, twice = table.computed("2 * CAST(c0 AS INT)", "c0 || c0")
    found = table.query(f"SELECT c0, {doubled}, {twice} FROM {{rows}}")
    assert found == [(str(n), 2 * n, f"{n}{n}") for n in range(ROWS)]
    assert table.columns == ["number"]


def test_nothing_is_computed_twice(monkeypatch: pytest.MonkeyPatch) -> None:
    table = numbers(3)
    asked: list[str] = []
    query = Table.query

    def counted(self: Table, sql: str) -> list[tuple[Any, ...]]:
        asked.append(sql)
        return query(self, sql)

    monkeypatch.setattr(Table, "query", counted)
    first = table.computed("c0 || 'a'")
    assert table.computed("c0 || 'a'", "c0 || 'a'") == first * 2
    assert len(asked) == 1
    (then,) = table.computed(f"{first[0]} || 'b'")
    assert len(asked) == 2
    assert table.query(f"SELECT {then} FROM {{rows}}") == [("0ab",), ("1ab",), ("2ab",)]


def test_tables_of_one_origin_do_not_share_what_is_computed() -> None:
    table = numbers(2)
    kept = table.kept(["number"])
    of_kept, own = kept.computed("c0 || 'kept'"), table.computed("c0 || 'own'")
    assert kept.query(f"SELECT {of_kept[0]} FROM {{rows}}") == [("0kept",), ("1kept",)]
    assert table.query(f"SELECT {own[0]} FROM {{rows}}") == [("0own",), ("1own",)]


def test_texts_in_ascii_are_folded_as_others_are() -> None:
    signs = [*string.printable, "Mr. O'Neil-Smith", "  Two  Words "]
    texts = pd.DataFrame({"ascii": signs, "other": [f"é{sign}" for sign in signs]})
    table = frame_table(texts)
    found = table.query(f"SELECT {folded('c0')}, {folded('c1')}, {plain('c1')} FROM {{rows}}")
    for sign, (ascii_, other, _) in zip(signs, found, strict=True):
        assert ascii_ == sign.strip(" ").lower()
        assert other.removeprefix("e").strip(" ") == ascii_
    assert {each[1][0] for each in found} == {"e"}
    assert {each[2][0] for each in found} == {"é"}

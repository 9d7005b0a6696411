"""Copies of CSV files are the same bytes but for the cells that are changed."""

from pathlib import Path

import pytest

from support.copying import BLOCKS, copied_as_it_is, read, written

pytest.importorskip("pyarrow", reason="tables are copied with pyarrow")

WIDE = ",".join(f"c{place}" for place in range(300))

FILES = {
    "plain": b"id,name,note\n1,Ann,x\n2,Bo,y\n",
    "all quoted": b'"id","name","note"\n"1","Ann","x"\n"2","",""\n',
    "quoted where it must be": b'id,name,note\n1,"Ann, Bo",x\n2,"a ""b""",y\n3,c,z\n',
    "CRLF": b"id,name\r\n1,Ann\r\n2,\r\n",
    "CR": b"id,name\r1,Ann\r2,Bo",
    "mixed line ends": b"id,name\r\n1,Ann\n2,Bo\r3,Cy\n\r\n",
    "mark": b"\xef\xbb\xbfid,name\n1,Ann\n",
    "mark before quotes": b'\xef\xbb\xbf"id, or key",name\n1,Ann\n',
    "no newline at the end": b"id,name\n1,Ann\n2,Bo",
    "empty at the end": b"id,name\n1,Ann\n2,",
    "only a header": b"id,name\n",
    "only a header without newline": b"id,name",
    "blank lines": b"\n \nid,name\n\n1,Ann\n  \n2,Bo\n\n\n",
    "quoted blank line": b'id,name\n"  "\n1,Ann\n',
    "line breaks in cells": b'id,name\n1,"Ann\r\nLee"\n2,"\n"\n3,"\r"\n',
    "line break in header": b'id,"first\nname"\n1,Ann\n',
    "one column": b'name\nAnn\n\n"Bo"\n \n""\n',
    "one column, CRLF": b'name\r\nAnn\r\n\r\n"B\r\no"\r\n',
    "one column after blank lines": b"\n\nname\n\nAnn\n",
    "300 columns": f"{WIDE}\n{WIDE.upper()}\n{',' * 299}\n".encode(),
    "tab": b"id\tname\n1\tAnn, Bo\n2\t\n",
    "semicolon": b"id;name\n1;Ann, Bo\n2;\n",
    "bar": b"id|name\n1|Ann\n2|\n",
    "quotation marks that are letters": b'id,size\n1,5" or 6"\n2,"3 ""inch"""\n3,a""b\n',
    "blanks around quotation marks": b'id, name\n1, "Ann, Bo" \n 2,"Cy" \n',
    "cells that are blanks": b"id,name\n1, \n ,  x \n",
    "NUL": b"id,name\n1,A\0nn\n",
    "other scripts": "id,näme\n1,Łukasz\n2,Νίκος\n3,李\n4,😀\n".encode(),
    "name with a quotation mark": b'id,"the ""name"""\n1,Ann\n',
    "empty name": b"id,,name\n1,2,Ann\n",
}


@pytest.fixture(params=FILES)
def table(request: pytest.FixtureRequest, tmp_path: Path) -> Path:
    """A file that is odd in one way."""
    path = tmp_path / "table.csv"
    path.write_bytes(FILES[request.param])
    return path


@pytest.mark.parametrize("block", BLOCKS)
def test_what_is_unchanged_is_the_same_bytes(table: Path, block: int) -> None:
    assert copied_as_it_is(table, block) == table.read_bytes()


@pytest.mark.parametrize("block", BLOCKS)
def test_what_is_not_changed_at_all_is_the_same_bytes(table: Path, block: int) -> None:
    assert written(table, {}, block) == table.read_bytes()


@pytest.mark.parametrize("block", BLOCKS[:-1])
def test_blocks_make_no_difference(table: Path, block: int) -> None:
    cells = read(table)
    last = list(cells)[-1]
    changes = {last: [None if cell is None else f"<{cell}>" for cell in cells[last]]}
    assert read(table, block) == cells
    assert written(table, changes, block) == written(table, changes)


def csv(tmp_path: Path, content: bytes) -> Path:
    path = tmp_path / "table.csv"
    path.write_bytes(content)
    return path


def test_missing_and_empty_cells(tmp_path: Path) -> None:
    table = csv(tmp_path, b'id,name,note\n1,,""\n"",x,\n')
    assert read(table) == {"id": ["1", ""], "name": [None, "x"], "note": ["", None]}


def test_texts_in_quotation_marks(tmp_path: Path) -> None:
    table = csv(tmp_path, b'a,b\n"x, ""y""",5""\n"""","\n"\n')
    assert read(table) == {"a": ['x, "y"', '"'], "b": ['5""', "\n"]}


def test_blanks_around_quotation_marks_are_no_part_of_the_text(tmp_path: Path) -> None:
    table = csv(tmp_path, b'a,b\n1, "x, y" \n2, z"\n')
    assert read(table) == {"a": ["1", "2"], "b": ["x, y", ' z"']}
    assert written(table, {"b": ["q", "r"]}) == b'a,b\n1, "q" \n2,r\n'


def test_blank_lines_are_rows_of_one_column_alone(tmp_path: Path) -> None:
    table = csv(tmp_path, b"\nname\n\nAnn\n")
    assert read(table) == {"name": [None, "Ann"]}
    assert written(table, {"name": ["x", None]}) == b"\nname\nx\n\n"


@pytest.mark.parametrize("block", BLOCKS)
def test_a_return_and_a_line_feed_end_one_line(tmp_path: Path, block: int) -> None:
    table = csv(tmp_path, b"name\r\nAnn\r\n\r\nBo\r\r\n\n")
    assert read(table, block) == {"name": ["Ann", None, "Bo", None, None]}


def test_the_cells_that_are_changed_and_no_others(tmp_path: Path) -> None:
    table = csv(tmp_path, b'\xef\xbb\xbfid;"name";note\r\n1;"Ann";"a;b"\r\n\r\n2;Bo;\r\n"3";"";c')
    changes: dict[str, list[str | None]] = {"name": ["Eve", "Flo", None], "id": ["1", "5", "3"]}
    assert written(table, changes) == (
        b'\xef\xbb\xbfid;"name";note\r\n1;"Eve";"a;b"\r\n\r\n5;Flo;\r\n"3";;c'
    )


def test_quotes_stay_and_come_where_they_must(tmp_path: Path) -> None:
    table = csv(tmp_path, b'name,x\n"a",\nb,\nc,\nd,\ne,\nf,\ng,\n"h",\n')
    new: list[str | None] = ["A", "B", "C,", 'D"', "E\n", "F\r", "", None]
    assert written(table, {"name": new}) == (
        b'name,x\n"A",\nB,\n"C,",\n"D""",\n"E\n",\n"F\r",\n"",\n,\n'
    )


@pytest.mark.parametrize(("separator", "sign"), [("|", "|"), ("\\", "\\"), ("^", "^"), ("§", "§")])
def test_any_separator_that_is_named(tmp_path: Path, separator: str, sign: str) -> None:
    table = csv(tmp_path, f'a{sign}b\n1{sign}"x{sign}"\nç"{sign}y\n'.encode())
    assert read(table, separator=separator) == {"a": ["1", 'ç"'], "b": [f"x{sign}", "y"]}
    assert written(table, {"a": [f"2{sign}", "z"]}, separator=separator) == (
        f'a{sign}b\n"2{sign}"{sign}"x{sign}"\nz{sign}y\n'.encode()
    )


def test_columns_come_in_the_order_asked_for(tmp_path: Path) -> None:
    from vantrel.tables.copying import open_copied

    with open_copied(csv(tmp_path, b"a,b,c\n1,2,3\n")) as copied:
        assert copied.columns == ("a", "b", "c")
        (batch,) = copied.batches(["c", "a"])
        assert batch.to_pydict() == {"c": ["3"], "a": ["1"]}


def test_a_cell_longer_than_a_block(tmp_path: Path) -> None:
    table = csv(tmp_path, b'a,b\n1,"' + b'x""\n' * 50_000 + b'"\n2,y\n')
    assert copied_as_it_is(table, block=1000) == table.read_bytes()
    assert written(table, {"b": ["z", "y"]}, block=1000) == b'a,b\n1,"z"\n2,y\n'

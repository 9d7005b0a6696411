"""Copies of CSV files in other encodings, compressed, piped, and of what is no sound table."""

from __future__ import annotations

import gzip
import os
import threading
from io import BytesIO
from pathlib import Path

import pytest
from backports import zstd

from support.copying import BLOCKS, copied_as_it_is, read, upper, written
from vantrel.errors import MissingPackageError, TableError
from vantrel.tables.copying import open_copied

pytest.importorskip("pyarrow", reason="tables are copied with pyarrow")

ROWS = 'id,näme\r\n1,"Zoë, A"\r\n2,\r\n'
CHANGED = 'id,näme\r\n1,"Łuk"\r\n2,\r\n'

ENCODINGS = [
    ("utf-16", b"\xff\xfe", "utf-16-le", None),
    ("utf-16, big end first", b"\xfe\xff", "utf-16-be", None),
    ("utf-16 that is named", b"\xfe\xff", "utf-16-be", "utf-16"),
    ("utf-32", b"\xff\xfe\0\0", "utf-32-le", "utf-32"),
    ("utf-16-be that is named", b"", "utf-16-be", "utf-16-be"),
    ("iso8859-2", b"", "iso8859-2", "iso8859-2"),
]


def table(tmp_path: Path, content: bytes, name: str = "table.csv") -> Path:
    path = tmp_path / name
    path.write_bytes(content)
    return path


@pytest.mark.parametrize("block", BLOCKS)
@pytest.mark.parametrize(
    ("mark", "codec", "named"),
    [each[1:] for each in ENCODINGS],
    ids=[each[0] for each in ENCODINGS],
)
def test_another_encoding_stays(
    tmp_path: Path, mark: bytes, codec: str, named: str | None, block: int
) -> None:
    path = table(tmp_path, mark + ROWS.encode(codec))
    assert copied_as_it_is(path, block, encoding=named) == path.read_bytes()
    assert read(path, block, encoding=named) == {"id": ["1", "2"], "näme": ["Zoë, A", None]}
    new: dict[str, list[str | None]] = {"näme": ["Łuk", None]}
    assert written(path, new, block, encoding=named) == mark + CHANGED.encode(codec)


def test_an_encoding_that_has_to_be_ended(tmp_path: Path) -> None:
    path = table(tmp_path, "id,name\n1,山田".encode("iso2022_jp"))
    assert copied_as_it_is(path, encoding="iso2022_jp") == path.read_bytes()


def test_utf_16_without_a_mark_is_known_by_its_zeros(tmp_path: Path) -> None:
    path = table(tmp_path, ROWS.encode("utf-16-le"))
    assert copied_as_it_is(path) == path.read_bytes()


def test_a_new_value_that_the_encoding_does_not_have_is_transliterated(tmp_path: Path) -> None:
    path = table(tmp_path, ROWS.encode("latin-1"))
    made = written(path, {"näme": ["Łucja Ö", None]}, encoding="latin-1").decode("latin-1")
    assert "Lucja Ö" in made


def test_an_encoding_in_which_bytes_do_not_come_back(tmp_path: Path) -> None:
    path = table(tmp_path, b"id,name\n1,\x1b(J\x1b(BAnn\n")
    with pytest.raises(TableError) as caught:
        copied_as_it_is(path, encoding="iso2022_jp")
    assert str(caught.value) == (
        f"Table {path} cannot be copied to the letter in iso2022_jp: save it as CSV UTF-8."
    )


@pytest.mark.parametrize("end", [".gz", ".zst"])
def test_compressed_files(tmp_path: Path, end: str) -> None:
    content = ROWS.encode()
    packed = gzip.compress(content) if end == ".gz" else zstd.compress(content)
    with open_copied(table(tmp_path, packed, f"table.csv{end}")) as copied:
        target = BytesIO()
        copied.write(target, ["id"], lambda _: {}, compression=copied.compression)
    unpack = gzip.decompress if end == ".gz" else zstd.decompress
    assert unpack(target.getvalue()) == content


def test_compressed_files_in_another_encoding(tmp_path: Path) -> None:
    path = table(tmp_path, gzip.compress(ROWS.encode("cp1252")), "table.csv.gz")
    with open_copied(path, encoding="cp1252") as copied:
        target = BytesIO()
        copied.write(target, ["id"], lambda _: {}, compression=copied.compression)
    assert gzip.decompress(target.getvalue()) == ROWS.encode("cp1252")


def test_a_pipe(tmp_path: Path) -> None:
    pipe = tmp_path / "pipe"
    os.mkfifo(pipe)
    feeding = threading.Thread(target=pipe.write_bytes, args=[ROWS.encode()])
    feeding.start()
    assert copied_as_it_is(pipe) == ROWS.encode()
    feeding.join()


def test_the_name_tells_the_separator(tmp_path: Path) -> None:
    assert read(table(tmp_path, b"a,b\tc\n1,2\t3\n", "table.tsv")) == {"a,b": ["1,2"], "c": ["3"]}


REFUSED = {
    "too few cells": (b"a,b\n1,2\n3\n", "is no CSV table: line 3 has 1 value, the header 2."),
    "too many cells": (
        b"a,b\n1,2\n\n3,4,5\n",
        "is no CSV table: line 4 has 3 values, the header 2.",
    ),
    "as many in all": (b"a,b\n1,2,3\n4\n", "is no CSV table: line 2 has 3 values, the header 2."),
    "one column": (b"a\n1,2\n", "is no CSV table: line 2 has 2 values, the header 1."),
    "too few cells that are blank": (
        b"a\tb\tc\n1\t2\t3\n\t\n",
        "is no CSV table: line 3 has 2 values, the header 3.",
    ),
    "an empty text for a row": (b'a,b\n""\n', "is no CSV table: line 2 has 1 value, the header 2."),
    "a quotation mark that is not closed": (
        b'a,b\n1,"2\n3,4\n',
        "is no CSV table: the row that begins in line 2 has a quotation mark that is never closed.",
    ),
    "the same among others": (
        b'a,b\n1,2"\n3,"4\n',
        "is no CSV table: the row that begins in line 3 has a quotation mark that is never closed.",
    ),
    "letters behind quotation marks": (
        b'a,b\n1,"2"x\n',
        "is no CSV table: the row that begins in line 2 cannot be read: ',' expected after '\"'.",
    ),
    "another encoding": (
        b"a,b\n1,\xff\n",
        "is not in UTF-8: name its encoding, cp1252 most likely, or save it as CSV UTF-8.",
    ),
    "another encoding in a blank line": (
        b"a,b\n\xff\n",
        "is not in UTF-8: name its encoding, cp1252 most likely, or save it as CSV UTF-8.",
    ),
    "nothing": (b"", "is empty: give it a header and at least one row."),
    "a line for spreadsheets": (
        b"sep=\t\na\tb\n1\t2\n",
        "begins with the line 'sep=\\t', which only tells spreadsheets what separates the cells:"
        " take that line out.",
    ),
    "one name twice": (
        b"a,a\n1,2\n",
        "has several columns of one name: 'a'. Give each a name of its own.",
    ),
}


@pytest.mark.parametrize("block", BLOCKS)
@pytest.mark.parametrize(("content", "reason"), REFUSED.values(), ids=REFUSED)
def test_what_is_no_sound_table(tmp_path: Path, content: bytes, reason: str, block: int) -> None:
    path = table(tmp_path, content)
    with pytest.raises(TableError) as caught:
        copied_as_it_is(path, block)
    assert str(caught.value) == f"Table {path} {reason}"


@pytest.mark.parametrize("block", [100_000, 4_000_000])
def test_another_encoding_far_down(tmp_path: Path, block: int) -> None:
    path = table(tmp_path, b"a,b\n" + b"1,x\n" * 100_000 + b"1,\xff\n2,y\n")
    with pytest.raises(TableError) as caught:
        written(path, {}, block)
    assert str(caught.value) == (
        f"Table {path} is not in UTF-8: name its encoding, cp1252 most likely, or save it as CSV"
        " UTF-8."
    )


@pytest.mark.parametrize("block", [100_000, 4_000_000])
def test_a_row_that_is_too_long(tmp_path: Path, block: int) -> None:
    path = table(tmp_path, b"a,b\n1," + b"x\t" * 4_100_000 + b"\n")
    with pytest.raises(TableError) as caught:
        copied_as_it_is(path, block, separator=",")
    # That is what Python says of a cell that it takes for too long.
    assert str(caught.value) == (
        f"Table {path} is no CSV table: the row that begins in line 2 has a cell of more than"
        " 131,072 characters, or a quotation mark that is never closed."
    )


def test_a_row_of_too_many_bytes_in_short_cells(
    tmp_path: Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.setattr("vantrel.tables.copying.csv_copy.LONGEST_ROW", 1_000)
    path = table(tmp_path, b",".join(b"%d" % n for n in range(300)) + b"\n" + b"xyz," * 299)
    with pytest.raises(TableError) as caught:
        copied_as_it_is(path, block=64, separator=",")
    assert str(caught.value) == (
        f"Table {path} is no CSV table: a row of it has more than 4,000,000 bytes, or a quotation"
        " mark that is never closed."
    )


def test_a_compressed_file_that_is_cut_off(tmp_path: Path) -> None:
    path = table(
        tmp_path, gzip.compress(b"a,b\n" + os.urandom(9000).hex().encode())[:4000], "t.csv.gz"
    )
    with pytest.raises(TableError) as caught:
        copied_as_it_is(path)
    assert str(caught.value) == f"Table {path} is cut off or damaged: compress it anew."


def test_other_tables(tmp_path: Path) -> None:
    lines = table(tmp_path, b'{"a": 1}\n', "table.jsonl")
    for path, reason in [
        (tmp_path, "is a folder: name a file."),
        (lines, "is JSON Lines, of which no copies are made: save it as CSV or Parquet."),
        (tmp_path / "none" / "table.csv", "cannot be read: No such file or directory."),
        (tmp_path / "people.xlsx", "is a spreadsheet's file: save it as CSV UTF-8."),
    ]:
        with pytest.raises(TableError) as caught, open_copied(path):
            pass
        assert str(caught.value) == f"Table {path} {reason}"


def test_an_error_of_the_change_is_no_error_of_the_table(tmp_path: Path) -> None:
    with open_copied(table(tmp_path, b"a\n1\n")) as copied, pytest.raises(EOFError):
        copied.write(BytesIO(), ["a"], lambda _: (_ for _ in ()).throw(EOFError))


def test_without_pyarrow(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr("vantrel.tables.copying.opening.find_spec", lambda _: None)
    path = table(tmp_path, b"a\n1\n")
    with pytest.raises(MissingPackageError) as caught, open_copied(path):
        pass
    assert str(caught.value) == f"To copy {path} needs pyarrow: pip install 'vantrel[parquet]'."


def test_changes_are_made_to_all_rows(tmp_path: Path) -> None:
    path = table(tmp_path, b"a,b\n" + b"x,y\n" * 3000)
    with open_copied(path) as copied:
        target = BytesIO()
        assert copied.write(target, ["b"], upper) == 3000
    assert target.getvalue() == b"a,b\n" + b"x,Y\n" * 3000

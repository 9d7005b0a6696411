"""Tables that come in parts, as CSV and as Parquet."""

import datetime
import io
import os
from importlib.util import find_spec
from itertools import pairwise
from pathlib import Path
from typing import Any

import pandas as pd
import pytest
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

from vantrel.errors import MissingPackageError, TableError
from vantrel.tables import read_table, write_csv, write_table
from vantrel.tables.writing import regroup

HAS_PYARROW = find_spec("pyarrow") is not None
with_pyarrow = pytest.mark.skipif(not HAS_PYARROW, reason="Parquet needs pyarrow")

EMPTY = pd.DataFrame({"a": pd.Series([], dtype="str"), "b": pd.Series([], dtype="str")})

cells = st.none() | st.text(st.characters(codec="utf-8", exclude_characters="\x00"), max_size=5)
tables = st.lists(st.tuples(cells, cells), max_size=12).map(
    lambda rows: pd.DataFrame(rows, columns=["a", "b"], dtype="object")
)
borders = st.lists(st.integers(0, 12), max_size=5)

few = settings(
    max_examples=60,
    suppress_health_check=[HealthCheck.function_scoped_fixture],
)


def cut(table: pd.DataFrame, at: list[int]) -> list[pd.DataFrame]:
    """Cuts a table into parts, some of them perhaps of no rows."""
    edges = [0, *sorted(min(border, len(table)) for border in at), len(table)]
    return [table.iloc[start:stop] for start, stop in pairwise(edges)]


def csv_of(*frames: pd.DataFrame, safe: bool = False) -> str:
    file = io.BytesIO()
    write_csv(frames, file, safe=safe)
    return file.getvalue().decode()


def refused(path: Path) -> str:
    with pytest.raises(TableError) as caught:
        read_table(path)
    assert "\n" not in str(caught.value)
    return str(caught.value)


# --- parts


@few
@given(tables, borders, st.integers(1, 13))
def test_regrouped_parts_are_of_one_size_and_lose_nothing(
    table: pd.DataFrame, at: list[int], rows: int
) -> None:
    parts = cut(table, at)
    groups = list(regroup(parts, rows))
    assert {len(group) for group in groups[:-1]} <= {rows}
    assert len(groups[-1]) <= rows
    assert len(groups[-1]) or not len(table)
    pd.testing.assert_frame_equal(pd.concat(groups), table)


def test_a_table_of_no_rows_is_one_part() -> None:
    (only,) = regroup([EMPTY, EMPTY], 5)
    pd.testing.assert_frame_equal(only, EMPTY)


def test_a_part_is_handed_on_before_the_next_is_asked_for() -> None:
    asked = []

    def parts() -> Any:
        for number in range(4):
            asked.append(number)
            yield pd.DataFrame({"a": ["x", "y"]})

    groups = regroup(parts(), 2)
    next(groups)
    assert asked == [0, 1]


# --- CSV


@few
@given(tables, borders, st.booleans())
def test_a_csv_file_is_the_same_whatever_parts_it_comes_in(
    table: pd.DataFrame, at: list[int], safe: bool
) -> None:
    assert csv_of(*cut(table, at), safe=safe) == csv_of(table, safe=safe)


@few
@given(tables.filter(len))
def test_a_csv_file_keeps_every_value(tmp_path: Path, table: pd.DataFrame) -> None:
    write_table([table], tmp_path / "t.csv")
    read = read_table(tmp_path / "t.csv").astype(object)
    pd.testing.assert_frame_equal(read.where(read.notna(), None), table)


def test_values_that_hold_line_ends_are_quoted() -> None:
    table = pd.DataFrame({"a\r": ["x\ry", "x\ny", "x\r\ny", "\r", "z"]})
    assert csv_of(table) == '"a\r"\n"x\ry"\n"x\ny"\n"x\r\ny"\n"\r"\nz\n'


def test_a_csv_file_of_no_rows_has_a_header() -> None:
    assert csv_of(EMPTY) == "a,b\n"
    assert csv_of(EMPTY, safe=True) == '"a","b"\n'


@pytest.mark.parametrize(
    ("content", "values"),
    [
        ("a\nx\n\ny\n", ["x", None, "y"]),
        ("a\nx\n\ny", ["x", None, "y"]),
        ("a\r\nx\r\n\r\ny\r\n", ["x", None, "y"]),
        ("a\n\nx\n\n", [None, "x", None]),
        ('a\nx\n""\n', ["x", ""]),
        ("\n \na\nx\n", ["x"]),
        ("\ufeffa\nx\n\n", ["x", None]),
        ('"a\n\nb"\n"x\n\ny"\n\n', ["x\n\ny", None]),
    ],
)
def test_a_blank_line_is_a_missing_value_where_there_is_one_column(
    tmp_path: Path, content: str, values: list[str | None]
) -> None:
    (tmp_path / "t.csv").write_bytes(content.encode())
    read = read_table(tmp_path / "t.csv").iloc[:, 0].astype(object)
    assert read.where(read.notna(), None).tolist() == values


def test_a_blank_line_is_none_where_there_are_more_columns(tmp_path: Path) -> None:
    (tmp_path / "t.csv").write_text("\na,b\nx,y\n\nz,\n\n")
    assert read_table(tmp_path / "t.csv").fillna("-").to_numpy().tolist() == [
        ["x", "y"],
        ["z", "-"],
    ]


def test_a_table_from_a_pipe() -> None:
    read, write = os.pipe()
    try:
        os.write(write, b"a\nx\n\n")
        os.close(write)
        assert read_table(Path(f"/dev/fd/{read}"))["a"].isna().tolist() == [False, True]
    finally:
        os.close(read)


# What OWASP names: what begins a formula, also behind white space, also in full width.
DANGEROUS = ["=", "+", "-", "@", "\t", "\r", "\n", "＝", "＋", "－", "＠"]


@pytest.mark.parametrize("start", DANGEROUS)
@pytest.mark.parametrize("dtype", ["object", "str", "string"])
def test_a_cell_that_a_spreadsheet_would_run_is_guarded(start: str, dtype: str) -> None:
    table = pd.DataFrame({"a": [f"{start}1+1", start, None, "x"]}, dtype=dtype)
    assert csv_of(table, safe=True) == f'"a"\n"\'{start}1+1"\n"\'{start}"\n\n"x"\n'


@pytest.mark.parametrize("start", DANGEROUS)
def test_a_header_that_a_spreadsheet_would_run_is_guarded(start: str) -> None:
    table = pd.DataFrame({f"{start}a": ["x"], "b": ["y"]})
    assert csv_of(table, safe=True) == f'"\'{start}a","b"\n"x","y"\n'


@pytest.mark.parametrize("value", ["1+1", "a=1", "a@b.org", "x-y", "'=1", "é", " x"])
def test_a_harmless_cell_stays(value: str) -> None:
    assert csv_of(pd.DataFrame({"a": [value]}), safe=True) == f'"a"\n"{value}"\n'


@pytest.mark.parametrize("value", ["x;=1+1", "x\t=1+1", "x\r=1+1", 'x"=1+1', "x,=1+1"])
def test_a_cell_is_not_split_where_another_character_separates(value: str) -> None:
    written = csv_of(pd.DataFrame({"a": [value], "b": ["y"]}), safe=True)
    assert written == '"a","b"\n"' + value.replace('"', '""') + '","y"\n'


@pytest.mark.parametrize("dtype", ["object", "str", "string"])
def test_missing_cells_are_not_guarded(dtype: str) -> None:
    table = pd.DataFrame({"a": [None, None], "b": [None, "=1"]}, dtype=dtype)
    assert csv_of(table, safe=True) == '"a","b"\n,\n,"\'=1"\n'


def test_without_being_asked_nothing_is_guarded() -> None:
    assert csv_of(pd.DataFrame({"=a": ["=1", "+1"]})) == "=a\n=1\n+1\n"


# --- files of other kinds


@pytest.mark.parametrize("end", [".bz2", ".parquet.gz", ".XZ", ".pq.zst", ".tar", ".csv.zip"])
def test_a_compressed_file_is_not_read(tmp_path: Path, end: str) -> None:
    path = tmp_path / f"t{end}"
    path.write_bytes(b"a\nx\n")
    assert refused(path) == f"Table {path} is compressed: unpack it first."


@pytest.mark.parametrize("end", [".xlsx", ".XLS", ".ods"])
def test_a_file_of_a_spreadsheet_is_not_read(tmp_path: Path, end: str) -> None:
    path = tmp_path / f"t{end}"
    path.write_bytes(b"a\nx\n")
    assert refused(path) == f"Table {path} is a spreadsheet's file: save it as CSV UTF-8."


@pytest.mark.parametrize(
    "end", [".bz2", ".zip", ".xz", ".tar", ".xlsx", ".xls", ".ods", ".json", ".sql", ".pdf"]
)
def test_no_table_is_written_under_the_name_of_another_kind(tmp_path: Path, end: str) -> None:
    path = tmp_path / f"t.csv{end}"
    with pytest.raises(TableError) as caught:
        write_table([pd.DataFrame({"a": ["x"]})], path)
    assert str(caught.value) == (
        f"Tables are not written as {end} files such as {path}: name a .csv, .tsv, .jsonl or"
        " .parquet file."
    )
    assert list(tmp_path.iterdir()) == []


# --- Parquet


@pytest.mark.skipif(HAS_PYARROW, reason="tells what is said where pyarrow is missing")
def test_without_pyarrow_it_is_told_how_to_install_it(tmp_path: Path) -> None:
    path = tmp_path / "t.parquet"
    with pytest.raises(MissingPackageError) as caught:
        write_table([pd.DataFrame({"a": ["x"]})], path)
    assert str(caught.value) == (f"To write {path} needs pyarrow: pip install 'vantrel[parquet]'.")
    assert list(tmp_path.iterdir()) == []


@with_pyarrow
@few
@given(tables, borders)
def test_a_parquet_file_is_the_same_whatever_parts_it_comes_in(
    tmp_path: Path, table: pd.DataFrame, at: list[int]
) -> None:
    write_table([table], tmp_path / "one.parquet")
    write_table(cut(table, at), tmp_path / "more.parquet")
    assert (tmp_path / "more.parquet").read_bytes() == (tmp_path / "one.parquet").read_bytes()


@with_pyarrow
def test_row_groups_are_of_one_size(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    import pyarrow.parquet as pq

    monkeypatch.setattr("vantrel.tables.writing._GROUP_ROWS", 10)
    table = pd.DataFrame({"a": [str(number) for number in range(25)]})
    for name, at in (("one", []), ("more", [1, 2, 13]), ("tens", [10, 20])):
        write_table(cut(table, at), tmp_path / f"{name}.parquet")
    meta = pq.read_metadata(tmp_path / "more.parquet")
    assert [meta.row_group(number).num_rows for number in range(meta.num_row_groups)] == [10, 10, 5]
    assert len({path.read_bytes() for path in tmp_path.iterdir()}) == 1
    assert read_table(tmp_path / "one.parquet")["a"].tolist() == table["a"].tolist()


@with_pyarrow
@pytest.mark.parametrize("dtype", ["object", "str", "string", "float64"])
def test_missing_values_are_missing_in_parquet(tmp_path: Path, dtype: str) -> None:
    import pyarrow.parquet as pq

    write_table([pd.DataFrame({"a": [None, None]}, dtype=dtype)], tmp_path / "t.parquet")
    table = pq.read_table(tmp_path / "t.parquet")
    assert table.schema.names == ["a"]
    assert [str(kind) for kind in table.schema.types] == ["string"]
    assert table["a"].to_pylist() == [None, None]


@with_pyarrow
def test_a_parquet_file_of_no_rows_has_its_columns(tmp_path: Path) -> None:
    import pyarrow.parquet as pq

    write_table([EMPTY], tmp_path / "t.parquet")
    assert pq.read_table(tmp_path / "t.parquet").schema.names == ["a", "b"]
    path = tmp_path / "t.parquet"
    assert refused(path) == f"Table {path} has a header but no rows: give it at least one."


@with_pyarrow
@pytest.mark.parametrize(
    ("kind", "values", "texts"),
    [
        ("string", ["007", "NA", ""], ["007", "NA", ""]),
        ("large_string", ["x"], ["x"]),
        ("dictionary", ["a", "b", "a"], ["a", "b", "a"]),
        ("int64", [1, 2**62], ["1", str(2**62)]),
        ("float64", [1.0, 2.5], ["1.0", "2.5"]),
        ("bool_", [True, False], ["true", "false"]),
        ("null", [], []),
        ("date32", ["2020-01-31"], ["2020-01-31"]),
        ("binary", [b"x"], ["x"]),
        ("binary", [b"x", b"\xff"], ["x", "\\xFF"]),
        ("list", [["a", "b"], []], ["[a, b]", "[]"]),
        ("struct", [{"x": 1}], ["{'x': 1}"]),
    ],
)
def test_every_column_is_read_as_text(
    tmp_path: Path, kind: str, values: list[Any], texts: list[str]
) -> None:
    import pyarrow as pa
    import pyarrow.parquet as pq

    kinds = {
        "dictionary": pa.dictionary(pa.int32(), pa.string()),
        "list": pa.list_(pa.string()),
        "struct": pa.struct([("x", pa.int64())]),
    }
    if kind == "date32":
        values = [datetime.date.fromisoformat(value) for value in values]
    column = pa.array([*values, None], kinds.get(kind) or getattr(pa, kind)())
    pq.write_table(pa.table({"a": column}), tmp_path / "t.parquet")
    read = read_table(tmp_path / "t.parquet")["a"]
    assert read.iloc[:-1].tolist() == texts
    assert pd.isna(read.iloc[-1])


@with_pyarrow
def test_a_folder_is_read_file_by_file(tmp_path: Path) -> None:
    for name, value in (("part-1", "b"), ("part-0", "a"), ("part-2", "c")):
        write_table([pd.DataFrame({"x": [value]})], tmp_path / f"{name}.parquet")
    (tmp_path / "_made.json").write_text("{}")
    assert read_table(tmp_path)["x"].tolist() == ["a", "b", "c"]


@with_pyarrow
def test_a_folder_without_parquet_files(tmp_path: Path) -> None:
    (tmp_path / "t.csv").write_text("a\nb\n")
    assert refused(tmp_path) == f"Folder {tmp_path} holds no Parquet files: name a table."


@with_pyarrow
def test_a_folder_of_several_tables(tmp_path: Path) -> None:
    write_table([pd.DataFrame({"a": ["1"], "b": ["2"]})], tmp_path / "0.parquet")
    write_table([pd.DataFrame({"b": ["3"], "c": ["4"]})], tmp_path / "1.parquet")
    assert refused(tmp_path) == (
        f"Folder {tmp_path} holds more than one table: 1.parquet differs from the first file in"
        " 'a', 'c'. Give each a folder."
    )


@with_pyarrow
@pytest.mark.parametrize("content", [b"", b"a,b\n1,2\n", "half", "damaged"])
def test_a_broken_parquet_file(tmp_path: Path, content: bytes | str) -> None:
    path = tmp_path / "t.parquet"
    write_table([pd.DataFrame({"a": [str(number) for number in range(99)]})], path)
    whole = path.read_bytes()
    broken = {"half": whole[: len(whole) // 2], "damaged": whole[:4] + b"\xff" * 40 + whole[44:]}
    path.write_bytes(content if isinstance(content, bytes) else broken[content])
    message = refused(path)
    assert message.startswith(f"Table {path} is no Parquet table or a broken one: write it anew. (")
    assert message.endswith(")")


@with_pyarrow
def test_a_parquet_file_that_is_not_there(tmp_path: Path) -> None:
    path = tmp_path / "t.parquet"
    assert refused(path) == f"Table {path} cannot be read: No such file or directory."


@pytest.mark.parametrize("name", ["t.csv", pytest.param("t.parquet", marks=with_pyarrow)])
@pytest.mark.parametrize("error", [ValueError, KeyboardInterrupt])
def test_parts_that_end_half_way_leave_what_was_there(
    tmp_path: Path, name: str, error: type[BaseException]
) -> None:
    def parts() -> Any:
        yield pd.DataFrame({"a": ["new"]})
        raise error

    (tmp_path / name).write_text("old")
    with pytest.raises(error):
        write_table(parts(), tmp_path / name)
    assert (tmp_path / name).read_text() == "old"
    assert [path.name for path in tmp_path.iterdir()] == [name]


def test_cells_that_are_too_long(tmp_path: Path) -> None:
    path = tmp_path / "t.csv"
    lines = ["sex,notes\n", *["m,x\n"] * 40, "f,{}\n", *["m,x\n"] * 10]
    path.write_text("".join(lines).format("y" * 3_000_000))
    assert read_table(path)["notes"].str.len().max() == 3_000_000
    path.write_text("".join(lines).format("y" * 20_000_000))
    with pytest.raises(TableError) as caught:
        read_table(path)
    assert str(caught.value) == (
        f"Table {path} is no CSV table: the row that begins in line 42 has a cell of more than"
        " 131,072 characters, or a quotation mark that is never closed."
    )

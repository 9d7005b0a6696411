"""Copies of Parquet files keep types, metadata, compression and row groups."""

from __future__ import annotations

import datetime
from collections.abc import Mapping
from dataclasses import replace
from decimal import Decimal
from io import BytesIO
from pathlib import Path
from typing import Any

import duckdb
import pandas as pd
import pytest

from support.copying import unchanged, upper
from vantrel.errors import TableError
from vantrel.tables.copying import Change, open_copied

pytest.importorskip("pyarrow", reason="Parquet needs pyarrow")

import pyarrow as pa
import pyarrow.parquet as pq

ROWS = 1_000

CODECS = {
    "id": "GZIP",
    "name": "ZSTD",
    "kind": "SNAPPY",
    "large": "BROTLI",
    "day": "NONE",
    "x.y": "SNAPPY",
}


def people() -> pa.Table:
    """A table with a column of nearly every type."""
    numbers = range(ROWS)
    kinds = pa.dictionary(pa.int8(), pa.string())
    columns = {
        "id": pa.array(numbers, pa.int32()),
        "name": pa.array([None if n % 7 == 0 else f"n{n}" for n in numbers]),
        "kind": pa.array([f"k{n % 5}" for n in numbers]).dictionary_encode().cast(kinds),
        "large": pa.array([f"l{n}" for n in numbers], pa.large_string()),
        "nested": pa.array([{"a": n, "b": [str(n), None]} for n in numbers]),
        "day": pa.array([datetime.datetime(2020, 1, 1)] * ROWS, pa.timestamp("us", "UTC")),  # noqa: DTZ001 - the type has the zone
        "price": pa.array([Decimal("1.10")] * ROWS, pa.decimal128(9, 2)),
        "x.y": pa.array(["a"] * ROWS),
        "phone": pa.array([49_30_000_000 + n for n in numbers], pa.int64()),
        "nothing": pa.nulls(ROWS),
    }
    table = pa.table(columns)
    first = table.schema.field(0).with_nullable(False).with_metadata({"unit": "people"})
    schema = table.schema.set(0, first).with_metadata({"made": "by hand"})
    return pa.Table.from_arrays(table.columns, schema=schema)


@pytest.fixture
def table(tmp_path: Path) -> Path:
    """A file of four row groups, with a codec of its own for each column."""
    path = tmp_path / "people.parquet"
    pq.write_table(people(), path, row_group_size=300, compression=CODECS)
    return path


def copied(path: Path, change: Change, most_rows: int = ROWS) -> pq.ParquetFile:
    with open_copied(path) as opened:
        target = BytesIO()
        parts = replace(opened, most_rows=most_rows)  # type: ignore[type-var]  # it is a dataclass
        rows = parts.write(target, opened.columns[::-1], change)
    copy = pq.ParquetFile(target)
    assert copy.metadata.num_rows == rows
    return copy


def codecs(file: pq.ParquetFile) -> dict[str, Any]:
    group = file.metadata.row_group(0).to_dict()
    return {
        each["path_in_schema"]: (each["compression"], each["has_dictionary_page"])
        for each in group["columns"]
    }


def notes(file: pq.ParquetFile) -> dict[bytes, bytes]:
    """What is kept beside the rows, without how Arrow writes the schema."""
    return {
        key: value
        for key, value in (file.metadata.metadata or {}).items()
        if key != b"ARROW:schema"
    }


def assert_same(one: pq.ParquetFile, other: pq.ParquetFile) -> None:
    assert other.schema.equals(one.schema)
    assert other.schema_arrow.equals(one.schema_arrow, check_metadata=True)
    assert notes(other) == notes(one)
    assert codecs(other) == codecs(one)
    assert other.read().equals(one.read())


@pytest.mark.parametrize("change", [unchanged, lambda _: {}], ids=["unchanged", "none"])
def test_what_is_unchanged_is_the_same(table: Path, change: Change) -> None:
    copy, original = copied(table, change), pq.ParquetFile(table)
    assert_same(original, copy)
    groups = [copy.metadata.row_group(number).num_rows for number in range(copy.num_row_groups)]
    assert groups == [300, 300, 300, 100]


def test_what_pandas_keeps(tmp_path: Path) -> None:
    frame = pd.DataFrame(
        {"kind": pd.Categorical(["x", "y"]), "day": pd.to_datetime(["2020-01-01"] * 2)},
        index=pd.Index([5, 6], name="key"),
    )
    path = tmp_path / "frame.parquet"
    frame.to_parquet(path)
    copy = copied(path, lambda _: {"kind": pa.array(["z", None])})
    again = copy.read().to_pandas()
    pd.testing.assert_frame_equal(again, frame.assign(kind=pd.Categorical(["z", None])))


def test_what_a_database_writes(tmp_path: Path) -> None:
    path = tmp_path / "made.parquet"
    duckdb.sql(
        "COPY (SELECT i, i::VARCHAR AS s, uuid() AS u, i::UTINYINT AS b, 1.5::DECIMAL(5, 2) AS d,"
        " TIME '10:00' AS t, [1, NULL] AS l, {'a': 1} AS n, 'x'::BLOB AS x FROM range(200) t(i))"
        f" TO '{path}' (FORMAT parquet, COMPRESSION zstd)"
    )
    original, copy = pq.ParquetFile(path), copied(path, unchanged)
    assert [column.physical_type for column in map(copy.schema.column, range(9))] == [
        column.physical_type for column in map(original.schema.column, range(9))
    ]
    assert copy.schema_arrow.equals(original.schema_arrow, check_metadata=True)
    assert copy.metadata.metadata == original.metadata.metadata
    assert copy.read().equals(original.read())


def test_old_timestamps(tmp_path: Path) -> None:
    path = tmp_path / "old.parquet"
    pq.write_table(people().select(["id", "day"]), path, use_deprecated_int96_timestamps=True)
    assert_same(pq.ParquetFile(path), copied(path, unchanged))


def test_no_rows(tmp_path: Path) -> None:
    path = tmp_path / "none.parquet"
    pq.write_table(people().slice(0, 0), path)
    assert copied(path, upper).read().equals(pq.read_table(path))


def test_large_row_groups_come_out_as_several_alike(table: Path) -> None:
    copy = copied(table, unchanged, most_rows=200)
    groups = [copy.metadata.row_group(number).num_rows for number in range(copy.num_row_groups)]
    assert groups == [150, 150, 150, 150, 150, 150, 100]
    assert copy.read().equals(pq.read_table(table))


def test_changed_columns_keep_their_types(table: Path) -> None:
    texts = ("name", "large", "x.y")

    def change(batch: pa.RecordBatch) -> Mapping[str, pa.Array]:
        phones = pa.array(["493099"] * len(batch))
        return {**upper(batch.select(texts)), "phone": phones}

    original, copy = pq.ParquetFile(table), copied(table, change)
    assert copy.schema_arrow.equals(original.schema_arrow, check_metadata=True)
    before, after = original.read(), copy.read()
    for name in texts:
        assert after[name].to_pylist() == [
            cell and cell.upper() for cell in before[name].to_pylist()
        ]
    assert set(after["phone"].to_pylist()) == {493099}
    rest = [name for name in before.column_names if name not in (*texts, "phone")]
    assert after.select(rest).equals(before.select(rest))


def test_a_dictionary_may_come_to_have_more_values(table: Path) -> None:
    copy = copied(table, lambda batch: {"kind": pa.array([f"x{n}" for n in range(len(batch))])})
    assert copy.schema_arrow.field("kind").type == pa.dictionary(pa.int32(), pa.string())
    assert copy.read()["kind"].to_pylist()[298:301] == ["x298", "x299", "x0"]


def test_columns_come_in_the_order_asked_for(table: Path) -> None:
    with open_copied(table) as opened:
        assert opened.columns == tuple(people().column_names)
        batches = list(opened.batches(["x.y", "id"]))
    assert batches[0].schema.names == ["x.y", "id"]
    assert [number for batch in batches for number in batch["id"].to_pylist()] == [*range(ROWS)]


def test_values_that_do_not_fit(table: Path) -> None:
    with pytest.raises(TableError) as caught:
        copied(table, lambda batch: {"phone": pa.array(["+49 30"] * len(batch))})
    assert str(caught.value) == (
        f"Column 'phone' of table {table} is of type int64, which new values do not fit: leave it"
        " as it is."
    )


def test_a_type_that_would_be_lost(tmp_path: Path) -> None:
    path = tmp_path / "made.parquet"
    duckdb.sql(f"COPY (SELECT INTERVAL 1 DAY AS often) TO '{path}' (FORMAT parquet)")
    with pytest.raises(TableError) as caught:
        copied(path, unchanged)
    assert str(caught.value) == (
        f"Column 'often' of table {path} is of type INTERVAL, which cannot be copied: write the"
        " table without it."
    )


def test_what_is_no_sound_table(tmp_path: Path) -> None:
    path = tmp_path / "broken.parquet"
    path.write_bytes(b"PAR1 and no more")
    with pytest.raises(TableError) as caught, open_copied(path):
        pass
    text = str(caught.value)
    assert text.startswith(
        f"Table {path} is no Parquet table or a broken one: write it anew. (Parquet magic bytes"
    )
    pq.write_table(pa.table([[1], [2]], names=["a", "a"]), path)
    with pytest.raises(TableError) as caught, open_copied(path):
        pass
    assert str(caught.value) == (
        f"Table {path} has several columns of one name: 'a'. Give each a name of its own."
    )

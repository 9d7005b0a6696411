"""Copies Parquet with some columns changed, and types, metadata and compression as they were."""

from __future__ import annotations

from collections.abc import Callable, Iterator, Mapping, Sequence
from contextlib import contextmanager
from dataclasses import dataclass
from io import BytesIO
from itertools import chain, islice
from math import ceil
from pathlib import Path
from typing import IO, Any

import pyarrow as pa
import pyarrow.parquet as pq

from vantrel.errors import TableError
from vantrel.hints import named
from vantrel.tables.copying.copied import Change
from vantrel.tables.errors import telling
from vantrel.tables.files import compressing
from vantrel.tables.kinds import Compression, Format
from vantrel.tables.sources import broken, refuse_doubled

# What is in memory of a group of rows at a time. A larger one comes out as several.
_MOST_BYTES = 64_000_000
_MOST_ROWS = 262_144

# Types that need not be told: whole numbers as they are kept.
_PLAIN = {"NONE", "INT_32", "INT_64"}


@dataclass(frozen=True)
class CopiedParquet:
    """A Parquet file that is copied with some columns changed.

    Attributes:
        path: What the user calls it.
        file: The open file.
        most_rows: How many rows are in memory at a time.
    """

    path: Path
    file: pq.ParquetFile
    most_rows: int = _MOST_ROWS

    format: Format = "parquet"
    compression: Compression | None = None

    @classmethod
    @contextmanager
    def opened(cls, path: Path, file: Path) -> Iterator[CopiedParquet]:
        """Opens a file, which the user calls ``path``."""
        with telling(path), _telling_what_is_broken(path):
            parquet = pq.ParquetFile(file)
        with parquet:
            copied = cls(path, parquet)
            refuse_doubled(path, copied.columns)
            yield copied

    @property
    def columns(self) -> tuple[str, ...]:
        """The names of the outermost columns."""
        return tuple(self.file.schema_arrow.names)

    def batches(self, columns: Sequence[str]) -> Iterator[pa.RecordBatch]:
        """Reads columns in the types that they are kept in."""
        for batch in self._read(list(columns)):
            yield batch.select(list(columns))

    def write(
        self,
        target: IO[bytes],
        columns: Sequence[str],
        change: Change,
        *,
        compression: Compression | None = None,
        notes: Callable[[], Mapping[str, str]] = dict,
    ) -> int:
        """Writes a copy; ``notes`` gives in the end what it keeps beside the rows."""
        rows = 0
        parts = ((each, change(each.select(list(columns)))) for each in self._read(None))
        first = list(islice(parts, 1))
        schema = self._schema(first[0][1] if first else {})
        self._refuse_lost_types(schema)
        with (
            compressing(target, compression) as packed,
            pq.ParquetWriter(packed, schema, **self._options()) as writer,
        ):
            for batch, changed in chain(first, parts):
                written = self._with(batch, changed, schema)
                writer.write_batch(written, row_group_size=max(1, len(batch)))
                rows += len(batch)
            if told := notes():
                writer.add_key_value_metadata(dict(told))
        return rows

    def _schema(self, changed: Mapping[str, pa.Array]) -> pa.Schema:
        """The schema of a copy: dictionaries that are changed may come to have more values."""
        schema = self.file.schema_arrow
        for place, field in enumerate(schema):
            is_other = field.name in changed and changed[field.name].type != field.type
            if is_other and pa.types.is_dictionary(field.type):
                wide = pa.dictionary(pa.int32(), field.type.value_type, field.type.ordered)
                schema = schema.set(place, field.with_type(wide))
        return schema

    def _refuse_lost_types(self, schema: pa.Schema) -> None:
        """Refuses a column of a type that Arrow reads and does not write."""
        sink = BytesIO()
        with pq.ParquetWriter(sink, schema, **self._options()):
            pass
        of_copy = pq.ParquetFile(sink).schema
        for place, column in enumerate(self.file.schema):
            kinds = {column.converted_type, of_copy.column(place).converted_type}
            if len(kinds) > 1 and not kinds <= _PLAIN:
                raise TableError(
                    f"Column {column.path!r} of table {named(self.path)} is of type"
                    f" {column.converted_type}, which cannot be copied: write the table without it."
                )

    def _read(self, columns: list[str] | None) -> Iterator[pa.RecordBatch]:
        """Reads one group of rows after another, each at once if it is not too large."""
        with telling(self.path), _telling_what_is_broken(self.path):
            for number in range(self.file.num_row_groups):
                group = self.file.metadata.row_group(number)
                parts = max(
                    ceil(group.total_byte_size / _MOST_BYTES), ceil(group.num_rows / self.most_rows)
                )
                rows = max(1, ceil(group.num_rows / max(1, parts)))
                yield from self.file.iter_batches(rows, row_groups=[number], columns=columns)

    def _with(
        self, batch: pa.RecordBatch, changed: Mapping[str, pa.Array], schema: pa.Schema
    ) -> pa.RecordBatch:
        arrays = [
            self._typed(changed[field.name], field) if field.name in changed else column
            for field, column in zip(schema, batch.columns, strict=True)
        ]
        return pa.RecordBatch.from_arrays(arrays, schema=schema)

    def _typed(self, values: pa.Array, field: pa.Field) -> pa.Array:
        try:
            return values.cast(field.type)
        except (pa.ArrowInvalid, pa.ArrowNotImplementedError) as error:
            raise TableError(
                f"Column {field.name!r} of table {named(self.path)} is of type {field.type}, which"
                " new values do not fit: leave it as it is."
            ) from error

    def _options(self) -> dict[str, Any]:
        """How the file was written, as far as it tells."""
        metadata = self.file.metadata
        first = metadata.row_group(0).to_dict()["columns"] if metadata.num_row_groups else []
        notes = metadata.metadata or {}
        has_whole_decimals = any(
            each.converted_type == "DECIMAL" and each.physical_type.startswith("INT")
            for each in self.file.schema
        )
        # Named only where it is needed: the oldest pyarrow that will do has no such option.
        more = {"store_decimal_as_integer": True} if has_whole_decimals else {}
        return more | {
            "version": metadata.format_version,
            "compression": {each["path_in_schema"]: _codec(each["compression"]) for each in first},
            "use_dictionary": [
                each["path_in_schema"] for each in first if each["has_dictionary_page"]
            ],
            "use_deprecated_int96_timestamps": any(
                each["physical_type"] == "INT96" for each in first
            ),
            "store_schema": b"ARROW:schema" in notes,
        }


def _codec(compression: str) -> str:
    return "NONE" if compression == "UNCOMPRESSED" else compression


@contextmanager
def _telling_what_is_broken(path: Path) -> Iterator[None]:
    try:
        yield
    except pa.ArrowException as error:
        raise broken(path, error) from error

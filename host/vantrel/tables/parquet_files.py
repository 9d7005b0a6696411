"""Parquet tables, by pyarrow where it is installed."""

from __future__ import annotations

from collections.abc import Iterable
from importlib.util import find_spec
from itertools import chain
from pathlib import Path
from typing import IO, TYPE_CHECKING

import pandas as pd

from vantrel.arguments import text_frame
from vantrel.tables.errors import TableError
from vantrel.tables.parts import regroup

if TYPE_CHECKING:
    import pyarrow.dataset as ds

# The rows of each row group: what readers take into memory at a time.
_GROUP_ROWS = 50_000


def require_pyarrow(path: Path) -> None:
    """Makes sure that Parquet files can be read and written.

    Raises:
        TableError: pyarrow is not installed.
    """
    if find_spec("pyarrow") is None:
        raise TableError(
            f"Parquet tables such as {path} need pyarrow: pip install 'vantrel[parquet]'."
        )


def read_parquet(path: Path) -> pd.DataFrame:
    """Reads a Parquet file, or all of a folder by their names, every value as text.

    Raises:
        TableError: A file cannot be read or is no such table, or pyarrow is not installed.
    """
    require_pyarrow(path)
    import pyarrow as pa
    import pyarrow.dataset as ds

    files = sorted(path.glob("*.parquet")) if path.is_dir() else [path]
    if not files:
        raise TableError(f"Folder {path} holds no Parquet files: name a table.")
    try:
        for file in files:
            file.open("rb").close()  # tells in a word why not
        dataset = ds.dataset([str(file) for file in files], format="parquet")
        _refuse_other_columns(dataset, path)
        table = dataset.to_table()
    except (pa.ArrowException, OSError) as error:
        if isinstance(error, OSError) and error.strerror:
            raise TableError.unreadable(path, error) from error
        raise TableError(
            f"Table {path} is no Parquet table or a broken one: write it anew."
            f" ({' '.join(str(error).split())})"
        ) from error
    return text_frame(table)


def _refuse_other_columns(dataset: ds.Dataset, path: Path) -> None:
    """Makes sure that the files of a folder are parts of one table."""
    columns = set(dataset.schema.names)
    for part in dataset.get_fragments():
        if other := columns ^ set(part.physical_schema.names):
            raise TableError(
                f"Folder {path} holds more than one table: {Path(part.path).name} differs from the"
                f" first file in {', '.join(map(repr, sorted(other)))}. Give each a folder."
            )


def write_parquet(frames: Iterable[pd.DataFrame], file: IO[bytes]) -> None:
    """Writes a table that comes in parts to an open file, in row groups of one size.

    Args:
        frames: At least one part; all have the same columns, of text.
        file: Where to write to.

    Raises:
        OSError: The file cannot be written.
    """
    import pyarrow as pa
    import pyarrow.parquet as pq

    groups = regroup(frames, _GROUP_ROWS)
    first = next(groups)
    schema = pa.schema([(str(column), pa.string()) for column in first.columns])
    with pq.ParquetWriter(file, schema) as writer:
        for group in chain([first], groups):
            writer.write_table(pa.Table.from_pandas(group, schema, preserve_index=False))

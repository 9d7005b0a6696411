"""Folders of tables whose people are replaced on Dask, and what one machine makes of them."""

from __future__ import annotations

from collections.abc import Sequence
from pathlib import Path
from typing import Any

import numpy as np
import pandas as pd
import pyarrow as pa
import pyarrow.parquet as pq
import pytest

from support.replacing import SECRET, customers
from vantrel import scale

KEY = "customer_id"


def visits(rows: int = 1_200) -> pd.DataFrame:
    """Rows of people who come more than once, of whom not each row tells all, or whose."""
    rng = np.random.default_rng(4)
    table = customers().iloc[rng.integers(0, 400, rows)].reset_index(drop=True)
    number = np.arange(rows)
    table[KEY] = table[KEY].astype("Int64").mask(number % 97 == 0)
    table["sex"] = table["sex"].mask(number % 5 == 0)
    table["country"] = table["country"].mask(number % 7 == 0)
    name = table["first_name"] + " " + table["last_name"]
    table["note"] = name.where(number % 100 == 50, "x")
    table["seen"] = "2020-01-" + pd.Series(number % 35 + 1).astype(str).str.zfill(2)
    table["row"] = number
    return table


def write_folder(folder: Path, table: pd.DataFrame, files: int, *, backwards: bool = False) -> Path:
    """Writes a table as so many files, the names of which sort as the rows do, or backwards."""
    folder.mkdir()
    whole = pa.Table.from_pandas(table, preserve_index=False)
    borders = np.linspace(0, len(table), files + 1).astype(int).tolist()
    for number in range(files):
        place = files - 1 - number if backwards else number
        part = whole.slice(borders[number], borders[number + 1] - borders[number])
        pq.write_table(part, folder / f"part.{place:03}.parquet")
    return folder


def read_files(folder: Path, names: Sequence[str] | None = None) -> pa.Table:
    """Reads the files of a folder one after the other."""
    paths = [folder / name for name in names] if names else sorted(folder.glob("*.parquet"))
    return pa.concat_tables([pq.read_table(path) for path in paths]).replace_schema_metadata()


def in_rows(table: pa.Table) -> pa.Table:
    """Gives the same rows in the order of their numbers."""
    return table.sort_by("row").combine_chunks()


def refusal(client: Any, error: type[Exception], **asked: Any) -> str:
    """Gives the message of a call that fails and leaves nothing behind."""
    asked = {"source": "many", "output": "copy", "key": KEY, "secret": SECRET} | asked
    with pytest.raises(error) as caught:
        scale.replace(**asked, client=client)
    assert caught.type is error
    assert not Path("copy").exists()
    return str(caught.value)

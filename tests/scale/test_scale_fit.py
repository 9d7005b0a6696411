"""Models that are fitted in parts: those of the whole table, however it is cut."""

from pathlib import Path
from typing import Any

import pandas as pd
import pytest

from support.people import people
from vantrel import fitting
from vantrel.errors import FittingError, TableError
from vantrel.model.models.person import PersonModel
from vantrel.storage.models import dumps
from vantrel.tables import write_table

pytest.importorskip("dask", reason="fitting on Dask needs Dask")
pytest.importorskip("pyarrow", reason="Dask's frames need pyarrow")

import dask.dataframe as dd

from vantrel import scale

COLUMNS: Any = {"gender": "gender", "title": "title", "country": "country", "firstname": "first"}


@pytest.fixture(scope="module")
def table() -> pd.DataFrame:
    df = people(500)
    df.loc[::7, "gender"] = None
    df.loc[1::5, "country"] = None
    df.loc[490:, "country"] = "France"  # nowhere but at the end
    df["first"] = "Ann"
    return df


@pytest.fixture(scope="module")
def expected(table: pd.DataFrame) -> str:
    return dumps(fitting.fit(table, **COLUMNS, generate=["email"]))


@pytest.mark.parametrize("npartitions", [1, 2, 3, 7, 500])
def test_a_frame_gives_the_model_of_the_whole_table(
    table: pd.DataFrame, expected: str, npartitions: int
) -> None:
    model = scale.fit(dd.from_pandas(table, npartitions), **COLUMNS, generate=["email"])
    assert isinstance(model, PersonModel)
    assert dumps(model) == expected


@pytest.mark.parametrize("files", [1, 2, 9])
def test_a_folder_gives_the_model_of_the_whole_table(
    tmp_path: Path, table: pd.DataFrame, expected: str, files: int
) -> None:
    rows = -(-len(table) // files)
    for number in range(files):
        part = table.iloc[number * rows : (number + 1) * rows]
        write_table([part], tmp_path / f"part-{number}.parquet")
    write_table([table.iloc[:0]], tmp_path / "part-a.parquet")
    for folder in (tmp_path, str(tmp_path)):
        assert dumps(scale.fit(folder, **COLUMNS, generate=["email"])) == expected


def test_columns_are_found(table: pd.DataFrame) -> None:
    named = fitting.fit(table)
    assert dumps(scale.fit(dd.from_pandas(table, npartitions=3))) == dumps(named)


def test_columns_are_found_by_values_of_later_partitions() -> None:
    late = pd.DataFrame({"sex": [None] * 40 + ["m", "f"] * 10}, dtype="str")
    model = scale.fit(dd.from_pandas(late, npartitions=4))
    assert dumps(model) == dumps(fitting.fit(late))


def test_what_cannot_be_learnt_from_is_refused(tmp_path: Path, table: pd.DataFrame) -> None:
    with pytest.raises(TableError) as caught:
        scale.fit(tmp_path)
    assert str(caught.value) == f"Folder {tmp_path} holds no Parquet files: name a folder of them."
    parts = dd.from_pandas(table.assign(country="Narnia"), npartitions=2)
    with pytest.raises(FittingError) as refused:
        scale.fit(parts, country="country", show_values=True)
    assert str(refused.value).endswith(
        " Such rows: 500 of 500. Correct or empty these cells, or leave the column out:"
        " ignore=['country']."
    )
    with pytest.raises(FittingError) as missing:
        scale.fit(parts, gender="sex")
    assert str(missing.value).startswith("The table has no column 'sex' for 'gender'.")

"""What only a look at all files, or the workers, find in folders whose people are replaced."""

from __future__ import annotations

import importlib
import re
from collections.abc import Iterator
from pathlib import Path
from typing import Any

import pandas as pd
import pytest

pytest.importorskip("distributed", reason="clusters need distributed")
pytest.importorskip("pyarrow", reason="Parquet files need pyarrow")

import pyarrow as pa
import pyarrow.parquet as pq

from support.command import fail
from support.replaced_folders import KEY, refusal, visits, write_folder
from support.replacing import SECRET
from vantrel import scale
from vantrel.errors import (
    ClusterError,
    ReplaceError,
)

pytestmark = pytest.mark.usefixtures("many")

RUN = f"replace many -o copy --dask --key {KEY}"
CLASH = (
    " would be of two people, as chance has it once in a great while: take another secret, with"
    " which everybody becomes another person."
)


def set_in_file(name: str, column: str, values: pa.Array) -> None:
    path = Path("many", name)
    table = pq.read_table(path)
    pq.write_table(table.set_column(table.column_names.index(column), column, values), path)


@pytest.mark.parametrize(
    ("column", "reason"),
    [
        ("email", "which cannot hold what is made up for it: make it text, or keep it."),
        ("seen", "which holds no dates: 'blank' empties it."),
    ],
)
def test_types_of_a_later_file_that_hold_no_new_values(
    column: str, reason: str, monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.setattr("vantrel.scale.cluster.LocalCluster", None)  # nobody starts machines
    set_in_file("part.002.parquet", column, pa.array([{"a": 1}] * 20))
    assert fail(f"{RUN} --other seen=shift:30", 1) == (
        f"File part.002.parquet: Column '{column}' is of type struct<a: int64>, {reason}"
    )
    assert not Path("copy").exists()


def test_values_of_a_later_file_for_which_there_are_no_others(client: Any) -> None:
    set_in_file("part.002.parquet", "row", pa.array([0.5] * 20))
    with pytest.raises(ReplaceError) as caught:
        scale.replace("many", "copy", KEY, SECRET, others={"row": "hash"}, client=client)
    assert str(caught.value) == (
        "File part.002.parquet: Column 'row' has numbers with a fraction, or too large for their"
        " type: only texts and whole numbers can be hashed."
    )


def test_a_key_that_is_missing_in_every_row(client: Any) -> None:
    write_folder(Path("keyless"), visits(60).assign(customer_id=float("nan")), 3)
    assert refusal(client, ReplaceError, source="keyless") == (
        "In keyless the key 'customer_id' is missing in every row: name another one, or none."
    )


def test_a_key_that_is_missing_in_one_file(client: Any) -> None:
    visits(20).assign(customer_id=float("nan")).to_parquet("many/part.001.parquet", index=False)
    outcome = scale.replace("many", "copy", KEY, SECRET, client=client)
    assert outcome.report.tables["many"].without_key == {"": 21}


@pytest.mark.usefixtures("alike")
@pytest.mark.parametrize("key", [KEY, None], ids=["with a key", "without"])
def test_two_people_of_one_user_name_end_the_run(key: str | None, client: Any) -> None:
    rows = pd.DataFrame({KEY: range(6), "username": [f"q{number}" for number in range(6)]})
    write_folder(Path("clashing"), rows, 3)
    message = refusal(client, ReplaceError, source="clashing", key=key)
    assert re.fullmatch(rf"[45] user names{re.escape(CLASH)}", message)


@pytest.fixture
def other_phones(client: Any) -> Iterator[None]:
    def set_versions(phones: str | None) -> None:
        secret = importlib.import_module("vantrel.replacing.runs.secret")
        metadata = importlib.import_module("importlib.metadata")
        secret.version = (  # type: ignore[attr-defined]  # is there
            lambda name: phones if phones and name == "phonenumbers" else metadata.version(name)
        )

    client.run(set_versions, "1.0")
    yield
    client.run(set_versions, None)


@pytest.mark.usefixtures("other_phones")
def test_a_worker_that_would_make_other_people(client: Any) -> None:
    from importlib.metadata import version

    message = re.sub(r"tcp://[\d.:]+\d", "X", refusal(client, ClusterError))
    assert message == (
        f"Worker X would make other people: phonenumbers '1.0' there and"
        f" {version('phonenumbers')!r} here. Install the same versions everywhere."
    )

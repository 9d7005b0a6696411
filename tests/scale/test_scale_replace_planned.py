"""Plans of folders, and what --strict makes of them on Dask: all as of one file."""

from __future__ import annotations

from pathlib import Path
from typing import TYPE_CHECKING

import pandas as pd
import pytest

pytest.importorskip("distributed", reason="clusters need distributed")
pytest.importorskip("pyarrow", reason="Parquet files need pyarrow")

from support.command import fail, succeed
from support.replaced_folders import KEY, refusal, visits, write_folder
from support.replacing import SECRET
from support.scaling import contents
from vantrel import scale
from vantrel.errors import UndecidedError

if TYPE_CHECKING:
    from distributed import Client

pytestmark = pytest.mark.usefixtures("many")

LEAK = "1 cell still names the row's person (row 51)"


def plan_of(table: str, options: str) -> str:
    succeed(f"replace {table} {options} --write-plan p.toml --force")
    return Path("p.toml").read_text()


@pytest.mark.parametrize("options", [f"--key {KEY}", f"--key {KEY} --other note=keep --strict"])
def test_a_plan_tells_what_that_of_one_file_tells(options: str) -> None:
    visits(60).assign(birthday="1980-05-17").to_parquet("one.parquet")
    write_folder(Path("several"), pd.read_parquet("one.parquet"), 3)
    plan = plan_of("several", f"--dask {options}")
    assert plan == plan_of("one.parquet", options).replace('"one.parquet"', "several")
    assert 'birthday = "undecided" # date of birth:' in plan
    assert ('note = "undecided" # ' + LEAK in plan) is ("note" not in options)


def test_a_folder_in_which_only_columns_look_personal_is_planned() -> None:
    write_folder(Path("calls"), pd.DataFrame({"ip": ["10.0.0.1", "::1"]}), 2)
    assert 'ip = "undecided" # IP address: its name says so' in plan_of("calls", "--dask")


def test_who_is_still_named_is_refused_with_strict(client: Client) -> None:
    message = refusal(client, UndecidedError, strict=True)
    visits(60).to_parquet("many.parquet")
    alone = fail(f"replace many.parquet -o copy.parquet --key {KEY} --strict", 1)
    alone = alone.replace("many.parquet", "many").replace("--scrub note", "scrub=['note']")
    assert message == alone
    assert f"many: Column 'note': {LEAK}: add scrub=['note']." in message


def test_copies_of_a_finished_run_stay_whatever_is_asked_then(client: Client) -> None:
    scale.replace("many", "copy", KEY, SECRET, client=client)
    before = contents(Path("copy"))
    with pytest.raises(UndecidedError):
        scale.replace("many", "copy", KEY, SECRET, strict=True, resume=True, client=client)
    assert contents(Path("copy")) == before

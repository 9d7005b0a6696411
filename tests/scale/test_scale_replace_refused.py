"""Folders and calls that are refused before people are replaced on Dask."""

from __future__ import annotations

from collections.abc import Callable
from pathlib import Path
from typing import TYPE_CHECKING

import pandas as pd
import pytest

pytest.importorskip("distributed", reason="clusters need distributed")
pytest.importorskip("pyarrow", reason="Parquet files need pyarrow")


from support.command import fail
from support.replaced_folders import KEY, refusal, visits, write_folder
from vantrel.errors import (
    ArgumentTypeError,
    ReplaceError,
    SecretError,
)

if TYPE_CHECKING:
    from distributed import Client

pytestmark = pytest.mark.usefixtures("many")

RUN = f"replace many -o copy --dask --key {KEY}"


def write_other_columns() -> str:
    visits(6).drop(columns="note").to_parquet("many/part.001.parquet")
    names = [*visits(0).columns]
    few = [name for name in names if name != "note"]
    return (
        "The files of folder many are not of one table: part.000.parquet has the columns"
        f" {', '.join(map(repr, names))}, part.001.parquet has {', '.join(map(repr, few))}."
    )


def put_a_table_of_another_kind() -> str:
    Path("many", "rest.csv").touch()
    return (
        "Folder many holds rest.csv, which is no file of Parquet: it would not be copied. Move it"
        " away."
    )


def put_a_folder() -> str:
    Path("many", "more.parquet").mkdir()
    return (
        "Folder many holds more.parquet, which is no file of Parquet: it would not be copied. Move"
        " it away."
    )


def remove_all() -> str:
    for file in Path("many").iterdir():
        file.unlink()
    Path("many", "_SUCCESS").touch()
    return "Folder many holds no Parquet files: name a folder of them."


def break_a_file() -> str:
    Path("many", "part.001.parquet").write_bytes(b"PAR1")
    return (
        "Table many/part.001.parquet is no Parquet table or a broken one: write it anew. (Parquet"
        " file size is 4 bytes, smaller than the minimum file footer (8 bytes))"
    )


def make_the_output() -> str:
    Path("copy").mkdir()
    Path("copy", "a file").touch()
    return (
        "Folder copy is not empty: add --resume to go on with a run that was stopped, or name"
        " another folder."
    )


@pytest.mark.parametrize(
    "prepare",
    [
        write_other_columns,
        put_a_table_of_another_kind,
        put_a_folder,
        remove_all,
        break_a_file,
        make_the_output,
    ],
)
def test_folders_that_cannot_be_copied(
    prepare: Callable[[], str], monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.setattr("vantrel.scale.cluster.LocalCluster", None)  # nobody starts machines
    message = prepare()
    assert fail(RUN, 2 if prepare is make_the_output else 1) == message


@pytest.mark.parametrize(
    ("line", "status", "message"),
    [
        (
            RUN.replace("many", "no"),
            1,
            "no is not there: name a folder of Parquet files.",
        ),
        (
            RUN.replace("many", "manny"),
            1,
            "manny is not there: name a folder of Parquet files. Did you mean 'many'?",
        ),
        (
            RUN.replace("many", "many/part.000.parquet"),
            1,
            "many/part.000.parquet is no folder: name a folder of Parquet files.",
        ),
        (
            RUN.replace("-o copy", "-o many"),
            2,
            "many is in the folder to read, or that folder itself: name another one.",
        ),
        (
            RUN.replace("-o copy", "-o many/copy"),
            2,
            "many/copy is in the folder to read, or that folder itself: name another one.",
        ),
        *(
            (
                f"{RUN} --secret {secret}",
                2,
                f"Secret file {secret} would be in the folder of the copies, or that folder itself:"
                " name another one.",
            )
            for secret in ("copy", "copy/secret")
        ),
        (
            RUN.replace("-o copy", "-o copy.parquet"),
            2,
            "copy.parquet is to be a folder of Parquet files: leave out the .parquet.",
        ),
        (RUN.replace("-o copy", "-o no/copy"), 1, "no/copy: folder 'no' does not exist."),
        (
            f"{RUN} --resume",
            1,
            "copy holds no run to resume: leave --resume out to begin one.",
        ),
        (
            RUN.replace("many", "many again"),
            2,
            "--dask copies one folder of Parquet files: name one TABLE.",
        ),
        (
            f"{RUN} --workers 2 --scheduler tcp://127.0.0.1:9",
            2,
            "A cluster that runs has its own workers: leave --workers out.",
        ),
        *(
            (
                f"{RUN} {option}",
                2,
                f"--dask makes a new folder of Parquet files: leave {option.split()[0]} out.",
            )
            for option in (
                "--people customers.csv",
                "--fail-on-leak",
                "--no-real",
                "--separator ;",
                "--encoding cp1252",
                "--force",
            )
        ),
        *(
            (
                f"{RUN.replace(' --dask', '')} {option}",
                2,
                f"Only --dask makes use of {option.split()[0]}: add it.",
            )
            for option in ("--scheduler tcp://127.0.0.1:9", "--workers 2", "--resume")
        ),
        (
            "replace many --dask --write-plan p.toml --resume --workers 2",
            2,
            "A plan is written without a cluster: leave --workers, --resume out.",
        ),
        (
            f"{RUN} --other nome=blank",
            1,
            "No table has a column 'nome' to change. Columns are:"
            f" {', '.join(map(repr, visits(0).columns))}.",
        ),
        (
            f"{RUN} --other note=blnk",
            1,
            "Column 'note': 'blnk' is no action. Did you mean 'blank'? Actions are: keep, blank,"
            " fake:PROVIDER, shift:DAYS, hash.",
        ),
    ],
)
def test_bad_calls(line: str, status: int, message: str, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr("vantrel.scale.cluster.LocalCluster", None)  # nobody starts machines
    before = sorted(Path().rglob("*"))
    assert fail(line, status) == message
    assert sorted(Path().rglob("*")) == before


def test_a_plan_of_other_tables() -> None:
    Path("p.toml").write_text(
        'format = "vantrel-plan"\nschema_version = 1\n'
        '[[tables.some.people]]\ncolumns = { email = "email" }\n'
    )
    assert fail(f"{RUN} --plan p.toml", 1) == (
        "Table many is not in the plan, which knows: 'some'. Write a plan of all tables, with"
        " --write-plan."
    )


def test_undecided_columns_with_strict() -> None:
    write_folder(Path("births"), visits(60).assign(birthday="1980-05-17"), 2)
    message = fail(f"{RUN.replace('many', 'births')} --strict", 1)
    assert message.startswith(
        "Nothing was written, as columns look personal and are not decided. births: Column"
        " 'birthday' looks personal (date of birth):"
    )


def test_no_run_of_another_kind_is_resumed() -> None:
    Path("copy").mkdir()
    Path("copy", "_making.json").write_text('{"format": "vantrel-sample"}')
    assert fail(f"{RUN} --resume", 1) == (
        "copy/_making.json is no record of a folder of replaced people (its format is"
        " 'vantrel-sample'): move it away."
    )


def test_bad_arguments_in_python() -> None:
    assert refusal(None, SecretError, secret=b"short") == (
        "A secret has 16 to 64 bytes, not 5: take secrets.token_bytes(32), and keep it."
    )
    assert refusal(None, ArgumentTypeError, keep="email") == (
        "'keep' is a list of attributes: write keep=['email']."
    )


def test_what_faker_cannot_make_is_told_before_the_first_file(client: Client) -> None:
    countries = [*["US"] * 30, "DE"]
    table = pd.DataFrame({KEY: range(31), "first_name": "Ann", "country": countries, "unit": "x"})
    write_folder(Path("abroad"), table, 3)
    assert refusal(client, ReplaceError, source="abroad", others={"unit": "fake:military_apo"}) == (
        "Column 'unit': Faker has no method 'military_apo' in the language 'de_DE', which some rows"
        " need: name another one."
    )

"""Folders whose people cannot be replaced on Dask, and what never gets out of a run that does."""

from __future__ import annotations

import importlib
import logging
import re
from collections.abc import Callable, Iterator
from functools import partial
from pathlib import Path
from typing import Any

import pandas as pd
import pytest

pytest.importorskip("distributed", reason="clusters need distributed")
pytest.importorskip("pyarrow", reason="Parquet files need pyarrow")

import pyarrow as pa
import pyarrow.parquet as pq
from dask.base import tokenize

from support.command import fail
from support.replaced_folders import KEY, visits, write_folder
from support.replacing import SECRET
from vantrel import scale
from vantrel.errors import (
    ArgumentTypeError,
    ClusterError,
    OverwriteError,
    ReplaceError,
    SecretError,
)
from vantrel.replacing.columns.person import Person
from vantrel.replacing.columns.roles import Roles
from vantrel.replacing.runs import secret as secret_files
from vantrel.replacing.runs.asked import Asked, OfTable
from vantrel.rows import Ways
from vantrel.scale.shared import Hidden, Shared

RUN = f"replace many -o copy --dask --key {KEY}"
CLASH = (
    " would be of two people, as chance has it once in a great while: take another secret, with"
    " which everybody becomes another person."
)


@pytest.fixture(autouse=True)
def _folder(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.chdir(tmp_path)
    write_folder(Path("many"), visits(60), 3)


def refusal(client: Any, error: type[Exception], **asked: Any) -> str:
    """Gives the message of a call that fails and leaves nothing behind."""
    asked = {"source": "many", "output": "copy", "key": KEY, "secret": SECRET} | asked
    with pytest.raises(error) as caught:
        scale.replace(**asked, client=client)
    assert caught.type is error
    assert not Path("copy").exists()
    return str(caught.value)


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


@pytest.fixture
def meanwhile(monkeypatch: pytest.MonkeyPatch) -> Callable[[Callable[[], object]], None]:
    """Does something while machines are started, when nothing was there at first."""

    def during(action: Callable[[], object]) -> None:
        monkeypatch.setattr(
            "vantrel.scale.replaced_folder._refuse_other_versions", lambda _: action()
        )

    return during


def refusal_of_new_secret(client: Any, error: type[Exception]) -> str:
    asked = Asked(OfTable(((KEY,),)))
    with pytest.raises(error) as caught:
        scale.replace_folder(Path("many"), Path("copy"), asked, secret=Path("new"), client=client)
    assert caught.type is error
    return str(caught.value)


def test_no_secret_is_made_for_a_folder_that_another_run_has(
    meanwhile: Callable[..., None], client: Any
) -> None:
    def begin() -> None:
        Path("copy").mkdir()
        Path("copy", "_making.json").touch()

    meanwhile(begin)
    assert refusal_of_new_secret(client, OverwriteError) == (
        "Folder copy is not empty: add resume=True to go on with a run that was stopped, or name"
        " another folder."
    )
    assert not Path("new").exists()
    assert [file.name for file in Path("copy").iterdir()] == ["_making.json"]


MADE_MEANWHILE = "Secret file new was made by another run meanwhile: run this once more."


def test_a_secret_that_another_run_has_made(meanwhile: Callable[..., None], client: Any) -> None:
    meanwhile(Path("new").touch)
    assert refusal_of_new_secret(client, SecretError) == MADE_MEANWHILE
    assert not Path("copy").exists()


def test_a_secret_that_two_runs_make_at_once(client: Any, monkeypatch: pytest.MonkeyPatch) -> None:
    genuine = secret_files.write_secret

    def write(path: Path, *rest: Any) -> None:
        genuine(path, *rest)
        path.touch()

    monkeypatch.setattr(secret_files, "write_secret", write)
    assert refusal_of_new_secret(client, SecretError) == MADE_MEANWHILE
    assert not Path("copy").exists()


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


@pytest.fixture
def alike(client: Any) -> Iterator[None]:
    """Has workers give everybody one digest."""

    def set_digests(is_alike: bool) -> None:
        genuine = importlib.import_module("vantrel.replacing.values.keys").digests
        others = partial(_one_digest, genuine)
        people = importlib.import_module("vantrel.replacing.people.people")
        people.digests = others if is_alike else genuine  # type: ignore[attr-defined]  # is there

    def _one_digest(genuine: Callable[..., Any], keys: Any, secret: bytes) -> Any:
        return genuine([b"one" for _ in keys], secret)

    client.run(set_digests, is_alike=True)
    yield
    client.run(set_digests, is_alike=False)


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


def all_that_is_shown(client: Any, caplog: pytest.LogCaptureFixture) -> str:
    """Gives the logs of all processes, and what the scheduler and its pages tell."""
    tasks = client.run_on_scheduler(
        lambda dask_scheduler: [
            repr((key, task, task.run_spec, task.exception_text, task.traceback_text))
            for key, task in dask_scheduler.tasks.items()
        ]
    )
    logs = [client.get_worker_logs(), client.get_scheduler_logs(), client.story(), caplog.text]
    return repr((logs, tasks, client.get_task_stream(), client.run(_task_reprs)))


def _task_reprs(dask_worker: Any) -> str:
    return repr([(key, task, task.run_spec) for key, task in dask_worker.state.tasks.items()])


@pytest.mark.usefixtures("alike")
def test_no_log_shows_the_secret(client: Any, caplog: pytest.LogCaptureFixture) -> None:
    caplog.set_level(logging.DEBUG, "distributed")
    refusal(client, ReplaceError)
    shown = all_that_is_shown(client, caplog)
    assert "_clashes" in shown  # the names of tasks are looked at
    for form in (SECRET.decode(), SECRET.hex(), repr(SECRET), str([*SECRET])):
        assert form not in shown


def test_what_is_hidden_has_no_name_of_its_own() -> None:
    one, other = Hidden(SECRET), Hidden(SECRET)
    assert repr(one) == str(one) == f"{one}" == "<hidden>"
    shared = Shared(
        Shared.hidden(SECRET), Path("t"), Roles((Person(("id",), {}),)), (), {}, "en_GB", Ways()
    )
    assert "secret=<hidden>" in repr(shared)
    assert tokenize(one) == tokenize(one)
    assert tokenize(one) != tokenize(other)  # so it is no hash of the value

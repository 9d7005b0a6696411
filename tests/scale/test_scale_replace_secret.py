"""A secret of a run on Dask: who makes it, and that it never gets out."""

from __future__ import annotations

import logging
from collections.abc import Callable
from pathlib import Path
from typing import Any

import pytest

pytest.importorskip("distributed", reason="clusters need distributed")
pytest.importorskip("pyarrow", reason="Parquet files need pyarrow")

from dask.base import tokenize

from support.replaced_folders import KEY, refusal
from support.replacing import SECRET
from vantrel import scale
from vantrel.errors import (
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

pytestmark = pytest.mark.usefixtures("many")


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

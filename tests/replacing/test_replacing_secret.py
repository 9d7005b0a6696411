"""Secret files, and the secret of the environment. None of this needs pyarrow."""

from __future__ import annotations

import os
import re
import stat
import sys
from pathlib import Path

import pandas as pd
import pytest

import vantrel
from vantrel.replacing.runs.secret import (
    checked_secret,
    deciding_versions,
    read_or_draw_secret,
    write_secret,
)
from vantrel.storage.together import replacing_together


@pytest.fixture
def path(tmp_path: Path) -> Path:
    return tmp_path / "people.secret"


def written(path: Path, text: str) -> Path:
    path.write_text(text)
    path.chmod(0o600)
    return path


def keep(path: Path, secret: bytes) -> None:
    with replacing_together(force=False) as opened:
        write_secret(path, secret, opened)


def new_secret(path: Path) -> bytes:
    secret, is_new = read_or_draw_secret(path)
    assert is_new
    keep(path, secret)
    return secret


def refused(path: Path) -> str:
    with pytest.raises(vantrel.SecretError) as caught:
        read_or_draw_secret(path)
    return str(caught.value)


def test_a_secret_is_made_once_and_for_its_owner_alone(path: Path) -> None:
    old = os.umask(0)
    try:
        made = new_secret(path)
    finally:
        os.umask(old)
    assert len(made) == 32
    assert stat.S_IMODE(path.stat().st_mode) == 0o600
    assert read_or_draw_secret(path) == (made, False)
    assert new_secret(path.with_name("other")) != made
    assert sorted(each.name for each in path.parent.iterdir()) == ["other", "people.secret"]


def test_what_stands_in_the_file(path: Path) -> None:
    made = new_secret(path)
    head, secret, *versions = path.read_text().splitlines()
    assert head == (
        "# Whoever has this can tell who became whom: keep it as well as the real data."
    )
    assert secret == f"secret: {made.hex()}"
    assert versions == [f"{name}: {version}" for name, version in deciding_versions().items()]
    assert {"vantrel", "vantrel-person", "Faker"} <= set(deciding_versions())


def test_of_two_runs_that_make_one_file_the_second_is_to_be_run_again(path: Path) -> None:
    (one, _), (other, is_new) = read_or_draw_secret(path), read_or_draw_secret(path)
    assert is_new
    keep(path, one)
    with pytest.raises(vantrel.SecretError) as caught:
        keep(path, other)
    assert str(caught.value) == (
        f"Secret file {path} was made by another run meanwhile: run this once more."
    )
    assert read_or_draw_secret(path) == (one, False)


def test_a_secret_is_kept_only_where_all_else_was_written(path: Path) -> None:
    secret, _ = read_or_draw_secret(path)
    with pytest.raises(ZeroDivisionError), replacing_together(force=False) as opened:
        write_secret(path, secret, opened)
        raise ZeroDivisionError
    assert list(path.parent.iterdir()) == []


def test_a_file_that_is_no_secret_file(path: Path) -> None:
    for text in ("", "id,name\n1,Anna\n", "my secret"):
        assert refused(written(path, text)) == (
            f"{path} is no secret file: name one, or a file that is not there, which is then made."
        )
    path.write_bytes(b"\xff\xfe\0")
    assert "is no secret file" in refused(path)


def test_a_file_that_is_cut_off(path: Path) -> None:
    made = new_secret(path).hex()
    for cut in (made[:-1], made[:10], "x" * 64):
        assert refused(written(path, f"secret: {cut}\n")) == (
            f"Secret file {path} is damaged: its secret is not of 64 hexadecimal digits. Restore it;"
            " with a new one all people become others."
        )


def test_what_cannot_be_read(path: Path) -> None:
    path.mkdir()
    assert refused(path) == f"Secret file {path} cannot be read: Is a directory."
    with pytest.raises(FileNotFoundError):
        read_or_draw_secret(path / "no" / "folder")


def test_a_file_that_others_can_read(path: Path) -> None:
    made = new_secret(path)
    path.chmod(0o644)
    with pytest.warns(vantrel.SecretWarning) as caught:
        assert read_or_draw_secret(path) == (made, False)
    assert [str(each.message) for each in caught] == [
        f"Others can read secret file {path}, and tell who became whom: chmod 600 {path}."
    ]


def test_a_file_of_other_versions(path: Path) -> None:
    made = new_secret(path)
    here = deciding_versions()["Faker"]
    written(path, re.sub("Faker: .*", "Faker: 1.2.3", path.read_text()))
    with pytest.warns(vantrel.OtherVersionsWarning) as caught:
        assert read_or_draw_secret(path) == (made, False)
    assert [str(each.message) for each in caught] == [
        f"People may become others than where secret file {path} was made: installed here are Faker"
        f" {here} (was 1.2.3)."
    ]


def test_the_secret_of_the_environment(path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    made = new_secret(path)
    monkeypatch.setenv("VANTREL_SECRET", f" {made.hex().upper()}\n")
    assert checked_secret(None) == made
    assert checked_secret(b"x" * 16) == b"x" * 16
    for wrong in ("", "secret", made.hex()[:-2]):
        monkeypatch.setenv("VANTREL_SECRET", wrong)
        with pytest.raises(vantrel.SecretError) as caught:
            checked_secret(None)
        assert str(caught.value) == (
            "VANTREL_SECRET in the environment is no secret: it has 64 hexadecimal digits, as in a"
            " secret file."
        )
    monkeypatch.delenv("VANTREL_SECRET")
    assert len({checked_secret(None), checked_secret(None)}) == 2


def test_replacing_needs_pyarrow(monkeypatch: pytest.MonkeyPatch) -> None:
    for name in [each for each in sys.modules if each.partition(".")[0] == "pyarrow"]:
        monkeypatch.delitem(sys.modules, name)
    monkeypatch.setitem(sys.modules, "pyarrow", None)
    with pytest.raises(vantrel.MissingPackageError) as caught:
        vantrel.replace(pd.DataFrame({"email": ["a@b.org"]}), secret=b"x" * 32)
    assert str(caught.value) == ("Replacing people needs pyarrow: pip install 'vantrel[replace]'.")

"""Files and tables, written whole or not at all."""

import errno
import os
import re
import stat
import subprocess
import sys
import threading
from pathlib import Path

import pytest

from vantrel.errors import LeftoverWarning, OverwriteError, TableError
from vantrel.storage.files import owned, refuse_overwriting, replacing, same_file
from vantrel.tables import read_table, write_table


def test_a_file_takes_its_place_at_the_end(tmp_path: Path) -> None:
    path = tmp_path / "f"
    path.write_text("old")
    with replacing(path) as file:
        file.write("new\n")
        assert path.read_text() == "old"
    assert path.read_bytes() == b"new\n"
    assert list(tmp_path.iterdir()) == [path]


def test_bytes_take_their_place_at_the_end(tmp_path: Path) -> None:
    path = tmp_path / "f"
    path.write_bytes(b"old")
    with pytest.raises(ValueError), replacing(path, binary=True) as file:
        file.write(b"\xff\r\n")
        raise ValueError
    assert path.read_bytes() == b"old"
    with replacing(path, binary=True) as file:
        file.write(b"\xff\r\n")
        assert path.read_bytes() == b"old"
    assert path.read_bytes() == b"\xff\r\n"
    assert list(tmp_path.iterdir()) == [path]


@pytest.mark.parametrize("error", [ValueError, KeyboardInterrupt])
def test_a_failure_leaves_what_was_there(tmp_path: Path, error: type[BaseException]) -> None:
    path = tmp_path / "f"
    path.write_text("old")
    with pytest.raises(error), replacing(path) as file:
        file.write("new")
        raise error
    assert path.read_text() == "old"
    assert list(tmp_path.iterdir()) == [path]


def test_an_error_names_the_file_that_was_asked_for(tmp_path: Path) -> None:
    path = tmp_path / "missing" / "f"
    with pytest.raises(FileNotFoundError) as caught, replacing(path):
        pass
    assert caught.value.filename == str(path)
    assert caught.value.strerror == f"folder {str(path.parent)!r} does not exist"


def test_a_link_stays_and_its_target_is_replaced(tmp_path: Path) -> None:
    target = tmp_path / "folder" / "target"
    target.parent.mkdir()
    target.write_text("old")
    link = tmp_path / "link"
    link.symlink_to(target)
    with replacing(link) as file:
        file.write("new")
    assert link.is_symlink()
    assert target.read_text() == "new"
    assert list(target.parent.iterdir()) == [target]


def test_a_link_into_a_missing_folder_names_that_folder(tmp_path: Path) -> None:
    link = tmp_path / "link"
    link.symlink_to(tmp_path / "missing" / "f")
    with pytest.raises(FileNotFoundError) as caught, replacing(link):
        pass
    assert caught.value.strerror == f"folder {str(tmp_path / 'missing')!r} does not exist"


IS_THERE = "{} is there already: add force=True to overwrite it."


@pytest.mark.parametrize("links", [True, False], ids=["links", "no links"])
def test_what_comes_meanwhile_is_not_lost(
    links: bool, tmp_path: Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    def no_link(*_: object) -> None:
        raise PermissionError(errno.EPERM, "Operation not permitted")

    if not links:
        monkeypatch.setattr(os, "link", no_link)
    path = tmp_path / "f"
    with pytest.raises(OverwriteError) as caught, replacing(path, force=False) as file:
        file.write("late")
        path.write_text("early")
    assert str(caught.value) == IS_THERE.format(path)
    assert path.read_text() == "early"
    assert list(tmp_path.iterdir()) == [path]
    path.unlink()
    with replacing(path, force=False) as file:
        file.write("alone")
    assert path.read_text() == "alone"
    assert list(tmp_path.iterdir()) == [path]


@pytest.mark.parametrize("leads_to", ["nowhere", "link"])
def test_a_link_that_leads_to_no_file_is_no_free_name(leads_to: str, tmp_path: Path) -> None:
    link = tmp_path / "link"
    link.symlink_to(tmp_path / leads_to)
    with pytest.raises(OverwriteError) as caught:
        refuse_overwriting(link)
    assert str(caught.value) == IS_THERE.format(link)
    refuse_overwriting(link, force=True)


def test_a_link_to_itself_is_not_written(tmp_path: Path) -> None:
    link = tmp_path / "link"
    link.symlink_to(link)
    with (
        pytest.raises(OSError, match="Too many levels of symbolic links") as caught,
        replacing(link),
    ):
        pass
    assert caught.value.filename == str(link)
    assert link.is_symlink()


def mode_of(path: Path) -> int:
    return stat.S_IMODE(path.stat().st_mode)


@pytest.mark.parametrize("mode", [0o600, 0o640, 0o666, 0o400])
def test_what_is_replaced_keeps_its_permissions(mode: int, tmp_path: Path) -> None:
    path = tmp_path / "f"
    path.touch()
    path.chmod(mode)
    with replacing(path) as file:
        (temporary,) = set(tmp_path.iterdir()) - {path}
        assert mode_of(temporary) == mode
        file.write("new")
    assert (mode_of(path), path.read_text()) == (mode, "new")


def test_nobody_may_do_more_than_with_the_file_that_it_is_made_of(tmp_path: Path) -> None:
    table, made, public = tmp_path / "table", tmp_path / "made", tmp_path / "public"
    table.touch(0o600)
    public.touch()
    public.chmod(0o644)
    for path in (made, public):
        with replacing(path, private_as=table):
            pass
        assert mode_of(path) == 0o600
    with replacing(tmp_path / "free", private_as=tmp_path / "no file"):
        pass
    (tmp_path / "usual").touch()
    assert mode_of(tmp_path / "free") == mode_of(tmp_path / "usual")


def test_what_a_killed_process_has_left_is_removed(tmp_path: Path) -> None:
    code = (
        "import os, pathlib; from vantrel.storage.files import replacing\n"
        "with replacing(pathlib.Path('f')) as file:\n"
        "    file.write('x' * 1_000_000); file.flush(); os.kill(os.getpid(), 9)"
    )
    subprocess.run([sys.executable, "-c", code], cwd=tmp_path, check=False)
    path = tmp_path / "f"
    assert len(list(tmp_path.iterdir())) == 1
    told = f"Removed 1,000,000 bytes that a killed run had left beside {path}."
    with pytest.warns(LeftoverWarning, match=re.escape(told)), replacing(path) as file:
        file.write("new")
    assert list(tmp_path.iterdir()) == [path]


def test_what_is_being_written_is_no_leftover(tmp_path: Path) -> None:
    path = tmp_path / "f"
    with replacing(path) as one:
        one.write("one")
        with replacing(path) as other:
            other.write("other")
        assert path.read_text() == "other"
    assert path.read_text() == "one"
    assert list(tmp_path.iterdir()) == [path]


@pytest.mark.parametrize("call", ["fcntl.flock", "os.fdopen", "os.fsync", "os.link"])
def test_a_signal_at_any_time_leaves_nothing(
    call: str, tmp_path: Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    def interrupt(*_: object, **__: object) -> None:
        raise KeyboardInterrupt

    monkeypatch.setattr(call, interrupt)
    with pytest.raises(KeyboardInterrupt), replacing(tmp_path / "f", force=False):
        pass
    assert not list(tmp_path.iterdir())


@pytest.mark.parametrize("name", ["f" * 255, "é" * 127, "f" * 240])
def test_names_as_long_as_the_file_system_takes_them(name: str, tmp_path: Path) -> None:
    path = tmp_path / name
    for force in (False, True):
        with replacing(path, force=force) as file:
            file.write("new")
    assert list(tmp_path.iterdir()) == [path]


def test_a_folder_has_one_owner(tmp_path: Path) -> None:
    with owned(tmp_path) as first, owned(tmp_path) as second:
        assert (first, second) == (True, False)
    with owned(tmp_path) as third:
        assert third
    assert not list(tmp_path.iterdir())


def test_a_pipe_is_written_into_and_stays(tmp_path: Path) -> None:
    pipe = tmp_path / "pipe"
    os.mkfifo(pipe)
    read: list[str] = []
    reader = threading.Thread(target=lambda: read.append(pipe.read_text()), daemon=True)
    reader.start()
    with replacing(pipe) as file:
        file.write("new")
    reader.join(timeout=10)
    assert read == ["new"]
    assert pipe.is_fifo()
    assert list(tmp_path.iterdir()) == [pipe]


def test_one_file_is_recognised_through_links(tmp_path: Path) -> None:
    path, link, other = tmp_path / "f", tmp_path / "link", tmp_path / "other"
    path.touch()
    other.touch()
    link.symlink_to(path)
    assert same_file(path, link)
    assert not same_file(path, other)
    assert not same_file(path, tmp_path / "missing")
    assert not same_file(tmp_path / "missing", tmp_path / "missing")


def test_a_folder_is_not_replaced(tmp_path: Path) -> None:
    path = tmp_path / "f"
    path.mkdir()
    with pytest.raises(IsADirectoryError) as caught, replacing(path):
        pass
    assert caught.value.filename == str(path)
    assert list(tmp_path.iterdir()) == [path]


def test_every_value_is_text_and_only_an_empty_cell_is_missing(tmp_path: Path) -> None:
    path = tmp_path / "t.csv"
    path.write_text("\ufeffcountry,phone,name\nNA,007,null\n,1.50,nan\n", encoding="utf-8")
    df = read_table(path)
    assert list(df.columns) == ["country", "phone", "name"]
    assert df["phone"].tolist() == ["007", "1.50"]
    assert df["name"].tolist() == ["null", "nan"]
    assert df["country"][0] == "NA"
    assert df["country"].isna().tolist() == [False, True]


def test_a_table_that_was_read_is_written_the_same(tmp_path: Path) -> None:
    content = 'a,b\nNA,ü\n,0\n"x,""y""",00\n"z\nz",\n'.encode()
    (tmp_path / "t.csv").write_bytes(content)
    write_table([read_table(tmp_path / "t.csv")], tmp_path / "u.csv")
    assert (tmp_path / "u.csv").read_bytes() == content


@pytest.mark.parametrize(
    ("content", "message"),
    [
        (b"", " is empty: give it a header and at least one row."),
        (b"\n\n", " is empty: give it a header and at least one row."),
        (b"a,b\n", " has a header but no rows: give it at least one."),
        (b"a\n\xff\xfe\n", " is not in UTF-8: name its encoding, cp1252 most likely, or save it"),
        (b"\xff\xfea\0\n", " is not in utf-16: name its encoding, cp1252 most likely, or save"),
        (b"a\n1,2\n3,4\n", " is no CSV table: line 2 has 2 values, the header 1."),
        (b"a,b\n1,2\n1,2,3,4\n", " is no CSV table: line 3 has 4 values, the header 2."),
        (b'a\n"x', " is no CSV table: the row that begins in line 2 has a quotation mark that is"),
        (b'a,b\n"\n",x\n\ny,"z\n,', " is no CSV table: the row that begins in line 5 has a"),
        (
            b'a\n"' + b"x" * 200_000,
            " is no CSV table: the row that begins in line 2 has a cell of",
        ),
        (b"b,a,b,a,b,c\n1,2,3,4,5,6\n", " has several columns of one name: 'b', 'a'. Give each a"),
        (b"a,a\n", " has several columns of one name: 'a'. Give each a name of its own."),
        (
            b"\xef\xbb\xbfsep=;\r\na;b\r\n1;2\r\n",
            " begins with the line 'sep=;', which only tells spreadsheets what separates the cells:"
            " take that line out.",
        ),
        (b"sep=,\na,b\n1,2\n", " begins with the line 'sep=,', which only tells spreadsheets"),
    ],
)
def test_what_is_no_table_is_refused(tmp_path: Path, content: bytes, message: str) -> None:
    path = tmp_path / "t.csv"
    path.write_bytes(content)
    with pytest.raises(TableError) as caught:
        read_table(path)
    assert str(caught.value).startswith(f"Table {path}{message}")
    assert "\n" not in str(caught.value)


def test_columns_without_a_name_may_be_several(tmp_path: Path) -> None:
    (tmp_path / "t.csv").write_text("a,,\n1,2,3\n")
    assert list(read_table(tmp_path / "t.csv")) == ["a", "Unnamed: 1", "Unnamed: 2"]


def test_a_table_that_is_not_there_is_refused(tmp_path: Path) -> None:
    with pytest.raises(TableError) as caught:
        read_table(tmp_path / "t.csv")
    path = tmp_path / "t.csv"
    assert str(caught.value) == f"Table {path} cannot be read: No such file or directory."

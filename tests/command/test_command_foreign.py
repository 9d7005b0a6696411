"""What others have named or closed: signs in names, standard streams, what is no file to read."""

import os
import subprocess
from pathlib import Path

import pytest

from support.command import command_line, fail, run, succeed

NOT_UTF_8 = os.fsdecode(b"caf\xe9")
ESCAPES = "a\x1b[2Jb\nvantrel: error: forged"


@pytest.fixture(autouse=True)
def folder(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> Path:
    monkeypatch.chdir(tmp_path)
    Path("people.csv").write_text("sex,land\nm,GB\nf,DE\n")
    succeed("fit people.csv --min-count 1 -o m.json --generate firstname")
    return tmp_path


@pytest.mark.parametrize("name", [NOT_UTF_8, ESCAPES], ids=["not UTF-8", "escapes"])
def test_files_of_odd_names_work_and_are_shown_as_a_shell_takes_them(name: str) -> None:
    model, wanted, made = (Path(f"{name}{end}") for end in (".json", ".csv", "-made.csv"))
    model.write_bytes(Path("m.json").read_bytes())
    wanted.write_text("sex\nm\n")
    script, *_ = command_line("")
    asked = ("sample", model, "--conditions", wanted, "--seed", "7", "-o", made)
    ran = subprocess.run([script, *asked], capture_output=True, text=True, check=False)
    assert (ran.returncode, ran.stderr) == (0, "")
    assert made.is_file()
    assert Path(f"{made}.made.json").is_file()
    told = ran.stdout.removeprefix("Made 1 person with the seed 7; wrote ").removesuffix(".\n")
    assert told.isprintable()
    echoed = subprocess.run(
        ["bash", "-c", f"printf %s {told}"], capture_output=True, check=True
    ).stdout
    assert echoed == os.fsencode(made)
    again = subprocess.run([script, *asked], capture_output=True, text=True, check=False)
    assert again.stderr == (
        f"vantrel: error: {told} is there already: add --force to overwrite it.\n"
    )


def test_no_sign_of_a_message_is_obeyed() -> None:
    result = run(f"sample m.json --seed '{ESCAPES}' -n 3 -o out.csv")
    (line,) = result.stderr.splitlines()
    assert line.isprintable()


def test_an_advice_with_odd_names_can_be_copied() -> None:
    Path("people.csv").write_text('"title\x1b[0m",sex\nManager,m\nClerk,f\n')
    told = succeed("fit people.csv --min-count 1 -o n.json").stderr
    assert all(line.isprintable() for line in told.splitlines())


def shell(line: str) -> subprocess.CompletedProcess[str]:
    script, *_ = command_line("")
    return subprocess.run(
        ["bash", "-c", f"{script} {line}"], capture_output=True, text=True, check=False
    )


def test_without_standard_error() -> None:
    ran = shell("sample m.json -n 3 -o out.csv 2>&-")
    assert ran.returncode == 0
    assert ran.stdout.endswith("; wrote out.csv.\n")
    assert len(Path("out.csv").read_text().splitlines()) == 4
    assert shell("sample m.json -n 3 -o missing/out.csv 2>&-").returncode == 1


@pytest.mark.parametrize("output", ["out.csv", "-"])
def test_without_standard_output(output: str) -> None:
    ran = shell(f"sample m.json -n 3 -o {output} >&-")
    assert (ran.returncode, ran.stderr) == (
        1,
        "vantrel: error: Standard output is closed: send it somewhere, as in > /dev/null.\n",
    )
    assert not Path("out.csv").exists()


def test_without_standard_input() -> None:
    ran = shell("fit - -o n.json <&-")
    assert (ran.returncode, ran.stderr) == (
        1,
        "vantrel: error: Table - is empty: give it a header and at least one row.\n",
    )


def test_settings_are_a_regular_file_of_some_size() -> None:
    os.mkfifo("pipe")
    line = "fit people.csv --min-count 1 -o n.json --config"
    for path in ("pipe", "/dev/zero"):
        assert fail(f"{line} {path}", 1) == (
            f"Config file {path} cannot be read: It is no regular file."
        )
    Path("long.toml").write_text("#" * 300_000)
    assert fail(f"{line} long.toml", 1) == (
        "Config file long.toml cannot be read: It has more than 262,144 bytes."
    )
    Path("digits.toml").write_text(f"pwd_length = [{'9' * 5_000}, 2]\n")
    assert fail(f"{line} digits.toml", 1) == (
        "Config file digits.toml is not TOML: A number has too many digits."
    )
    Path("parts.toml").write_text(f"{'a.' * 1_500}b = 1\n")
    assert fail(f"{line} parts.toml", 1) == (
        "Config file parts.toml is not TOML: A key has more than 1,000 parts."
    )
    Path("key.toml").write_text(f"{'k' * 200_000} = 1\n")
    assert len(fail(f"{line} key.toml", 1)) < 1_000


def test_a_record_is_a_regular_file() -> None:
    os.mkfifo("out.csv.made.json")
    assert fail("sample m.json -n 3 -o out.csv", 1) == (
        "out.csv.made.json cannot be read: It is no regular file."
    )


def test_a_name_of_a_column_is_not_endless() -> None:
    Path("people.csv").write_text(f"sex,sex,{'h' * 140_000}\nm,f,x\n")
    assert fail("fit people.csv --min-count 1 -o n.json", 1) == (
        "Table people.csv has no header: a name in it has more than 131,072 characters, or a"
        " quotation mark is never closed."
    )


@pytest.mark.parametrize("encoding", ["utf-16-le", "utf-16-be", "utf-16"])
def test_utf_16_needs_no_mark(encoding: str) -> None:
    Path("people.csv").write_bytes("sex,land\nm,GB\nf,DE\n".encode(encoding))
    succeed("fit people.csv --min-count 1 -o n.json --generate firstname")
    assert Path("n.json").read_bytes() == Path("m.json").read_bytes()


def test_a_model_file_may_begin_with_a_mark() -> None:
    Path("m.json").write_bytes(b"\xef\xbb\xbf" + Path("m.json").read_bytes())
    succeed("sample m.json -n 3 -o out.csv")

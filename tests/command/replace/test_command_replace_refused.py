"""``vantrel replace``: what is refused, and what is left where a run fails."""

import shlex
import subprocess
from pathlib import Path
from typing import Any

import pytest

from support.command import command_line, fail, succeed
from support.replaced_tables import BOTH, REPLACE

pytest.importorskip("pyarrow", reason="replacing people needs pyarrow")


def test_leaks_end_a_run_that_asks_for_it() -> None:
    succeed(REPLACE)
    Path("copy.csv").unlink()
    Path("copy.csv.made.json").unlink()
    assert fail(f"{REPLACE} --fail-on-leak", 3) == (
        "Nothing was written, as people are still named. customers.csv: Column 'notes': 1 cell"
        " still names the row's person (row 1): add --scrub notes. Do so, or leave these columns"
        " out of the tables."
    )
    succeed(f"{REPLACE} --fail-on-leak --scrub notes")


BAD = [
    (
        "replace nothing.csv -o copy.csv",
        1,
        "Table nothing.csv cannot be read: No such file or directory.",
    ),
    (
        REPLACE.replace("--key id", "--key ID"),
        1,
        "Table customers.csv has no column 'ID' for the key. Did you mean 'id'? Its columns are: 'id', 'sex', 'title', 'first_name', 'last_name', 'email', 'land', 'notes', 'points'.",
    ),
    (
        f"{REPLACE} --key land",
        1,
        "Table customers.csv: there are two keys, 'id' and 'land'. Join the columns of one key, as in --key id,land.",
    ),
    (
        f"{REPLACE} --key customers:id --key customers:land",
        1,
        "Table customers.csv: there are two keys, 'id' and 'land'. Join the columns of one key, as in --key id,land.",
    ),
    (
        "replace customers.csv -o customers.csv",
        2,
        "customers.csv is the file to read: write to another one.",
    ),
    (
        "replace customers.csv -o short --force --secret short",
        2,
        "short is the file to read: write to another one.",
    ),
    (
        "replace customers.csv -o copy.parquet",
        2,
        "Table customers.csv is CSV, and copy.parquet by its name Parquet: a copy is as its table.",
    ),
    (
        "replace customers.csv -o orders.csv",
        2,
        "orders.csv is there already: add --force to overwrite it.",
    ),
    (
        "replace customers.csv orders.csv -o empty",
        2,
        "empty is there and no folder: several copies go into a folder.",
    ),
    (
        "replace customers.csv ./customers.csv -o copy",
        2,
        "Two tables are called customers.csv, and so would be their copies: copy them into two folders, one after the other, with one secret.",
    ),
    ("replace . -o copy.csv", 1, "Table . is a folder: name a file."),
    (
        "replace customers.csv -o copy.csv --secret short",
        1,
        "Secret file short is damaged: its secret is not of 64 hexadecimal digits. Restore it; with a new one all people become others.",
    ),
    (
        "replace customers.csv -o copy.csv --secret orders.csv",
        1,
        "orders.csv is no secret file: name one, or a file that is not there, which is then made.",
    ),
    (
        "replace customers.csv -o copy.csv --column email",
        2,
        "Invalid value for '--column': 'email' is not of the form [TABLE:]ATTRIBUTE=COLUMN.",
    ),
    (
        "replace customers.csv -o copy.csv --column land=country",
        2,
        "Invalid value for '--column': 'land=country' is the wrong way round: write country=land.",
    ),
    (
        "replace customers.csv -o copy.csv --column email=mail",
        1,
        "No table has a column 'mail' for 'email'. Did you mean 'email'? Columns are: 'id', 'sex', 'title', 'first_name', 'last_name', 'email', 'land', 'notes', 'points'.",
    ),
    (
        "replace customers.csv -o copy.csv --column email=notes --column username=notes",
        1,
        "Table customers.csv: column 'notes' is given to 'email' and 'username': a column holds one attribute.",
    ),
    (
        "replace customers.csv -o copy.csv --scrub note",
        1,
        "No table has a column 'note' to scrub. Did you mean 'notes'? Columns are: 'id', 'sex', 'title', 'first_name', 'last_name', 'email', 'land', 'notes', 'points'.",
    ),
    (
        "replace customers.csv -o copy.csv --scrub email",
        1,
        "Column 'email' is replaced whole, as email: it need not be scrubbed.",
    ),
    (
        "replace customers.csv -o -",
        2,
        "Copies are not written to standard output: name a file for -o.",
    ),
    ("replace customers.csv -o no/copy.csv", 1, "no/copy.csv: folder 'no' does not exist."),
]


@pytest.mark.parametrize(("line", "status", "message"), BAD)
def test_bad_calls(line: str, status: int, message: str) -> None:
    Path("empty").touch()
    Path("short").write_text("secret: abcd\n")
    assert fail(line, status) == message
    assert not Path("copy").exists()


def test_a_table_without_people() -> None:
    Path("orders.csv").write_text("order,total\n1,2\n")
    assert fail("replace orders.csv -o copy.csv", 1) == (
        "Table orders.csv has no column to replace that is found by its name and values: name"
        " one, as in --column lastname=COLUMN. Its columns are: 'order', 'total'."
    )


def test_a_key_that_is_missing_everywhere() -> None:
    Path("customers.csv").write_text("id,email\n,a@b.de\n,c@d.de\n")
    assert fail("replace customers.csv -o copy.csv --key id", 1) == (
        "In customers.csv the key 'id' is missing in every row: name another one, or none."
    )


def test_a_full_disk_leaves_no_copy_of_a_run() -> None:
    lines = [f"{each},a{each}@web.de,{'y' * 200}" for each in range(5_000)]
    Path("large.csv").write_text("\n".join(["id,email,text", *lines]))
    line = "replace orders.csv large.csv -o copy --key id --secret s"
    script = f"ulimit -f 100; trap '' XFSZ; exec {shlex.join(command_line(line))}"
    ended = subprocess.run(["bash", "-c", script], capture_output=True, text=True, check=False)
    assert ended.returncode == 1
    assert ended.stderr.endswith("File too large.\n")
    assert not Path("copy").exists()


def test_the_secret_is_no_place_for_a_copy() -> None:
    message = "{} is the file to read: write to another one."
    for secret in ("copy.csv", "copy.csv.made.json"):
        line = f"replace customers.csv -o copy.csv --key id --secret {secret}"
        assert fail(line, 2) == message.format(secret)


def test_only_texts_are_scrubbed() -> None:
    import pyarrow as pa
    from pyarrow import parquet

    table = pa.table({"email": ["a@web.de"], "parts": [{"a": 1}]})
    parquet.write_table(table, "t.parquet")
    succeed(REPLACE)  # which makes the secret
    assert fail("replace t.parquet -o copy.parquet --scrub parts --secret s", 1) == (
        "Column 'parts' is of type struct<a: int64>, which has no text to scrub: 'blank' empties it."
    )


def test_a_table_without_a_line_of_names() -> None:
    message = (
        "Table bare.csv has no line of column names: its first line holds an e-mail address or a"
        " telephone number. Put the names of the columns above it."
    )
    for first in ("1,ann@web.de,Ann", "1,+49 171 3920012,Ann", "1,01713920012,Ann"):
        Path("bare.csv").write_text(f"{first}\n2,x,Bo\n")
        assert fail("replace bare.csv -o copy.csv", 1) == message


def test_a_file_that_comes_meanwhile_leaves_no_copy_and_no_secret(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    from vantrel.replacing.runs import files, record

    def meanwhile(*of_record: Any) -> None:
        write_record(*of_record)
        Path("copy/orders.csv").write_text("somebody else's")

    write_record = record.write_record
    monkeypatch.setattr(files, "write_record", meanwhile)
    assert fail(BOTH, 2) == "copy/orders.csv is there already: add --force to overwrite it."
    assert [path.name for path in Path("copy").iterdir()] == ["orders.csv"]
    assert Path("copy/orders.csv").read_text() == "somebody else's"
    assert not Path("s").exists()


def test_a_run_that_fails_leaves_no_secret() -> None:
    fail(f"{REPLACE} --fail-on-leak", 3)
    assert not Path("s").exists()
    succeed(REPLACE)
    assert Path("s").exists()


def test_a_name_without_an_end_is_that_of_a_folder() -> None:
    succeed("replace customers.csv -o new --key id --secret s")
    assert Path("new/customers.csv").is_file()
    assert fail("replace - -o new --key id --secret s", 2) == (
        "A table from standard input has no name: name the file of its copy."
    )


def test_a_table_that_is_not_there_is_told() -> None:
    assert fail("replace customers.csv -o copy.csv --key order:id", 1) == (
        "Table customers.csv has no column 'order:id' for the key. No table is called 'order'. Its"
        " columns are: 'id', 'sex', 'title', 'first_name', 'last_name', 'email', 'land', 'notes',"
        " 'points'."
    )


def test_a_key_is_not_scrubbed() -> None:
    assert fail(f"{REPLACE} --scrub id", 1) == (
        "Column 'id' tells who is who: scrubbed, it would no longer do so."
    )

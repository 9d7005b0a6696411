"""``vantrel replace`` as a user meets it."""

import json
import shlex
import stat
import subprocess
from pathlib import Path
from typing import Any

import pandas as pd
import pytest

from support.command import command_line, fail, run, succeed

pytest.importorskip("pyarrow", reason="replacing people needs pyarrow")

CUSTOMERS = (
    "id,sex,title,first_name,last_name,email,land,notes,points\r\n"
    '1,f,Mrs,Ann,Lee,ann.lee@web.de,GB,"Ann Lee called, twice",007\r\n'
    "2,m,,Hans,Meier,h.meier@gmx.de,DE,,\r\n"
    '3,m,Mr,Tom,"O\'Hara, Jr","",US,"ask Tom\nor not",1e3\r\n'
    ",f,,,,,FR,nobody,"
)
ORDERS = "order;id;full name;total\na;2;Hans Meier;3,50\nb;1;Ann Lee;7\nc;2;Hans Meier;0\n"
REPLACE = "replace customers.csv -o copy.csv --key id --secret s"
BOTH = "replace customers.csv orders.csv -o copy --key id --secret s"
PEOPLE = ["first_name", "last_name", "email"]


@pytest.fixture(autouse=True)
def tables(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.chdir(tmp_path)
    monkeypatch.delenv("VANTREL_SECRET", raising=False)
    Path("customers.csv").write_bytes(CUSTOMERS.encode())
    Path("orders.csv").write_text(ORDERS)


def read(path: str, **options: object) -> pd.DataFrame:
    return pd.read_csv(path, dtype=str, keep_default_na=False, **options)  # type: ignore[call-overload, no-any-return]  # options of any type


def test_people_are_others_and_all_else_stays() -> None:
    succeed(REPLACE)
    real, copy = read("customers.csv"), read("copy.csv")
    others = [column for column in real if column not in PEOPLE]
    pd.testing.assert_frame_equal(copy[others], real[others])
    assert (copy[PEOPLE] == "").equals(real[PEOPLE] == "")
    assert not ((copy[PEOPLE] == real[PEOPLE]) & (real[PEOPLE] != "")).any(axis=None)
    assert (
        Path("copy.csv").read_bytes().splitlines(keepends=True)[0]
        == (CUSTOMERS.encode().splitlines(keepends=True)[0])
    )
    assert Path("copy.csv").read_bytes().endswith(b",FR,nobody,")


def test_what_was_found_and_left_is_told() -> None:
    result = succeed(REPLACE)
    assert result.stdout.splitlines() == [
        "",
        "customers.csv",
        "Attribute  Column      Found by",
        "gender     sex         name and values  stays",
        "title      title       name and values  stays",
        "firstname  first_name  name             replaced",
        "lastname   last_name   name             replaced",
        "email      email       name and values  replaced",
        "country    land        name and values  stays",
        "Other columns stay: 'id', 'notes', 'points'.",
        "Replaced the people of 4 rows; wrote copy.csv.",
    ]
    assert result.stderr.splitlines() == [
        "vantrel: note: 1 row without a key: each is a person of its own.",
        "vantrel: note: Column 'notes': 1 cell still names the row's person (row 1): add"
        " --scrub notes.",
        "vantrel: note: Column 'notes': 1 cell has the row's first or last name alone (row 3).",
    ]


def test_one_person_in_all_tables_and_runs() -> None:
    succeed(BOTH)
    customers, orders = read("copy/customers.csv"), read("copy/orders.csv", sep=";")
    names = (customers["first_name"] + " " + customers["last_name"]).set_axis(customers["id"])
    assert orders["full name"].tolist() == [names["2"], names["1"], names["2"]]
    succeed("replace orders.csv -o alone.csv --key id --people customers.csv --secret s")
    assert Path("alone.csv").read_bytes() == Path("copy/orders.csv").read_bytes()
    succeed(REPLACE)
    assert Path("copy.csv").read_bytes() == Path("copy/customers.csv").read_bytes()
    succeed("replace customers.csv -o other.csv --key id --secret t")
    assert not (read("other.csv")[PEOPLE[:2]] == read("copy.csv")[PEOPLE[:2]]).all(axis=None)


def test_the_secret_of_the_environment_is_that_of_a_file() -> None:
    succeed(REPLACE)
    line = next(line for line in Path("s").read_text().splitlines() if line.startswith("secret"))
    secret = line.removeprefix("secret: ")
    succeed("replace customers.csv -o again.csv --key id", VANTREL_SECRET=secret)
    assert Path("again.csv").read_bytes() == Path("copy.csv").read_bytes()
    assert stat.S_IMODE(Path("s").stat().st_mode) == 0o600


def test_without_a_secret_nobody_is_the_same_again() -> None:
    line = "replace customers.csv -o copy.csv --key id"
    succeed(line)
    before = read("copy.csv")
    succeed(f"{line} --force")
    assert not before["email"].equals(read("copy.csv")["email"])


def test_keys_and_columns_of_one_table() -> None:
    Path("orders.csv").write_text(ORDERS.replace("id;", "buyer;").replace("full name", "to"))
    line = "--key customers:id --key orders.csv:buyer --column orders:fullname=to --secret s"
    succeed(f"replace customers.csv orders.csv -o copy {line}")
    customers, orders = read("copy/customers.csv"), read("copy/orders.csv", sep=";")
    hans = customers.iloc[1]
    assert orders["to"].tolist()[0] == f"{hans['first_name']} {hans['last_name']}"


def test_what_is_kept_and_what_is_scrubbed() -> None:
    succeed(f"{REPLACE} --keep email --scrub notes")
    real, copy = read("customers.csv"), read("copy.csv")
    assert copy["email"].equals(real["email"])
    ann, tom = copy.iloc[0], copy.iloc[2]
    assert ann["notes"] == f"{ann['first_name']} {ann['last_name']} called, twice"
    assert tom["notes"] == f"ask {tom['first_name']}\nor not"


def test_the_record_names_nobody() -> None:
    succeed(f"{REPLACE} --keep title")
    text = Path("copy.csv.made.json").read_text()
    record = json.loads(text)
    assert record["format"] == "vantrel-replace"
    assert record["replaced"] == {
        "first_name": "firstname",
        "last_name": "lastname",
        "email": "email",
    }
    assert (record["rows"], record["people"], record["key"]) == (4, 4, ["id"])
    assert record["leaks"] == [
        {"column": "notes", "kind": "person", "cells": 1},
        {"column": "notes", "kind": "name", "cells": 1},
    ]
    secret = Path("s").read_text().splitlines()[1].split()[1]
    assert not [each for each in ("Ann", "Lee", "Hans", "web.de", secret) if each in text]


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
        2,
        "There are two keys of all tables: join columns of one key by a comma, as in --key id,land.",
    ),
    (
        f"{REPLACE} --key customers:id --key customers:land",
        2,
        "There are two keys of table 'customers.csv': join columns of one key by a comma, as in --key id,land.",
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


def test_a_secret_that_others_can_read_is_told() -> None:
    succeed(REPLACE)
    Path("s").chmod(0o644)
    result = run(f"{REPLACE} --force")
    assert result.stderr.splitlines()[0] == (
        "vantrel: warning: Others can read secret file s, and tell who became whom: chmod 600 s."
    )


def test_a_table_without_rows() -> None:
    Path("customers.csv").write_text("id,sex,email\n")
    succeed("replace customers.csv -o copy.csv --column email=email")
    assert Path("copy.csv").read_text() == "id,sex,email\n"


def test_columns_that_are_named_are_replaced_beside_those_that_are_found() -> None:
    text = CUSTOMERS.replace("points", "billing").replace("007", "ann@work.example")
    Path("customers.csv").write_bytes(text.encode())
    succeed(f"{REPLACE} --column email=billing")
    copy = read("copy.csv")
    assert copy["email"][0] == copy["billing"][0] != "ann.lee@web.de"


def test_columns_that_look_personal_and_stay_are_told() -> None:
    lines = [f"{each},f,GB,a{each}@web.de,b{each}@web.de" for each in range(20)]
    Path("two.csv").write_text("\n".join(["id,sex,country,email,e-mail", *lines]))
    line = "replace two.csv -o copy.csv --key id --secret s"
    told = (
        "Column 'e-mail' looks like email, too, and stays: add --column email=e-mail to replace it"
    )
    assert succeed(line).stderr == f"vantrel: note: {told}.\n"
    assert fail(f"{line} --force --fail-on-leak", 3) == (
        f"Nothing was written, as people are still named. two.csv: {told}. Do so, or leave these"
        " columns out of the tables."
    )
    assert succeed(f"{line} --force --fail-on-leak --column email=e-mail").stderr == ""


def test_what_was_decided_is_not_told_as_undecided() -> None:
    lines = [f"{each},f,GB,A,a{each}@web.de,b{each}@web.de" for each in range(20)]
    Path("two.csv").write_text("\n".join(["id,sex,country,first_name,email,e-mail", *lines]))
    line = "replace two.csv -o copy.csv --key id --secret s --fail-on-leak --keep email"
    assert succeed(line).stderr == ""
    assert read("copy.csv")[["email", "e-mail"]].equals(read("two.csv")[["email", "e-mail"]])


def test_columns_that_begin_empty_are_found() -> None:
    lines = [f"{each},x{'y' * 100}," for each in range(60_000)]
    Path("late.csv").write_text("\n".join(["id,code,email", *lines, "60000,x,ann@web.de"]))
    succeed("replace late.csv -o copy.csv --key id --secret s")
    assert "ann@web.de" not in Path("copy.csv").read_text()


def test_one_odd_key_changes_nobody_else() -> None:
    rows = "id,email\na,a@web.de\n{}b,b@web.de\n"
    for odd, copy in (("", "plain.csv"), ("\0", "odd.csv")):
        Path("keys.csv").write_text(rows.format(odd))
        succeed(f"replace keys.csv -o {copy} --key id --secret s")
    plain, odd_one = (Path(copy).read_text().splitlines() for copy in ("plain.csv", "odd.csv"))
    assert plain[1] == odd_one[1]
    assert plain[2] != odd_one[2]


def test_one_table_by_two_names() -> None:
    line = "--column customers:lastname=points --column customers.csv:username=notes"
    succeed(f"{REPLACE} {line}")
    assert read("copy.csv")["points"][0] != "007"
    assert read("copy.csv")["notes"][0] != read("customers.csv")["notes"][0]


def test_a_full_disk_leaves_no_copy_of_a_run() -> None:
    lines = [f"{each},a{each}@web.de,{'y' * 200}" for each in range(5_000)]
    Path("large.csv").write_text("\n".join(["id,email,text", *lines]))
    line = "replace orders.csv large.csv -o copy --key id --secret s"
    script = f"ulimit -f 100; trap '' XFSZ; exec {shlex.join(command_line(line))}"
    ended = subprocess.run(["bash", "-c", script], capture_output=True, text=True, check=False)
    assert ended.returncode == 1
    assert ended.stderr.endswith("File too large.\n")
    assert not Path("copy").exists()


def test_numbers_that_are_too_few_are_told() -> None:
    lines = [f"{each},DE,0171 39200{each:02}" for each in range(100)]
    lines += [f"1{each:02},DE,0176 040690{each:02}" for each in range(100)]
    Path("numbers.csv").write_text("\n".join(["id,land,mobile", *lines]))
    line = "replace numbers.csv -o copy.csv --key id --secret s --no-real"
    assert "There are too few others." in succeed(line).stderr


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
        "Values of type struct<a: int64> cannot be scrubbed: leave that column out, or make it one of texts."
    )


def test_columns_of_other_kinds_that_look_personal_are_told() -> None:
    lines = [f"{each},f,GB,Ann,19{each + 40}-05-06,x" for each in range(30)]
    Path("born.csv").write_text("\n".join(["id,sex,country,first_name,dob,maiden_name", *lines]))
    told = succeed("replace born.csv -o copy.csv --key id --secret s").stderr.splitlines()
    assert told[0].startswith(
        "vantrel: note: Column 'dob' looks personal (date of birth): its name says so, and"
    )
    assert told[1:] == [
        "vantrel: note: Column 'maiden_name' looks personal (further name): its name says so. It"
        " stays; --other maiden_name=blank decides."
    ]


def test_notes_name_their_table_where_there_are_several() -> None:
    told = succeed(f"{BOTH} --scrub notes").stderr.splitlines()
    assert told == [
        "vantrel: note: customers.csv: 1 row without a key: each is a person of its own."
    ]
    told = succeed("replace orders.csv customers.csv -o other").stderr.splitlines()
    assert told[0] == "vantrel: note: orders.csv: No key was named: 'full name' tells who is who."
    assert told[1] == "vantrel: note: customers.csv: No key was named: 'email' tells who is who."


def test_what_a_table_tells_that_is_only_read() -> None:
    Path("orders.csv").write_text(f"{ORDERS}d;9;New Man;1\n")
    line = "replace orders.csv -o copy.csv --key id --secret s --people customers.csv"
    assert succeed(line).stderr.splitlines() == [
        "vantrel: note: customers.csv: 1 row without a key: each is a person of its own.",
        "vantrel: note: The table that was only read tells of 2 of 3 people: of the others their"
        " own rows alone tell.",
        "vantrel: note: The country of 1 of 3 people is not known: their names and numbers are"
        " those of en_GB, unless --locale or --people tells others.",
        "vantrel: note: The gender of 1 of 3 people is not known: they have names of any.",
    ]
    assert succeed(f"{BOTH} --scrub notes").stderr.count("only read") == 0


def test_a_key_for_tables_of_one_name() -> None:
    for year in (2024, 2025):
        Path(f"orders.{year}.csv").write_text(ORDERS.replace("id;", "buyer;"))
    line = "replace orders.2024.csv orders.2025.csv -o copy --key orders:buyer --secret s"
    succeed(line)
    assert Path("copy/orders.2024.csv").read_bytes() == Path("copy/orders.2025.csv").read_bytes()
    assert fail(f"{line} --force --key orders.2025.csv:order", 2) == (
        "There are two keys of table 'orders.2025.csv': join columns of one key by a comma, as in"
        " --key buyer,order."
    )


def test_a_key_with_a_comma_in_its_name() -> None:
    Path("odd.csv").write_text('"last, first",email,\n"Lee, Ann",a@web.de,x\n')
    Path("spaced.csv").write_text("' id',email\n1,a@web.de\n".replace("'", ""))
    succeed("replace odd.csv -o copy.csv --key 'last, first' --secret s")
    succeed("replace spaced.csv -o copy2.csv --key ' id' --secret s")
    succeed("replace spaced.csv -o copy3.csv --key ' id,email' --secret s")


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
    from vantrel.replacing import files, record

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


def test_an_encoding_that_has_not_all_letters() -> None:
    people = "id;Vorname;Nachname;Geschlecht;Land\n" + "".join(
        f"{each};Łucja;Żak;w;Polska\n" for each in range(300)
    )
    Path("kunden.csv").write_text(people.replace("Łucja", "Lucja").replace("Ż", "Z"), "cp1252")
    succeed("replace kunden.csv -o copy.csv --key id --secret s --encoding cp1252")
    assert set(Path("copy.csv").read_text("cp1252")) <= set(map(chr, range(256)))


def test_numbers_and_letters_of_names_are_as_asked() -> None:
    lines = [f"{each},JP,Qx{each},090-1234-{each:04}" for each in range(300)]
    Path("jp.csv").write_text("\n".join(["id,country,last_name,mobile", *lines]))
    line = "replace jp.csv -o {} --key id --secret s"
    succeed(f"{line.format('native.csv')}")
    succeed(f"{line.format('latin.csv')} --latin")
    assert not read("native.csv")["last_name"].map(str.isascii).any()
    assert read("latin.csv")["last_name"].map(str.isascii).all()
    german = "\n".join(["id,country,mobile", *(f"{n},DE,0171 {n:07}" for n in range(300))])
    Path("de.csv").write_text(german)
    told = succeed("replace de.csv -o few.csv --key id --secret s").stderr
    assert (
        "There are more people than numbers: mobile_number in DE (200 numbers for 300 people)."
        " --phone-numbers valid has more, which may be somebody's."
    ) in told
    told = succeed("replace de.csv -o many.csv --key id --secret s --phone-numbers valid").stderr
    assert "more people than numbers" not in told
    assert read("many.csv")["mobile"].nunique() > 290


def test_columns_of_all_tables_need_not_be_in_each() -> None:
    line = "replace orders.csv -o copy.csv --key id --secret s --people customers.csv"
    succeed(f"{line} --column email=email --column 'orders:fullname=full name'")


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

"""``vantrel replace``: what is printed, noted and recorded."""

import json
from pathlib import Path

import pytest

import vantrel
from support.command import fail, run, succeed
from support.replaced_tables import BOTH, ORDERS, REPLACE, read

pytest.importorskip("pyarrow", reason="replacing people needs pyarrow")


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


def test_a_secret_that_others_can_read_is_told() -> None:
    succeed(REPLACE)
    Path("s").chmod(0o644)
    result = run(f"{REPLACE} --force")
    assert result.stderr.splitlines()[0] == (
        "vantrel: warning: Others can read secret file s, and tell who became whom: chmod 600 s."
    )


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


def test_columns_that_look_like_another_persons_are_told_together() -> None:
    lines = [f"{n},Qa Qb,a{n}@web.de,Qc Qd,b{n}@web.de,c{n}@web.de" for n in range(20)]
    head = "id,p1_full_name,p1_email,p2_full_name,p2_email,email_b"
    Path("two.csv").write_text("\n".join([head, *lines]))
    apart = (
        "Columns 'p2_full_name', 'p2_email' look like those of another person of the row, and stay: a"
        " plan, which --write-plan writes, tells several people apart; if they are the same"
        " person's, add --column fullname=p2_full_name --column email=p2_email to replace them"
    )
    alone = "Column 'email_b' looks like email, too, and stays: add --column email=email_b to replace it"
    line = "replace two.csv -o copy.csv --key id --secret s"
    told = succeed(line).stderr.splitlines()
    assert told[:2] == [f"vantrel: note: {note}." for note in (alone, apart)]
    assert f"two.csv: {apart}. Do so" in fail(f"{line} --force --fail-on-leak", 3)
    succeed("replace two.csv --key id --write-plan plan.toml")
    text = Path("plan.toml").read_text()
    assert 'p2_email = "undecided" # looks like email of another person\n' in text
    assert text.endswith('email_b = "undecided" # looks like email, too\n')
    replacer = vantrel.Replacer(b"x" * 32)
    replacer.replace(read("two.csv"), "id")
    assert replacer.notes[-3] == (
        "Columns 'p2_full_name', 'p2_email' look like those of another person of the row, and stay: call"
        " the columns of each after who she is, as in 'buyer_email'; if they are the same person's, add"
        " columns={'fullname': 'p2_full_name', 'email': 'p2_email'} to replace them."
    )


def test_names_of_others_are_told_and_not_to_be_scrubbed() -> None:
    people = ["Tim Evans", "Mary Taylor", "Peter Smith", "Linda Jones", "Mark Brown", "Ann Lee"]
    rows = [f"{n},{own},{people[n - 1]},{own}" for n, own in enumerate(people)]
    rows[2:2] = ["6,Ann Lee,,Ann Lee", "7,Mark Brown,Mark Brown,Mark Brown"]
    Path("pairs.csv").write_text("\n".join(["id,name,partner,parent", *rows]))
    line = "replace pairs.csv -o copy.csv --key id --secret s"
    others = (
        "Column 'partner' has names of other people than the row's, and these stay: a plan, which"
        " --write-plan writes, tells several people apart; or add --other partner=blank to leave it"
        " empty"
    )
    assert succeed(line).stderr.splitlines()[:3] == [
        "vantrel: note: Column 'partner': 1 cell still names the row's person (row 4): add --other"
        " partner=blank.",
        "vantrel: note: Column 'parent': 8 cells still name the row's person (rows 1, 2, 3): add"
        " --scrub parent.",
        f"vantrel: note: {others}.",
    ]
    line += " --force --scrub parent"
    assert others in fail(f"{line} --strict", 1)
    assert f"pairs.csv: {others}. Do so" in fail(f"{line} --fail-on-leak", 3)
    for strictly in ("--strict", "--fail-on-leak"):
        assert others in fail(f"{line} --scrub partner {strictly}", 3 if "leak" in strictly else 1)
    succeed(f"{line} --other partner=blank --strict --fail-on-leak")
    replacer = vantrel.Replacer(b"x" * 32)
    replacer.replace(read("pairs.csv"), "id", scrub=["partner", "parent"])
    assert [note for note in replacer.notes if "'partner' has" in note] == [
        "Column 'partner' has names of other people than the row's, and these stay: call the columns"
        " of each after who she is, as in 'buyer_email'; or add others={'partner': 'blank'} to leave"
        " it empty."
    ]


def test_a_plan_tells_full_names_of_others() -> None:
    names = ["Tim Evans", "Mary Taylor", "Peter Smith", "Linda Jones"]
    rows = [f"{n},{name},{names[n - 1]},{name}" for n, name in enumerate(names)]
    Path("lent.csv").write_text("\n".join(["id,name,assigned to,signed by", *rows]))
    succeed("replace lent.csv --key id --write-plan plan.toml")
    text = Path("plan.toml").read_text()
    assert '"assigned to" = "undecided" # looks like fullname of another person\n' in text
    assert '"signed by" = "undecided" # looks like fullname, too\n' in text


def test_what_was_decided_is_not_told_as_undecided() -> None:
    lines = [f"{each},f,GB,A,a{each}@web.de,b{each}@web.de" for each in range(20)]
    Path("two.csv").write_text("\n".join(["id,sex,country,first_name,email,e-mail", *lines]))
    line = "replace two.csv -o copy.csv --key id --secret s --fail-on-leak --keep email"
    assert succeed(line).stderr == ""
    assert read("copy.csv")[["email", "e-mail"]].equals(read("two.csv")[["email", "e-mail"]])


def test_numbers_that_are_too_few_are_told() -> None:
    lines = [f"{each},DE,0171 39200{each:02}" for each in range(100)]
    lines += [f"1{each:02},DE,0176 040690{each:02}" for each in range(100)]
    Path("numbers.csv").write_text("\n".join(["id,land,mobile", *lines]))
    line = "replace numbers.csv -o copy.csv --key id --secret s --no-real"
    assert "There are too few others." in succeed(line).stderr


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


def test_a_key_of_several_columns_is_told_as_one() -> None:
    Path("two.csv").write_text("first_name,last_name\nAnn,Lee\nBo,Orr\n")
    told = succeed("replace two.csv -o out.csv --secret s").stderr.splitlines()
    assert told[0] == (
        "vantrel: note: No key was named: 'first_name', 'last_name' together tell who is who."
    )


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


@pytest.mark.parametrize("options", ["", "--other name=hash"])
def test_nobody_is_told_of_a_table_without_people(options: str) -> None:
    Path("people.csv").write_text("id,first_name,country,sex\n1,Ann,GB,f\n")
    Path("things.csv").write_text("number,name\n1,chair\n2,table\n")
    told = succeed(f"replace people.csv things.csv -o out --key people:id {options}")
    assert told.stdout.splitlines()[-1] == "Replaced nobody in 2 rows; wrote out/things.csv."
    assert told.stderr == ""
    assert json.loads(Path("out/things.csv.made.json").read_text())["people"] == 1


def test_each_row_is_a_person_where_it_matters_who_is_who() -> None:
    Path("things.csv").write_text("number,name\n1,chair\n2,table\n")
    told = succeed("replace things.csv -o out.csv --other name=fake:city")
    assert told.stdout.splitlines()[-1] == "Replaced nobody in 2 rows; wrote out.csv."
    assert told.stderr == (
        "vantrel: note: No key was named, and none was found: each row is a person of its own.\n"
    )


def test_nobody_is_replaced_where_no_cell_has_somebody() -> None:
    Path("people.csv").write_text("id,first_name\n1,\n2,NULL\n")
    told = succeed("replace people.csv -o out.csv --key id --column firstname=first_name")
    assert told.stdout.endswith("Replaced nobody in 2 rows; wrote out.csv.\n")
    Path("people.csv").write_text("id,first_name\n")
    told = succeed("replace people.csv -o out.csv --key id --column firstname=first_name --force")
    assert told.stdout.endswith("Replaced the people of 0 rows; wrote out.csv.\n")

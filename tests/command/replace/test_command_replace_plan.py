"""``vantrel replace`` with a plan."""

from __future__ import annotations

from pathlib import Path

import pytest

from support.command import fail, succeed

pytest.importorskip("pyarrow", reason="replacing people needs pyarrow")

BORN = "\n".join(
    [
        "id,sex,country,name,dob,memo,mail2",
        *(f"{n},f,GB,Ann Lee,19{n + 40}-05-06,x,y" for n in range(30)),
    ]
)
NEW = ["first_name", *(f"Q{chr(97 + n % 26)}" for n in range(30))]
ORDERS = "order,id,to\n1,7,Ann Lee\n"
PLAN = "replace born.csv orders.csv --key id --write-plan plan.toml"
RUN = "replace born.csv orders.csv -o {} --plan plan.toml --secret s"


@pytest.fixture(autouse=True)
def tables(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.chdir(tmp_path)
    monkeypatch.delenv("VANTREL_SECRET", raising=False)
    Path("born.csv").write_text(BORN)
    Path("orders.csv").write_text(ORDERS)


def test_a_plan_tells_what_becomes_of_each_column_and_why() -> None:
    assert succeed(PLAN).stdout == "Wrote plan.toml: look at it, then run it with --plan.\n"
    assert Path("plan.toml").read_text().split("\n\n")[1:] == [
        'format = "vantrel-plan"\nschema_version = 1\n'
        'new_columns = "refuse" # "keep": columns that are not here stay',
        '[[tables."born.csv".people]]\nkey = ["id"] # named',
        '[tables."born.csv".people.columns]\ngender = "sex" # stays; found by its name and values\n'
        'fullname = "name" # replaced; found by its name and values\n'
        'country = "country" # stays; found by its name and values',
        '[tables."born.csv".other]\nid = "keep" # the key\n'
        'dob = "undecided" # date of birth: its name says so, and 100% of its different values are'
        ' days that lie as far apart as births do\nmemo = "keep"\nmail2 = "undecided" # named like email,'
        " but its values do not look so",
        '[[tables."orders.csv".people]]\nkey = ["id"] # named',
        '[tables."orders.csv".people.columns]\nfullname = "to" # replaced; found by its values',
        '[tables."orders.csv".other]\norder = "keep"\nid = "keep" # the key\n',
    ]
    assert not [path for path in Path().iterdir() if "made" in path.name]


def test_a_plan_makes_what_its_options_make() -> None:
    succeed("replace born.csv orders.csv -o plain --key id --secret s")
    succeed(PLAN)
    succeed(RUN.format("planned"))
    for name in ("born.csv", "orders.csv"):
        assert Path("plain", name).read_bytes() == Path("planned", name).read_bytes()


def test_options_come_before_the_plan() -> None:
    succeed(f"{PLAN} --keep fullname --column username=memo --column orders:username=order")
    assert Path("plan.toml").read_text().count('keep = ["fullname"]') == 2
    succeed(RUN.format("out") + " --column born:password=mail2")
    for line in Path("out/born.csv").read_text().splitlines()[1:]:
        *_, name, _, memo, mail2 = line.split(",")
        assert name == "Ann Lee"
        assert memo != "x"
        assert mail2 != "y"


def test_options_take_columns_from_the_people_of_a_plan() -> None:
    succeed(PLAN)
    options = " --other born:name=blank --column orders:username=to"
    assert "fullname" not in succeed(RUN.format("out") + options).stdout
    names = [line.split(",")[3] for line in Path("out/born.csv").read_text().splitlines()]
    assert names == ["name", *[""] * 30]
    username = Path("out/orders.csv").read_text().strip().split(",")[-1]
    assert username != "Ann Lee"
    assert " " not in username


def test_a_column_that_a_plan_does_not_know_is_refused_unless_it_is_to_stay() -> None:
    succeed(PLAN)
    Path("orders.csv").write_text("order,id,to,new\n1,7,Ann Lee,x\n")
    assert fail(RUN.format("out"), 1) == (
        "Table orders.csv has a column 'new' that the plan does not know: decide in the plan what"
        ' becomes of it, or write new_columns = "keep" there.'
    )
    assert not Path("out").exists()
    text = Path("plan.toml").read_text()
    Path("plan.toml").write_text(text.replace('new_columns = "refuse"', 'new_columns = "keep"'))
    succeed(RUN.format("out"))
    assert Path("out/orders.csv").read_text().endswith(",x\n")


def test_a_column_that_is_gone_is_told() -> None:
    succeed(PLAN)
    Path("orders.csv").write_text("id,to\n7,Ann Lee\n")
    assert fail(RUN.format("out"), 1) == (
        "Table orders.csv has no column 'order', which the plan knows. Its columns are: 'id', 'to'."
    )


def test_what_nobody_has_decided() -> None:
    told = (
        "Column 'dob' looks personal (date of birth): its name says so, and 100% of its different"
        " values are days that lie as far apart as births do. It stays; --other dob=shift:180"
        " decides."
    )
    strict = "replace born.csv -o out.csv --key id --secret s --strict"
    assert fail(strict, 1) == (
        "Nothing was written, as columns look personal and are not decided. born.csv: " + told
    )
    succeed(PLAN)
    planned = RUN.format("out")
    in_plan = 'dob = "shift:180" under [tables."born.csv".other] in plan.toml decides.'
    assert in_plan in succeed(planned).stderr
    assert in_plan in fail(f"{planned} --force --strict", 1)
    text = Path("plan.toml").read_text()
    Path("plan.toml").write_text(text.replace('"undecided"', '"keep"'))
    assert "dob" not in succeed(f"{planned} --force --strict").stderr
    Path("plan.toml").write_text(text.replace('memo = "keep"', 'memo = "undecided"'))
    assert (
        "Column 'memo' is undecided. It stays;"
        ' memo = "keep" under [tables."born.csv".other] in plan.toml decides.'
        in succeed(f"{planned} --force").stderr
    )


def test_a_new_column_of_somebody_is_told_where_new_ones_stay() -> None:
    succeed("replace born.csv --key id --write-plan plan.toml")
    text = Path("plan.toml").read_text().replace('"refuse"', '"keep"')
    Path("plan.toml").write_text(text)
    grown = [f"{line},{new}" for line, new in zip(BORN.split("\n"), NEW, strict=True)]
    Path("born.csv").write_text("\n".join(grown))
    told = succeed("replace born.csv -o out.csv --plan plan.toml --secret s").stderr
    assert (
        "Column 'first_name' looks like firstname, too, and stays: write"
        ' firstname = "first_name" under [tables."born.csv".people.columns] in plan.toml to replace'
        " it." in told
    )
    text = text.replace('memo = "keep"', 'memo = "keep"\nfirst_name = "undecided"')
    Path("plan.toml").write_text(text)
    notes = succeed("replace born.csv -o c.csv --plan plan.toml --secret s").stderr.splitlines()
    assert len([note for note in notes if "'first_name'" in note]) == 1
    assert "first_name" in fail("replace born.csv -o b.csv --plan plan.toml --secret s --strict", 1)


def test_a_column_that_is_empty_yet_is_not_decided() -> None:
    lines = [f"{n},Ann Lee,,," for n in range(30)]
    Path("empty.csv").write_text("\n".join(["id,name,contact_id,contact_email,memo", *lines]))
    succeed("replace empty.csv --key id --other memo=blank --write-plan plan.toml")
    assert Path("plan.toml").read_text().split("\n\n")[-1] == (
        '[tables."empty.csv".other]\nid = "keep" # the key\n'
        'contact_id = "undecided" # empty: no value tells what it holds\n'
        'contact_email = "undecided" # empty: no value tells what it holds\n'
        'memo = "blank" # empty: no value tells what it holds\n'
    )
    refused = fail("replace empty.csv -o out.csv --plan plan.toml --secret s --strict", 1)
    assert "Column 'contact_email' is undecided." in refused


BAD = [
    ("", 'Plan plan.toml: It has no line format = "vantrel-plan", so it is no plan.'),
    ("[[", "Plan plan.toml is not TOML: "),
    (
        'format = "vantrel-plan"\nschema_version = 2\n[tables]',
        "Plan plan.toml: It cannot be used: its schema version is 2, the newest known here is 1:"
        " install a newer vantrel.",
    ),
    (
        'format = "vantrel-model"\nschema_version = 2\n[tables]',
        'Plan plan.toml: It has no line format = "vantrel-plan", so it is no plan.',
    ),
    (
        'format = "vantrel-plan"\nschema_version = 1\nnew_columns = "kepe"\n[tables]',
        'Plan plan.toml: new_columns is "refuse" or "keep", not \'kepe\'.',
    ),
    (
        'format = "vantrel-plan"\nschema_version = 1\n[tables.a]\npeople = []',
        "Plan plan.toml: Table 'a' has 0 people: each row has one.",
    ),
    (
        'format = "vantrel-plan"\nschema_version = 1\n[[tables.a.people]]\ncolumns = {emial = "x"}',
        "Plan plan.toml: Table 'a': 'emial' is no attribute. Did you mean 'email'?",
    ),
    (
        'format = "vantrel-plan"\nschema_version = 1\n[[tables.a.people]]\ncolumns = {email = "x"}\n'
        '[tables.a.other]\nx = "scrub"',
        "Plan plan.toml: Table 'a': column 'x' is the person's and in other, too.",
    ),
    (
        'format = "vantrel-plan"\nschema_version = 1\n[[tables.a.people]]\ncolumns = {}\n'
        '[tables.a.other]\nx = "scrap"',
        "Plan plan.toml: Table 'a': Column 'x': 'scrap' is no action. Actions are: keep,"
        " blank, fake:PROVIDER, shift:DAYS, hash, scrub, undecided.",
    ),
]


@pytest.mark.parametrize(("text", "message"), BAD)
def test_bad_plans(text: str, message: str) -> None:
    Path("plan.toml").write_text(text)
    assert fail(RUN.format("out"), 1).startswith(message)
    assert not Path("s").exists()


def test_where_others_can_be_reached_is_to_be_decided() -> None:
    lines = [f"Ann Lee,a{n}@q.org,b{n}@q.org,0161 49600{n:02}" for n in range(9)]
    Path("kin.csv").write_text("\n".join(["name,email,spouse_email,mother_phone", *lines]))
    told = (
        "kin.csv: Column 'spouse_email' looks personal (e-mail address): its name says so, and 100% of"
        " its different values are e-mail addresses. It stays; --other spouse_email=blank decides."
        " kin.csv: Column 'mother_phone' looks personal (telephone number): its name says so. It"
        " stays; --other mother_phone=blank decides."
    )
    assert fail("replace kin.csv -o out.csv --strict", 1).endswith(f"are not decided. {told}")
    succeed("replace kin.csv --write-plan plan.toml")
    text = Path("plan.toml").read_text()
    assert 'mother_phone = "undecided" # telephone number: its name says so\n' in text
    decided = "--other spouse_email=keep --other mother_phone=blank"
    succeed(f"replace kin.csv -o out.csv --strict {decided}")
    assert Path("out.csv").read_text().endswith("b8@q.org,")


def test_a_plan_or_a_copy_is_named() -> None:
    message = "Name either the copy to write, by -o, or a plan, by --write-plan."
    for line in ("replace born.csv", f"{PLAN} -o out"):
        assert message in fail(line, 2)
    succeed(PLAN)
    assert fail(PLAN, 2) == "plan.toml is there already: add --force to overwrite it."
    assert fail("replace born.csv -o x.csv --plan gone.toml", 1) == (
        "Plan gone.toml cannot be read: No such file or directory."
    )


def test_a_table_that_a_plan_does_not_know_is_refused() -> None:
    succeed("replace born.csv --key id --write-plan plan.toml")
    assert fail(RUN.format("out"), 1) == (
        "Table orders.csv is not in the plan, which knows: 'born.csv'. Write a plan of all tables,"
        " with --write-plan."
    )
    succeed("replace born.csv -o out.csv --plan plan.toml --people orders.csv")


def test_a_plan_of_two_tables_of_one_name_is_refused() -> None:
    Path("other").mkdir()
    Path("other/born.csv").write_text(BORN)
    assert fail("replace born.csv other/born.csv --write-plan plan.toml", 2) == (
        "Two tables are called born.csv, and so would be their copies: copy them into two folders,"
        " one after the other, with one secret."
    )
    assert not Path("plan.toml").exists()


def test_actions_of_other_columns_go_into_a_plan_and_come_of_it() -> None:
    actions = "--other id=hash --other born:dob=shift:180 --other mail2=blank --scrub memo"
    succeed(f"{PLAN} {actions}")
    text = Path("plan.toml").read_text()
    others = ['id = "hash" # the key', 'dob = "shift:180"', 'memo = "scrub"', 'mail2 = "blank"']
    assert all(line in text for line in others)
    told = succeed(RUN.format("planned")).stdout
    succeed(f"replace born.csv orders.csv -o plain --key id --secret s {actions}")
    for name in ("born.csv", "orders.csv"):
        made = Path("planned", name).read_bytes()
        assert made == Path("plain", name).read_bytes()
        assert made != Path(name).read_bytes()
    assert "Other columns stay: 'order'." in told
    assert told.count("Other columns stay") == 1
    succeed(RUN.format("other") + " --other dob=keep --other memo=blank")
    assert ",1940-05-06,," in Path("other/born.csv").read_text()


TOLD = "id,name\n1,Ann Lee\n2,Tom Price\n3,Eva Busch\n4,Jon Snow\n5,Ida Ott\n"
NOTES = "id,mail,text,who\n1,a@web.de,Ann Lee called,Lee\n2,b@web.de,,\n3,c@web.de,ask Eva Busch,\n"
NAMED = "2 cells still name the row's person (rows 1, 3)"


@pytest.mark.parametrize("given", ["told.csv", "--people told.csv"])
def test_who_is_named_in_a_few_rows_is_to_be_decided(given: str) -> None:
    Path("told.csv").write_text(TOLD)
    Path("notes.csv").write_text(NOTES)
    inputs = f"replace notes.csv {given} --key id --secret s"
    succeed(f"{inputs} --write-plan plan.toml")
    plan = Path("plan.toml").read_text()
    assert f'text = "undecided" # {NAMED}\n' in plan
    assert 'who = "keep" # 1 cell has the row\'s first or last name alone (row 1)\n' in plan
    refused = (
        "Nothing was written, as columns look personal and are not decided. notes.csv: Column"
        f" 'text': {NAMED}: add --scrub text."
    )
    Path("out").mkdir()
    assert fail(f"{inputs} -o out --strict", 1) == refused
    assert not list(Path("out").iterdir())
    Path("plan.toml").write_text(plan.replace("undecided", "scrub"))
    succeed(f"{inputs} -o out --plan plan.toml --strict")
    succeed(f"{inputs} -o kept --other text=keep --strict")
    succeed(f"{inputs} --scrub text --write-plan decided.toml")
    assert 'text = "scrub"\n' in Path("decided.toml").read_text()


def test_a_key_that_names_people_stays_a_key() -> None:
    Path("told.csv").write_text("id,name\n1,Ann Lee\n2,Tom Price\n")
    Path("notes.csv").write_text("who,name\nAnn Lee,Ann Lee\nTom Ott,Tom Ott\n")
    inputs = "replace notes.csv told.csv --key notes:who --key told:id --secret s"
    succeed(f"{inputs} --write-plan plan.toml")
    assert (
        'who = "keep" # the key; 2 cells still name the row\'s person'
        in Path("plan.toml").read_text()
    )
    succeed(f"{inputs} -o out --strict")


def test_notes_on_a_plan_name_lines_of_it() -> None:
    lines = [f"{n},Qa Qb,a{n}@web.de,Qc Qd,b{n}@web.de,Qa Qb,c{n}@web.de" for n in range(30)]
    head = "id,p1_full_name,p1_email,p2_full_name,p2_email,memo,email_b"
    Path("two.csv").write_text("\n".join([head, *lines]))
    succeed("replace two.csv --key id --write-plan plan.toml")
    told = succeed("replace two.csv -o out.csv --plan plan.toml --secret s").stderr.splitlines()
    columns = 'under [tables."two.csv".people.columns] in plan.toml'
    assert [note.removeprefix("vantrel: note: ") for note in told][:4] == [
        "Column 'memo': 30 cells still name the row's person (rows 1, 2, 3): write"
        ' memo = "scrub" under [tables."two.csv".other] in plan.toml.',
        "Column 'email_b' looks like email, too, and stays: write"
        f' email = ["p1_email", "email_b"] {columns} to replace it.',
        "Columns 'p2_full_name', 'p2_email' look like those of another person of the row, and stay:"
        ' an entry [[tables."two.csv".people]] for each in plan.toml tells several people apart; if'
        ' they are the same person\'s, write fullname = ["p1_full_name", "p2_full_name"] and'
        f' email = ["p1_email", "p2_email"] {columns} to replace them.',
        "Column 'memo' is undecided. It stays;"
        ' memo = "keep" under [tables."two.csv".other] in plan.toml decides.',
    ]


def test_notes_on_a_plan_tell_whose_line_it_is() -> None:
    lines = [f"{n},Qa Qb,a{n}@web.de,Qc Qd,b{n}@web.de,c{n}@web.de" for n in range(30)]
    head = "id,buyer_name,buyer_email,seller_name,seller_mail,seller_email2"
    Path("two.csv").write_text("\n".join([head, *lines]))
    succeed("replace two.csv --write-plan plan.toml")
    assert (
        'write email = ["seller_mail", "seller_email2"] of \'seller\' under'
        ' [tables."two.csv".people.columns] in plan.toml to replace it.'
        in succeed("replace two.csv -o out.csv --plan plan.toml --secret s").stderr
    )


def test_a_key_that_names_people_is_not_to_be_scrubbed() -> None:
    Path("notes.csv").write_text("who,name\nAnn Lee,Ann Lee\nTom Ott,Tom Ott\n")
    told = succeed("replace notes.csv -o out.csv --key who --secret s").stderr
    assert "(rows 1, 2): add --other who=hash.\n" in told

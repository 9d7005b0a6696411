"""``vantrel replace``: who becomes whom, by which keys and columns, in which tables."""

import stat
from pathlib import Path

import pandas as pd
import pytest

from support.command import fail, succeed
from support.replaced_tables import BOTH, CUSTOMERS, ORDERS, PEOPLE, REPLACE, read

pytest.importorskip("pyarrow", reason="replacing people needs pyarrow")


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


def test_a_column_of_one_table_is_scrubbed() -> None:
    Path("orders.csv").write_text("id,notes\n1,for Ann Lee\n")
    call = "replace customers.csv orders.csv -o copy --key id --secret s --scrub {}:notes"
    told = succeed(call.format("orders.csv")).stdout
    customers, orders = read("copy/customers.csv"), read("copy/orders.csv")
    ann = customers.iloc[0]
    assert ann["notes"] == "Ann Lee called, twice"
    assert orders["notes"].tolist() == [f"for {ann['first_name']} {ann['last_name']}"]
    assert "notes   --scrub   scrubbed\nOther columns stay: 'id'.\n" in told
    assert "Other columns stay: 'id', 'notes', 'points'." in told
    assert fail(f"{REPLACE} --scrub nobody:notes", 1) == (
        "No table has a column 'nobody:notes' to scrub. Columns are: 'id', 'sex', 'title',"
        " 'first_name', 'last_name', 'email', 'land', 'notes', 'points'."
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


def test_a_key_for_tables_of_one_name() -> None:
    for year in (2024, 2025):
        Path(f"orders.{year}.csv").write_text(ORDERS.replace("id;", "buyer;"))
    line = "replace orders.2024.csv orders.2025.csv -o copy --key orders:buyer --secret s"
    succeed(line)
    assert Path("copy/orders.2024.csv").read_bytes() == Path("copy/orders.2025.csv").read_bytes()
    assert fail(f"{line} --force --key orders.2025.csv:order", 1) == (
        "Table orders.2025.csv: there are two keys, 'buyer' and 'order'. Join the columns of one"
        " key, as in --key buyer,order."
    )


def test_a_key_with_a_comma_in_its_name() -> None:
    Path("odd.csv").write_text('"last, first",email,\n"Lee, Ann",a@web.de,x\n')
    Path("spaced.csv").write_text("' id',email\n1,a@web.de\n".replace("'", ""))
    succeed("replace odd.csv -o copy.csv --key 'last, first' --secret s")
    succeed("replace spaced.csv -o copy2.csv --key ' id' --secret s")
    succeed("replace spaced.csv -o copy3.csv --key ' id,email' --secret s")


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

"""Tables in memory: what comes back is as what went in."""

from __future__ import annotations

import sys
from typing import Any

import duckdb
import numpy as np
import pandas as pd
import pytest

pa = pytest.importorskip("pyarrow", reason="People are replaced by way of Arrow")

import vantrel  # noqa: E402 - after the line that skips
from support.replacing import SECRET, customers  # noqa: E402 - needs pyarrow
from vantrel.replacing.replacer import Replacer  # noqa: E402 - as above


@pytest.fixture(scope="module")
def table() -> pd.DataFrame:
    return customers(40)


@pytest.fixture(scope="module")
def made(table: pd.DataFrame) -> pd.DataFrame:
    out: pd.DataFrame = vantrel.replace(table, "customer_id", SECRET)
    return out


def test_index_columns_and_types_stay(table: pd.DataFrame) -> None:
    odd = table.set_axis([f"row {7 * number % 40}" for number in range(40)])
    odd["customer"] = pd.Categorical(["a", "b"] * 20)
    odd["when"] = pd.Timestamp("2026-01-01")
    before = odd.copy()
    out = vantrel.replace(odd, "customer_id", SECRET)
    pd.testing.assert_frame_equal(odd, before)
    assert out.dtypes.equals(odd.dtypes)
    untouched = ["customer_id", "sex", "country", "note", "customer", "when"]
    pd.testing.assert_frame_equal(out[untouched], odd[untouched])
    assert list(out) == list(odd)
    assert out.index.equals(odd.index)


@pytest.mark.parametrize("dtype", ["object", "string[python]", "string[pyarrow]", "str"])
def test_types_of_texts(table: pd.DataFrame, made: pd.DataFrame, dtype: str) -> None:
    names = ["first_name", "email"]
    typed = table.astype(dict.fromkeys(names, dtype))
    out = vantrel.replace(typed, "customer_id", SECRET)
    assert out.dtypes.equals(typed.dtypes)
    assert out[names].astype(object).equals(made[names].astype(object))


def test_a_categorical_stays_one(table: pd.DataFrame, made: pd.DataFrame) -> None:
    several = table.assign(first_name=table["first_name"].astype("category"))
    several["last_name"] = pd.Categorical(table["last_name"], ordered=True)
    several.loc[3, "first_name"] = None
    out = vantrel.replace(several, "customer_id", SECRET)
    assert isinstance(out["first_name"].dtype, pd.CategoricalDtype)
    assert not out["first_name"].cat.ordered
    assert out["last_name"].cat.ordered
    expected = made["first_name"].astype(object).mask(several["first_name"].isna(), np.nan)
    assert out["first_name"].astype(object).equals(expected)
    assert not set(out["first_name"].cat.categories) & set(table["first_name"])


@pytest.mark.parametrize("dtype", ["int64", "Int64", "float64"])
def test_numbers_of_telephones_that_are_numbers(table: pd.DataFrame, dtype: Any) -> None:
    digits = pd.Series(range(447_700_000_000, 447_700_000_040)).astype(dtype)
    if dtype != "int64":
        digits[5] = None
    out = vantrel.replace(
        table.assign(mobile=digits, country="GB"),
        "customer_id",
        SECRET,
        columns={"mobile_number": "mobile"},
    )
    assert out["mobile"].dtype == dtype
    assert out["mobile"].isna().equals(digits.isna())
    assert out["mobile"].dropna().between(7_700_900_000, 7_700_900_999).all()


def test_a_type_that_cannot_hold_what_is_made_up(table: pd.DataFrame) -> None:
    small = table.assign(mobile=np.arange(40, dtype="int32"))
    with pytest.raises(vantrel.ReplaceError) as caught:
        vantrel.replace(small, "customer_id", SECRET, columns={"mobile_number": "mobile"})
    assert str(caught.value) == (
        "Column 'mobile' is of type int32, which cannot hold what is made up for it: make it text,"
        " or keep it."
    )


def test_names_in_a_column_of_numbers_or_of_bytes(table: pd.DataFrame, made: pd.DataFrame) -> None:
    names = {"username": "username"}
    with pytest.raises(vantrel.ReplaceError) as caught:
        vantrel.replace(table.assign(username=range(40)), "customer_id", SECRET, columns=names)
    assert "'username' is of type int64, which cannot hold" in str(caught.value)
    given = pa.table({"customer_id": table["customer_id"], "username": [b"qa"] * 40})
    out = vantrel.replace(given, "customer_id", SECRET, columns=names)
    assert out.schema == given.schema
    plain = vantrel.replace(table[["customer_id", "username"]], "customer_id", SECRET)
    assert [text.decode() for text in out["username"].to_pylist()] == plain["username"].tolist()


def test_a_column_of_several_types(table: pd.DataFrame, made: pd.DataFrame) -> None:
    mixed = table.assign(customer_id=table["customer_id"].astype(object))
    mixed.loc[::2, "customer_id"] = mixed.loc[::2, "customer_id"].astype(str)
    mixed["email"] = mixed["email"].astype(object)
    mixed.loc[4, "email"] = 4.5
    out = vantrel.replace(mixed, "customer_id", SECRET, columns={"email": "email"})
    names = ["first_name", "email", "mobile"]
    assert out[names].astype(object).equals(made[names].astype(object))


def test_tables_of_pyarrow(table: pd.DataFrame, made: pd.DataFrame) -> None:
    given = pa.Table.from_pandas(table, preserve_index=False)
    place = given.schema.get_field_index("first_name")
    given = given.set_column(place, "first_name", given["first_name"].dictionary_encode())
    given = given.replace_schema_metadata({"made": "here"})
    out = vantrel.replace(given, "customer_id", SECRET)
    assert isinstance(out, pa.Table)
    assert out.schema.equals(given.schema, check_metadata=True)
    assert out["first_name"].to_pylist() == made["first_name"].tolist()
    assert out["email"].to_pylist() == made["email"].tolist()
    assert out["note"].equals(given["note"])


def test_a_relation_of_duckdb_gives_a_frame(table: pd.DataFrame, made: pd.DataFrame) -> None:
    out = vantrel.replace(duckdb.from_df(table), "customer_id", SECRET)
    assert isinstance(out, pd.DataFrame)
    for column in made:
        assert out[column].tolist() == made[column].tolist()


def test_several_columns_of_one_attribute(table: pd.DataFrame, made: pd.DataFrame) -> None:
    two = table.assign(billing=table["email"].mask(table.index % 2 == 0))
    asked = {"email": ["email", "billing"]}
    out = vantrel.replace(two, "customer_id", SECRET, columns=asked)
    assert out["billing"].isna().equals(two["billing"].isna())
    assert (out["billing"] == made["email"])[1::2].all()
    assert (out["email"] == made["email"]).all()


def test_what_is_kept_stays(table: pd.DataFrame, made: pd.DataFrame) -> None:
    out = vantrel.replace(table, "customer_id", SECRET, keep=["email", "password"])
    assert out["email"].equals(table["email"])
    assert out["password"].equals(table["password"])
    assert out["last_name"].equals(made["last_name"])


def test_another_table_tells_gender_and_country(table: pd.DataFrame, made: pd.DataFrame) -> None:
    orders = table[["customer_id", "last_name", "first_name"]].sample(frac=1, random_state=1)
    orders["customer_id"] = orders["customer_id"].astype(str)
    out = vantrel.replace(orders, "customer_id", SECRET, people=table)
    pd.testing.assert_frame_equal(
        out.drop(columns="customer_id"), made.loc[orders.index, ["last_name", "first_name"]]
    )
    replacer = Replacer(SECRET)
    replacer.replace(table, "customer_id")
    pd.testing.assert_frame_equal(replacer.replace(orders, "customer_id"), out)


@pytest.mark.parametrize("rows", [0, 1])
def test_tables_of_no_row_and_of_one(table: pd.DataFrame, made: pd.DataFrame, rows: int) -> None:
    out = vantrel.replace(table.head(rows), "customer_id", SECRET)
    pd.testing.assert_frame_equal(out, made.head(rows))
    given = pa.Table.from_pandas(table.head(rows), preserve_index=False)
    arrow = vantrel.replace(given, "customer_id", SECRET)
    assert arrow.schema == given.schema
    assert arrow.num_rows == rows


def test_columns_whose_names_are_no_texts(table: pd.DataFrame, made: pd.DataFrame) -> None:
    out = vantrel.replace(table.rename(columns={"note": 3}), "customer_id", SECRET)
    pd.testing.assert_frame_equal(out, made.rename(columns={"note": 3}))


def test_without_a_secret_nobody_comes_twice(
    table: pd.DataFrame, made: pd.DataFrame, monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.delenv("VANTREL_SECRET", raising=False)
    one, other = (vantrel.replace(table, "customer_id") for _ in range(2))
    assert not set(one["email"]) & set(other["email"])
    monkeypatch.setenv("VANTREL_SECRET", SECRET.hex())
    pd.testing.assert_frame_equal(vantrel.replace(table, "customer_id"), made)


def test_what_was_found_is_logged(table: pd.DataFrame, caplog: pytest.LogCaptureFixture) -> None:
    caplog.set_level("INFO", "vantrel")
    few = table[["first_name", "email", "sex"]].assign(sex=["f", "m"] * 20, email="a@b.org")
    replacer = Replacer(SECRET)
    replacer.replace(few)
    assert [record.getMessage() for record in caplog.records] == [
        "Replaced: 'first_name' (firstname), 'email' (email).",
        "No key was named: 'email' tells who is who.",
        "The rows of 1 person contradict each other in gender: what was told first holds.",
        "The country of 1 of 1 person is not known: their names and numbers are those of en_GB,"
        " unless place=... or people=... or columns={'country': 'COLUMN'} tells others.",
    ]
    assert replacer.roles is not None
    assert replacer.roles.people[0].columns["gender"] == ("sex",)


def test_a_failed_table_leaves_a_replacer_fit_for_others(
    table: pd.DataFrame, made: pd.DataFrame
) -> None:
    replacer = Replacer(SECRET)
    for wrong in (table.assign(customer_id=None), table[["note"]]):
        with pytest.raises(vantrel.ReplaceError):
            replacer.replace(wrong, "customer_id")
    pd.testing.assert_frame_equal(replacer.replace(table, "customer_id"), made)


def test_no_table(table: pd.DataFrame) -> None:
    for wrong, kind in (("customers.csv", "a str"), (None, "None"), (table["note"], "a Series")):
        with pytest.raises(vantrel.ArgumentTypeError) as caught:
            vantrel.replace(wrong, secret=SECRET)
        told = f"A table is a pandas DataFrame, or of polars, DuckDB or pyarrow; this is {kind}."
        assert str(caught.value).startswith(told)
    with pytest.raises(vantrel.ArgumentTypeError, match=r"^A table of people is a pandas"):
        vantrel.replace(table, "customer_id", SECRET, people="people.csv")


def test_columns_of_one_name_are_refused(table: pd.DataFrame) -> None:
    doubled: Any = pd.concat([table, table["note"]], axis="columns")
    for given in (doubled, pa.Table.from_pandas(table).append_column("note", pa.nulls(40))):
        with pytest.raises(vantrel.ArgumentError) as caught:
            vantrel.replace(given, "customer_id", SECRET)
        assert str(caught.value) == (
            "Columns are there twice: 'note'. Give each one name of its own."
        )


def test_a_frame_of_polars_stays_one(
    table: pd.DataFrame, made: pd.DataFrame, monkeypatch: pytest.MonkeyPatch
) -> None:
    class Frame:
        """Stands for a frame of polars, which no environment of the tests has."""

        def __init__(self, table: Any) -> None:
            self.table = table

        def __arrow_c_stream__(self, requested_schema: object = None) -> object:
            return self.table.__arrow_c_stream__(requested_schema)

    class Module:
        from_arrow = Frame

    Frame.__module__ = "polars.dataframe.frame"
    monkeypatch.setitem(sys.modules, "polars", Module)
    texts = table["email"].tolist()
    given = Frame(
        pa.table({"customer_id": table["customer_id"], "email": pa.array(texts, pa.string_view())})
    )
    out = vantrel.replace(given, "customer_id", SECRET)
    assert isinstance(out, Frame)
    assert out.table.schema == given.table.schema
    expected = vantrel.replace(table[["customer_id", "email"]], "customer_id", SECRET)
    assert out.table["email"].to_pylist() == expected["email"].tolist()


def test_an_advice_of_python_is_python(table: pd.DataFrame) -> None:
    replacer = Replacer(SECRET)
    replacer.replace(table.assign(**{"e-mail": table["email"]}), "customer_id")
    (note,) = [each for each in replacer.notes if "looks like" in each]
    assert note == (
        "Column 'e-mail' looks like email, too, and stays: add columns={'email': 'e-mail'} to"
        " replace it."
    )
    (leak,) = [each for each in replacer.notes if "still name" in each]
    assert leak.endswith(": add scrub=['e-mail'].")


@pytest.mark.parametrize("encoded", [False, True])
def test_empty_texts_do_not_hide_what_a_column_is(encoded: bool) -> None:
    texts = pd.Series(["a@x.org", *[""] * 99])
    table = pd.DataFrame({"id": range(100), "a": texts.astype("category") if encoded else texts})
    assert vantrel.replace(table, "id", SECRET)["a"][0] != "a@x.org"


def test_more_made_up_values_than_there_were_categories() -> None:
    table = pd.DataFrame({"id": range(999), "first_name": list("ABC") * 333}, dtype="category")
    rows = pa.Table.from_pandas(table)
    made = vantrel.replace(rows, "id", SECRET)["first_name"]
    assert pa.types.is_dictionary(made.type)
    assert made.to_pylist() == vantrel.replace(table, "id", SECRET)["first_name"].tolist()


def test_what_is_not_a_number_stays_so() -> None:
    rows = pa.table({"id": [1, 2], "mobile": [7_700_900_123.0, float("nan")]})
    made = vantrel.replace(rows, "id", SECRET, columns={"mobile_number": "mobile"})
    one, other = made["mobile"].to_pylist()
    assert one not in (7_700_900_123.0, None)
    assert other != other


def test_an_index_that_stays_is_told(table: pd.DataFrame) -> None:
    told = "The index stays as it is: reset_index() makes columns of it, which are replaced."
    for key, is_told in (("email", True), ("customer_id", False)):
        replacer = Replacer(SECRET)
        replacer.replace(table.set_index(key))
        assert (told in replacer.notes) == is_told

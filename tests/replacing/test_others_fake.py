"""Values of Faker, one for each person and column."""

from __future__ import annotations

import decimal
import sys
from collections import Counter
from concurrent.futures import ThreadPoolExecutor
from typing import Any

import numpy as np
import pandas as pd
import pytest

pytest.importorskip("pyarrow", reason="other columns are changed by way of Arrow")

import pyarrow as pa

import vantrel
from support.replacing import SECRET, customers
from vantrel.errors import ReplaceError
from vantrel.replacing.others.faked import faked
from vantrel.replacing.others.providers import method_in

DIGESTS = np.random.default_rng(1).integers(0, 2**64, (5, 8), dtype=np.uint64)


def made(
    provider: str, values: list[Any], kind: pa.DataType | None = None, locale: str = "en_US"
) -> list[Any]:
    column = pa.array(values, kind)
    new = faked(column, "c", provider, DIGESTS[: len(column)], [locale] * len(column))
    assert new.type == column.type
    return list(new.to_pylist())


def test_a_person_has_one_value_in_each_column() -> None:
    table = pd.concat([customers(30), customers(30)], ignore_index=True)
    table["iban"], table["other"] = "x", "x"
    others = {"iban": "fake:iban", "other": "fake:iban"}
    whole = vantrel.replace(table, "customer_id", SECRET, others=others)
    assert (whole.groupby("customer_id")["iban"].nunique() == 1).all()
    assert whole["iban"].nunique() == 30
    assert not (whole["iban"] == whole["other"]).any()
    languages = {"GB": "GB", "DE": "DE", "FR": "FR"}
    told = whole["country"].map(languages).dropna()
    assert (whole["iban"].str[:2][told.index] == told).all()
    again = vantrel.replace(table[::-1].head(9), "customer_id", SECRET, others=others)
    pd.testing.assert_series_equal(again["iban"], whole["iban"][::-1].head(9))
    other = vantrel.replace(table, "customer_id", SECRET[1:], others=others)
    assert not (other["iban"] == whole["iban"]).any()


def test_threads_do_not_disturb_each_other() -> None:
    usual = sys.getswitchinterval()
    sys.setswitchinterval(1e-6)
    try:
        with ThreadPoolExecutor(4) as pool:
            found = list(pool.map(lambda _: made("street_address", ["x"] * 5), range(200)))
    finally:
        sys.setswitchinterval(usual)
    assert found == [made("street_address", ["x"] * 5)] * 200


def test_gaps_stay() -> None:
    values = made("city", ["x", None, "", " ", "y"])
    assert values[1:4] == [None, "", " "]
    assert values[0] not in ("x", values[4])
    assert made("city", [], pa.string()) == []
    assert made("city", [None], pa.null()) == [None]


def test_types() -> None:
    assert all(isinstance(value, int) for value in made("pyint", [1, 2]))
    assert all(isinstance(value, int) for value in made("postcode", [1, 2], pa.int32()))
    assert all(isinstance(value, float) for value in made("latitude", [1.5, 2.5]))
    born = made("date_of_birth", [1, None], pa.date32())
    assert born[1] is None
    assert made("date_of_birth", ["x", "y"])[0] == born[0].isoformat()
    as_decimals = made("pyint", [decimal.Decimal(1)], pa.decimal128(19, 0))
    assert as_decimals == made("pyint", [1])
    coded = pa.array(["x", "y", None]).dictionary_encode()
    new = faked(coded, "c", "city", DIGESTS[:3], ["en_US"] * 3)
    assert pa.types.is_dictionary(new.type)
    assert new.to_pylist() == made("city", ["x", "y", None])


def test_an_address_is_one_line() -> None:
    (address,) = made("address", ["x"])
    assert "\n" not in address
    assert ", " in address


def test_each_person_is_made_once_a_batch(monkeypatch: pytest.MonkeyPatch) -> None:
    calls: Counter[str] = Counter()

    def counting(*arguments: str) -> Any:
        calls[arguments[1]] += 1
        return method_in(*arguments)

    monkeypatch.setattr("vantrel.replacing.others.faked.method_in", counting)
    column = pa.array(["x"] * 50)
    new = faked(column, "c", "city", DIGESTS.repeat(10, axis=0), ["en_GB"] * 50)
    assert calls["city"] == 5
    assert new.to_pylist() == np.repeat(made("city", ["x"] * 5, locale="en_GB"), 10).tolist()


@pytest.mark.parametrize(
    ("provider", "kind", "locale", "message"),
    [
        (
            "city",
            pa.int64(),
            "en_US",
            "Column 'c' is of type int64, which cannot hold what is made up for it: make it text, or"
            " keep it.",
        ),
        (
            "pyint",
            pa.date32(),
            "en_US",
            "Column 'c' is of type date32[day], which cannot hold what is made up for it: make it"
            " text, or keep it.",
        ),
        (
            "military_apo",
            pa.string(),
            "de_DE",
            "Column 'c': Faker has no method 'military_apo' in the language 'de_DE', which some rows"
            " need: name another one.",
        ),
        (
            "bank",
            pa.string(),
            "de_DE",
            "Column 'c': Faker's method 'bank' fails in the language 'de_DE', which some rows need"
            " (NotImplementedError): name another one.",
        ),
    ],
)
def test_what_does_not_fit(provider: str, kind: pa.DataType, locale: str, message: str) -> None:
    with pytest.raises(ReplaceError) as caught:
        made(provider, [None, None], kind, locale)
    assert str(caught.value) == message

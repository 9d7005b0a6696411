"""Keys, their digests and their prints."""

from __future__ import annotations

from datetime import date
from decimal import Decimal
from hashlib import blake2b
from typing import Any
from uuid import UUID

import numpy as np
import pandas as pd
import pytest
from hypothesis import example, given
from hypothesis import strategies as st

pa = pytest.importorskip("pyarrow", reason="People are replaced by way of Arrow")

from support.replacing import SECRET  # noqa: E402 - needs pyarrow
from vantrel.replacing.people.made import CODE_BITS  # noqa: E402 - needs pyarrow
from vantrel.replacing.runs.frames import arrow_of  # noqa: E402 - needs pyarrow
from vantrel.replacing.values.keys import canonical, digests, keys_of, keys_of_rows  # noqa: E402 - as above
from vantrel.replacing.values.prints import prints  # noqa: E402 - needs pyarrow


def key_of(*values: Any) -> list[bytes | None]:
    """The keys that pandas' column of these values has."""
    table = arrow_of(pd.DataFrame({"key": pd.Series(values)}))
    found: list[bytes | None] = keys_of([table.column(0).combine_chunks()]).to_pylist()
    return found


@pytest.mark.parametrize(
    "column",
    [
        pd.Series([7, 8]),
        pd.Series(["7", "8"]),
        pd.Series(["7", "8"], dtype=object),
        pd.Series([7.0, 8.0]),
        pd.Series(["7.0", "8.00"]),
        pd.Series([7, 8], dtype="Int64"),
        pd.Series([7, 8], dtype="int8"),
        pd.Series([7, 8], dtype="float32"),
        pd.Series([7, 8], dtype="category"),
        pd.Series(["7", "8"], dtype="category"),
        pd.Series([np.int64(7), np.uint8(8)], dtype=object),
        pd.Series([Decimal(7), Decimal("8.00")]),
        pd.Series([7, "8"]),
        pd.Series([Decimal(7), "8.0"]),
        pd.Series([7.0, "8"]),
    ],
    ids=lambda column: f"{column.dtype} {column.tolist()}",
)
def test_a_key_is_the_same_whatever_type_it_is_stored_in(column: pd.Series) -> None:
    table = arrow_of(pd.DataFrame({"key": column}))
    assert keys_of([table.column(0).combine_chunks()]).to_pylist() == [b"7", b"8"]


def test_other_texts_stay_as_they_are() -> None:
    texts = ["007", "7.5", "7.50", "v7.0", "7.0.0", "a b", "Anna", "ANNA", "-7.0", "-0.0", "1e3"]
    made = [text.encode() for text in texts[:8]] + [b"-7", b"-0", b"1e3"]
    assert key_of(*texts) == made


def test_large_and_odd_numbers() -> None:
    assert key_of(2**62, -(2**62)) == [str(2**62).encode(), str(-(2**62)).encode()]
    assert key_of(2.0**60, 7.5, -0.0, float("inf")) == [str(2**60).encode(), b"7.5", b"0", b"inf"]


def test_a_key_is_missing_where_a_part_of_it_is() -> None:
    assert key_of(7.0, None, float("nan")) == [b"7", None, None]
    assert key_of("a", "", None) == [b"a", None, None]
    parts = [pa.array(["a", None, "c", ""]), pa.array([1, 2, None, 4])]
    assert [key is None for key in keys_of(parts).to_pylist()] == [False, True, True, True]


def test_case_counts_in_keys_but_for_addresses() -> None:
    assert key_of("A@B.com", "a@b.COM ", "É@b.com") == [b"a@b.com", b"a@b.com", "é@b.com".encode()]
    assert key_of("A", "a", " a", "A@b") == [b"A", b"a", b"a", b"a@b"]


@pytest.mark.parametrize(
    "column",
    [
        pa.array([date(2020, 1, 2), date(2020, 1, 3)]),
        pa.array([date(2020, 1, 2), date(2020, 1, 3)]).cast(pa.timestamp("us")),
        pa.array([date(2020, 1, 2), date(2020, 1, 3)]).cast(pa.timestamp("ns")),
        pa.array(["2020-01-02", "2020-01-03"]),
        pa.array(["2020-01-02 00:00:00", "2020-01-03T00:00:00.000"]),
    ],
    ids=str,
)
def test_a_day_is_the_same_key_whatever_type_it_is_stored_in(column: Any) -> None:
    assert canonical(column).to_pylist() == [b"2020-01-02", b"2020-01-03"]


@pytest.mark.parametrize(
    "text",
    [
        "8F14E45F-CEEA-467A-9575-0000DEADBEEF",
        "{8f14e45f-ceea-467a-9575-0000deadbeef}",
        "{8F14E45F-CEEA-467A-9575-0000DEADBEEF}",
        "8f14e45fceea467a95750000deadbeef",
        "8F14E45FCEEA467A95750000DEADBEEF",
        " 8f14e45f-ceea-467a-9575-0000DEADBEEF ",
    ],
)
def test_a_uuid_is_the_same_key_however_it_is_written(text: str) -> None:
    assert key_of("a", text) == [b"a", b"8f14e45f-ceea-467a-9575-0000deadbeef"]
    assert key_of(UUID(text.strip())) == [b"8f14e45f-ceea-467a-9575-0000deadbeef"]


@pytest.mark.parametrize(
    "text",
    [
        "{8F14E45F-CEEA-467A-9575-0000DEADBEEF",
        "8F14E45F-CEEA467A-9575-0000DEADBEEF",
        "8F14E45F-CEEA-467A-9575-0000DEADBEEG",
        "8F14E45F-CEEA-467A-9575-0000DEADBEE",
        "8F14E45F-CEEA-467A-9575-0000DEADBEEF0",
        "{8F14E45F-CEEA-467A-9575-0000DEADBEE}",
    ],
)
def test_what_is_almost_a_uuid_stays_as_it_is(text: str) -> None:
    assert key_of("a", text) == [b"a", text.encode()]


def test_times_lose_only_what_tells_nothing() -> None:
    moment = pa.array(["2020-01-02 03:04:00.05"]).cast(pa.timestamp("us"))
    (made,) = canonical(moment).to_pylist()
    assert made == b"2020-01-02 03:04:00.05"
    texts = ["2020-01-02T03:04:00.050", "2020-01-02 03:04:10", "12:00:00", "T: 2020-01-02 00:00:00"]
    assert key_of(*texts) == [made, *(text.encode() for text in texts[1:])]


def test_a_uuid_is_the_same_key_as_its_text() -> None:
    ids = [UUID(int=7), UUID(int=2**127 + 8)]
    column = pa.array([*(each.bytes for each in ids), None], pa.uuid())
    assert canonical(column).to_pylist() == [*(str(each).encode() for each in ids), None]


PARTS = st.text(st.sampled_from("a:1\0\x01"), min_size=1, max_size=4)


@example([["a:", "a"], ["a", ":a"]])
@example([["a", "b"], ["ab", "c"], ["\x001:a1:b"]])
@given(st.lists(st.lists(PARTS, min_size=1, max_size=3), min_size=1, max_size=6))
def test_no_two_keys_of_several_parts_are_alike(keys: list[list[str]]) -> None:
    made = [keys_of([pa.array([part]) for part in key]).to_pylist()[0] for key in keys]
    assert len(set(made)) == len({tuple(key) for key in keys})


def test_rows_without_a_key_are_known_by_all_their_cells() -> None:
    rows = [("a", None), (None, "a"), ("a", "b"), ("ab", None), ("a", None)]
    one, other = zip(*rows, strict=True)
    made = keys_of_rows([pa.array(one), pa.array(other)]).to_pylist()
    assert made[0] == made[4]
    assert len(set(made)) == 4
    assert not set(made) & set(keys_of([pa.array(["a"]), pa.array(["b"])]).to_pylist())


def test_what_is_no_text_is_a_key_too() -> None:
    kinds = [pa.array([[1], [2], None]), pa.array([b"\xff", b"\xfe", None])]
    for column in kinds:
        made = canonical(column).to_pylist()
        assert len(set(made)) == 3
        assert made[2] is None


def test_digests_are_the_keyed_hash_in_a_fixed_order_of_bytes() -> None:
    (words,) = digests([b"7"], SECRET).tolist()
    whole = blake2b(b"7", key=SECRET).digest()
    assert words == [int.from_bytes(whole[at : at + 8], "little") for at in range(0, 64, 8)]
    assert digests([], SECRET).shape == (0, 8)


def test_three_million_keys_have_accounts_of_their_own() -> None:
    codes = [
        digests((b"%d" % key for key in range(start, start + 300_000)), SECRET)[:, 2]
        for start in range(0, 3_000_000, 300_000)
    ]
    told_apart = np.sort(np.concatenate(codes) >> np.uint64(64 - CODE_BITS))
    assert (told_apart[1:] != told_apart[:-1]).all()


@given(st.lists(st.one_of(st.none(), st.text(max_size=20))), st.integers(0, 2**64 - 1))
def test_prints_tell_texts_apart(texts: list[str | None], seed: int) -> None:
    made = prints(pa.array(texts, pa.string()), seed)
    by_text = dict(zip(texts, made.tolist(), strict=True))
    assert [by_text[text] for text in texts] == made.tolist()
    assert len(set(by_text.values())) == len(by_text)
    assert [value == 0 for value in made.tolist()] == [text is None for text in texts]


def test_prints_of_a_part_of_an_array_and_of_another_seed() -> None:
    texts = pa.array([f"{'ü' * (number % 30)}{number}" for number in range(1_000)])
    assert (prints(texts.slice(100, 50)) == prints(texts)[100:150]).all()
    assert not np.isin(prints(texts, 1), prints(texts, 2)).any()
    assert len(prints(texts.slice(0, 0))) == 0

"""Other values of the same form."""

from __future__ import annotations

import decimal
import re
import string
import uuid
from collections.abc import Callable
from typing import Any

import numpy as np
import pytest

pytest.importorskip("pyarrow", reason="other columns are changed by way of Arrow")

import pyarrow as pa
from hypothesis import given
from hypothesis import strategies as st

from vantrel.errors import ReplaceError
from vantrel.replacing.others.feistel import TWEAK_BYTES, permuted
from vantrel.replacing.others.hashed import hashed
from vantrel.replacing.values.keys import canonical

KEY = b"a key of thirty-two bytes, no use"

ONLY = "only texts and whole numbers can be hashed."

UUIDS = [
    str(uuid.UUID(int=number * 0x9E3779B97F4A7C15F39CC0605CEDC835 % 2**128, version=4))
    for number in range(1, 2_000)
]


def of(values: list[Any], kind: pa.DataType | None = None, key: bytes = KEY) -> list[Any]:
    column = pa.array(values, kind)
    made = hashed(column, "c", key)
    assert made.type == column.type
    return list(made.to_pylist())


def form(text: str) -> str:
    for kind, sign in ((r"[0-9]", "0"), (r"[A-Z]", "A"), (r"[a-z]", "a")):
        text = re.sub(kind, sign, text)
    return text


def test_words_for_nothing_stay_and_nothing_becomes_one() -> None:
    words = ["NULL", "N/A", "n/a", "\\N", "-", "?"]
    assert of(words) == words
    others = [
        f"{first}/{last}" for first in string.ascii_uppercase for last in string.ascii_uppercase
    ]
    others.remove("N/A")
    assert sorted(of(others)) == sorted(others)


@pytest.mark.parametrize("radices", [[7], [2, 3], [9, 10, 10], [26, 2, 5, 3]])
def test_a_permutation_is_one_by_exhaustion(radices: list[int]) -> None:
    numbers = np.array(list(np.ndindex(*radices)), dtype=np.uint8)
    of_each = np.tile(np.array(radices, dtype=np.uint8), (len(numbers), 1))
    tweaks = np.zeros((len(numbers), TWEAK_BYTES), dtype=np.uint8)
    made = permuted(numbers, of_each, tweaks, KEY)
    assert {*map(tuple, made.tolist())} == {*map(tuple, numbers.tolist())}
    assert not np.array_equal(made, numbers)
    assert not np.array_equal(permuted(numbers, of_each, tweaks + np.uint8(1), KEY), made)
    assert not np.array_equal(permuted(numbers, of_each, tweaks, KEY[1:]), made)


@pytest.mark.parametrize(
    ("low", "high"), [(0, 1), (1, 10), (10, 100), (100, 1_000), (1_000, 10_000), (-9_999, -999)]
)
def test_integers_of_as_many_digits(low: int, high: int) -> None:
    assert sorted(of(list(range(low, high)))) == list(range(low, high))


def test_texts_of_one_form() -> None:
    forms = [f"{letter}{digit}-" for letter in "ABCDEFGHIJKLMNOPQRSTUVWXYZ" for digit in range(10)]
    made = of(forms)
    assert sorted(made) == sorted(forms)
    assert len({*of([f"{number:03}" for number in range(1_000)])}) == 1_000


def test_a_uuid_stays_one_however_it_is_written() -> None:
    (plain,) = of([UUIDS[0]])
    bare = UUIDS[0].replace("-", "")
    written = of([UUIDS[0].upper(), f"{{{UUIDS[0]}}}", bare, bare.upper()])
    assert written == [
        plain.upper(),
        f"{{{plain}}}",
        plain.replace("-", ""),
        plain.replace("-", "").upper(),
    ]


@pytest.mark.parametrize("write", [str.lower, str.upper])
def test_uuids_become_uuids(write: Callable[[str], str]) -> None:
    real = [write(text) for text in UUIDS]
    made = of(real)
    assert len({*made} - {*real}) == len(real)
    for old, new in zip(real, made, strict=True):
        assert new == write(str(uuid.UUID(new)))
        assert (new[14], new[19]) == (old[14], old[19])
    letters = "".join(made).translate({ord(sign): None for sign in "-" + string.digits})
    assert {*letters} == {*write("abcdef")}


def test_what_is_no_uuid_becomes_none() -> None:
    letters = "ghijklmnopqrstuvwxyz"
    real = [
        f"{number:08}-1234-4123-8123-12345678901{each}" for number in range(99) for each in letters
    ]
    made = of(real)
    assert len({*made}) == len(real)
    assert {form(text) for text in made} == {form(real[0])}
    assert {text[-1] for text in made} == {*letters}


@given(st.lists(st.text(max_size=12), max_size=20))
def test_a_form_stays_and_others_become_others(texts: list[str]) -> None:
    made = of(texts, pa.string())
    for real, new in zip(texts, made, strict=True):
        assert len(new) == len(real)
        assert form(new) == form(real) or any(ord(sign) > 127 for sign in real)
    keys = canonical(pa.array(texts, pa.string())).to_pylist()
    new_keys = canonical(pa.array(made, pa.string())).to_pylist()
    pairs = {*zip(keys, new_keys, strict=True)}
    assert len(pairs) == len({*keys}) == len({*new_keys})


@pytest.mark.parametrize(
    ("number", "kind"),
    [
        (2**31 - 1, pa.int32()),
        (-(2**31), pa.int32()),
        (2**32 - 1, pa.uint32()),
        (2**63 - 1, pa.int64()),
        (-(2**63), pa.int64()),
        (2**64 - 1, pa.uint64()),
    ],
)
def test_numbers_at_the_ends_of_their_types(number: int, kind: pa.DataType) -> None:
    step = -1 if number > 0 else 1
    numbers = [number + step * each for each in range(50)]
    made = of(numbers, kind)
    assert len({*made}) == len(numbers)
    assert {len(str(each)) for each in made} == {len(str(number))}
    assert of([str(each) for each in numbers]) == [str(each) for each in made]


def test_no_number_comes_to_be_another_one_written_otherwise() -> None:
    numbers = [f"{number / 100:.2f}" for number in range(100, 1_000) if number % 100]
    assert sorted(of(numbers)) == numbers  # "3.00" is 3


def test_one_value_in_every_type() -> None:
    kinds = [pa.int16(), pa.int64(), pa.uint32(), pa.float32(), pa.float64(), pa.decimal128(9, 2)]
    (made,) = of([1234])
    assert all(of([1234, None], kind) == [made, None] for kind in kinds)
    texts = [str(made), f"{made}.0", f" {made} "]
    assert of(["1234", "1234.0", " 1234 "]) == texts
    coded = pa.array(["1234", "1234", None]).dictionary_encode()
    new = hashed(coded, "c", KEY)
    assert pa.types.is_dictionary(new.type)
    assert new.to_pylist() == [str(made), str(made), None]


def test_addresses_are_one_in_capitals_or_not() -> None:
    small, large = of(["ann.lee@web.de", "Ann.LEE@web.de"])
    assert large.lower() == small
    assert large[0].isupper()
    assert large[4:7].isupper()


def test_other_scripts_stay_in_their_part_of_unicode() -> None:
    for text in ["é", "Ü", "ж", "Ж", "σ", "ש", "中", "ã", "Łź"]:
        (made,) = of([text * 3])
        assert made != text * 3
        assert [ord(sign) >> 7 for sign in made] == [ord(sign) >> 7 for sign in text * 3]
        assert [sign.isupper() for sign in made] == [sign.isupper() for sign in text * 3]


def test_what_stays() -> None:
    texts = ["", " ", None, "-", "?!", "0", "0.0"]
    assert of(texts) == texts
    assert of([None], pa.null()) == [None]
    assert of([], pa.int64()) == []
    values = of([float("nan"), None, 17.0], pa.float64())
    assert np.isnan(values[0])
    assert values[1] is None


def test_leading_zeros_stay_and_no_others_come() -> None:
    made = of(["012", "-012", "12", "1.5"])
    assert [text.lstrip("-")[0] == "0" for text in made] == [True, True, False, False]


def test_another_secret_gives_others() -> None:
    numbers = list(range(1_000, 2_000))
    same = sum(a == b for a, b in zip(of(numbers), of(numbers, key=KEY[1:]), strict=True))
    assert same < 10


@pytest.mark.parametrize(
    ("values", "kind", "message"),
    [
        ([True], pa.bool_(), f"Column 'c' is of type bool: {ONLY}"),
        ([1], pa.date32(), f"Column 'c' is of type date32[day]: {ONLY}"),
        ([[1]], pa.list_(pa.int8()), f"Column 'c' is of type list<item: int8>: {ONLY}"),
        (
            [1.5],
            pa.float64(),
            f"Column 'c' has numbers with a fraction, or too large for their type: {ONLY}",
        ),
        (
            [decimal.Decimal("1.50")],
            pa.decimal128(9, 2),
            f"Column 'c' has numbers with a fraction, or too large for their type: {ONLY}",
        ),
        (
            [float(2**60 + 1024 * number) for number in range(9)],
            pa.float64(),
            f"Column 'c' has numbers that double does not hold to the last digit: {ONLY}",
        ),
        (
            list(range(100, 128)),
            pa.int8(),
            "Column 'c' is of type int8, which cannot hold what is made up for it: make it text, or"
            " keep it.",
        ),
    ],
)
def test_what_cannot_be_hashed(values: list[Any], kind: pa.DataType, message: str) -> None:
    with pytest.raises(ReplaceError) as caught:
        of(values, kind)
    assert str(caught.value) == message

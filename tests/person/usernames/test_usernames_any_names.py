"""Usernames of whatever names Hypothesis makes up."""

import pandas as pd
from hypothesis import given
from hypothesis import strategies as st

from support.usernames import assert_reads_alike

# Texts with NUL are left out: pandas counts some of those that differ as one.
TEXTS = st.text(st.characters(exclude_categories=["Cs"], exclude_characters="\0"), max_size=6)
NAMES = st.sampled_from(["Ann", "ann", "Mary Ann", "", " ", "İ", "ß", "张"]) | TEXTS


@given(rows=st.lists(st.tuples(NAMES, NAMES), max_size=10), seed=st.integers(0, 2**32 - 1))
def test_any_names_read_alike(rows: list[tuple[str, str]], seed: int) -> None:
    firstnames = pd.Series([first for first, _ in rows], dtype="object")
    lastnames = pd.Series([last for _, last in rows], dtype="object")
    assert assert_reads_alike(firstnames, lastnames, seed) is not None


@given(names=st.lists(NAMES | st.none(), min_size=1, max_size=6), seed=st.integers(0, 2**32 - 1))
def test_any_names_missing_on_both_sides_read_alike(names: list[str | None], seed: int) -> None:
    column = pd.Series(names, dtype="object")
    assert_reads_alike(column, column.copy(), seed)

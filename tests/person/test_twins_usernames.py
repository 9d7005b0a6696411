"""Whole columns against single calls: usernames, their clashes and the letters that names may have."""

from typing import Any

import numpy as np
import pandas as pd
import pytest

from support.twins import TEXT_DTYPES, made_both_ways, same_both_ways
from support.whole_columns import Text, in_turn
from vantrel.model.models.person import PersonModel


def usernames(firstnames: pd.Series, lastnames: pd.Series, seed: int = 1) -> pd.Series:
    return made_both_ways(lambda: PersonModel.generate_usernames(firstnames, lastnames), None, seed)


@pytest.mark.parametrize("seed", range(3))
@pytest.mark.parametrize("dtype", TEXT_DTYPES)
def test_one_name_300_times(dtype: str, seed: int) -> None:
    firstnames = TEXT_DTYPES[dtype](["Ann"] * 300)
    made = usernames(firstnames, TEXT_DTYPES[dtype](["Lee"] * 300), seed)
    assert made.is_unique


@pytest.mark.parametrize("rows", [0, 1, 2, 5, 40])
def test_few_rows_of_one_name(rows: int) -> None:
    usernames(in_turn(["Ann"], rows), in_turn(["Lee"], rows))


@pytest.mark.parametrize("seed", range(3))
def test_two_names_that_take_each_others_numbers(seed: int) -> None:
    usernames(in_turn(["Ann", "Ann1", "Ann 1", "Ann11"], 200), in_turn([""], 200), seed)


@pytest.mark.parametrize("seed", range(3))
def test_names_that_clash_with_their_separators(seed: int) -> None:
    firstnames = in_turn(["A", "A.", "A-", "A_", "A.-"], 150)
    usernames(firstnames, in_turn([".b", "b", "-b", "_b"], 150), seed)


def test_names_equal_but_for_case_stay_alike() -> None:
    made = usernames(in_turn(["ann", "ANN", "Ann"], 60), in_turn(["lee", "LEE"], 60))
    assert not made.is_unique


@pytest.mark.parametrize("blank", [" ", "\u00a0", "\u2003", "\t", "\u3000", "  "], ids=ascii)
def test_names_equal_but_for_blanks(blank: str) -> None:
    firstnames = in_turn([f"Mary{blank}Ann", "MaryAnn", f"{blank}MaryAnn"], 90)
    usernames(firstnames, in_turn([f"Le{blank}e", "Lee"], 90))


LETTERS = {
    "dotted capital I": ["İ", "i̇", "I", "ı"],
    "sharp s": ["ß", "ẞ", "SS", "ss"],
    "final sigma": ["ΑΣ", "ΑΣΑ", "ας", "Σ", "ΣΣ", "Α.Σ"],
    "combining": ["é", "e\u0301", "E\u0301", "\u0301"],
    "decimals of another script": ["a١", "a1", "a๑"],
    "nothing": ["", " ", "  "],
    "beyond the plane": ["\U0001f600", "𝐀", "\U00010400", "\U00010428"],
    "title case": ["ǅ", "Ǆ", "ǆ"],
    "line breaks": ["a\nb", "a\r\nb", "a\u2028b"],
    "right to left": ["عمر", "שרה", "\u202eabc"],
    "long": ["x" * 500, "y" * 70],
    "ligatures": ["ﬁ", "FI", "ŉ", "ΐ"],
    "greek below": ["ᾳ", "ᾼ", "ΑΙ"],
    "armenian and georgian": ["եւ", "և", "Ა", "ა"],
    "lithuanian": ["Ì", "J̌", "Į̃"],
    "wide": ["ＡＢ", "ａｂ"],
}


@pytest.mark.parametrize("letters", LETTERS)
def test_letters(letters: str) -> None:
    values = LETTERS[letters]
    usernames(in_turn(values, 60), in_turn([*values, "Lee"], 60))


@pytest.mark.parametrize("without", ["", "İ"], ids=["all", "without the dotted capital I"])
@pytest.mark.parametrize("dtype", TEXT_DTYPES)
def test_every_letter_of_latin_1_and_extended_a(dtype: str, without: str) -> None:
    # Their small letters are found in a table, unless that dotted one is among them.
    codes = [code for code in range(0x80, 0x180) if chr(code) != without]
    letters = TEXT_DTYPES[dtype]([f"x{chr(code)}{code}" for code in codes])
    usernames(letters, TEXT_DTYPES[dtype](["Lee"] * len(codes)))


def test_names_that_end_in_nul() -> None:
    # Older versions of pandas take texts that are equal up to a NUL for one text, and then no
    # number makes them distinct: no two of these are.
    firstnames = pd.Series(["a\0", "b\0\0", "\0", "c\0d"])
    same_both_ways(lambda: PersonModel.generate_usernames(firstnames, firstnames))


def test_surrogates_are_treated_alike() -> None:
    # Older versions of pandas take such texts for one another: two would be numbered for ever.
    firstnames = pd.Series(["a\udfff", "b", "c"], dtype="object")
    same_both_ways(lambda: PersonModel.generate_usernames(firstnames, firstnames))


@pytest.mark.parametrize("make", [np.str_, Text], ids=["numpy", "own type"])
def test_names_of_other_types(make: Any) -> None:
    texts = pd.Series([make("Ann"), "Bo", make("Ann"), make("Cy")] * 10, dtype="object")
    same_both_ways(lambda: PersonModel.generate_usernames(texts, texts))


class Joining(str):
    """A text that joins its own way."""

    def __add__(self, other: str) -> str:
        return f"{other}+{self!s}"

    def replace(self, *args: Any) -> str:
        return "replaced"


def test_names_that_join_their_own_way() -> None:
    texts = pd.Series([Joining("Ann"), "Bo", "Cy"], dtype="object")
    same_both_ways(lambda: PersonModel.generate_usernames(texts, texts))


@pytest.mark.parametrize("value", [5, 5.5, b"a", ["a"], True, ("a",), 1 + 2j], ids=repr)
@pytest.mark.parametrize("rows", [1, 4])
def test_names_that_are_no_texts(rows: int, value: Any) -> None:
    numbers = pd.Series([value] * rows, dtype="object")
    texts = pd.Series(["Ann"] * rows)
    same_both_ways(lambda: PersonModel.generate_usernames(numbers, texts))
    same_both_ways(lambda: PersonModel.generate_usernames(texts, numbers))


@pytest.mark.parametrize("seed", range(2))
def test_many_names(seed: int) -> None:
    firstnames = in_turn([f"Name {i % 97}" for i in range(3000)], 3000)
    lastnames = in_turn([f"Name {i % 11}" for i in range(3000)], 3000)
    usernames(firstnames, lastnames, seed)


def test_names_with_hashes_that_are_alike() -> None:
    # Texts of one hash bucket order differ in no way that value_counts or isin may show.
    firstnames = in_turn([chr(0x4E00 + i) for i in range(64)] + ["Ann"] * 64, 256)
    usernames(firstnames, in_turn(["Lee"], 256))


@pytest.mark.parametrize(
    "index", [range(3, 9), list("abcdef"), [0, 0, 1, 1, 2, 2], range(5, -1, -1)], ids=str
)
def test_clashes_on_other_indexes(index: Any) -> None:
    texts = pd.Series(["Ann"] * 6, index=index, name="first")
    same_both_ways(lambda: PersonModel.generate_usernames(texts, texts))


def test_the_names_stay_as_they_were() -> None:
    firstnames, lastnames = in_turn(["Ann "], 50), in_turn(["Lee"], 50)
    usernames(firstnames, lastnames)
    assert firstnames.tolist() == ["Ann "] * 50
    assert lastnames.tolist() == ["Lee"] * 50

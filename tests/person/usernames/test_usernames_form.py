"""What a username looks like."""

import random
import re
from typing import Any

import numpy as np
import pandas as pd
import pytest

from support import readings_generators as readings
from support.comparing import assert_same_outcome
from support.providers import DTYPES
from support.usernames import assert_reads_alike, generate

ANN_LEE = re.compile(r"ann[.\-_]?lee([0-9]{1,2}|100)?")


@pytest.mark.parametrize("seed", range(20))
def test_ann_lee_gives_one_of_four_forms_with_or_without_a_number(seed: int) -> None:
    (username,) = assert_reads_alike(pd.Series(["Ann"]), pd.Series(["Lee"]), seed)
    assert ANN_LEE.fullmatch(username)


def test_every_form_of_ann_lee_occurs() -> None:
    made = set()
    for seed in range(80):
        np.random.seed(seed)
        random.seed(seed)
        (username,) = generate(pd.Series(["Ann"]), pd.Series(["Lee"]))
        made.add((username[3:-3] if username.endswith("lee") else "number", username[3]))
    assert {("", "l"), (".", "."), ("-", "-"), ("_", "_")} < made
    assert any(form == "number" for form, _ in made)


def test_blanks_are_removed_from_every_part() -> None:
    usernames = assert_reads_alike(
        pd.Series(["Mary Ann", " Jo  ", "Bo"]), pd.Series(["Lee", "de la Cruz", " "])
    )
    assert not usernames.str.contains(" ").any()
    assert usernames[0].startswith("maryann")


def test_other_white_space_stays() -> None:
    (username,) = assert_reads_alike(pd.Series(["A\tB\u00a0"]), pd.Series(["C\n"]))
    assert username.startswith("a\tb\u00a0")
    assert "c\n" in username


@pytest.mark.parametrize("first", ["İpek", "ẞtraße", "ǅ", "ΑΣ", "张伟", "محمد", "Ольга", "é", ""])
def test_lower_case_is_what_pandas_makes_of_it(first: str) -> None:
    usernames = assert_reads_alike(pd.Series([first, "Ann"]), pd.Series(["Ş", first]))
    assert len(usernames) == 2


def test_the_result_keeps_the_index_and_name_of_the_first_names() -> None:
    firstnames = pd.Series(["Ann", "Bo"], index=["b", "a"], name="first")
    lastnames = pd.Series(["Lee", "Cho"], index=["b", "a"], name="last")
    usernames = assert_reads_alike(firstnames, lastnames)
    assert (list(usernames.index), usernames.name) == (["b", "a"], "first")


def test_last_names_are_aligned_by_label() -> None:
    firstnames = pd.Series(["Ann", "Bo"], index=["a", "b"])
    lastnames = pd.Series(["Cho", "Lee"], index=["b", "a"])
    usernames = assert_reads_alike(firstnames, lastnames)
    assert ANN_LEE.fullmatch(usernames["a"])


@pytest.mark.parametrize("dtype", DTYPES, ids=str)
def test_empty_series_give_an_empty_series_of_dtype_string(dtype: Any) -> None:
    usernames = assert_reads_alike(pd.Series([], dtype=dtype), pd.Series([], dtype=dtype))
    assert (len(usernames), str(usernames.dtype)) == (0, "string")


def test_the_given_series_are_not_changed() -> None:
    firstnames, lastnames = pd.Series(["Ann"] * 5), pd.Series(["Lee"] * 5)
    generate(firstnames, lastnames)
    assert (list(firstnames), list(lastnames)) == (["Ann"] * 5, ["Lee"] * 5)


def test_seeds_of_both_generators_decide() -> None:
    def made(numpy_seed: int, random_seed: int) -> list[str]:
        np.random.seed(numpy_seed)
        random.seed(random_seed)
        return list(generate(pd.Series(["Ann"] * 9), pd.Series(["Lee"] * 9)))

    assert made(1, 1) == made(1, 1)
    assert made(1, 1) != made(2, 1)
    assert made(1, 1) != made(1, 2)


def test_the_arguments_are_taken_by_keyword_too() -> None:
    firstnames, lastnames = pd.Series(["Ann"]), pd.Series(["Lee"])
    usernames = assert_same_outcome(
        lambda: generate(lastnames=lastnames, firstnames=firstnames),
        lambda: readings.usernames(firstnames, lastnames),
        1,
    )
    assert len(usernames) == 1

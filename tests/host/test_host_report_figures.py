"""What the report says of names, lengths and repeats."""

from itertools import pairwise
from typing import Any

import numpy as np
import pandas as pd
import pytest

from support.report_tables import both
from vantrel.reporting.duplicates import (
    DuplicateCount,
    Duplicates,
    compare_duplicates,
    compare_rows,
)
from vantrel.reporting.figures import compare_labelled
from vantrel.reporting.lengths import MOST_BINS, LengthBin, LengthSummary, compare_lengths
from vantrel.reporting.names import (
    MOST_NAMES,
    MOST_PLACES,
    FrequentNames,
    Name,
    Place,
    frequent_names,
)

NAMES = {"firstname": "first", "lastname": "last"}
FULL = {"fullname": "full"}
USER = {"username": "user"}
NONE = pd.DataFrame({"age": [1]})


def people(*names: tuple[str | None, str | None]) -> pd.DataFrame:
    return pd.DataFrame(names, columns=["first", "last"], dtype=object)


def users(*names: str | None) -> pd.DataFrame:
    return pd.DataFrame({"user": pd.Series(names, dtype=object)})


def test_names_of_all_rows_where_no_country_is_labelled() -> None:
    real = people(("Ann", "Lee"), ("Ann", None), ("Bob", "Ray"))
    sampled = people(("Cy", "Orr"))
    assert frequent_names(*both(real, sampled, NAMES)).places == (
        Place(
            None,
            (
                FrequentNames(
                    "firstname", (Name("Ann", 2 / 3), Name("Bob", 1 / 3)), (Name("Cy", 1),)
                ),
                FrequentNames(
                    "lastname", (Name("Lee", 1 / 2), Name("Ray", 1 / 2)), (Name("Orr", 1),)
                ),
            ),
        ),
    )


def test_names_by_country_the_one_with_the_most_rows_first() -> None:
    columns = {"firstname": "first", "country": "land"}
    real = pd.DataFrame({"first": ["Ann", "Bo"], "land": ["GB", "SE"]})
    sampled = pd.DataFrame({"first": ["Di", "Eli", "Flo"], "land": ["SE", "SE", None]})
    assert frequent_names(*both(real, sampled, columns)).places == (
        Place(
            "SE",
            (FrequentNames("firstname", (Name("Bo", 1),), (Name("Di", 0.5), Name("Eli", 0.5))),),
        ),
        Place("GB", (FrequentNames("firstname", (Name("Ann", 1),), ()),)),
    )


def test_a_real_table_without_names_has_none_in_any_country() -> None:
    columns = {"firstname": "first", "country": "land"}
    sampled = pd.DataFrame({"first": ["Di"], "land": ["SE"]})
    (place,) = frequent_names(*both(pd.DataFrame({"land": ["SE", "GB"]}), sampled, columns)).places
    assert place == Place("SE", (FrequentNames("firstname", None, (Name("Di", 1),)),))


def test_countries_that_one_table_of_names_lacks_are_not_told_apart() -> None:
    columns = {"firstname": "first", "country": "land"}
    sampled = pd.DataFrame({"first": ["Di"], "land": ["SE"]})
    (place,) = frequent_names(*both(pd.DataFrame({"first": ["Ann"]}), sampled, columns)).places
    assert place == Place(None, (FrequentNames("firstname", (Name("Ann", 1),), (Name("Di", 1),)),))


def test_full_names_are_listed_only_where_there_are_no_others() -> None:
    table = pd.DataFrame({"full": ["Ann Lee"], "last": ["Lee"]})
    parted = frequent_names(*both(table, NONE, {**FULL, "lastname": "last"})).places[0]
    assert [kind.attribute for kind in parted.kinds] == ["lastname"]
    alone = frequent_names(*both(table, NONE, FULL)).places[0]
    assert [kind.attribute for kind in alone.kinds] == ["fullname"]


def test_only_so_many_names_and_places_are_listed() -> None:
    many = pd.DataFrame(
        {"first": [f"N{i}" for i in range(100)], "land": [f"C{i}" for i in range(100)]}
    )
    found = frequent_names(*both(many, many, {"firstname": "first", "country": "land"}))
    assert (len(found.places), found.more) == (MOST_PLACES, 100 - MOST_PLACES)
    everywhere = frequent_names(*both(many, many, {"firstname": "first"}))
    assert len(everywhere.places[0].kinds[0].sampled or ()) == MOST_NAMES


def test_no_names_have_no_places() -> None:
    assert frequent_names(*both(NONE, NONE, NAMES)).places == ()


def test_lengths_of_known_values() -> None:
    found = compare_lengths(
        *both(users("ab", "abcd", None), users("abc", "abc", "žluť"), USER), "username"
    )
    assert found.real == LengthSummary(2, 2, 3.0, 3.0, 4)
    assert found.sampled == LengthSummary(3, 3, 3.0, 10 / 3, 4)
    assert found.bins == (
        LengthBin(2, 2, 0.5, 0),
        LengthBin(3, 3, 0, 2 / 3),
        LengthBin(4, 4, 0.5, 1 / 3),
    )


@pytest.mark.parametrize("lacking", [NONE, users(), users(None, None)])
def test_a_table_without_values_has_no_lengths(lacking: pd.DataFrame) -> None:
    found = compare_lengths(*both(lacking, users("ab"), USER), "username")
    assert found.real is None
    assert found.bins == (LengthBin(2, 2, 0, 1),)
    assert compare_lengths(*both(lacking, lacking, USER), "username").bins == ()


def test_lengths_far_from_the_others_share_the_last_bin() -> None:
    lengths = [*range(1, 51)] * 4 + [5000]
    found = compare_lengths(*both(users(*("x" * n for n in lengths)), NONE, USER), "username")
    assert len(found.bins) <= MOST_BINS + 1
    assert [each.low for each in found.bins[:3]] == [1, 3, 5]
    assert found.bins[-1] == LengthBin(51, None, 1 / 201, 0)
    assert found.real is not None
    assert found.real.longest == 5000


@pytest.mark.parametrize("span", [1, 39, 40, 41, 79, 81, 500])
def test_bins_lie_side_by_side_and_hold_every_length(span: int) -> None:
    values = users(*("x" * n for n in range(3, 3 + span)))
    bins = compare_lengths(*both(values, values, USER), "username").bins
    assert bins[0].low == 3
    assert all(one.high == two.low - 1 for one, two in pairwise(bins))
    assert sum(each.real for each in bins) == pytest.approx(1)
    for each in bins:
        high = 3 + span - 1 if each.high is None else min(each.high, 3 + span - 1)
        assert each.sampled == pytest.approx((high - each.low + 1) / span)


def test_repeats_of_values() -> None:
    found = compare_duplicates(*both(users("a", "b", "a", "a", None, None), NONE, USER), "username")
    assert found == Duplicates("username", DuplicateCount(4, 2), None)


def test_repeats_of_rows_in_the_labelled_columns() -> None:
    real = people(
        ("Ann", "Lee"), ("Ann", "Ray"), ("Ann", "Lee"), ("Ann", None), ("Ann", None), (None, None)
    )
    real["age"] = range(6)
    assert compare_rows(*both(real, real, NAMES)).real == DuplicateCount(5, 2)


def test_rows_are_compared_in_the_columns_that_both_tables_have() -> None:
    real = people(("Ann", "Lee"), ("Ann", "Ray"))
    sampled = real[["first"]]
    repeated = DuplicateCount(2, 1)
    assert compare_rows(*both(real, sampled, NAMES)) == Duplicates(None, repeated, repeated)
    assert compare_rows(*both(real, NONE, NAMES)) == Duplicates(None, None, None)


def test_repeated_rows_are_those_of_pandas() -> None:
    draws = np.random.default_rng(1).integers(0, 4, size=(200, 3))
    table = pd.DataFrame(draws.astype(str), columns=["sex", "first", "last"])
    columns = {"gender": "sex", **NAMES}
    repeated = int(table.duplicated().sum())
    assert 0 < repeated < 199
    assert compare_rows(*both(table, table, columns)).sampled == DuplicateCount(200, repeated)


def test_an_attribute_that_neither_table_holds_is_left_out() -> None:
    found = compare_labelled(
        *both(users("ann"), users("bob"), {**USER, "gender": "sex", "email": "mail", **FULL})
    )
    assert found.frequencies == ()
    assert [each.attribute for each in found.missing_rates] == ["username"]
    assert [each.attribute for each in found.lengths] == ["username"]
    assert [each.attribute for each in found.duplicates] == [None, "username"]


@pytest.mark.parametrize("dtype", [object, "string", "category"])
def test_the_kind_of_column_does_not_matter(dtype: Any) -> None:
    columns = {"gender": "sex", "country": "land", **NAMES, **USER}
    table = pd.DataFrame(
        {
            "sex": ["m", "f", None],
            "land": ["GB", None, "SE"],
            "first": ["Ann", "Bob", None],
            "last": ["Lee", "Ray", "Orr"],
            "user": ["ann", "bob", "ann"],
        },
        dtype=object,
    )
    assert compare_labelled(*both(table.astype(dtype), table, columns)) == compare_labelled(
        *both(table, table, columns)
    )


def test_tables_are_left_as_they_were() -> None:
    table = people(("Ann", None), ("Ann", "Lee"))
    before = table.copy()
    compare_labelled(*both(table, table, {**NAMES, "country": "none"}))
    pd.testing.assert_frame_equal(table, before)

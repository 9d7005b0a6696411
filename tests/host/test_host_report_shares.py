"""How the report compares shares and missing rates."""

from dataclasses import replace

import numpy as np
import pandas as pd
import pytest
from hypothesis import given
from hypothesis import strategies as st

from support.report_tables import COLUMNS as ALL
from support.report_tables import both
from vantrel.reporting.distances import RISK, chance_limit, total_variation
from vantrel.reporting.frequencies import MOST_SHARES, Frequencies, Frequency, compare_frequencies
from vantrel.reporting.missing import MissingRates, compare_all_missing_rates, compare_missing_rates

COLUMNS = {"gender": "sex"}


def frame(*values: object) -> pd.DataFrame:
    return pd.DataFrame({"sex": pd.Series(values, dtype=object)})


def compared(real: pd.DataFrame, sampled: pd.DataFrame) -> Frequencies:
    return compare_frequencies(*both(real, sampled, COLUMNS), "gender")


@st.composite
def distributions(draw: st.DrawFn) -> tuple[np.ndarray, np.ndarray]:
    """Two distributions over the same values."""
    counts = st.integers(0, 1000)
    size = draw(st.integers(1, 30))
    one, other = (
        np.array(draw(st.lists(counts, min_size=size, max_size=size).filter(any)), dtype=float)
        for _ in range(2)
    )
    return one / one.sum(), other / other.sum()


def test_the_distance_of_a_known_pair() -> None:
    assert total_variation(np.array([0.5, 0.3, 0.2]), np.array([0.4, 0.1, 0.5])) == pytest.approx(
        0.3
    )


def test_distributions_without_a_common_value_are_as_far_apart_as_can_be() -> None:
    assert total_variation(np.array([0.5, 0.5, 0.0]), np.array([0.0, 0.0, 1.0])) == 1


@given(distributions())
def test_the_distance_is_from_0_to_1_symmetric_and_0_for_equal_ones(
    pair: tuple[np.ndarray, np.ndarray],
) -> None:
    p, q = pair
    assert 0 <= total_variation(p, q) <= 1
    assert total_variation(p, q) == total_variation(q, p)
    assert total_variation(p, p) == 0


@given(distributions())
def test_the_distance_is_the_most_that_any_set_of_values_differs_by(
    pair: tuple[np.ndarray, np.ndarray],
) -> None:
    p, q = pair
    assert total_variation(p, q) == pytest.approx((p - q)[p > q].sum(), abs=1e-9)


ZIPF = 1 / np.arange(1, 251)
SHARES = {
    "even": np.array([0.5, 0.5]),
    "a third": np.array([0.65, 0.35]),
    "rare": np.array([0.99, 0.01]),
    "30 alike": np.full(30, 1 / 30),
    "250 of all sizes": ZIPF / ZIPF.sum(),
}


def distances(p: np.ndarray, rows: int) -> np.ndarray:
    """How far samples of a distribution are from it."""
    drawn = np.random.default_rng(1).multinomial(rows, p, size=40_000) / rows
    return np.asarray(np.abs(drawn - p).sum(axis=1) / 2)


@pytest.mark.parametrize("rows", [300, 1000, 1_000_000])
@pytest.mark.parametrize("p", SHARES.values(), ids=SHARES)
@pytest.mark.parametrize("risk", [0.01, 0.001, RISK])
def test_the_limit_of_chance_is_what_samples_stay_within_but_for_the_risk(
    p: np.ndarray, rows: int, risk: float
) -> None:
    limit, found = chance_limit(p, rows, risk=risk), distances(p, rows)
    assert 0.87 <= limit / np.quantile(found, 1 - risk, method="higher") <= 1.15
    by_luck = 4 * np.sqrt(risk / len(found))  # what a count of so few is off by
    assert (found > limit + 1e-9).mean() <= 1.5 * risk + by_luck


def test_the_limit_of_chance_is_the_same_each_time() -> None:
    assert chance_limit(SHARES["rare"], 1000) == chance_limit(SHARES["rare"], 1000)


def test_chance_does_not_move_the_only_value() -> None:
    assert chance_limit(np.array([1.0]), 1000) == 0


def test_the_limit_of_chance_of_one_row_is_the_rarest_value() -> None:
    assert chance_limit(np.array([0.75, 0.25]), 1, risk=0.01) == 0.75
    assert chance_limit(np.array([0.75, 0.25]), 1) >= 0.75


def test_a_distance_at_the_limit_is_by_chance() -> None:
    # The same distance, by sums that are rounded otherwise.
    found = Frequencies("gender", "sex", 1, 1, 1, (), 0.039000000000000035, 0.03899999999999995)
    assert found.is_by_chance
    assert not replace(found, distance=0.04).is_by_chance
    assert not replace(found, distance=None, limit=None).is_by_chance


def test_another_distribution_passes_the_limit_of_chance() -> None:
    assert total_variation(np.array([0.5, 0.5]), np.array([0.6, 0.4])) > chance_limit(
        np.array([0.5, 0.5]), 2000
    )


def test_shares_are_of_the_rows_with_a_value() -> None:
    found = compared(frame("m", "m", "f", None), frame("f", "x", None, None))
    assert found == Frequencies(
        "gender",
        "sex",
        3,
        2,
        3,
        (Frequency("m", 2 / 3, 0), Frequency("f", 1 / 3, 0.5), Frequency("x", 0, 0.5)),
        found.distance,
        found.limit,
    )
    assert found.distance == pytest.approx(2 / 3)
    assert found.limit == chance_limit(np.array([1 / 3, 2 / 3]), 2)


def test_values_are_compared_as_texts() -> None:
    found = compared(frame(1, 2), frame("1", "2"))
    assert found.distance == 0
    assert [share.value for share in found.shares] == ["1", "2"]


def test_the_values_most_frequent_in_either_table_come_first() -> None:
    found = compared(frame("a", "a", "a", "b"), frame("c", "c", "b", "c"))
    assert [share.value for share in found.shares] == ["a", "c", "b"]


def test_equally_frequent_values_come_in_the_order_of_the_alphabet() -> None:
    found = compared(frame("b", "d", "a"), frame("c", "a", "b", "d"))
    assert [share.value for share in found.shares] == ["a", "b", "d", "c"]


def test_a_column_in_one_table_only_is_not_compared() -> None:
    found = compared(frame("m"), pd.DataFrame({"other": ["m"]}))
    assert (found.real_rows, found.sampled_rows) == (1, None)
    assert found.shares == (Frequency("m", 1, None),)
    assert found.distance is None
    assert found.limit is None


@pytest.mark.parametrize("other", [frame(), frame(None, None)])
def test_a_table_without_values_is_not_compared(other: pd.DataFrame) -> None:
    found = compared(other, frame("m"))
    assert (found.real_rows, found.sampled_rows) == (0, 1)
    assert found.shares == (Frequency("m", None, 1),)
    assert found.distance is None


def test_two_tables_without_values_have_no_shares() -> None:
    found = compared(frame(None), frame())
    assert found.shares == ()
    assert found.values == 0


def test_only_so_many_values_are_listed_and_all_of_them_count() -> None:
    many = [f"{number:03}" for number in range(MOST_SHARES + 50)]
    found = compared(frame(*many), frame(*many[:-1], "other"))
    assert len(found.shares) == MOST_SHARES
    assert found.values == MOST_SHARES + 51
    assert found.distance == pytest.approx(1 / len(many))


def test_missing_rates_are_of_all_rows() -> None:
    found = compare_missing_rates(
        *both(frame("m", None, None, None), frame("m", "f", None, "f"), COLUMNS), "gender"
    )
    assert (found.real, found.sampled, found.difference) == (0.75, 0.25, -0.5)


@pytest.mark.parametrize("lacking", [pd.DataFrame({"other": ["m"]}), frame()])
def test_a_table_without_the_column_or_without_rows_has_no_missing_rate(
    lacking: pd.DataFrame,
) -> None:
    assert compare_missing_rates(*both(lacking, frame("m"), COLUMNS), "gender") == MissingRates(
        "gender", "sex", None, 0, None
    )
    assert compare_missing_rates(*both(frame("m"), lacking, COLUMNS), "gender").difference is None


def missing(rate: float, rows: int) -> pd.DataFrame:
    return pd.DataFrame({"sex": [None if i < rate * rows else "f" for i in range(rows)]})


@pytest.mark.parametrize(
    ("real", "sampled", "is_beyond"),
    [
        (0.3, 0.3, False),
        (0.0, 0.0, False),
        (1.0, 1.0, False),
        (0.0, 0.001, True),
        (1.0, 0.999, True),
        # All but one in 10,000 samples of 1,000 rows are within 0.056 of 0.3: 3.89 standard
        # deviations.
        (0.3, 0.350, False),
        (0.3, 0.363, True),
        (0.3, 0.24, True),
    ],
)
def test_missing_rates_are_held_against_the_simulated_limit(
    real: float, sampled: float, is_beyond: bool
) -> None:
    tables = both(missing(real, 1000), missing(sampled, 1000), {"gender": "sex"})
    found = compare_missing_rates(*tables, "gender")
    assert found.limit == chance_limit(np.array([real, 1 - real]), 1000)
    assert found.is_beyond_chance == is_beyond


def test_good_samples_of_many_columns_are_beyond_chance_no_oftener_than_those_of_one() -> None:
    rng = np.random.default_rng(1)
    full = pd.DataFrame("x", index=range(200), columns=list(ALL.values()))
    real = full.mask(np.indices(full.shape)[0] < 100)

    def beyond(sampled: pd.DataFrame) -> list[str]:
        found = compare_all_missing_rates(*both(real, sampled, ALL))
        return [each.attribute for each in found if each.is_beyond_chance]

    good = (full.mask(rng.random(full.shape) < 0.5) for _ in range(60))
    assert sum(bool(beyond(each)) for each in good) <= 1
    assert beyond(real.assign(sex=full["sex"].mask(full.index < 150))) == ["gender"]

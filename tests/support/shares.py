"""Tells whether a sample has the shares of a table."""

import pandas as pd

# What one in a million true samples exceeds, by the normal approximation of the chi-squared distribution.
BOUND = 4.9


def excess(real: pd.DataFrame, sampled: pd.DataFrame, columns: list[str]) -> float:
    """By how many standard deviations the chi-squared distance of joint counts is beyond its mean."""
    one, other = (df[columns].fillna("-").value_counts() for df in (real, sampled))
    one, other = one.align(other, fill_value=0)
    chi: float = ((one - other) ** 2 / (one + other)).sum()
    free = len(one) - 1
    return float((chi - free) / (2 * free) ** 0.5)

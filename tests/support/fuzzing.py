"""What the fuzz tests share: how many examples, what may come out of a call, odd values of any type."""

import os
import warnings
from collections.abc import Callable
from typing import Any

import pandas as pd
from hypothesis import HealthCheck, settings
from hypothesis import strategies as st

# `make fuzz` asks for many, at random. In the suite they are few, and the same ones each time.
FEW = 100
EXAMPLES = int(os.environ.get("FUZZ_EXAMPLES", str(FEW)))

fuzz = settings(
    max_examples=EXAMPLES,
    derandomize=EXAMPLES <= FEW,
    deadline=None,
    database=None,
    print_blob=True,
    suppress_health_check=[
        HealthCheck.too_slow,
        HealthCheck.data_too_large,
        HealthCheck.function_scoped_fixture,
    ],
)


def outcome[T](call: Callable[[], T], *documented: type[Exception]) -> T | None:
    """Gives the result of a call, or None if it raises one of the documented exceptions.

    Any other exception is a failure. Warnings are not what is looked for here.
    """
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        try:
            return call()
        except documented:
            return None


# The module makes whole columns at once from 16 rows on.
row_numbers = st.one_of(st.integers(0, 6), st.integers(16, 24))


def usually(usual: st.SearchStrategy[Any], odd: st.SearchStrategy[Any]) -> st.SearchStrategy[Any]:
    """Usual values, and one time in five odd ones.

    `st.one_of` would take apart what is odd and give each of its many kinds the same chance.
    """
    return st.integers(0, 4).flatmap(lambda drawn: odd if drawn == 4 else usual)


any_text = st.text(st.characters(), max_size=8)  # half characters are among them
telling = st.sampled_from(
    ["female", "male", "nb", "Mrs", "Mr", "Dr", "Mx", "GB", "US", "de_DE", "F", "M", "A", "nan", ""]
)
plain_values = st.one_of(
    st.none(),
    st.booleans(),
    st.integers(),
    st.integers(-3, 3),
    st.floats(),
    telling,
    any_text,
)
json_values = st.recursive(
    plain_values,
    lambda inner: st.one_of(
        st.lists(inner, max_size=4),
        st.dictionaries(st.one_of(telling, any_text), inner, max_size=4),
    ),
    max_leaves=8,
)
odd_values = st.one_of(
    json_values,
    st.just(pd.NA),
    st.just(pd.NaT),
    st.binary(max_size=4),
    st.tuples(plain_values),
    st.decimals().filter(lambda number: not number.is_snan()),  # pandas itself cannot look at it
    st.datetimes(),
    st.builds(object),
    st.sets(st.integers(0, 3)),
)

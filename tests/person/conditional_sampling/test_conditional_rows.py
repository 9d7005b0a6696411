"""Numbers of rows that conditional sampling refuses."""

from typing import Any

import numpy as np
import pytest

from support.calls import Number
from support.conditional_sampling import countries, genders, model_of


@pytest.mark.parametrize(
    ("num_rows", "given"),
    [(None, "NoneType"), (True, "bool"), (Number(1), "Number"), (1.0, "float")],
)
def test_a_number_of_rows_that_is_no_int_is_refused(num_rows: Any, given: str) -> None:
    with pytest.raises(TypeError) as caught:
        model_of()._sample_conditional(num_rows, genders(1), countries(1))
    message = f"Argument 'num_rows' has incorrect type (expected int, got {given})"
    assert str(caught.value) == message


def test_a_numpy_integer_is_refused() -> None:
    with pytest.raises(TypeError) as caught:
        model_of()._sample_conditional(np.int64(1), genders(1), countries(1))
    message = "Argument 'num_rows' has incorrect type (expected int, got int64)"
    assert str(caught.value) == message

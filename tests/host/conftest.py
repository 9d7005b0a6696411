"""What the tests of the host share."""

import pandas as pd
import pytest


@pytest.fixture
def people() -> pd.DataFrame:
    """Ten people with everything that is learnt, in an order of columns that no label order is."""
    return pd.DataFrame(
        {
            "land": ["GB", "US", "GB", "DE", "GB", "US", "GB", "DE", "GB", "GB"],
            "surname": list("ABCDEFGHIJ"),
            "title": ["Mr", "Mrs", "Dr", "Mr", "Miss", "Mr", "Dr", "Mrs", "Mr", "Miss"],
            "sex": ["m", "f", "m", "m", "f", "m", "f", "f", "m", "f"],
        }
    )

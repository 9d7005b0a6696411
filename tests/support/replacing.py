"""What the tests of replaced people share."""

from __future__ import annotations

from collections.abc import Sequence

import numpy as np
import pandas as pd
import pyarrow as pa

from vantrel.replacing.columns.roles import Roles, find_roles
from vantrel.replacing.people.people import People

SECRET = b"a secret of no use, of 32 bytes."

COUNTRIES = ["GB", "DE", "FR", "JP"]


def customers(people: int = 400, seed: int = 1) -> pd.DataFrame:
    """A table of people whose names are no names, so that none is made up."""
    rng = np.random.default_rng(seed)
    number = np.arange(people)
    texts = pd.Series(number.astype(str))
    return pd.DataFrame(
        {
            "customer_id": number + 1_000,
            "sex": rng.choice(["f", "m"], people),
            "first_name": "Qa" + texts,
            "last_name": "Qb" + texts,
            "email": "qa" + texts + "@qb.org",
            "username": "qa" + texts,
            "password": "secret" + texts,
            "mobile": "+44 20 " + (number + 7_000_000).astype(str),
            "country": rng.choice(COUNTRIES, people),
            "note": rng.choice(["x", "y"], people),
        }
    )


def replaced_in_batches(
    df: pd.DataFrame, rows: int, secret: bytes = SECRET, *, key: str | None = "customer_id"
) -> pd.DataFrame:
    """The new columns of a table that is learnt and replaced in batches of so many rows."""
    roles = find_roles(df, key=key)
    return made_of([df], [roles], rows, secret)[0]


def made_of(
    tables: Sequence[pd.DataFrame], roles: Sequence[Roles], rows: int = 100, secret: bytes = SECRET
) -> list[pd.DataFrame]:
    """The new columns of several tables of one run."""
    batches = [
        pa.Table.from_pandas(df, preserve_index=False).to_batches(max_chunksize=rows)
        for df in tables
    ]
    people = People(secret)
    for number, (own, role) in enumerate(zip(batches, roles, strict=True)):
        for batch in own:
            people.learn(batch, role, f"table {number}")
    people.settle()
    made = []
    for df, own, role in zip(tables, batches, roles, strict=True):
        parts = [people.replaced(batch, role).columns for batch in own]
        whole = {name: pa.chunked_array([part[name] for part in parts]) for name in role.replaced}
        made.append(pa.table(whole).to_pandas().set_index(df.index))
    people.finish()
    return made

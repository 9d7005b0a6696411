"""The table whose people are replaced: orders of customers, with what is known of these in each."""

from __future__ import annotations

from pathlib import Path
from typing import Any

import numpy as np
import pandas as pd

from vantrel.sampling.seeding import seed_everything
from vantrel.tables import write_table

from .people import fitted_model
from .plain_way import SEED

KEY = "customer_id"
COLUMNS = 20

# Names and numbers follow these, which stay.
TOLD = ("gender", "country")
REPLACED = (
    "firstname",
    "lastname",
    "fullname",
    "email",
    "username",
    "password",
    "mobile_number",
    "home_number",
)

_BLOCK = 100_000
_FIRST_KEY = 10_000_000
_FIRST_DAY = np.datetime64("2024-01-01")
_DAYS = 700

_WORDS = {
    "product": ("kettle, 1.7 l", "desk lamp", "garden chair", "bookcase", "carpet 2 x 3 m"),
    "payment": ("card", "invoice", "bank transfer"),
    "shop": ("London Bridge", "Leeds", "Hamburg", "Boston", "web"),
    "note": ("", "leave it with the neighbours", "call before delivery", "gift wrapping"),
}


def write_orders(path: Path, customers: int, each: int = 1) -> None:
    """Writes so many orders of each of so many customers, as CSV.

    All order once before anybody orders again, and then the same: rows are as many and as long as
    those of other orders would be, and take no time to make.
    """
    orders = _orders(customers)
    blocks = (orders[start : start + _BLOCK] for start in range(0, customers, _BLOCK))
    write_table(blocks, path)
    with path.open("r+b") as file:
        file.readline()
        rows = file.read()
        for _ in range(each - 1):
            file.write(rows)


def _orders(customers: int) -> pd.DataFrame:
    """Gives one order of each."""
    model = fitted_model()
    seed_everything(model, SEED)
    orders = model.sample(customers)[[*TOLD, *REPLACED]]
    orders.insert(0, KEY, _FIRST_KEY + np.arange(customers))
    orders = orders.assign(**_goods(np.random.default_rng(SEED), customers))
    assert orders.shape[1] == COLUMNS
    return orders


def _goods(random: np.random.Generator, rows: int) -> dict[str, Any]:
    """Gives the columns that have nothing to do with who ordered."""
    quantity, cents = random.integers(1, 10, rows), random.integers(100, 50_000, rows)
    words = {name: np.array(of)[random.integers(len(of), size=rows)] for name, of in _WORDS.items()}
    return {
        "ordered": np.datetime_as_string(_FIRST_DAY + random.integers(_DAYS, size=rows)),
        "quantity": quantity,
        "price": cents / 100,
        "total": quantity * cents / 100,
        "discount": random.integers(0, 20, rows),
        **words,
    }

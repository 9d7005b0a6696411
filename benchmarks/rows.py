"""Measures what rows as real ones are cost, to sample them and to learn them."""

from __future__ import annotations

import tempfile
from collections.abc import Iterator
from functools import partial
from pathlib import Path

import vantrel
from vantrel.model.models.person import PersonModel
from vantrel.tables import Table, open_table

from .comparing import seeding
from .people import TWELVE, people
from .plain_way import SEED
from .results import Limits, Result
from .timing import Way, alternate

ROWS = 100_000
ROWS_LEARNT = 1_000_000
ROWS_OF_THE_MODEL = 3_600

LEARNT = ("gender", "title", "country")
SAMPLE_LIMITS = Limits(bar=3, aim=2, at_most=True)
FIT_LIMITS = Limits(bar=1.5, aim=1.25, at_most=True)


def real_rows(rounds: int) -> Iterator[Result]:
    """Rows as real ones are against the bare model's, and a fit against reading the columns."""
    model = _fitted()
    ways = {
        "bare": Way(partial(model.sample, ROWS), ROWS, seeding(model)),
        "real": Way(partial(vantrel.sample, model, ROWS, seed=SEED), ROWS),
    }
    costs = alternate(ways, rounds)
    work = f"vantrel.sample, {ROWS:,} rows, model.sample"
    yield Result.of_costs(work, costs["bare"], costs["real"], SAMPLE_LIMITS)
    with tempfile.TemporaryDirectory() as folder:
        path = Path(folder) / "people.csv"
        people(ROWS_LEARNT).to_csv(path, index=False)
        with open_table(path) as table:
            yield _learning(table, rounds)


def _learning(table: Table, rounds: int) -> Result:
    ways = {
        "read": Way(partial(table.frame, LEARNT), ROWS_LEARNT),
        "fit": Way(partial(_fit, table), ROWS_LEARNT),
    }
    costs = alternate(ways, rounds)
    work = f"fit, {ROWS_LEARNT:,} rows, reading the same columns"
    return Result.of_costs(work, costs["read"], costs["fit"], FIT_LIMITS)


def _fit(table: Table) -> PersonModel:
    return vantrel.fit(table, detect=False, gender="gender", title="title", country="country")


def _fitted() -> PersonModel:
    generated = [attribute for attribute in vars(TWELVE) if attribute not in LEARNT]
    return vantrel.fit(people(ROWS_OF_THE_MODEL), generate=generated)

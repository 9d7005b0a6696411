"""Tables for reports: ordinary ones, and ones that try what a page bears."""

from collections.abc import Mapping

import numpy as np
import pandas as pd
import pycountry

from vantrel.reporting.figures import compare_labelled
from vantrel.reporting.labelled import LabelledTable
from vantrel.reporting.page import Sources, render
from vantrel.reporting.provenance import provenance
from vantrel.sampling.record import SampleRecord
from vantrel.tables import frame_table
from vantrel.versions import versions

COLUMNS = {
    "gender": "sex",
    "title": "title",
    "firstname": "first",
    "lastname": "last",
    "fullname": "full",
    "email": "mail",
    "username": "user",
    "country": "land",
}

ODD_NAMES = [
    "محمد",
    "王伟",
    "<script>alert(1)</script>",
    "<img src=x onerror=alert(1)>",
    'O\'Brien & "Sons"',
    "Ana" * 60,
    "\x00\x07bell",
    "\u202eevil",
    "   ",
    "{{ 7 * 7 }}",
]


def ordinary(rows: int, seed: int) -> pd.DataFrame:
    """People as a table of a few countries may have them."""
    rng = np.random.default_rng(seed)
    first, last = rng.choice(["Ann", "Bea", "Cy"], rows), rng.choice(["Lee", "Orr", "Ray"], rows)
    users = [f"{name.lower()}{number}" for number, name in enumerate(first)]
    return pd.DataFrame(
        {
            "sex": rng.choice(["female", "male", None], rows, p=[0.5, 0.4, 0.1]),
            "title": rng.choice(["Mr", "Ms", "Dr"], rows, p=[0.4, 0.5, 0.1]),
            "first": first,
            "last": last,
            "full": [f"{one} {other}" for one, other in zip(first, last, strict=True)],
            "mail": [f"{user}@example.org" for user in users],
            "user": users,
            "land": rng.choice(["Norway", "Sweden", "USA"], rows),
        }
    )


def odd(rows: int, seed: int) -> pd.DataFrame:
    """People of 200 countries with names in many scripts, markup, no end, or nothing to see."""
    rng = np.random.default_rng(seed)
    table = ordinary(rows, seed)
    weights = 1 / np.arange(1, 201)
    countries = [country.name for country in pycountry.countries][:200]
    table["first"], table["last"] = rng.choice(ODD_NAMES, rows), rng.choice(ODD_NAMES, rows)
    table["full"] = table["first"] + " " + table["last"]
    table["land"] = rng.choice(countries, rows, p=weights / weights.sum())
    table["title"] = [f"T{n % 300}" if n % 3 else "A long title " * 20 for n in range(rows)]
    table["user"] = ["u" * int(3 + n) for n in rng.gamma(3, 20, rows)]
    return table


def record(rows: int, **changes: str) -> SampleRecord:
    """A record of these columns, made with the versions installed or others."""
    return SampleRecord(
        model="model.json",
        model_sha256="ab" * 32,
        rows=rows,
        seed=7,
        columns=COLUMNS,
        options={"conditions": None, "unique": ["username"]},
        versions=versions() | changes,
    )


def both(
    real: pd.DataFrame, sampled: pd.DataFrame, columns: Mapping[str, str] = COLUMNS
) -> tuple[LabelledTable, LabelledTable]:
    """Labels two tables alike."""
    return LabelledTable(frame_table(real), columns), LabelledTable(frame_table(sampled), columns)


def page(
    real: pd.DataFrame,
    sampled: pd.DataFrame,
    made: SampleRecord | None = None,
    sources: Sources | None = None,
) -> str:
    """The report on two tables."""
    figures = compare_labelled(*both(real, sampled))
    told = provenance(made, len(sampled)) if made else None
    return render(figures, sources or Sources("real.csv", "sampled.csv"), told)

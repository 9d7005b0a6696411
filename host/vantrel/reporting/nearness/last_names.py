"""Real last names that no list of Faker's has, and that a sample has nevertheless.

Whole names miss a column of real last names that stands alone, or beside other first names.
"""

from __future__ import annotations

import pkgutil
import re
from functools import cache
from importlib import import_module

import faker.providers.person

from vantrel.reporting.labelled import LabelledTable
from vantrel.reporting.nearness.forms import plain
from vantrel.reporting.nearness.shared import MOST_EXAMPLES, Example, Shared

UNLISTED = "Rare last name"

# Icelandic ones are made from first names, which no list of last names has.
_MADE = re.compile("(son|dóttir)$")

_REAL = "SELECT {key}, min({value}) FROM {{rows}} WHERE {key} <> '' GROUP BY 1"
_SAMPLED = (
    "SELECT key, count(*), min(number) FROM"
    " (SELECT {key} AS key, row_number() OVER () AS number FROM {{rows}})"
    " WHERE key <> '' GROUP BY 1"
)


def compare_last_names(real: LabelledTable, sampled: LabelledTable) -> Shared | None:
    """Looks in a sample for last names that it cannot have from Faker; None without such names."""
    if not (real.has("lastname") and sampled.has("lastname")):
        return None
    value, other = real.column("lastname"), sampled.column("lastname")
    written = {
        key: value
        for key, value in real.table.query(_REAL.format(key=plain(value), value=value))
        if not _is_listed(key)
    }
    in_sample = sampled.table.query(_SAMPLED.format(key=plain(other)))
    found = sorted((-rows, row, written[key]) for key, rows, row in in_sample if key in written)
    return Shared(
        UNLISTED,
        len(written),
        len(found),
        sampled.filled("lastname") or 0,
        -sum(rows for rows, _, _ in found),
        0.0,
        tuple(Example(name, -rows, row) for rows, row, name in found[:MOST_EXAMPLES]),
    )


def _is_listed(name: str) -> bool:
    known = _last_names()
    return (
        name in known
        or f"{name.removesuffix('a')}i" in known  # lists have Polish names as men bear them
        or bool(_MADE.search(name))
        or all(word in known for word in re.split("[ -]+", name))
    )


@cache
def _last_names() -> frozenset[str]:
    """The last names of all lists, in lower case."""
    package = faker.providers.person
    found = set()
    for module in pkgutil.iter_modules(package.__path__):
        provider = import_module(f"{package.__name__}.{module.name}").Provider
        for each in dir(provider):
            listed = getattr(provider, each) if "last" in each else None
            if isinstance(listed, tuple | list | dict):
                found |= {name.lower() for name in listed if isinstance(name, str)}
    return frozenset(found)

"""Which real names the sample has, too."""

from __future__ import annotations

from collections.abc import Sequence
from dataclasses import dataclass

import pandas as pd

from vantrel.attributes import NAMES
from vantrel.reporting.labelled import LabelledTable

MOST_EXAMPLES = 5


@dataclass(frozen=True)
class Overlap:
    """How many of the real table's names are in the sample.

    Names are compared without regard to case and to the amount of white space.

    Args:
        kind: What is compared, in words.
        is_whole: Whether it is a person's whole name, which tells more than a part of it.
        real_names: The number of distinct names of the real table.
        found: How many of these the sample has.
        sampled_rows: The number of sampled rows that have a name of the kind.
        bearing: How many of these have one of the real table.
        examples: Some that are in both, as the real table has them, those of the most sampled
            rows first.
    """

    kind: str
    is_whole: bool
    real_names: int
    found: int
    sampled_rows: int
    bearing: int
    examples: tuple[str, ...]


def name_overlaps(real: LabelledTable, sampled: LabelledTable) -> tuple[Overlap, ...]:
    """Looks for the real table's names in the sample, one entry for each kind that both have.

    Where only one of them has a column of full names, those of the other are its first and last
    names.
    """
    kinds = list(_KINDS)
    if not any(table.has("fullname") for table in (real, sampled)):
        kinds.remove(_FULL_NAME)
    found = []
    for kind, is_whole, names in kinds:
        real_names, sampled_names = names(real), names(sampled)
        if real_names is not None and sampled_names is not None:
            found.append(_reappearance(kind, is_whole, real_names, sampled_names))
    return tuple(found)


def are_unchecked(real: LabelledTable, sampled: LabelledTable, found: Sequence[Overlap]) -> bool:
    """Tells whether the sample has names that none of the real table are known for.

    Where it has whole names, parts of them that were looked for do not count.
    """
    if has_whole_names(sampled):
        return not has_whole_names(real)
    return any(map(sampled.has, NAMES)) and not found


def has_whole_names(table: LabelledTable) -> bool:
    """Tells whether a table holds full names, or first and last ones."""
    return table.has("fullname") or table.has("firstname", "lastname")


def _full_names(table: LabelledTable) -> pd.Series | None:
    names = table.texts("fullname")
    return _first_and_last(table) if names is None else names


def _first_and_last(table: LabelledTable) -> pd.Series | None:
    if not table.has("firstname", "lastname"):
        return None
    columns = [table.columns["firstname"], table.columns["lastname"]]
    parts = table.df[columns].dropna().astype(str)
    return parts[columns[0]] + " " + parts[columns[1]]


def _first_names(table: LabelledTable) -> pd.Series | None:
    return table.texts("firstname")


def _last_names(table: LabelledTable) -> pd.Series | None:
    return table.texts("lastname")


_FULL_NAME = ("Full name", True, _full_names)
_KINDS = (
    _FULL_NAME,
    ("First and last name together", True, _first_and_last),
    ("First name", False, _first_names),
    ("Last name", False, _last_names),
)


def _reappearance(kind: str, is_whole: bool, real: pd.Series, sampled: pd.Series) -> Overlap:
    spellings = _spellings(real)
    shared = _rows_of(sampled, spellings.index)
    return Overlap(
        kind,
        is_whole,
        len(spellings),
        len(shared),
        len(sampled),
        int(shared.sum()),
        tuple(str(name) for name in spellings[shared.index[:MOST_EXAMPLES]]),
    )


def _spellings(names: pd.Series) -> pd.Series:
    """Each distinct name as written, the first spelling of the alphabet, by its folded form."""
    distinct = pd.Index(names.unique()).sort_values()
    spellings = pd.Series(distinct, index=_folded(distinct))
    return spellings[~spellings.index.duplicated() & (spellings.index != "")]


def _rows_of(names: pd.Series, wanted: pd.Index) -> pd.Series:
    """How many rows bear each of the wanted names, the most frequent first, by folded form."""
    counts = names.value_counts()
    folded = _folded(counts.index)
    is_wanted = folded.isin(wanted)
    rows = counts[is_wanted].groupby(folded[is_wanted]).sum()
    return rows.sort_values(ascending=False, kind="stable")


def _folded(names: pd.Index) -> pd.Index:
    # Over distinct names, a loop takes a fraction of the time of pandas' own three calls.
    return pd.Index([" ".join(name.casefold().split()) for name in names.tolist()], dtype=object)

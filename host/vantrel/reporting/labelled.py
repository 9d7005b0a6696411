"""Looks up the columns of a table by the attribute that each holds."""

from __future__ import annotations

from collections.abc import Mapping
from dataclasses import dataclass

import pandas as pd


@dataclass(frozen=True)
class LabelledTable:
    """A table and what its columns hold.

    Args:
        df: The table.
        columns: Its columns by the attribute that each holds; others are not looked at.
    """

    df: pd.DataFrame
    columns: Mapping[str, str]

    def __len__(self) -> int:
        """The number of rows."""
        return len(self.df)

    def has(self, *attributes: str) -> bool:
        """Tells whether the table holds all of these attributes."""
        return all(self.columns.get(attribute) in self.df.columns for attribute in attributes)

    def values(self, attribute: str) -> pd.Series:
        """The values of an attribute that the table holds, missing ones too."""
        return self.df[self.columns[attribute]]

    def texts(self, attribute: str) -> pd.Series | None:
        """The values of an attribute as texts, without the missing ones.

        Returns:
            A Series on the table's own index, or None where the table has no such column.
        """
        return self.values(attribute).dropna().astype(str) if self.has(attribute) else None


def column_names(real: LabelledTable, sampled: LabelledTable, attribute: str) -> str:
    """What an attribute's column is called: both names, the real one first, if they differ."""
    names = [table.columns[attribute] for table in (real, sampled) if table.has(attribute)]
    return " / ".join(dict.fromkeys(names))


def most_frequent(values: pd.Series) -> pd.Series:
    """Counts values, the most frequent first, equally frequent ones in the order of the alphabet.

    Returns:
        The count of each distinct value; the index holds the values.
    """
    return values.value_counts().sort_index().sort_values(ascending=False, kind="stable")

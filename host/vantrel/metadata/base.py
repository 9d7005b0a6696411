"""What every meta has in common."""

from __future__ import annotations

from abc import ABC, abstractmethod
from typing import Any, ClassVar, Self

import pandas as pd

from vantrel.errors import ColumnNotFoundError, FittingError
from vantrel.hints import listed


class ValueMeta(ABC):
    """Describes a column, or a group of columns, of a table.

    Attributes:
        kind: The name of the meta's type in its dictionary form.
        name: The name of the column or of the group.
        nan_freq: The share of missing values, from 0 to 1; ``None`` before it is known.
    """

    kind: ClassVar[str]

    def __init__(self, name: str, nan_freq: float | None = None) -> None:
        self.name = name
        self.nan_freq = nan_freq

    @abstractmethod
    def extract(self, df: pd.DataFrame) -> Self:
        """Learns from a table, in place of all that was learnt before.

        Raises:
            ColumnNotFoundError: The table lacks a column that the meta describes.
        """

    @abstractmethod
    def to_dict(self) -> dict[str, Any]:
        """Gives the meta's dictionary form: plain JSON, all that ``from_dict`` needs."""

    @classmethod
    @abstractmethod
    def from_dict(cls, d: dict[str, Any]) -> Self:
        """Rebuilds a meta from its dictionary form.

        Raises:
            KeyError: The form lacks a key.
        """

    def __repr__(self) -> str:
        return f"{type(self).__name__}({self.name!r}, nan_freq={self.nan_freq!r})"


def column_of(df: pd.DataFrame, name: str) -> pd.Series:
    """Gives a table's column.

    Raises:
        ColumnNotFoundError: There is none; the error names those that are there.
        FittingError: There are several of that name.
    """
    if name not in df.columns:
        known = listed(df.columns) or "none"
        raise ColumnNotFoundError(f"The table has no column {name!r}; its columns are: {known}.")
    column = df[name]
    if column.ndim > 1:
        raise FittingError(
            f"The table has {column.shape[1]} columns {name!r}: rename all but one of them."
        )
    return column

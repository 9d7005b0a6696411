"""Columns of names without an order."""

from __future__ import annotations

from collections.abc import Iterable
from typing import Any, Self

import pandas as pd

from vantrel.errors import ArgumentTypeError
from vantrel.metadata.base import ValueMeta, column_of


class Nominal(ValueMeta):
    """Describes a column whose values are names, such as countries.

    Args:
        name: The column's name.
        categories: The distinct values, where they are known already.
        nan_freq: The share of missing values, where it is known already.
    """

    kind = "nominal"

    def __init__(
        self, name: str, categories: Iterable[Any] | None = None, nan_freq: float | None = None
    ) -> None:
        super().__init__(name, nan_freq)
        self._categories = None if categories is None else list(categories)

    @property
    def categories(self) -> list[Any] | None:
        """The distinct values in the order of first appearance; ``None`` before extraction."""
        return self._categories

    @property
    def extracted(self) -> bool:
        """Whether the categories are known."""
        return self._categories is not None

    def extract(self, df: pd.DataFrame) -> Self:
        """Reads the categories and the share of missing values from the column.

        Raises:
            ColumnNotFoundError: There is no such column.
            ArgumentTypeError: It holds values that cannot be told apart, such as lists.
            FittingError: There are several of that name.
        """
        column = column_of(df, self.name)
        try:
            self._categories = self._distinct(column.dropna())
        except (TypeError, NotImplementedError) as error:
            raise ArgumentTypeError(
                f"Column {self.name!r} holds values that cannot be told apart, such as lists: give"
                " it texts."
            ) from error
        self.nan_freq = float(column.isna().mean()) if len(column) else 0.0
        return self

    def _distinct(self, values: pd.Series) -> list[Any]:
        return values.unique().tolist()

    def to_dict(self) -> dict[str, Any]:
        """Gives the dictionary form: type, name, categories and share of missing values."""
        return {
            "type": self.kind,
            "name": self.name,
            "categories": None if self._categories is None else list(self._categories),
            "nan_freq": self.nan_freq,
        }

    @classmethod
    def from_dict(cls, d: dict[str, Any]) -> Self:
        """Rebuilds the meta; what was not known when it was written is not known again."""
        return cls(d["name"], categories=d.get("categories"), nan_freq=d.get("nan_freq"))

"""The columns that together describe a person."""

from __future__ import annotations

from collections import Counter
from collections.abc import Iterable, Iterator
from contextlib import contextmanager
from dataclasses import asdict
from typing import Any, Self

import pandas as pd

from vantrel.attributes import LEARNT
from vantrel.config import PersonLabels
from vantrel.errors import ArgumentError
from vantrel.metadata.base import ValueMeta, column_of
from vantrel.metadata.nominal import Nominal
from vantrel.metadata.value.string import String


class Person(ValueMeta):
    """Describes a group of person columns by the labels that tie them together.

    ``meta[column]`` is the meta of the gender, title or country column.

    Args:
        name: The name of the group.
        labels: The column of each attribute.
        locales: Locales of the people where no country column tells them; ``None`` leaves the
            choice to the model.
        nan_freq: The share of rows that hold nothing of a person, where it is known already.

    Attributes:
        labels: The column of each attribute.
        locales: See above.
        columns: The labelled columns in the order of the table that was extracted; ``None``
            before.
        told_by: What told the column of each attribute, where :func:`vantrel.fit` has fitted.
        learnt_from: The number of rows of that table.
        notes: What it noted of the table, a sentence or two each.
        rows: The combinations of its rows; None where the model has seen no more than columns.
        ways: How people are reached; None where the bare model decides.

    Raises:
        ArgumentError: Two labels name one column.
    """

    kind = "person"

    def __init__(
        self,
        name: str,
        labels: PersonLabels,
        locales: Iterable[str] | None = None,
        nan_freq: float | None = None,
    ) -> None:
        super().__init__(name, nan_freq)
        self.labels = labels
        self.locales = None if locales is None else list(locales)
        self.columns: list[str] | None = None
        self.told_by: dict[str, str] = {}
        self.learnt_from = 0
        self.notes: list[str] = []
        self.rows: Any = None
        self.ways: Any = None
        self._refuse_repeated_columns()
        self._children: dict[str, Nominal] = {
            self.params[attribute]: (Nominal if attribute == "country" else String)(
                self.params[attribute]
            )
            for attribute in LEARNT  # names and numbers of real people stay out of the meta
            if attribute in self.params
        }

    def _refuse_repeated_columns(self) -> None:
        for column, count in Counter(self.params.values()).items():
            if count > 1:
                sharers = [attribute for attribute, c in self.params.items() if c == column]
                raise ArgumentError(
                    f"Column {column!r} is labelled {' and '.join(map(repr, sharers))}: "
                    "give each attribute a column of its own."
                )

    def __getitem__(self, column: str) -> Nominal:
        try:
            return self._children[column]
        except KeyError:
            known = ", ".join(map(repr, self._children)) or "none"
            raise KeyError(
                f"Person {self.name!r} has no meta of column {column!r}; it has: {known}"
            ) from None

    @property
    def params(self) -> dict[str, str]:
        """The column of each attribute that has one, in the order of the labels."""
        return {attribute: column for attribute, column in vars(self.labels).items() if column}

    @property
    def categories(self) -> list[str] | None:
        """The labelled columns that the extracted table had; ``None`` before extraction."""
        return self.columns

    def extract(self, df: pd.DataFrame) -> Self:
        """Reads gender, title, country, column order and missing rows from a table.

        Args:
            df: The table. It must have the labelled gender, title and country columns; a label
                of another attribute may name a column that only the samples shall have.

        Raises:
            ColumnNotFoundError: The gender, title or country column is not there.
        """
        for column in self._children:
            column_of(df, column)
        labelled = set(self.params.values())
        self.columns = [column for column in df.columns if column in labelled]
        rows_missing = df[self.columns].isna().all(axis="columns")
        self.nan_freq = float(rows_missing.mean()) if self.columns and len(df) else 0.0
        for child in self._children.values():
            child.extract(df)
        self.rows = None
        return self

    @contextmanager
    def unfold(self, df: pd.DataFrame) -> Iterator[pd.DataFrame]:
        """Gives a frame that has the person's columns side by side.

        The tables of this package keep them so always; nothing has to be folded back on leaving.
        """
        yield df

    def revert_df_from_children(self, df: pd.DataFrame) -> pd.DataFrame:
        """Brings a generated frame to the layout of the extracted table.

        Returns:
            The frame's columns in the order of that table, then those that it did not have in
            the order of the labels.
        """
        columns = list(df.columns)
        ordered = self.ordered_columns(columns)
        return df if columns == ordered else df.reindex(columns=ordered)

    def ordered_columns(self, columns: list[str]) -> list[str]:
        """Gives these columns in the order that ``revert_df_from_children`` brings them into."""
        wanted = dict.fromkeys([*(self.columns or []), *self.params.values(), *columns])
        return [column for column in wanted if column in columns]

    def to_dict(self) -> dict[str, Any]:
        """Gives the dictionary form: labels, locales, column order and the column metas."""
        return {
            "type": self.kind,
            "name": self.name,
            "labels": asdict(self.labels),
            "locales": self.locales,
            "nan_freq": self.nan_freq,
            "columns": self.columns,
            "children": {column: child.to_dict() for column, child in self._children.items()},
        }

    @classmethod
    def from_dict(cls, d: dict[str, Any]) -> Self:
        """Rebuilds the meta with its labels and column metas."""
        meta = cls(d["name"], PersonLabels(**d["labels"]), d["locales"], d["nan_freq"])
        meta.columns = d["columns"]
        meta._children = {
            column: type(child).from_dict(d["children"][column])
            for column, child in meta._children.items()
        }
        return meta

"""Frequencies of the values of one column."""

from __future__ import annotations

import inspect
from collections.abc import Sequence
from dataclasses import dataclass
from typing import Any, Self, cast

import numpy as np
import pandas as pd

from vantrel.errors import ArgumentError, ArgumentTypeError, FittingError, ModelNotFittedError
from vantrel.metadata import Nominal
from vantrel.metadata.base import column_of
from vantrel.metadata.forms import meta_from_dict
from vantrel.model.base import DiscreteModel

_ANY_ARGUMENTS = inspect.Parameter.VAR_POSITIONAL
_ANY_KEYWORDS = inspect.Parameter.VAR_KEYWORD
_REQUIRED = inspect.Parameter.empty


@dataclass(frozen=True)
class Drawn:
    """Values that were drawn.

    Attributes:
        values: The values that there are.
        positions: The place of each drawn one among them, -1 for a missing value: 64-bit
            integers of shape ``(rows,)``.
    """

    values: list[Any]
    positions: np.ndarray[tuple[int], np.dtype[np.int64]]

    def series(self, rows: Sequence[int] | None = None) -> pd.Series:
        """Gives the values, of all rows or of those at some places, with the index 0 to n - 1."""
        positions = self.positions if rows is None else self.positions[list(rows)]
        column = pd.Series(self.values)
        if (positions < 0).any():
            # Looking up -1 finds nothing: pandas puts in what stands for a missing value.
            return column.reindex(positions).reset_index(drop=True)
        return pd.Series(column.array.take(positions), dtype=column.dtype, copy=False)


def nothing_to_learn(column: str, rows: int) -> FittingError:
    """The error of a column without a value that is understood."""
    return FittingError(
        f"Column {column!r} has nothing to learn from: each of its {rows} values is missing or not"
        " understood."
    )


class Histogram[ValueT](DiscreteModel[Nominal, ValueT]):
    """Learns how often each value of a column occurs and draws values as often.

    A subclass may learn other values than the column's own (keys of groups of them). What its
    constructor takes beside ``meta`` are its settings: those that are kept in attributes of the
    same names are part of the dictionary form.

    Args:
        meta: What is known of the column. The share of missing values is kept in its
            ``nan_freq``, its categories are learnt unless they are known already.
    """

    def __init__(self, meta: Nominal) -> None:
        super().__init__(meta=meta)
        self._probabilities: dict[ValueT, float] | None = None
        # Whether the categories are this model's to learn, not those of whoever shares the meta.
        self._learns_categories = False

    def fit(self, df: pd.DataFrame) -> Self:
        """Learns the frequencies from a table, in place of what was learnt before.

        Args:
            df: A frame that has the model's column.

        Raises:
            ColumnNotFoundError: There is no such column.
            FittingError: The column has no value to learn from.
        """
        column = column_of(df, self.name)
        shares = column.value_counts(sort=False, normalize=True)
        values = column.dropna().unique().tolist()
        if not values:
            raise nothing_to_learn(self.name, len(column))
        self._learns_categories |= not self._meta.extracted
        if self._learns_categories:
            self._meta.extract(df)
        self._probabilities = {value: float(shares[value]) for value in values}
        self._meta.nan_freq = float(column.isna().mean())
        return self

    def sample(
        self,
        n: int | None = None,
        produce_nans: bool = True,
        conditions: pd.DataFrame | None = None,
        associations: list[Any] | None = None,  # noqa: ARG002 - taken for all models alike
    ) -> pd.DataFrame:
        """Draws values from the learnt frequencies.

        Args:
            n: The number of rows; the number of rows of ``conditions`` where that is given.
            produce_nans: Whether to draw missing values, too, as often as the data had them.
            conditions: Values that are given. A column of the model's name is the result.
            associations: Accepted for all models alike; one column has none.

        Returns:
            A frame of one column, named as the model's. Drawn values have the index 0 to n - 1.

        Raises:
            ModelNotFittedError: Nothing has been learnt yet.
            ArgumentError: Neither ``n`` nor ``conditions`` is given, or ``n`` is below 0.
        """
        if conditions is not None and self.name in conditions.columns:
            return conditions[[self.name]]
        rows = n if conditions is None else len(conditions)
        return pd.DataFrame({self.name: Histogram.draw(self, rows, produce_nans).series()})

    def draw(self, rows: int | None, produce_nans: bool = True) -> Drawn:
        """Draws as ``sample`` does, but gives positions among the values in place of a frame.

        Raises:
            ModelNotFittedError: Nothing has been learnt yet.
            ArgumentError: ``rows`` is missing or below 0.
        """
        if rows is None or rows < 0:
            raise ArgumentError("Give 'n', a number of rows that is not below 0, or 'conditions'.")
        if not self._probabilities:
            raise ModelNotFittedError(f"Nothing has been learnt of column {self.name!r} yet.")
        weights = np.fromiter(self._probabilities.values(), dtype=float)
        positions = self._rng.choice(len(weights), size=rows, p=weights / weights.sum())
        if produce_nans and self._meta.nan_freq:
            positions[self._rng.random(rows) < self._meta.nan_freq] = -1
        return Drawn(list(self._probabilities), positions)

    # Whoever replaces `sample` replaces this way to its values with it.
    sample.positions = draw  # type: ignore[attr-defined]  # of a function

    @classmethod
    def _settings(cls) -> dict[str, inspect.Parameter]:
        """What the constructors of this class and its bases take by name, beside the meta."""
        constructors = [vars(each)["__init__"] for each in cls.__mro__ if "__init__" in vars(each)]
        taken = [inspect.signature(each).parameters for each in constructors[:-1]]  # not object's
        return {
            name: parameter
            for parameters in reversed(taken)
            for name, parameter in list(parameters.items())[1:]
            if name != "meta" and parameter.kind not in (_ANY_ARGUMENTS, _ANY_KEYWORDS)
        }

    def to_dict(self) -> dict[str, Any]:
        """Gives the dictionary form: the meta, the probabilities and the settings.

        Raises:
            ArgumentTypeError: A value is not a string and so cannot be a key in JSON.
        """
        for value in self._probabilities or {}:
            if not isinstance(value, str):
                raise ArgumentTypeError(
                    f"Value {value!r} of column {self.name!r} cannot be stored: convert the column"
                    " to strings before fitting."
                )
        d = super().to_dict()
        d["probabilities"] = None if self._probabilities is None else dict(self._probabilities)
        d |= {name: getattr(self, name) for name in self._settings() if hasattr(self, name)}
        return d

    @classmethod
    def from_dict(cls, d: dict[str, Any]) -> Self:
        """Rebuilds a model from its dictionary form.

        Raises:
            KeyError: The form lacks a key; a setting that has a default may be left out.
        """
        taken = inspect.signature(cls).parameters.values()
        takes_any = any(each.kind is _ANY_KEYWORDS for each in taken)
        settings = {
            name: d[name]
            for name, parameter in cls._settings().items()
            if (takes_any or parameter in taken) and (name in d or parameter.default is _REQUIRED)
        }
        model = cls(meta=cast(Nominal, meta_from_dict(d["meta"])), **settings)
        model._probabilities = d["probabilities"]
        return model

"""What every model has in common."""

from __future__ import annotations

import os
from typing import Any, Self, cast
from weakref import WeakValueDictionary

import numpy as np
import pandas as pd

from vantrel.metadata.base import ValueMeta
from vantrel.metadata.forms import meta_from_dict

# By their identity: a subclass may compare models in whatever way, and so have no hash.
_models: WeakValueDictionary[int, DiscreteModel[Any, Any]] = WeakValueDictionary()


def _free_generators() -> None:
    """Frees the generators in a forked process, where no other thread draws."""
    bits: list[Any] = [getattr(model._rng, "bit_generator", None) for model in _models.values()]
    for each in (*bits, np.random.get_bit_generator()):
        if each is not None:
            each.lock._at_fork_reinit()


os.register_at_fork(after_in_child=_free_generators)


class DiscreteModel[MetaT: ValueMeta, ValueT]:
    """A model of values that come from a finite set or are generated one by one.

    No method here calls one that a subclass might replace, so that a subclass is free to give
    its methods other meanings and orders.

    Args:
        meta: What is known of the modelled column or group of columns.
    """

    def __init__(self, meta: MetaT) -> None:
        self._meta = meta
        self._rng = np.random.default_rng()
        _models[id(self)] = self

    @property
    def meta(self) -> MetaT:
        """What is known of the modelled column or group of columns."""
        return self._meta

    @property
    def name(self) -> str:
        """The name of the modelled column or group."""
        return self._meta.name

    def fit(self, df: pd.DataFrame) -> Self:
        """Learns the meta from a table, in place of what it knew before."""
        self._meta.extract(df)
        return self

    def to_dict(self) -> dict[str, Any]:
        """Gives the dictionary form, plain JSON: the meta. Random states are not part of it."""
        return {"meta": self._meta.to_dict()}

    @classmethod
    def from_dict(cls, d: dict[str, Any]) -> Self:
        """Rebuilds a model from its dictionary form.

        Raises:
            KeyError: The form lacks a key.
        """
        return cls(meta=cast(MetaT, meta_from_dict(d["meta"])))

"""What makes the blocks of a sample, kept with its model for the next one."""

from __future__ import annotations

import weakref
from collections.abc import Iterator
from contextlib import contextmanager
from typing import Any, NamedTuple, Protocol

import numpy as np
import pandas as pd

from vantrel.model.models.person import PersonModel
from vantrel.sampling.people import sample_people
from vantrel.sampling.real import RealRows
from vantrel.sampling.seeding import OwnSources


class Maker(Protocol):
    """Makes blocks."""

    def block(self, seed: np.random.SeedSequence, numbers: range) -> pd.DataFrame:
        """Makes the rows of some numbers in the whole sample, from a seed of their own."""


class BareRows:
    """Makes rows as the bare model does."""

    def __init__(self, model: PersonModel, conditions: pd.DataFrame | None) -> None:
        self._sources = OwnSources(model)
        self._conditions = conditions

    def block(self, seed: np.random.SeedSequence, numbers: range) -> pd.DataFrame:
        """Makes the rows of some numbers in the whole sample, from a seed of their own."""
        given = self._conditions
        if given is not None:
            given = given.iloc[numbers.start : numbers.stop].reset_index(drop=True)
        return sample_people(self._sources.seeded(seed), len(numbers), given)


@contextmanager
def maker_of(
    model: PersonModel, conditions: pd.DataFrame | None, *, is_exact: bool
) -> Iterator[Maker]:
    """Gives what makes the rows of a model.

    To make it takes as long as thousands of rows. So one that depends on the model alone is kept,
    until the model changes or is freed. Whoever is given it has it alone: a sample that is made
    amid another, in a signal handler or on another thread, has one of its own.

    Args:
        model: A fitted model.
        conditions: What is given for any of the rows, as ``prepare_conditions`` made it.
        is_exact: Whether the rows are the bare model's, whatever combinations were learnt.
    """
    if is_exact or model.meta.rows is None:
        yield BareRows(model, conditions)
    elif conditions is not None:
        yield RealRows(model, conditions)
    else:
        key, state = id(model), _state(model)
        kept = _kept.pop(key, None)
        maker = kept.maker if kept and _is_same(kept.state, state) else RealRows(model, None)
        yield maker
        _kept[key] = _Kept(maker, state, weakref.ref(model, lambda _: _kept.pop(key, None)))


class _Kept(NamedTuple):
    """A maker with the state that its model was in, and what drops both with the model."""

    maker: RealRows
    state: list[Any]
    forget: weakref.ref[PersonModel]


# By their identity, as models of a subclass may have no hash.
_kept: dict[int, _Kept] = {}


def _state(model: PersonModel) -> list[Any]:
    """All of a model that its maker may depend on: what is the same makes the same."""
    meta, config = model.meta, model.config
    parts = [vars(model) | {"_rng": None}, *map(vars, (meta, meta.labels, config))]
    named = [each for part in parts for pair in part.items() for each in pair]
    return [type(model), *named, *(meta.columns or ()), *(meta.locales or ()), *config.genders]


def _is_same(state: list[Any], other: list[Any]) -> bool:
    """Whether two states are of the very same parts, which need not be comparable."""
    return len(state) == len(other) and all(
        one is another for one, another in zip(state, other, strict=True)
    )

"""Makes samples reproducible."""

from __future__ import annotations

import copy
import logging
import random
import secrets
from collections.abc import Iterable
from types import SimpleNamespace
from typing import Any, Protocol

import faker.generator
import numpy as np
from faker import Faker

from vantrel.errors import ArgumentError, ArgumentTypeError, ModelNotFittedError
from vantrel.model.models.person import PersonModel
from vantrel.util.locale.copies import copied
from vantrel.util.locale.locale import Provider, get_country_to_provder_map

_log = logging.getLogger(__name__)


def seed_everything(model: PersonModel, seed: int | np.random.SeedSequence) -> None:
    """Seeds every source of randomness that a sample draws from.

    These are the generators of the model and its hidden models, numpy's and the standard
    library's global ones, each Faker instance of the model and the generator that Faker instances
    without a seed share. Each gets a stream of its own. The same seed right before the same call
    gives the same table, also for a model that went through a file.

    Args:
        model: The model; its random generators are replaced.
        seed: An integer from 0 on, of any size, or a sequence made from one.

    Raises:
        ArgumentTypeError: The seed is neither.
        ArgumentError: The seed is negative.
    """
    _seed(model, seed, np.random, random, Faker)


def given_or_drawn(seed: int | None) -> int:
    """Gives the seed, or draws one and logs it, so that the same sample can be made again."""
    if seed is None:
        seed = secrets.randbits(128)  # as many as nobody can try
        _log.info("The seed is %d.", seed)
    return seed


class OwnSources:
    """Has a model sample from sources that nothing else in the process draws from.

    The model is a copy with generators and instances of Faker of its own. ``random``, ``np.random``
    and what Faker instances without a seed share are sources of its own, too, while it samples: the
    thread alone sees them that samples. So samples need not wait for each other, not even where one
    is made amid another, and leave nothing to be put back, whatever ends them.

    Args:
        model: The model to sample from; not changed.
    """

    def __init__(self, model: PersonModel) -> None:
        self._numpy = np.random.RandomState(0)
        self._random, self._shared = random.Random(0), random.Random(0)
        self._model = copy.copy(model)
        names: dict[str, Any] = vars(self._model)
        for name in ("hidden_model_gender", "hidden_model_country"):
            setattr(self._model, name, copy.copy(getattr(model, name)))
        # From the shared source each turns to one of its own when it is seeded.
        names["_country_to_provider_map"] = {
            place: copied(provider, faker.generator.random)
            for place, provider in list(_providers(model).items())
        }
        names["_sources"] = {
            "random": self._random,
            "np": SimpleNamespace(**{**vars(np), "random": self._numpy}),
            "get_country_to_provder_map": self._provider_map,
        }

    def seeded(self, seed: int | np.random.SeedSequence) -> PersonModel:
        """Gives the model, which samples as after :func:`seed_everything`."""
        _seed(self._model, seed, self._numpy, self._random, self._shared)
        return self._model

    def _provider_map(self, countries: Iterable[str], provider: Provider) -> dict[str, Faker]:
        made = get_country_to_provder_map(countries, provider)
        return {place: copied(each, self._shared) for place, each in made.items()}


class _Seedable(Protocol):
    """A source, or the module or class whose functions draw from it."""

    def seed(self, seed: Any, /) -> None:
        """Starts it anew."""


def _seed(
    model: PersonModel,
    seed: int | np.random.SeedSequence,
    numpy: _Seedable,
    module: _Seedable,
    shared: _Seedable,
) -> None:
    *parts, of_numpy, of_module, of_shared, of_places = _checked(seed).spawn(7)
    # A stream is set aside for a model that is not there: the others keep theirs.
    models = (model, model.hidden_model_gender, model.hidden_model_country)
    for part, stream in zip(models, parts, strict=True):
        if part is not None:
            part._rng = np.random.default_rng(stream)
    numpy.seed(of_numpy.generate_state(8))
    module.seed(_integer(of_module))
    for place, provider in _providers(model).items():
        provider.seed_instance(_integer(_stream_of(place, of_places)))
    shared.seed(_integer(of_shared))  # after those, some of which may draw from it


def _providers(model: PersonModel) -> dict[str, Faker]:
    try:
        return model.country_to_provider_map
    except ModelNotFittedError:  # a model without a country column makes its map on sampling
        return {}


def _stream_of(place: str, stream: np.random.SeedSequence) -> np.random.SeedSequence:
    """Gives a place the same stream whatever other places the model knows, in whatever order."""
    return np.random.SeedSequence(stream.entropy, spawn_key=(*stream.spawn_key, *place.encode()))


def _checked(seed: int | np.random.SeedSequence) -> np.random.SeedSequence:
    """Makes a sequence that nothing has been spawned from yet."""
    if isinstance(seed, np.random.SeedSequence):
        return np.random.SeedSequence(seed.entropy, spawn_key=seed.spawn_key)
    if isinstance(seed, bool) or not isinstance(seed, int | np.integer):
        raise ArgumentTypeError(f"A seed is an integer from 0 on, not {seed!r}.")
    if seed < 0:
        raise ArgumentError(f"A seed is an integer from 0 on, not {seed}.")
    return np.random.SeedSequence(int(seed))


def _integer(stream: np.random.SeedSequence) -> int:
    """Gives 128 bits of a stream as an integer that is the same on every machine."""
    return int.from_bytes(stream.generate_state(4).astype("<u4").tobytes(), "little")

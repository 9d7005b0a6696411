"""Makes samples reproducible."""

from __future__ import annotations

import logging
import random
import secrets
import threading
from collections.abc import Iterator
from contextlib import contextmanager
from types import ModuleType

import faker.generator
import numpy as np
from faker import Faker

import vantrel.model.models.person as person
from vantrel.errors import ArgumentError, ArgumentTypeError, ModelNotFittedError
from vantrel.model.models.person import PersonModel

_log = logging.getLogger(__name__)

# The sources that belong to the process can serve one sample at a time.
_in_use = threading.Lock()


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
    _seed(model, seed, random)


def given_or_drawn(seed: int | None) -> int:
    """Gives the seed, or draws one and logs it, so that the same sample can be made again."""
    if seed is None:
        seed = secrets.randbits(32)
        _log.info("The seed is %d.", seed)
    return seed


@contextmanager
def own_sources(model: PersonModel, seed: int | np.random.SeedSequence) -> Iterator[None]:
    """Seeds every source for a sample, which has sources of its own as far as there can be any.

    The module of the model draws from a module in the place of ``random`` meanwhile, out of reach
    of other threads. Of numpy's global generator and the one that Faker instances share there is
    one a process: they are put back as they were. Other threads that want the same wait.
    """
    shared = faker.generator.random
    generator = faker.generator.Generator
    names = vars(person)
    with _in_use:
        numpy_state, shared_state = np.random.get_state(), shared.getstate()
        seeded = generator._global_seed, generator._is_seeded
        module_random = names["random"]
        try:
            names["random"] = _second_random
            _seed(model, seed, _second_random)
            yield
        finally:
            names["random"] = module_random
            np.random.set_state(numpy_state)
            shared.setstate(shared_state)
            generator._global_seed, generator._is_seeded = seeded


def _seed(model: PersonModel, seed: int | np.random.SeedSequence, module: ModuleType) -> None:
    streams = iter(_checked(seed).spawn(7))
    # A stream is set aside for a model that is not there: the others keep theirs.
    for part in (model, model.hidden_model_gender, model.hidden_model_country):
        stream = next(streams)
        if part is not None:
            part._rng = np.random.default_rng(stream)
    np.random.seed(next(streams).generate_state(8))
    module.seed(_integer(next(streams)))
    Faker.seed(_integer(next(streams)))
    stream = next(streams)
    for place, provider in _providers(model).items():
        provider.seed_instance(_integer(_stream_of(place, stream)))


def _another_random() -> ModuleType:
    """Makes a module with the functions of ``random`` that draw from a generator of its own."""
    module = ModuleType(random.__name__, "The functions of random on another generator.")
    source = random.Random()
    for name in random.__all__:
        if hasattr(source, name):
            setattr(module, name, getattr(source, name))
    return module


_second_random = _another_random()


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

"""The four random sources: seeding them, and seeing whether two runs left them alike."""

import random
from typing import Any

import faker.generator
import numpy as np
from faker import Faker

from vantrel.model.models.person import PersonModel


def faker_randoms(providers: dict[str, Any]) -> list[random.Random]:
    """Every random source behind the Faker instances, each once, in first-seen order."""
    sources = [faker.generator.random]
    for instance in providers.values():
        if isinstance(instance, Faker):
            sources += [factory.random for factory in instance.factories]
    return list({id(source): source for source in sources}.values())


def _provided_randoms(model: Any) -> list[random.Random]:
    return faker_randoms(model._country_to_provider_map)


def seed_sources(seed: int, model: PersonModel | None = None) -> None:
    """Seeds the global sources and, where a model is given, its own."""
    random.seed(seed)
    np.random.seed(seed)
    faker.generator.random.seed(seed)
    if model is None:
        return
    for part in (model, model.hidden_model_gender, model.hidden_model_country):
        if part is not None:
            part._rng = np.random.default_rng(seed)
    for number, source in enumerate(_provided_randoms(model)):
        source.seed(seed + number)


def _plain(state: Any) -> Any:
    """A generator's state with lists in place of arrays, which do not compare with ==."""
    if isinstance(state, dict):
        return {name: _plain(part) for name, part in state.items()}
    return state.tolist() if isinstance(state, np.ndarray) else state


def source_states(model: PersonModel | None = None) -> dict[str, Any]:
    """The state of every source, in a form that compares with ==."""
    states: dict[str, Any] = {
        "random": random.getstate(),
        "numpy": _plain(np.random.get_state(legacy=False)),
        "faker": faker.generator.random.getstate(),
    }
    if model is None:
        return states
    for name in ("hidden_model_gender", "hidden_model_country"):
        part = getattr(model, name)
        states[name] = None if part is None else part._rng.bit_generator.state
    states["model"] = model._rng.bit_generator.state
    states["providers"] = [s.getstate() for s in _provided_randoms(model)]
    return states


def set_states(states: dict[str, Any], model: PersonModel) -> None:
    """Puts every source back to where `source_states` found it."""
    random.setstate(states["random"])
    np.random.set_state(states["numpy"])
    faker.generator.random.setstate(states["faker"])
    for name in ("hidden_model_gender", "hidden_model_country"):
        if states[name] is not None:
            getattr(model, name)._rng.bit_generator.state = states[name]
    model._rng.bit_generator.state = states["model"]
    sources = _provided_randoms(model)
    for source, state in zip(sources, states["providers"], strict=True):
        source.setstate(state)

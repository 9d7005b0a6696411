"""Has the module make every value by a call of its own, for comparison.

The module makes a whole column at once only while nothing that it would otherwise call has been
replaced. Here every module that it has imported by name is replaced by an equal one: the calls and
their results stay the same, but the module cannot know that.
"""

from __future__ import annotations

import random
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from types import ModuleType
from typing import Any

import numpy as np
import pandas as pd

from vantrel.model.models import person
from vantrel.model.models.person import PersonModel
from vantrel.sampling.seeding import seed_everything

SEED = 1


@contextmanager
def plain_way() -> Iterator[None]:
    """Makes the module take the plain way inside the ``with`` block."""
    genuine = {name: value for name, value in vars(person).items() if isinstance(value, ModuleType)}
    vars(person).update({name: _equal(module) for name, module in genuine.items()})
    try:
        yield
    finally:
        vars(person).update(genuine)


def _equal(module: ModuleType) -> ModuleType:
    # A module again, so that the plain way's look-ups cost what they cost with the genuine one.
    stand_in = ModuleType(module.__name__)
    vars(stand_in).update(vars(module))
    return stand_in


def check_both_ways_agree(model: PersonModel, make: Callable[[], Any]) -> None:
    """Runs a call both ways from one seed.

    Args:
        model: The model whose sources of randomness are seeded.
        make: Makes a frame or a series.

    Raises:
        AssertionError: The results differ, or the global sources are left in different states.
    """
    seed_everything(model, SEED)
    at_once, sources_at_once = make(), _global_sources()
    with plain_way():
        seed_everything(model, SEED)
        one_by_one, sources_one_by_one = make(), _global_sources()
    if isinstance(at_once, pd.DataFrame):
        pd.testing.assert_frame_equal(at_once, one_by_one, check_exact=True)
    else:
        pd.testing.assert_series_equal(at_once, one_by_one, check_exact=True)
    assert sources_at_once == sources_one_by_one, "a global source was left in another state"


def _global_sources() -> tuple[Any, ...]:
    name, words, *rest = np.random.get_state()
    return random.getstate(), name, np.asarray(words).tolist(), rest

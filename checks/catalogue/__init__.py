"""Every call that is checked: each function and property of the module, working and failing."""

from __future__ import annotations

from . import (
    accounts,
    arguments,
    hidden_models,
    kinds,
    names,
    numbers,
    objects,
    person_model,
    sampling,
)
from .call import Call

PARTS = (objects, arguments, hidden_models, person_model, sampling, names, accounts, numbers, kinds)

CATALOGUE: dict[str, Call] = {call.name: call for part in PARTS for call in part.CALLS}

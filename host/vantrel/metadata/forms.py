"""Rebuilds a meta of any type from its dictionary form."""

from typing import Any

from vantrel.metadata.base import ValueMeta
from vantrel.metadata.nominal import Nominal
from vantrel.metadata.value import Person, String

_TYPES: dict[str, type[ValueMeta]] = {meta.kind: meta for meta in (Nominal, String, Person)}


def meta_from_dict(d: dict[str, Any]) -> ValueMeta:
    """Rebuilds the meta whose type the form names."""
    kind = d["type"]
    if kind not in _TYPES:
        raise ValueError(f"Unknown type of meta {kind!r}; known are: {', '.join(_TYPES)}.")
    return _TYPES[kind].from_dict(d)

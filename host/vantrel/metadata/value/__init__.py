"""Metas of values with a meaning of their own."""

from vantrel.metadata.value.person import Person
from vantrel.metadata.value.string import String

__all__ = ["Person", "String"]

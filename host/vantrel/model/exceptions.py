"""What can go wrong with a model."""

from vantrel.errors import ModelNotFittedError

__all__ = ["ModelNotFittedError"]

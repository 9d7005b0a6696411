"""What can go wrong with a model."""


class ModelNotFittedError(Exception):
    """A model was asked for what it learns from data before it was fitted."""

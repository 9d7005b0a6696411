"""Gender models of a column of titles."""

from vantrel.metadata.value import String
from vantrel.model.models.person import GenderModel

TITLES = ["Mrs", "Mr", "Mx", "Ms", "Dr"]


def model_of(categories: list[str] | None = None, **patterns: str) -> GenderModel:
    """A gender model whose column has these categories, or has not been looked at yet."""
    return GenderModel(String("title", categories=categories), **patterns)

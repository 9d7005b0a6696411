"""Columns whose values belong together."""

from dataclasses import dataclass, field


@dataclass
class Association:
    """Says that the values of some columns occur only in combinations that the data has.

    Attributes:
        associations: The names of the columns.
    """

    associations: list[str] = field(default_factory=list)

"""Everything that is compared of a table and its copy."""

from __future__ import annotations

from dataclasses import dataclass

from vantrel.reporting.copies.acted import ActedColumn
from vantrel.reporting.copies.cells import Kept, ReplacedColumn
from vantrel.reporting.copies.record import FoundLeak
from vantrel.reporting.nearness.nearness import Nearness


@dataclass(frozen=True)
class CopyFigures:
    """How a table and its copy compare.

    Args:
        real_rows: The rows of the original.
        copied_rows: The rows of the copy.
        made_rows: How many rows were made.
        kept: The columns that had to stay; empty where the rows are not as many.
        replaced: The columns whose people were replaced; likewise.
        acted: The columns that an action changed; likewise.
        nearness: What made-up people share with real ones.
        leaks: Who was still named when the copy was made.
        is_changed: Whether the copy is another one than was made; None if that is not known.
    """

    real_rows: int
    copied_rows: int
    made_rows: int
    kept: tuple[Kept, ...]
    replaced: tuple[ReplacedColumn, ...]
    acted: tuple[ActedColumn, ...]
    nearness: Nearness
    leaks: tuple[FoundLeak, ...]
    is_changed: bool | None

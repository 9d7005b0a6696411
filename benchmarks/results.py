"""One line of what sampling must reach."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Self

from .tables import figure, micros
from .timing import Cost

HEAD = ("Work", "against", "ours", "reached", "by round", "bar", "aim", "holds")


@dataclass(frozen=True)
class Limits:
    """What must be reached, and what should be.

    Attributes:
        bar: What must be reached.
        aim: What should be.
        at_most: Whether a smaller value is the better one.
    """

    bar: float
    aim: float
    at_most: bool = False

    def held_by(self, value: float) -> str:
        """Says which of the two a value reaches."""
        if self._reached(value, self.aim):
            return "aim"
        return "bar" if self._reached(value, self.bar) else "NO"

    def _reached(self, value: float, limit: float) -> bool:
        return value <= limit if self.at_most else value >= limit

    def cells(self) -> list[str]:
        """Gives the bar's and the aim's cell."""
        sign = "<=" if self.at_most else ">="
        return [f"{sign} {limit:g}" for limit in (self.bar, self.aim)]


@dataclass(frozen=True)
class Result:
    """What one work reached.

    Attributes:
        work: What was done.
        reference: What ours is compared with, as text with its unit.
        ours: The same of ours.
        reached: The ratio over all rounds.
        by_round: The ratio in each round.
        limits: What it must reach.
    """

    work: str
    reference: str
    ours: str
    reached: float
    by_round: tuple[float, ...]
    limits: Limits

    @classmethod
    def of_costs(cls, work: str, reference: Cost, ours: Cost, limits: Limits) -> Self:
        """Compares two costs, the dearer over the cheaper in the sense of the limits."""
        over, under = (ours, reference) if limits.at_most else (reference, ours)
        by_round = tuple(a / b for a, b in zip(over.rounds, under.rounds, strict=True))
        reached = over.median / under.median
        return cls(work, micros(reference.median), micros(ours.median), reached, by_round, limits)

    @classmethod
    def of_dict(cls, fields: dict[str, Any]) -> Self:
        """Gives the result whose fields JSON has carried."""
        limits = Limits(**fields["limits"])
        return cls(**fields | {"limits": limits, "by_round": tuple(fields["by_round"])})

    def cells(self) -> list[str]:
        """Gives the line's cells."""
        spread = f"{figure(min(self.by_round))}..{figure(max(self.by_round))}"
        compared = [self.reference, self.ours, figure(self.reached), spread]
        return [self.work, *compared, *self.limits.cells(), self.limits.held_by(self.reached)]

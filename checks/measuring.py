"""What is done in the process of one call, and what is said of it."""

from __future__ import annotations

from .catalogue import CATALOGUE
from .catalogue.parts import seed_all
from .deliberate import LEAKS
from .growth import BATCHES, Growth, growth
from .processes import Outcome

# Every leak on purpose shows in so many calls.
ENOUGH = 1000

WIDTH = 72
HEAD = f"{'call':{WIDTH}} {'calls':>6} {'blocks':>8} {'bytes':>8} {'refs':>8}  verdict"


def measured(name: str, calls: int) -> Growth:
    """Measures a call of the catalogue, or one that leaks on purpose."""
    if name in LEAKS:
        return growth(LEAKS[name][0].checked(), max(calls, ENOUGH), seed_all)
    call = CATALOGUE[name]
    return growth(call.checked(), calls // call.cost, seed_all)


def verdict(outcome: Outcome[Growth]) -> str:
    """Says what is wrong; empty where nothing is."""
    return outcome.trouble if outcome.answer is None else outcome.answer.complaint()


def line(name: str, outcome: Outcome[Growth]) -> str:
    """Gives the table's line of a call; the figures are those of one call."""
    if outcome.answer is None:
        return f"{name:{WIDTH}} {outcome.trouble}"
    figures = " ".join(f"{figure:8.2f}" for figure in outcome.answer.per_call())
    calls = outcome.answer.calls * BATCHES
    return f"{name:{WIDTH}} {calls:6} {figures}  {verdict(outcome) or 'ok'}"

"""What a verdict is."""

from __future__ import annotations

from dataclasses import dataclass

FINE = "fine"
LOOK = "look"
KNOWN = "known"
OPEN = "open"


@dataclass(frozen=True)
class Verdict:
    """A main figure.

    Args:
        about: What it is a figure of.
        figure: The figure itself, with its unit.
        state: :data:`FINE`, :data:`LOOK` where it asks for a look, :data:`KNOWN` where a
            difference is meant to be, :data:`OPEN` where there is nothing to judge by.
        words: What it means, in a sentence or two.
        section: The part of the report that tells more.
    """

    about: str
    figure: str
    state: str
    words: str
    section: str

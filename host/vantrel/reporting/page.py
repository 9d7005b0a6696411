"""Shows a comparison as one HTML page."""

from __future__ import annotations

import re
from collections.abc import Sequence
from dataclasses import dataclass
from typing import Any

from jinja2 import Environment, PackageLoader, StrictUndefined
from markupsafe import Markup, escape

from vantrel import wording
from vantrel.attributes import WORDS
from vantrel.reporting.copies.figures import CopyFigures
from vantrel.reporting.copies.record import CopyRecord
from vantrel.reporting.figures import Figures
from vantrel.reporting.frequencies import MOST_SHARES, Frequencies, Frequency
from vantrel.reporting.lengths import LengthBin, Lengths
from vantrel.reporting.names import MOST_NAMES, MOST_PLACES
from vantrel.reporting.nearness.judged import COPY, SAMPLE, unchecked_names
from vantrel.reporting.provenance import Provenance
from vantrel.reporting.verdict import Verdict
from vantrel.reporting.verdicts import UNKNOWN_CHANGES, verdicts, why_not_compared

# More bars than these hide what they show; further values stand in a list that can be opened.
MOST_BARS = 12

# As many figures fit under the bars of lengths on a telephone.
_MOST_TICKS = 8

# So many letters fit beside the figures of a table on a telephone.
_LONGEST_WORD = 16


@dataclass(frozen=True)
class Sources:
    """The names of the two tables, as the reader shall see them."""

    real: str
    sampled: str


def render(figures: Figures, sources: Sources, made: Provenance | None) -> str:
    """Makes one HTML page that needs nothing else: no script, no network, no other file.

    The same arguments give the same text. Values of the tables are escaped.

    Args:
        figures: What is shown.
        sources: Which tables were compared.
        made: How the sample was made, if that is known.
    """
    return _page(
        "report.html",
        figures=figures,
        sources=sources,
        origin=made,
        conditions=made and made.conditions,
        unknown_changes=UNKNOWN_CHANGES,
        made_table=SAMPLE.name,
        verdicts=verdicts(figures, made),
        bars=bars,
        scale=scale,
        ticks=ticks,
        why_not_compared=why_not_compared,
        most_shares=MOST_SHARES,
        most_names=MOST_NAMES,
        most_places=MOST_PLACES,
    )


def render_copy(
    figures: CopyFigures, judged: Sequence[Verdict], sources: Sources, made: CopyRecord
) -> str:
    """Makes the page of a copy, as :func:`render` makes that of a sample."""
    return _page(
        "copy.html",
        figures=figures,
        verdicts=judged,
        sources=sources,
        made=made,
        made_table=COPY.name,
    )


def _page(template: str, **values: Any) -> str:
    environment = Environment(
        loader=PackageLoader("vantrel.reporting", "template"),
        autoescape=True,
        undefined=StrictUndefined,
        trim_blocks=True,
        lstrip_blocks=True,
    )
    environment.filters |= {
        name: getattr(wording, name)
        for name in ("number", "counted", "percent", "distance", "points", "shown", "listed")
    }
    environment.filters["unbroken"] = unbroken
    shared = {"words": WORDS, "unchecked_names": unchecked_names()}
    return environment.get_template(template).render(shared | values)


def bars(shares: Frequencies) -> tuple[Frequency, ...]:
    """The values that get bars; a value is not left out if it would be the only one."""
    fits = shares.values <= MOST_BARS + 1
    return shares.shares if fits else shares.shares[:MOST_BARS]


def scale(items: Sequence[Frequency | LengthBin]) -> float:
    """The share that is as long as the chart: the greatest, or 1 where there is none."""
    shares = [share for each in items for share in (each.real, each.sampled) if share]
    return max(shares, default=1.0)


def ticks(lengths: Lengths) -> list[str]:
    """What stands under each bar of lengths, often nothing, so that there is room for it."""
    step = -(-len(lengths.bins) // _MOST_TICKS)
    return [
        (f"{each.low}" if each.high is not None else f"{each.low}+") if place % step == 0 else ""
        for place, each in enumerate(lengths.bins)
    ]


def unbroken(text: str) -> Markup:
    """A name whose words are not broken where it may be broken between them, as at an underscore.

    A word that is longer than a line of a telephone is broken all the same.
    """
    between_and_words = re.split(r"([^\W_]+)", wording.shown(text))
    pieces = [
        Markup('<span class="word">{}</span>').format(piece)
        if place % 2 and len(piece) <= _LONGEST_WORD
        else escape(piece) + Markup("<wbr>")
        for place, piece in enumerate(between_and_words)
    ]
    return Markup().join(pieces)

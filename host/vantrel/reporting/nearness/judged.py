"""What it means how near a sample comes to real people."""

from __future__ import annotations

from collections.abc import Iterator, Sequence

from vantrel.attributes import NAMES
from vantrel.hints import argument
from vantrel.reporting.nearness.nearness import Nearness
from vantrel.reporting.nearness.rare import Rare
from vantrel.reporting.nearness.shared import Shared
from vantrel.reporting.verdict import FINE, LOOK, OPEN, Verdict
from vantrel.wording import counted, number, percent

SECTION = "real-people"

_NAMES = "Real full names in the sample"
_RARE = "What few real people have"

_UNCHECKED_NAMES = (
    "Which columns of the real table hold whole names is not known. If there are any, name them:"
    " {firstname} and {lastname}, or {fullname}."
)
_COPIED = "Find out how they came into the sample before you hand it on."
_KEPT = (
    "So the sample tells of single people. Fit the model with a higher minimum count, or take these"
    " rows out."
)


def unchecked_names() -> str:
    """Tells that real names were not looked for, and how they can be."""
    named = {attribute: argument(attribute, "COLUMN") for attribute in NAMES}
    return _UNCHECKED_NAMES.format_map(named)


def judge_nearness(nearness: Nearness) -> Iterator[Verdict]:
    """Judges how near a sample comes to real people; where it has nothing there is no verdict."""
    if nearness.has_unchecked_names:
        yield Verdict(_NAMES, "not checked", OPEN, unchecked_names(), SECTION)
    elif names := _compared(nearness.names):
        yield _of_shared(_NAMES, "whole name", _worst(names))
    for part in _compared(nearness.parts):
        things = part.kind.lower().replace("mail address", "mail addresse") + "s"
        yield _of_shared(f"Real {things} in the sample", part.kind.lower(), part)
    if nearness.rows and _compared([nearness.rows]):
        yield _of_shared("Whole real rows in the sample", "whole row", nearness.rows)
    if nearness.rare:
        yield _of_rare(nearness.rare)


def _compared(found: Sequence[Shared]) -> list[Shared]:
    return [each for each in found if each.real_values and each.sampled_rows]


def _worst(names: Sequence[Shared]) -> Shared:
    return max(names, key=lambda each: (not each.is_by_chance, each.bearing))


def _of_shared(about: str, thing: str, shared: Shared) -> Verdict:
    if not shared.bearing:
        words = f"No sampled row has the {thing} of a real person."
        return Verdict(about, "0", FINE, words, SECTION)
    figure = counted(shared.bearing, "row")
    if shared.is_by_chance:
        words = (
            f"Chance explains about {_about(shared.chance)}: what is made up without looking at"
            f" real people meets the {thing} of one now and then."
        )
        return Verdict(about, figure, FINE, words, SECTION)
    words = (
        f"{percent(shared.bearing / shared.sampled_rows)} of the sampled values are the {thing} of"
        f" a real person, and chance explains about {_about(shared.chance)} of them. {_COPIED}"
    )
    return Verdict(about, figure, LOOK, words, SECTION)


def _of_rare(rare: Sequence[Rare]) -> Verdict:
    there = sum(each.real for each in rare)
    found = sum(each.found for each in rare)
    figure = f"{number(found)} of {number(there)}"
    if not found:
        words = "No value or combination that fewer than five real rows have came through."
        return Verdict(_RARE, figure, FINE, words, SECTION)
    came = [each for each in rare if not each.is_by_chance]
    if not came:
        words = (
            "Frequent values that met by chance explain what fewer than five real rows have, too."
        )
        return Verdict(_RARE, figure, FINE, words, SECTION)
    kinds = "; ".join(f"{each.kind.lower()} in {counted(each.bearing, 'row')}" for each in came)
    words = f"What fewer than five real rows have came through: {kinds}. {_KEPT}"
    return Verdict(_RARE, figure, LOOK, words, SECTION)


def _about(chance: float) -> str:
    return "none" if chance < 0.5 else number(round(chance))

"""What it means how near a sample comes to real people."""

from __future__ import annotations

from collections.abc import Iterator, Sequence
from dataclasses import dataclass

from vantrel.attributes import NAMES
from vantrel.hints import argument
from vantrel.reporting.nearness.in_place import InPlace
from vantrel.reporting.nearness.last_names import UNLISTED
from vantrel.reporting.nearness.nearness import Nearness
from vantrel.reporting.nearness.rare import Rare
from vantrel.reporting.nearness.shared import Shared
from vantrel.reporting.verdict import FINE, LOOK, OPEN, Verdict
from vantrel.wording import counted, listed, number, percent, shown

SECTION = "real-people"

_RARE = "What few real people have"

_PLURALS = {"E-mail address": "e-mail addresses", UNLISTED: "rare last names"}

_UNCHECKED_NAMES = (
    "Which columns of the real table hold whole names is not known. If there are any, name them:"
    " {firstname} and {lastname}, or {fullname}."
)


@dataclass(frozen=True)
class Made:
    """What the table is that was made.

    Args:
        name: Its name, in a word.
        remedy: What to do where it has what chance does not explain.
    """

    name: str
    remedy: str


SAMPLE = Made("sample", "Find out how they came into the sample before you hand it on.")
COPY = Made("copy", "Make the copy anew, and do not hand this one on.")

_KEPT = (
    "So the sample tells of single people. Fit the model with a higher minimum count, or take these"
    " rows out."
)


def unchecked_names() -> str:
    """Tells that real names were not looked for, and how they can be."""
    named = {attribute: argument(attribute, "COLUMN") for attribute in NAMES}
    return _UNCHECKED_NAMES.format_map(named)


def judge_nearness(nearness: Nearness, made: Made = SAMPLE) -> Iterator[Verdict]:
    """Judges how near a sample comes to real people; where it has nothing there is no verdict."""
    of_names = f"Real full names in the {made.name}"
    if nearness.has_unchecked_names:
        yield Verdict(of_names, "not checked", OPEN, unchecked_names(), SECTION)
    elif names := _compared(nearness.names):
        yield _of_shared(of_names, "whole name", _worst(names), made)
    for part in _compared(nearness.parts):
        things = _PLURALS.get(part.kind, f"{part.kind.lower()}s")
        yield _of_shared(f"Real {things} in the {made.name}", part.kind.lower(), part, made)
    if nearness.rows and _compared([nearness.rows]):
        yield _of_shared(f"Whole real rows in the {made.name}", "whole row", nearness.rows, made)
    if any(each.cells for each in nearness.in_place):
        yield _of_order(nearness.in_place)
    if nearness.rare:
        yield _of_rare(nearness.rare)


def _compared(found: Sequence[Shared]) -> list[Shared]:
    return [each for each in found if each.real_values and each.sampled_rows]


def _worst(names: Sequence[Shared]) -> Shared:
    return max(names, key=lambda each: (not each.is_by_chance, each.bearing))


def _of_shared(about: str, thing: str, shared: Shared, made: Made) -> Verdict:
    if not shared.bearing:
        words = f"No row of the {made.name} has the {thing} of a real person."
        return Verdict(about, "0", FINE, words, SECTION)
    figure = counted(shared.bearing, "row")
    if shared.is_by_chance:
        words = (
            f"Chance explains up to {number(shared.limit)}: what is made up without looking at"
            f" real people meets the {thing} of one now and then."
        )
        return Verdict(about, figure, FINE, words, SECTION)
    words = (
        f"{percent(shared.bearing / shared.sampled_rows)} of the values in the {made.name} are the"
        f" {thing} of a real person, and chance explains about {_about(shared.chance)} of them."
        f" {made.remedy}"
    )
    return Verdict(about, figure, LOOK, words, SECTION)


def _of_order(columns: Sequence[InPlace]) -> Verdict:
    about = "Real columns in the same order"
    pasted = [each for each in columns if not each.is_by_chance]
    if not pasted:
        words = "No more values than chance explains are those of the same row of the real table."
        return Verdict(about, "0", FINE, words, SECTION)
    found = listed([f"{shown(each.column)} in {counted(each.same, 'row')}" for each in pasted])
    words = (
        f"Values are those of the same row of the real table more often than chance explains:"
        f" {found}. Unless both tables are sorted alike, the values were pasted. {SAMPLE.remedy}"
    )
    return Verdict(about, counted(len(pasted), "column"), LOOK, words, SECTION)


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

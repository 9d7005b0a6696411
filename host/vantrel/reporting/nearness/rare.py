"""What few real people have: rare values and combinations, and whether a sample has them, too."""

from __future__ import annotations

from collections import Counter
from collections.abc import Mapping
from dataclasses import dataclass

from vantrel.attributes import LEARNT, WORDS
from vantrel.config import PersonModelConfig
from vantrel.genders import keys_of
from vantrel.reporting.labelled import LabelledTable
from vantrel.reporting.nearness.shared import MOST_EXAMPLES, most_by_chance
from vantrel.rows import DEFAULT_MIN_COUNT
from vantrel.wording import listed

type _Cells = tuple[str | None, ...]
type _Counts = Mapping[_Cells, int]


@dataclass(frozen=True)
class Rare:
    """What fewer than five real rows have, and how much of it a sample has.

    Args:
        kind: What is rare, in words.
        columns: The attributes that it is in.
        real: The number of rare values, or combinations.
        found: How many of these the sample has.
        bearing: How many sampled rows have one.
        chance: How many would, by expectation, if frequent values met as chance has it.
        examples: Some that came through, with the number of sampled rows, the most frequent first.
    """

    kind: str
    columns: tuple[str, ...]
    real: int
    found: int
    bearing: int
    chance: float
    examples: tuple[tuple[str, int], ...]

    @property
    def limit(self) -> int:
        """How many rows chance explains, but for the risk."""
        return most_by_chance(self.chance)

    @property
    def is_by_chance(self) -> bool:
        """Whether chance explains what came through."""
        return self.bearing <= self.limit


def compare_rare(real: LabelledTable, sampled: LabelledTable) -> tuple[Rare, ...]:
    """Looks in a sample for the rare values of the learnt columns, and for rare combinations."""
    both = tuple(each for each in LEARNT if real.has(each) and sampled.has(each))
    in_real, in_sample = (table.combinations(both) for table in (real, sampled))
    frequent = [_frequent(in_real, place, each) for place, each in enumerate(both)]
    found = [
        _rare_values(each, _totals(in_real, place), _totals(in_sample, place), frequent[place])
        for place, each in enumerate(both)
    ]
    if len(both) > 1:
        found.append(_rare_combinations(both, in_real, _whole(in_sample), frequent))
    return tuple(each for each in found if each.real)


def _whole(counts: _Counts) -> dict[_Cells, int]:
    """The combinations that lack nothing."""
    return {cells: rows for cells, rows in counts.items() if None not in cells}


def _totals(counts: _Counts, place: int) -> Counter[_Cells]:
    """How many rows have each value, whatever else they lack."""
    totals: Counter[_Cells] = Counter()
    for cells, rows in counts.items():
        if cells[place] is not None:
            totals[cells[place],] += rows
    return totals


def _frequent(counts: _Counts, place: int, attribute: str) -> set[str | None]:
    """The values that many have; the usual words for a gender tell nothing of anybody."""
    totals = _totals(counts, place)
    usual = (
        keys_of([value for (value,) in totals], PersonModelConfig(), "gender")
        if attribute == "gender"
        else {}
    )
    return {
        value for (value,), rows in totals.items() if rows >= DEFAULT_MIN_COUNT or value in usual
    }


def _rare_values(
    attribute: str, real: _Counts, sampled: _Counts, frequent: set[str | None]
) -> Rare:
    rare = [cells for cells in real if cells[0] not in frequent]
    return _found(f"{WORDS[attribute]} of few people", (attribute,), rare, sampled, 0.0)


def _rare_combinations(
    attributes: tuple[str, ...], real: _Counts, sampled: _Counts, frequent: list[set[str | None]]
) -> Rare:
    """Combinations of frequent values; those of rare ones have been told of already."""
    rare = [
        cells
        for cells, rows in _whole(real).items()
        if rows < DEFAULT_MIN_COUNT
        and all(value in each for value, each in zip(cells, frequent, strict=True))
    ]
    chance = _meeting(rare, real, sampled, attributes)
    words = listed([WORDS[each].lower() for each in attributes])
    return _found(f"{words[0].upper()}{words[1:]} together", attributes, rare, sampled, chance)


def _meeting(
    rare: list[_Cells], real: _Counts, sampled: _Counts, attributes: tuple[str, ...]
) -> float:
    """How many sampled rows would have a rare combination if countries fell to rows at random.

    They fall to all rows, or to those of one gender, whichever makes more. Titles never fall to
    genders at random: a gender and a title that are rare together are none.
    """
    if "country" not in attributes:
        return 0.0
    known, people = _heads(real, -1), _heads(sampled, -1)
    countries, total = _totals(sampled, -1), sum(sampled.values())
    genders = _heads(sampled, 1)
    places = Counter[_Cells]()
    for cells, rows in sampled.items():
        places[cells[0], cells[-1]] += rows

    def of_few(cells: _Cells) -> float:
        if known[cells[:-1]] < DEFAULT_MIN_COUNT:
            return 0.0
        at_random = countries[cells[-1],] / max(total, 1)
        in_gender = places[cells[0], cells[-1]] / max(genders[cells[:1]], 1)
        return people[cells[:-1]] * max(at_random, in_gender if len(cells) > 2 else 0.0)

    return sum(map(of_few, rare))


def _heads(counts: _Counts, end: int) -> Counter[_Cells]:
    """How many rows have each beginning of a combination."""
    heads: Counter[_Cells] = Counter()
    for cells, rows in counts.items():
        heads[cells[:end]] += rows
    return heads


def _found(
    kind: str, attributes: tuple[str, ...], rare: list[_Cells], sampled: _Counts, chance: float
) -> Rare:
    there = sorted(((sampled[cells], cells) for cells in rare if cells in sampled), reverse=True)
    return Rare(
        kind,
        attributes,
        len(rare),
        len(there),
        sum(rows for rows, _ in there),
        chance,
        tuple((", ".join(map(str, cells)), rows) for rows, cells in there[:MOST_EXAMPLES]),
    )

"""From the counts of a table to what is kept of its rows."""

from __future__ import annotations

from collections import Counter
from collections.abc import Callable, Iterable, Mapping
from dataclasses import dataclass
from typing import Any

from vantrel.attributes import LEARNT
from vantrel.config import PersonModelConfig
from vantrel.genders import keys_of
from vantrel.metadata.value import Person
from vantrel.rows.form import (
    ANY,
    DEFAULT_MIN_COUNT,
    MOST_COMBINATIONS,
    PARTS,
    Key,
    LeftOut,
    Rows,
)
from vantrel.tables import TableCounts

# The parts that a combination keeps, from fine to coarse. Rows that are too few for one are counted
# by the next.
_LEVELS = (
    ("gender", "title", "country", "gaps"),
    ("gender", "title", "country"),
    ("gender", "country"),
    ("gender", "title"),
    ("gender",),
    (),
)

type _Cells = tuple[Any, ...]
type _Counts = Mapping[_Cells, int]


class _Any:
    """Stands for a part that is drawn by counts of its own."""


_ANY = _Any()
_APART = None  # of gaps that are too rare


@dataclass(frozen=True)
class LearntRows:
    """What was learnt of rows.

    Attributes:
        rows: What is kept.
        hidden: The values of each column that the rest of the model must not see either.
        has_too_many: Whether combinations were coarsened for their number.
    """

    rows: Rows
    hidden: dict[str, set[Any]]
    has_too_many: bool


def learn_rows(
    counts: TableCounts, meta: Person, config: PersonModelConfig, min_count: int
) -> LearntRows:
    """Keeps of a table's rows what is in enough of them.

    Args:
        counts: The counts of the learnt columns, and of the gaps of all labelled ones.
        meta: What the columns hold.
        config: The patterns of genders and titles.
        min_count: The fewest rows of what is kept.
    """
    whole = _by_parts(counts, meta)
    common: dict[str, dict[Any, int]] = {}
    hidden: dict[str, set[Any]] = {}
    left_out: dict[Any, LeftOut] = {}
    for place, attribute in enumerate(LEARNT):
        common[attribute] = totals = _totals(whole, place)
        rare = _rare(attribute, totals, config, min_count)
        left_out |= {attribute: LeftOut(len(rare), sum(rare.values()))} if rare else {}
        for value in rare:
            del totals[value]
        if attribute in meta.params:
            hidden[meta.params[attribute]] = set(rare)
    gaps = {each: rows for each, rows in _totals(whole, 3).items() if rows >= min_count}
    spelling = _common_spellings(_totals(whole, 0), common["gender"], config)
    clean = _cleaned(whole, common, gaps, spelling)
    kept, group_of, has_too_many = _coarsened(clean, min_count)
    rows = _as_rows(kept, group_of, clean, config, min_count, left_out, _apart(whole, gaps))
    return LearntRows(rows, hidden, has_too_many)


def _by_parts(counts: TableCounts, meta: Person) -> dict[_Cells, int]:
    """Sorts what was counted by the parts of a combination; values become texts."""
    places = {column: place for place, column in enumerate(counts.columns)}
    of_parts = [places.get(meta.params.get(attribute, "")) for attribute in LEARNT]
    others = [
        (1 << bit, column)
        for bit, column in enumerate(counts.labelled)
        if column not in counts.columns
    ]
    found: Counter[_Cells] = Counter()
    for (*cells, gaps), (rows, _) in counts.combinations.items():
        values = [None if at is None or cells[at] is None else str(cells[at]) for at in of_parts]
        found[*values, tuple(column for bit, column in others if gaps & bit)] += rows
    return found


def _totals(counts: _Counts, place: int) -> dict[Any, int]:
    totals: dict[Any, int] = {}
    for cells, rows in counts.items():
        totals[cells[place]] = totals.get(cells[place], 0) + rows
    return totals


def _rare(
    attribute: str, totals: Mapping[Any, int], config: PersonModelConfig, min_count: int
) -> dict[Any, int]:
    """The values that are not kept.

    The usual words for a gender tell nothing of anybody, and are kept however rare. A title that
    tells no gender may be anything: even where single rows are kept it must be in some.
    """
    least = dict.fromkeys(totals, min_count)
    if attribute == "gender":
        least |= dict.fromkeys(keys_of(totals, PersonModelConfig(), "gender"), 1)
    if attribute == "title":
        claimed = keys_of(totals, config, "title")
        least |= {
            title: max(min_count, DEFAULT_MIN_COUNT) for title in totals if title not in claimed
        }
    return {
        value: rows for value, rows in totals.items() if value is not None and rows < least[value]
    }


def _common_spellings(
    totals: Mapping[Any, int], common: Mapping[Any, int], config: PersonModelConfig
) -> dict[Any, Any]:
    """Maps each rare way to write a gender to the most frequent one of the same, if one is kept."""
    keys = keys_of(totals, config, "gender")
    usual: dict[str, Any] = {}
    for value in sorted(set(common) & set(keys), key=lambda value: common[value]):
        usual[keys[value]] = value
    return {
        value: usual[key] for value, key in keys.items() if value not in common and key in usual
    }


def _cleaned(
    whole: _Counts,
    common: Mapping[str, Mapping[Any, int]],
    gaps: Mapping[Any, int],
    spelling: Mapping[Any, Any],
) -> dict[_Cells, int]:
    """Takes what is too rare by itself out of the combinations."""
    found: Counter[_Cells] = Counter()
    for (gender, title, country, missing), rows in whole.items():
        gender = spelling.get(gender, gender)
        is_known = gender in common["gender"]
        found[
            gender if is_known else _ANY,
            title if is_known and title in common["title"] else _ANY,
            country if country in common["country"] else _ANY,
            missing if missing in gaps else _APART,
        ] += rows
    return found


def _coarsened(
    counts: _Counts, min_count: int
) -> tuple[dict[_Cells, int], dict[_Cells, _Cells], bool]:
    """Keeps combinations of enough rows, the others by fewer parts.

    Returns:
        What is kept; from each combination to what it is kept as; and whether there were more
        combinations than can be kept.
    """
    kept: dict[_Cells, int] = {}
    group_of: dict[_Cells, _Cells] = {}
    has_too_many = False
    left = dict(counts)
    for parts in _LEVELS:
        coarsen = _coarsening(parts)
        groups: Counter[_Cells] = Counter()
        for cells, rows in left.items():
            groups[coarsen(cells)] += rows
        enough = {group: rows for group, rows in groups.most_common() if rows >= min_count}
        room = MOST_COMBINATIONS - len(kept)
        has_too_many |= len(enough) > room
        chosen = dict(list(enough.items())[:room]) if parts else groups
        for cells in [cells for cells in left if coarsen(cells) in chosen]:
            group_of[cells] = coarsen(cells)
            del left[cells]
        for group, rows in chosen.items():
            kept[group] = kept.get(group, 0) + rows
    return kept, group_of, has_too_many


def _left_open(counts: _Counts, group_of: Mapping[_Cells, _Cells], place: int) -> _Counts:
    """The counts of the combinations of which a part is known and yet not kept."""
    return {
        cells: rows
        for cells, rows in counts.items()
        if cells[place] is not _ANY and group_of[cells][place] is _ANY
    }


def _coarsening(parts: Iterable[str]) -> Callable[[_Cells], _Cells]:
    stays = [part in parts for part in PARTS]
    return lambda cells: tuple(
        cell if is_kept else _ANY for cell, is_kept in zip(cells, stays, strict=True)
    )


def _apart(whole: _Counts, gaps: Mapping[Any, int]) -> dict[str, float]:
    """The share of each column's gaps in the rows whose gaps are too rare together."""
    rows = 0
    found: Counter[str] = Counter()
    for (*_, missing), count in whole.items():
        if missing not in gaps:
            rows += count
            found.update(dict.fromkeys(missing, count))
    return {column: count / rows for column, count in found.items()}


def _as_rows(
    kept: _Counts,
    group_of: Mapping[_Cells, _Cells],
    clean: _Counts,
    config: PersonModelConfig,
    min_count: int,
    left_out: dict[Any, LeftOut],
    apart: dict[str, float],
) -> Rows:
    """Numbers the values."""
    totals = [
        {value: rows for value, rows in _totals(clean, place).items() if value is not _ANY}
        for place in range(len(PARTS))
    ]
    values = [list(total) or [None] for total in totals]
    places = [{_ANY: ANY} | {value: at for at, value in enumerate(each)} for each in values]

    def counts(at: int) -> list[int]:
        """How often each value of a part is where it is left open, or else at all."""
        found = _totals(_left_open(clean, group_of, at), at) or totals[at] or {None: 1}
        return [found.get(value, 0) for value in values[at]]

    left_open = _left_open(clean, group_of, PARTS.index("title"))
    return Rows(
        min_count=min_count,
        gender=values[0],
        title=values[1],
        country=values[2],
        gaps=[None if each is _APART else list(each) for each in values[3]],
        gaps_apart=apart,
        combinations=[
            (*(place[cell] for place, cell in zip(places, cells, strict=True)), rows)
            for cells, rows in kept.items()
        ],
        any_gender=counts(0),
        any_title=_titles_by_key(clean, values[1], config, min_count)
        | _titles_by_key(left_open, values[1], config, min_count),
        any_country=counts(2),
        any_gaps=counts(3),
        left_out=left_out,
    )


def _titles_by_key(
    clean: _Counts, titles: list[Any], config: PersonModelConfig, min_count: int
) -> dict[Key, list[int]]:
    """Counts titles by the key of their row's gender, "" where it has none."""
    keys = keys_of(_totals(clean, 0), config, "gender")
    pairs: Counter[tuple[Any, Any]] = Counter()
    for (gender, title, *_), rows in clean.items():
        if gender is not _ANY and title is not _ANY:
            pairs[keys.get(gender, ""), title] += rows
    found = {
        key: [count if (count := pairs[key, title]) >= min_count else 0 for title in titles]
        for key in {key: None for key, _ in pairs}
    }
    return {key: counts for key, counts in found.items() if sum(counts)}

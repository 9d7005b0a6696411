"""Who is who in a folder of tables, each of which a worker reads.

    learn     what each file tells of its keys, and of people without one
    merge     what all files tell of some keys, by the first file that tells it
    check     that the run may go on: no two people share an account

Files and parts of keys are brought together by Dask, which shuffles rows from worker to worker and
keeps them on disk meanwhile: nobody has all keys.
"""

from __future__ import annotations

from collections import Counter
from collections.abc import Mapping, Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import Any, NamedTuple

import dask.dataframe as dd
import pandas as pd
from dask.delayed import Delayed, delayed

from vantrel.replacing.making.places import Place
from vantrel.replacing.others.faked import refuse_failing
from vantrel.replacing.people.report import Report, Table
from vantrel.replacing.people.tally import Counts, refuse_shared, shared_accounts
from vantrel.scale.facts import (
    NO_ACCOUNTS,
    NO_ANSWERS,
    NO_FACTS,
    accounts_frame,
    answers_frame,
    facts_frame,
    facts_of,
)
from vantrel.scale.shared import Shared
from vantrel.tables.copying.parquet_folder import opened_file

_ON_DISK = "p2p"  # rows go from worker to worker, and wait on disk

_CONTRADICTED = ("gender", "country")


@dataclass(frozen=True)
class Met:
    """What was met in a file.

    Attributes:
        table: Its rows.
        counts: What was counted of people without a key.
        texts: How each country was written first.
    """

    table: Table
    counts: Counts
    texts: Mapping[Place, str]


@dataclass(frozen=True)
class Merged:
    """What came of some keys.

    Attributes:
        counts: What was counted of their people.
        contradictions: Of how many the rows contradict each other, by what.
    """

    counts: Counts
    contradictions: Mapping[str, int]


class Checked(NamedTuple):
    """What came of all keys.

    Attributes:
        report: That.
        texts: How each country was written first.
    """

    report: Report
    texts: dict[Place, str]


def joined(
    files: Sequence[Path], is_wanted: Sequence[bool], shared: Shared
) -> tuple[list[Delayed], Delayed]:
    """Plans who is who.

    Args:
        files: The files, as workers see them.
        is_wanted: For each whether it is still to be copied.
        shared: What all workers are told.

    Returns:
        For each file what is known of its keys, and what :func:`check` gives.
    """
    pairs = enumerate(zip(files, is_wanted, strict=True))
    learnt = [_task(learn, 3, number, *pair, shared) for number, pair in pairs]
    facts, of_rows, met = zip(*learnt, strict=True)
    parts = _shuffled(_frame(facts, NO_FACTS), "print", len(files))
    merged = [_task(merge, 3, part, shared) for part in parts]
    answers, of_keys, counts = zip(*merged, strict=True)
    accounts = _frame((*of_rows, *of_keys), NO_ACCOUNTS)
    parts = _shuffled(accounts, "account", len(files))
    clashes = [_task(_clashes, None, part) for part in parts]
    checked = _task(check, None, list(met), list(counts), clashes, shared)
    borders = list(range(len(files) + 1))
    by_file = _frame(answers, NO_ANSWERS).set_index(
        "file", divisions=borders, shuffle_method=_ON_DISK
    )
    return by_file.to_delayed(), checked


def _task(function: Any, results: int | None, *given: Any) -> Any:
    return delayed(function, pure=False, nout=results)(*given)


def _frame(parts: Sequence[Delayed], form: pd.DataFrame) -> dd.DataFrame:
    frame: dd.DataFrame = dd.from_delayed(list(parts), meta=form, verify_meta=False)
    return frame


def _shuffled(frame: dd.DataFrame, column: str, parts: int) -> list[Delayed]:
    """Brings all rows of one value of a column into one part."""
    shuffled = frame.shuffle(column, npartitions=parts, shuffle_method=_ON_DISK)
    of_rows: list[Delayed] = shuffled.to_delayed()
    return of_rows


def learn(
    number: int, file: Path, is_wanted: bool, shared: Shared
) -> tuple[pd.DataFrame, pd.DataFrame, Met]:
    """Reads what a file tells of its people.

    Returns:
        What it tells of each key; the accounts of people without one; what was met.
    """
    people, name = shared.people(), str(shared.table)
    with opened_file(file) as copied:
        for batch in copied.batches(shared.roles.needed):
            people.learn(batch, shared.roles, name)
        table = people.tables.get(name, Table())
        columns = copied.columns if table.lacks_keys else sorted(shared.roles.keys)
        for batch in copied.batches(columns):
            people.meet(batch, shared.roles)
    facts = facts_frame(people.facts(), people.places, file=number, is_wanted=is_wanted)
    of_rows = people.without_key
    accounts = accounts_frame(*of_rows.accounts)
    return facts, accounts, Met(table, of_rows.counts, people.places.texts)


def merge(frame: pd.DataFrame, shared: Shared) -> tuple[pd.DataFrame, pd.DataFrame, Merged]:
    """Merges what all files tell of some keys.

    Returns:
        What each file that waits for it is told of its own; the accounts of all; what was counted.
    """
    people = shared.people()
    frame = frame.sort_values("file", kind="stable")
    people.know(facts_of(frame, people.places), shared.roles.replaced.values())
    contradicted = people.facts().is_contradicted.sum(axis=0).tolist()
    tally = people.tally()
    wanted = frame[frame["is_wanted"]]
    known = people.facts(wanted["print"].to_numpy())
    return (
        answers_frame(known, people.places, wanted["file"].to_numpy()),
        accounts_frame(*tally.accounts),
        Merged(tally.counts, dict(zip(_CONTRADICTED, contradicted, strict=True))),
    )


def _together(tables: Sequence[Table], merged: Sequence[Merged]) -> Table:
    """Adds up what was met in files that have rows; a key is missing that is missing in all."""
    named = [table.named_keys for table in tables] or [{}]
    return Table(
        sum(table.rows for table in tables),
        dict(sum((Counter(table.without_key) for table in tables), Counter())),
        {what: sum(each.contradictions[what] for each in merged) for what in _CONTRADICTED},
        {who: key for who, key in named[0].items() if all(who in each for each in named)},
        any(table.lacks_keys for table in tables),
    )


def _clashes(accounts: pd.DataFrame) -> int:
    return shared_accounts(accounts["print"].to_numpy(), accounts["account"].to_numpy())


def check(
    met: Sequence[Met], merged: Sequence[Merged], clashes: Sequence[int], shared: Shared
) -> Checked:
    """Makes sure that a run may go on, and adds up.

    Raises:
        ReplaceError: The key is missing in all rows, two people share an account, or Faker cannot
            make what a column gets in the language of some.
    """
    people, name = shared.people(), str(shared.table)
    tables = [each.table for each in met if each.table.rows]
    people.tables[name] = _together(tables, merged)
    people.settle()
    refuse_shared(sum(clashes))
    for counts in (*(each.counts for each in met), *(each.counts for each in merged)):
        people.without_key.take_in(counts)
    texts = {place: text for each in reversed(met) for place, text in each.texts.items()}
    report = people.finish()
    locales = {place.locale for place in texts} | (
        {report.locale} if report.untold.get("country") else set()
    )
    refuse_failing(shared.others, lambda _: locales)
    return Checked(report, texts)

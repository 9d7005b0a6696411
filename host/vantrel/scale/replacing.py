"""Replaces the people of a folder of Parquet files on a cluster."""

from __future__ import annotations

from collections.abc import Iterable, Mapping
from pathlib import Path

from distributed import Client

from vantrel.arguments import refuse_text
from vantrel.fitting.checks import check_ways
from vantrel.replacing.columns.roles import Columns, Keys
from vantrel.replacing.plan import read_plan
from vantrel.replacing.runs.asked import Asked, OfTable
from vantrel.replacing.runs.outcome import Outcome
from vantrel.scale.replaced_folder import replace_folder
from vantrel.util.locale.faker_locales import DEFAULT_LOCALE


def replace(
    source: str | Path,
    output: str | Path,
    key: Keys | None = None,
    secret: bytes | None = None,
    columns: Columns | None = None,
    keep: Iterable[str] = (),
    scrub: Iterable[str] = (),
    others: Mapping[str, str] | None = None,
    household: str | None = None,
    *,
    plan: str | Path | None = None,
    place: str = DEFAULT_LOCALE,
    phone_numbers: str = "fiction",
    latin: bool = False,
    strict: bool = False,
    client: Client | None = None,
    scheduler: str | None = None,
    workers: int | None = None,
    resume: bool = False,
) -> Outcome:
    """Copies a folder of Parquet files with every person replaced by a made-up one.

    The people are those of :func:`vantrel.replace` on the whole table, however it is cut into
    files and on however many workers. What is not told here is as that function takes it.

    Args:
        source: The folder. Its files come in the order of their names.
        output: The folder to make, of as many files of the same names. All workers see both
            folders under the same paths.
        key: As there.
        secret: As there. A run that is resumed needs the one that it was begun with.
        columns: As there.
        keep: As there.
        scrub: As there.
        others: As there.
        household: As there.
        plan: A file of a plan. What is told here comes before it.
        place: As there.
        phone_numbers: As there.
        latin: As there.
        strict: Whether nothing is made while a column looks personal and is not decided.
        client: A client of the cluster, if one is connected already.
        scheduler: The address of the cluster's scheduler. None starts a cluster on this machine.
        workers: The number of processes of that; one for each core if None.
        resume: Whether to go on with a run that was stopped.

    Returns:
        What came of it; ``notes`` is what is to be told.

    Raises:
        VantrelError: As that function raises it; or the folder cannot be read, another run is in
            the output, or the cluster was lost.
        OSError: The output cannot be written, or no scheduler answers.
    """
    refuse_text(keep, "keep", "attributes")
    refuse_text(scrub, "scrub", "columns")
    keys, by_name = _keys(key)
    named_columns = {name: _several(those) for name, those in (columns or {}).items()}
    asked = Asked(
        OfTable(
            keys,
            named_columns,
            frozenset(keep),
            tuple(scrub),
            others=dict(others or {}),
            household=household or "",
            keys_by_name=by_name,
        ),
        plan=None if plan is None else read_plan(Path(plan)),
        place=place,
        ways=check_ways(phone_numbers=phone_numbers, latin=latin),
        strict=strict,
    )
    return replace_folder(
        Path(source),
        Path(output),
        asked,
        secret=secret,
        client=client,
        scheduler=scheduler,
        workers=workers,
        resume=resume,
    )


def _keys(key: Keys | None) -> tuple[tuple[tuple[str, ...], ...], dict[str, tuple[str, ...]]]:
    """Gives a key that nobody's name is told of, and those of people by what they are called."""
    if isinstance(key, Mapping):
        return (), {whose: _several(each) for whose, each in key.items()}
    return () if key is None else (_several(key),), {}


def _several(names: str | Iterable[str]) -> tuple[str, ...]:
    return (names,) if isinstance(names, str) else tuple(names)

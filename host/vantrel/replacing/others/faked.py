"""Gives a column values of Faker: one for each person, in the language of the row's country."""

from __future__ import annotations

from collections.abc import Callable, Iterator, Mapping
from hashlib import blake2b
from typing import Any

import numpy as np
import pyarrow as pa

from vantrel.errors import ReplaceError
from vantrel.replacing.others.action import Action
from vantrel.replacing.others.feistel import distinct
from vantrel.replacing.others.providers import method_in
from vantrel.replacing.values.cells import holds_texts, put_in
from vantrel.replacing.values.keys import Digests
from vantrel.wording import shown

_SEED_BYTES = 16


def faked(
    column: pa.Array, name: str, provider: str, digests: Digests, locales: list[str]
) -> pa.Array:
    """Gives each row the value of its person; gaps, such as blank cells, stay.

    Args:
        column: The values that are replaced.
        name: The column, which decides about the values, too.
        provider: The method of Faker.
        digests: The digest of each row's person.
        locales: The locale of each row.

    Raises:
        ReplaceError: Faker cannot make them in some language, or the column cannot hold them.
    """
    people, which = distinct(digests.astype("<u8").view(np.uint8))
    first = np.zeros(len(people), dtype=np.int64)
    first[which[::-1]] = np.arange(len(which))[::-1]
    values = list(_values(people, [locales[row] for row in first], name, provider))
    kind = column.type.value_type if pa.types.is_dictionary(column.type) else column.type
    if holds_texts(kind):
        made = pa.array([_line(value) for value in values], pa.string())
    else:
        made = _typed(values, name)
    return put_in(made.take(pa.array(which)), column, name, read=lambda each: each)


def refuse_failing(actions: Mapping[str, Action], locales_of: Callable[[str], set[str]]) -> None:
    """Refuses what Faker cannot make in some language, before any of it is made.

    Args:
        actions: The actions of some columns.
        locales_of: The locales in which people of a column need it.
    """
    for column, action in actions.items():
        if action.kind == "fake":
            for locale in sorted(locales_of(column)):
                method_in(locale, action.provider, _where(column))


def _values(people: list[bytes], locales: list[str], name: str, provider: str) -> Iterator[Any]:
    for person, locale in zip(people, locales, strict=True):
        faker, method = method_in(locale, provider, _where(name))
        seed = blake2b(name.encode(), key=person, digest_size=_SEED_BYTES).digest()
        faker.seed_instance(int.from_bytes(seed, "big"))
        yield method()


def _where(column: str) -> str:
    return f"Column {shown(repr(column))}:"


def _line(value: object) -> str:
    return ", ".join(str(value).splitlines())


def _typed(values: list[Any], name: str) -> pa.Array:
    try:
        return pa.array(values)
    except (pa.ArrowException, TypeError, OverflowError) as error:
        raise ReplaceError(
            f"Column {shown(repr(name))}: Faker gives values of several types: make it text."
        ) from error

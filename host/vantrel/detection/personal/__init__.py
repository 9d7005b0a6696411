"""Finds columns that look personal beside those of the attributes of a person.

What is found is a suspicion to be judged by somebody, so that it errs on the side of telling.
"""

from __future__ import annotations

from collections.abc import Callable, Collection, Mapping
from dataclasses import dataclass
from typing import NamedTuple

import pandas as pd

from vantrel.detection import usable_columns
from vantrel.detection.names import is_of_others
from vantrel.detection.personal import (
    addresses,
    births,
    network,
    numbers,
    positions,
    prose,
    reached,
)
from vantrel.detection.personal.kinds import Kind
from vantrel.detection.personal.names import is_of_a_thing, kind_named
from vantrel.detection.personal.texts import agree, distinct_texts
from vantrel.detection.values import is_email, is_phone

__all__ = ["Finding", "Kind", "find_personal"]


@dataclass(frozen=True)
class Finding:
    """A column that looks personal.

    Attributes:
        column: The column.
        kind: What it seems to hold.
        why: What tells so: its name, or its values, of which none is shown.
    """

    column: str
    kind: Kind
    why: str


# Whether a value can be what the column's name says.
_CAN_BE: Mapping[Kind, Callable[[str], object]] = {
    Kind.NAME: prose.can_be_name,
    Kind.EMAIL: is_email,
    Kind.PHONE: is_phone,
    Kind.BIRTH: births.can_be_birth,
    Kind.STREET: addresses.can_be_street,
    Kind.HOUSE_NUMBER: addresses.can_be_house_number,
    Kind.POSTCODE: addresses.can_be_postcode,
    Kind.CITY: addresses.can_be_city,
    Kind.ACCOUNT: numbers.can_be_account,
    Kind.CARD: numbers.can_be_card,
    Kind.OFFICIAL: numbers.can_be_official,
    Kind.DOCUMENT: numbers.can_be_official,
    Kind.IP: network.is_ip,
    Kind.DEVICE: network.can_be_device,
    Kind.POSITION: positions.can_be_position,
    Kind.PROFILE: network.can_be_profile,
}


class _Sign(NamedTuple):
    """What values tell without a name.

    ``told`` gives words of what it saw, or None. What things have as well as people, such as the
    addresses of shops, tells nothing where the column is named after a thing.
    """

    kind: Kind
    told: Callable[[list[str]], str | None]
    is_of_things_too: bool = False


# The surest come first.
_SIGNS = (
    _Sign(Kind.ACCOUNT, numbers.told_accounts),
    _Sign(Kind.OFFICIAL, numbers.told_official),
    _Sign(Kind.CARD, numbers.told_cards),
    _Sign(Kind.DEVICE, network.told_devices),
    _Sign(Kind.IP, network.told_ips),
    _Sign(Kind.POSITION, positions.told_positions, is_of_things_too=True),
    _Sign(Kind.PROFILE, network.told_profiles),
    _Sign(Kind.BIRTH, births.told_births, is_of_things_too=True),
    _Sign(Kind.STREET, addresses.told_streets, is_of_things_too=True),
    _Sign(Kind.PEOPLE, prose.told_names, is_of_things_too=True),
    _Sign(Kind.PROSE, prose.told_sentences),
)
# Towns and much else consist of the same words.
_LIKE_OTHERS = (Kind.PEOPLE, Kind.PROSE)
# In all other columns these are an attribute of the person, which is not looked for here.
_SIGNS_OF_OTHERS = (
    _Sign(Kind.EMAIL, reached.told_emails, is_of_things_too=True),
    _Sign(Kind.PHONE, reached.told_phones, is_of_things_too=True),
    *_SIGNS,
)


def find_personal(df: pd.DataFrame, decided: Collection[str] = ()) -> tuple[Finding, ...]:
    """Finds the columns of a table that look personal, in the table's order.

    A column is told by its name, in common spellings of European languages, unless its values
    contradict; or by values alone, if at least five different ones and four of five are of a form
    that hardly anything else has. House numbers, postcodes and towns are told by names only, and so
    are identity documents. Columns without values, or whose names are no text or not unique, are
    left out.

    Args:
        df: The table, or its beginning: each column is judged by its first 10,000 values that are
            not missing.
        decided: Columns of which it is known what they hold.
    """
    found = (
        _finding(column, distinct_texts(df.iloc[:, position]))
        for position, column in usable_columns(df, decided)
    )
    return tuple(finding for finding in found if finding)


def _finding(column: str, texts: list[str]) -> Finding | None:
    """Judges a column; values of a form of their own tell more surely than its name."""
    kind = kind_named(column)
    is_named = kind is not None and agree(texts, _CAN_BE[kind])
    told = _told(column, texts)
    if kind is not None and is_named and (told is None or told[0] in (kind, *_LIKE_OTHERS)):
        seen = f", and {told[1]}" if told and told[0] == kind else ""
        return Finding(column, kind, f"its name says so{seen}")
    return Finding(column, *told) if told else None


def _told(column: str, texts: list[str]) -> tuple[Kind, str] | None:
    signs = _SIGNS_OF_OTHERS if is_of_others(column) else _SIGNS
    for kind, told, is_of_things_too in signs:
        if seen := told(texts):
            return None if is_of_things_too and is_of_a_thing(column) else (kind, seen)
    return None

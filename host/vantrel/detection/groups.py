"""Tells the columns of several people in a row apart by what their names begin or end with.

``buyer_first_name``, ``BuyerEmail`` and ``dob_buyer`` are the buyer's, and what a table has beside
them of a seller is the seller's. Groups are told by names alone: whether columns hold what they are
called is for detection to say.
"""

from __future__ import annotations

from collections import defaultdict
from collections.abc import Collection, Iterable, Iterator, Mapping
from functools import cache

from vantrel.detection.names import (
    NAME,
    PERSONS,
    RELATIVES,
    SOMEBODY,
    joined,
    names_of_kind,
    owning,
    whole_kind,
    words_of,
)

# Beside a person whose columns bear no label these are another one, who belongs to her.
_BELONGING = RELATIVES | owning(
    """
    contact carer caregiver beneficiary manager supervisor doctor physician gp lawyer attorney
    kontakt kontaktperson notfall mutter vater partnerin elternteil vormund contacto contatto arzt
    hausarzt vorgesetzter vorgesetzte betreuer betreuerin vertreter vertreterin sachbearbeiter
    sachbearbeiterin ansprechpartner ansprechpartnerin ansprechperson vermieter vermieterin
    """
)
_FURTHER = owning(
    """
    agent broker landlord lender borrower applicant sponsor reporter assignee approver reviewer
    creditor debtor plaintiff defendant witness insured policyholder nurse consignee consignor
    shipper receiver payer bride groom caller referrer teacher trainer coach
    kaeufer verkaeufer absender zahler vendeur vendeuse acheteuse expediteur vendedor vendedora
    comprador compradora remitente venditore mittente verkoper koper afzender
    """
)
# There is a name and an address for each, which may be one person's or another's.
_PURPOSES = frozenset("billing shipping".split())
# Before a name these leave it that of the same person.
_OF_THE_SAME = frozenset("account legal display complete whole ihr your dein".split())

# What a column without more words is told by its values to hold.
_WHOLE_NAMES = {NAME: "fullname", SOMEBODY: "fullname"}
_NAMES = frozenset({"firstname", "lastname", "fullname"})
_ACCOUNTS = frozenset({"email", "username"})

type Groups = Mapping[str, Mapping[str, str]]
"""The label of each person, "" for her whose columns bear none, and her columns, each with what it
is called without the label."""


def groups_of(columns: Iterable[object]) -> Groups:
    """Finds the people whom the names of columns tell apart; none where there is one at most.

    A label is a word for somebody, alone or with others, such as "buyer" or "emergency contact". It
    tells of a person where a name stands under it, or an e-mail address or user name that another
    label has, too. What follows the word tells nobody apart: "buyer home" is the buyer. Columns
    without a label are another person's where they have names as well, and those with one share an
    attribute with them or are of somebody who belongs to her.
    """
    texts = [column for column in columns if isinstance(column, str)]
    kinds = _kinds_by_label(texts)
    of_nobody = kinds.pop("", set())
    labels = [label for label in kinds if _tells_a_person(label, kinds)]
    labels = [label for label in labels if _person_of(label) not in {*labels} - {label}]
    if of_nobody & _NAMES:
        labels = ["", *(each for each in labels if _is_another(each, kinds[each], of_nobody))]
    if len(labels) < 2:
        return {}
    groups: dict[str, dict[str, str]] = {label: {} for label in labels}
    for column in texts:
        label = owner_of(column, labels)
        if label in groups:
            groups[label][column] = without_label(column, label)
    return groups


def people_beside(attributes: Mapping[str, str]) -> list[tuple[str, ...]]:
    """Groups columns that look like those of another person, whatever she is called.

    A name and something else have one label that need be no word for somebody, such as "p2" or
    "from".

    Args:
        attributes: What each column, beside those that are a person's, looks like.
    """
    by_label: defaultdict[str, list[str]] = defaultdict(list)
    for column in attributes:
        for label, _ in _parted(column):
            by_label["_".join(label)].append(column)
    groups = []
    left = set(attributes)
    for columns in sorted(by_label.values(), key=len, reverse=True):
        own = tuple(column for column in columns if column in left)
        kinds = {attributes[column] for column in own}
        if len(kinds) > 1 and not _NAMES.isdisjoint(kinds):
            groups.append(own)
            left.difference_update(own)
    return groups


def owner_of(column: str, labels: Iterable[str]) -> str:
    """Gives the longest label that the name of a column bears, or ""."""
    borne = (label for label in labels if label and _rest(column, label) is not None)
    return max(borne, key=len, default="")


def without_label(column: str, label: str) -> str:
    """Gives the name of a column without a label that it bears.

    All of it is given where nothing would be left, or where it means something as it is, as a user
    name does that is the user's.
    """
    rest = _rest(column, label) if label else None
    return "_".join(rest) if rest and not _is_whole(column) else column


def _is_whole(column: str) -> bool:
    """Whether all of a name means something that a person has."""
    return whole_kind(words_of(column)) not in (None, SOMEBODY)


def is_of_somebody_else(column: str, labels: Iterable[str]) -> bool:
    """Whether a name has a word for somebody who is none of the people with these labels.

    Words that may be for anybody, such as "customer", do not say so, nor do names that mean
    something as they are, such as "contact number".
    """
    own = {word for label in labels for word in words_of(label)}
    is_borne = not (_BELONGING | _FURTHER).isdisjoint({*words_of(column)} - own)
    return is_borne and not _is_whole(column)


def _rest(column: str, label: str) -> list[str] | None:
    """The words of a name beside those of a label; None if it does not bear the label."""
    words, own = words_of(column), words_of(label)
    if own and words[: len(own)] == own:
        return words[len(own) :]
    return words[: -len(own)] if own and words[-len(own) :] == own else None


def _kinds_by_label(columns: Iterable[str]) -> dict[str, set[str]]:
    """What stands under each label, "" for no label, in the order of the columns."""
    found: defaultdict[str, set[str]] = defaultdict(set)
    for column in columns:
        whole = whole_kind(words_of(column))
        if whole == SOMEBODY:
            found["_".join(words_of(column))].add("fullname")
        elif whole is not None:
            found[""].add(_WHOLE_NAMES.get(whole, whole))
        else:
            for label, kind in list(_labels_of(column))[:1]:
                found[label].add(kind)
    return dict(found)


def _labels_of(column: str) -> Iterator[tuple[str, str]]:
    """The labels that a name may have, and what is under them; the shortest label first."""
    for label, kind in _parted(column):
        if kind != SOMEBODY and _is_of_somebody(label):
            yield "_".join(label), _WHOLE_NAMES.get(kind, kind)


def _parted(column: str) -> Iterator[tuple[list[str], str]]:
    """The words at an end of a name beside others that mean something, and what these mean."""
    words = words_of(column)
    for length in range(1, len(words)):
        for label, rest in ((words[:length], words[length:]), (words[-length:], words[:-length])):
            if kind := whole_kind(rest):
                yield label, kind


def _is_of_somebody(label: list[str]) -> bool:
    return not _words_for_people().isdisjoint(label) or _is_joined(label)


def _person_of(label: str) -> str:
    """Leaves out what follows the last word for somebody, but for what numbers several people."""
    words = words_of(label)
    while len(words) > 1 and len(words[-1]) > 1 and not words[-1].isdigit():
        if _is_of_somebody(words[-1:]) or _is_joined(words):
            break
        words = words[:-1]
    return "_".join(words)


def _is_joined(words: list[str]) -> bool:
    """Whether words are for somebody only together, as in "ship to"."""
    return "".join(words) in _words_for_people()


def _tells_a_person(label: str, kinds: Mapping[str, Collection[str]]) -> bool:
    who = _person_of(label)
    others = {kind for other, its in kinds.items() if _person_of(other) != who for kind in its}
    return not _NAMES.isdisjoint(kinds[label]) or not _ACCOUNTS.isdisjoint(
        others.intersection(kinds[label])
    )


def _is_another(label: str, own: set[str], of_nobody: set[str]) -> bool:
    """Whether a label tells of another person than the columns without one."""
    belongs = not _BELONGING.isdisjoint(words_of(label))
    return bool(own & _NAMES) and (belongs or bool(own & of_nobody))


@cache
def _words_for_people() -> frozenset[str]:
    somebody = {joined(name) for name in names_of_kind(SOMEBODY)}
    return (PERSONS | _BELONGING | _FURTHER | _PURPOSES).union(somebody) - _OF_THE_SAME

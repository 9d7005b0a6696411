"""Counts what made-up people share with real ones, and refuses what they share with each other."""

from __future__ import annotations

from collections import Counter
from collections.abc import Collection, Iterator
from dataclasses import dataclass, field
from typing import Any

import numpy as np

from vantrel.attributes import NAMES, PHONES
from vantrel.errors import ReplaceError
from vantrel.replacing.making.numbers import ends_of_numbers
from vantrel.replacing.making.places import Place
from vantrel.replacing.people.made import MadeUp, Makers
from vantrel.replacing.people.real import RealPeople, prints_of_addresses
from vantrel.replacing.people.told import Told
from vantrel.replacing.values.keys import Digests
from vantrel.replacing.values.prints import Prints, mixed
from vantrel.wording import counted

FULL_NAMES, NUMBERS, ADDRESSES = "full names", "telephone numbers", "e-mail addresses"

_ACCOUNTS = ("username", "email")


@dataclass(frozen=True)
class Counts:
    """What was counted of some of the people of a run, wherever that was.

    Attributes:
        people: How many there are.
        untold: How many have no country, or no gender, that is known.
        by_place: How many have numbers of an attribute and a place; None where none is told.
    """

    people: int = 0
    untold: Counter[str] = field(default_factory=Counter)
    by_place: Counter[tuple[str, Place | None]] = field(default_factory=Counter)


class Tally:
    """What was counted of made-up people.

    Args:
        makers: What makes them.
        real: What real people bear.
        no_real: Whether nobody was to get that.

    Attributes:
        people: How many there are.
        borne: How often they got what some real person bears.
        by_chance: The same of as many others, whom nobody got: what chance explains.
        untold: How many real ones have no country, or no gender, that is known.
    """

    def __init__(self, makers: Makers, real: RealPeople, *, no_real: bool) -> None:
        self._makers = makers
        self._real = real
        self._avoided = real if no_real else None
        self.people = 0
        self.borne: Counter[str] = Counter()
        self.by_chance: Counter[str] = Counter()
        self.untold: Counter[str] = Counter()
        self._by_place: Counter[tuple[str, int]] = Counter()
        self._whose: list[Prints] = []
        self._accounts: list[Prints] = []

    def copy(self) -> Tally:
        """Gives another one that has counted the same."""
        twin = Tally(self._makers, self._real, no_real=self._avoided is not None)
        twin.people = self.people
        twin.borne, twin.by_chance = self.borne.copy(), self.by_chance.copy()
        twin.untold, twin._by_place = self.untold.copy(), self._by_place.copy()
        twin._whose, twin._accounts = [*self._whose], [*self._accounts]
        return twin

    def add(self, whose: Prints, digests: Digests, told: Told, made: Collection[str]) -> None:
        """Counts people.

        Args:
            whose: The prints of their keys.
            digests: The digests of these.
            told: What is told of each.
            made: The attributes that are made up for them.
        """
        made_up = MadeUp(digests, told, self._makers, self._avoided)
        self.people += len(digests)
        self.untold["country"] += _number_of(told.place == 0)
        self.untold["gender"] += _number_of(told.gender == 0)
        numbered = [attribute for attribute in PHONES if attribute in made]
        for place, people in enumerate(np.bincount(told.place).tolist() if numbered else []):
            self._by_place.update({(attribute, place): people for attribute in numbered})
        if any(attribute in made for attribute in _ACCOUNTS):
            self._whose.append(whose)
            self._accounts.append(made_up.accounts)
        self._count(made_up, made, self.borne)
        self._count(MadeUp(mixed(digests), told, self._makers), made, self.by_chance)

    @property
    def counts(self) -> Counts:
        """What was counted, but for what real people bear."""
        known = [None, *self._makers.places.known[1:]]
        by_place = {(what, known[place]): count for (what, place), count in self._by_place.items()}
        return Counts(self.people, self.untold, Counter(by_place))

    @property
    def accounts(self) -> tuple[Prints, Prints]:
        """The prints of keys, and those of the accounts that go with them."""
        none = [np.zeros(0, dtype=np.uint64)]
        return np.concatenate(none + self._whose), np.concatenate(none + self._accounts)

    def take_in(self, counts: Counts) -> None:
        """Adds what was counted elsewhere."""
        places = self._makers.places
        self.people += counts.people
        self.untold.update(counts.untold)
        for (what, place), count in counts.by_place.items():
            self._by_place[what, places.number_of(place) if place else 0] += count

    def _count(self, people: MadeUp, made: Collection[str], counts: Counter[str]) -> None:
        if any(attribute in made for attribute in NAMES) and len(self._real.names):
            counts[FULL_NAMES] += _number_of(self._real.names.has(people.names))
        for attribute in PHONES if len(self._real.numbers) else ():
            if attribute in made:
                ends = ends_of_numbers(people.column(attribute))
                counts[NUMBERS] += _number_of(self._real.numbers.has(ends))
        if "email" in made and len(self._real.addresses):
            addresses = prints_of_addresses(people.column("email"))
            counts[ADDRESSES] += _number_of(self._real.addresses.has(addresses))

    def scarce_numbers(self) -> Iterator[str]:
        """Tells of which numbers there are fewer than people in a place."""
        for (attribute, place), people in self._by_place.items():
            numbers = self._makers.forms(attribute).numbers[place]
            if numbers < people:
                region = self._makers.places.known[place].region
                yield f"{attribute} in {region} ({numbers:,} numbers for {people:,} people)"

    def refuse_shared_accounts(self) -> None:
        """Refuses two people of one user name; those of one address have one user name, too."""
        refuse_shared(shared_accounts(*self.accounts))


def shared_accounts(whose: Prints, accounts: Prints) -> int:
    """Counts the accounts that are of two people.

    Args:
        whose: The prints of keys.
        accounts: The print of the account of each.
    """
    order = np.argsort(accounts)
    whose, accounts = whose[order], accounts[order]
    return _number_of((accounts[1:] == accounts[:-1]) & (whose[1:] != whose[:-1]))


def refuse_shared(accounts: int) -> None:
    """Refuses so many accounts that are of two people, if there are any."""
    if accounts:
        raise ReplaceError(
            f"{counted(accounts, 'user name')} would be of two people, as chance has it once in a"
            " great while: take another secret, with which everybody becomes another person."
        )


def _number_of(found: Any) -> int:
    return int(np.count_nonzero(found))

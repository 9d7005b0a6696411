"""Counts what made-up people share with real ones, and refuses what they share with each other."""

from __future__ import annotations

from collections import Counter
from collections.abc import Collection, Iterator
from typing import Any

import numpy as np

from vantrel.attributes import NAMES, PHONES
from vantrel.errors import ReplaceError
from vantrel.replacing.keys import Digests
from vantrel.replacing.made import MadeUp, Makers
from vantrel.replacing.numbers import ends_of_numbers
from vantrel.replacing.prints import Prints, mixed
from vantrel.replacing.real import RealPeople, prints_of_addresses
from vantrel.replacing.told import Told
from vantrel.wording import counted

FULL_NAMES, NUMBERS, ADDRESSES = "full names", "telephone numbers", "e-mail addresses"

_ACCOUNTS = ("username", "email")


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

    def _count(self, people: MadeUp, made: Collection[str], counts: Counter[str]) -> None:
        if any(attribute in made for attribute in NAMES):
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
        if not self._accounts:
            return
        whose, accounts = np.concatenate(self._whose), np.concatenate(self._accounts)
        order = np.argsort(accounts)
        whose, accounts = whose[order], accounts[order]
        shared = _number_of((accounts[1:] == accounts[:-1]) & (whose[1:] != whose[:-1]))
        if shared:
            raise ReplaceError(
                f"{counted(shared, 'user name')} would be of two people, as chance has it once in a"
                " great while: take another secret, with which everybody becomes another person."
            )


def _number_of(found: Any) -> int:
    return int(np.count_nonzero(found))

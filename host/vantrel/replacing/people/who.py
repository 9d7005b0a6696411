"""Who is who: what the tables of a run tell of each key, and the digest of it once it is hashed.

There are some ten bytes for each fact of a person, in sorted arrays of numbers. What is learnt is
put aside and merged when there is as much of it as is known, so that merging costs little a row.
"""

from __future__ import annotations

from typing import Any, NamedTuple

import numpy as np

from vantrel.errors import ReplaceError
from vantrel.replacing.people.told import Told
from vantrel.replacing.values.keys import WORDS, Digests
from vantrel.replacing.values.prints import Prints

_FEWEST_TO_MERGE = 1_000_000

_TYPES = (np.uint8, np.uint16, np.uint64, np.uint64, np.uint64)
_CONTRADICTED = ("gender", "place")


class Facts(NamedTuple):
    """What is known of people, each of whom is there once.

    Attributes:
        prints: The prints of their keys.
        checks: Other prints of the same keys.
        told: What is told of each.
        digests: The digest of each one's key; None if that is not known.
        is_contradicted: Of whom rows contradict what is told, as ``gender`` and as ``place``.
    """

    prints: Prints
    checks: Prints
    told: Told
    digests: Digests | None = None
    is_contradicted: Any = None

    def of(self, rows: Any) -> Facts:
        """Gives what is known of some of them."""
        rest = (None if each is None else each[rows] for each in self[3:])
        return Facts(self.prints[rows], self.checks[rows], self.told.of(rows), *rest)


class Who:
    """The people of all tables of a run, by the prints of their keys.

    Attributes:
        prints: The prints of their keys, sorted.
        told: What is told of each one, by the first row that tells it.
        digests: The digest of each one's key.
        is_hashed: Whose digest is there.
    """

    def __init__(self) -> None:
        self.prints = np.zeros(0, dtype=np.uint64)
        self._checks = np.zeros(0, dtype=np.uint64)
        self.told = Told(*(np.zeros(0, dtype=each) for each in _TYPES))
        self.digests: Digests = np.zeros((0, WORDS), dtype=np.uint64)
        self.is_hashed = np.zeros(0, dtype=bool)
        self._is_contradicted = np.zeros((0, len(_CONTRADICTED)), dtype=bool)
        self._new: list[tuple[Any, ...]] = []
        self._new_rows = 0

    def __len__(self) -> int:
        return len(self.prints)

    def learn(self, prints: Prints, checks: Prints, told: Told) -> None:
        """Takes in what rows tell.

        Args:
            prints: The prints of their keys.
            checks: Other prints of the same keys, which tell apart whose first are alike.
            told: What each row tells.
        """
        self._new.append((prints, checks, *told))
        self._new_rows += len(prints)
        if self._new_rows > max(_FEWEST_TO_MERGE, len(self)):
            self._merge()

    def know(self, facts: Facts) -> None:
        """Takes in what others have learnt; what was known before comes before it."""
        self.learn(facts.prints, facts.checks, facts.told)
        people = self.find(facts.prints)
        if facts.digests is not None:
            self.digests[people] = facts.digests
            self.is_hashed[people] = True
        if facts.is_contradicted is not None:
            rows, facts_told = np.nonzero(facts.is_contradicted)
            self._is_contradicted[people[rows], facts_told] = True

    def facts(self) -> Facts:
        """Gives what is known, with the contradictions since the table began."""
        self._merge()
        return Facts(self.prints, self._checks, self.told, self.digests, self._is_contradicted)

    def end_table(self) -> dict[str, int]:
        """Counts the people of whom the rows since the last call contradict what is told.

        Returns:
            How many there are for ``gender`` and for ``place``.
        """
        self._merge()
        counts = self._is_contradicted.sum(axis=0)
        self._is_contradicted[:] = False
        return dict(zip(_CONTRADICTED, counts.tolist(), strict=True))

    def find(self, prints: Prints) -> Any:
        """Gives the places of people in the arrays, by the prints of their keys."""
        self._merge()
        places = np.searchsorted(self.prints, prints)
        if len(places) and (
            not len(self) or (self.prints.take(places, mode="clip") != prints).any()
        ):
            raise ReplaceError("Some rows have keys that were not there when the table was learnt.")
        return places

    def _merge(self) -> None:
        """Sorts what was put aside in between what is known."""
        if not self._new:
            return
        known = (self.prints, self._checks, *self.told)
        prints, checks, *facts = (
            np.concatenate(each) for each in zip(known, *self._new, strict=True)
        )
        self._new, self._new_rows = [], 0
        order = np.argsort(prints, kind="stable")  # the earlier row of a key stays the earlier
        prints, checks = prints[order], checks[order]
        is_first = np.append(True, prints[1:] != prints[:-1])[: len(prints)]
        person = np.cumsum(is_first) - 1
        self._move_digests(order, person, int(is_first.sum()))
        self.prints, self._checks = prints[is_first], checks[is_first]
        if (checks != self._checks[person]).any():
            raise ReplaceError("Two keys look alike by chance, as few ever do: run it once more.")
        self.told = Told(*(self._first(fact[order], person) for fact in facts))
        for number, name in enumerate(_CONTRADICTED):
            fact = facts[Told._fields.index(name)][order]
            differs = (fact != 0) & (fact != getattr(self.told, name)[person])
            self._is_contradicted[person[differs], number] = True

    def _first(self, fact: Any, person: Any) -> Any:
        """For each person the first that is told."""
        told = np.flatnonzero(fact)
        of = person[told]
        is_first = np.append(True, of[1:] != of[:-1])[: len(of)]
        first = np.zeros(len(self), dtype=fact.dtype)
        first[of[is_first]] = fact[told[is_first]]
        return first

    def _move_digests(self, order: Any, person: Any, people: int) -> None:
        """Moves what belongs to the people known before to where they are now."""
        before = order < len(self)
        old, now = order[before], person[before]
        is_hashed = np.zeros(people, dtype=bool)
        is_hashed[now] = self.is_hashed[old]
        contradicted = np.zeros((people, len(_CONTRADICTED)), dtype=bool)
        contradicted[now] = self._is_contradicted[old]
        digests = np.zeros((people, WORDS), dtype=np.uint64)  # no memory until it is written to
        hashed = self.is_hashed[old]
        digests[now[hashed]] = self.digests[old[hashed]]
        self.is_hashed, self._is_contradicted, self.digests = is_hashed, contradicted, digests

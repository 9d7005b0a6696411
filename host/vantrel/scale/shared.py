"""What all workers of a run that replaces people are told."""

from __future__ import annotations

from collections.abc import Mapping
from dataclasses import dataclass
from pathlib import Path
from uuid import uuid4

from vantrel.replacing.columns.roles import Roles
from vantrel.replacing.others.action import Action
from vantrel.replacing.people.people import People, Seeds, drawn_seeds
from vantrel.replacing.runs.passing import Passing
from vantrel.rows import Ways


class Hidden[T]:
    """A value that is never shown: Dask logs the arguments of tasks that fail, and names tasks by
    the hash of what they are given."""

    def __init__(self, value: T) -> None:
        self.value = value
        self._token = uuid4().hex

    def __repr__(self) -> str:
        return "<hidden>"

    def __dask_tokenize__(self) -> str:
        return self._token


@dataclass(frozen=True)
class Shared:
    """What decides who becomes whom, and what the columns are.

    Attributes:
        secret: The secret, and what prints of keys are made with in this run.
        table: What the user calls the table.
        roles: What its columns are.
        scrub: The columns in which the names of the row's person are replaced, too.
        others: The actions of other columns.
        place: The country or locale where those live who have none.
        ways: Which telephone numbers people have, and in what letters their names are.
    """

    secret: Hidden[tuple[bytes, Seeds]]
    table: Path
    roles: Roles
    scrub: tuple[str, ...]
    others: Mapping[str, Action]
    place: str
    ways: Ways

    @staticmethod
    def hidden(secret: bytes) -> Hidden[tuple[bytes, Seeds]]:
        """Hides a secret, and what prints are made with, which is drawn for each run."""
        return Hidden((secret, drawn_seeds()))

    def people(self) -> People:
        """Gives people of whom nothing is known yet."""
        secret, seeds = self.secret.value
        return People(secret, place=self.place, ways=self.ways, seeds=seeds)

    def passing(self, people: People) -> Passing:
        """Gives what becomes of the batches of a file."""
        return Passing(people, self.roles, self.scrub, self.others)

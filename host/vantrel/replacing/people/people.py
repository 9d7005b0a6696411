"""Learns who is who from all tables of a run, and then replaces the people of each.

people = People(secret)
for each table, for each batch:  people.learn(batch, roles, table)
people.settle()
for each table, for each batch:  columns = people.replaced(batch, roles)
report = people.finish()
"""

from __future__ import annotations

import secrets
from collections import defaultdict
from collections.abc import Iterable, Mapping, Sequence
from dataclasses import dataclass
from functools import partial
from hashlib import blake2b
from typing import Any, NamedTuple

import numpy as np
import pyarrow as pa

from vantrel.attributes import NAMES, PHONES
from vantrel.errors import ReplaceError
from vantrel.hints import listed
from vantrel.replacing.columns.person import REPLACED, Person
from vantrel.replacing.columns.roles import Roles
from vantrel.replacing.making.places import Places
from vantrel.replacing.others.action import Action
from vantrel.replacing.others.changed import Changed
from vantrel.replacing.people.made import MadeUp, Makers
from vantrel.replacing.people.real import RealPeople
from vantrel.replacing.people.report import Report, Table
from vantrel.replacing.people.tally import Tally
from vantrel.replacing.people.told import Told, told_by, with_genders_by_name
from vantrel.replacing.people.who import Facts, Who
from vantrel.replacing.values.cells import put_in
from vantrel.replacing.values.form import in_case_of, in_form_of, in_form_of_numbers
from vantrel.replacing.values.keys import (
    WORDS,
    Digests,
    as_texts,
    canonical,
    digests,
    keys_of,
    keys_of_rows,
)
from vantrel.replacing.values.prints import Prints, prints
from vantrel.rows import Ways
from vantrel.util.locale.faker_locales import DEFAULT_LOCALE

_AT_ONCE = 100_000

# Keep apart what is derived for them from the digests of keys.
_OF_OTHERS = b"other columns"
_OF_FAMILIES = b"families"


type Seeds = tuple[int, int]


def drawn_seeds() -> Seeds:
    """Draws what the prints of a run are made with, so that nobody can choose keys that clash."""
    return secrets.randbits(64), secrets.randbits(64)


@dataclass(frozen=True)
class NewPerson:
    """What becomes of one person of each row of a batch.

    Attributes:
        person: Which of her columns are there.
        real: The texts of those of them that are replaced, as they were.
        columns: The new values of those that are replaced, in their types.
        digests: The digest of the key of each row's person.
        told: What is told of each.
        made: Who becomes of each.
    """

    person: Person
    real: dict[str, pa.Array]
    columns: dict[str, pa.Array]
    digests: Digests
    told: Told
    made: MadeUp


@dataclass(frozen=True)
class NewValues:
    """What becomes of a batch.

    Attributes:
        people: What becomes of each person of its rows.
    """

    people: list[NewPerson]

    @property
    def columns(self) -> dict[str, pa.Array]:
        """The new values of the columns of all of them."""
        return {name: new for person in self.people for name, new in person.columns.items()}


class People:
    """The people of all tables of a run, and who becomes of each.

    Args:
        secret: What decides who becomes of whom.
        place: The country or locale where those live who have none.
        no_real: Whether nobody gets the full name or the number of a real person of the tables.
        ways: Which telephone numbers people have, and in what letters their names are.
        seeds: Where these are some of the people of a run, what prints of keys are made with in
            all of it. What they share with real people is not counted then, and whoever joins
            the parts warns of countries.

    Attributes:
        tables: What was met in each table, by its name.
        places: The countries of the run.
        without_key: What was counted of the people of rows without a key.
    """

    def __init__(
        self,
        secret: bytes,
        *,
        place: str = DEFAULT_LOCALE,
        no_real: bool = False,
        ways: Ways | None = None,
        seeds: Seeds | None = None,
    ) -> None:
        self._secret = secret
        self._is_part = seeds is not None
        self._seeds = seeds or drawn_seeds()
        self._no_real = no_real
        self.places = Places(place, warns=not self._is_part)
        key = blake2b(key=secret, person=_OF_FAMILIES).digest()
        self._makers = Makers(self.places, ways or Ways(), key)
        self._who = Who()
        self._real = RealPeople()
        self.without_key = Tally(self._makers, self._real, no_real=no_real)
        self._replaced: set[str] = set()
        self._current: str | None = None
        self._places_told: defaultdict[tuple[str | None, str], set[int]] = defaultdict(set)
        self._only_read: Prints | None = None
        self.tables: dict[str, Table] = {}

    def learn(self, batch: pa.RecordBatch, roles: Roles, table: str = "") -> None:
        """Takes in what a batch of a table tells of its people.

        Args:
            batch: Some rows, with the columns of all roles.
            roles: What the columns are.
            table: The name of the table; its batches come one after the other.
        """
        if table != self._current:
            self._end_table()
            self._current = table
        met = self.tables.setdefault(table, Table(named_keys=_named_keys(roles)))
        met.rows += batch.num_rows
        self._who.learn(*_by_rows([self._read(batch, each, met) for each in roles.people]))

    def end_what_is_only_read(self) -> None:
        """Ends the tables that are not replaced, and only tell of people."""
        self._end_table()
        self._only_read = self._who.prints.copy()

    def settle(self) -> None:
        """Ends learning: what is known now decides.

        Raises:
            ReplaceError: The key that was named for a table is missing in all of its rows.
        """
        self._end_table()
        for name, table in list(self.tables.items()):
            for person, key in table.named_keys.items():
                if table.without_key.get(person):
                    del self.tables[name]
                    raise _key_missing(name, person, key)

    def know(self, facts: Facts, made: Iterable[str]) -> None:
        """Takes in what other parts of a run have learnt.

        Args:
            facts: That.
            made: The attributes that are made up.
        """
        self._who.know(facts)
        self._replaced.update(made)

    def facts(self, keys: Prints | None = None) -> Facts:
        """Gives what is known of all keys, or of those of some prints."""
        facts = self._who.facts()
        return facts if keys is None else facts.of(self._who.find(keys))

    def meet(self, batch: pa.RecordBatch, roles: Roles) -> None:
        """Counts the people of a batch that was learnt, as replacing them does.

        Args:
            batch: Rows; with all their columns if somebody in some table has no key.
            roles: What the columns are.
        """
        self._replaced.update(roles.replaced.values())
        for person in roles.people:
            self._identities(batch, person)

    def replaced(self, batch: pa.RecordBatch, roles: Roles) -> NewValues:
        """Makes the new columns of a batch that was learnt.

        Args:
            batch: The rows as they are, with all their columns: a row without a key is known by all
                that stands in it.
            roles: What the columns are.
        """
        self._replaced.update(roles.replaced.values())
        return NewValues([self._become(batch, person) for person in roles.people])

    def locales_in(self, table: str, person: Person) -> set[str]:
        """Tells in which locales of Faker people of a table that was learnt are for certain.

        Where its rows tell none of somebody, other tables of the run may.
        """
        places = self._places_told[table, person.name]
        if person.key and len(self.places.known) > 1:
            places = places - {0}
        return {self.places.known[place].locale for place in places}

    def changed(self, actions: Mapping[str, Action]) -> Changed:
        """Gives what makes the columns of a table that have actions of their own."""
        key = blake2b(key=self._secret, person=_OF_OTHERS).digest()
        return Changed(actions, key, self.places)

    def finish(self) -> Report:
        """Makes sure that no two people share an account, and counts what real people bear.

        Raises:
            ReplaceError: Two people would share one.
        """
        tally = self.tally()
        tally.refuse_shared_accounts()
        hashed = self._who.prints[self._who.is_hashed]
        return Report(
            tally.people,
            self.tables,
            dict(tally.borne),
            dict(tally.by_chance),
            dict(tally.untold),
            self.places.known[0].locale,
            list(tally.scarce_numbers()),
            self._met_before(hashed),
        )

    def tally(self) -> Tally:
        """Counts all people who were made up."""
        tally = self.without_key.copy()
        hashed = np.flatnonzero(self._who.is_hashed)
        for start in range(0, len(hashed), _AT_ONCE):
            rows = hashed[start : start + _AT_ONCE]
            who, told = self._who, self._told_of(rows)
            tally.add(who.prints[rows], who.digests[rows], told, self._replaced)
        return tally

    def _met_before(self, people: Prints) -> int | None:
        known = self._only_read
        return None if known is None else int(np.isin(people, known).sum())

    @property
    def _avoided(self) -> RealPeople | None:
        return self._real if self._no_real else None

    def _end_table(self) -> None:
        counts = self._who.end_table()
        if self._current in self.tables:
            self.tables[self._current].contradictions = {
                "gender": counts["gender"],
                "country": counts["place"],
            }
        self._current = None

    def _read(self, batch: pa.RecordBatch, person: Person, met: Table) -> _Rows:
        """Reads what the rows of a batch that have a key tell of a person."""
        told = told_by(batch, person, self.places)
        places = np.flatnonzero(np.bincount(told.place))
        self._places_told[self._current, person.name].update(places.tolist())
        if not self._is_part:
            self._real.learn(batch, person, told)
        keys = _keys(batch, person)
        own = prints(keys, self._seeds[0])
        rows = np.flatnonzero(own)
        if len(rows):
            met.named_keys.pop(person.name, None)
        if len(rows) < len(own):
            met.lacks_keys = True
            before = met.without_key.get(person.name, 0)
            met.without_key[person.name] = before + int(_is_there(batch, person)[own == 0].sum())
        return _Rows(rows, own[rows], prints(keys, self._seeds[1])[rows], told.of(rows))

    def _become(self, batch: pa.RecordBatch, person: Person) -> NewPerson:
        """Makes the new columns of one person of each row."""
        found, told = self._identities(batch, person)
        made = MadeUp(found, told, self._makers, self._avoided)
        real = {column: as_texts(batch.column(column)) for column in person.replaced}
        columns = {
            column: put_in(_written(made, attribute, real[column]), batch.column(column), column)
            for column, attribute in person.replaced.items()
        }
        return NewPerson(person, real, columns, found, told, made)

    def _identities(self, batch: pa.RecordBatch, person: Person) -> tuple[Digests, Told]:
        """Gives the digest of each row's key, and what is told of that person."""
        keys = _keys(batch, person)
        own = prints(keys, self._seeds[0])
        found = np.zeros((batch.num_rows, WORDS), dtype=np.uint64)
        told = Told(*(np.zeros(len(own), dtype=each.dtype) for each in self._who.told))
        keyed, others = np.flatnonzero(own), np.flatnonzero(own == 0)
        people = self._who.find(own[keyed])
        self._hash(keys, keyed, people)
        found[keyed] = self._who.digests[people]
        _put(told, keyed, self._told_of(people))
        if len(others):
            apart = batch.take(pa.array(others))
            of_others = with_genders_by_name(told_by(apart, person, self.places), self.places)
            found[others] = self._digests_of_rows(apart, person, of_others)
            _put(told, others, of_others)
        return found, told

    def _told_of(self, people: Any) -> Told:
        """Gives what all tables tell of people, by their places in what is known."""
        return with_genders_by_name(self._who.told.of(people), self.places)

    def _hash(self, keys: pa.Array, rows: Any, people: Any) -> None:
        """Hashes the keys of those rows whose people have no digest yet."""
        new = np.flatnonzero(~self._who.is_hashed[people])
        if not len(new):
            return
        whom, where = np.unique(people[new], return_index=True)
        texts = keys.take(pa.array(rows[new[where]])).to_pylist()
        self._who.digests[whom] = digests(texts, self._secret)
        self._who.is_hashed[whom] = True

    def _digests_of_rows(self, batch: pa.RecordBatch, person: Person, told: Told) -> Digests:
        """Hashes rows without a key, and counts their people, whom nobody knows afterwards."""
        names = batch.schema.names
        in_order = sorted(range(len(names)), key=names.__getitem__)  # whatever the table's is
        keys = keys_of_rows([batch.column(place) for place in in_order], person.name)
        made = digests(keys.to_pylist(), self._secret)
        there = np.flatnonzero(_is_there(batch, person))
        own = prints(keys, self._seeds[0])[there]
        self.without_key.add(own, made[there], told.of(there), self._replaced)
        return made


class _Rows(NamedTuple):
    """What the rows of a batch that have a key tell of a person.

    Attributes:
        rows: Their places in the batch.
        prints: The prints of their keys.
        checks: Other prints of these.
        told: What each tells.
    """

    rows: Any
    prints: Prints
    checks: Prints
    told: Told


def _by_rows(people: Sequence[_Rows]) -> tuple[Prints, Prints, Told]:
    """Gives what is told of several people in the order of the rows, whatever their batches are."""
    if len(people) == 1:
        _, own, checks, told = people[0]
        return own, checks, told
    order = np.argsort(np.concatenate([each.rows for each in people]), kind="stable")
    own = np.concatenate([each.prints for each in people])
    checks = np.concatenate([each.checks for each in people])
    told = Told(*map(np.concatenate, zip(*(each.told for each in people), strict=True)))
    return own[order], checks[order], told.of(order)


def _keys(batch: pa.RecordBatch, person: Person) -> pa.Array:
    """Gives the key of each row, all of them missing where there is none."""
    if not person.key:
        return pa.nulls(batch.num_rows, pa.binary())
    return keys_of([batch.column(column) for column in person.key], person.of)


def _named_keys(roles: Roles) -> dict[str, tuple[str, ...]]:
    return {person.name: person.key for person in roles.people if person.is_key_named}


def _is_there(batch: pa.RecordBatch, person: Person) -> Any:
    """Tells which rows have anything of a person; of the only one all do, if any column is hers."""
    if not person.name:
        return np.full(batch.num_rows, bool(person.needed))
    own = [each for name in REPLACED for each in person.columns.get(name, ())]
    is_there = np.zeros(batch.num_rows, dtype=bool)
    for column in {*person.key, *own}:
        cells = canonical(batch.column(column))
        is_there |= cells.is_valid().to_numpy(zero_copy_only=False)
    return is_there


def _key_missing(table: str, person: str, key: Sequence[str]) -> ReplaceError:
    whose = f" of {person!r}" if person else ""
    where = f"In {table} the" if table else "The"
    return ReplaceError(
        f"{where} key {listed(key)}{whose} is missing in every row: name another one, or none."
    )


def _written(made: MadeUp, attribute: str, real: pa.Array) -> pa.Array:
    """Makes the new values of a column, names and numbers in the form of the real ones."""
    values = made.column(attribute)
    if attribute in PHONES:
        international = partial(made.number, attribute, is_international=True)
        values = in_form_of_numbers(real, values, international)
    if attribute == "fullname":
        values = in_form_of(real, values, made.inverted)
    return in_case_of(real, values) if attribute in NAMES else values


def _put(told: Told, rows: Any, own: Told) -> None:
    """Puts what is told of some rows in its place."""
    for values, those in zip(told, own, strict=True):
        values[rows] = those

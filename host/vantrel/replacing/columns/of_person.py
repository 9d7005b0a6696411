"""What is asked of each person of a table's rows."""

from __future__ import annotations

from collections.abc import Collection, Iterable, Iterator, Mapping, Sequence
from dataclasses import dataclass, field, replace

from vantrel.detection.groups import owner_of
from vantrel.errors import ReplaceError
from vantrel.hints import argument, did_you_mean, listed
from vantrel.replacing.columns.person import REPLACED
from vantrel.wording import shown


@dataclass(frozen=True)
class OfPerson:
    """What is asked of one person of each row.

    Attributes:
        name: What she is called where a row has several people.
        key: The columns that name her together; chosen if there is none.
        columns: The columns of attributes that are not to be found.
        kept: Attributes that stay as they are.
        of: The kind of person that her key tells apart.
        household: The column of her household; "" if none.
        place: Where a plan has her; "" if none does.
    """

    name: str = ""
    key: tuple[str, ...] = ()
    columns: Mapping[str, tuple[str, ...]] = field(default_factory=dict)
    kept: frozenset[str] = frozenset()
    of: str = ""
    household: str = ""
    place: str = ""

    @property
    def given(self) -> Iterator[tuple[str, str]]:
        """Each attribute that has a column, and the column."""
        for attribute, columns in self.columns.items():
            for column in columns:
                yield attribute, column

    def without(self, taken: Collection[str]) -> OfPerson:
        """The same, but some columns are not hers."""
        columns = {
            attribute: tuple(column for column in those if column not in taken)
            for attribute, those in self.columns.items()
        }
        return replace(self, columns=columns)


def owner_among(column: str, names: Sequence[str]) -> str:
    """Tells whose a column is: hers whose name it bears, or else the first one's."""
    return owner_of(column, names) or names[0]


def with_columns(
    people: Sequence[OfPerson], columns: Mapping[str, Sequence[str]], kept: frozenset[str]
) -> list[OfPerson]:
    """Asks besides for columns of attributes, each of the person whose name it bears.

    They come beside those that were asked of her for the same attribute, and before them.
    Attributes without columns are not looked for with anybody.
    """
    names = [person.name for person in people]
    given: dict[str, dict[str, tuple[str, ...]]] = {name: {} for name in names}
    for attribute, those in columns.items():
        for column in those:
            of_owner = given[owner_among(column, names)]
            of_owner[attribute] = (*of_owner.get(attribute, ()), column)
        if not those:
            given = {name: {**own, attribute: ()} for name, own in given.items()}
    return [
        replace(person, columns=_both(given[person.name], person.columns), kept=person.kept | kept)
        for person in people
    ]


def _both(
    given: Mapping[str, tuple[str, ...]], before: Mapping[str, tuple[str, ...]]
) -> dict[str, tuple[str, ...]]:
    """Joins the columns of each attribute, but for what is not to be looked for."""
    joined = {
        attribute: tuple(dict.fromkeys((*those, *before.get(attribute, ())))) if those else ()
        for attribute, those in given.items()
    }
    return {**before, **joined}


def with_household(people: Sequence[OfPerson], column: str) -> list[OfPerson]:
    """Asks besides that those of a household share family names.

    Args:
        people: The people of a row.
        column: What tells the household of the person whose name it bears, or else of all.
    """
    owner = owner_of(column, [person.name for person in people])
    return [
        replace(each, household=column) if owner in ("", each.name) else each for each in people
    ]


def with_keys(
    people: Sequence[OfPerson],
    keys: Iterable[tuple[str, ...]],
    named: Mapping[str, tuple[str, ...]],
    the_table: str,
) -> list[OfPerson]:
    """Asks besides for keys, which come before those that were asked for.

    Args:
        people: The people of a row.
        keys: Keys, each of the person whose name one of its columns bears, the first that does.
        named: Keys by the names of people.
        the_table: What errors call the table.

    Raises:
        ReplaceError: Two keys are one person's, or there is nobody of a name.
    """
    names = [person.name for person in people]
    for name in named:
        if name not in names:
            raise ReplaceError(
                f"{the_table} has nobody called {name!r} in its rows.{did_you_mean(name, names)}"
                f" {_people_told(names)}"
            )
    given = dict(named)
    for key in keys:
        owner = next((each for column in key if (each := owner_of(column, names))), names[0])
        if owner in given:
            raise _two_keys(given[owner], key, owner, the_table)
        given[owner] = key
    return [replace(each, key=given.get(each.name, each.key)) for each in people]


def shared_column(given: Iterable[tuple[str, str, str]]) -> str:
    """Tells of a column that has two attributes, or is replaced as two people's; "" if none does.

    Args:
        given: The person, attribute and column of each column that is an attribute of somebody.
    """
    met: dict[str, tuple[str, str]] = {}
    for name, attribute, column in given:
        owner, before = met.setdefault(column, (name, attribute))
        one = f"column {shown(repr(column))} is given to"
        if attribute != before:
            first = _of(before, owner) if owner != name else repr(before)
            both = f"{first} and {_of(attribute, name)}"
            return f"{one} {both}: a column holds one attribute"
        if name != owner and attribute in REPLACED:
            both = f"{shown(repr(owner))} and {shown(repr(name))}"
            return f"{one} {both}: it holds the values of one person"
    return ""


def _of(attribute: str, name: str) -> str:
    return f"{attribute!r} of {shown(repr(name))}" if name else repr(attribute)


def _people_told(names: Sequence[str]) -> str:
    if len(names) == 1:
        return "Its rows have one person each: name the key alone."
    return f"People are: {listed(name for name in names if name)}."


def _two_keys(one: Sequence[str], other: Sequence[str], name: str, the_table: str) -> ReplaceError:
    whose = f" of {name!r}" if name else ""
    return ReplaceError(
        f"{the_table}: there are two keys{whose}, {listed(one)} and {listed(other)}. Join the"
        f" columns of one key, as in {argument('key', [*one, *other])}."
    )

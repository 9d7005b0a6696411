"""What is asked of a run on files: of each table, of all, and by a plan."""

from __future__ import annotations

from collections.abc import Iterable, Mapping, Sequence
from dataclasses import dataclass, field, replace
from itertools import chain
from pathlib import Path

from vantrel.attributes import ATTRIBUTES
from vantrel.errors import PlanError
from vantrel.hints import argument, listed, named
from vantrel.replacing.columns.of_person import OfPerson
from vantrel.replacing.fates import KEEP, SCRUB, UNDECIDED
from vantrel.replacing.plan import Person, Plan
from vantrel.rows import Ways
from vantrel.util.locale.faker_locales import DEFAULT_LOCALE
from vantrel.wording import shown


@dataclass(frozen=True)
class OfTable:
    """What is asked of a table.

    Attributes:
        keys: The columns of the keys of people; chosen where there is none.
        columns: The columns of attributes that are not to be found; none where an attribute is
            not to be looked for.
        keep: Attributes that stay as they are.
        scrub: Columns of other things in which the names of the row's person are replaced, too.
        decided: Other columns that stay, as somebody has decided.
        undecided: Other columns of which somebody has yet to decide.
        others: The actions of other columns.
        household: The column in whose households people share family names; "" if none.
        people: The people of each row, as a plan has them.
        plan: The file of a plan that knows the table, and has to know each of its columns.
        keys_by_name: The columns of the keys of people by what they are called.
    """

    keys: tuple[tuple[str, ...], ...] = ()
    columns: Mapping[str, Sequence[str]] = field(default_factory=dict)
    keep: frozenset[str] = frozenset()
    scrub: tuple[str, ...] = ()
    decided: tuple[str, ...] = ()
    undecided: tuple[str, ...] = ()
    others: Mapping[str, str] = field(default_factory=dict)
    household: str = ""
    people: tuple[OfPerson, ...] = ()
    plan: Path | None = None
    keys_by_name: Mapping[str, tuple[str, ...]] = field(default_factory=dict)

    @property
    def fates(self) -> dict[str, str]:
        """What becomes of other columns, as a plan has it."""
        fates = {UNDECIDED: self.undecided, KEEP: self.decided, SCRUB: self.scrub}
        told = {column: fate for fate, columns in fates.items() for column in columns}
        return told | dict(self.others)

    def over(self, other: OfTable) -> OfTable:
        """Adds what is asked besides; what both tell is as this one tells it."""
        own = self.fates
        taken = {*own, *chain.from_iterable(self.columns.values())}

        def with_more(mine: tuple[str, ...], its: tuple[str, ...]) -> tuple[str, ...]:
            return mine + tuple(column for column in its if column not in own)

        more = {column: action for column, action in other.others.items() if column not in own}
        return OfTable(
            self.keys or other.keys,
            {**other.columns, **self.columns},
            self.keep | other.keep,
            with_more(self.scrub, other.scrub),
            with_more(self.decided, other.decided),
            with_more(self.undecided, other.undecided),
            {**more, **self.others},
            self.household or other.household,
            self.people or tuple(person.without(taken) for person in other.people),
            self.plan or other.plan,
            self.keys_by_name or other.keys_by_name,
        )


@dataclass(frozen=True)
class Asked:
    """What is asked of a run, besides its tables.

    Attributes:
        of_all: What is asked of all tables.
        of_tables: What is asked of single ones, by their names.
        plan: What a plan asks of them; what is said otherwise comes before it.
        place: The country, or locale of Faker, of the people for whom no table tells one.
        no_real: Whether nobody gets the full name or the telephone number of a real person.
        ways: Which telephone numbers people have, and in what letters their names are.
        fail_on_leak: Whether nothing is written where somebody is still named.
        strict: Whether nothing is written while a column that looks personal is not decided.
        is_planned: Whether a plan is to be written, of all columns that look personal.
    """

    of_all: OfTable = OfTable()
    of_tables: Mapping[str, OfTable] = field(default_factory=dict)
    plan: Plan | None = None
    place: str = DEFAULT_LOCALE
    no_real: bool = False
    ways: Ways = field(default_factory=Ways)
    fail_on_leak: bool = False
    strict: bool = False
    is_planned: bool = False

    @property
    def is_personal_enough(self) -> bool:
        """Whether a table is of the run in which nobody is named, but columns look personal."""
        return self.strict or self.is_planned

    def of(self, path: Path, columns: Iterable[str]) -> OfTable:
        """Gives what is asked of a table that has some columns.

        Of what is asked of all tables, columns count that this one has.
        """
        known = set(columns)
        of_all = replace(
            self.of_all,
            columns={
                attribute: own
                for attribute, those in self.of_all.columns.items()
                if (own := [column for column in those if column in known])
            },
            scrub=tuple(column for column in self.of_all.scrub if column in known),
            others={name: each for name, each in self.of_all.others.items() if name in known},
            household=self.of_all.household if self.of_all.household in known else "",
        )
        table = self.of_tables.get(path.name, OfTable()).over(of_all)
        if self.plan and path.name in self.plan.tables:
            return table.over(_planned(self.plan, path.name))
        return table


def _planned(of_run: Plan, table: str) -> OfTable:
    """Gives what a plan asks of a table: nothing is looked for that is not in it."""
    plan = of_run.tables[table]
    place = f"Plan {named(of_run.path)}: table {shown(repr(table))}"
    fates = {
        fate: tuple(column for column, its in plan.other.items() if its == fate)
        for fate in (KEEP, SCRUB, UNDECIDED)
    }
    return OfTable(
        scrub=fates[SCRUB],
        decided=fates[KEEP],
        undecided=fates[UNDECIDED],
        others={column: fate for column, fate in plan.other.items() if fate not in fates},
        people=tuple(_person(person, place) for person in plan.people),
        plan=of_run.path,
    )


def _person(person: Person, place: str) -> OfPerson:
    return OfPerson(
        person.name,
        tuple(person.key),
        {name: tuple(those) for name in ATTRIBUTES if (those := person.columns_of(name))},
        frozenset(person.keep),
        person.of,
        person.household,
        f"{place}, person {shown(repr(person.name))}" if person.name else place,
    )


def names_of(path: Path) -> tuple[str, ...]:
    """What a table may be called: its file, with or without the ends of its name."""
    return path.name, path.name.split(".")[0]


def refuse_unplanned(paths: Iterable[Path], plan: Plan | None) -> None:
    """Refuses tables that a plan does not know."""
    for path in paths:
        if plan and path.name not in plan.tables:
            raise PlanError(
                f"Table {named(path)} is not in the plan, which knows: {listed(plan.tables)}. Write"
                f" a plan of all tables, with {argument('write_plan')}."
            )

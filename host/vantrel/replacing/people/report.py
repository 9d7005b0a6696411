"""What came of a run."""

from __future__ import annotations

from dataclasses import dataclass, field


@dataclass
class Table:
    """What was met in one table.

    Attributes:
        rows: The number of its rows.
        without_key: The number of those that have no key, and are people of their own, by what that
            person of the row is called.
        contradictions: The number of its people whose rows contradict what was told of them before,
            by ``gender`` and ``country``.
        named_keys: The columns of the keys that were named, by the same, of people who have none in
            all rows until now.
        lacks_keys: Whether somebody has no key.
    """

    rows: int = 0
    without_key: dict[str, int] = field(default_factory=dict)
    contradictions: dict[str, int] = field(default_factory=dict)
    named_keys: dict[str, tuple[str, ...]] = field(default_factory=dict)
    lacks_keys: bool = False


@dataclass(frozen=True)
class Report:
    """What came of a run.

    Attributes:
        people: The number of people who were made up.
        tables: What was met in each table.
        borne: How often they got what some real person bears, by what it is.
        by_chance: The same of as many other people, whom nobody got: what chance explains.
        untold: How many have no ``country``, or no ``gender``, that is known.
        locale: Whose names those have who have no country.
        scarce: Of which numbers there are fewer than people: what they are, and how many.
        met_before: How many of them are in the tables that were only read; None if there were none.
    """

    people: int
    tables: dict[str, Table]
    borne: dict[str, int]
    by_chance: dict[str, int]
    untold: dict[str, int]
    locale: str
    scarce: list[str]
    met_before: int | None

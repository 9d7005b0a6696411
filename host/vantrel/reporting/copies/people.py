"""The people of a table and of its copy, however many a row has."""

from __future__ import annotations

from collections.abc import Iterator
from dataclasses import replace
from itertools import count

from vantrel.reporting.copies.cells import rows_of_a_person
from vantrel.reporting.copies.record import CopyRecord, OfPerson
from vantrel.reporting.labelled import LabelledTable
from vantrel.reporting.nearness.in_place import ALIKE
from vantrel.reporting.nearness.nearness import Nearness, compare_shared_with_people
from vantrel.reporting.nearness.shared import Shared
from vantrel.tables import Table


def compare_people(original: Table, copy: Table, record: CopyRecord) -> Nearness:
    """Looks in all places of a row of the copy for what real people bear in any."""
    layouts = [layout for person in record.people.values() for layout in _layouts(person)]
    if not layouts:
        return Nearness((), (), None, (), has_unchecked_names=False)
    names = {name: name for layout in layouts for name in layout}
    people = [LabelledTable(each.several_of_each(layouts), names) for each in (original, copy)]
    found = compare_shared_with_people(*people)
    rows_of_one = max(rows_of_a_person(original, each.key) for each in record.people.values())

    def in_rows(shared: Shared) -> Shared:
        examples = (
            replace(each, first_row=(each.first_row - 1) // len(layouts) + 1)
            for each in shared.examples
        )
        return replace(shared, examples=tuple(examples), rows_of_one=rows_of_one)

    return replace(
        found,
        names=tuple(map(in_rows, found.names)),
        parts=tuple(map(in_rows, found.parts)),
        rows=in_rows(found.rows) if found.rows else None,
    )


def _layouts(person: OfPerson) -> Iterator[dict[str, str]]:
    """Names the columns of a person by what was replaced: the first of each, then the second."""
    alike = {each: person.columns[each][0] for each in ALIKE if person.columns.get(each)}
    replaced: dict[str, list[str]] = {}
    for column, attribute in person.replaced.items():
        replaced.setdefault(attribute, []).append(column)
    for place in count():
        own = {name: those[place] for name, those in replaced.items() if place < len(those)}
        if not own:
            return
        yield own | alike

"""Whole rows of real people in a sample."""

from __future__ import annotations

from vantrel.attributes import WORDS
from vantrel.reporting.labelled import LabelledTable
from vantrel.reporting.nearness.forms import PARTS, Form, Forms, plain, whole_names

_PARTED = ("firstname", "lastname", "fullname")


def row_forms(real: LabelledTable, sampled: LabelledTable) -> tuple[list[Form], list[Form]] | None:
    """Gives the rows of both tables over all that they have in common.

    None where nothing in common tells one person from another: many may be women from Norway.
    """
    told = [forms for forms in (whole_names, *PARTS.values()) if forms(real) and forms(sampled)]
    if not told:
        return None
    has_names = whole_names in told
    alike = [
        attribute
        for attribute in WORDS
        if real.has(attribute) and sampled.has(attribute)
        if not (has_names and attribute in _PARTED)
    ]
    return [_row(real, told, alike)], [_row(sampled, told, alike)]


def _row(table: LabelledTable, told: list[Forms], alike: list[str]) -> Form:
    telling = [forms(table)[0].key for forms in told]
    others = [plain(table.column(attribute)) for attribute in alike]
    # Whoever has nothing that tells her apart is not compared.
    apart = f"nullif({_joined(telling)}, repeat(chr(31), {len(telling) - 1}))"
    key = " || chr(31) || ".join([apart, *([_joined(others)] if others else [])])
    names = [form.shown for form in whole_names(table)[:1]]
    shown = [*names, *(table.column(each) for each in alike)]
    return Form(key, None, f"concat_ws(', ', {', '.join(shown)})")


def _joined(parts: list[str]) -> str:
    return " || chr(31) || ".join(f"coalesce({part}, '')" for part in parts)

"""Compares a real table with a sample of it."""

from __future__ import annotations

from collections.abc import Mapping
from dataclasses import dataclass, replace
from typing import Any, Unpack, override

from vantrel.attributes import WORDS, PersonColumns
from vantrel.errors import CompareError
from vantrel.fitting.checks import make_person, refuse_unknown_attribute
from vantrel.hints import argument, did_you_mean, listed
from vantrel.reporting.column_mapping import label
from vantrel.reporting.figures import Figures, compare_labelled
from vantrel.reporting.judged import Judged
from vantrel.reporting.labelled import LabelledTable, as_table
from vantrel.reporting.meant import meant_of
from vantrel.reporting.nearness.nearness import has_whole_names
from vantrel.reporting.page import Sources, render
from vantrel.reporting.provenance import Provenance, provenance
from vantrel.reporting.verdict import Verdict
from vantrel.reporting.verdicts import verdicts
from vantrel.sampling.record import SampleRecord, sha256_of
from vantrel.tables import Table
from vantrel.wording import counted, distance
from vantrel.wording import listed as joined


@dataclass(frozen=True, repr=False)
class Comparison(Judged):
    """How a real table and a sample of it compare; ``print`` shows the verdicts.

    Args:
        figures: All figures: shares and missing rates from 0 to 1, lengths in characters.
        provenance: How the sample was made, if that is known.
    """

    figures: Figures
    provenance: Provenance | None

    @property
    @override
    def verdicts(self) -> list[Verdict]:
        return verdicts(self.figures, self.provenance)

    @property
    @override
    def summary(self) -> str:
        figures = self.figures
        compared = (
            f"Compared {counted(figures.real_rows, 'real row')} with"
            f" {counted(figures.sampled_rows, 'sampled row')}"
        )
        distances = [
            f"{each.attribute} {distance(each.distance)}"
            for each in figures.frequencies
            if each.distance is not None
        ]
        parts = [f"distance of {joined(distances)}"] if distances else []
        if bearing := [each.bearing for each in figures.nearness.names]:
            parts.append(f"{counted(max(bearing), 'row')} with a real full name")
        return ": ".join([compared, ", ".join(parts)] if parts else [compared])

    @override
    def to_html(self, real: str = "real table", sample: str = "sample") -> str:
        return render(self.figures, Sources(real, sample), self.provenance)


def compare(
    real: Any, sample: Any, *, record: SampleRecord | None = None, **columns: Unpack[PersonColumns]
) -> Comparison:
    """Compares a real table with a sample of it.

    Columns that are neither named nor recorded are found by their names and values; the two tables
    may name them otherwise. Time and memory are about linear in the rows.

    Args:
        real: The real table, as :func:`vantrel.fit` takes it.
        sample: The sample, likewise.
        record: How the sample was made, as ``vantrel.sampling.record.read_record`` reads it.
        columns: The column of each attribute, as in ``gender="sex"``, in both tables or in one.
            It comes before what is recorded or found.

    Raises:
        ArgumentTypeError: One of the tables is none.
        ArgumentError: An attribute is not known, or two share a column.
        CompareError: A named column is in neither table, there is nothing to compare, or the record
            is that of another table.
    """
    named: dict[str, Any] = dict(columns)
    table, people = as_table(real, "A real table"), as_table(sample, "A sample")
    if record and record.options.get("csv_safe"):
        people = people.unguarded()
    recorded = record.columns if record else {}
    for attribute in named:
        refuse_unknown_attribute(attribute)
    make_person({**recorded, **named}, (), None)  # refuses attributes that share a column
    _check_there(named, table, people)
    _refuse_other_record(recorded, people)
    of_real, of_sample = label(table, people, named, recorded)
    _check_comparable((of_real, of_sample), (table, people))
    if record:
        of_sample = replace(of_sample, locales=record.options.get("locales", {}))
    figures = compare_labelled(of_real, of_sample, meant_of(record))
    if record is None:
        return Comparison(figures, None)
    now = sha256_of(people.path) if isinstance(sample, Table) and record.file_sha256 else None
    return Comparison(figures, provenance(record, figures.sampled_rows, now))


def _refuse_other_record(recorded: Mapping[str, str], sampled: Table) -> None:
    if absent := [each for each in recorded.values() if each not in sampled.columns]:
        raise CompareError(
            "The record beside the sample tells of columns that the sample has not:"
            f" {listed(absent)}. It belongs to another table, or the sample was changed. Move the"
            " record away."
        )


def _check_there(named: Mapping[str, str], real: Table, sampled: Table) -> None:
    known = list(dict.fromkeys([*real.columns, *sampled.columns]))
    for attribute, column in named.items():
        if column not in known:
            raise CompareError(
                f"Neither the real table nor the sample has a column {column!r} for {attribute!r}."
                f"{did_you_mean(column, known)} Their columns are: {listed(known)}."
            )


def _check_comparable(
    labelled: tuple[LabelledTable, LabelledTable], tables: tuple[Table, Table]
) -> None:
    real, sampled = labelled
    is_in_both = any(real.has(attribute) and sampled.has(attribute) for attribute in WORDS)
    if not (is_in_both or (has_whole_names(real) and has_whole_names(sampled))):
        columns = " ".join(
            f"The columns of the {name} are: {listed(each.columns)}."
            for name, each in zip(("real table", "sample"), tables, strict=True)
        )
        raise CompareError(
            "Nothing can be compared: no attribute of a person is known to have a column in both"
            f" tables. Name columns, as in {argument('gender', 'COLUMN')}. {columns}"
        )

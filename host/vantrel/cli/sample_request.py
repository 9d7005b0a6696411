"""What ``vantrel sample`` is asked for."""

from __future__ import annotations

from dataclasses import dataclass
from functools import cached_property
from pathlib import Path
from typing import TYPE_CHECKING, Any

import click

from vantrel.attributes import UNIQUE
from vantrel.storage.files import STANDARD_STREAM, refuse_overwriting

if TYPE_CHECKING:
    from vantrel.model.models.person import PersonModel
    from vantrel.sampling import Plan
    from vantrel.sampling.record import SampleRecord
    from vantrel.storage.models import LoadedModel


@dataclass(frozen=True)
class SampleRequest:
    """The options of the command, by their names."""

    model_file: Path
    rows: int | None
    output: Path
    seed: int | None
    conditions: Path | None
    separator: str | None
    encoding: str | None
    unique: list[str]
    strict: bool
    csv_safe: bool
    on_dask: bool
    scheduler: str | None
    workers: int | None
    partitions: int | None
    resume: bool
    allow_patterns: bool
    force: bool

    def check(self) -> None:
        """Makes sure that the options go together and that nothing is overwritten.

        Raises:
            click.UsageError: They do not, or something would be.
        """
        if (self.rows is None) == (self.conditions is None):
            raise click.UsageError("Give either -n, a number of people, or --conditions, a table.")
        for attribute in self.unique:
            if attribute not in UNIQUE:
                raise click.UsageError(
                    f"{attribute!r} cannot be made unique: only {' and '.join(UNIQUE)} can."
                )
        if self.on_dask:
            self._check_on_dask()
        elif self.scheduler or self.workers or self.partitions or self.resume:
            raise click.UsageError(
                "--scheduler, --workers, --partitions and --resume go with --dask only: add it."
            )
        else:
            self._check_csv_safe()
            sources = [self.model_file, *([self.conditions] if self.conditions else [])]
            refuse_overwriting(self.output, *sources, force=self.force)

    def _check_csv_safe(self) -> None:
        if not self.csv_safe:
            return
        from vantrel.tables import kind_to_write

        words = {"parquet": "Parquet", "jsonl": "JSON Lines"}
        if other := words.get(kind_to_write(self.output).format):
            raise click.UsageError(
                f"--csv-safe is for CSV, and {self.output} is to be {other}: leave it out."
            )

    def _check_on_dask(self) -> None:
        if self.conditions or self.csv_safe or self.force or self.output == STANDARD_STREAM:
            raise click.UsageError(
                "--dask makes a new folder of Parquet files: leave out --conditions, --csv-safe,"
                " --force and '-o -'."
            )
        if self.scheduler and self.workers:
            raise click.UsageError("A cluster that runs has its own workers: leave --workers out.")
        if self.output.exists() and not self.output.is_dir():
            raise click.UsageError(f"{self.output} is there and no folder: name another one.")
        if self.output.is_dir() and any(self.output.iterdir()) and not self.resume:
            raise click.UsageError(
                f"Folder {self.output} is not empty: add --resume to go on with a run that was"
                " stopped, or name another folder."
            )

    def load_model(self) -> PersonModel:
        """Reads the model.

        Raises:
            ModelFileError: It cannot be used.
        """
        return self._loaded.model

    @cached_property
    def _loaded(self) -> LoadedModel:
        from vantrel.storage.models import read_model

        return read_model(self.model_file, allow_patterns=self.allow_patterns)

    def new_seed(self) -> int:
        """The seed that is asked for, else a drawn one."""
        from vantrel.sampling.seeding import given_or_drawn

        return given_or_drawn(self.seed)

    def record(self, model: PersonModel, plan: Plan, **options: Any) -> SampleRecord:
        """Notes how the sample is made."""
        from vantrel.sampling.record import SampleRecord

        return SampleRecord(
            model=self.model_file.name,
            model_sha256=self._loaded.sha256,
            rows=plan.rows,
            seed=plan.seed,
            columns=dict(model.params),
            options={"unique": list(plan.unique), "block_rows": plan.block_rows, **options},
        )


def done(plan: Plan, output: Path) -> None:
    """Says what was made."""
    people = "1 person" if plan.rows == 1 else f"{plan.rows:,} people"
    click.echo(f"Made {people} with the seed {plan.seed}; wrote {output}.")

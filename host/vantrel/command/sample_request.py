"""What ``vantrel sample`` is asked for."""

from __future__ import annotations

import secrets
import warnings
from dataclasses import dataclass
from functools import cached_property
from pathlib import Path
from typing import TYPE_CHECKING, Any

import click

from vantrel.command.output import STANDARD_OUTPUT, refuse_overwriting

if TYPE_CHECKING:
    from tqdm import tqdm

    from vantrel.model.models.person import PersonModel
    from vantrel.record import SampleRecord
    from vantrel.sampling import Plan


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
    unique: tuple[str, ...]
    strict: bool
    csv_safe: bool
    on_dask: bool
    scheduler: str | None
    workers: int | None
    partitions: int | None
    resume: bool
    force: bool

    def check(self) -> None:
        """Makes sure that the options go together and that nothing is overwritten.

        Raises:
            click.UsageError: They do not, or something would be.
        """
        if (self.rows is None) == (self.conditions is None):
            raise click.UsageError("Give either -n, a number of people, or --conditions, a table.")
        if self.on_dask:
            self._check_on_dask()
        elif self.scheduler or self.workers or self.partitions or self.resume:
            raise click.UsageError(
                "--scheduler, --workers, --partitions and --resume go with --dask only: add it."
            )
        elif self.csv_safe and self.output.suffix.lower() in (".parquet", ".pq"):
            raise click.UsageError(
                f"--csv-safe is for CSV, and {self.output} is to be Parquet: leave it out."
            )
        else:
            sources = [self.model_file, *([self.conditions] if self.conditions else [])]
            refuse_overwriting(self.output, *sources, force=self.force)

    def _check_on_dask(self) -> None:
        if self.conditions or self.csv_safe or self.force or self.output == STANDARD_OUTPUT:
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
            ValueError: It cannot be used.
        """
        return self._model_and_sha256[0]

    @cached_property
    def _model_and_sha256(self) -> tuple[PersonModel, str]:
        from vantrel.model_file import load_with_sha256
        from vantrel.util.locale.locale import BorrowedNamesWarning

        with warnings.catch_warnings():
            warnings.simplefilter("ignore", BorrowedNamesWarning)  # 'vantrel fit' has told
            return load_with_sha256(self.model_file)

    def new_seed(self) -> int:
        """The seed that is asked for, else a drawn one."""
        return secrets.randbits(32) if self.seed is None else self.seed

    def record(self, model: PersonModel, plan: Plan, **options: Any) -> SampleRecord:
        """Notes how the sample is made."""
        from vantrel.record import SampleRecord

        return SampleRecord(
            model=self.model_file.name,
            model_sha256=self._model_and_sha256[1],
            rows=plan.rows,
            seed=plan.seed,
            columns=dict(model.params),
            options={"unique": list(plan.unique), "block_rows": plan.block_rows, **options},
        )


def progress_bar(rows: int) -> tqdm[Any]:
    """Shows on stderr how far the rows are; nothing where that is no terminal."""
    from tqdm import tqdm

    return tqdm(total=rows, unit=" people", unit_scale=True, disable=None, leave=False)


def done(plan: Plan, output: Path) -> None:
    """Says what was made."""
    people = "1 person" if plan.rows == 1 else f"{plan.rows:,} people"
    click.echo(f"Made {people} with the seed {plan.seed}; wrote {output}.")

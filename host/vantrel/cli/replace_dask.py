"""``vantrel replace`` on folders of Parquet files, on a Dask cluster."""

from __future__ import annotations

from collections.abc import Mapping, Sequence
from pathlib import Path
from typing import Any

import click

from vantrel.cli.options import as_option, refuse_superfluous
from vantrel.cli.replace_asked import Wanted
from vantrel.cli.replace_told import tell
from vantrel.hints import named


def replace_on_dask(
    tables: Sequence[Path],
    output: Path | None,
    write_plan: Path | None,
    secret: Path | None,
    wanted: Wanted,
    of_cluster: Mapping[str, Any],
    of_files: Mapping[str, Any],
) -> None:
    """Copies a folder with its people replaced, or writes a plan of it."""
    _refuse_without_cluster(tables, write_plan, of_cluster)
    refuse_superfluous(
        {
            "people": wanted.people,
            "fail_on_leak": wanted.fail_on_leak,
            "no_real": wanted.no_real,
            **of_files,
            "force": of_files["force"] and output,
        },
        True,
        "a new folder of Parquet files",
    )
    # These take a second to import; help need not wait for them.
    from vantrel.cli.console import working
    from vantrel.replacing import require_pyarrow

    require_pyarrow()
    from vantrel.scale import plan_folder, replace_folder

    (folder,) = tables
    asked = wanted.asked(tables)
    if output is None:
        assert write_plan is not None
        plan_folder(folder, write_plan, asked, force=of_files["force"], progress=working)
        click.echo(f"Wrote {named(write_plan)}: look at it, then run it with --plan.")
        return
    tell(replace_folder(folder, output, asked, secret=secret, progress=working, **of_cluster))


def _refuse_without_cluster(
    tables: Sequence[Path], write_plan: Path | None, of_cluster: Mapping[str, Any]
) -> None:
    """Refuses what does not go with a folder on Dask, or with its plan."""
    if len(tables) > 1:
        raise click.UsageError("--dask copies one folder of Parquet files: name one TABLE.")
    options = [as_option(name, ...) for name, value in of_cluster.items() if value]
    if write_plan is not None and options:
        raise click.UsageError(
            f"A plan is written without a cluster: leave {', '.join(options)} out."
        )

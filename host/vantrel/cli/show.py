"""``vantrel show``: what a model file holds."""

from pathlib import Path

import click

from vantrel.cli.group import TerseCommand
from vantrel.cli.options import patterns_option
from vantrel.hints import named


@click.command(cls=TerseCommand)
@click.argument("model_file", metavar="MODEL.json", type=click.Path(path_type=Path))
@patterns_option
def show(model_file: Path, allow_patterns: bool) -> None:
    """Show what a model has learnt.

    The model file MODEL.json is one that 'vantrel fit' wrote. All that it keeps of the real table
    is shown: the columns, the values of genders, titles and countries, and the shares.

    \b
    Example:
      vantrel show model.json
    """
    import vantrel
    from vantrel.cli.console import print_all
    from vantrel.reporting.sections import Section
    from vantrel.storage.models import read_model

    loaded = read_model(model_file, allow_patterns=allow_patterns)
    facts = [("Model", f"{named(model_file)} ({loaded.size:,} bytes)")]
    if loaded.versions:
        facts.append(("Fitted with", ", ".join(map(" ".join, loaded.versions.items()))))
    missing, *others = vantrel.describe(loaded.model)
    print_all([Section("", ("", ""), [*facts, *missing.rows]), *others])

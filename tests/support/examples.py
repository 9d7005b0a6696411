"""Where the tables of real people lie."""

from pathlib import Path

EXAMPLES = Path(__file__).parents[2] / "examples"

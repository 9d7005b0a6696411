"""Where warnings point to: the first line outside this package."""

from pathlib import Path

OURS = (str(Path(__file__).parents[1]),)
"""The prefixes of this package's files, for ``warnings.warn(..., skip_file_prefixes=OURS)``."""

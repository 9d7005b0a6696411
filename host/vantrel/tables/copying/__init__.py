"""Copies tables with some columns changed, and everything else to the letter as it was.

CSV comes out byte for byte the same but for the cells that are changed. Parquet keeps its types,
metadata, compression and row groups. Of neither is more in memory than a block. It needs pyarrow,
but for :func:`open_copied` itself, which says so.
"""

from vantrel.tables.copying.copied import Batched, Change, Copied
from vantrel.tables.copying.opening import open_copied

__all__ = ["Batched", "Change", "Copied", "open_copied"]

"""Tables that come in parts."""

from __future__ import annotations

from collections.abc import Iterable, Iterator

import pandas as pd


def regroup(frames: Iterable[pd.DataFrame], rows: int) -> Iterator[pd.DataFrame]:
    """Joins and cuts frames, so that each but the last has a given number of rows.

    At least one frame comes out, of no rows if there are none.
    """
    held: list[pd.DataFrame] = []
    count = 0
    for frame in frames:
        held.append(frame)
        count += len(frame)
        if count > rows:
            joined = pd.concat(held)
            for start in range(0, count - rows, rows):
                yield joined.iloc[start : start + rows]
            held = [joined.iloc[start + rows :]]
            count = len(held[0])
    if held:
        yield pd.concat(held)

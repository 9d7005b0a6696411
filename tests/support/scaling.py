"""Models, plans and rows that the tests of sampling on many machines compare with."""

import signal
from collections.abc import Iterator
from contextlib import contextmanager
from pathlib import Path
from types import FrameType

import pandas as pd

from support.people import fitted_model, people
from vantrel.config import PersonLabels
from vantrel.model.models.person import PersonModel
from vantrel.sampling import Plan, sample_blocks

# A block costs the same few milliseconds an attribute however few rows it has. These draw from
# every random source.
QUICK = PersonLabels(
    gender="gender",
    firstname="first",
    password="password",
    mobile_number="mobile",
    country="country",
)


def model_with_gaps(labels: PersonLabels = QUICK, share: float = 0.25) -> PersonModel:
    """A model whose fitted table had missing genders and countries, as often as the share says."""
    table = people(120)
    every = round(1 / share)
    table.loc[::every, "gender"] = None
    table.loc[1::every, "country"] = None
    return fitted_model(labels, table)


def rows_of(model: PersonModel, plan: Plan) -> pd.DataFrame:
    """The rows of a plan as a plain loop over the blocks makes them, of Dask's dtype of text."""
    return pd.concat(list(sample_blocks(model, plan))).astype("string[pyarrow]")


def contents(folder: Path) -> dict[str, bytes]:
    """The content of each file of a folder, by its name."""
    return {file.name: file.read_bytes() for file in folder.iterdir()}


@contextmanager
def time_limit(seconds: int) -> Iterator[None]:
    """Fails what has not ended in time, also where it waits for another thread or process."""

    def fail(number: int, frame: FrameType | None) -> None:
        raise AssertionError(f"not done after {seconds} seconds")

    handler = signal.signal(signal.SIGALRM, fail)
    signal.alarm(seconds)
    try:
        yield
    finally:
        signal.alarm(0)
        signal.signal(signal.SIGALRM, handler)

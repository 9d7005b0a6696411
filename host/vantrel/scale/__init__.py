"""Fits, samples and replaces people past one machine, on Dask.

The rows are those of :mod:`vantrel.sampling`, and of :mod:`vantrel.replacing`: they depend on the
model and the plan alone, or on the tables and the secret, and not on the partitions, the workers,
the scheduler or the order in which they run.
"""

from importlib import import_module
from typing import TYPE_CHECKING, Any

from vantrel.errors import MissingPackageError, PartitionError

if TYPE_CHECKING:
    from vantrel.scale.fitting import fit
    from vantrel.scale.folder import sample_to_folder
    from vantrel.scale.frame import sample
    from vantrel.scale.replaced_folder import plan_folder, replace_folder
    from vantrel.scale.replacing import replace

__all__ = [
    "PartitionError",
    "fit",
    "plan_folder",
    "replace",
    "replace_folder",
    "sample",
    "sample_to_folder",
]

_HOMES = {
    "fit": "fitting",
    "plan_folder": "replaced_folder",
    "replace": "replacing",
    "replace_folder": "replaced_folder",
    "sample": "frame",
    "sample_to_folder": "folder",
}


def __getattr__(name: str) -> Any:
    # Dask takes a second to import and may not be installed: only what needs it asks for it.
    if name not in _HOMES:
        raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
    try:
        return getattr(import_module(f"{__name__}.{_HOMES[name]}"), name)
    except ImportError as error:
        missing = error.name or "dask.dataframe"
        raise MissingPackageError.of("Work on Dask", missing, "dask") from error

"""Fits and samples past one machine, on Dask: on threads, on processes or on a cluster.

The rows are those of :mod:`vantrel.sampling`: they depend on the model and the plan alone, and not
on the partitions, the workers, the scheduler or the order in which they run.
"""

from importlib import import_module
from typing import TYPE_CHECKING, Any

from vantrel.errors import MissingPackageError, PartitionError

if TYPE_CHECKING:
    from vantrel.scale.fitting import fit
    from vantrel.scale.folder import sample_to_folder
    from vantrel.scale.frame import sample

__all__ = ["PartitionError", "fit", "sample", "sample_to_folder"]

_HOMES = {"fit": "fitting", "sample": "frame", "sample_to_folder": "folder"}


def __getattr__(name: str) -> Any:
    # Dask takes a second to import and may not be installed: only what needs it asks for it.
    if name not in _HOMES:
        raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
    try:
        return getattr(import_module(f"{__name__}.{_HOMES[name]}"), name)
    except ImportError as error:
        missing = error.name or "dask.dataframe"
        raise MissingPackageError.of("Work on Dask", missing, "dask") from error

"""Samples past one machine, on Dask: on threads, on processes or on a cluster.

The rows are those of :mod:`vantrel.sampling`: they depend on the model and the plan alone, and not
on the partitions, the workers, the scheduler or the order in which they run.
"""

from vantrel.scale.frame import sample
from vantrel.scale.partitions import PartitionError

__all__ = ["PartitionError", "sample"]

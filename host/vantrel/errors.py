"""Every error and every warning of the package.

:class:`VantrelError` is the root of what the caller or the data can put right; its message says
what, where and what to do. Anything else that is raised, ``OSError`` aside, is a mistake in here.
"""

from __future__ import annotations

import re
from collections.abc import Iterator
from contextlib import contextmanager

__all__ = [
    "ArgumentError",
    "ArgumentTypeError",
    "BorrowedNamesWarning",
    "ClusterError",
    "ColumnNotFoundError",
    "CompareError",
    "ConditionsError",
    "DatabaseError",
    "FittingError",
    "LeakError",
    "LeftoverWarning",
    "MetaNotExtractedError",
    "MissingPackageError",
    "ModelFileError",
    "ModelNotFittedError",
    "NoPeopleError",
    "OtherVersionsWarning",
    "OverwriteError",
    "PartitionError",
    "PlanError",
    "RecordError",
    "ReplaceError",
    "SamplingError",
    "SecretError",
    "SecretWarning",
    "SettingsError",
    "TableError",
    "UndecidedError",
    "UnknownPlaceError",
    "VantrelError",
    "VantrelWarning",
]


class VantrelError(Exception):
    """A call, a table or a file is not as it should be."""


class ArgumentError(VantrelError, ValueError):
    """An argument has a value that the call cannot take, whatever the data are."""


class ArgumentTypeError(VantrelError, TypeError):
    """An argument is of another kind than the call takes."""


class OverwriteError(ArgumentError, FileExistsError):
    """A file would be overwritten that the caller has not given up."""


class MissingPackageError(VantrelError, ImportError):
    """A package is not installed that few calls need."""

    @classmethod
    def of(cls, what: str, package: str, extra: str) -> MissingPackageError:
        """The error of what needs a package that comes with an extra of this one."""
        return cls(f"{what} needs {package}: pip install 'vantrel[{extra}]'.")


class TableError(VantrelError, ValueError):
    """A table cannot be read or written, or holds nothing to learn from."""


class DatabaseError(VantrelError, ValueError):
    """A database cannot be used, or its tables cannot be changed as it is asked."""


class ColumnNotFoundError(VantrelError, KeyError):
    """A table has no column of the name that a meta looks for."""

    def __str__(self) -> str:
        # KeyError shows the repr of its argument, quotes and all; this is a sentence.
        return str(self.args[0])


class UnknownPlaceError(VantrelError, ValueError):
    """Something is neither a country nor a locale."""


class FittingError(VantrelError, ValueError):
    """A table and what it is said to hold do not go together."""


class MetaNotExtractedError(VantrelError):
    """A meta was asked for what it learns from data before it has seen any."""


class ModelNotFittedError(VantrelError):
    """A model was asked for what it learns from data before it was fitted."""


class SamplingError(VantrelError, ValueError):
    """A model cannot make the rows that are asked for."""


class ConditionsError(SamplingError):
    """A model cannot make what the conditions ask for."""


class PartitionError(SamplingError):
    """Some rows could not be made on a cluster."""


class ClusterError(VantrelError, ValueError):
    """A cluster cannot be used, or the run in a folder cannot be resumed."""


class CompareError(VantrelError, ValueError):
    """Two tables have nothing that can be compared."""


class ModelFileError(VantrelError, ValueError):
    """A file holds no model that this version can use, or a model cannot be kept in one."""


class SettingsError(VantrelError, ValueError):
    """A file holds no settings; the message says where and what to do."""


class RecordError(VantrelError, ValueError):
    """A file holds no record of a sample that this version can use."""


class ReplaceError(VantrelError, ValueError):
    """The people of a table cannot be replaced as it is asked."""


class NoPeopleError(ReplaceError):
    """A table has no column of a person that could be replaced."""


class PlanError(ReplaceError):
    """A plan cannot be read, or does not fit the tables."""


class UndecidedError(ReplaceError):
    """Columns look personal, and nobody has decided what becomes of them."""


class LeakError(ReplaceError):
    """People are still named in columns that were not replaced, where that is to be an error."""


class SecretError(VantrelError, ValueError):
    """Something is no secret that decides who people become."""


class VantrelWarning(UserWarning):
    """The root of all warnings of the package."""


class BorrowedNamesWarning(VantrelWarning):
    """People of some places get the names of another place's locale."""


class LeftoverWarning(VantrelWarning):
    """A killed run had left a part of a file, which was removed."""


class OtherVersionsWarning(VantrelWarning):
    """The same seed, or secret, may give others here than where it was used before."""


class SecretWarning(VantrelWarning):
    """Others than its owner can read a secret."""


@contextmanager
def raised_by_model(error: type[VantrelError], what: str) -> Iterator[None]:
    """Turns what the classes of the model raise into an error of the package.

    Args:
        error: The class of the error.
        what: What failed, as the first words of its message.
    """
    try:
        yield
    except VantrelError:
        raise
    except (TypeError, ValueError, LookupError, re.error, OverflowError) as cause:
        raise error(f"{what}: {cause}") from cause

"""What is known of a table's columns."""

from vantrel.metadata.exceptions import ColumnNotFoundError, MetaNotExtractedError
from vantrel.metadata.nominal import Nominal

__all__ = ["ColumnNotFoundError", "MetaNotExtractedError", "Nominal"]

"""What can go wrong between a meta and a table."""

from vantrel.errors import ColumnNotFoundError, MetaNotExtractedError

__all__ = ["ColumnNotFoundError", "MetaNotExtractedError"]

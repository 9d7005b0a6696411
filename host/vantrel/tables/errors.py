"""What is wrong with a table."""

from vantrel.errors import TableError

__all__ = ["TableError"]

"""What is wrong with a table."""

from __future__ import annotations

from pathlib import Path

from vantrel.hints import nearby_file


class TableError(ValueError):
    """A table cannot be read or written, or holds nothing to learn from."""

    @classmethod
    def unreadable(cls, path: Path, error: OSError) -> TableError:
        """The error of a table that the system does not let read."""
        near = nearby_file(path, error)
        return cls(f"Table {path} cannot be read: {error.strerror or error}.{near}")

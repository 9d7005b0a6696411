"""What can go wrong between a meta and a table."""


class MetaNotExtractedError(Exception):
    """A meta was asked for what it learns from data before it has seen any."""


class ColumnNotFoundError(KeyError):
    """A table has no column of the name that a meta looks for."""

    def __str__(self) -> str:
        # KeyError shows the repr of its argument, quotes and all; this is a sentence.
        return str(self.args[0])

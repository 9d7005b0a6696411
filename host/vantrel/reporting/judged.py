"""What all comparisons have in common: verdicts, in a terminal, in a notebook and for machines."""

from __future__ import annotations

import json
from abc import ABC, abstractmethod
from typing import Any

import msgspec

from vantrel.reporting.verdict import LOOK, Verdict

FORMAT = "vantrel-report"

_SCHEMA_VERSION = 1


class Judged(ABC):
    """A comparison of two tables; ``print`` shows its verdicts, a notebook its page."""

    figures: Any

    @property
    @abstractmethod
    def verdicts(self) -> list[Verdict]:
        """The main figures, and whether they ask for a look."""

    @property
    @abstractmethod
    def summary(self) -> str:
        """The main figures in one line."""

    @property
    def asks_for_look(self) -> bool:
        """Whether any verdict asks for a look."""
        return any(each.state == LOOK for each in self.verdicts)

    @abstractmethod
    def to_html(self, real: str = "real table", sample: str = "sample") -> str:
        """Makes one HTML page that needs nothing else: no script, no network, no other file.

        The page shows some values of the real table: keep it as safe as that.

        Args:
            real: The name of the real table, as the reader shall see it.
            sample: The name of the sample, or the copy.
        """

    def to_json(self, real: str = "real table", sample: str = "sample") -> str:
        """Writes verdicts and figures for a machine to read, in the form that the guide tells.

        Args:
            real: The name of the real table.
            sample: The name of the sample, or the copy.
        """
        form = {
            "format": FORMAT,
            "schema_version": _SCHEMA_VERSION,
            "compared": type(self.figures).__name__.removesuffix("Figures").lower() or "sample",
            "real": real,
            "sample": sample,
            "asks_for_look": self.asks_for_look,
            "summary": self.summary,
            "verdicts": msgspec.to_builtins(self.verdicts),
            "figures": msgspec.to_builtins(self.figures),
        }
        return json.dumps(form, ensure_ascii=False, allow_nan=False, indent=2) + "\n"

    def __repr__(self) -> str:
        judged = [
            f"{each.state:<6}{each.about}: {each.figure}. {each.words}" for each in self.verdicts
        ]
        return "\n".join([self.summary, *judged])

    def _repr_html_(self) -> str:
        return self.to_html()

"""Columns of texts."""

from __future__ import annotations

import pandas as pd

from vantrel.metadata.exceptions import MetaNotExtractedError
from vantrel.metadata.nominal import Nominal


class String(Nominal):
    """Describes a column of texts, such as genders or titles.

    Values that are no texts (genders coded as 1 and 2) are described by their text form.
    """

    kind = "string"

    @property
    def categories(self) -> list[str]:
        """The distinct texts in the order of first appearance.

        Raises:
            MetaNotExtractedError: They have not been read from data yet.
        """
        if self._categories is None:
            raise MetaNotExtractedError(
                f"The categories of column {self.name!r} are not known yet: call extract first."
            )
        return self._categories

    def _distinct(self, values: pd.Series) -> list[str]:
        return values.astype(str).unique().tolist()

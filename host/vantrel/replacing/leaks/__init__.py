"""Looks for people who are still named where their columns were replaced, and replaces them there.

It needs pyarrow.
"""

from vantrel.replacing.leaks.scrub import scrubbed
from vantrel.replacing.leaks.search import Leak, LeakSearch

__all__ = ["Leak", "LeakSearch", "scrubbed"]

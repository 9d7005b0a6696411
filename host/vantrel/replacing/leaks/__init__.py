"""Looks for people who are still named where their columns were replaced, and replaces them there.

It needs pyarrow.
"""

from vantrel.replacing.leaks.by_print import PrintedWords
from vantrel.replacing.leaks.scrub import scrubbed
from vantrel.replacing.leaks.search import Known, Leak, LeakSearch, Names, Value

__all__ = ["Known", "Leak", "LeakSearch", "Names", "PrintedWords", "Value", "scrubbed"]

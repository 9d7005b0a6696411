"""Reads, counts and writes tables, whatever their size: CSV, JSON Lines and Parquet.

Nothing here holds more rows than it is asked for. Every value is a text or missing.
"""

from vantrel.tables.counts import TableCounts, count_frame, merged
from vantrel.tables.reading import Table, frame_table, open_table, read_table
from vantrel.tables.writing import write_csv, write_table

__all__ = [
    "Table",
    "TableCounts",
    "count_frame",
    "frame_table",
    "merged",
    "open_table",
    "read_table",
    "write_csv",
    "write_table",
]

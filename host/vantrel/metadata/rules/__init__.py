"""Rules that a table's columns keep together."""

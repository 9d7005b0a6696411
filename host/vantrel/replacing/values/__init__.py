"""Cells as texts, and what tells equal ones: keys, prints, folded names."""

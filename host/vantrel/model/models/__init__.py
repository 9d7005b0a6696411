"""The models of particular kinds of columns."""

"""Tells regular expressions that are safe to take from a stranger from those that are not."""

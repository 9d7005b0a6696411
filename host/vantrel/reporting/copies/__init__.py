"""Compares a table with its copy in which people were replaced."""

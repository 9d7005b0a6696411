"""Compares a real table with a sample of it, and shows how on one page.

:func:`vantrel.reporting.figures.compare` computes; :func:`vantrel.reporting.page.render` shows.
"""

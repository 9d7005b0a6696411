"""Compares a real table with a sample of it, and shows how on one page.

:func:`vantrel.report.figures.compare` computes; :func:`vantrel.report.page.render` shows.
"""

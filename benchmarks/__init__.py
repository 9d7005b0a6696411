"""Measures what sampling costs, against the plain way and against other libraries.

`make bench` runs it and writes RESULTS.md, whose head says how it is measured.
"""

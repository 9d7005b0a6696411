"""Checks of the extension module that take longer than a test may.

`make leaks` runs `python -m checks.leaks`; CONTRIBUTING.md says what it is for.
"""

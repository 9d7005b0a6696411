"""Models of tabular data: learn from real rows, sample new ones that a seed reproduces.

Importing this package is cheap: pandas and numpy are loaded by the modules that need them.
"""

__version__ = "0.1.0"

"""The rows of a table: which genders, titles, countries and gaps stand together, and how often."""

from vantrel.rows.drawing import Combinations, DrawnRows, shares_of_countries
from vantrel.rows.form import ANY, DEFAULT_MIN_COUNT, EVERYWHERE, PARTS, RESERVED, Rows, Ways
from vantrel.rows.learning import learn_rows

__all__ = [
    "ANY",
    "DEFAULT_MIN_COUNT",
    "EVERYWHERE",
    "PARTS",
    "RESERVED",
    "Combinations",
    "DrawnRows",
    "Rows",
    "Ways",
    "learn_rows",
    "shares_of_countries",
]

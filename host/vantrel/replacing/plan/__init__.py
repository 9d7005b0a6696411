"""Plans: what becomes of each column of the tables of a run, in a file that people can review."""

from vantrel.replacing.plan.form import Person, Plan, TablePlan
from vantrel.replacing.plan.reading import read_plan
from vantrel.replacing.plan.writing import Decided, write_plan

__all__ = [
    "Decided",
    "Person",
    "Plan",
    "TablePlan",
    "read_plan",
    "write_plan",
]

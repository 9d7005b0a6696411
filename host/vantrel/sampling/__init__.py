"""Makes samples: block by block, the same from the same seed, under conditions, without repeats."""

from vantrel.sampling.blocks import BLOCK_ROWS, Plan, check_plan, sample_block, sample_blocks
from vantrel.sampling.conditions import prepare_conditions
from vantrel.sampling.people import sample_people
from vantrel.sampling.places import refuse_borrowed
from vantrel.sampling.to_file import sample_to_file
from vantrel.sampling.whole import sample

__all__ = [
    "BLOCK_ROWS",
    "Plan",
    "check_plan",
    "prepare_conditions",
    "refuse_borrowed",
    "sample",
    "sample_block",
    "sample_blocks",
    "sample_people",
    "sample_to_file",
]

"""The text that the benchmarks print and write."""

from __future__ import annotations

from collections.abc import Mapping, Sequence
from textwrap import fill

from . import goals, orders, parts, replacing, results, scale, scale_replacing
from .machine import surroundings
from .people import MIXED
from .tables import Row, table
from .timing import SHORTEST_SECONDS

WIDTH = 100

PARAGRAPHS = (
    "Written by `make bench`; the one run that wrote it measured every number in it.",
    "Times are microseconds of CPU time a row, of all threads of the process together. The ways"
    " that are compared are measured in turn, round by round, the model seeded alike in each. The"
    ' figures are the medians of the rounds ({rounds} here); "by round" has the lowest and the'
    " highest ratio of one round. What is done sooner than in {shortest} seconds is repeated in its"
    " round and its mean taken. Wall time was {wall:.2f} times the CPU time over the whole run.",
    "*Plain* is the module's plain way: it calls each generator value by value, as it does when"
    " anything that it would call has been replaced (`benchmarks/plain_way.py`). Before anything is"
    " timed, both ways make {compared:,} rows from one seed: the benchmark fails unless the results"
    " are equal and leave the global random sources in the same state.",
    "Other libraries make the same columns for the same countries by list comprehensions over"
    " their methods (`benchmarks/rivals.py`). Memory is that of a new process"
    " (`benchmarks/memory.py`): the most that was resident at one time less what was before"
    " sampling, against the finished frame's `memory_usage(deep=True)`.",
    "Rows as real ones are come from `vantrel.sample`, which is held against `model.sample` of as"
    " many; a fit, of gender, title and country in a CSV, against reading these into a frame"
    " (`benchmarks/rows.py`).",
    "The command is measured on CSV of 17 columns, the twelve and five more, in processes of its"
    " own (`benchmarks/command.py`): the most that was resident at one time, all of Python and its"
    " libraries with it, and CPU seconds. A report compares the table with a sample of as many"
    " rows.",
    "People are replaced in CSV of {columns} columns, {replaced} of which are made anew"
    " (`benchmarks/orders.py`), by the command in processes of its own. The copy reads each cell"
    " and writes it with the command's reader and writer, in a process of its own, too; each of"
    " {people_of_copy:,} people has two rows there. The loop makes each person by Faker's methods,"
    " seeded by the person's key (`benchmarks/by_hand.py`), in a table of {by_hand:,} rows. There"
    " each row is another person, as in the {small:,} rows of the command: where people have"
    " several rows, a row costs the loop less, as it makes each but once. The {large:,} rows are of"
    " {people:,} people.",
)

LARGE_HEADING = "Large samples, by the command in new processes"
SCHEDULED_HEADING = "A billion rows in Dask's scheduler, which nobody makes"

PARTS_HEADING = "What each generator costs"
PARTS_NOTE = (
    "Measured while one sample of {rows:,} rows with given genders and countries is made; the"
    " countries are {countries}. The title's ambiguous draw is measured together with setting the"
    " title's and the country's column. A generator that is timed is not the class's own any more,"
    " so that the frame is made column by column; only the last line has it in one piece."
)


def text(
    sections: Mapping[str, Sequence[results.Result]],
    parts_rows: Sequence[Row],
    scale_rows: Sequence[Row],
    scale_replacing_rows: Sequence[Row],
    large: Sequence[str],
    scheduled: str,
    rounds: int,
    wall: float,
) -> str:
    """Gives the whole report in Markdown.

    Args:
        sections: From heading to what was measured.
        parts_rows: What each generator costs.
        scale_rows: What blocks and processes cost.
        scale_replacing_rows: What replacing people on processes costs.
        large: What a large sample takes.
        scheduled: What Dask's scheduler does with a larger one.
        rounds: How many rounds there were.
        wall: How many times the CPU time the wall time was.
    """
    filled = {
        "rounds": rounds,
        "wall": wall,
        "shortest": SHORTEST_SECONDS,
        "compared": goals.ROWS_COMPARED,
        "rows": parts.ROWS,
        "countries": ", ".join(MIXED),
        "columns": orders.COLUMNS,
        "replaced": len(orders.REPLACED),
        "people_of_copy": replacing.CUSTOMERS_OF_COPY,
        "by_hand": replacing.CUSTOMERS_BY_HAND,
        "small": replacing.ROWS,
        "large": replacing.ROWS_LARGE,
        "people": replacing.CUSTOMERS,
    }
    blocks = ["# Benchmarks"]
    blocks += [fill(paragraph.format(**filled), WIDTH) for paragraph in PARAGRAPHS]
    blocks.append(
        "\n".join(
            fill(f"- {name}: {value}", WIDTH, subsequent_indent="  ")
            for name, value in surroundings().items()
        )
    )
    for heading, lines in sections.items():
        blocks += [f"## {heading}", table(results.HEAD, [line.cells() for line in lines])]
    blocks += [f"## {PARTS_HEADING}", fill(PARTS_NOTE.format(**filled), WIDTH)]
    blocks.append(table(parts.HEAD, parts_rows))
    blocks += [f"## {scale.HEADING}", fill(scale.NOTE, WIDTH), table(scale.HEAD, scale_rows)]
    blocks += [f"## {scale_replacing.HEADING}", fill(scale_replacing.NOTE, WIDTH)]
    blocks.append(table(scale_replacing.HEAD, scale_replacing_rows))
    blocks += [f"## {LARGE_HEADING}", *large, f"## {SCHEDULED_HEADING}", scheduled]
    return "\n\n".join(blocks) + "\n"

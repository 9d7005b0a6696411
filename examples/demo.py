"""Replaces the people of a table, and makes people like those of two others.

Run it with `make demo`. The copy, the models, the sampled tables and reports are left in
build/demo/.
"""

from __future__ import annotations

import warnings
from dataclasses import dataclass
from pathlib import Path
from textwrap import fill

import pandas as pd

import vantrel
from vantrel.attributes import PersonColumns
from vantrel.tables import read_table, write_table

ROOT = Path(__file__).resolve().parent.parent
OUTPUT = ROOT / "build" / "demo"
ROWS = 1_000
SEED = 7
WIDTH = 80
SHOWN_ROWS = 2
MISSING = "(missing)"

# For a copy that is handed on, take secrets.token_bytes(32) and keep it as well as the real table.
SECRET = b"everybody can read this secret.."
REPLACED = ("customer_id", "first_name", "last_name", "country", "notes")

# The attributes that neither table has.
MADE_UP = (
    "fullname",
    "email",
    "username",
    "password",
    "mobile_number",
    "home_number",
    "work_number",
)


@dataclass(frozen=True)
class Example:
    """One table to learn from.

    Attributes:
        name: The table's file name without its ending; the written files are called after it.
        about: Who the people are.
        columns: The column of each attribute that the table has.
        made_up: The attributes that it does not have.
        compared: The columns whose shares are shown.
        note: What a reader should know when looking at the shares.
        locales: Where the people are from if no column tells.
    """

    name: str
    about: str
    columns: PersonColumns
    made_up: tuple[str, ...]
    compared: tuple[str, ...]
    note: str
    locales: tuple[str, ...] | None = None


EXAMPLES = (
    Example(
        name="passengers",
        about="People aboard the Titanic, 1912",
        columns={
            "gender": "sex",
            "title": "title",
            "firstname": "first_name",
            "lastname": "last_name",
        },
        made_up=MADE_UP,
        compared=("sex", "title"),
        note=(
            "Genders and titles are drawn together, as often as real rows have them. Titles of a"
            " few rows are not kept, for they might tell whose they are."
        ),
        locales=("en_GB",),
    ),
    Example(
        name="respondents",
        about="People asked by the World Values Survey, 1995-1997",
        columns={"gender": "gender", "country": "country"},
        made_up=("firstname", "lastname", *MADE_UP),
        compared=("country", "gender"),
        note=(
            "Countries and genders are drawn together, as often as real rows have them. The table"
            " has no names: they are made up to agree with each row's gender and country."
        ),
    ),
)


def main() -> None:
    OUTPUT.mkdir(parents=True, exist_ok=True)
    replace()
    for example in EXAMPLES:
        real_path = ROOT / "examples" / f"{example.name}.csv"
        real = read_table(real_path)
        model_path = OUTPUT / f"{example.name}.json"
        sampled_path = OUTPUT / f"{example.name}-sampled.csv"
        page_path = OUTPUT / f"{example.name}.html"
        with warnings.catch_warnings(record=True) as caught:
            warnings.simplefilter("always")
            learn(example, real, model_path)
            sampled = sample(model_path)
        write_table([sampled], sampled_path)
        report(real, sampled, example)
        for note in dict.fromkeys([example.note, *(str(warning.message) for warning in caught)]):
            print(f"\n{fill(note, WIDTH)}")
        print(f"\nWritten: {model_path.relative_to(ROOT)} and {sampled_path.relative_to(ROOT)}")
        comparison = vantrel.compare(real, sampled)
        page_path.write_text(
            comparison.to_html(real_path.name, sampled_path.name), encoding="utf-8"
        )
        print(f"{comparison.summary}; wrote {page_path}.")
        print()


def replace() -> None:
    """Copies a table of customers, and shows some of them beside those who took their places."""
    path = OUTPUT / "customers-replaced.csv"
    real = read_table(ROOT / "examples" / "customers.csv")
    replacer = vantrel.Replacer(SECRET)
    copy = replacer.replace(real, "customer_id", scrub=["notes"])
    write_table([copy], path)
    heading(f"Customers of a shop, {len(real):,} of them, each replaced by a made-up person")
    shown = real.index[real["notes"].notna() & real["email"].notna()][:SHOWN_ROWS]
    for title, table in (("As they are:", real), ("In the copy:", copy)):
        print(f"\n{title}\n")
        print(table.loc[shown, list(REPLACED)].to_string(index=False, na_rep=""))
    for note in replacer.notes:
        print(f"\n{fill(note, WIDTH)}")
    print(f"\nWritten: {path.relative_to(ROOT)}\n")


def heading(*lines: str) -> None:
    print("\n".join(["=" * WIDTH, *lines, "=" * WIDTH]))


def learn(example: Example, real: pd.DataFrame, model_path: Path) -> None:
    """Fits a model on the real table and writes it."""
    model = vantrel.fit(
        real,
        detect=False,
        locales=example.locales,
        generate=example.made_up,
        **example.columns,
    )
    vantrel.save(model, model_path, force=True)


def sample(model_path: Path) -> pd.DataFrame:
    """Samples new rows from nothing but the written model."""
    return vantrel.sample(vantrel.load(model_path), ROWS, seed=SEED)


def report(real: pd.DataFrame, sampled: pd.DataFrame, example: Example) -> None:
    """Prints real beside sampled shares, then a few of the sampled people."""
    heading(example.about, f"{len(real):,} real rows, {len(sampled):,} sampled with seed {SEED}")
    for column in example.compared:
        print(f"\n{shares_table(real[column], sampled[column])}")
    print(f"\nThe first {SHOWN_ROWS} of them, a person a column:\n")
    print(sampled.head(SHOWN_ROWS).T.to_string(header=False, na_rep=""))


def shares_table(real: pd.Series, sampled: pd.Series) -> str:
    """Lists every value of a column with its share of the real and of the sampled rows."""
    shares = pd.DataFrame({"real": shares_of(real), "sampled": shares_of(sampled)}).fillna(0.0)
    lines = [f"{real.name:<24}{'real':>10}{'sampled':>10}"]
    for value, row in shares.sort_values("real", ascending=False, kind="stable").iterrows():
        lines.append(f"  {value:<22}{row['real']:>10.1%}{row['sampled']:>10.1%}")
    return "\n".join(lines)


def shares_of(column: pd.Series) -> pd.Series:
    """Gives the share of each value, missing ones included."""
    return column.astype(object).where(column.notna(), MISSING).value_counts(normalize=True)


if __name__ == "__main__":
    main()

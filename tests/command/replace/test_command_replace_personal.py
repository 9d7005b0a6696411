"""``vantrel replace`` of files in which nobody is named, but columns look personal."""

from __future__ import annotations

import datetime
import re
import tomllib
from pathlib import Path

import pandas as pd
import pytest

import vantrel
from support.command import fail, succeed

pytest.importorskip("pyarrow", reason="replacing people needs pyarrow")

NOTHING = "has no column to replace that is found by its name and values"


@pytest.fixture(autouse=True)
def tables(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.chdir(tmp_path)
    monkeypatch.delenv("VANTREL_SECRET", raising=False)
    lines = [f"{n},Qa{n},Qb{n}" for n in range(30)]
    Path("cust.csv").write_text("\n".join(["id,first_name,last_name", *lines]))
    lines = [f"{n},19{n + 40}-05-06" for n in range(30)]
    Path("acc.csv").write_text("\n".join(["id,date_of_birth", *lines]))
    Path("colours.csv").write_text("id,colour\n1,red\n2,blue\n")


@pytest.mark.parametrize("files", ["cust.csv acc.csv", "acc.csv"])
def test_a_plan_has_it(files: str) -> None:
    succeed(f"replace {files} --key id --write-plan plan.toml")
    plan = Path("plan.toml").read_text()
    other = tomllib.loads(plan)["tables"]["acc.csv"]["other"]
    assert other == {"id": "keep", "date_of_birth": "undecided"}
    by_plan = f"replace {files} -o out{' ' if 'cust' in files else '.csv '}--plan plan.toml"
    assert "is not decided" not in succeed(f"{by_plan} --secret s").stderr
    told = fail(f"{by_plan} --secret s --strict --force", 1)
    assert "acc.csv: Column 'date_of_birth' looks personal (date of birth)" in told


def test_one_of_several_may_have_nothing_to_replace() -> None:
    run = "replace {} -o out --key id --secret s"
    told = succeed(run.format("cust.csv acc.csv colours.csv")).stderr
    assert "acc.csv: Column 'date_of_birth' looks personal (date of birth)" in told
    for name in ("acc.csv", "colours.csv"):
        assert Path("out", name).read_text().split() == Path(name).read_text().split()
    for files in ("acc.csv", "colours.csv", "acc.csv colours.csv"):
        assert f"Table {files.split()[0]} {NOTHING}" in fail(f"{run.format(files)} --force", 1)


def test_strict_tells_what_is_undecided() -> None:
    for files in ("acc.csv", "cust.csv acc.csv"):
        told = fail(f"replace {files} -o new --key id --secret s --strict", 1)
        assert "acc.csv: Column 'date_of_birth' looks personal (date of birth)" in told
    assert NOTHING in fail("replace colours.csv -o new.csv --key id --strict", 1)
    assert NOTHING in fail("replace colours.csv --key id --write-plan plan.toml", 1)


def test_what_is_advised_fits_into_the_column() -> None:
    rows = range(40)
    columns = {
        "zip": [10_000 + 37 * row for row in rows],
        "account_number": [12_345_678.0 + row for row in rows],
        "card_number": [4_539_000_000_000_000 + row for row in rows],
        "year_of_birth": [1950 + row for row in rows],
        "birthdate": [19_500_101 + 10_000 * row for row in rows],
        "dob": [datetime.date(1950 + row, 1, 1) for row in rows],
        "birthday": ["1950-05-17"] * 40,
        "born_on": [None, *(19_500_101.0 + 10_000 * row for row in rows[1:])],
        "postcode": pd.Categorical(["SW1A 1AA"] * 40),
    }
    names = {"first_name": [f"Qa{row}" for row in rows], "country": ["US"] * 40}
    pd.DataFrame(names | columns).to_parquet("c.parquet")
    advice = dict(re.findall(r"It stays; --other (\S+)=(\S+) decides", copied("")))
    assert advice == {
        "zip": "hash",
        "account_number": "hash",
        "card_number": "fake:credit_card_number",
        "year_of_birth": "blank",
        "birthdate": "shift:180",
        "dob": "shift:180",
        "birthday": "shift:180",
        "born_on": "blank",
        "postcode": "fake:postcode",
    }
    everything = " ".join(f"--other {column}={fate}" for column, fate in advice.items())
    assert "It stays" not in copied(everything)
    replacer = vantrel.Replacer()
    replacer.replace(pd.read_parquet("c.parquet"))
    told = re.findall(r"It stays; others=\{'(\w+)': '(\S+)'\} decides", "".join(replacer.notes))
    assert dict(told) == advice


def test_numbers_of_categories_are_advised_to_be_hashed() -> None:
    numbers = pd.Categorical([523_456_781, 523_456_782])
    table = pd.DataFrame({"first_name": ["Qa", "Qe"], "passport": numbers})
    replacer = vantrel.Replacer()
    replacer.replace(table)
    assert "others={'passport': 'hash'} decides" in "".join(replacer.notes)
    made = replacer.replace(table, others={"passport": "hash"})["passport"]
    assert set(made).isdisjoint(numbers)


def copied(options: str) -> str:
    return succeed(f"replace c.parquet -o copy.parquet --force {options}").stderr

"""``vantrel replace`` of files in which nobody is named, but columns look personal."""

from __future__ import annotations

import tomllib
from pathlib import Path

import pytest

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

"""A mark that quiets a check of style or types says beside it why it stands there."""

import re
from pathlib import Path

import pytest

ROOT = Path(__file__).parents[2]
SOURCES = ("benchmarks", "checks", "examples", "host", "include", "model", "tests")

MARK = re.compile(r"#[ ]*noqa\b|#[ ]*type:[ ]*ignore\b|//[ ]*NOLINT", re.IGNORECASE)
WITH_REASON = re.compile(
    r"# noqa: [A-Z]+\d+(, [A-Z]+\d+)* - \w"
    r"|# type: ignore\[[a-z, -]+\]  # \w"
    r"|// NOLINT(NEXTLINE|BEGIN)?\([^)]+\): \w"
    r"|// NOLINTEND\("
)


def marks_without_reason(line: str) -> list[str]:
    """The marks in the line that do not say why."""
    places = (found.start() for found in MARK.finditer(line))
    return [line[place:] for place in places if not WITH_REASON.match(line, place)]


# Put together here, where ruff and mypy would take them for marks of this file.
NOQA, IGNORE, NOLINT = "# no" + "qa", "# type: " + "ignore", "// NO" + "LINT"


@pytest.mark.parametrize(
    "mark",
    [
        NOQA,
        f"{NOQA}: E501",
        f"{NOQA}: E501, F401",
        f"{NOQA}: E501 too long",
        IGNORE,
        f"{IGNORE}[misc]",
        f"{IGNORE}[misc, call-arg]",
        NOLINT,
        f"{NOLINT}(no-malloc)",
        f"{NOLINT}NEXTLINE(no-malloc)",
        f"{NOQA}: E501 - a title  {IGNORE}[misc]",
    ],
)
def test_mark_alone_is_seen(mark: str) -> None:
    assert len(marks_without_reason(f"x = []  {mark}")) == 1


@pytest.mark.parametrize(
    "mark",
    [
        f"{NOQA}: E501 - a title",
        f"{NOQA}: E501, F401 - a title",
        f"{IGNORE}[misc, call-arg]  # as users do",
        f"{NOLINT}(no-malloc): of calloc",
        f"{NOLINT}NEXTLINE(*-no-malloc): of calloc",
        f"{IGNORE}[misc]  # as users do  {NOQA}: E501 - a title",
    ],
)
def test_reason_is_seen(mark: str) -> None:
    assert marks_without_reason(f"x = []  {mark}") == []


def test_every_mark_has_its_reason() -> None:
    paths = [
        path
        for folder in SOURCES
        for path in (ROOT / folder).rglob("*.*")
        if path.suffix in (".py", ".pyi", ".hpp", ".cpp") and path != Path(__file__)
    ]
    found = [
        f"{path.relative_to(ROOT)}:{number}: {mark}"
        for path in paths
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1)
        for mark in marks_without_reason(line)
    ]
    assert len(paths) > 100
    assert found == []

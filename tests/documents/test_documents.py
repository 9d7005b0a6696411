"""Every command and snippet for users is run, from top to bottom of each document."""

import re
import shutil
import subprocess
import sys
from pathlib import Path

import pytest

from vantrel.cli import main

ROOT = Path(__file__).parents[2]
RUN = [ROOT / "README.md", *sorted((ROOT / "docs").rglob("*.md"))]
DOCUMENTS = [*RUN, ROOT / "CONTRIBUTING.md", ROOT / "SECURITY.md"]
SECONDS = 300

# What is drawn or shown and not run here: diagrams, and commands that need machines of the reader's.
SHOWN = ("text", "")

FENCE = re.compile(r"^```(.*)$", re.MULTILINE)
BLOCK = re.compile(r"^```(sh|python|toml)(?: file=(\S+))?\n(.*?)^```$", re.MULTILINE | re.DOTALL)
ONLY_SHOWN = re.compile(r"^```(?:text)?\n(.*?)^```$", re.MULTILINE | re.DOTALL)

pytest.importorskip("dask", reason="the documents show all that can be installed")


def name_of(document: Path) -> str:
    return str(document.relative_to(ROOT))


def anchors(document: Path) -> set[str]:
    """What links into a document may name: its headings, as pages of Markdown write them."""
    headings = re.findall(r"^#+ (.*)$", document.read_text(encoding="utf-8"), re.MULTILINE)
    return {
        re.sub(r"[^\w\- ]", "", heading).strip().lower().replace(" ", "-") for heading in headings
    }


def blocks(document: Path) -> list[tuple[str, str, str]]:
    """The language, the file to be written or "", and the text of each block that is run."""
    return BLOCK.findall(document.read_text(encoding="utf-8"))


def lines(document: Path) -> list[str]:
    """The commands of a document, each in one line."""
    shells = [text for language, _, text in blocks(document) if language == "sh"]
    return "".join(shells).replace("\\\n", "").splitlines()


@pytest.fixture
def folder(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> Path:
    """A folder that looks as the root does to a reader, with the command on the path."""
    shutil.copytree(ROOT / "examples", tmp_path / "examples")
    (tmp_path / "build").mkdir()
    programs = tmp_path / "programs"
    programs.mkdir()
    script(programs / "vantrel", "from vantrel.cli import main; main()")
    script(programs / "python", "")
    monkeypatch.setenv("PATH", f"{programs}:/usr/bin:/bin")
    return tmp_path


def script(path: Path, code: str) -> None:
    call = f"'{sys.executable}' " + (f"-c '{code}' " if code else "")
    path.write_text(f'#!/bin/sh\nexec {call}"$@"\n')
    path.chmod(0o755)


def run(command: list[str], folder: Path) -> None:
    finished = subprocess.run(
        command, cwd=folder, capture_output=True, encoding="utf-8", timeout=SECONDS, check=False
    )
    assert finished.returncode == 0, finished.stdout + finished.stderr


def is_of_the_build(text: str) -> bool:
    """Whether a block makes the project itself, which a test of it had better not do."""
    return text.startswith(("make ", ". .venv/"))


@pytest.mark.parametrize("document", RUN, ids=name_of)
def test_every_block_runs(document: Path, folder: Path) -> None:
    for language, file, text in blocks(document):
        if is_of_the_build(text):
            continue
        if file:
            (folder / file).write_text(text, encoding="utf-8")
        elif language == "sh":
            run(["bash", "-euo", "pipefail", "-c", text], folder)
        elif language == "python":
            run([sys.executable, "-c", text], folder)


def test_documents_can_be_followed_one_after_the_other() -> None:
    writers: dict[str, Path] = {}
    for document in RUN:
        for line in lines(document):
            for file in re.findall(r" (?:-o|--write-plan|--record|--json) (build/\S+)", line):
                assert "--force" in line or writers.setdefault(file, document) == document, file


@pytest.mark.parametrize("document", DOCUMENTS, ids=name_of)
def test_every_block_is_run_or_only_shown(document: Path) -> None:
    opening = FENCE.findall(document.read_text(encoding="utf-8"))[::2]
    shown = [words for words in opening if words in SHOWN]
    assert len(shown) + len(blocks(document)) == len(opening)


@pytest.mark.parametrize("document", DOCUMENTS, ids=name_of)
def test_every_option_that_is_only_shown_exists(document: Path) -> None:
    text = "".join(ONLY_SHOWN.findall(document.read_text(encoding="utf-8"))).replace("\\\n", " ")
    for name, options in re.findall(r"^(?:\S+\$ +)?vantrel (\w+)(.*)$", text, re.MULTILINE):
        known = {option for each in main.commands[name].params for option in each.opts}
        assert set(re.findall(r"--[\w-]+", options)) <= known


@pytest.mark.parametrize("document", DOCUMENTS, ids=name_of)
def test_every_make_target_exists(document: Path) -> None:
    for _, _, text in blocks(document):
        for target in re.findall(r"^make ([\w-]+)", text, re.MULTILINE):
            assert re.search(rf"^{target}:", (ROOT / "Makefile").read_text(), re.MULTILINE), target


@pytest.mark.parametrize("document", DOCUMENTS, ids=name_of)
def test_every_link_leads_somewhere(document: Path) -> None:
    text = document.read_text(encoding="utf-8")
    for link, anchor in re.findall(r"\]\(([^)#]*)(?:#([^)]*))?\)", text):
        if link.startswith("http"):
            continue
        target = document.parent / link if link else document
        assert target.exists(), link
        assert not anchor or anchor in anchors(target), f"{link}#{anchor}"

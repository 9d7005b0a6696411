"""Makes the pages of the site that are not in docs/: other documents, and the help of commands."""

from __future__ import annotations

import re
from collections.abc import Iterator
from pathlib import Path
from posixpath import dirname, join, normpath, relpath
from typing import Any

import click
from mkdocs.structure.files import File, Files

from vantrel.cli import main

ROOT = Path(__file__).parents[1]

# Each page with the file that it is.
PAGES = {
    "changelog.md": "CHANGELOG.md",
    "contributing.md": "CONTRIBUTING.md",
    "results.md": "benchmarks/RESULTS.md",
    "security.md": "SECURITY.md",
}
PAGE_OF = {file: page for page, file in PAGES.items()}

COMMANDS = "reference/commands.md"

LINK = re.compile(r"\]\(([^):#\s]+\.md)")
ROLE = re.compile(r":(?:attr|class|data|func|meth|mod):(?=<code>)")


def on_files(files: Files, config: Any) -> Files:
    """Adds the pages."""
    for page, file in PAGES.items():
        files.append(File.generated(config, page, content=(ROOT / file).read_text("utf-8")))
    files.append(File.generated(config, COMMANDS, content="\n".join(helps())))
    return files


def helps() -> Iterator[str]:
    """Writes what each command answers to ``--help``."""
    yield "# Commands\n"
    group = click.Context(main, info_name="vantrel")
    yield f"```text\n{main.get_help(group)}\n```\n"
    for name in main.list_commands(group):
        command = main.get_command(group, name)
        assert command is not None
        context = click.Context(command, info_name=name, parent=group)
        yield f"## vantrel {name}\n\n```text\n{command.get_help(context)}\n```\n"


def on_page_markdown(markdown: str, page: Any, **_: Any) -> str:
    """Leads links between files of the project to the pages that the site makes of them."""
    own = page.file.src_uri
    file = PAGES.get(own, f"docs/{own}")

    def led(link: re.Match[str]) -> str:
        target = normpath(join(dirname(file), link[1]))
        there = PAGE_OF.get(target, target.removeprefix("docs/"))
        return f"]({relpath(there, dirname(own) or '.')}"

    return LINK.sub(led, markdown)


def on_page_content(html: str, **_: Any) -> str:
    """Leaves out the roles that docstrings give to names."""
    return ROLE.sub("", html)

"""What the stub of the person module declares."""

import ast
import re
from collections.abc import Iterable, Iterator
from pathlib import Path

STUB = Path(__file__).parents[2] / "model" / "models" / "person.pyi"


def _functions(body: list[ast.stmt], owner: str = "") -> Iterator[str]:
    for node in body:
        if isinstance(node, ast.ClassDef):
            yield from _functions(node.body, f"{node.name}.")
        elif isinstance(node, ast.FunctionDef):
            setter = any(ast.unparse(mark).endswith(".setter") for mark in node.decorator_list)
            yield f"{owner}{node.name}{' =' if setter else ''}"


def public_functions() -> list[str]:
    """Every function and property that users call, as `Class()`, `Class.name`, or `name`.

    The setter of a property is `Class.name =`.
    """
    names = _functions(ast.parse(STUB.read_text(encoding="utf-8")).body)
    return [name.replace(".__init__", "()") for name in names]


def titles_of(function: str, titles: Iterable[str]) -> list[str]:
    """Those titles of calls that begin with the name of a public function."""
    named = re.compile(rf"{re.escape(function)}(?![\w.(]| =)")
    return [title for title in titles if named.match(title)]

"""Dictionary forms and model files that are nearly right."""

import json
from collections.abc import Iterable
from copy import deepcopy
from functools import cache
from typing import Any

from hypothesis import strategies as st

from support.fuzzing import any_text, json_values
from support.people import fitted_model, people
from vantrel.config import PersonLabels

LABELS = [
    PersonLabels(gender="sex", title="title", fullname="name", country="land"),
    PersonLabels(title="title", email="mail", username="user"),
    PersonLabels(fullname="name", password="word", mobile_number="phone"),
]


@cache
def good_form(which: int) -> str:
    """The form of a fitted model as JSON."""
    table = people(8).rename(columns={"gender": "sex", "country": "land"})
    return json.dumps(fitted_model(LABELS[which], table).to_dict())


def keys_of(part: Any) -> Iterable[Any]:
    """The keys of an object, the positions of a list; nothing of anything else."""
    return part if isinstance(part, dict) else range(len(part) if isinstance(part, list) else 0)


def paths(form: Any) -> list[tuple[Any, ...]]:
    """The path to everything in a form, the shortest first."""
    found: list[tuple[Any, ...]] = []
    waiting: list[tuple[tuple[Any, ...], Any]] = [((), form)]
    for way, part in waiting:
        found += [(*way, key) for key in keys_of(part)]
        waiting += [((*way, key), part[key]) for key in keys_of(part)]
    return found


def at(form: Any, path: Iterable[Any]) -> Any:
    """What stands at a path."""
    for key in path:
        form = form[key]
    return form


huge = st.sampled_from([10**18, 10**400, -(10**400), "x" * 50_000, ["x"] * 2_000, [[]] * 900])
shares = st.sampled_from([0, 0.5, 1, 1.0])
patterns = st.sampled_from(["(", "(a+)+$", "[", "a{99999999999}", "(?P<n", "\\", "^f", "*"])


@st.composite
def changed(draw: st.DrawFn, form: Any, most: int = 3) -> Any:
    """A form with a few changes: keys taken out, added or moved, values replaced."""
    for _ in range(draw(st.integers(0, most))):
        places = paths(form)
        if not places:
            break
        *way, last = draw(st.sampled_from(places))
        holder = at(form, way)
        change = draw(st.sampled_from(["drop", "replace", "replace", "copy", "nest", "add"]))
        if change == "drop":
            del holder[last]
        elif change == "copy":
            holder[last] = deepcopy(at(form, draw(st.sampled_from(places))))
        elif change == "nest":
            holder[last] = draw(st.sampled_from([[holder[last]], {"meta": holder[last]}]))
        elif change == "add" and isinstance(holder, dict):
            holder[draw(any_text)] = draw(json_values)
        else:
            holder[last] = deepcopy(draw(st.one_of(json_values, shares, patterns, huge)))
    return form


def written(value: Any, twice: tuple[Any, ...] = ()) -> str:
    """Writes JSON, with the key that a path leads to written twice."""
    rest = {key: twice[1:] if twice[:1] == (key,) else () for key in keys_of(value)}
    if isinstance(value, dict):
        pairs = [f"{json.dumps(key)}: {written(value[key], rest[key])}" for key in value]
        again = [pair for key, pair in zip(value, pairs, strict=True) if twice == (key,)]
        return f"{{{', '.join(pairs + again)}}}"
    if isinstance(value, list):
        return f"[{', '.join(written(item, rest[i]) for i, item in enumerate(value))}]"
    return json.dumps(value)


@st.composite
def forms(draw: st.DrawFn) -> Any:
    """The dictionary form of a model of people, nearly right or quite wrong."""
    if draw(st.integers(0, 9)) == 0:
        return draw(st.dictionaries(st.sampled_from(["meta", "config", "labels"]), json_values))
    return draw(changed(json.loads(good_form(draw(st.integers(0, len(LABELS) - 1))))))

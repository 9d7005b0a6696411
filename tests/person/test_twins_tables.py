"""Whole columns against single calls: Faker instances whose tables were changed.

Every change comes after the model has made a few rows, so that a change also has to be noticed.
"""

from collections import OrderedDict
from collections.abc import Callable
from decimal import Decimal
from fractions import Fraction
from typing import Any

import numpy as np
import pytest

from support.twins import described, made_both_ways, same_both_ways
from support.whole_columns import (
    COUNTRIES,
    Text,
    making,
    model_after_use,
    model_with,
    new_fakers,
    provider,
)

TABLES: dict[str, Any] = {
    "a list": ["Ann", "Bo", "Cy"],
    "a tuple": ("Ann", "Bo", "Cy"),
    "a text": "ABC",
    "a range": range(5),
    "a set of one": {"Ann"},
    "an array": np.array(["Ann", "Bo", "Cy"]),
    "one entry": ["Ann"],
    "no entry": [],
    "a dictionary": {"Ann": 1, "Bo": 2},
    "nothing": None,
    "a number": 5,
    "entries of other types": ["Ann", 5, None, Text("Bo"), np.str_("Cy")],
    "texts of another type": [Text("Ann"), Text("Bo")],
    "odd texts": ["", " ", "A\0", "\ud800", "İ", "ß", "e\u0301", "\u00a0x"],
    "weights": OrderedDict(Ann=0.5, Bo=0.25, Cy=0.25),
    "weights of one entry": OrderedDict(Ann=0.3),
    "no weights": OrderedDict(),
    "whole weights": OrderedDict(Ann=1, Bo=2, Cy=3),
    "large whole weights": OrderedDict(Ann=2**70, Bo=2**71, Cy=1),
    "whole and other weights": OrderedDict(Ann=1, Bo=0.5, Cy=True),
    "some weights of 0": OrderedDict(Ann=0, Bo=1.0, Cy=0, Di=2.0, Ed=0),
    "weights of 0 only": OrderedDict(Ann=0.0, Bo=0.0),
    "weights below 0": OrderedDict(Ann=-1.0, Bo=3.0, Cy=-1.0),
    "a sum below 0": OrderedDict(Ann=-1.0, Bo=-3.0),
    "infinite weights": OrderedDict(Ann=float("inf"), Bo=1.0),
    "weights that are no numbers": OrderedDict(Ann=float("nan"), Bo=1.0),
    "texts for weights": OrderedDict(Ann="1", Bo="2"),
    "missing weights": OrderedDict(Ann=None, Bo=None),
    "fractions": OrderedDict(Ann=Fraction(1, 3), Bo=Fraction(2, 3)),
    "decimal weights": OrderedDict(Ann=Decimal("0.3"), Bo=Decimal("0.7")),
    "weights of numpy": OrderedDict(Ann=np.float64(0.3), Bo=np.float64(0.7)),
    "narrow weights of numpy": OrderedDict(Ann=np.float32(0.3), Bo=np.float32(0.7)),
    "a subnormal sum": OrderedDict(Ann=5e-324, Bo=5e-324),
    "a huge sum": OrderedDict(Ann=1e308, Bo=0.5e308),
    "an infinite sum": OrderedDict(Ann=1e308, Bo=1e308),
    "uneven sizes of weights": OrderedDict(Ann=1e16, Bo=1.0, Cy=1.0, Di=1e-3),
}
PLACES = {
    "first_names": ("person", "first_names"),
    "male": ("person", "first_names_male"),
    "last_names": ("person", "last_names"),
    "tlds": ("internet", "tlds"),
}
MAKER_OF_PLACE = {
    "first_names": "first_names",
    "male": "first_names",
    "last_names": "last_names",
    "tlds": "emails",
}


@pytest.mark.parametrize("place", PLACES)
@pytest.mark.parametrize("table", TABLES)
def test_a_table_replaced_on_the_provider(table: str, place: str) -> None:
    model = model_after_use()
    name, attribute = PLACES[place]
    setattr(provider(model, name), attribute, TABLES[table])
    same_both_ways(making(MAKER_OF_PLACE[place], model, 60), model)


@pytest.mark.parametrize("table", ["weights", "one entry", "whole weights", "some weights of 0"])
@pytest.mark.parametrize("seed", range(5))
def test_a_weighted_table_over_many_rows(table: str, seed: int) -> None:
    model = model_after_use()
    for country in COUNTRIES:
        provider(model, "person", country).last_names = TABLES[table]
    column = made_both_ways(making("last_names", model, 1000), model, seed)
    assert set(column) <= set(TABLES[table])


@pytest.mark.parametrize("place", PLACES)
def test_a_table_replaced_on_the_class(place: str, monkeypatch: pytest.MonkeyPatch) -> None:
    model = model_after_use()
    name, attribute = PLACES[place]
    cls = type(provider(model, name))
    monkeypatch.setattr(cls, attribute, ["Zed", "Zoe"], raising=False)
    made_both_ways(making(MAKER_OF_PLACE[place], model, 60), model)


def drop_entry(table: Any) -> None:
    table.popitem() if isinstance(table, dict) else table.pop()


def add_entry(table: Any) -> None:
    table.update({"Zed": 2.0}) if isinstance(table, dict) else table.append("Zed")


def change_entry(table: Any) -> None:
    key = "Ann" if isinstance(table, dict) else 0
    table[key] = 9.0 if isinstance(table, dict) else "Zed"


@pytest.mark.parametrize("place", PLACES)
@pytest.mark.parametrize("change", [drop_entry, add_entry, change_entry, lambda t: t.clear()])
@pytest.mark.parametrize("table", ["a list", "weights"])
def test_a_table_changed_in_place(table: str, change: Callable[[Any], None], place: str) -> None:
    model = model_after_use()
    name, attribute = PLACES[place]
    values = TABLES[table].copy()
    setattr(provider(model, name), attribute, values)
    made_both_ways(making(MAKER_OF_PLACE[place], model, 30), model)
    change(values)
    same_both_ways(making(MAKER_OF_PLACE[place], model, 60), model)


def test_a_weighted_table_keeps_the_note_that_faker_makes_on_it() -> None:
    model = model_with(new_fakers())

    def draw() -> Any:
        table = OrderedDict(Ann=1.0, Bo=2.0)
        provider(model, "person").last_names = table
        made = making("last_names", model)()
        return [made, vars(table)]

    made_both_ways(draw, model)


def test_the_note_on_a_weighted_table_is_heeded() -> None:
    model = model_with(new_fakers())
    table = OrderedDict(Ann=1.0, Bo=2.0)
    table._key_cache = ("Xi", "Yo")
    provider(model, "person").last_names = table
    assert "Xi" in set(made_both_ways(making("last_names", model), model))


class Keyed(OrderedDict):  # type: ignore[type-arg]  # holds anything
    """A table whose own methods tell something else than its content."""

    def keys(self) -> Any:
        return ["Xi", "Yo"]

    def values(self) -> Any:
        return [1.0, 2.0]


class Counting(list):  # type: ignore[type-arg]  # holds anything
    """A table that counts how often it is read."""

    reads = 0

    def __iter__(self) -> Any:
        self.reads += 1
        return super().__iter__()


def test_a_table_with_methods_of_its_own() -> None:
    model = model_after_use()
    provider(model, "person").last_names = Keyed(Ann=1.0, Bo=2.0)
    assert "Xi" in set(made_both_ways(making("last_names", model), model))


def test_a_table_that_notices_being_read() -> None:
    model = model_after_use()
    tables: list[Counting] = []

    def draw() -> Any:
        tables.append(Counting(["Ann", "Bo"]))
        provider(model, "person").last_names = tables[-1]
        return making("last_names", model)()

    made_both_ways(draw, model)
    assert tables[0].reads == tables[1].reads > 0


def test_a_table_that_is_made_anew_for_each_name(monkeypatch: pytest.MonkeyPatch) -> None:
    model = model_after_use()
    person = provider(model, "person")
    numbers = iter(range(10**6))

    class Growing(type(person)):
        @property
        def last_names(self) -> list[str]:
            return [f"name {next(numbers)}"]

    person.__class__ = Growing
    column = making("last_names", model, 40)()
    assert column.str.startswith("name").sum() >= 5


COMPANY_FORMATS: dict[str, Any] = {
    "one token": ["{{last_name}}"],
    "a word first": ["Acme {{last_name}} {{company_suffix}}"],
    "no token": ["Acme Ltd"],
    "a blank first": [" {{last_name}}"],
    "nothing": [""],
    "no blank": ["{{last_name}}-{{last_name}}/{{last_name}}"],
    "blanks within the token": ["{{ last_name }}{{  company_suffix  }}"],
    "a first name": ["{{first_name}} {{first_name_female}} {{first_name_male}}"],
    "letters beyond ASCII": ["Größe-{{last_name}} Ελ"],
    "only marks": ["!!! {{last_name}}"],
    "a tabulator and line breaks": ["A\t{{last_name}}\nB\u00a0C {{last_name}}"],
    "a token of several tokens": ["{{name}} {{last_name}}"],
    "the company itself, at last": OrderedDict([("{{company}} x", 0.2), ("{{last_name}}", 0.8)]),
    "another provider's token": ["{{city}} {{random_digit}}"],
    "an unknown token": ["{{last_name}} {{nonsense}}"],
    "an unknown token among others": ["{{last_name}}", "{{last_name}} {{nonsense}}"],
    "an unknown argument": ["{{last_name:short}} x"],
    "half a token": ["{{last_name {{last_name}}"],
    "braces": ["{last_name} {{{last_name}}}"],
    "signs for digits": ["### %%% ??? {{last_name}}"],
    "escapes": ["\\1 \\g<0> {{last_name}}"],
    "weights": OrderedDict([("{{last_name}} a", 0.7), ("b {{last_name}}", 0.3)]),
    "no format": [],
    "another type": [5],
}


@pytest.mark.parametrize("formats", COMPANY_FORMATS)
def test_formats_of_company_names(formats: str) -> None:
    model = model_after_use()
    for country in ("GB", "CN"):
        provider(model, "company", country).formats = COMPANY_FORMATS[formats]
    same_both_ways(making("emails", model, 80), model)


@pytest.mark.parametrize("attribute", ["company_suffixes", "formats", "company_prefixes"])
def test_company_tables_replaced(attribute: str) -> None:
    model = model_after_use()
    for country in COUNTRIES:
        setattr(provider(model, "company", country), attribute, ("{{last_name}} One", "Two"))
    made_both_ways(making("emails", model, 80), model)


@pytest.mark.parametrize(
    "replacements", [(("a", "ä"), ("e", "")), [["o", "00"]], (("", "x"),), ((1, 2),), None]
)
def test_replacements_of_letters(replacements: Any) -> None:
    model = model_after_use()
    provider(model, "internet", "DE").replacements = replacements
    same_both_ways(making("emails", model, 80), model)


def test_descriptions_tell_texts_of_other_types_apart() -> None:
    assert described(np.str_("a")) != described("a") != described(Text("a"))

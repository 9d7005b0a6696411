"""Tables of what a model has learnt."""

from __future__ import annotations

import json
from collections.abc import Iterator, Sequence
from dataclasses import fields
from pathlib import Path
from typing import TYPE_CHECKING

from vantrel.cli.console import heading, percent, table
from vantrel.fitting.learnt import genders_by_gender, titles_by_gender, values_of
from vantrel.config import PersonModelConfig
from vantrel.metadata.value import String
from vantrel.model.models.person import GenderModel
from vantrel.util.locale.locale import locale_of

if TYPE_CHECKING:
    from rich.console import RenderableType

    from vantrel.model.models.person import PersonModel

_NONE = "-"

_KEYS = {
    GenderModel.key_female: "female",
    GenderModel.key_male: "male",
    GenderModel.key_non_binary: "non-binary",
    GenderModel.key_ambiguous: "ambiguous",
}

_HOW_MADE = {
    "gender": "learnt: drawn by its shares",
    "title": "learnt: drawn evenly from those of the row's gender",
    "firstname": "made up by gender and country",
    "lastname": "made up by country",
    "fullname": "first name and last name",
    "email": "username and a made-up domain",
    "username": "made from the row's name",
    "country": "learnt: drawn by its shares",
}


def describe(model: PersonModel, path: Path) -> list[RenderableType]:
    """Tells all that a model has learnt.

    Args:
        model: The model.
        path: The file that it was loaded from.
    """
    parts = [
        table("", "", rows=_facts(model, path)),
        heading("Columns"),
        table("Attribute", "Column", "In samples", rows=_columns(model)),
        heading("Genders"),
        table("Key", "Share", *_sources(model), rows=_genders(model)),
        heading("Countries" if model.labels.country else "Locales"),
        table("Value", "Share", "Names of", rows=_places(model)),
    ]
    if changed := _changed_settings(model.config):
        parts += [heading("Settings that are not the default"), table("", "", rows=changed)]
    return parts


def _facts(model: PersonModel, path: Path) -> Sequence[tuple[str, ...]]:
    facts = _facts_of_file(path) if path.is_file() else []  # a pipe cannot be read again
    blank = model.hidden_model_gender.meta.nan_freq or 0.0
    facts.append(("Without gender", f"{percent(blank)} of the rows, which are blank"))
    if country := model.labels.country:
        unknown = model.meta[country].nan_freq or 0.0
        facts.append(("Without country", f"{percent(unknown)} of the rows"))
    return facts


def _facts_of_file(path: Path) -> list[tuple[str, str]]:
    form = json.loads(path.read_text(encoding="utf-8"))
    size = f"{path.stat().st_size:,} bytes, schema {form['schema_version']}"
    facts = [("Model", f"{path} ({size})")]
    if versions := form.get("versions"):
        facts.append(("Fitted with", ", ".join(map(" ".join, versions.items()))))
    return facts


def _columns(model: PersonModel) -> Sequence[tuple[str, ...]]:
    config = model.config
    digits = "{}, each x a random digit"
    shortest, longest = config.pwd_length
    made = _HOW_MADE | {
        "password": f"{shortest} to {longest} random characters",
        "mobile_number": digits.format(config.mobile_number_format),
        "home_number": digits.format(config.home_number_format),
        "work_number": digits.format(config.work_number_format),
    }
    if model.labels.gender and any(len(ways) > 1 for ways in genders_by_gender(model).values()):
        made["gender"] += ", the spellings of one gender evenly"
    return [(attribute, column, made[attribute]) for attribute, column in model.params.items()]


def _sources(model: PersonModel) -> list[str]:
    """The headings of the learnt columns that tell of genders."""
    labels = model.labels
    named = {"Values": labels.gender, "Titles": labels.title}
    return [f"{what} of {column!r}" for what, column in named.items() if column]


def _genders(model: PersonModel) -> Sequence[tuple[str, ...]]:
    shares = model.hidden_model_gender._probabilities or {}
    learnt = {}
    if gender := model.labels.gender:
        learnt[gender] = genders_by_gender(model)
    if title := model.labels.title:
        learnt[title] = titles_by_gender(model)
    rows = []
    for key, name in _KEYS.items():
        values = [", ".join(by_gender.get(key, [])) for by_gender in learnt.values()]
        if key in shares or any(values):
            share = percent(shares[key]) if key in shares else _NONE
            rows.append((f"{key} ({name})", share, *(each or _NONE for each in values)))
    unclear = [", ".join(_not_understood(model, *each)) for each in learnt.items()]
    if any(unclear):
        rows.append(("not understood", _NONE, *(each or _NONE for each in unclear)))
    return rows


def _not_understood(
    model: PersonModel, column: str, by_gender: dict[str, list[str]]
) -> Iterator[str]:
    meta = model.meta[column]
    assert isinstance(meta, String)
    known = values_of(by_gender)
    return (value for value in meta.categories if value not in known)


def _places(model: PersonModel) -> Sequence[tuple[str, ...]]:
    if model.hidden_model_country is None:
        places = list(model.locales)
        shares = dict.fromkeys(places, 1 / len(places))
    else:
        shares = model.hidden_model_country._probabilities or {}
    rows = []
    for place, share in sorted(shares.items(), key=lambda item: -item[1]):
        locale, own = locale_of(place)
        rows.append((place, percent(share), locale if own else f"{locale} (borrowed)"))
    return rows


def _changed_settings(config: PersonModelConfig) -> Sequence[tuple[str, ...]]:
    usual = PersonModelConfig()
    names = [field.name for field in fields(PersonModelConfig)]
    return [
        (name, _as_toml(getattr(config, name)))
        for name in names
        if getattr(config, name) != getattr(usual, name)
    ]


def _as_toml(value: object) -> str:
    return json.dumps(value, ensure_ascii=False)

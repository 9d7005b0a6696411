"""What a model has learnt, as tables."""

from __future__ import annotations

import json
from typing import Any

from msgspec import structs

from vantrel.arguments import check_model
from vantrel.attributes import ATTRIBUTES, LEARNT, PHONES
from vantrel.config import PersonModelConfig
from vantrel.genders import KEYS, learnt_by_gender, understood
from vantrel.model.models.person import PersonModel
from vantrel.reporting.sections import Section, Sections
from vantrel.rows import EVERYWHERE, Ways
from vantrel.sampling.phones import has_usual_format
from vantrel.sampling.places import places_of
from vantrel.util.locale.locale import locale_of
from vantrel.wording import percent

type _Rows = list[tuple[str, ...]]

_NONE = "-"


def describe(model: PersonModel) -> Sections:
    """Tells all that a fitted model has learnt, and all that it keeps of the real table.

    Returns:
        Tables of missing values, columns, genders, places and settings: ``print`` shows them as
        text, a notebook as HTML. Shares are in per cent of the rows with a value.

    Raises:
        ArgumentTypeError: What is given is no model.
        ModelNotFittedError: Nothing has been learnt yet.
    """
    check_model(model)
    places = "Countries" if model.labels.country else "Locales"
    sections = [
        Section("", ("", ""), _missing(model)),
        Section("Columns", ("Attribute", "Column", "In samples"), _columns(model)),
        Section("Genders", ("Key", "Share", *_sources(model)), _genders(model)),
        Section(places, ("Value", "Share", "Names of"), _places(model)),
    ]
    if model.meta.rows is not None:
        sections.append(Section("Rows of the table", ("", ""), _rows(model)))
        if rare := _rare(model):
            sections.append(Section("Left out as too rare", ("Column", "Values", "Rows"), rare))
    if changed := _changed_settings(model):
        sections.append(Section("Settings that are not the default", ("", ""), changed))
    if model.meta.notes:
        sections.append(Section("Notes", ("",), [(note,) for note in model.meta.notes]))
    return Sections(sections)


def _missing(model: PersonModel) -> _Rows:
    blank = model.hidden_model_gender.meta.nan_freq or 0.0
    are_blank = ", which are blank" if model.meta.rows is None else ""
    rows: _Rows = [("Without gender", f"{percent(blank)} of the rows{are_blank}")]
    if country := model.labels.country:
        unknown = model.meta[country].nan_freq or 0.0
        rows.append(("Without country", f"{percent(unknown)} of the rows"))
    return rows


def _columns(model: PersonModel) -> _Rows:
    settings = vars(model.config)
    rows: _Rows = []
    for attribute, column in model.params.items():
        made = ATTRIBUTES[attribute].made.format_map(settings)
        if model.meta.rows is not None:
            made = _made_in_rows(model, attribute) or made
        elif attribute == "gender" and any(
            len(ways) > 1 for ways in learnt_by_gender(model, "gender").values()
        ):
            made += ", the spellings of one gender evenly"
        rows.append((attribute, column, made))
    return rows


def _made_in_rows(model: PersonModel, attribute: str) -> str:
    """How a sample gets an attribute where that differs from what the bare model does."""
    if ATTRIBUTES[attribute].is_learnt:
        return "learnt: drawn with the other columns, as real rows have them"
    everywhere: dict[Any, str] = dict(_ways(model).phone_formats.get(EVERYWHERE, {}))
    if own := everywhere.get(attribute):
        return f"{own}, each x a random digit"
    if attribute in PHONES and has_usual_format(model, attribute):
        return "a number of the row's country"
    if attribute == "lastname":
        return "made up by gender and country"
    if attribute == "email":
        return f"made from the row's name; domain: {_ways(model).email_domain}"
    return ""


def _ways(model: PersonModel) -> Ways:
    return model.meta.ways or Ways()


def _sources(model: PersonModel) -> list[str]:
    """The headings of the learnt columns that tell of genders."""
    labels = model.labels
    named = {"Values": labels.gender, "Titles": labels.title}
    return [f"{what} of {column!r}" for what, column in named.items() if column]


def _genders(model: PersonModel) -> _Rows:
    shares = model.hidden_model_gender._probabilities or {}
    learnt = {
        attribute: learnt_by_gender(model, attribute)
        for attribute in ("gender", "title")
        if attribute in model.params
    }
    rows: _Rows = []
    for key, name in KEYS.items():
        values = [", ".join(by_gender[key]) for by_gender in learnt.values()]
        if key in shares or any(values):
            share = percent(shares[key]) if key in shares else _NONE
            words = f"{key} ({name.replace('_', '-')})"
            rows.append((words, share, *(each or _NONE for each in values)))
    unclear = [
        ", ".join(
            value
            for value in model.meta[model.params[attribute]].categories or ()
            if value not in understood(by_gender)
        )
        for attribute, by_gender in learnt.items()
    ]
    if any(unclear):
        rows.append(("not understood", _NONE, *(each or _NONE for each in unclear)))
    return rows


def _places(model: PersonModel) -> _Rows:
    if model.hidden_model_country is None:
        places = places_of(model)
        shares = dict.fromkeys(places, 1 / len(places))
    else:
        shares = model.hidden_model_country._probabilities or {}
    rows: _Rows = []
    for place, share in sorted(shares.items(), key=lambda item: -item[1]):
        locale, own = locale_of(place)
        rows.append((place, percent(share), locale if own else f"{locale} (borrowed)"))
    return rows


def _rows(model: PersonModel) -> _Rows:
    """How much is kept of rows, and the values that are told nowhere else."""
    kept = model.meta.rows
    rows: _Rows = [
        ("Combinations", f"{len(kept.combinations):,}"),
        ("Columns that are missing together", f"{len(list(filter(None, kept.gaps))):,} ways"),
    ]
    for attribute in LEARNT:
        if column := model.params.get(attribute):
            known = model.meta[column].categories or ()
            if more := [
                value for value in getattr(kept, attribute) if value and value not in known
            ]:
                rows.append((f"More values of {column!r}", ", ".join(more)))
    return rows


def _rare(model: PersonModel) -> _Rows:
    return [
        (model.params[attribute], f"{each.values:,}", f"{each.rows:,}")
        for attribute, each in model.meta.rows.left_out.items()
    ]


def _changed_settings(model: PersonModel) -> _Rows:
    usual = {**vars(PersonModelConfig()), **structs.asdict(Ways())}
    settings = {**vars(model.config), **structs.asdict(_ways(model))}
    return [
        (name, json.dumps(settings[name], ensure_ascii=False))
        for name, value in usual.items()
        if settings[name] != value
    ]

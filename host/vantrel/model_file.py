"""Keeps fitted models in JSON files."""

from __future__ import annotations

import json
import math
from pathlib import Path
from typing import TYPE_CHECKING, Any

from vantrel.files import replacing
from vantrel.util.locale.locale import Provider, get_country_to_provder_map

if TYPE_CHECKING:
    from vantrel.model.models.person import PersonModel

FORMAT = "vantrel-person-model"
SCHEMA_VERSION = 1


class ModelFileError(ValueError):
    """A file holds no model that this version can use."""


def save(model: PersonModel, path: Path) -> None:
    """Writes a fitted model, whole or not at all.

    Raises:
        OSError: The file cannot be written.
        TypeError: The model holds values that JSON has no form for.
    """
    form = {"format": FORMAT, "schema_version": SCHEMA_VERSION, "model": model.to_dict()}
    text = json.dumps(form, ensure_ascii=False, allow_nan=False, indent=2)
    with replacing(path) as file:
        file.write(text + "\n")


def load(path: Path) -> PersonModel:
    """Reads a fitted model; it can be sampled at once.

    Raises:
        ModelFileError: The file cannot be read, is no model file, lacks something, holds
            something of a wrong type or was written by a newer version.
    """
    form = _read(path)
    try:
        _check_version(form)
        return _rebuild(form["model"])
    except KeyError as error:
        raise ModelFileError(f"Model file {path} lacks the key {error}: fit it again.") from error
    except (TypeError, ValueError, AttributeError) as error:
        raise ModelFileError(f"Model file {path} cannot be used: {error}") from error


def _read(path: Path) -> Any:
    try:
        return json.loads(path.read_text(encoding="utf-8"), parse_constant=_refuse_constant)
    except OSError as error:
        raise ModelFileError(
            f"Model file {path} cannot be read: {error.strerror or error}."
        ) from error
    except (ValueError, RecursionError) as error:
        raise ModelFileError(
            f"Model file {path} is not JSON ({error}): give a file that 'vantrel fit' wrote."
        ) from error


def _refuse_constant(name: str) -> None:
    raise ValueError(f"{name} is no number")


def _check_version(form: Any) -> None:
    if not isinstance(form, dict) or form.get("format") != FORMAT:
        raise ValueError("it is no model; give a file that 'vantrel fit' wrote.")
    version = form["schema_version"]
    if type(version) is not int or version < 1:
        raise ValueError(f"its schema version is {version!r}, not a number from 1 on.")
    if version > SCHEMA_VERSION:
        raise ValueError(
            f"its schema version is {version}, the newest known here is {SCHEMA_VERSION}:"
            " install a newer vantrel."
        )


def _rebuild(form: dict[str, Any]) -> PersonModel:
    from vantrel.model.models.person import GenderModel, PersonModel

    if not isinstance(form["config"], dict):
        raise ValueError("its config is no object.")
    _check_probabilities(form["hidden_model_gender"], "hidden_model_gender")
    if form["meta"]["labels"]["country"]:
        _check_probabilities(form["hidden_model_country"], "hidden_model_country")
    model = PersonModel.from_dict(form)
    labels, meta = model.labels, model.meta
    # The rebuilt hidden models have metas of their own: they share the person's again, so that a
    # loaded model can be fitted again as a new one can.
    gender_column = labels.gender or labels.title
    if gender_column and isinstance(model.hidden_model_gender, GenderModel):
        model.hidden_model_gender._meta = meta[gender_column]
    if labels.country and model.hidden_model_country is not None:
        model.hidden_model_country._meta = meta[labels.country]
        countries = model.hidden_model_country.categories
        model.country_to_provider_map = get_country_to_provder_map(countries, Provider.PERSON)
    return model


def _check_probabilities(form: dict[str, Any], where: str) -> None:
    """Refuses what would fail only when it is drawn from."""
    probabilities = form["probabilities"]
    if not isinstance(probabilities, dict) or not probabilities:
        raise ValueError(f"the probabilities of {where} are no object with at least one entry.")
    for value, share in probabilities.items():
        is_number = isinstance(share, int | float) and not isinstance(share, bool)
        if not is_number or not 0 <= share < math.inf:
            raise ValueError(f"the probability of {value!r} in {where} is {share!r}.")
    if sum(probabilities.values()) <= 0:
        raise ValueError(f"the probabilities of {where} are all 0.")

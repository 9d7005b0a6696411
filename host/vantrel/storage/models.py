"""Keeps fitted models in JSON files."""

from __future__ import annotations

import hashlib
import json
import warnings
from pathlib import Path
from typing import TYPE_CHECKING, Any

from vantrel.storage.files import replacing
from vantrel.model.exceptions import ModelNotFittedError
from vantrel.storage.form import check_model
from vantrel.hints import nearby_file
from vantrel.util.callers import OURS
from vantrel.util.locale.locale import Provider, get_country_to_provder_map
from vantrel.util.shapes import ShapeError, integer, mapping_of, one_of, record, refuse, text
from vantrel.util.strict_json import UnsoundJsonError, parse
from vantrel.versions import OtherVersionsWarning, differences, versions

if TYPE_CHECKING:
    from vantrel.model.models.person import PersonModel

FORMAT = "vantrel-person-model"
SCHEMA_VERSION = 1

# A model of a hundred thousand distinct titles takes a third of it, a usual one a thousandth.
MOST_BYTES = 16 * 2**20

_LONGEST_VERSION = 100


def _version(value: Any, where: str) -> None:
    text(_LONGEST_VERSION)(value, where)
    if not value.isprintable():
        refuse(value, where, "a version")


_FILE = record(
    {"format": one_of(FORMAT), "schema_version": integer(1, SCHEMA_VERSION), "model": check_model},
    {"versions": mapping_of(_version)},
)


class ModelFileError(ValueError):
    """A file holds no model that this version can use."""


def dumps(model: PersonModel) -> str:
    """Gives the content of a fitted model's file, the versions here among it.

    Raises:
        ModelNotFittedError: Nothing has been learnt yet.
        TypeError: The model holds values that JSON has no form for.
        ValueError: The model could not be loaded again: a pattern of the configuration might make
            a search endless, or there are more than 16 MiB, 2,000 countries or 1,000 characters in
            a category.
    """
    learnt = model.to_dict()
    _refuse_not_fitted(learnt)
    form = {
        "format": FORMAT,
        "schema_version": SCHEMA_VERSION,
        "versions": versions(),
        "model": learnt,
    }
    content = json.dumps(form, ensure_ascii=False, allow_nan=False, indent=2) + "\n"
    try:
        if len(content.encode()) > MOST_BYTES:
            raise ValueError(
                f"it has {len(content.encode()):,} bytes, more than {MOST_BYTES:,}: label columns"
                " of fewer distinct values."
            )
        _FILE(parse(content), "")
    except ValueError as error:
        raise ValueError(f"The model could not be loaded from a file again: {error}") from error
    return content


def loads(content: str) -> PersonModel:
    """Rebuilds a model from the content of its file; it can be sampled at once.

    The content may be anybody's: nothing in it makes loading fail in another way than with this
    error, or :func:`vantrel.sample` fail. Both cost no more than in proportion to its size and to
    the number of rows. The model's own ``sample`` fails on names of people without a country, which
    the content may ask for.

    Raises:
        ModelFileError: It is no model, lacks something, holds something of a wrong type or value, a
            key twice or a pattern that might make a search endless, or was written by a newer
            version.

    Warns:
        OtherVersionsWarning: The same seed may give other rows here than where it was fitted.
    """
    try:
        form = parse(content)
        _check_version(form)
        _FILE(form, "")
        model = _rebuild(form["model"])
    except (UnsoundJsonError, ShapeError) as error:
        raise ModelFileError(f"cannot be used: {error} Correct it or fit it again.") from error
    except (json.JSONDecodeError, RecursionError) as error:
        raise ModelFileError(
            f"is not JSON ({error}): give a file that 'vantrel fit' wrote."
        ) from error
    except ValueError as error:
        raise ModelFileError(f"cannot be used: {error}") from error
    if different := differences(form.get("versions", {})):
        warnings.warn(
            "The same seed may give other rows than where the model was fitted:"
            f" {'; '.join(different)}. For the same rows install what was there.",
            OtherVersionsWarning,
            skip_file_prefixes=OURS,
        )
    return model


def save(model: PersonModel, path: str | Path) -> None:
    """Writes a fitted model, whole or not at all.

    Raises:
        ModelNotFittedError: Nothing has been learnt yet.
        OSError: The file cannot be written.
        TypeError: The model holds values that JSON has no form for.
        ValueError: The model could not be loaded again, as :func:`dumps` tells.
    """
    content = dumps(model)
    with replacing(Path(path)) as file:
        file.write(content)


def load(path: str | Path) -> PersonModel:
    """Reads a fitted model; it can be sampled at once.

    Raises:
        ModelFileError: The file cannot be read, is larger than 16 MiB or is no model that
            :func:`loads` takes.

    Warns:
        OtherVersionsWarning: The same seed may give other rows here than where it was fitted.
    """
    return load_with_sha256(path)[0]


def load_with_sha256(path: str | Path) -> tuple[PersonModel, str]:
    """Reads a fitted model as :func:`load` does, and the SHA-256 of its file, both at one go.

    So they belong together also where the file is a pipe or is replaced meanwhile.

    Returns:
        The model, and 64 hexadecimal digits.
    """
    try:
        content = _read(Path(path))
        return loads(content), hashlib.sha256(content.encode()).hexdigest()
    except ModelFileError as error:
        raise ModelFileError(f"Model file {path} {error}") from error


def _refuse_not_fitted(form: dict[str, Any]) -> None:
    for hidden in ("hidden_model_gender", "hidden_model_country"):
        if hidden in form and form[hidden]["meta"]["categories"] is None:
            column = form[hidden]["meta"]["name"]
            raise ModelNotFittedError(
                f"Nothing has been learnt of column {column!r} yet: fit the model first."
            )


def _read(path: Path) -> str:
    try:
        with path.open("rb") as file:
            content = file.read(MOST_BYTES + 1)
        if len(content) <= MOST_BYTES:
            return content.decode("utf-8")
        size = f"{path.stat().st_size:,} bytes" if path.is_file() else "more bytes"
        raise ModelFileError(
            f"has {size}, more than the {MOST_BYTES:,} that a model may have: give a file that"
            " 'vantrel fit' wrote."
        )
    except OSError as error:
        near = nearby_file(path, error)
        raise ModelFileError(f"cannot be read: {error.strerror or error}.{near}") from error
    except UnicodeDecodeError as error:
        raise ModelFileError(
            f"is not JSON ({error}): give a file that 'vantrel fit' wrote."
        ) from error


def _check_version(form: Any) -> None:
    if not isinstance(form, dict) or form.get("format") != FORMAT:
        raise ValueError("it is no model; give a file that 'vantrel fit' wrote.")
    version = form.get("schema_version")
    if type(version) is int and version > SCHEMA_VERSION:
        raise ValueError(
            f"its schema version is {version}, the newest known here is {SCHEMA_VERSION}:"
            " install a newer vantrel."
        )


def _rebuild(form: dict[str, Any]) -> PersonModel:
    from vantrel.model.models.person import GenderModel, PersonModel

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

"""Keeps fitted models in JSON files."""

from __future__ import annotations

import hashlib
import json
import warnings
from codecs import BOM_UTF8
from collections import Counter
from dataclasses import dataclass
from pathlib import Path
from typing import Any

import msgspec

from vantrel.arguments import check_model, check_path
from vantrel.errors import (
    ModelFileError,
    ModelNotFittedError,
    OtherVersionsWarning,
    raised_by_model,
)
from vantrel.genders import DEFAULT_PATTERNS
from vantrel.hints import argument, named, why_unreadable
from vantrel.model.models.histogram import Histogram
from vantrel.model.models.person import GenderModel, PersonModel
from vantrel.storage.files import refuse_overwriting, replacing
from vantrel.storage.form import SCHEMA_VERSION, ModelFile
from vantrel.storage.head import Head, later_form
from vantrel.storage.patterns import try_patterns
from vantrel.util.callers import OURS
from vantrel.util.locale.locale import Provider, get_country_to_provder_map, told_before
from vantrel.versions import differences, versions
from vantrel.wording import shown

FORMAT = "vantrel-person-model"

# A model of a hundred thousand distinct titles takes a third of it, a usual one a thousandth.
MOST_BYTES = 16 * 2**20

# Of a reason that quotes the file.
_MOST_CHARACTERS = 500

_REMEDY = "give a file that 'vantrel fit' or vantrel.save wrote."


@dataclass(frozen=True)
class LoadedModel:
    """A model and what its file tells.

    Args:
        model: The model.
        name: The name of the file, without its folder.
        sha256: The SHA-256 of the file, 64 hexadecimal digits.
        size: The size of the file in bytes.
        versions: What it was fitted with, by name.
    """

    model: PersonModel
    name: str
    sha256: str
    size: int
    versions: dict[str, str]


def dumps(model: PersonModel) -> str:
    """Gives the content of a fitted model's file, and raises what :func:`save` raises."""
    check_model(model)
    with raised_by_model(ModelFileError, "The model cannot be kept in a file"):
        learnt = model.to_dict()
        _refuse_not_fitted(learnt)
        form = {
            "format": FORMAT,
            "schema_version": SCHEMA_VERSION,
            "versions": versions(),
            "model": learnt,
            "rows": msgspec.to_builtins(model.meta.rows),
            "ways": msgspec.to_builtins(model.meta.ways),
        }
        content = json.dumps(form, ensure_ascii=False, allow_nan=False, indent=2) + "\n"
        size = len(content.encode())
        if size > MOST_BYTES:
            raise ValueError(
                f"it has {size:,} bytes, more than {MOST_BYTES:,}: label columns of fewer distinct"
                " values."
            )
        try:
            msgspec.json.decode(content, type=ModelFile)
        except msgspec.ValidationError as error:  # in old versions no ValueError
            raise ModelFileError(f"The model cannot be kept in a file: {error}") from error
    return content


def loads(content: str | bytes, *, allow_patterns: bool = False) -> PersonModel:
    """Rebuilds a model from the content of its file, in UTF-8, as :func:`load` does.

    Patterns that are allowed are searched for as they are, without a limit of time, and messages go
    on after the name of the file.
    """
    return _rebuilt(_decoded(content, allow_patterns=allow_patterns))


def save(model: PersonModel, path: str | Path, *, force: bool = False) -> None:
    """Writes a fitted model, whole or not at all.

    Args:
        model: The model.
        path: The file.
        force: Whether a file that is there is overwritten.

    Raises:
        ArgumentTypeError: What is given is no model or no path.
        OverwriteError: The file is there and ``force`` is not set.
        ModelNotFittedError: Nothing has been learnt yet.
        ModelFileError: The model holds what no file can, as :class:`vantrel.storage.form.ModelFile`
            tells, or more than 16 MiB.
        OSError: The file cannot be written.
    """
    check_model(model)
    check_path(path)
    refuse_overwriting(Path(path), force=force)
    content = dumps(model)
    with replacing(Path(path), force=force) as file:
        file.write(content)


def load(path: str | Path, *, allow_patterns: bool = False) -> PersonModel:
    """Reads a fitted model; it can be sampled at once.

    The file may be anybody's: nothing in it makes loading fail in another way than with this error,
    or :func:`vantrel.sample` fail. Both cost no more than in proportion to its size and to the
    number of rows.

    Args:
        path: The file.
        allow_patterns: Whether other patterns than the usual ones are taken: allow those of people
            whom you trust. Searching for them in the values of the file is tried first, for five
            seconds at most.

    Raises:
        ArgumentTypeError: What is given is no path.
        ModelFileError: The file cannot be read, is larger than 16 MiB, is no model, lacks
            something, holds something of a wrong type or value, a key twice or a pattern that is
            not allowed, or was written by a newer version.

    Warns:
        OtherVersionsWarning: The same seed may give other rows here than where it was fitted.
    """
    return read_model(path, allow_patterns=allow_patterns).model


def read_model(path: str | Path, *, allow_patterns: bool = False) -> LoadedModel:
    """Reads a fitted model as :func:`load` does, and what its file tells, both at one go.

    So they belong together also where the file is a pipe or is replaced meanwhile.
    """
    check_path(path)
    try:
        content = _read(Path(path))
        file = _decoded(content, allow_patterns=allow_patterns)
        if unusual := file.model.patterns - DEFAULT_PATTERNS:
            children = file.model.meta.children.values()
            values = [value for child in children for value in child.categories]
            if file.rows is not None:
                values += filter(None, [*file.rows.gender, *file.rows.title])
            try_patterns(unusual, values)
        model = _rebuilt(file)
    except ModelFileError as error:
        raise ModelFileError(f"Model file {named(path)} {error}") from error
    sha256 = hashlib.sha256(content).hexdigest()
    return LoadedModel(model, Path(path).name, sha256, len(content), file.versions)


def _refuse_not_fitted(form: dict[str, Any]) -> None:
    for hidden in ("hidden_model_gender", "hidden_model_country"):
        if hidden in form and form[hidden]["meta"]["categories"] is None:
            column = form[hidden]["meta"]["name"]
            raise ModelNotFittedError(
                f"Nothing has been learnt of column {column!r} yet: fit the model first."
            )


def _read(path: Path) -> bytes:
    try:
        with path.open("rb") as file:
            content = file.read(MOST_BYTES + 1)
        if len(content) <= MOST_BYTES:
            return content
        size = f"{path.stat().st_size:,} bytes" if path.is_file() else "more bytes"
    except OSError as error:
        raise ModelFileError(why_unreadable(path, error)) from error
    raise ModelFileError(
        f"has {size}, more than the {MOST_BYTES:,} that a model may have: {_REMEDY}"
    )


def _decoded(content: str | bytes, *, allow_patterns: bool) -> ModelFile:
    content = (
        content.removeprefix("\ufeff")
        if isinstance(content, str)
        else content.removeprefix(BOM_UTF8)
    )
    try:
        _check_head(content)
        file = msgspec.json.decode(content, type=ModelFile)
        json.loads(content, object_pairs_hook=_refuse_doubled_keys)
    except msgspec.ValidationError as error:
        reason = shown(error, _MOST_CHARACTERS)
        raise ModelFileError(f"cannot be used: {reason}. Correct it or fit it again.") from error
    except (msgspec.DecodeError, UnicodeDecodeError, RecursionError) as error:
        raise ModelFileError(
            f"is not JSON ({shown(error, _MOST_CHARACTERS)}): {_REMEDY}"
        ) from error
    unusual = file.model.patterns - DEFAULT_PATTERNS
    if unusual and not allow_patterns:
        raise ModelFileError(
            f"has patterns of its own, such as {min(unusual)!r:.60}: if you trust whoever made it,"
            f" add {argument('allow_patterns')}."
        )
    return file


def _check_head(content: str | bytes) -> None:
    try:
        head = msgspec.json.decode(content, type=Head)
    except msgspec.ValidationError:
        head = Head()
    if head.format != FORMAT:
        raise ModelFileError(f"cannot be used: it is no model; {_REMEDY}")
    if later := later_form(head.schema_version, SCHEMA_VERSION):
        raise ModelFileError(f"cannot be used: {later}.")


def _refuse_doubled_keys(pairs: list[tuple[str, Any]]) -> None:
    """Refuses what msgspec lets pass. Nothing is kept, as large as the file may be."""
    times = Counter(key for key, _ in pairs)
    if len(times) < len(pairs):
        key = next(key for key, number in times.items() if number > 1)
        raise msgspec.ValidationError(f"An object has the key {key!r} twice")


def _rebuilt(file: ModelFile) -> PersonModel:
    form = msgspec.to_builtins(file.model)
    with told_before(), raised_by_model(ModelFileError, "cannot be used"):
        model = PersonModel.from_dict(form)
        labels, meta = model.labels, model.meta
        # The rebuilt hidden models have metas of their own: they share the person's again, so
        # that a loaded model can be fitted again as a new one can.
        if isinstance(model.hidden_model_gender, GenderModel):
            if gender_column := labels.gender or labels.title:
                model.hidden_model_gender._meta = meta[gender_column]
            else:  # nothing tells the gender: a new model has a plain histogram
                model.hidden_model_gender = Histogram[str].from_dict(form["hidden_model_gender"])
        if labels.country and model.hidden_model_country is not None:
            model.hidden_model_country._meta = meta[labels.country]
            countries = model.hidden_model_country.categories
            model.country_to_provider_map = get_country_to_provder_map(countries, Provider.PERSON)
    model.meta.rows, model.meta.ways = file.rows, file.ways
    if different := differences(file.versions):
        warnings.warn(
            "The same seed may give other rows than where the model was fitted:"
            f" {'; '.join(different)}. For the same rows install what was there.",
            OtherVersionsWarning,
            skip_file_prefixes=OURS,
        )
    return model

"""Sorts the genders and titles that a model knows."""

from vantrel.metadata.value import String
from vantrel.model.models.person import GenderModel, PersonModel


def genders_by_gender(model: PersonModel) -> dict[str, list[str]]:
    """Maps gender keys to the ways in which the gender column writes them.

    Args:
        model: A fitted model with a gender column.
    """
    assert isinstance(model.hidden_model_gender, GenderModel)
    return model.hidden_model_gender.collections


def titles_by_gender(model: PersonModel) -> dict[str, list[str]]:
    """Maps gender keys to the titles that only they bear, and the ambiguous key to all others.

    Args:
        model: A fitted model with a title column.
    """
    assert model.labels.title is not None
    meta = model.meta[model.labels.title]
    assert isinstance(meta, String)
    config = model.config
    sorter = GenderModel(
        meta, config.title_female_regex, config.title_male_regex, config.title_non_binary_regex
    )
    return sorter.collections


def values_of(by_gender: dict[str, list[str]]) -> set[str]:
    """Collects the values of all genders."""
    return {value for values in by_gender.values() for value in values}

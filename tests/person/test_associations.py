"""Associations that a person model refuses, and the message that says why."""

from typing import Any

import pytest

from support.people import ALL_LABELS, person_model
from support.recording import Calls, StandInMeta
from vantrel.config import PersonLabels
from vantrel.metadata.rules.association import Association
from vantrel.model.models.person import PersonModel

GENERATED = [
    *["title", "first", "last", "full", "email", "user"],
    *["password", "mobile", "home", "work"],
]


def message(column: Any, name: str = "PersonModel") -> str:
    return (
        f"Association attributed to column: {column} which is generated as new\n"
        f"                            by model: {name}.\n"
        f"                            {name} does not support associations with this label\n"
        "                            as it generates completely new data. Consider removing the"
        " association\n"
        "                            or changing the model."
    )


class Text(str):
    """A subclass of str that shows when it is formatted."""

    def __format__(self, spec: str) -> str:
        return f"<{self!s}{spec}>"


def test_an_empty_list_passes() -> None:
    assert person_model().check_associations([]) is None


def test_a_rule_without_columns_passes() -> None:
    assert person_model().check_associations([Association([])]) is None


@pytest.mark.parametrize("column", ["country", "gender"])
def test_a_rule_on_country_or_gender_passes(column: str) -> None:
    model = person_model()
    assert column in model.params.values()
    assert model.check_associations([Association([column])]) is None


def test_a_rule_on_a_column_that_the_model_does_not_produce_passes() -> None:
    assert person_model().check_associations([Association(["age", "class"])]) is None


@pytest.mark.parametrize("column", GENERATED)
def test_a_rule_on_a_generated_column_fails_with_the_whole_message(column: str) -> None:
    with pytest.raises(ValueError) as caught:
        person_model().check_associations([Association([column])])
    assert caught.value.args == (message(column),)


def test_the_first_name_is_named_and_the_class_twice() -> None:
    with pytest.raises(ValueError) as caught:
        person_model().check_associations([Association(["first"])])
    text = str(caught.value)
    assert text.startswith("Association attributed to column: first which is generated as new\n")
    assert text.count("PersonModel") == 2


def test_continuation_lines_begin_with_exactly_28_blanks() -> None:
    with pytest.raises(ValueError) as caught:
        person_model().check_associations([Association(["first"])])
    lines = str(caught.value).split("\n")[1:]
    assert [len(line) - len(line.lstrip(" ")) for line in lines] == [28] * 4


def test_a_subclass_is_named_by_its_own_name() -> None:
    class Employee(PersonModel):
        pass

    model = Employee(person_model().meta)
    with pytest.raises(ValueError) as caught:
        model.check_associations([Association(["first"])])
    assert str(caught.value) == message("first", "Employee")


def test_the_column_is_formatted_without_a_specification() -> None:
    with pytest.raises(ValueError) as caught:
        person_model().check_associations([Association([Text("first")])])
    assert str(caught.value) == message("<first>")


def test_a_column_that_is_no_string_is_formatted() -> None:
    model = PersonModel(StandInMeta(params={"title": 7}))
    with pytest.raises(ValueError) as caught:
        model.check_associations([Association([7])])
    assert str(caught.value) == message(7)


@pytest.mark.parametrize(
    ("rules", "offending"),
    [
        ([["age", "country", "last", "first"]], "last"),
        ([["age"], ["gender", "country"], ["work"], ["home"]], "work"),
        ([["first"], ["last"]], "first"),
    ],
)
def test_the_first_offending_column_ends_the_check(rules: list[list[str]], offending: str) -> None:
    with pytest.raises(ValueError) as caught:
        person_model().check_associations([Association(columns) for columns in rules])
    assert str(caught.value) == message(offending)


def test_rules_after_the_offending_one_are_not_looked_at() -> None:
    with pytest.raises(ValueError) as caught:
        person_model().check_associations([Association(["first"]), None])
    assert str(caught.value) == message("first")


def test_columns_after_the_offending_one_are_not_looked_at() -> None:
    seen = []

    class Rule:
        @property
        def associations(self) -> Any:
            for column in ["age", "first", "last"]:
                seen.append(column)
                yield column

    with pytest.raises(ValueError):
        person_model().check_associations([Rule()])
    assert seen == ["age", "first"]


def test_any_iterable_of_columns_will_do() -> None:
    with pytest.raises(ValueError) as caught:
        person_model().check_associations([Association({"last": 1})])
    assert str(caught.value) == message("last")


def test_a_rule_without_columns_to_name_fails_as_the_lookup() -> None:
    with pytest.raises(AttributeError) as caught:
        person_model().check_associations([object()])
    assert str(caught.value) == "'object' object has no attribute 'associations'"


def test_a_model_without_params_fails_as_the_lookup() -> None:
    meta = StandInMeta()
    del meta.params
    with pytest.raises(AttributeError) as caught:
        PersonModel(meta).check_associations([Association(["first"])])
    assert str(caught.value) == "'StandInMeta' object has no attribute 'params'"


def test_params_and_labels_are_read_through_the_instance() -> None:
    class Other(PersonModel):
        params = property(lambda self: {"a": "x", "b": "c", "d": "g"})
        labels = PersonLabels()

    model = Other(StandInMeta())
    Other.labels = PersonLabels(gender="g", country="c")
    assert model.check_associations([Association(["c", "g", "first"])]) is None
    with pytest.raises(ValueError) as caught:
        model.check_associations([Association(["x"])])
    assert str(caught.value) == message("x", "Other")


def test_the_three_tests_come_in_order_and_only_as_far_as_needed() -> None:
    calls = Calls()

    class Labels:
        @property
        def country(self) -> str:
            calls.append(("country", (), {}))
            return "c"

        @property
        def gender(self) -> str:
            calls.append(("gender", (), {}))
            return "g"

    class Noting(PersonModel):
        @property
        def params(self) -> dict[str, str]:
            calls.append(("params", (), {}))
            return {"a": "c", "b": "g"}

        labels = PersonLabels()

    model = Noting(StandInMeta())
    Noting.labels = Labels()
    model.check_associations([Association(["age", "c", "g"])])
    assert calls.names() == ["params", "params", "country", "params", "country", "gender"]


def test_a_rule_on_the_title_fails_also_where_the_gender_is_learnt_from_titles() -> None:
    model = person_model(PersonLabels(title="title"))
    with pytest.raises(ValueError) as caught:
        model.check_associations([Association(["title"])])
    assert str(caught.value) == message("title")


@pytest.mark.parametrize(
    ("associations", "given"), [(None, "NoneType"), ((), "tuple"), (Association(), "Association")]
)
def test_only_a_list_is_taken(associations: Any, given: str) -> None:
    with pytest.raises(TypeError) as caught:
        person_model().check_associations(associations)
    text = f"Argument 'associations' has incorrect type (expected list, got {given})"
    assert str(caught.value) == text


def test_sampling_does_not_check_associations() -> None:
    model = person_model(ALL_LABELS)
    model.check_associations = lambda associations: pytest.fail("checked")
    model._sample_conditional = lambda **keywords: keywords["gender_conditions"].to_frame()
    model.hidden_model_gender._probabilities = {"F": 1.0}
    model.hidden_model_country._probabilities = {"GB": 1.0}
    assert len(model.sample(n=1, associations=[Association(["first"])])) == 1

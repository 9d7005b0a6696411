"""Label sets and locales of any kind, from the meta to the sample."""

from dataclasses import fields

import pandas as pd
from hypothesis import given
from hypothesis import strategies as st

from support.fuzzing import any_text, fuzz, outcome, row_numbers
from vantrel.config import PersonLabels
from vantrel.metadata.value import Person
from vantrel.model.models.person import PersonModel

ATTRIBUTES = [field.name for field in fields(PersonLabels)]
LEARNT = {"gender": ["female", "male", None], "title": ["Mrs", "Mr", "Dr"], "country": ["GB"] * 3}


@st.composite
def label_sets(draw: st.DrawFn) -> PersonLabels:
    """Labels of mostly different columns, of which some have names of any kind."""
    wanted = draw(st.sets(st.sampled_from(ATTRIBUTES)))
    odd = draw(st.dictionaries(st.sampled_from(ATTRIBUTES), st.just("name") | any_text, max_size=3))
    return PersonLabels(**{attribute: attribute for attribute in wanted} | odd)


places = st.sampled_from(["en_GB", "de", "FR"])
locales = st.one_of(
    st.none(),
    st.lists(places, min_size=1, max_size=3),
    st.lists(st.one_of(places, any_text), max_size=3),
)


@fuzz
@given(label_sets(), locales, row_numbers)
def test_labels(labels: PersonLabels, allowed: list[str] | None, rows: int) -> None:
    # Two labels name one column.
    meta = outcome(lambda: Person("person", labels, locales=allowed), ValueError)
    if meta is None:
        return
    assert set(meta.params) == {name for name in ATTRIBUTES if getattr(labels, name)}
    columns = {meta.params.get(name, f"no {name}"): values for name, values in LEARNT.items()}
    table = outcome(lambda: pd.DataFrame(columns), UnicodeEncodeError)
    if table is None:  # pyarrow has no half characters
        return
    model = PersonModel(meta).fit(table)
    # A locale is not known, or there is none; half characters again. An empty name is the
    # name of a column, but nothing is learnt of it.
    refused = (KeyError,) if "" in (labels.gender, labels.title) else ()
    people = outcome(lambda: model.sample(n=rows), ValueError, *refused)
    if people is not None:
        assert set(people) == {column for column in vars(labels).values() if column is not None}
        assert people.columns.is_unique or list(vars(labels).values()).count("") > 1
        assert len(people) == rows

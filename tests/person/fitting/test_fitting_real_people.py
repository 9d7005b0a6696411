"""What is learnt of real people."""

import pytest

from support.examples import EXAMPLES
from support.people import person_model
from vantrel.config import PersonLabels
from vantrel.tables import read_table


def test_real_passengers_are_learnt() -> None:
    df = read_table(EXAMPLES / "passengers.csv")
    model = person_model(PersonLabels(gender="sex", title="title")).fit(df)
    shares = df["sex"].value_counts(normalize=True)
    learnt = model.hidden_model_gender._probabilities
    assert learnt == {"F": pytest.approx(shares["female"]), "M": pytest.approx(shares["male"])}
    assert model.hidden_model_country is None


def test_real_respondents_are_learnt() -> None:
    df = read_table(EXAMPLES / "respondents.csv").head(2_000)
    model = person_model(PersonLabels(gender="gender", country="country"))
    with pytest.warns(UserWarning, match="Australia"):
        model.fit(df)
    countries = df["country"].dropna().unique().tolist()
    assert list(model.country_to_provider_map) == countries
    assert list(model.hidden_model_country._probabilities) == countries

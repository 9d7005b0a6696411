"""A person model that notes how it is sampled, and what it is sampled with."""

from types import SimpleNamespace
from typing import Any

import numpy as np
import pandas as pd

from support.people import ALL_LABELS, person_model
from support.recording import Calls, StandInMeta
from vantrel.config import PersonLabels
from vantrel.model.models.person import PersonModel

LEARNT = PersonLabels(gender="gender", title="title", country="country")
NAMES = {"firstname": "first", "lastname": "last"}
LABEL_SETS = {
    "all": ALL_LABELS,
    "none": PersonLabels(),
    "learnt": LEARNT,
    "title": PersonLabels(title="title", **NAMES),
    "gender": PersonLabels(gender="gender", **NAMES),
    "country": PersonLabels(country="country", **NAMES),
    "names": PersonLabels(**NAMES),
    "title and country": PersonLabels(title="title", country="country", fullname="full"),
}
GIVEN = pd.DataFrame(
    {
        "gender": ["female", "male", "nb", "female", "male"],
        "country": ["GB", "US", "DE", "US", "GB"],
        "age": [1, 2, 3, 4, 5],
    }
)


class Hidden:
    """A hidden model that notes how it is sampled and gives fixed values."""

    def __init__(self, calls: Calls, name: str, values: Any) -> None:
        self.calls, self.values = calls, values
        self.meta = SimpleNamespace(name=name)

    def sample(self, *args: Any, **keywords: Any) -> pd.DataFrame:
        self.calls.append((self.meta.name, args, keywords))
        return pd.DataFrame({"other": self.values, self.meta.name: self.values})


class Rng:
    """A generator that notes its choices and always takes the last one."""

    def __init__(self, calls: Calls) -> None:
        self.calls = calls

    def choice(self, *args: Any, **keywords: Any) -> Any:
        self.calls.append(("choice", args, keywords))
        return np.array([args[0][-1]] * keywords["size"], dtype=object)


def noting_model(calls: Calls, labels: PersonLabels = LEARNT, **attributes: Any) -> PersonModel:
    """A model that goes as far as conditional sampling, which only notes what it is given."""
    children = person_model(LEARNT).meta._children
    model = PersonModel(StandInMeta(labels, calls, children=children, **attributes))
    model.hidden_model_gender = Hidden(calls, "hidden", ["F", "M"])
    model.hidden_model_country = Hidden(calls, "country", ["GB", "US"])
    model._rng = Rng(calls)
    made = pd.DataFrame({"made": [1]})
    model._sample_conditional = calls.recorder("conditional", lambda **_: made)
    calls.clear()
    return model


def conditional_of(calls: Calls) -> dict[str, Any]:
    """What conditional sampling was given."""
    [keywords] = [keywords for name, _, keywords in calls if name == "conditional"]
    return keywords

"""The dictionary form of a person model, and the way back."""

import json
from dataclasses import asdict, dataclass
from typing import Any, Dict  # noqa: UP035 - the module's own annotations are spelt so

import pytest

from support.people import ALL_LABELS, fitted_model, person_model
from support.recording import Calls, raising
from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.metadata.value import Person
from vantrel.model.base import DiscreteModel
from vantrel.model.exceptions import ModelNotFittedError
from vantrel.model.models import person
from vantrel.model.models.histogram import Histogram
from vantrel.model.models.person import CountryModel, GenderModel, PersonModel

HIDDEN = ["hidden_model_gender", "hidden_model_country"]


class StandIn:
    """A hidden model with a truth value and a dictionary form of its own."""

    def __init__(self, truth: bool = True) -> None:
        self.truth = truth
        self.form: dict[str, Any] = {"a": 1}

    def __bool__(self) -> bool:
        return self.truth

    def to_dict(self) -> dict[str, Any]:
        return self.form


class Form:
    """No dict, but it can be updated, and writes the updates down."""

    def __init__(self) -> None:
        self.updates: list[Any] = []

    def update(self, *args: Any, **kwargs: Any) -> None:
        self.updates.append((args, kwargs))


# To a dictionary


def test_keys_come_in_order_after_those_of_the_base_class() -> None:
    assert list(fitted_model().to_dict()) == ["meta", "config", *HIDDEN]


def test_config_is_the_dataclass_as_a_dict() -> None:
    config = PersonModelConfig(mobile_number_format="x")
    assert person_model(config=config).to_dict()["config"] == asdict(config)


def test_a_nested_dataclass_becomes_a_nested_dict() -> None:
    @dataclass
    class Inner:
        x: int = 1

    @dataclass
    class Outer:
        inner: Inner

    model = person_model()
    model.config = Outer(Inner())
    assert model.to_dict()["config"] == {"inner": {"x": 1}}


def test_a_model_without_a_country_label_writes_no_country_model_and_has_none_again() -> None:
    form = person_model(PersonLabels(gender="g")).to_dict()
    assert "hidden_model_country" not in form
    assert PersonModel.from_dict(form).hidden_model_country is None


@pytest.mark.parametrize("name", HIDDEN)
def test_a_hidden_model_is_written_in_its_own_form(name: str) -> None:
    model = person_model()
    hidden = StandIn()
    setattr(model, name, hidden)
    assert model.to_dict()[name] is hidden.form


@pytest.mark.parametrize("name", HIDDEN)
@pytest.mark.parametrize("hidden", [None, StandIn(truth=False), 0])
def test_a_falsy_hidden_model_is_not_written(name: str, hidden: Any) -> None:
    model = person_model()
    setattr(model, name, hidden)
    assert name not in model.to_dict()


@pytest.mark.parametrize(
    "name",
    [
        *["_country_to_provider_map", "country_to_provider_map", "mobile_number_format"],
        *["home_number_format", "work_number_format", "dict_cache_size", "pwd_length", "_rng"],
    ],
)
def test_map_copied_settings_and_generators_are_not_written(name: str) -> None:
    assert name not in fitted_model().to_dict()


def test_the_result_is_the_base_classs_own_dict(monkeypatch: pytest.MonkeyPatch) -> None:
    base = {"meta": 1, "config": "old"}
    monkeypatch.setattr(DiscreteModel, "to_dict", lambda self: base)
    model = person_model()
    assert model.to_dict() is base
    assert base["config"] == asdict(model.config)


def test_each_entry_is_an_update_and_a_result_that_is_no_dict_is_refused_after_them(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    form = Form()
    monkeypatch.setattr(DiscreteModel, "to_dict", lambda self: form)
    model = person_model()
    model.hidden_model_gender, model.hidden_model_country = StandIn(), StandIn()
    with pytest.raises(TypeError) as caught:
        model.to_dict()
    assert str(caught.value) == "Expected dict, got Form"
    assert form.updates == [
        (({"config": asdict(model.config)},), {}),
        (({"hidden_model_gender": {"a": 1}},), {}),
        (({"hidden_model_country": {"a": 1}},), {}),
    ]


def test_asdict_is_looked_up_when_the_form_is_made(monkeypatch: pytest.MonkeyPatch) -> None:
    calls = Calls()
    monkeypatch.setattr(person, "asdict", calls.recorder("asdict", lambda config: "form"))
    model = person_model()
    assert model.to_dict()["config"] == "form"
    assert calls == [("asdict", (model.config,), {})]


def test_the_form_is_plain_json() -> None:
    form = fitted_model().to_dict()
    assert PersonModel.from_dict(json.loads(json.dumps(form))).to_dict() == form


def test_a_base_form_without_update_fails_as_the_lookup(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(DiscreteModel, "to_dict", lambda self: ["meta"])
    with pytest.raises(AttributeError) as caught:
        person_model().to_dict()
    assert str(caught.value) == "'list' object has no attribute 'update'"


@pytest.mark.parametrize("name", HIDDEN)
def test_an_error_of_a_hidden_models_form_propagates(name: str) -> None:
    error = RuntimeError("no")
    model = person_model()
    hidden = StandIn()
    hidden.to_dict = raising(error)
    setattr(model, name, hidden)
    with pytest.raises(RuntimeError) as caught:
        model.to_dict()
    assert caught.value is error


# From a dictionary


def test_a_round_trip_keeps_the_form() -> None:
    form = fitted_model(config=PersonModelConfig(pwd_length=(3, 4))).to_dict()
    assert PersonModel.from_dict(form).to_dict() == form


def test_a_round_trip_copies_the_settings_out_of_the_stored_config() -> None:
    config = PersonModelConfig(mobile_number_format="m", pwd_length=(3, 4), dict_cache_size=5)
    again = PersonModel.from_dict(person_model(config=config).to_dict())
    assert again.config == config
    assert (again.mobile_number_format, again.pwd_length, again.dict_cache_size) == ("m", (3, 4), 5)


def test_a_round_trip_leaves_the_provider_map_unset() -> None:
    model = fitted_model()
    assert model.country_to_provider_map
    again = PersonModel.from_dict(model.to_dict())
    with pytest.raises(ModelNotFittedError) as caught:
        _ = again.country_to_provider_map
    assert str(caught.value) == "Country model not fitted."


def test_a_round_trip_keeps_the_hidden_models() -> None:
    model = fitted_model()
    again = PersonModel.from_dict(model.to_dict())
    for name in HIDDEN:
        assert type(getattr(again, name)) is type(getattr(model, name))
        assert getattr(again, name)._probabilities == getattr(model, name)._probabilities


def test_a_uniform_histogram_comes_back_as_a_gender_model_with_its_probabilities() -> None:
    config = PersonModelConfig(genders=["F", "M", "NB", "A"])
    model = person_model(PersonLabels(firstname="f"), config)
    assert type(model.hidden_model_gender) is Histogram
    again = PersonModel.from_dict(model.to_dict()).hidden_model_gender
    assert type(again) is GenderModel
    assert again._probabilities == {"F": 0.25, "M": 0.25, "NB": 0.25, "A": 0.25}
    assert (again.regex_female, again.regex_male, again.regex_non_binary) == (None, None, None)


def test_a_dictionary_without_config_gives_a_fresh_default_one() -> None:
    form = person_model().to_dict()
    del form["config"]
    again = PersonModel.from_dict(form)
    assert again.config == PersonModelConfig()
    assert again.config is not PersonModel.__init__.__defaults__[0]


@pytest.mark.parametrize("labels", [PersonLabels(gender="g"), PersonLabels(title="t")])
def test_without_a_stored_gender_model_the_unfitted_one_stays(labels: PersonLabels) -> None:
    form = person_model(labels).to_dict()
    del form["hidden_model_gender"]
    hidden = PersonModel.from_dict(form).hidden_model_gender
    assert type(hidden) is GenderModel
    assert hidden._probabilities is None


def test_without_a_stored_gender_model_the_uniform_one_stays() -> None:
    form = person_model(PersonLabels()).to_dict()
    del form["hidden_model_gender"]
    hidden = PersonModel.from_dict(form).hidden_model_gender
    assert type(hidden) is Histogram
    assert hidden._probabilities == {"F": 0.5, "M": 0.5}


def test_without_a_stored_country_model_the_unfitted_one_stays() -> None:
    form = fitted_model().to_dict()
    del form["hidden_model_country"]
    hidden = PersonModel.from_dict(form).hidden_model_country
    assert type(hidden) is CountryModel
    assert hidden._probabilities is None


def test_a_dictionary_without_meta_raises_key_error() -> None:
    with pytest.raises(KeyError) as caught:
        PersonModel.from_dict({"config": {}})
    assert caught.value.args == ("meta",)


def test_a_config_of_none_is_no_mapping() -> None:
    form = {**person_model().to_dict(), "config": None}
    with pytest.raises(TypeError) as caught:
        PersonModel.from_dict(form)
    assert str(caught.value) == "argument after ** must be a mapping, not NoneType"


@pytest.mark.parametrize("config", [1, 1.5, object()])
def test_another_config_that_is_no_mapping_fails(config: Any) -> None:
    with pytest.raises(TypeError):
        PersonModel.from_dict({**person_model().to_dict(), "config": config})


def test_an_unknown_field_fails_as_the_configs_constructor_does() -> None:
    with pytest.raises(TypeError) as caught:
        PersonModel.from_dict({**person_model().to_dict(), "config": {"zz": 1}})
    message = "PersonModelConfig.__init__() got an unexpected keyword argument 'zz'"
    assert str(caught.value) == message


def test_a_subclass_is_rebuilt_as_itself() -> None:
    class Narrower(PersonModel):
        pass

    assert type(Narrower.from_dict(person_model().to_dict())) is Narrower


def test_the_class_is_called_with_meta_and_config_by_keyword() -> None:
    calls = Calls()

    class Noting(PersonModel):
        def __init__(self, *args: Any, **kwargs: Any) -> None:
            calls.append(("init", args, kwargs))

    form = {"meta": person_model().meta.to_dict(), "config": {"mobile_number_format": "x"}}
    Noting.from_dict(form)
    [(_, args, keywords)] = calls
    assert args == ()
    assert list(keywords) == ["meta", "config"]
    assert type(keywords["meta"]) is Person
    assert keywords["config"] == PersonModelConfig(mobile_number_format="x")


def test_the_steps_come_in_order_with_their_arguments(monkeypatch: pytest.MonkeyPatch) -> None:
    calls = Calls()

    def stand_in(name: str) -> Any:
        class Named:
            from_dict = staticmethod(calls.recorder(name, lambda d: name))

        return Named

    class Made(PersonModel):
        def __init__(self, *args: Any, **kwargs: Any) -> None:
            calls.append(("init", args, kwargs))

    for name in ("Person", "GenderModel", "CountryModel"):
        monkeypatch.setattr(person, name, stand_in(name))
    monkeypatch.setattr(person, "PersonModelConfig", calls.recorder("config", lambda **_: "config"))
    form = {"hidden_model_country": "c", "hidden_model_gender": "g", "meta": "m"}
    model = Made.from_dict({**form, "config": {"a": 1}})
    assert calls == [
        ("Person", ("m",), {}),
        ("config", (), {"a": 1}),
        ("init", (), {"meta": "Person", "config": "config"}),
        ("GenderModel", ("g",), {}),
        ("CountryModel", ("c",), {}),
    ]
    assert (model.hidden_model_gender, model.hidden_model_country) == (
        "GenderModel",
        "CountryModel",
    )


@pytest.mark.parametrize(("key", "name"), [(HIDDEN[0], "GenderModel"), (HIDDEN[1], "CountryModel")])
@pytest.mark.parametrize("value", [None, {}, 0])
def test_a_stored_hidden_model_counts_by_its_key_not_its_value(
    monkeypatch: pytest.MonkeyPatch, key: str, name: str, value: Any
) -> None:
    form = {"meta": person_model(PersonLabels()).meta.to_dict(), key: value}
    calls = Calls()
    stand_in = type(name, (), {"from_dict": staticmethod(calls.recorder("from_dict"))})
    monkeypatch.setattr(person, name, stand_in)
    PersonModel.from_dict(form)
    assert calls == [("from_dict", (value,), {})]


@pytest.mark.parametrize("name", ["Person", "GenderModel", "CountryModel"])
def test_an_error_on_the_way_back_propagates(monkeypatch: pytest.MonkeyPatch, name: str) -> None:
    form = fitted_model().to_dict()
    error = RuntimeError("no")
    monkeypatch.setattr(getattr(person, name), "from_dict", raising(error))
    with pytest.raises(RuntimeError) as caught:
        PersonModel.from_dict(form)
    assert caught.value is error


def test_the_casts_do_nothing_and_come_in_order(monkeypatch: pytest.MonkeyPatch) -> None:
    form = fitted_model(ALL_LABELS).to_dict()
    calls = Calls()
    monkeypatch.setattr(person, "cast", calls.recorder("cast", lambda type_, value: value))
    for name in ("GenderModel", "CountryModel"):
        stand_in = type(name, (), {"from_dict": staticmethod(lambda d: d)})
        original = getattr(person, name)
        monkeypatch.setattr(original, "from_dict", stand_in.from_dict)
    PersonModel.from_dict(form)
    assert [args for _, args, _ in calls] == [
        (Dict[str, object], form["meta"]),  # noqa: UP006 - the module's own annotations are spelt so
        (Dict[str, Any], form["config"]),  # noqa: UP006 - the module's own annotations are spelt so
        (Dict[str, object], form["hidden_model_gender"]),  # noqa: UP006 - the module's own annotations are spelt so
        (Dict[str, object], form["hidden_model_country"]),  # noqa: UP006 - the module's own annotations are spelt so
    ]


def test_reading_the_form_leaves_it_alone() -> None:
    form = fitted_model().to_dict()
    before = json.dumps(form)
    PersonModel.from_dict(form)
    assert json.dumps(form) == before

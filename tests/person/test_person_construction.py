"""How a person model is put together, and the properties through which it is read."""

from typing import Any

import pytest
from faker import Faker

from support.people import person_model
from support.recording import Calls, StandInMeta, raising
from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.metadata import Nominal
from vantrel.metadata.value import Person, String
from vantrel.model.base import DiscreteModel
from vantrel.model.exceptions import ModelNotFittedError
from vantrel.model.models import person
from vantrel.model.models.histogram import Histogram
from vantrel.model.models.person import CountryModel, GenderModel, PersonModel

SETTINGS = [
    "mobile_number_format",
    "home_number_format",
    "work_number_format",
    "dict_cache_size",
    "pwd_length",
]
CONFIG = PersonModelConfig(
    gender_female_regex="gf",
    gender_male_regex="gm",
    gender_non_binary_regex="gn",
    title_female_regex="tf",
    title_male_regex="tm",
    title_non_binary_regex="tn",
    genders=["F", "M", "NB"],
    mobile_number_format="m",
    home_number_format="h",
    work_number_format="w",
    dict_cache_size=7,
    pwd_length=(1, 2),
)


class Mapping(dict[str, Any]):
    """A subclass of dict."""


class Noting(PersonModel):
    """Writes down which attributes are set, in order, with their values."""

    def __setattr__(self, name: str, value: Any) -> None:
        vars(self).setdefault("assigned", []).append((name, value))
        super().__setattr__(name, value)


def patterns(model: PersonModel) -> tuple[Any, ...]:
    hidden = model.hidden_model_gender
    return hidden.regex_female, hidden.regex_male, hidden.regex_non_binary


# The base class and the order of the steps


def test_the_base_class_gets_the_meta_by_keyword(monkeypatch: pytest.MonkeyPatch) -> None:
    calls = Calls()
    init = DiscreteModel.__init__
    monkeypatch.setattr(DiscreteModel, "__init__", calls.recorder("init", init))
    meta = Person("person", PersonLabels())
    model = PersonModel(meta)
    assert calls[0] == ("init", (model,), {"meta": meta})


def test_meta_and_config_may_be_given_by_position() -> None:
    meta = Person("person", PersonLabels())
    model = PersonModel(meta, CONFIG)
    assert model.meta is meta
    assert model.config is CONFIG


def test_attributes_are_set_in_order() -> None:
    model = Noting(Person("person", PersonLabels(gender="g", country="c")), CONFIG)
    assert [name for name, _ in vars(model)["assigned"]] == [
        *["_meta", "_rng", "config", "_country_to_provider_map"],
        *["hidden_model_gender", "hidden_model_country"],
        *["hidden_model_gender", "hidden_model_country", *SETTINGS],
    ]


def test_hidden_models_are_none_before_they_are_built() -> None:
    model = Noting(Person("person", PersonLabels(gender="g", country="c")), CONFIG)
    values = [value for name, value in vars(model)["assigned"] if name.startswith("hidden")]
    assert values[:2] == [None, None]


def test_without_a_country_label_the_country_model_is_set_to_none_again() -> None:
    model = Noting(Person("person", PersonLabels()), CONFIG)
    values = [value for name, value in vars(model)["assigned"] if name == "hidden_model_country"]
    assert values == [None, None]


def test_each_model_has_an_empty_provider_map_of_its_own() -> None:
    one, other = person_model(), person_model()
    assert one._country_to_provider_map == {}
    assert type(one._country_to_provider_map) is dict
    assert one._country_to_provider_map is not other._country_to_provider_map


def test_two_models_without_a_config_share_the_default_one() -> None:
    assert person_model().config is person_model().config
    assert person_model().config is PersonModel.__init__.__defaults__[0]


def test_a_changed_default_config_changes_later_models(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(PersonModel.__init__.__defaults__[0], "mobile_number_format", "x")
    assert person_model().mobile_number_format == "x"


@pytest.mark.parametrize("name", SETTINGS)
def test_settings_are_copied_from_the_config(name: str) -> None:
    assert getattr(person_model(config=CONFIG), name) is getattr(CONFIG, name)


@pytest.mark.parametrize("name", SETTINGS)
def test_settings_are_copied_from_the_argument_not_from_the_attribute(name: str) -> None:
    class Fixed(PersonModel):
        config = property(lambda self: PersonModelConfig(), lambda self, value: None)

    model = Fixed(Person("person", PersonLabels()), CONFIG)
    assert getattr(model, name) is getattr(CONFIG, name)


def test_patterns_and_genders_are_read_from_the_attribute() -> None:
    class Fixed(PersonModel):
        config = property(lambda self: CONFIG, lambda self, value: None)

    titled = Fixed(Person("person", PersonLabels(title="t")), PersonModelConfig())
    assert patterns(titled) == ("tf", "tm", "tn")
    plain = Fixed(Person("person", PersonLabels()), PersonModelConfig())
    assert list(plain.hidden_model_gender._probabilities) == ["F", "M", "NB"]


def test_copied_settings_do_not_follow_a_replaced_config() -> None:
    model = person_model()
    model.config = CONFIG
    assert model.mobile_number_format == "07xxxxxxxx"


# The hidden gender model


def test_gender_comes_before_title_and_takes_the_gender_patterns() -> None:
    model = person_model(PersonLabels(gender="g", title="t"), CONFIG)
    assert type(model.hidden_model_gender) is GenderModel
    assert model.hidden_model_gender.meta is model.meta["g"]
    assert patterns(model) == ("gf", "gm", "gn")


@pytest.mark.parametrize("gender", [None, ""])
def test_title_is_taken_where_gender_is_absent_or_empty(gender: str | None) -> None:
    model = person_model(PersonLabels(gender=gender, title="t"), CONFIG)
    assert type(model.hidden_model_gender) is GenderModel
    assert model.hidden_model_gender.meta is model.meta["t"]
    assert patterns(model) == ("tf", "tm", "tn")


@pytest.mark.parametrize("gender", [None, ""])
@pytest.mark.parametrize("title", [None, ""])
def test_a_plain_histogram_is_taken_where_both_are_absent_or_empty(
    gender: str | None, title: str | None
) -> None:
    model = person_model(PersonLabels(gender=gender, title=title), CONFIG)
    assert type(model.hidden_model_gender) is Histogram


@pytest.mark.parametrize(
    ("label", "prefix"), [("gender", "gender"), ("title", "title")], ids=["gender", "title"]
)
def test_the_gender_model_is_made_with_four_keywords(
    monkeypatch: pytest.MonkeyPatch, label: str, prefix: str
) -> None:
    calls = Calls()
    hidden = object()
    monkeypatch.setattr(person, "GenderModel", calls.recorder("make", lambda **_: hidden))
    model = person_model(PersonLabels(**{label: "column"}), CONFIG)
    [(_, args, keywords)] = calls
    assert args == ()
    assert keywords == {
        "meta": model.meta["column"],
        "regex_female": getattr(CONFIG, f"{prefix}_female_regex"),
        "regex_male": getattr(CONFIG, f"{prefix}_male_regex"),
        "regex_non_binary": getattr(CONFIG, f"{prefix}_non_binary_regex"),
    }
    assert list(keywords) == ["meta", "regex_female", "regex_male", "regex_non_binary"]
    assert model.hidden_model_gender is hidden


def test_the_labels_are_read_again_for_the_index(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(person, "GenderModel", lambda **keywords: keywords["meta"])

    class Labels:
        read = 0
        title = country = None

        @property
        def gender(self) -> str:
            self.read += 1
            return f"read {self.read}"

    meta = StandInMeta(Labels(), children={"read 1": "first", "read 2": "second"})
    assert PersonModel(meta, CONFIG).hidden_model_gender == "second"


def test_children_are_taken_from_the_argument_not_from_the_kept_meta() -> None:
    meta = Person("person", PersonLabels(gender="g", country="c"))

    class Other(PersonModel):
        def __getattribute__(self, name: str) -> Any:
            return StandInMeta(meta.labels) if name == "meta" else super().__getattribute__(name)

    model = Other(meta, CONFIG)
    assert model.hidden_model_gender.meta is meta["g"]
    assert model.hidden_model_country.meta is meta["c"]


def test_labels_are_read_through_the_property_which_a_subclass_may_replace() -> None:
    class Relabelled(PersonModel):
        labels = PersonLabels(title="t")

    model = Relabelled(Person("person", PersonLabels(gender="g", title="t", country="c")), CONFIG)
    assert model.hidden_model_gender.name == "t"
    assert model.hidden_model_country is None


# Neither gender nor title


@pytest.mark.parametrize(
    "genders", [["F", "M"], ["F", "M", "NB"], ["F", "M", "NB", "A"], ("M",), []]
)
def test_the_genders_of_the_config_are_equally_likely(genders: Any) -> None:
    model = person_model(PersonLabels(), PersonModelConfig(genders=genders))
    expected = {gender: 1.0 / len(genders) for gender in genders}
    assert model.hidden_model_gender._probabilities == expected


def test_four_genders_get_a_quarter_each() -> None:
    config = PersonModelConfig(genders=["F", "M", "NB", "A"])
    probabilities = person_model(PersonLabels(), config).hidden_model_gender._probabilities
    assert probabilities == {"F": 0.25, "M": 0.25, "NB": 0.25, "A": 0.25}


def test_three_genders_get_a_third_each_as_a_float() -> None:
    probabilities = person_model(PersonLabels(), CONFIG).hidden_model_gender._probabilities
    assert probabilities == {"F": 1 / 3, "M": 1 / 3, "NB": 1 / 3}
    assert all(type(value) is float for value in probabilities.values())


def test_no_gender_is_no_division() -> None:
    config = PersonModelConfig(genders=[])
    assert person_model(PersonLabels(), config).hidden_model_gender._probabilities == {}


def test_a_repeated_gender_still_counts_in_the_length() -> None:
    config = PersonModelConfig(genders=["F", "F", "M", "M"])
    probabilities = person_model(PersonLabels(), config).hidden_model_gender._probabilities
    assert probabilities == {"F": 0.25, "M": 0.25}


def test_the_length_is_taken_again_for_each_gender() -> None:
    class Growing(list[str]):
        asked = 0

        def __len__(self) -> int:
            self.asked += 1
            return self.asked

    config = PersonModelConfig()
    config.genders = Growing(["F", "M"])
    with pytest.MonkeyPatch.context() as patch:
        # The host's own meta takes the length while it copies the categories.
        patch.setattr(person, "String", lambda name, categories, nan_freq: String(name))
        model = person_model(PersonLabels(), config)
    assert model.hidden_model_gender._probabilities == {"F": 1.0, "M": 0.5}


def test_genders_without_a_length_fail_as_len_does(monkeypatch: pytest.MonkeyPatch) -> None:
    config = PersonModelConfig()
    config.genders = (gender for gender in ["F", "M"])
    monkeypatch.setattr(person, "String", lambda name, categories, nan_freq: String(name))
    with pytest.raises(TypeError) as caught:
        person_model(PersonLabels(), config)
    assert str(caught.value) == "object of type 'generator' has no len()"


def test_the_meta_of_the_hidden_gender_is_named_after_the_model() -> None:
    hidden = person_model(PersonLabels(), CONFIG).hidden_model_gender
    assert hidden.name == "person_gender"
    assert type(hidden.meta) is String
    assert hidden.meta.categories == ["F", "M", "NB"]


def test_a_name_that_is_no_string_is_formatted() -> None:
    class Name:
        def __format__(self, spec: str) -> str:
            return f"<{spec}>"

    model = PersonModel(StandInMeta(name=Name()), CONFIG)
    assert model.hidden_model_gender.name == "<>_gender"


def test_the_name_is_the_models_not_the_metas() -> None:
    class Named(PersonModel):
        name = "somebody"

    model = Named(Person("person", PersonLabels()), CONFIG)
    assert model.hidden_model_gender.name == "somebody_gender"


@pytest.mark.parametrize("nan_freq", [None, 0, 0.0, "", False])
def test_a_missing_frequency_that_is_none_or_zero_becomes_zero(nan_freq: Any) -> None:
    kept = PersonModel(StandInMeta(nan_freq=nan_freq), CONFIG).hidden_model_gender.meta.nan_freq
    assert type(kept) is float
    assert kept == 0.0


@pytest.mark.parametrize("nan_freq", [0.1, 1])
def test_another_missing_frequency_is_taken_as_it_is(nan_freq: Any) -> None:
    model = PersonModel(StandInMeta(nan_freq=nan_freq), CONFIG)
    assert model.hidden_model_gender.meta.nan_freq is nan_freq


def test_the_hidden_meta_and_histogram_are_made_by_name(monkeypatch: pytest.MonkeyPatch) -> None:
    calls = Calls()
    gender_meta = String("g")
    monkeypatch.setattr(person, "String", calls.recorder("String", lambda *_, **__: gender_meta))
    monkeypatch.setattr(person, "Histogram", calls.recorder("Histogram", Histogram))
    model = person_model(PersonLabels(), CONFIG, nan_freq=0.1)
    assert calls == [
        ("String", ("person_gender",), {"categories": CONFIG.genders, "nan_freq": 0.1}),
        ("Histogram", (), {"meta": gender_meta}),
    ]
    assert calls[0][2]["categories"] is CONFIG.genders
    assert model.hidden_model_gender.meta is gender_meta


def test_the_uniform_model_can_be_sampled_without_fitting() -> None:
    drawn = person_model(PersonLabels(), CONFIG).hidden_model_gender.sample(n=50)
    assert set(drawn["person_gender"]) == {"F", "M", "NB"}


# The hidden country model


@pytest.mark.parametrize("country", [None, ""])
def test_no_country_label_is_no_country_model(country: str | None) -> None:
    assert person_model(PersonLabels(country=country)).hidden_model_country is None


def test_a_country_label_makes_a_country_model_over_its_column() -> None:
    model = person_model(PersonLabels(country="c"))
    assert type(model.hidden_model_country) is CountryModel
    assert model.hidden_model_country.meta is model.meta["c"]
    assert type(model.meta["c"]) is Nominal


def test_the_country_model_gets_its_meta_by_position(monkeypatch: pytest.MonkeyPatch) -> None:
    calls = Calls()
    hidden = object()
    monkeypatch.setattr(person, "CountryModel", calls.recorder("make", lambda *_: hidden))
    model = person_model(PersonLabels(country="c"))
    assert calls == [("make", (model.meta["c"],), {})]
    assert model.hidden_model_country is hidden


# Failures


@pytest.mark.parametrize("label", ["gender", "title", "country"])
def test_a_label_without_a_child_fails_as_the_meta_does(label: str) -> None:
    meta = StandInMeta(PersonLabels(**{label: "nowhere"}))
    with pytest.raises(KeyError) as caught:
        PersonModel(meta, CONFIG)
    assert caught.value.args == ("nowhere",)


def test_a_failure_leaves_what_was_set_before() -> None:
    model = PersonModel.__new__(PersonModel)
    with pytest.raises(KeyError):
        model.__init__(StandInMeta(PersonLabels(gender="nowhere")), CONFIG)
    assert model.config is CONFIG
    assert model._country_to_provider_map == {}
    assert model.hidden_model_gender is None
    assert model.hidden_model_country is None
    assert not hasattr(model, "mobile_number_format")


def test_a_failing_country_model_leaves_the_gender_model(monkeypatch: pytest.MonkeyPatch) -> None:
    error = RuntimeError("no")
    monkeypatch.setattr(person, "CountryModel", raising(error))
    model = PersonModel.__new__(PersonModel)
    with pytest.raises(RuntimeError) as caught:
        model.__init__(Person("person", PersonLabels(country="c")), CONFIG)
    assert caught.value is error
    assert type(model.hidden_model_gender) is Histogram
    assert model.hidden_model_country is None


@pytest.mark.parametrize(
    ("missing", "labels"),
    [
        ("gender_female_regex", PersonLabels(gender="g")),
        ("gender_male_regex", PersonLabels(gender="g")),
        ("gender_non_binary_regex", PersonLabels(gender="g")),
        ("title_female_regex", PersonLabels(title="t")),
        ("title_male_regex", PersonLabels(title="t")),
        ("title_non_binary_regex", PersonLabels(title="t")),
        ("genders", PersonLabels()),
        *[(name, PersonLabels()) for name in SETTINGS],
    ],
)
def test_a_missing_setting_fails_as_reading_it(missing: str, labels: PersonLabels) -> None:
    class Partial:
        pass

    config = Partial()
    vars(config).update({k: v for k, v in vars(CONFIG).items() if k != missing})
    with pytest.raises(AttributeError) as caught:
        person_model(labels, config)
    assert str(caught.value) == f"'Partial' object has no attribute '{missing}'"


@pytest.mark.parametrize("position", range(len(SETTINGS)))
def test_settings_are_copied_in_order(position: int) -> None:
    class Partial:
        pass

    config = Partial()
    vars(config).update({k: v for k, v in vars(CONFIG).items() if k != SETTINGS[position]})
    model = PersonModel.__new__(PersonModel)
    with pytest.raises(AttributeError):
        model.__init__(Person("person", PersonLabels()), config)
    assert [name for name in vars(model) if name in SETTINGS] == SETTINGS[:position]


# Properties


def test_categories_of_a_model_without_them_raise_the_bare_error() -> None:
    with pytest.raises(ModelNotFittedError) as caught:
        _ = person_model().categories
    assert caught.value.args == ()


def test_categories_are_a_new_list() -> None:
    meta = StandInMeta(categories=("a", "b"))
    model = PersonModel(meta)
    assert model.categories == ["a", "b"]
    assert model.categories is not model.categories


def test_empty_categories_are_an_empty_list() -> None:
    assert PersonModel(StandInMeta(categories=())).categories == []


def test_the_default_locale_is_british_english() -> None:
    assert person_model().default_locale == "en_GB"


def test_locales_of_a_meta_without_them_are_the_default_one() -> None:
    model = person_model()
    assert model.locales == ["en_GB"]
    assert model.locales is not model.locales


def test_locales_of_a_meta_are_a_fresh_list() -> None:
    model = person_model(locales=["de_DE", "fr_FR"])
    model.locales.append("xx")
    assert model.locales == ["de_DE", "fr_FR"]
    assert model.meta.locales == ["de_DE", "fr_FR"]


def test_no_locales_is_not_the_same_as_an_empty_list() -> None:
    assert person_model(locales=[]).locales == []


def test_locales_of_another_kind_become_a_list() -> None:
    assert PersonModel(StandInMeta(locales=("de_DE",))).locales == ["de_DE"]


def test_locales_read_the_default_locale_through_the_instance() -> None:
    class French(PersonModel):
        default_locale = "fr_FR"

    assert French(Person("person", PersonLabels())).locales == ["fr_FR"]


def test_locales_read_the_public_meta_and_the_others_the_private_one() -> None:
    public = StandInMeta(PersonLabels(title="t"), locales=["de_DE"], params={"a": "b"})

    class TwoMetas(PersonModel):
        meta = public

    model = TwoMetas(StandInMeta(locales=["fr_FR"], categories=["c"], params={"p": "q"}))
    assert model.locales == ["de_DE"]
    assert model.labels == PersonLabels()
    assert model.params == {"p": "q"}
    assert model.categories == ["c"]


@pytest.mark.parametrize("stored", [{}, None, 0, ""])
def test_a_falsy_provider_map_is_an_unfitted_country_model(stored: Any) -> None:
    model = person_model()
    model._country_to_provider_map = stored
    with pytest.raises(ModelNotFittedError) as caught:
        _ = model.country_to_provider_map
    assert str(caught.value) == "Country model not fitted."


def test_a_fresh_model_has_no_provider_map() -> None:
    with pytest.raises(ModelNotFittedError) as caught:
        _ = person_model().country_to_provider_map
    assert caught.value.args == ("Country model not fitted.",)


def test_setting_an_empty_provider_map_leaves_the_model_unfitted() -> None:
    model = person_model()
    model.country_to_provider_map = {}
    with pytest.raises(ModelNotFittedError) as caught:
        _ = model.country_to_provider_map
    assert str(caught.value) == "Country model not fitted."


def test_a_provider_map_is_kept_and_given_back_as_the_very_dict() -> None:
    model = person_model()
    providers = {"GB": Faker("en_GB")}
    model.country_to_provider_map = providers
    assert model.country_to_provider_map is providers
    assert model._country_to_provider_map is providers


@pytest.mark.parametrize(
    ("value", "given"),
    [(Mapping(a=1), "Mapping"), (None, "NoneType"), ([("a", 1)], "list"), (Mapping(), "Mapping")],
)
def test_only_a_dict_itself_can_be_set_as_provider_map(value: Any, given: str) -> None:
    model = person_model()
    providers = {"GB": Faker("en_GB")}
    model.country_to_provider_map = providers
    with pytest.raises(TypeError) as caught:
        model.country_to_provider_map = value
    message = f"Argument 'value' has incorrect type (expected dict, got {given})"
    assert str(caught.value) == message
    assert model.country_to_provider_map is providers


@pytest.mark.parametrize(("stored", "given"), [([1], "list"), (1, "int"), ("a", "str")])
def test_a_stored_provider_map_of_another_type_is_refused_on_reading(
    stored: Any, given: str
) -> None:
    model = person_model()
    model._country_to_provider_map = stored
    with pytest.raises(TypeError) as caught:
        _ = model.country_to_provider_map
    assert str(caught.value) == f"Expected dict, got {given}"


def test_labels_are_the_very_object_of_the_meta() -> None:
    model = person_model()
    assert model.labels is model.meta.labels


def test_params_are_the_very_object_of_the_meta() -> None:
    params = {"gender": "g"}
    assert PersonModel(StandInMeta(params=params)).params is params


def test_params_may_be_none() -> None:
    assert PersonModel(StandInMeta(params=None)).params is None


@pytest.mark.parametrize(("params", "given"), [([], "list"), ("a", "str"), (0, "int")])
def test_params_of_another_type_are_refused_on_reading(params: Any, given: str) -> None:
    model = PersonModel(StandInMeta(params=params))
    with pytest.raises(TypeError) as caught:
        _ = model.params
    assert str(caught.value) == f"Expected dict, got {given}"


@pytest.mark.parametrize("name", ["categories", "default_locale", "locales", "labels", "params"])
def test_the_other_properties_are_read_only(name: str) -> None:
    with pytest.raises(AttributeError) as caught:
        setattr(person_model(), name, None)
    assert str(caught.value) == f"property {name!r} of 'PersonModel' object has no setter"


def test_the_error_of_the_provider_map_is_looked_up_when_raised(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    monkeypatch.setattr(person, "ModelNotFittedError", LookupError)
    with pytest.raises(LookupError) as caught:
        _ = person_model().country_to_provider_map
    assert caught.value.args == ("Country model not fitted.",)

// PersonModel: its construction, its properties, its dictionary form, and the table of all its members.

#include <Python.h>

#include "person/model.hpp"
#include "person/names.hpp"
#include "person/typed.hpp"
#include "person/units.hpp"
#include "python/builtins.hpp"
#include "python/call.hpp"
#include "python/class_builder.hpp"
#include "python/iterate.hpp"
#include "python/module.hpp"

namespace person {

namespace {

using namespace python;

// --- construction
// -------------------------------------------------------------------------------------------------------

/// A GenderModel over the column that the label names.
Ref gender_model_of_column(PyObject* self, PyObject* meta, PyObject* field, const Patterns& patterns) {
    Ref type = global(names::GenderModel);
    return call(type, {},
                {{names::meta, item(meta, label(self, field))},
                 {names::regex_female, attr(self, names::config, patterns.female.setting)},
                 {names::regex_male, attr(self, names::config, patterns.male.setting)},
                 {names::regex_non_binary, attr(self, names::config, patterns.non_binary.setting)}});
}

/// `f"{self.name}_gender"`
Ref hidden_gender_name(PyObject* self) {
    Ref name = owned(PyObject_Format(attr(self, names::name), nullptr));
    return owned(PyUnicode_Concat(name, names::gender_suffix));
}

/// `meta.nan_freq or 0.0`
Ref missing_frequency(PyObject* meta) {
    Ref frequency = attr(meta, names::nan_freq);
    return truth(frequency) ? std::move(frequency) : owned(PyFloat_FromDouble(0.0));
}

/// `{gender: 1.0 / len(self.config.genders) for gender in self.config.genders}`
Ref uniform_probabilities(PyObject* self) {
    Ref probabilities = dict();
    for (Ref gender : iterate(attr(self, names::config, names::genders))) {
        const auto count = static_cast<double>(length(attr(self, names::config, names::genders)));
        if (count == 0) raise(PyExc_ZeroDivisionError, "float division by zero");
        set_item(probabilities, gender, owned(PyFloat_FromDouble(1.0 / count)));
    }
    return probabilities;
}

/// No column tells the gender: a plain histogram, spread evenly over the configured genders.
void set_uniform_gender_model(PyObject* self, PyObject* meta) {
    Ref make_meta = global(names::String);
    Ref name = hidden_gender_name(self);
    Ref gender_meta = call(
        make_meta, {name},
        {{names::categories, attr(self, names::config, names::genders)}, {names::nan_freq, missing_frequency(meta)}});
    set_attr(self, names::hidden_model_gender, call(global(names::Histogram), {}, {{names::meta, gender_meta}}));
    Ref probabilities = uniform_probabilities(self);
    set_attr(attr(self, names::hidden_model_gender), names::_probabilities, probabilities);
}

void choose_gender_model(PyObject* self, PyObject* meta) {
    if (truth(label(self, names::gender))) {
        set_attr(self, names::hidden_model_gender, gender_model_of_column(self, meta, names::gender, kGenderPatterns));
    } else if (truth(label(self, names::title))) {
        set_attr(self, names::hidden_model_gender, gender_model_of_column(self, meta, names::title, kTitlePatterns));
    } else {
        set_uniform_gender_model(self, meta);
    }
}

Ref country_model(PyObject* self, PyObject* meta) {
    if (!truth(label(self, names::country))) return none();
    Ref type = global(names::CountryModel);
    return call(type, {item(meta, label(self, names::country))});
}

Ref init_body(Arguments arguments) {
    auto [self, meta, config] = arguments.take<3>();
    call_method(arguments.parent(self), names::dunder_init, {}, {{names::meta, meta}});
    set_attr(self, names::config, config);
    set_attr(self, names::_country_to_provider_map, dict());
    set_attr(self, names::hidden_model_gender, Py_None);
    set_attr(self, names::hidden_model_country, Py_None);
    choose_gender_model(self, meta);
    set_attr(self, names::hidden_model_country, country_model(self, meta));
    for (const Name& setting : {names::mobile_number_format, names::home_number_format, names::work_number_format,
                                names::dict_cache_size, names::pwd_length}) {
        set_attr(self, setting, attr(config, setting));
    }
    return none();
}

// --- properties
// -----------------------------------------------------------------------------------------------------------

Ref categories_body(Arguments arguments) {
    auto [self] = arguments.take<1>();
    if (attr(self, names::_meta, names::categories).get() == Py_None) raise(global(names::ModelNotFittedError));
    return list_of(attr(self, names::_meta, names::categories));
}

Ref default_locale_body(Arguments /*arguments*/) { return Ref::share(names::en_GB); }

Ref locales_body(Arguments arguments) {
    auto [self] = arguments.take<1>();
    if (attr(self, names::meta, names::locales).get() == Py_None) {
        return list({attr(self, names::default_locale).get()});
    }
    return list_of(attr(self, names::meta, names::locales));
}

Ref country_to_provider_map_body(Arguments arguments) {
    auto [self] = arguments.take<1>();
    if (!truth(attr(self, names::_country_to_provider_map))) {
        raise(call(global(names::ModelNotFittedError), {string("Country model not fitted.").get()}));
    }
    return attr(self, names::_country_to_provider_map);
}

Ref set_country_to_provider_map_body(Arguments arguments) {
    auto [self, value] = arguments.take<2>();
    set_attr(self, names::_country_to_provider_map, value);
    return none();
}

Ref labels_body(Arguments arguments) {
    auto [self] = arguments.take<1>();
    return attr(self, names::_meta, names::labels);
}

Ref params_body(Arguments arguments) {
    auto [self] = arguments.take<1>();
    return attr(self, names::_meta, names::params);
}

// --- the dictionary form
// ----------------------------------------------------------------------------------------------------

Ref to_dict_body(Arguments arguments) {
    auto [self] = arguments.take<1>();
    Ref d = call_method(arguments.parent(self), names::to_dict);
    Ref update = attr(d, names::update);
    Ref as_dict = global(names::asdict);
    call(update, {dict({{names::config, call(as_dict, {attr(self, names::config)})}})});
    for (const Name& hidden_model : {names::hidden_model_gender, names::hidden_model_country}) {
        if (!truth(attr(self, hidden_model))) continue;
        update = attr(d, names::update);
        call(update, {dict({{hidden_model, call_method(attr(self, hidden_model), names::to_dict)}})});
    }
    return d;
}

/// `PersonModelConfig(**fields)`
Ref config_from(PyObject* fields) {
    Ref make_config = global(names::PersonModelConfig);
    Ref keywords = dict();
    if (PyDict_Update(keywords, fields) < 0) {
        if (PyErr_ExceptionMatches(PyExc_AttributeError) == 0) throw PythonError{};
        PyErr_Clear();
        raise(PyExc_TypeError, "argument after ** must be a mapping, not %.200U", type_name(fields).get());
    }
    return owned(PyObject_VectorcallDict(make_config, nullptr, 0, keywords));
}

void restore(PyObject* model, PyObject* d, PyObject* key, PyObject* type) {
    if (!contains(d, key)) return;
    Ref restorer = attr(global(type), names::from_dict);
    Ref form = cast_to_dict_of([] { return Ref::share(builtins::object); }, [&] { return item(d, key); });
    set_attr(model, key, call(restorer, {form}));
}

Ref from_dict_body(Arguments arguments) {
    auto [cls, d] = arguments.take<2>();
    Ref meta_dict =
        cast_to_dict_of([] { return Ref::share(builtins::object); }, [d = d] { return item(d, names::meta); });
    Ref meta = call_method(global(names::Person), names::from_dict, {meta_dict});
    Ref fields = cast_to_dict_of([] { return global(names::Any); },
                                 [d = d] { return call_method(d, names::get, {names::config, dict()}); });
    Ref model = call(cls, {}, {{names::meta, meta}, {names::config, config_from(fields)}});
    restore(model, d, names::hidden_model_gender, names::GenderModel);
    restore(model, d, names::hidden_model_country, names::CountryModel);
    return model;
}

// --- the rows
// -----------------------------------------------------------------------------------------------------------------

Ref default_config() { return call(global(names::PersonModelConfig)); }

constexpr Parameter kSelf[] = {{.name = names::self}};
constexpr Parameter kInit[] = {
    {.name = names::self},
    {.name = names::meta, .annotation = "Person"},
    {.name = names::config, .annotation = "PersonModelConfig", .default_ = default_config},
};
constexpr Parameter kSetMap[] = {
    {.name = names::self},
    {.name = names::value, .annotation = "Dict[str, Faker]", .exact = &PyDict_Type},
};
constexpr Parameter kFromDict[] = {
    {.name = names::cls},
    {.name = names::d, .annotation = "Dict[str, object]", .exact = &PyDict_Type},
};

}  // namespace

namespace person_model {

constexpr Function default_locale{
    .qualname = "PersonModel.default_locale",
    .line = 192,
    .kind = Kind::property,
    .parameters = kSelf,
    .returns = "str",
    .doc = "The locale of rows that nothing gives a country or a locale.",
    .body = default_locale_body,
};
constexpr Function country_to_provider_map{
    .qualname = "PersonModel.country_to_provider_map",
    .line = 204,
    .kind = Kind::property,
    .parameters = kSelf,
    .returns = "Dict[str, Faker]",
    .doc = R"(The Faker instance of each country or locale.

        Raises:
            ModelNotFittedError: while there is none.
)",
    .result = {&PyDict_Type, "dict"},
    .body = country_to_provider_map_body,
};

constexpr Function labels{
    .qualname = "PersonModel.labels",
    .line = 214,
    .kind = Kind::property,
    .parameters = kSelf,
    .returns = "PersonLabels",
    .doc = "The column of each person attribute.",
    .body = labels_body,
};

}  // namespace person_model

namespace {

constexpr Function init{
    .qualname = "PersonModel.__init__",
    .line = 141,
    .parameters = kInit,
    .locals = {"gender_meta", "probabilities", "gender"},
    .free_variable = kClassCell,
    .body = init_body,
};
constexpr Function categories{
    .qualname = "PersonModel.categories",
    .line = 185,
    .kind = Kind::property,
    .parameters = kSelf,
    .returns = "List[str]",
    .doc = R"(The categories of the meta, as a new list.

        Raises:
            ModelNotFittedError: if the meta has none yet.
)",
    .body = categories_body,
};
constexpr Function locales{
    .qualname = "PersonModel.locales",
    .line = 196,
    .kind = Kind::property,
    .parameters = kSelf,
    .returns = "List[str]",
    .doc = "The locales of the meta, or the default locale where it has none, as a new list.",
    .body = locales_body,
};
constexpr Function set_country_to_provider_map{
    .qualname = "PersonModel.country_to_provider_map",
    .line = 210,
    .kind = Kind::setter,
    .parameters = kSetMap,
    .body = set_country_to_provider_map_body,
};
constexpr Function params{
    .qualname = "PersonModel.params",
    .line = 218,
    .kind = Kind::property,
    .parameters = kSelf,
    .returns = "Dict[str, str]",
    .doc = "The columns that the model produces, by attribute, as the meta reports them.",
    .result = {&PyDict_Type, "dict"},
    .body = params_body,
};
constexpr Function to_dict{
    .qualname = "PersonModel.to_dict",
    .line = 711,
    .parameters = kSelf,
    .returns = "Dict[str, object]",
    .doc = R"(Describe the model as a plain dictionary.

        Returns:
            The base class's dictionary with the configuration and the hidden models. The providers of the countries and
            the state of the generators are no part of it.
)",
    .locals = {"d"},
    .free_variable = kClassCell,
    .result = {&PyDict_Type, "dict"},
    .body = to_dict_body,
};
constexpr Function from_dict{
    .qualname = "PersonModel.from_dict",
    .line = 721,
    .kind = Kind::class_method,
    .parameters = kFromDict,
    .returns = "'PersonModel'",
    .doc = R"(Rebuild a model from its dictionary form.

        Args:
            d: The dictionary form; only its "meta" is required.

        Returns:
            A new model, whose country_to_provider_map has yet to be filled.

        Raises:
            KeyError: if "meta" is missing.
            TypeError: if "config" is no mapping of the configuration's fields.
)",
    .locals = {"meta_dict", "meta", "config", "model"},
    .body = from_dict_body,
};

constexpr Entry kMembers[] = {
    entry<init>,
    entry<categories>,
    entry<person_model::default_locale>,
    entry<locales>,
    entry<person_model::country_to_provider_map>,
    entry<set_country_to_provider_map>,
    entry<person_model::labels>,
    entry<params>,
    entry<person_model::fit>,
    entry<person_model::sample>,
    entry<person_model::sample_conditional>,
    entry<person_model::generate_values_from_collections>,
    entry<person_model::generate_first_names>,
    entry<person_model::generate_random_first_name>,
    entry<person_model::generate_last_names>,
    entry<person_model::generate_emails>,
    entry<person_model::generate_usernames>,
    entry<person_model::generate_passwords>,
    entry<person_model::generate_password>,
    entry<person_model::generate_phone_numbers>,
    entry<person_model::generate_from_collections>,
    entry<person_model::map_to_gender_keys>,
    entry<person_model::check_email>,
    entry<person_model::check_associations>,
    entry<to_dict>,
    entry<from_dict>,
};

}  // namespace

const Class kPersonModel{
    .name = "PersonModel",
    .line = 109,
    .doc = R"(A Model of Person which captures gender with a hidden model.

    The model creates these attributes:
        gender (orig.)
        title (orig.)
        first_name
        last_name
        email
        username
        password
        home/work/mobile_number

    Attributes marked with 'orig.' have values that correspond to the original dataset. The others are generated from
    the hidden attribute `_gender`, which has the values F, M, NB and A.

    There are three configuration cases for the hidden model:
        1. A `gender` attribute is present. The hidden model for `_gender` is based directly on it, and its values should
           correspond to F, M, U or a missing value. There are no ambiguous values in the collection A.
        2. No `gender` but a `title` attribute is present. The hidden model is based on the titles. Since this is not a
           direct correspondence, some values may fall in the ambiguous collection A.
        3. Neither is present. The hidden model cannot be fitted to the data, and `_gender` is taken as evenly
           distributed amongst the genders specified in the configuration.
    )",
    .attributes = {},
    .members = kMembers,
};

}  // namespace person

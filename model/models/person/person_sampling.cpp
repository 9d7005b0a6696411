// PersonModel: fitting, sampling, gender keys and the category values behind them, association checks.

#include <Python.h>

#include <optional>
#include <utility>

#include "bulk/columns.hpp"
#include "person/model.hpp"
#include "person/names.hpp"
#include "person/plain.hpp"
#include "person/state.hpp"
#include "person/typed.hpp"
#include "person/units.hpp"
#include "python/builtins.hpp"
#include "python/call.hpp"
#include "python/context.hpp"
#include "python/iterate.hpp"
#include "python/module.hpp"

namespace person {

namespace {

using namespace python;
using bulk::Given;

// --- fitting
// --------------------------------------------------------------------------------------------------------------

void fit_hidden_models(PyObject* self, PyObject* df) {
    Ref gender_model = attr(self, names::hidden_model_gender);
    if (is_instance(gender_model, global(names::GenderModel))) {
        call_method(attr(self, names::hidden_model_gender), names::fit, {df});
    }
    Ref country_model = attr(self, names::hidden_model_country);
    if (is_instance(country_model, global(names::CountryModel))) {
        call_method(attr(self, names::hidden_model_country), names::fit, {df});
        Ref providers = attr(self, names::hidden_model_country, names::country_to_provider_map);
        set_attr(self, names::country_to_provider_map, providers);
    }
}

Ref fit_body(Arguments arguments) {
    auto [self, df] = arguments.take<2>();
    call_method(arguments.parent(self), names::fit, {}, {{names::df, df}});
    Ref manager = call_method(attr(self, names::_meta), names::unfold, {}, {{names::df, df}});
    with(manager, arguments.function(), [self = self, df = df] { fit_hidden_models(self, df); });
    return Ref::share(self);
}

// --- the sampling entry
// -----------------------------------------------------------------------------------------------------

/// What the caller of `sample` gave, and the row count that follows from it.
struct Request {
    PyObject* produce_nans;
    PyObject* conditions;
    PyObject* associations;
    Ref num_rows;
};

/// `field`'s label, where the conditions hold that column.
bool is_conditioned(PyObject* self, PyObject* field, PyObject* conditions) {
    if (conditions == Py_None) return false;
    Ref column = label(self, field);
    return contains(attr(conditions, names::columns), column);
}

Ref sample_hidden(PyObject* model, const Request& request) {
    return call_method(model, names::sample, {},
                       {{names::n, request.num_rows},
                        {names::produce_nans, request.produce_nans},
                        {names::conditions, request.conditions},
                        {names::associations, request.associations}});
}

/// The same as positions, where the host offers that. Given conditions may be the result.
std::optional<Given> draw_hidden(PyObject* model, const Request& request) {
    if (request.conditions != Py_None) return std::nullopt;
    return Given::draw(model, request.num_rows, request.produce_nans);
}

Ref given_genders(PyObject* self, PyObject* conditions) {
    Ref map = attr(self, names::map_to_gender_keys);
    Ref column = item(conditions, label(self, names::gender));
    Ref values = call_method(column, names::astype, {str_type()});
    Ref mapping = pattern_mapping(self, {kGenderPatterns.male, kGenderPatterns.female, kGenderPatterns.non_binary});
    return call(map, {values}, {{names::mapping, mapping}});
}

Given settle_genders(PyObject* self, const Request& request) {
    if (is_conditioned(self, names::gender, request.conditions))
        return Given::series(given_genders(self, request.conditions));
    if (Ref model = attr(self, names::hidden_model_gender); model.get() != Py_None) {
        if (auto drawn = draw_hidden(model, request)) return std::move(*drawn);
        Ref sampled = sample_hidden(attr(self, names::hidden_model_gender), request);
        return Given::series(item(sampled, attr(self, names::hidden_model_gender, names::meta, names::name)));
    }
    Ref make_series = attr(global(names::pd), names::Series);
    Ref choose = attr(self, names::_rng, names::choice);
    Ref keys = list({attr(global(names::GenderModel), names::key_male).get(),
                     attr(global(names::GenderModel), names::key_female).get()});
    return Given::series(call(make_series, {call(choose, {keys}, {{names::size, request.num_rows}})}));
}

Given settle_countries(PyObject* self, const Request& request) {
    if (is_conditioned(self, names::country, request.conditions)) {
        return Given::series(item(request.conditions, label(self, names::country)));
    }
    if (Ref model = attr(self, names::hidden_model_country); model.get() != Py_None) {
        if (auto drawn = draw_hidden(model, request)) return std::move(*drawn);
        Ref sampled = sample_hidden(attr(self, names::hidden_model_country), request);
        return Given::series(item(sampled, label(self, names::country)));
    }
    return Given::series(none());
}

/// `[self.default_locale for _ in range(num_rows)]`
Ref repeated_default_locale(PyObject* self, PyObject* num_rows) {
    Ref repeated = list();
    for (Ref index : iterate(call(builtins::range, {num_rows}))) {
        expect_exact(index, &PyLong_Type, "int");
        append(repeated, attr(self, names::default_locale));
    }
    return repeated;
}

/// No country column: the rows get locales.
Ref settle_locales(PyObject* self, const Request& request) {
    const bool has_locales = attr(self, names::locales).get() != Py_None;
    Ref providers = providers_of(
        [&] { return has_locales ? attr(self, names::locales) : list({attr(self, names::default_locale).get()}); });
    set_attr(self, names::country_to_provider_map, providers);

    Ref make_series = attr(global(names::pd), names::Series);
    if (!has_locales) {
        Ref locales = repeated_default_locale(self, request.num_rows);
        return call(make_series, {locales}, {{names::dtype, str_type()}});
    }
    Ref choose = attr(self, names::_rng, names::choice);
    Ref drawn = call(choose, {list_of(attr(self, names::locales))}, {{names::size, request.num_rows}});
    return call(make_series, {drawn}, {{names::dtype, str_type()}});
}

/// What the host has names of the module mean while this model samples, `random` and `np` for example; empty where it
/// has no say. Looked for in the instance alone, without a call of anybody's code.
Ref own_sources(PyObject* self) {
    Ref own = Ref::steal(PyObject_GenericGetDict(self, nullptr));
    if (!own) {
        if (PyErr_ExceptionMatches(PyExc_AttributeError) == 0) throw PythonError{};
        PyErr_Clear();
        return {};
    }
    PyObject* sources = find(own, names::_sources);
    return sources && PyDict_CheckExact(sources) ? Ref::share(sources) : Ref();
}

Ref sample_body(Arguments arguments) {
    auto [self, n, produce_nans, conditions, associations] = arguments.take<5>();
    // A model without sources of its own draws from the process's, also amid a sample of one that has them.
    const Ref sources = own_sources(self);
    const Overlay overlay(sources);
    if (conditions == Py_None && n == Py_None) raise_value_error(messages::no_number_of_rows);
    const auto count = [n = n, conditions = conditions] {
        return conditions == Py_None ? Ref::share(n) : integer(length(conditions));
    };
    Request request{produce_nans, conditions, associations, cast(int_type(), count)};
    expect_exact(request.num_rows, &PyLong_Type, "int");

    const Given genders = settle_genders(self, request);
    const Given countries = truth(label(self, names::country)) ? settle_countries(self, request)
                                                               : Given::series(settle_locales(self, request));
    Ref df = bulk::sampled_frame(self, request.num_rows, genders, countries, produce_nans);
    if (!df) {
        Ref gender_conditions = genders.series();
        Ref country_conditions = countries.series();
        df = call_method(self, names::_sample_conditional, {},
                         {{names::num_rows, request.num_rows},
                          {names::gender_conditions, gender_conditions},
                          {names::country_conditions, country_conditions},
                          {names::produce_nans, produce_nans}});
    }
    return call_method(attr(self, names::_meta), names::revert_df_from_children, {df});
}

// --- gender keys and category values
// ------------------------------------------------------------------------------------------

Ref generate_values_from_collections_body(Arguments arguments) {
    auto [self, conditions, collections] = arguments.take<3>();
    if (Ref made = bulk::collection_values(self, conditions, collections)) return made;
    return plain_values(self, conditions, collections);
}

Ref generate_from_collections_body(Arguments arguments) {
    auto [key, collections] = arguments.take<2>();
    Ref text = owned(PyObject_Str(key));
    Ref categories = call_method(collections, names::get, {text, list()});
    if (length(categories) == 0) return attr(global(names::pd), names::NA);
    return call(attr(global(names::np), names::random, names::choice), {categories});
}

/// Appends the key of the first collection that holds the value, if one does.
void append_key_of(PyObject* value, PyObject* collections, const Ref& keys) {
    for (Ref entry : iterate(call_method(collections, names::items))) {
        auto [key, collection] = unpack_pair(entry);
        if (!contains(collection, value)) continue;
        append(keys, key);
        return;
    }
}

Ref map_to_gender_keys_body(Arguments arguments) {
    auto [self, conditions, mapping] = arguments.take<3>();
    Ref sort = global(names::collections_from_mapping);
    Ref collections = call(sort, {conditions, mapping, attr(global(names::GenderModel), names::key_ambiguous)});
    Ref return_values = bulk::keys_of_values(conditions, collections);
    if (!return_values) {
        return_values = list();
        for (Ref value : iterate(conditions)) append_key_of(value, collections, return_values);
    }
    return call(attr(global(names::pd), names::Series), {return_values});
}

// --- association checks
// ---------------------------------------------------------------------------------------------------------

bool differs_from_label(PyObject* self, PyObject* column, PyObject* field) {
    return truth(owned(PyObject_RichCompare(column, label(self, field), Py_NE)));
}

[[noreturn]] void refuse_association(PyObject* self, PyObject* column) {
    Ref name = owned(PyObject_Format(column, nullptr));
    const auto class_name = [self] {
        return owned(PyObject_Format(attr(self, names::dunder_class, names::dunder_name), nullptr));
    };
    Ref first = class_name();
    Ref second = class_name();
    raise(builtins::ValueError,
          "Association attributed to column: %U which is generated as new\n"
          "                            by model: %U.\n"
          "                            %U does not support associations with this label\n"
          "                            as it generates completely new data. Consider removing the association\n"
          "                            or changing the model.",
          name.get(), first.get(), second.get());
}

Ref check_associations_body(Arguments arguments) {
    auto [self, associations] = arguments.take<2>();
    for (Ref association : iterate(associations)) {
        for (Ref column : iterate(attr(association, names::associations))) {
            if (contains(call_method(attr(self, names::params), names::values), column) &&
                differs_from_label(self, column, names::country) && differs_from_label(self, column, names::gender)) {
                refuse_association(self, column);
            }
        }
    }
    return none();
}

// --- the rows
// -------------------------------------------------------------------------------------------------------------------

constexpr Parameter kFit[] = {{.name = names::self}, {.name = names::df, .annotation = "pd.DataFrame"}};
constexpr Parameter kSample[] = {
    {.name = names::self},
    {.name = names::n, .annotation = "Optional[int]", .exact = &PyLong_Type, .optional = true, .default_ = none},
    {.name = names::produce_nans, .annotation = "bool", .default_ = [] { return boolean(true); }},
    {.name = names::conditions, .annotation = "Optional[pd.DataFrame]", .default_ = none},
    {.name = names::associations,
     .annotation = "Optional[List[Association]]",
     .exact = &PyList_Type,
     .optional = true,
     .default_ = none},
};
constexpr Parameter kValuesFromCollections[] = {
    {.name = names::self},
    {.name = names::conditions, .annotation = "pd.Series"},
    {.name = names::collections, .annotation = "Dict[str, List[str]]", .exact = &PyDict_Type},
};
constexpr Parameter kFromCollections[] = {
    {.name = names::key, .annotation = "Union[str, np.str_]"},
    {.name = names::collections, .annotation = "Dict[str, List[str]]", .exact = &PyDict_Type},
};
constexpr Parameter kMapToGenderKeys[] = {
    {.name = names::self},
    {.name = names::conditions, .annotation = "pd.Series"},
    {.name = names::mapping, .annotation = "Dict[str, str]", .exact = &PyDict_Type},
};
constexpr Parameter kCheckAssociations[] = {
    {.name = names::self},
    {.name = names::associations, .annotation = "List[Association]", .exact = &PyList_Type},
};

}  // namespace

Ref plain_values(PyObject* self, PyObject* conditions, PyObject* collections) {
    Ref apply = attr(call_method(conditions, names::astype, {str_type()}), names::apply);
    Ref element = attr(self, names::generate_from_collections);
    return call(apply, {element}, {{names::collections, collections}});
}

namespace person_model {

constexpr Function fit{
    .qualname = "PersonModel.fit",
    .line = 222,
    .parameters = kFit,
    .returns = "'PersonModel'",
    .doc = R"(Fit the model and its hidden models on a table.

        Args:
            df: A data frame that holds the columns that the labels name.

        Returns:
            The model itself.
)",
    .free_variable = kClassCell,
    .body = fit_body,
};

constexpr Function sample{
    .qualname = "PersonModel.sample",
    .line = 234,
    .parameters = kSample,
    .returns = "pd.DataFrame",
    .doc = R"(Sample new rows.

        Args:
            n: Number of rows; not needed, and ignored, where conditions are given.
            produce_nans: Whether values may be missing, as often as they were when the model was fitted.
            conditions: A data frame with one row for each row to sample, whose gender and country columns are kept to.
            associations: Association rules, handed on to the hidden models.

        Returns:
            A data frame of n rows with the columns that the labels name, in the order of the fitted table.

        Raises:
            ValueError: if neither n nor conditions is given.
            TypeError: if n is no int, or associations no list.
            KeyError: if a row's country has no provider.
)",
    .locals = {"num_rows", "gender_conditions", "country_conditions", "df", "_"},
    .body = sample_body,
};

constexpr Function generate_values_from_collections{
    .qualname = "PersonModel.generate_values_from_collections",
    .line = 447,
    .parameters = kValuesFromCollections,
    .returns = "pd.Series",
    .doc = R"(Draw a category value for each gender key.

        Args:
            conditions: A series of gender keys.
            collections: The category values of each gender key.

        Returns:
            A series with the index of the conditions; missing where the key has no values.
)",
    .body = generate_values_from_collections_body,
};

constexpr Function generate_from_collections{
    .qualname = "PersonModel.generate_from_collections",
    .line = 626,
    .kind = Kind::static_method,
    .parameters = kFromCollections,
    .doc = R"(Draw one category value of a gender key, each with equal chance.

        Args:
            key: A gender key.
            collections: The category values of each gender key.

        Returns:
            One of the key's values, or pd.NA if it has none.
)",
    .locals = {"categories"},
    .body = generate_from_collections_body,
};

constexpr Function map_to_gender_keys{
    .qualname = "PersonModel.map_to_gender_keys",
    .line = 639,
    .parameters = kMapToGenderKeys,
    .returns = "pd.Series",
    .doc = R"(Find the gender key of each category value.

        Args:
            conditions: A series of category values.
            mapping: The pattern of each gender key.

        Returns:
            A series of gender keys with a new index from 0. Values that belong to no key are left out.
)",
    .locals = {"collections", "return_values", "value", "key", "collection"},
    .body = map_to_gender_keys_body,
};

constexpr Function check_associations{
    .qualname = "PersonModel.check_associations",
    .line = 695,
    .parameters = kCheckAssociations,
    .returns = "None",
    .doc = R"(Refuse association rules on columns that the model makes from scratch.

        Args:
            associations: The rules; those on the country or the gender column pass.

        Raises:
            ValueError: if a rule names another column of the model.
)",
    .locals = {"association", "assoc_col"},
    .body = check_associations_body,
};

}  // namespace person_model

}  // namespace person

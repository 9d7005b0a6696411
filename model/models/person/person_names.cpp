// PersonModel: first and last names.

#include <Python.h>

#include "bulk/columns.hpp"
#include "person/model.hpp"
#include "person/names.hpp"
#include "person/state.hpp"
#include "person/units.hpp"
#include "python/builtins.hpp"
#include "python/call.hpp"
#include "python/generator.hpp"
#include "python/iterate.hpp"
#include "python/module.hpp"

namespace person {

namespace {

using namespace python;

// --- first names
// ----------------------------------------------------------------------------------------------------------

/// The generator expression over the pairs; its free variable is the model.
Ref first_name_of_pair_body(Arguments arguments) {
    auto [pair] = arguments.take<1>();
    auto [gender, country] = unpack_pair(pair);
    Ref self = arguments.free_variable();
    return generated([&, gender = gender.get(), country = country.get()] {
        return call_method(self, names::generate_random_first_name, {gender, country});
    });
}

constexpr Parameter kPair[] = {{.name = names::pair}};
constexpr Function first_name_of_pair{
    .qualname = "PersonModel.generate_first_names.<locals>.<genexpr>",
    .line = 465,
    .parameters = kPair,
    .free_variable = "self",
    .body = first_name_of_pair_body,
};

Ref generate_first_names_body(Arguments arguments) {
    auto [self, gender_conditions, country_conditions] = arguments.take<3>();
    Ref make_series = attr(global(names::pd), names::Series);
    if (Ref made = bulk::first_names(self, gender_conditions, country_conditions)) return made;
    Ref pairs = call(builtins::zip, {gender_conditions, country_conditions});
    Ref name_of_pair = make_function(entry<first_name_of_pair>, owned(PyCell_New(self)));
    return call(make_series, {lazy_map(name_of_pair, pairs)});
}

bool is_key(PyObject* gender, PyObject* key) { return equal(gender, attr(global(names::GenderModel), key)); }

Ref generate_random_first_name_body(Arguments arguments) {
    auto [self, gender, country] = arguments.take<3>();
    Ref faker = item(attr(self, names::country_to_provider_map), country);
    if (truth(call_method(global(names::pd), names::isna, {gender})) || is_key(gender, names::key_non_binary) ||
        is_key(gender, names::key_ambiguous)) {
        return call_method(faker, names::first_name);
    }
    if (is_key(gender, names::key_male)) return call_method(faker, names::first_name_male);
    if (is_key(gender, names::key_female)) return call_method(faker, names::first_name_female);
    raise_value_error(messages::unknown_gender);
}

// --- last names
// -----------------------------------------------------------------------------------------------------------

Ref each_last_name(PyObject* self, PyObject* make_series, PyObject* country_conditions) {
    Ref drawn = list();
    for (Ref country : iterate(country_conditions)) append(drawn, call_provider(self, country, names::last_name));
    return call(make_series, {}, {{names::data, drawn}});
}

Ref generate_last_names_body(Arguments arguments) {
    auto [self, firstnames, country_conditions] = arguments.take<3>();
    Ref make_series = attr(global(names::pd), names::Series);
    Ref lastnames = bulk::last_names(self, country_conditions);
    if (!lastnames) lastnames = each_last_name(self, make_series, country_conditions);

    Ref missing = attr(global(names::pd), names::NA);
    Ref loc = attr(lastnames, names::loc);
    set_item(loc, call_method(firstnames, names::isna), missing);
    return lastnames;
}

// --- the rows
// -------------------------------------------------------------------------------------------------------------

constexpr Parameter kFirstNames[] = {
    {.name = names::self},
    {.name = names::gender_conditions, .annotation = "pd.Series"},
    {.name = names::country_conditions, .annotation = "pd.Series"},
};
constexpr Parameter kRandomFirstName[] = {
    {.name = names::self},
    {.name = names::gender, .annotation = "Optional[Union[str, NAType]]"},
    {.name = names::country, .annotation = "str", .exact = &PyUnicode_Type},
};
constexpr Parameter kLastNames[] = {
    {.name = names::self},
    {.name = names::firstnames, .annotation = "pd.Series"},
    {.name = names::country_conditions, .annotation = "pd.Series"},
};

}  // namespace

namespace person_model {

constexpr Function generate_first_names{
    .qualname = "PersonModel.generate_first_names",
    .line = 465,
    .parameters = kFirstNames,
    .returns = "pd.Series",
    .doc = R"(Generate first names based on the genders specified in the conditions series.

        Args:
            gender_conditions: A series of genders to generate first names from.
            country_conditions: A series of countries to generate first names from.

        Returns:
            A series of generated first names.
)",
    .body = generate_first_names_body,
};

constexpr Function generate_random_first_name{
    .qualname = "PersonModel.generate_random_first_name",
    .line = 483,
    .parameters = kRandomFirstName,
    .returns = "Optional[str]",
    .doc = R"(Generate a random first name based on gender and country.

        Args:
            gender: String representing the gender of the person. Must be one as defined by
            GenderModel.
            country: String representing the country of the person. Defaults to None.

        Returns:
            A randomly generated first name or pd.NA.
)",
    .locals = {"faker"},
    .result = {&PyUnicode_Type, "unicode"},
    .body = generate_random_first_name_body,
};

constexpr Function generate_last_names{
    .qualname = "PersonModel.generate_last_names",
    .line = 510,
    .parameters = kLastNames,
    .returns = "pd.Series",
    .doc = R"(Genderate last names. If country_conditions is provided, the last names are generated
        based on the countries specified in the series.

        Args:
            firstnames: A series of firstnames, used to determine the number of lastnames to
                generate and where to place NaNs.
            country_conditions: A series of countries to generate lastnames for.

        Returns:
            A series of generated lastnames.
)",
    .locals = {"lastnames", "country"},
    .body = generate_last_names_body,
};

}  // namespace person_model

}  // namespace person

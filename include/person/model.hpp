#pragma once

// What several units ask of a model, and of the host about it.

#include <Python.h>

#include <initializer_list>

#include "person/names.hpp"
#include "python/call.hpp"
#include "python/module.hpp"
#include "python/name.hpp"
#include "python/ref.hpp"

namespace person {

/// A gender key, as the name of the class attribute that holds it, and the setting that holds its pattern.
struct KeyPattern {
    const python::Name& key;
    const python::Name& setting;
};

/// The patterns of one column.
struct Patterns {
    KeyPattern female;
    KeyPattern male;
    KeyPattern non_binary;
};

inline constexpr Patterns kGenderPatterns{{names::key_female, names::gender_female_regex},
                                          {names::key_male, names::gender_male_regex},
                                          {names::key_non_binary, names::gender_non_binary_regex}};
inline constexpr Patterns kTitlePatterns{{names::key_female, names::title_female_regex},
                                         {names::key_male, names::title_male_regex},
                                         {names::key_non_binary, names::title_non_binary_regex}};

/// `{GenderModel.key: self.config.setting, ...}` in the given order.
python::Ref pattern_mapping(PyObject* self, std::initializer_list<KeyPattern> patterns);

/// `collections_from_mapping(seq=categories, ...)`
python::Ref sorted_categories(PyObject* categories, PyObject* mapping);

/// `self.labels.field`
inline python::Ref label(PyObject* self, PyObject* field) { return python::attr(self, names::labels, field); }

/// `self.country_to_provider_map[country].method()`
python::Ref call_provider(PyObject* self, PyObject* country, PyObject* method);

/// `get_country_to_provder_map(countries, Provider.PERSON)`, with the countries made after the function was looked up.
template <class Countries>
python::Ref providers_of(Countries countries) {
    python::Ref find_providers = python::global(names::get_country_to_provder_map);
    return python::call(find_providers, {countries(), python::attr(python::global(names::Provider), names::PERSON)});
}

}  // namespace person

#pragma once

// The rows that one unit defines and another puts into its table.

#include "python/class_builder.hpp"
#include "python/function.hpp"

namespace person {

extern const python::Class kGenderModel;
extern const python::Class kPersonModel;
extern const python::Class kCountryModel;

namespace person_model {

extern const python::Function fit, sample, sample_conditional, generate_values_from_collections,
    generate_from_collections, map_to_gender_keys, check_associations;

extern const python::Function country_to_provider_map, default_locale, labels;

extern const python::Function generate_first_names, generate_random_first_name, generate_last_names, generate_emails,
    generate_usernames, generate_passwords, generate_password, generate_phone_numbers, check_email;

}  // namespace person_model

}  // namespace person

#pragma once

// Every identifier and text that the module's code uses, once. The strings are made when the module is executed.

#include "person/email_pattern.hpp"
#include "python/name.hpp"

// clang-format off
#define PERSON_IDENTIFIERS(X)                                                                                          \
    X(CountryModel) X(Dict) X(DiscreteModel) X(GenderModel) X(Histogram)                       \
    X(MetaNotExtractedError) X(ModelNotFittedError) X(NA) X(PERSON) X(Person) X(PersonModelConfig) X(RangeIndex)      \
    X(Provider) X(Series) X(DataFrame) X(String) X(Any)                                                                \
    X(_country_to_provider_map) X(_meta) X(_probabilities) X(_rng) X(_sample_conditional) X(_sources)                  \
                                \
    X(ambiguous_key) X(apply) X(args) X(asdict) X(associations) X(astype) X(cast) X(cat) X(categories)                 \
    X(check_email) X(choice) X(cls) X(collections) X(collections_from_mapping) X(columns) X(conditions) X(config)      \
    X(copy) X(countries) X(country) X(country_conditions) X(country_condtions) X(country_to_provider_map)              \
    X(d) X(data) X(default_locale) X(df) X(dict_cache_size) X(domain_name) X(dtype) X(email) X(equals) X(extract)                \
    X(first_name) X(first_name_female) X(first_name_male) X(firstname) X(firstnames) X(fit) X(from_dict) X(fullname)   \
    X(gender) X(gender_conditions) X(gender_female_regex) X(gender_male_regex) X(gender_non_binary_regex) X(genders)   \
    X(generate_emails) X(generate_first_names) X(generate_from_collections) X(generate_last_names)                     \
    X(generate_password) X(generate_passwords) X(generate_phone_numbers) X(generate_random_first_name)                 \
    X(generate_usernames) X(generate_values_from_collections) X(get) X(get_country_to_provder_map)                     \
    X(get_supported_country_codes) X(get_supported_country_names) X(hidden_model_country) X(hidden_model_gender)       \
    X(home_number) X(home_number_format) X(index) X(isin) X(isna) X(items) X(key) X(key_ambiguous)             \
    X(key_female) X(key_male) X(key_non_binary) X(keys) X(labels) X(last_name) X(lastname) X(lastnames) X(loc)         \
    X(locales) X(lower) X(map) X(map_to_gender_keys) X(mapping) X(match) X(meta) X(mobile_number)                      \
    X(mobile_number_format) X(n) X(name) X(nan) X(nan_freq) X(notna) X(np) X(num_rows) X(number_format) X(nunique)     \
    X(others) X(pair) X(params) X(positions) X(password) X(pd) X(produce_nans) X(pwd_length) X(pwd_length_max) X(pwd_length_min)    \
    X(randint) X(random) X(re) X(regex_female) X(regex_male) X(regex_non_binary) X(replace)                            \
    X(revert_df_from_children) X(s) X(sample) X(self) X(sep) X(seq) X(series) X(size) X(str) X(str_) X(string) X(sub) X(title)           \
    X(title_female_regex) X(title_male_regex) X(title_non_binary_regex) X(to_dict) X(tolist) X(unfold) X(unique)       \
    X(update) X(username) X(valid_locales) X(value) X(value_counts) X(values) X(work_number) X(work_number_format)     \
    X(x) X(ascii_letters) X(digits)

#define PERSON_TEXTS(X)                                                                                                \
    X(dunder_class, "__class__") X(dunder_dict, "__dict__")    \
    X(dunder_init, "__init__") X(dunder_name, "__name__")                                                              \
    X(female, "F") X(male, "M") X(non_binary, "NB") X(ambiguous, "A")                                                  \
    X(female_titles, "^(mrs|ms).?$") X(male_titles, "^(mr).?$") X(non_binary_titles, "^(ind|mx|per).?$")               \
    X(probabilities, "probabilities") X(gender_suffix, "_gender") X(en_GB, "en_GB") X(en, "en")                        \
    X(empty, "") X(blank, " ") X(dot, ".") X(dash, "-") X(underscore, "_") X(at, "@")                                  \
    X(default_number_format, "07xxxxxxxx") X(email_pattern, PERSON_EMAIL_PATTERN)
// clang-format on

namespace person::names {

#define PERSON_DECLARE(identifier) inline constinit python::Name identifier{#identifier};
#define PERSON_DECLARE_TEXT(identifier, text) inline constinit python::Name identifier{text};
PERSON_IDENTIFIERS(PERSON_DECLARE)
PERSON_TEXTS(PERSON_DECLARE_TEXT)
#undef PERSON_DECLARE
#undef PERSON_DECLARE_TEXT

}  // namespace person::names

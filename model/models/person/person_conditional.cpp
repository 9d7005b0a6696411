// PersonModel._sample_conditional: the frame of all columns for given gender keys and countries.

#include <Python.h>

#include "bulk/columns.hpp"
#include "person/model.hpp"
#include "person/names.hpp"
#include "person/plain.hpp"
#include "person/state.hpp"
#include "person/typed.hpp"
#include "person/units.hpp"
#include "python/call.hpp"
#include "python/iterate.hpp"
#include "python/module.hpp"

namespace person {

namespace {

using namespace python;

bool is_set(PyObject* self, PyObject* field) { return label(self, field).get() != Py_None; }

// --- whole columns of the frame
// -------------------------------------------------------------------------------------------

/// `(slice(None), column)`
Ref all_rows_of(PyObject* column) {
    Ref all_rows = owned(PySlice_New(nullptr, nullptr, nullptr));
    return tuple({all_rows, column});
}

/// `df.loc[:, self.labels.field] = values`
void set_column(PyObject* df, PyObject* self, PyObject* field, PyObject* values) {
    Ref loc = attr(df, names::loc);
    set_item(loc, all_rows_of(label(self, field)), values);
}

/// `df.loc[:, self.labels.field]`
Ref column(PyObject* df, PyObject* self, PyObject* field) {
    Ref loc = attr(df, names::loc);
    return item(loc, all_rows_of(label(self, field)));
}

// --- gender and title
// -------------------------------------------------------------------------------------------------------

/// Category values of the column that the label names, drawn for the gender keys.
Ref category_values(PyObject* self, PyObject* field, PyObject* mapping, PyObject* gender_conditions) {
    Ref meta = attr(self, names::meta);
    Ref categories = attr(item(meta, label(self, field)), names::categories);
    Ref generate = attr(self, names::generate_values_from_collections);
    Ref collections = sorted_categories(categories, mapping);
    return call(generate, {}, {{names::conditions, gender_conditions}, {names::collections, collections}});
}

void make_gender(PyObject* df, PyObject* self, PyObject* gender_conditions) {
    Ref mapping = pattern_mapping(self, {kGenderPatterns.female, kGenderPatterns.male, kGenderPatterns.non_binary});
    set_column(df, self, names::gender, category_values(self, names::gender, mapping, gender_conditions));
}

/// `lambda x: random.choice(list(mapping.keys())) if x == GenderModel.key_ambiguous else x`
Ref settle_ambiguous_body(Arguments arguments) {
    auto [x] = arguments.take<1>();
    if (!equal(x, attr(global(names::GenderModel), names::key_ambiguous))) return Ref::share(x);
    Ref choice = attr(global(names::random), names::choice);
    return call(choice, {list_of(call_method(arguments.free_variable(), names::keys))});
}

constexpr Parameter kElement[] = {{.name = names::x}};
constexpr Function settle_ambiguous{
    .qualname = "PersonModel._sample_conditional.<locals>.<lambda>",
    .line = 326,
    .parameters = kElement,
    .free_variable = "mapping",
    .body = settle_ambiguous_body,
};

void make_title(PyObject* df, PyObject* self, PyObject* gender_conditions) {
    Ref mapping = pattern_mapping(self, {kTitlePatterns.female, kTitlePatterns.male, kTitlePatterns.non_binary});
    set_column(df, self, names::title, category_values(self, names::title, mapping, gender_conditions));

    Ref texts = call_method(column(df, self, names::title), names::astype, {str_type()});
    Ref settle = make_function(entry<settle_ambiguous>, owned(PyCell_New(mapping)));
    set_column(df, self, names::title, call_method(texts, names::apply, {settle}));
}

void make_country(PyObject* df, PyObject* self, PyObject* country_conditions) {
    if (country_conditions == Py_None) raise_value_error(messages::no_countries);
    set_column(df, self, names::country, country_conditions);
}

// --- names and what is made of them
// -------------------------------------------------------------------------------------------

Ref full_names(PyObject* firstnames, PyObject* lastnames) {
    Ref texts = call_method(firstnames, names::astype, {}, {{names::dtype, names::string}});
    Ref cat = attr(texts, names::str, names::cat);
    return call(cat, {}, {{names::others, lastnames}, {names::sep, names::blank}});
}

Ref phone_numbers(PyObject* self, PyObject* firstnames, PyObject* format) {
    Ref generate = attr(self, names::generate_phone_numbers);
    return call(generate, {},
                {{names::isna, call_method(firstnames, names::isna)}, {names::number_format, attr(self, format)}});
}

void make_names(PyObject* df, PyObject* self, PyObject* firstnames, PyObject* lastnames) {
    if (is_set(self, names::firstname)) set_column(df, self, names::firstname, firstnames);
    if (is_set(self, names::lastname)) set_column(df, self, names::lastname, lastnames);
    if (is_set(self, names::fullname)) set_column(df, self, names::fullname, full_names(firstnames, lastnames));
}

void make_accounts(PyObject* df, PyObject* self, PyObject* firstnames, PyObject* lastnames,
                   PyObject* country_conditions) {
    if (is_set(self, names::email)) {
        Ref emails = call_method(self, names::generate_emails, {},
                                 {{names::firstnames, firstnames},
                                  {names::lastnames, lastnames},
                                  {names::country_condtions, country_conditions}});
        set_column(df, self, names::email, emails);
    }
    if (is_set(self, names::username)) {
        Ref usernames = call_method(self, names::generate_usernames, {},
                                    {{names::firstnames, firstnames}, {names::lastnames, lastnames}});
        set_column(df, self, names::username, usernames);
    }
    if (is_set(self, names::password)) {
        Ref passwords = call_method(self, names::generate_passwords, {}, {{names::firstnames, firstnames}});
        set_column(df, self, names::password, passwords);
    }
}

void make_phone_numbers(PyObject* df, PyObject* self, PyObject* firstnames) {
    struct PhoneColumn {
        const Name& field;
        const Name& format;
    };
    for (const auto& [field, format] : {PhoneColumn{names::mobile_number, names::mobile_number_format},
                                        PhoneColumn{names::home_number, names::home_number_format},
                                        PhoneColumn{names::work_number, names::work_number_format}}) {
        if (is_set(self, field)) set_column(df, self, field, phone_numbers(self, firstnames, format));
    }
}

// --- missing rows
// ---------------------------------------------------------------------------------------------------------------

/// `[c for c in self.labels.__dict__.values() if c is not None]`
Ref labelled_columns(PyObject* self) {
    Ref columns = list();
    for (Ref column : iterate(call_method(attr(self, names::labels, names::dunder_dict), names::values))) {
        if (column.get() != Py_None) append(columns, column);
    }
    return columns;
}

/// `df.loc[gender_conditions.isna(), columns] = np.nan`
void blank_rows_without_gender(PyObject* df, PyObject* gender_conditions, PyObject* columns) {
    Ref missing = attr(global(names::np), names::nan);
    Ref loc = attr(df, names::loc);
    set_item(loc, tuple({call_method(gender_conditions, names::isna), columns}), missing);
}

Ref sample_conditional_body(Arguments arguments) {
    auto [self, num_rows, gender_conditions, country_conditions, produce_nans] = arguments.take<5>();
    const auto genders = bulk::Given::series(Ref::share(gender_conditions));
    const auto countries = bulk::Given::series(Ref::share(country_conditions));
    if (Ref made = bulk::whole_frame(self, num_rows, genders, countries, produce_nans)) return made;
    return plain_frame(self, num_rows, gender_conditions, country_conditions, produce_nans);
}

constexpr Parameter kParameters[] = {
    {.name = names::self},
    {.name = names::num_rows, .annotation = "int", .exact = &PyLong_Type},
    {.name = names::gender_conditions, .annotation = "pd.Series"},
    {.name = names::country_conditions, .annotation = "Optional[pd.Series]"},
    {.name = names::produce_nans, .annotation = "bool", .default_ = [] { return boolean(true); }},
};

}  // namespace

Ref plain_frame(PyObject* self, PyObject* num_rows, PyObject* gender_conditions, PyObject* country_conditions,
                PyObject* produce_nans) {
    Ref make_frame = attr(global(names::pd), names::DataFrame);
    Ref empty_row = list();
    Ref df = call(make_frame, {owned(PyNumber_Multiply(list({empty_row}), num_rows))});
    if (is_set(self, names::gender)) make_gender(df, self, gender_conditions);
    if (is_set(self, names::title)) make_title(df, self, gender_conditions);
    if (is_set(self, names::country)) make_country(df, self, country_conditions);

    Ref firstnames =
        call_method(self, names::generate_first_names, {},
                    {{names::gender_conditions, gender_conditions}, {names::country_conditions, country_conditions}});
    Ref lastnames = call_method(self, names::generate_last_names, {},
                                {{names::firstnames, firstnames}, {names::country_conditions, country_conditions}});
    make_names(df, self, firstnames, lastnames);
    make_accounts(df, self, firstnames, lastnames, country_conditions);
    make_phone_numbers(df, self, firstnames);

    Ref columns = labelled_columns(self);
    if (truth(produce_nans)) blank_rows_without_gender(df, gender_conditions, columns);
    return df;
}

namespace person_model {

constexpr Function sample_conditional{
    .qualname = "PersonModel._sample_conditional",
    .line = 326,
    .parameters = kParameters,
    .returns = "pd.DataFrame",
    .doc = R"(Make the frame of all labelled columns.

        Args:
            num_rows: Number of rows.
            gender_conditions: A series with the gender key of each row.
            country_conditions: A series with the country or locale of each row.
            produce_nans: Whether a row without a gender key is missing in every column.

        Returns:
            A data frame of num_rows rows.

        Raises:
            ValueError: if there is a country label but no countries are given, or a gender key is unknown.
            KeyError: if a row's country has no provider.
)",
    .locals = {"df", "mapping", "categories", "firstnames", "lastnames", "columns", "c"},
    .body = sample_conditional_body,
};

}  // namespace person_model

}  // namespace person

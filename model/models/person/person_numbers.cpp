// PersonModel: passwords and phone numbers, which depend on nothing but chance and a format.

#include <Python.h>

#include "bulk/columns.hpp"
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

// --- passwords
// --------------------------------------------------------------------------------------------------------------

/// The generator expression `random.choice(possible_chars) for _ in range(pwd_length)`
Ref random_character_body(Arguments arguments) {
    return generated([&] {
        Ref choice = attr(global(names::random), names::choice);
        return call(choice, {arguments.free_variable()});
    });
}

constexpr Parameter kIndex[] = {{.name = names::underscore}};
constexpr Function random_character{
    .qualname = "PersonModel.generate_password.<locals>.<genexpr>",
    .line = 606,
    .parameters = kIndex,
    .free_variable = "possible_chars",
    .body = random_character_body,
};

Ref generate_password_body(Arguments arguments) {
    auto [pwd_length_min, pwd_length_max] = arguments.take<2>();
    Ref pwd_length = call(attr(global(names::random), names::randint), {pwd_length_min, pwd_length_max});
    Ref letters = attr(global(names::string), names::ascii_letters);
    Ref possible_chars = add(letters, attr(global(names::string), names::digits));
    Ref character = make_function(entry<random_character>, owned(PyCell_New(possible_chars)));
    Ref characters = lazy_map(character, call(builtins::range, {pwd_length}));
    return owned(PyUnicode_Join(names::empty, characters));
}

/// `self.generate_password(*self.pwd_length)`
Ref each_password(PyObject* self) {
    Ref generate = attr(self, names::generate_password);
    Ref bounds = owned(PySequence_Tuple(attr(self, names::pwd_length)));
    return owned(PyObject_CallObject(generate, bounds));
}

Ref generate_passwords_body(Arguments arguments) {
    auto [self, firstnames] = arguments.take<2>();
    Ref make_series = attr(global(names::pd), names::Series);
    const Py_ssize_t rows = length(firstnames);
    if (Ref made = bulk::passwords(self, static_cast<std::size_t>(rows))) return made;
    Ref passwords = list();
    for (Py_ssize_t row = 0; row < rows; ++row) append(passwords, each_password(self));
    return call(make_series, {passwords}, {{names::dtype, names::string}});
}

// --- phone numbers
// ------------------------------------------------------------------------------------------------------------

/// `lambda _: str(random.randint(0, 9))`
Ref random_digit_body(Arguments /*arguments*/) {
    Ref randint = attr(global(names::random), names::randint);
    return owned(PyObject_Str(call(randint, {integers::zero, integers::nine})));
}

constexpr Parameter kMatch[] = {{.name = names::underscore}};
constexpr Function random_digit{
    .qualname = "PersonModel.generate_phone_numbers.<locals>.<lambda>",
    .line = 613,
    .parameters = kMatch,
    .body = random_digit_body,
};

/// `pd.NA if na else re.sub("x", digit, number_format)`
Ref phone_number(PyObject* na, PyObject* digit, PyObject* number_format) {
    if (truth(na)) return attr(global(names::pd), names::NA);
    return call(attr(global(names::re), names::sub), {names::x, digit, number_format});
}

Ref generate_phone_numbers_body(Arguments arguments) {
    auto [isna, number_format] = arguments.take<2>();
    Ref make_series = attr(global(names::pd), names::Series);
    if (Ref made = bulk::phone_numbers(isna, number_format)) return made;
    Ref digit = make_function(entry<random_digit>);
    Ref numbers = list();
    for (Ref na : iterate(isna)) append(numbers, phone_number(na, digit, number_format));
    return call(make_series, {numbers});
}

// --- the rows
// -------------------------------------------------------------------------------------------------------------------

constexpr Parameter kPasswords[] = {
    {.name = names::self},
    {.name = names::firstnames, .annotation = "pd.Series"},
};
constexpr Parameter kPassword[] = {
    {.name = names::pwd_length_min,
     .annotation = "int",
     .exact = &PyLong_Type,
     .default_ = [] { return Ref::share(integers::eight); }},
    {.name = names::pwd_length_max,
     .annotation = "int",
     .exact = &PyLong_Type,
     .default_ = [] { return Ref::share(integers::sixteen); }},
};
constexpr Parameter kPhoneNumbers[] = {
    {.name = names::isna, .annotation = "pd.Series"},
    {.name = names::number_format,
     .annotation = "str",
     .exact = &PyUnicode_Type,
     .default_ = [] { return Ref::share(names::default_number_format); }},
};

}  // namespace

namespace person_model {

constexpr Function generate_passwords{
    .qualname = "PersonModel.generate_passwords",
    .line = 599,
    .parameters = kPasswords,
    .returns = "pd.Series",
    .body = generate_passwords_body,
};

constexpr Function generate_password{
    .qualname = "PersonModel.generate_password",
    .line = 606,
    .kind = Kind::static_method,
    .parameters = kPassword,
    .returns = "str",
    .locals = {"pwd_length", "possible_chars"},
    .body = generate_password_body,
};

constexpr Function generate_phone_numbers{
    .qualname = "PersonModel.generate_phone_numbers",
    .line = 613,
    .kind = Kind::static_method,
    .parameters = kPhoneNumbers,
    .returns = "pd.Series",
    .locals = {"na"},
    .body = generate_phone_numbers_body,
};

}  // namespace person_model

}  // namespace person

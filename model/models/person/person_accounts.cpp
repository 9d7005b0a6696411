// PersonModel: usernames, and the e-mail addresses that are made of them.

#include <Python.h>

#include "bulk/columns.hpp"
#include "person/model.hpp"
#include "person/names.hpp"
#include "person/plain.hpp"
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

Ref random_integer(PyObject* lowest, PyObject* highest) {
    Ref randint = attr(global(names::random), names::randint);
    return call(randint, {lowest, highest});
}

Ref random_number_text() { return owned(PyObject_Str(random_integer(integers::zero, integers::hundred))); }

bool is_present(PyObject* value) { return truth(call_method(global(names::pd), names::notna, {value})); }

// --- usernames: one element
// -------------------------------------------------------------------------------------------------

/// `lambda x: x + np.random.choice(["", ".", "-", "_"]) if pd.notna(x) else x`
Ref add_separator_body(Arguments arguments) {
    auto [x] = arguments.take<1>();
    if (!is_present(x)) return Ref::share(x);
    Ref choice = attr(global(names::np), names::random, names::choice);
    return add(x, call(choice, {list({names::empty, names::dot, names::dash, names::underscore})}));
}

/// `lambda x: x + str(random.randint(0, 100)) * random.randint(0, 1) if pd.notna(x) else x`
Ref add_number_or_nothing_body(Arguments arguments) {
    auto [x] = arguments.take<1>();
    if (!is_present(x)) return Ref::share(x);
    Ref number = random_number_text();
    Ref times = random_integer(integers::zero, integers::one);
    return add(x, owned(PyNumber_Multiply(number, times)));
}

/// `lambda x: x.replace(" ", "")`
Ref remove_blanks_body(Arguments arguments) {
    auto [x] = arguments.take<1>();
    return call_method(x, names::replace, {names::blank, names::empty});
}

/// `lambda x: x + str(random.randint(0, 100))`
Ref add_number_body(Arguments arguments) {
    auto [x] = arguments.take<1>();
    return add(x, random_number_text());
}

constexpr Parameter kElement[] = {{.name = names::x}};
constexpr const char* kElementName = "PersonModel.generate_usernames.<locals>.<lambda>";
constexpr Function add_separator{
    .qualname = kElementName,
    .line = 560,
    .parameters = kElement,
    .body = add_separator_body,
};
constexpr Function add_number_or_nothing{
    .qualname = kElementName,
    .line = 560,
    .parameters = kElement,
    .body = add_number_or_nothing_body,
};
constexpr Function remove_blanks{
    .qualname = kElementName,
    .line = 560,
    .parameters = kElement,
    .body = remove_blanks_body,
};
constexpr Function add_number{
    .qualname = kElementName,
    .line = 560,
    .parameters = kElement,
    .body = add_number_body,
};

// --- usernames: the column
// ----------------------------------------------------------------------------------------------------

Ref apply(PyObject* series, const Entry& element) {
    return call_method(series, names::apply, {make_function(element)});
}

/// First name, separator, last name, and half of the time a number.
Ref joined_names(PyObject* firstnames, PyObject* lastnames) {
    Ref separated = apply(firstnames, entry<add_separator>);
    Ref texts = call_method(separated, names::astype, {}, {{names::dtype, names::string}});
    Ref joined = call_method(attr(texts, names::str), names::cat, {}, {{names::others, lastnames}});
    return apply(joined, entry<add_number_or_nothing>);
}

/// `usernames.nunique() < sum(firstnames.notna())`
bool has_clashes(PyObject* usernames, PyObject* firstnames) {
    Ref distinct = call_method(usernames, names::nunique);
    Ref wanted = call(builtins::sum, {call_method(firstnames, names::notna)});
    return truth(owned(PyObject_RichCompare(distinct, wanted, Py_LT)));
}

/// Every copy of a username that occurs more than once gets a number of its own.
void number_clashes(PyObject* usernames) {
    Ref counts = call_method(usernames, names::value_counts);
    Ref repeated = item(counts, owned(PyObject_RichCompare(counts, integers::one, Py_GT)));
    Ref duplicates = attr(repeated, names::index);
    const auto clashing = [&] { return call_method(usernames, names::isin, {duplicates}); };
    Ref numbered = apply(item(usernames, clashing()), entry<add_number>);
    set_item(usernames, clashing(), numbered);
}

Ref generate_usernames_body(Arguments arguments) {
    auto [firstnames, lastnames] = arguments.take<2>();
    if (Ref made = bulk::usernames(firstnames, lastnames)) return made;
    return plain_usernames(firstnames, lastnames);
}

// --- e-mail addresses
// -----------------------------------------------------------------------------------------------------------

bool assertions_are_enabled() {
    PyObject* flags = PySys_GetObject("flags");
    return flags == nullptr || !truth(attr(flags, "optimize"));
}

/// `assert all(emails[emails.notna()].apply(self.check_email, args=[list(self.default_locale)]))`. The locales are the
/// single characters of one locale, none of which is English: the check lets every address pass, on purpose.
void assert_valid(PyObject* self, PyObject* emails) {
    Ref apply = attr(item(emails, call_method(emails, names::notna)), names::apply);
    Ref check = attr(self, names::check_email);
    Ref locales = list_of(attr(self, names::default_locale));
    Ref passed = call(apply, {check}, {{names::args, list({locales})}});
    if (!truth(call(builtins::all, {passed}))) raise(builtins::AssertionError);
}

Ref draw_domains(PyObject* self, PyObject* countries) {
    Ref domains = list();
    for (Ref country : iterate(countries)) append(domains, call_provider(self, country, names::domain_name));
    return domains;
}

Ref generate_emails_body(Arguments arguments) {
    auto [self, firstnames, lastnames, countries] = arguments.take<4>();
    if (Ref made = bulk::emails(self, firstnames, lastnames, countries)) return made;
    Ref domains = draw_domains(self, countries);
    Ref usernames = call_method(self, names::generate_usernames, {firstnames, lastnames});
    Ref cat = attr(usernames, names::str, names::cat);
    Ref emails = call(cat, {}, {{names::others, domains}, {names::sep, names::at}});
    if (assertions_are_enabled()) assert_valid(self, emails);
    return emails;
}

/// The generator expression `"en" in locale for locale in locales`
Ref is_english_body(Arguments arguments) {
    auto [locale] = arguments.take<1>();
    return generated([locale = locale] { return boolean(contains(locale, names::en)); });
}

constexpr Parameter kLocale[] = {{.name = names::x}};
constexpr Function is_english{
    .qualname = "PersonModel.check_email.<locals>.<genexpr>",
    .line = 660,
    .parameters = kLocale,
    .body = is_english_body,
};

Ref check_email_body(Arguments arguments) {
    auto [s, locales] = arguments.take<2>();
    Ref answers = lazy_map(make_function(entry<is_english>), locales);
    if (!truth(call(builtins::all, {answers}))) return boolean(true);
    Ref match = attr(global(names::re), names::match);
    return boolean(call(match, {names::email_pattern, s}).get() != Py_None);
}

// --- the rows
// -------------------------------------------------------------------------------------------------------------------

Ref english() { return list({names::en}); }

constexpr Parameter kUsernames[] = {
    {.name = names::firstnames, .annotation = "pd.Series"},
    {.name = names::lastnames, .annotation = "pd.Series"},
};
constexpr Parameter kEmails[] = {
    {.name = names::self},
    {.name = names::firstnames, .annotation = "pd.Series"},
    {.name = names::lastnames, .annotation = "pd.Series"},
    {.name = names::country_condtions, .annotation = "pd.Series"},
};
constexpr Parameter kCheckEmail[] = {
    {.name = names::s, .annotation = "str", .exact = &PyUnicode_Type},
    {.name = names::locales, .annotation = "List[str]", .exact = &PyList_Type, .default_ = english},
};

}  // namespace

Ref plain_usernames(PyObject* firstnames, PyObject* lastnames) {
    Ref usernames = apply(joined_names(firstnames, lastnames), entry<remove_blanks>);
    while (has_clashes(usernames, firstnames)) number_clashes(usernames);
    return call_method(attr(usernames, names::str), names::lower);
}

namespace person_model {

constexpr Function generate_emails{
    .qualname = "PersonModel.generate_emails",
    .line = 532,
    .parameters = kEmails,
    .returns = "pd.Series",
    .doc = R"(
        Generate emails based on the firstnames and lastnames specified in the series,
        optionally conditional on the countries.

        Args:
            firstnames: A series of firstnames to generate emails from.
            lastnames: A series of lastnames to generate emails from.
            country_conditions: A series of countries to generate emails for.

        Returns:
            A series of generated emails.
)",
    .locals = {"domains", "usernames", "emails", "country"},
    .body = generate_emails_body,
};

constexpr Function generate_usernames{
    .qualname = "PersonModel.generate_usernames",
    .line = 560,
    .kind = Kind::static_method,
    .parameters = kUsernames,
    .returns = "pd.Series",
    .doc = R"(Generate usernames based on the firstnames and lastnames specified in the series.
            These are generated by concatenating the firstnames and lastnames with a random number
            and a random separator.

        Args:
            firstnames: A series of firstnames to generate usernames from.
            lastnames: A series of lastnames to generate usernames from.

        Returns:
            A series of generated usernames.
)",
    .locals = {"usernames", "vc", "duplicates"},
    .body = generate_usernames_body,
};

constexpr Function check_email{
    .qualname = "PersonModel.check_email",
    .line = 660,
    .kind = Kind::static_method,
    .parameters = kCheckEmail,
    .returns = "bool",
    .doc = R"(Check if a string is a valid email address.

        Args:
            s: The string to check.
            locales: locales that the email is generated for, the check only functions with english
                language emails, otherwise no check is performed.
)",
    .locals = {"dash_word", "ip_number", "pattern"},
    .body = check_email_body,
};

}  // namespace person_model

}  // namespace person

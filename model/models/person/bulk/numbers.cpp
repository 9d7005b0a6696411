// Passwords and phone numbers, whole columns at once.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "bulk/columns.hpp"
#include "bulk/originals.hpp"
#include "bulk/streams.hpp"
#include "bulk/surroundings.hpp"
#include "bulk/texts.hpp"
#include "person/names.hpp"
#include "person/units.hpp"
#include "python/call.hpp"
#include "python/module.hpp"

namespace bulk {

using namespace python;
namespace names = person::names;

namespace {

/// The bounds of `randint`, as a lowest value and how many values there are.
struct Range {
    std::uint32_t lowest;
    std::uint32_t count;
};

/// Lengths above this are left to the single calls.
constexpr long kLongest = 1L << 20;

std::optional<Range> length_range(PyObject* self) {
    if (!reads_plainly(self) || quiet_attr(reinterpret_cast<PyObject*>(Py_TYPE(self)), names::pwd_length))
        return std::nullopt;
    Ref bounds = quiet_attr(self, names::pwd_length);
    if (!bounds || (!PyTuple_CheckExact(bounds.get()) && !PyList_CheckExact(bounds.get()))) return std::nullopt;
    Ref pair = owned(PySequence_Tuple(bounds));
    if (PyTuple_GET_SIZE(pair.get()) != 2) return std::nullopt;
    long values[2];
    for (Py_ssize_t i = 0; i < 2; ++i) {
        PyObject* bound = PyTuple_GET_ITEM(pair.get(), i);
        int overflow = 0;
        if (!PyLong_CheckExact(bound)) return std::nullopt;
        values[i] = PyLong_AsLongAndOverflow(bound, &overflow);
        if (overflow != 0 || values[i] < 0 || values[i] > kLongest) return std::nullopt;
    }
    if (values[0] > values[1]) return std::nullopt;
    return Range{static_cast<std::uint32_t>(values[0]), static_cast<std::uint32_t>(values[1] - values[0] + 1)};
}

/// `string.ascii_letters + string.digits`, where both are ASCII.
std::optional<std::string> possible_characters() {
    Ref letters = quiet_attr(global(names::string), names::ascii_letters);
    Ref digits = quiet_attr(global(names::string), names::digits);
    std::string characters;
    for (PyObject* part : {letters.get(), digits.get()}) {
        const auto text = part == nullptr ? std::nullopt : utf8(part);
        if (!text || !PyUnicode_IS_ASCII(part)) return std::nullopt;
        characters += *text;
    }
    if (characters.empty()) return std::nullopt;
    return characters;
}

/// Where each "x" of the template stands.
std::vector<std::size_t> placeholders(std::string_view text) {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == 'x') found.push_back(i);
    }
    return found;
}

bool substitutes_plainly() { return is_original(quiet_attr(global(names::re), names::sub), {"re", "sub"}); }

}  // namespace

Ref passwords(PyObject* self, PyObject* make_series, std::size_t rows) {
    if (!is_worth_it(rows) || !namespace_is_untouched()) return {};
    if (!has_our_method(self, names::generate_password, entry<person::person_model::generate_password>)) return {};
    Ref random = module_random(global(names::random), {"randint", "choice"});
    const auto lengths = length_range(self);
    const auto characters = possible_characters();
    if (!random || !lengths || !characters) return {};

    TextSeries column({call(make_series, {list({names::x})}, {{names::dtype, names::string}})}, rows);
    Source source(random);
    Mersenne& engine = source.engine();
    const auto count = static_cast<std::uint32_t>(characters->size());
    std::string password;
    source.take_over();
    for (std::size_t row = 0; row < rows; ++row) {
        password.resize(lengths->lowest + engine.below(lengths->count));
        for (char& character : password) character = (*characters)[engine.below(count)];
        column.add(password);
        source.breathe(password.size());
    }
    source.hand_back();
    return column.finish(make_series, {{names::dtype, names::string}});
}

Ref phone_numbers(PyObject* make_series, PyObject* isna, PyObject* number_format) {
    if (!namespace_is_untouched() || !substitutes_plainly()) return {};
    const auto missing = Flags::read(isna);
    const auto format = utf8(number_format);
    Ref random = module_random(global(names::random), {"randint"});
    if (!missing || !is_worth_it(missing->size()) || !format || !random) return {};

    Ref no_number = attr(global(names::pd), names::NA);
    Ref kinds = list();
    if (!missing->all()) append(kinds, names::x);
    if (missing->any()) append(kinds, no_number);
    TextSeries column({call(make_series, {kinds})}, missing->size());
    Source source(random);
    Mersenne& engine = source.engine();
    const auto places = placeholders(*format);
    std::string number(*format);
    source.take_over();
    for (std::size_t row = 0; row < missing->size(); ++row) {
        if ((*missing)[row]) {
            column.add_missing(no_number);
        } else {
            for (const std::size_t place : places) number[place] = static_cast<char>('0' + engine.below(10));
            column.add(number);
        }
        source.breathe(places.size());
    }
    source.hand_back();
    return column.finish(make_series);
}

}  // namespace bulk

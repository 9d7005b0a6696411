#include "bulk/numbers.hpp"

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

/// Lengths above this are left to the single calls.
constexpr long kLongest = 1L << 20;

std::optional<Passwords::Lengths> length_range(PyObject* self) {
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
    return Passwords::Lengths{static_cast<std::uint32_t>(values[0]),
                              static_cast<std::uint32_t>(values[1] - values[0] + 1)};
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

}  // namespace

// --- passwords
// ------------------------------------------------------------------------------------------------------------

std::optional<Passwords> Passwords::read(PyObject* self) {
    if (!has_our_method(self, names::generate_password, entry<person::person_model::generate_password>))
        return std::nullopt;
    Ref random = module_random(global(names::random), {"randint", "choice"});
    auto lengths = length_range(self);
    auto characters = possible_characters();
    if (!random || !lengths || !characters) return std::nullopt;
    return Passwords(std::move(random), *lengths, std::move(*characters));
}

void Passwords::draw(Source& source, std::size_t rows, TextColumn& column) const {
    Mersenne& engine = source.engine();
    const auto count = static_cast<std::uint32_t>(characters_.size());
    std::string password;
    source.take_over();
    for (std::size_t row = 0; row < rows; ++row) {
        password.resize(lengths_.lowest + engine.below(lengths_.count));
        engine.fill_below(count, password.size(),
                          [&](std::size_t i, std::uint32_t drawn) { password[i] = characters_[drawn]; });
        column.add(password);
        source.breathe(password.size());
    }
}

Ref passwords(PyObject* self, std::size_t rows) {
    if (!is_worth_it(rows) || !namespace_is_untouched()) return {};
    const auto drawn_from = Passwords::read(self);
    if (!drawn_from) return {};
    const auto layout =
        Layout::of(call(attr(global(names::pd), names::Series), {list({names::x})}, {{names::dtype, names::string}}));
    if (!layout) return {};
    TextColumn column(*layout, rows);
    Sources alone;
    Source& source = alone.of(drawn_from->random());
    drawn_from->draw(source, rows, column);
    source.hand_back();
    return column.series();
}

// --- telephone numbers
// ----------------------------------------------------------------------------------------------------

std::optional<PhoneNumbers> PhoneNumbers::read(PyObject* number_format) {
    if (!substitutes_plainly(global(names::re))) return std::nullopt;
    const auto format = utf8(number_format);
    Ref random = module_random(global(names::random), {"randint"});
    if (!format || !random) return std::nullopt;
    return PhoneNumbers(std::move(random), std::string(*format), placeholders(*format));
}

void PhoneNumbers::draw(Source& source, std::size_t rows, const Flags* missing, PyObject* no_number,
                        TextColumn& column) const {
    Mersenne& engine = source.engine();
    std::string number(format_);
    source.take_over();
    for (std::size_t row = 0; row < rows; ++row) {
        if (missing != nullptr && (*missing)[row]) {
            column.add_missing(no_number);
        } else {
            engine.fill_below(10, places_.size(), [&](std::size_t i, std::uint32_t digit) {
                number[places_[i]] = static_cast<char>('0' + digit);
            });
            column.add(number);
        }
        source.breathe(places_.size());
    }
}

Ref phone_numbers(PyObject* isna, PyObject* number_format) {
    if (!namespace_is_untouched()) return {};
    const auto missing = Flags::read(isna);
    if (!missing || !is_worth_it(missing->size())) return {};
    const auto drawn_from = PhoneNumbers::read(number_format);
    if (!drawn_from) return {};
    Ref no_number = attr(global(names::pd), names::NA);
    Ref kinds = list();
    if (!missing->all()) append(kinds, names::x);
    if (missing->any()) append(kinds, no_number);
    const auto layout = Layout::of(call(attr(global(names::pd), names::Series), {kinds}));
    if (!layout) return {};
    TextColumn column(*layout, missing->size());
    Sources alone;
    Source& source = alone.of(drawn_from->random());
    drawn_from->draw(source, missing->size(), &*missing, no_number, column);
    source.hand_back();
    return column.series();
}

}  // namespace bulk

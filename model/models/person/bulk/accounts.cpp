// Usernames and e-mail addresses, whole columns at once.

#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bulk/clashes.hpp"
#include "bulk/columns.hpp"
#include "bulk/originals.hpp"
#include "bulk/providers.hpp"
#include "bulk/signals.hpp"
#include "bulk/streams.hpp"
#include "bulk/surroundings.hpp"
#include "bulk/texts.hpp"
#include "bulk/ways.hpp"
#include "person/names.hpp"
#include "person/units.hpp"
#include "python/call.hpp"
#include "python/module.hpp"

namespace bulk {

using namespace python;
namespace names = person::names;

namespace {

/// First and last names of the same rows, none missing. A NUL would end a text early for some of pandas' hash tables.
struct Names {
    Texts first;
    Texts last;

    static std::optional<Names> read(PyObject* firstnames, PyObject* lastnames);
    [[nodiscard]] std::size_t size() const { return first.size(); }
};

bool are_plain(const Texts& texts) {
    for (std::size_t row = 0; row < texts.size(); ++row) {
        let_signals_in(row);
        if (texts.is_missing(row) || texts[row].find('\0') != std::string_view::npos) return false;
    }
    return true;
}

std::optional<Names> Names::read(PyObject* firstnames, PyObject* lastnames) {
    if (!is_bare(firstnames)) return std::nullopt;
    auto first = Texts::read(firstnames);
    if (!first || !is_worth_it(first->size()) || first->size() > Clashes::kMostRows || !are_plain(*first))
        return std::nullopt;
    auto last = Texts::read(lastnames);
    if (!last || last->size() != first->size() || !are_plain(*last)) return std::nullopt;
    Ref index = attr(firstnames, names::index);
    if (!truth(call_method(index, names::equals, {attr(lastnames, names::index)}))) return std::nullopt;
    return Names{std::move(*first), std::move(*last)};
}

// --- what pandas makes of a few rows
// ------------------------------------------------------------------------------------------

Ref identity_body(Arguments arguments) {
    auto [x] = arguments.take<1>();
    return Ref::share(x);
}

constexpr Parameter kElement[] = {{.name = names::x}};
constexpr Function identity{.qualname = "PersonModel.generate_usernames.<locals>.<lambda>",
                            .line = 560,
                            .parameters = kElement,
                            .body = identity_body};

/// The usernames' way through pandas, with one row and functions that change nothing.
Form username_form(PyObject* firstnames, PyObject* lastnames) {
    Ref element = make_function(entry<identity>);
    Ref first = first_row(firstnames);
    Ref applied = call_method(first, names::apply, {element});
    Ref texts = call_method(applied, names::astype, {}, {{names::dtype, names::string}});
    Ref joined = call_method(attr(texts, names::str), names::cat, {}, {{names::others, first_row(lastnames)}});
    Ref numbered = call_method(joined, names::apply, {element});
    return {call_method(numbered, names::apply, {element}), std::move(first)};
}

Ref in_lower_case(PyObject* series) { return call_method(attr(series, names::str), names::lower); }

// --- usernames
// ----------------------------------------------------------------------------------------------------------------

std::vector<std::string> numbers_to_hundred() {
    std::vector<std::string> numbers;
    for (int number = 0; number <= 100; ++number) numbers.push_back(std::to_string(number));
    return numbers;
}

/// Usernames in the making: case still mixed.
class Usernames {
  public:
    Usernames(const Names& names, NumpyChoice& separators, PyObject* random)
        : names_(names), separators_(separators), source_(random) {}

    const std::vector<std::string_view>& make() {
        draw_separators();
        source_.take_over();
        join();
        settle_clashes();
        source_.hand_back();
        return usernames_;
    }

  private:
    static constexpr std::array<std::string_view, 4> kSeparators{"", ".", "-", "_"};
    static constexpr std::size_t kAdded = 4;  ///< a separator and a number of three digits

    void draw_separators() {
        drawn_.reserve(names_.size());
        NumpyChoice::Held held(separators_);
        for (std::size_t row = 0; row < names_.size(); ++row) {
            held.let_signals_in(row);
            drawn_.push_back(static_cast<std::uint8_t>(separators_.below(kSeparators.size())));
        }
    }

    /// A number from 0 to 100, as text.
    std::string_view draw_number() {
        return numbers_[source_.engine().below(static_cast<std::uint32_t>(numbers_.size()))];
    }

    void append_without_blanks(std::string_view text) {
        for (std::size_t start = 0; start <= text.size();) {
            const std::size_t blank = std::min(text.find(' ', start), text.size());
            data_.append(text, start, blank - start);
            start = blank + 1;
        }
    }

    void join() {
        std::size_t bytes = 0;
        for (std::size_t row = 0; row < names_.size(); ++row)
            bytes += names_.first[row].size() + names_.last[row].size() + kAdded;
        data_.reserve(bytes);  // the views below stay where they are
        usernames_.reserve(names_.size());
        for (std::size_t row = 0; row < names_.size(); ++row) {
            const std::size_t start = data_.size();
            append_without_blanks(names_.first[row]);
            data_ += kSeparators[drawn_[row]];
            append_without_blanks(names_.last[row]);
            const std::string_view number = draw_number();
            if (source_.engine().below(2) == 1) data_ += number;
            usernames_.emplace_back(data_.data() + start, data_.size() - start);
            source_.breathe();
        }
    }

    /// Every copy of a username that occurs more than once gets a number of its own, until all are distinct.
    void settle_clashes() {
        Clashes clashes(usernames_, source_);
        for (std::uint32_t row = 0; row < usernames_.size(); ++row) {
            clashes.add(row);
            source_.breathe();
        }
        for (auto rows = clashes.take(); !rows.empty(); rows = clashes.take()) {
            for (const std::uint32_t row : rows) {
                clashes.remove(row);
                source_.breathe();
            }
            for (const std::uint32_t row : rows) {
                usernames_[row] = renamed_.emplace_back(usernames_[row]).append(draw_number());
                source_.breathe();
            }
            for (const std::uint32_t row : rows) {
                clashes.add(row);
                source_.breathe();
            }
        }
    }

    const Names& names_;
    NumpyChoice& separators_;
    Source source_;
    const std::vector<std::string> numbers_ = numbers_to_hundred();
    std::vector<std::uint8_t> drawn_;
    std::string data_;
    std::deque<std::string> renamed_;
    std::vector<std::string_view> usernames_;
};

/// What usernames are drawn from, where it is all in place.
struct UsernameSources {
    NumpyChoice separators;
    Ref random;

    UsernameSources() : separators(global(names::np)), random(module_random(global(names::random), {"randint"})) {}

    [[nodiscard]] bool apply() const {
        return separators.applies() && random;
    }
};

Ref username_column(PyObject* make_series, const Form& form, PyObject* firstnames, const Names& names,
                    UsernameSources& drawn_from) {
    Usernames usernames(names, drawn_from.separators, drawn_from.random);
    TextSeries column(form, names.size());
    const auto& made = usernames.make();
    for (std::size_t row = 0; row < made.size(); ++row) {
        let_signals_in(row);
        column.add(made[row]);
    }
    return in_lower_case(column.finish_from(make_series, firstnames));
}

// --- e-mail addresses
// -----------------------------------------------------------------------------------------------------------

/// How the domain of each row is made, where that is known of all.
std::optional<std::vector<Row<Domains>>> plan_domains(const Texts& countries, Providers& providers) {
    std::vector<Row<Domains>> rows;
    rows.reserve(countries.size());
    for (std::size_t row = 0; row < countries.size(); ++row) {
        let_signals_in(row);
        Providers::Provider* provider = countries.is_missing(row) ? nullptr : providers.find(countries[row]);
        Way<Domains>* way = provider == nullptr ? nullptr : provider->domain_names();
        if (way == nullptr) return std::nullopt;
        rows.push_back({.way = way});
    }
    return rows;
}

void finish_domains(std::vector<Row<Domains>>& rows) {
    for (const Row<Domains>& row : rows) {
        if (row.way->known) row.way->known->finish_words();
    }
}

void append_domain(const Row<Domains>& row, const CalledTexts& called, std::string& address) {
    if (row.way->known) {
        row.way->known->append(row.drawn, address);
    } else {
        address += called.text(row.called);
    }
}

/// Nothing that an address goes through could refuse it.
bool addresses_pass(PyObject* self) {
    return has_our_method(self, names::generate_usernames, entry<person::person_model::generate_usernames>) &&
           has_our_method(self, names::check_email, entry<person::person_model::check_email>) &&
           has_our_property(self, names::default_locale, entry<person::person_model::default_locale>);
}

Form address_form(Form usernames) {
    Ref cat = attr(in_lower_case(usernames.made), names::str, names::cat);
    return {call(cat, {}, {{names::others, list({names::x})}, {names::sep, names::at}}), std::move(usernames.from)};
}

}  // namespace

Ref usernames(PyObject* firstnames, PyObject* lastnames) {
    if (!namespace_is_untouched()) return {};
    UsernameSources drawn_from;
    if (!drawn_from.apply()) return {};
    const auto given = Names::read(firstnames, lastnames);
    if (!given) return {};
    Ref make_series = attr(global(names::pd), names::Series);
    return username_column(make_series, username_form(firstnames, lastnames), firstnames, *given, drawn_from);
}

Ref emails(PyObject* self, PyObject* firstnames, PyObject* lastnames, PyObject* countries) {
    if (!namespace_is_untouched() || !addresses_pass(self)) return {};
    UsernameSources drawn_from;
    if (!drawn_from.apply()) return {};
    const auto given = Names::read(firstnames, lastnames);
    const auto country_texts = given ? Texts::read(countries) : std::nullopt;
    if (!country_texts || country_texts->size() != given->size()) return {};
    Providers providers(self);
    auto rows = plan_domains(*country_texts, providers);
    if (!rows) return {};

    Ref make_series = attr(global(names::pd), names::Series);
    Form form = username_form(firstnames, lastnames);
    CalledTexts called;
    if (!draw_rows(*rows, called)) return {};
    finish_domains(*rows);
    Ref usernames = username_column(make_series, form, firstnames, *given, drawn_from);

    const auto local_parts = Texts::read(usernames);
    if (!local_parts) raise(PyExc_SystemError, "usernames are no texts");
    TextSeries column(address_form(std::move(form)), rows->size());
    std::string address;
    for (std::size_t row = 0; row < rows->size(); ++row) {
        let_signals_in(row);
        address.assign((*local_parts)[row]);
        address += '@';
        append_domain((*rows)[row], called, address);
        column.add(address);
    }
    return column.finish_from(make_series, firstnames);
}

Ref full_names(PyObject* firstnames, PyObject* lastnames) {
    if (!namespace_is_untouched()) return {};
    const auto given = Names::read(firstnames, lastnames);
    if (!given) return {};
    Ref first = first_row(firstnames);
    Ref texts = call_method(first, names::astype, {}, {{names::dtype, names::string}});
    Ref cat = attr(texts, names::str, names::cat);
    Ref joined = call(cat, {}, {{names::others, first_row(lastnames)}, {names::sep, names::blank}});
    TextSeries column({std::move(joined), std::move(first)}, given->size());
    std::string full_name;
    for (std::size_t row = 0; row < given->size(); ++row) {
        let_signals_in(row);
        full_name.assign(given->first[row]);
        full_name += ' ';
        full_name += given->last[row];
        column.add(full_name);
    }
    return column.finish_from(attr(global(names::pd), names::Series), firstnames);
}

}  // namespace bulk

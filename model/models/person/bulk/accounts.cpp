// Usernames and e-mail addresses, whole columns at once.

#include <optional>
#include <string_view>

#include "bulk/clashes.hpp"
#include "bulk/columns.hpp"
#include "bulk/emails.hpp"
#include "bulk/rehearsal.hpp"
#include "bulk/signals.hpp"
#include "bulk/surroundings.hpp"
#include "bulk/texts.hpp"
#include "bulk/usernames.hpp"
#include "person/names.hpp"
#include "person/plain.hpp"
#include "python/call.hpp"
#include "python/module.hpp"

namespace bulk {

using namespace python;
namespace names = person::names;

namespace {

/// First and last names of the same rows, none missing and without a NUL.
class Names {
  public:
    static std::optional<Names> read(PyObject* firstnames, PyObject* lastnames);

    [[nodiscard]] std::size_t size() const { return first_.size(); }
    [[nodiscard]] std::string_view first(std::size_t row) const { return first_[row]; }
    [[nodiscard]] std::string_view last(std::size_t row) const { return last_[row]; }

  private:
    Names(Texts first, Texts last) : first_(std::move(first)), last_(std::move(last)) {}

    Texts first_;
    Texts last_;
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
    return Names(std::move(*first), std::move(*last));
}

}  // namespace

Ref usernames(PyObject* firstnames, PyObject* lastnames) {
    if (!namespace_is_untouched()) return {};
    UsernameSources drawn_from;
    const auto given = drawn_from.apply() ? Names::read(firstnames, lastnames) : std::nullopt;
    if (!given) return {};
    const Rehearsed first = rehearsed(
        rows_at(firstnames, {0}), [&](PyObject* row) { return person::plain_usernames(row, rows_at(lastnames, {0})); });
    if (!first.layout) return {};
    Usernames usernames(drawn_from);
    usernames.draw(*given);
    usernames.lower(*first.layout);
    TextColumn column(*first.layout, usernames.size());
    for (std::size_t row = 0; row < usernames.size(); ++row) {
        let_signals_in(row);
        column.add(usernames[row]);
    }
    return first.series(column, firstnames);
}

Ref emails(PyObject* self, PyObject* firstnames, PyObject* lastnames, PyObject* countries) {
    if (!namespace_is_untouched() || !addresses_pass(self)) return {};
    UsernameSources drawn_from;
    const auto given = drawn_from.apply() ? Names::read(firstnames, lastnames) : std::nullopt;
    const auto country_texts = given ? Texts::read(countries) : std::nullopt;
    if (!country_texts || country_texts->size() != given->size()) return {};
    const Codes codes(*country_texts);
    Providers providers(self);
    auto domains = plan_domains(codes, providers);
    if (!domains) return {};
    const Rehearsed first = rehearsed(rows_at(firstnames, {0}), [&](PyObject* row) {
        Ref username = person::plain_usernames(row, rows_at(lastnames, {0}));
        Ref cat = attr(username, names::str, names::cat);
        return call(cat, {}, {{names::others, list({names::x})}, {names::sep, names::at}});
    });
    if (!first.layout || !draw_or_go_back(providers.sources(), *domains)) return {};
    Usernames usernames(drawn_from);
    usernames.draw(*given);
    usernames.lower(*first.layout);
    TextColumn column(*first.layout, usernames.size());
    write_addresses(usernames, *domains, column);
    return first.series(column, firstnames);
}

}  // namespace bulk

// First and last names, whole columns at once.

#include "person/names.hpp"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "bulk/columns.hpp"
#include "bulk/originals.hpp"
#include "bulk/providers.hpp"
#include "bulk/signals.hpp"
#include "bulk/surroundings.hpp"
#include "bulk/tables.hpp"
#include "bulk/texts.hpp"
#include "bulk/ways.hpp"
#include "person/units.hpp"
#include "python/call.hpp"
#include "python/module.hpp"

namespace bulk {

using namespace python;
namespace names = person::names;

namespace {

const char* first_name_method(std::string_view gender) {
    if (gender.data() == nullptr || gender == names::non_binary.text || gender == names::ambiguous.text)
        return "first_name";
    if (gender == names::male.text) return "first_name_male";
    if (gender == names::female.text) return "first_name_female";
    return nullptr;
}

/// How each row is made, where that is known of all.
std::optional<std::vector<Row<Table>>> plan_rows(const Texts* genders, const Texts& countries, std::size_t count,
                                                 Providers& providers) {
    std::vector<Row<Table>> rows;
    rows.reserve(count);
    for (std::size_t row = 0; row < count; ++row) {
        let_signals_in(row);
        const char* method = genders == nullptr ? "last_name" : first_name_method((*genders)[row]);
        if (method == nullptr || countries.is_missing(row)) return std::nullopt;
        Providers::Provider* provider = providers.find(countries[row]);
        Way<Table>* way = provider == nullptr ? nullptr : provider->names(method);
        if (way == nullptr) return std::nullopt;
        rows.push_back({.way = way});
    }
    return rows;
}

/// A column of a name for each row.
Ref drawn_column(PyObject* make_series, std::vector<Row<Table>>& rows) {
    TextSeries column({call(make_series, {list({names::x})})}, rows.size());
    CalledTexts called;
    if (!draw_rows(rows, called)) return {};
    for (std::size_t number = 0; number < rows.size(); ++number) {
        let_signals_in(number);
        const Row<Table>& row = rows[number];
        if (const auto& table = row.way->known) {
            column.add(table->object(row.drawn), table->text(row.drawn));
        } else {
            column.add(called.object(row.called), called.text(row.called));
        }
    }
    return column.finish(make_series);
}

}  // namespace

Ref first_names(PyObject* self, PyObject* make_series, PyObject* genders, PyObject* countries) {
    if (!namespace_is_untouched()) return {};
    if (!has_our_method(self, names::generate_random_first_name,
                        entry<person::person_model::generate_random_first_name>)) {
        return {};
    }
    const auto gender_texts = Texts::read(genders);
    const auto country_texts = gender_texts ? Texts::read(countries) : std::nullopt;
    if (!country_texts) return {};
    Providers providers(self);
    const std::size_t count = std::min(gender_texts->size(), country_texts->size());
    if (!is_worth_it(count)) return {};
    auto rows = plan_rows(&*gender_texts, *country_texts, count, providers);
    return rows ? drawn_column(make_series, *rows) : Ref();
}

Ref last_names(PyObject* self, PyObject* make_series, PyObject* countries) {
    if (!namespace_is_untouched()) return {};
    const auto country_texts = Texts::read(countries);
    if (!country_texts || !is_worth_it(country_texts->size())) return {};
    Providers providers(self);
    auto rows = plan_rows(nullptr, *country_texts, country_texts->size(), providers);
    return rows ? drawn_column(make_series, *rows) : Ref();
}

}  // namespace bulk

// First and last names, whole columns at once.

#include "person/names.hpp"

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "bulk/columns.hpp"
#include "bulk/originals.hpp"
#include "bulk/providers.hpp"
#include "bulk/signals.hpp"
#include "bulk/streams.hpp"
#include "bulk/surroundings.hpp"
#include "bulk/tables.hpp"
#include "bulk/texts.hpp"
#include "person/units.hpp"
#include "python/call.hpp"
#include "python/module.hpp"

namespace bulk {

using namespace python;
namespace names = person::names;

namespace {

/// A table and the source that it draws from.
struct Draw {
    const Table* table;
    Mersenne* source;
};

/// A column whose every row is one draw from a table.
Ref drawn_column(PyObject* make_series, const std::vector<Draw>& rows, Sources& sources) {
    TextSeries column(call(make_series, {list({names::x})}), rows.size());
    sources.take_over();
    for (const auto& [table, source] : rows) {
        const std::size_t position = table->draw(*source);
        column.add(table->object(position), table->text(position));
        sources.breathe();
    }
    sources.hand_back();
    return column.finish(make_series);
}

const char* first_name_method(std::string_view gender) {
    if (gender.data() == nullptr || gender == names::non_binary.text || gender == names::ambiguous.text)
        return "first_name";
    if (gender == names::male.text) return "first_name_male";
    if (gender == names::female.text) return "first_name_female";
    return nullptr;
}

/// The draw of each row, where every row's is known.
std::optional<std::vector<Draw>> plan_rows(const Texts* genders, const Texts& countries, std::size_t count,
                                           Providers& providers) {
    std::vector<Draw> rows;
    rows.reserve(count);
    for (std::size_t row = 0; row < count; ++row) {
        let_signals_in(row);
        const char* method = genders == nullptr ? "last_name" : first_name_method((*genders)[row]);
        if (method == nullptr || countries.is_missing(row)) return std::nullopt;
        Providers::Provider* provider = providers.find(countries[row]);
        const Table* table = provider == nullptr ? nullptr : provider->table(method);
        if (table == nullptr) return std::nullopt;
        rows.push_back({table, &provider->source()});
    }
    return rows;
}

}  // namespace

Ref first_names(PyObject* self, PyObject* make_series, PyObject* genders, PyObject* countries) {
    if (!namespace_is_untouched() || !has_pandas_function("isna", "pandas.core.dtypes.missing")) return {};
    if (!has_our_method(self, names::generate_random_first_name,
                        entry<person::person_model::generate_random_first_name>)) {
        return {};
    }
    const auto gender_texts = Texts::read(genders);
    const auto country_texts = gender_texts ? Texts::read(countries) : std::nullopt;
    if (!country_texts) return {};
    Sources sources;
    Providers providers(self, sources);
    const std::size_t count = std::min(gender_texts->size(), country_texts->size());
    if (!is_worth_it(count)) return {};
    const auto rows = plan_rows(&*gender_texts, *country_texts, count, providers);
    return rows ? drawn_column(make_series, *rows, sources) : Ref();
}

Ref last_names(PyObject* self, PyObject* make_series, PyObject* countries) {
    if (!namespace_is_untouched()) return {};
    const auto country_texts = Texts::read(countries);
    if (!country_texts || !is_worth_it(country_texts->size())) return {};
    Sources sources;
    Providers providers(self, sources);
    const auto rows = plan_rows(nullptr, *country_texts, country_texts->size(), providers);
    return rows ? drawn_column(make_series, *rows, sources) : Ref();
}

}  // namespace bulk

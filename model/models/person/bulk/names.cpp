#include "bulk/names.hpp"

#include <algorithm>
#include <optional>
#include <string_view>

#include "bulk/columns.hpp"
#include "bulk/originals.hpp"
#include "bulk/signals.hpp"
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

const char* first_name_method(std::string_view gender) {
    if (gender.data() == nullptr || gender == names::non_binary.text || gender == names::ambiguous.text)
        return "first_name";
    if (gender == names::male.text) return "first_name_male";
    if (gender == names::female.text) return "first_name_female";
    return nullptr;
}

Ref drawn_column(NameDraws& names, Providers& providers) {
    const auto layout = Layout::of(call(attr(global(names::pd), names::Series), {list({names::x})}));
    if (!layout || !draw_or_go_back(providers.sources(), names)) return {};
    TextColumn column(*layout, names.rows());
    write_names(names, column);
    return column.series();
}

}  // namespace

std::optional<NameDraws> plan_first_names(const Codes& genders, const Codes& countries, std::size_t rows,
                                          Providers& providers) {
    return NameDraws::plan(&genders, countries, rows, [&](std::string_view gender, std::string_view country) {
        const char* method = first_name_method(gender);
        Providers::Provider* provider = method == nullptr ? nullptr : providers.find(country);
        return provider == nullptr ? nullptr : provider->names(method);
    });
}

std::optional<NameDraws> plan_last_names(const Codes& countries, Providers& providers) {
    return NameDraws::plan(nullptr, countries, countries.size(), [&](std::string_view, std::string_view country) {
        Providers::Provider* provider = providers.find(country);
        return provider == nullptr ? nullptr : provider->names("last_name");
    });
}

NameTexts::NameTexts(const NameDraws& names) : names_(&names) {
    for (const Way<Table>* way : names.ways())
        texts_.push_back(way != nullptr && way->known ? way->known->texts().data() : nullptr);
}

void write_names(const NameDraws& names, TextColumn& column) {
    for (std::size_t row = 0; row < names.rows(); ++row) {
        let_signals_in(row);
        if (const auto& known = names.way(row).known) {
            column.add(known->object(names.drawn(row)), known->text(names.drawn(row)));
        } else {
            column.add(names.called_object(row), names.called_text(row));
        }
    }
}

Ref first_names(PyObject* self, PyObject* genders, PyObject* countries) {
    if (!namespace_is_untouched()) return {};
    if (!has_our_method(self, names::generate_random_first_name,
                        entry<person::person_model::generate_random_first_name>)) {
        return {};
    }
    const auto gender_texts = Texts::read(genders);
    const auto country_texts = gender_texts ? Texts::read(countries) : std::nullopt;
    if (!country_texts) return {};
    const std::size_t rows = std::min(gender_texts->size(), country_texts->size());
    if (!is_worth_it(rows)) return {};
    const Codes gender_codes(*gender_texts);
    const Codes country_codes(*country_texts);
    Providers providers(self);
    auto names = plan_first_names(gender_codes, country_codes, rows, providers);
    return names ? drawn_column(*names, providers) : Ref();
}

Ref last_names(PyObject* self, PyObject* countries) {
    if (!namespace_is_untouched()) return {};
    const auto texts = Texts::read(countries);
    if (!texts || !is_worth_it(texts->size())) return {};
    const Codes codes(*texts);
    Providers providers(self);
    auto names = plan_last_names(codes, providers);
    return names ? drawn_column(*names, providers) : Ref();
}

}  // namespace bulk

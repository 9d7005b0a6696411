#pragma once

// First and last names, drawn for codes of genders and countries.

#include <cstddef>
#include <optional>
#include <string_view>

#include "bulk/codes.hpp"
#include "bulk/providers.hpp"
#include "bulk/tables.hpp"
#include "bulk/text_column.hpp"
#include "bulk/ways.hpp"

namespace bulk {

using NameDraws = Draws<Table>;

/// How each first name is made, where that is known of all.
std::optional<NameDraws> plan_first_names(const Codes& genders, const Codes& countries, std::size_t rows,
                                          Providers& providers);

/// The same for last names.
std::optional<NameDraws> plan_last_names(const Codes& countries, Providers& providers);

/// The name that was drawn for the row.
std::string_view name_text(const NameDraws& names, std::size_t row);

void write_names(const NameDraws& names, TextColumn& column);

}  // namespace bulk

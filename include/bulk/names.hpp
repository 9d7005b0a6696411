#pragma once

// First and last names, drawn for codes of genders and countries.

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

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

/// The names that were drawn.
class NameTexts {
  public:
    explicit NameTexts(const NameDraws& names);

    [[nodiscard]] std::size_t size() const { return names_->rows(); }
    std::string_view operator[](std::size_t row) const {
        const std::string_view* texts = texts_[names_->combination(row)];
        return texts != nullptr ? texts[names_->drawn(row)] : names_->called_text(row);
    }

  private:
    const NameDraws* names_;
    std::vector<const std::string_view*> texts_;  ///< by combination; null where names are called
};

void write_names(const NameDraws& names, TextColumn& column);

}  // namespace bulk

#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "bulk/texts.hpp"

namespace bulk {

/// A column of few different values: each of them once, and by row the number of its value.
class Codes {
  public:
    using Number = std::uint32_t;

    explicit Codes(const Texts& texts);

    [[nodiscard]] std::size_t size() const { return numbers_.size(); }
    Number operator[](std::size_t row) const { return numbers_[row]; }

    /// The values by number, in the order in which they appear. One without data is a missing value.
    [[nodiscard]] const std::vector<std::string_view>& values() const { return values_; }

    /// The first row of each value.
    [[nodiscard]] const std::vector<std::size_t>& first_rows() const { return first_rows_; }

  private:
    std::vector<Number> numbers_;
    std::vector<std::string_view> values_;
    std::vector<std::size_t> first_rows_;
    std::deque<std::string> texts_;  ///< of the values
};

}  // namespace bulk

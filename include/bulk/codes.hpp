#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "bulk/texts.hpp"

namespace bulk {

/// A column of few different values: each of them once, and by row the number of its value. It can be moved, not
/// copied: the values are views.
class Codes {
  public:
    using Number = std::uint32_t;

    explicit Codes(const Texts& texts);
    Codes(Codes&&) noexcept = default;
    Codes& operator=(Codes&&) noexcept = default;
    Codes(const Codes&) = delete;
    Codes& operator=(const Codes&) = delete;
    ~Codes() = default;

    /// Of positions in a list, -1 for a missing value; empty where an element that is used is no text.
    static std::optional<Codes> of_positions(PyObject* values, std::span<const std::int64_t> positions);

    [[nodiscard]] std::size_t size() const { return numbers_.size(); }
    Number operator[](std::size_t row) const { return numbers_[row]; }

    /// The values by number, in the order in which they appear. One without data is a missing value.
    [[nodiscard]] const std::vector<std::string_view>& values() const { return values_; }

    /// The first row of each value.
    [[nodiscard]] const std::vector<std::size_t>& first_rows() const { return first_rows_; }

  private:
    Codes() = default;
    Number add(std::string_view value, std::size_t row);

    std::vector<Number> numbers_;
    std::vector<std::string_view> values_;
    std::vector<std::size_t> first_rows_;
    std::deque<std::string> texts_;  ///< of the values
};

}  // namespace bulk

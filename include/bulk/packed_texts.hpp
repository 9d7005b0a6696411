#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace bulk {

/// Texts one behind the other, by number.
class PackedTexts {
  public:
    /// Gives the text its number.
    std::uint32_t add(std::string_view text) {
        bytes_ += text;
        ends_.push_back(bytes_.size());
        return static_cast<std::uint32_t>(size() - 1);
    }

    [[nodiscard]] std::size_t size() const { return ends_.size() - 1; }

    /// A view that holds until the next text is added.
    std::string_view operator[](std::size_t number) const {
        return std::string_view(bytes_).substr(ends_[number], ends_[number + 1] - ends_[number]);
    }

  private:
    std::string bytes_;
    std::vector<std::size_t> ends_{0};  ///< of the text before each, and of the last
};

}  // namespace bulk

#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

namespace bulk {

/// Finds the rows of a column that bear the same name, while rows are renamed.
class Clashes {
  public:
    /// The names are the caller's, by row, and stay readable.
    explicit Clashes(const std::vector<std::string_view>& names);

    /// Enters the row under the name that it has now.
    void add(std::uint32_t row);

    /// Forgets all the rows of the row's name; call it before any of them is renamed.
    void remove(std::uint32_t row);

    /// The rows that share their name with another, in order, as far as they have come about since the last call.
    std::vector<std::uint32_t> take();

    static constexpr std::size_t kMostRows = std::numeric_limits<std::uint32_t>::max() / 4;

  private:
    /// A place of the open-addressing table. A name that was forgotten leaves its place taken, but matching nothing.
    struct Place {
        std::uint32_t hash = 0;
        std::uint32_t first_row = 0;
        std::uint32_t count = 0;
        bool taken = false;
    };

    Place& place_of(std::uint32_t row, std::uint32_t hash);
    void grow();

    const std::vector<std::string_view>& names_;
    std::vector<Place> places_;
    std::size_t taken_ = 0;
    std::vector<std::uint32_t> found_;
};

}  // namespace bulk

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string_view>
#include <vector>

#include "bulk/streams.hpp"

namespace bulk {

/// Finds the rows of a column that bear the same name, while rows are renamed.
class Clashes {
  public:
    /// The names are the caller's, by row, and stay readable. Signals are let in where a step takes long.
    Clashes(const std::vector<std::string_view>& names, Source& source);

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
        std::uint32_t count : 31 = 0;
        bool taken : 1 = false;
    };

    /// Places of all zeros. The system clears their memory page by page when it is first used, and not at once.
    class Places {
      public:
        explicit Places(std::size_t count);

        [[nodiscard]] std::size_t size() const { return count_; }
        Place& operator[](std::size_t i) { return places_.get()[i]; }

      private:
        struct Free {
            void operator()(Place* places) const { std::free(places); }  // NOLINT(*-no-malloc): of calloc
        };

        std::size_t count_;
        std::unique_ptr<Place, Free> places_;
    };

    Place& place_of(std::uint32_t row, std::uint32_t hash);
    void note(std::uint32_t row);
    void grow();

    const std::vector<std::string_view>& names_;
    Source& source_;
    Places places_;
    std::size_t taken_ = 0;
    std::vector<std::uint64_t> found_;  ///< a bit for each row
};

}  // namespace bulk

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace bulk {

/// Counts how often each name occurs in a column whose names change in whole groups: all rows of one name at once.
class NameCounts {
  public:
    explicit NameCounts(std::size_t rows);

    void add(std::string_view name);

    /// Forgets a name and all its rows.
    void remove(std::string_view name);

    [[nodiscard]] std::size_t count(std::string_view name) const { return slots_[slot_of(name)].count; }
    [[nodiscard]] std::size_t distinct() const { return distinct_; }

  private:
    /// An open-addressing slot; an emptied one keeps its name, so that the search goes on behind it.
    struct Slot {
        std::string_view name;
        std::uint64_t hash = 0;
        std::size_t count = 0;
        bool used = false;
    };

    [[nodiscard]] std::size_t slot_of(std::string_view name) const;
    void grow();

    std::vector<Slot> slots_;
    std::size_t used_ = 0;
    std::size_t distinct_ = 0;
};

}  // namespace bulk

#include "bulk/clashes.hpp"

#include <bit>
#include <functional>
#include <utility>

namespace bulk {

namespace {

std::size_t table_size(std::size_t rows) { return std::bit_ceil(2 * rows + 16); }

}  // namespace

NameCounts::NameCounts(std::size_t rows) : slots_(table_size(rows)) {}

std::size_t NameCounts::slot_of(std::string_view name) const {
    const std::uint64_t hash = std::hash<std::string_view>{}(name);
    const std::size_t mask = slots_.size() - 1;
    std::size_t place = hash & mask;
    while (slots_[place].used && (slots_[place].hash != hash || slots_[place].name != name)) place = (place + 1) & mask;
    return place;
}

void NameCounts::add(std::string_view name) {
    Slot& slot = slots_[slot_of(name)];
    if (!slot.used) {
        slot = {name, std::hash<std::string_view>{}(name), 0, true};
        ++used_;
    }
    slot.name = name;   // the view that was here may belong to a name that is gone
    if (slot.count++ == 0) ++distinct_;
    if (2 * used_ > slots_.size()) grow();
}

void NameCounts::remove(std::string_view name) {
    Slot& slot = slots_[slot_of(name)];
    if (slot.count == 0) return;
    slot.count = 0;
    --distinct_;
}

void NameCounts::grow() {
    std::vector<Slot> before = std::exchange(slots_, std::vector<Slot>(table_size(2 * distinct_)));
    used_ = 0;
    for (const Slot& slot : before) {
        if (slot.count == 0) continue;
        slots_[slot_of(slot.name)] = slot;
        ++used_;
    }
}

}  // namespace bulk

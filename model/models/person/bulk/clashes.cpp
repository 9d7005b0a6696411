#include "bulk/clashes.hpp"

#include <algorithm>
#include <bit>
#include <functional>
#include <utility>

namespace bulk {

namespace {

std::uint32_t hash_of(std::string_view name) { return static_cast<std::uint32_t>(std::hash<std::string_view>{}(name)); }

}  // namespace

Clashes::Clashes(const std::vector<std::string_view>& names)
    : names_(names), places_(std::bit_ceil(2 * names.size() + 16)) {}

Clashes::Place& Clashes::place_of(std::uint32_t row, std::uint32_t hash) {
    const std::size_t mask = places_.size() - 1;
    std::size_t i = hash & mask;
    while (places_[i].taken) {
        const Place& place = places_[i];
        if (place.count > 0 && place.hash == hash && names_[place.first_row] == names_[row]) break;
        i = (i + 1) & mask;
    }
    return places_[i];
}

void Clashes::add(std::uint32_t row) {
    const std::uint32_t hash = hash_of(names_[row]);
    Place& place = place_of(row, hash);
    if (!place.taken) {
        place = {hash, row, 1, true};
        if (2 * ++taken_ > places_.size()) grow();
        return;
    }
    if (place.count++ == 1) found_.push_back(place.first_row);
    found_.push_back(row);
}

void Clashes::remove(std::uint32_t row) {
    Place& place = place_of(row, hash_of(names_[row]));
    place.count = 0;
}

std::vector<std::uint32_t> Clashes::take() {
    std::sort(found_.begin(), found_.end());
    return std::exchange(found_, {});
}

void Clashes::grow() {
    const auto is_live = [](const Place& place) { return place.count > 0; };
    const auto live = static_cast<std::size_t>(std::count_if(places_.begin(), places_.end(), is_live));
    const auto before = std::exchange(places_, std::vector<Place>(std::bit_ceil(4 * live + 16)));
    taken_ = 0;
    for (const Place& place : before) {
        if (place.count == 0) continue;
        place_of(place.first_row, place.hash) = place;
        ++taken_;
    }
}

}  // namespace bulk

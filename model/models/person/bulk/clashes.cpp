#include "bulk/clashes.hpp"

#include <bit>
#include <functional>
#include <new>
#include <utility>

namespace bulk {

namespace {

constexpr std::size_t kBits = 64;

std::uint32_t hash_of(std::string_view name) { return static_cast<std::uint32_t>(std::hash<std::string_view>{}(name)); }

}  // namespace

Clashes::Places::Places(std::size_t count)
    // NOLINTNEXTLINE(*-no-malloc): containers would write the zeros themselves
    : count_(count), places_(static_cast<Place*>(std::calloc(count, sizeof(Place)))) {
    if (!places_) throw std::bad_alloc();
}

Clashes::Clashes(const std::vector<std::string_view>& names, Source& source)
    : names_(names),
      source_(source),
      places_(std::bit_ceil(names.size() + names.size() / 2 + 16)),
      found_(names.size() / kBits + 1) {}

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
        if (4 * ++taken_ > 3 * places_.size()) grow();
        return;
    }
    if (place.count++ == 1) note(place.first_row);
    note(row);
}

void Clashes::note(std::uint32_t row) { found_[row / kBits] |= std::uint64_t{1} << row % kBits; }

void Clashes::remove(std::uint32_t row) {
    Place& place = place_of(row, hash_of(names_[row]));
    place.count = 0;
}

std::vector<std::uint32_t> Clashes::take() {
    std::vector<std::uint32_t> rows;
    for (std::size_t i = 0; i < found_.size(); ++i) {
        for (std::uint64_t bits = std::exchange(found_[i], 0); bits != 0; bits &= bits - 1)
            rows.push_back(static_cast<std::uint32_t>(i * kBits) + static_cast<std::uint32_t>(std::countr_zero(bits)));
    }
    return rows;
}

void Clashes::grow() {
    Places before = std::exchange(places_, Places(2 * places_.size()));
    taken_ = 0;
    for (std::size_t i = 0; i < before.size(); ++i) {
        source_.breathe();
        const Place& place = before[i];
        if (place.count == 0) continue;
        place_of(place.first_row, place.hash) = place;
        ++taken_;
    }
}

}  // namespace bulk

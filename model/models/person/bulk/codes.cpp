#include "bulk/codes.hpp"

#include <optional>
#include <unordered_map>

#include "bulk/signals.hpp"

namespace bulk {

Codes::Number Codes::add(std::string_view value, std::size_t row) {
    values_.push_back(value.data() == nullptr ? value : texts_.emplace_back(value));
    first_rows_.push_back(row);
    return static_cast<Number>(values_.size() - 1);
}

std::optional<Codes> Codes::of_positions(PyObject* values, std::span<const std::int64_t> positions) {
    Codes codes;
    // By position and one: the first is that of the missing value.
    std::vector<std::optional<Number>> number_of(static_cast<std::size_t>(PyList_GET_SIZE(values)) + 1);
    codes.numbers_.reserve(positions.size());
    for (std::size_t row = 0; row < positions.size(); ++row) {
        const auto place = static_cast<std::size_t>(positions[row] + 1);
        if (place >= number_of.size()) return std::nullopt;
        auto& number = number_of[place];
        if (!number) {
            const auto text =
                place == 0 ? std::optional(std::string_view()) : utf8(PyList_GET_ITEM(values, positions[row]));
            if (!text) return std::nullopt;
            number = codes.add(*text, row);
        }
        codes.numbers_.push_back(*number);
    }
    return codes;
}

Codes::Codes(const Texts& texts) {
    std::unordered_map<std::string_view, Number> number_of;
    std::optional<Number> missing;  // the number of the missing value, where there is one
    numbers_.reserve(texts.size());
    for (std::size_t row = 0; row < texts.size(); ++row) {
        let_signals_in(row);
        const std::string_view text = texts[row];
        if (texts.is_missing(row)) {
            if (!missing) missing = add({}, row);
            numbers_.push_back(*missing);
        } else if (row > 0 && values_[numbers_.back()].data() != nullptr && values_[numbers_.back()] == text) {
            numbers_.push_back(numbers_.back());
        } else if (const auto found = number_of.find(text); found != number_of.end()) {
            numbers_.push_back(found->second);
        } else {
            numbers_.push_back(add(text, row));
            number_of.emplace(values_.back(), numbers_.back());
        }
    }
}

}  // namespace bulk

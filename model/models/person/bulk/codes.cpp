#include "bulk/codes.hpp"

#include <optional>
#include <unordered_map>

#include "bulk/signals.hpp"

namespace bulk {

Codes::Codes(const Texts& texts) {
    std::unordered_map<std::string_view, Number> number_of;
    std::optional<Number> missing;  // the number of the missing value, where there is one
    const auto add = [this](std::string_view value, std::size_t row) {
        values_.push_back(value);
        first_rows_.push_back(row);
        return static_cast<Number>(values_.size() - 1);
    };
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
            numbers_.push_back(add(texts_.emplace_back(text), row));
            number_of.emplace(values_.back(), numbers_.back());
        }
    }
}

}  // namespace bulk

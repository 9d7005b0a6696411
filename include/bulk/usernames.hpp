#pragma once

// Usernames: a separator and numbers around names, distinct while their case is still mixed.

#include <Python.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bulk/streams.hpp"
#include "bulk/text_column.hpp"
#include "bulk/texts.hpp"
#include "python/ref.hpp"

namespace bulk {

/// What usernames are drawn from.
struct UsernameSources {
    NumpyChoice separators;
    python::Ref random;

    UsernameSources();

    /// Whether it is all in place.
    [[nodiscard]] bool apply() const { return separators.applies() && random; }
};

class Usernames {
  public:
    explicit Usernames(UsernameSources& drawn_from) : separators_(drawn_from.separators), source_(drawn_from.random) {}

    /// Draws a username for each row: the names have a `size()`, and a `first` and a `last` of each row. A NUL in one
    /// would end a text early for some of pandas' hash tables.
    template <class Names>
    void draw(const Names& names) {
        draw_separators(names.size());
        source_.take_over();
        join(names);
        settle_clashes();
        source_.hand_back();
    }

    /// Puts them in lower case, as pandas does it in a column of that layout.
    void lower(const Layout& layout);

    [[nodiscard]] std::size_t size() const { return usernames_.size(); }
    std::string_view operator[](std::size_t row) const { return usernames_[row]; }

  private:
    static constexpr std::array<std::string_view, 4> kSeparators{"", ".", "-", "_"};
    static constexpr std::size_t kUsualLength = 20;
    static constexpr std::uint32_t kNumbers = 101;

    void draw_separators(std::size_t rows);
    void settle_clashes();
    void append_number(std::uint32_t number, std::string& text) const;
    void append_without_blanks(std::string_view text);

    template <class Names>
    void join(const Names& names) {
        data_.reserve(names.size() * kUsualLength);
        std::vector<std::size_t> ends;
        ends.reserve(names.size());
        for (std::size_t row = 0; row < names.size(); ++row) {
            append_without_blanks(names.first(row));
            data_ += kSeparators[drawn_[row]];
            append_without_blanks(names.last(row));
            const std::uint32_t number = source_.engine().below(kNumbers);
            if (source_.engine().below(2) == 1) append_number(number, data_);
            ends.push_back(data_.size());
            source_.breathe();
        }
        // The views come last, when the text does not move any more.
        usernames_.reserve(names.size());
        for (std::size_t start = 0; const std::size_t end : ends) {
            usernames_.emplace_back(data_.data() + start, end - start);
            start = end;
        }
    }

    NumpyChoice& separators_;
    Source source_;
    std::vector<std::uint8_t> drawn_;
    std::string data_;
    std::deque<std::string> renamed_;
    std::vector<std::string_view> usernames_;
    std::optional<Texts> lowered_;
};

}  // namespace bulk

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
    explicit Usernames(UsernameSources& drawn_from)
        : separators_(drawn_from.separators), source_(alone_.of(drawn_from.random)) {}

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
    static constexpr std::array<char, 4> kSeparators{'\0', '.', '-', '_'};  ///< the first is none
    static constexpr std::size_t kAdded = 4;  ///< a separator and a number of three digits
    static constexpr std::size_t kUsualLength = 20;
    static constexpr std::uint32_t kNumbers = 101;

    void draw_separators(std::size_t rows);
    void settle_clashes();
    static char* write_number(std::uint32_t number, char* to);
    char* room_for(std::size_t bytes);

    /// Copies the text but for its blanks; the end of the copy. Among the bits are those of each character.
    static char* copy_without_blanks(std::string_view text, char* to, unsigned char& bits) {
        for (const char c : text) {
            *to = c;
            to += c == ' ' ? 0 : 1;
            bits |= static_cast<unsigned char>(c);
        }
        return to;
    }

    template <class Names>
    void join(const Names& names) {
        data_.resize(names.size() * kUsualLength);
        std::vector<std::size_t> ends;
        ends.reserve(names.size());
        for (std::size_t row = 0; row < names.size(); ++row) {
            const std::string_view first = names.first(row);
            const std::string_view last = names.last(row);
            unsigned char bits = 0;
            char* end = copy_without_blanks(first, room_for(first.size() + last.size() + kAdded), bits);
            *end = kSeparators[drawn_[row]];
            end = copy_without_blanks(last, end + (drawn_[row] == 0 ? 0 : 1), bits);
            char* behind_number = write_number(source_.engine().below(kNumbers), end);
            if (source_.engine().below(2) == 1) end = behind_number;
            if (bits >= 0x80) beyond_ascii_.push_back(static_cast<std::uint32_t>(row));
            used_ = static_cast<std::size_t>(end - data_.data());
            ends.push_back(used_);
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
    Sources alone_;
    Source& source_;
    std::vector<std::uint8_t> drawn_;
    std::string data_;                         ///< one after the other
    std::size_t used_ = 0;                     ///< of it
    std::vector<std::uint32_t> beyond_ascii_;  ///< the rows with other letters
    std::deque<std::string> renamed_;
    std::vector<std::string_view> usernames_;
    std::optional<Texts> lowered_;
};

}  // namespace bulk

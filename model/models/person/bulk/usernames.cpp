#include "bulk/usernames.hpp"

#include <charconv>

#include "bulk/clashes.hpp"
#include "bulk/signals.hpp"
#include "person/names.hpp"
#include "python/call.hpp"
#include "python/error.hpp"
#include "python/module.hpp"

namespace bulk {

using namespace python;
namespace names = person::names;

namespace {

bool is_ascii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Whether all characters are below U+0180, without U+0130: Arrow and Python know the same small letters for them.
bool has_common_letters(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < 0x80) continue;
        const bool below_0180 = byte >= 0xc2 && byte <= 0xc5;
        if (!below_0180 || (byte == 0xc4 && static_cast<unsigned char>(text[i + 1]) == 0xb0)) return false;
        ++i;
    }
    return true;
}

}  // namespace

UsernameSources::UsernameSources()
    : separators(global(names::np)), random(module_random(global(names::random), {"randint"})) {}

void Usernames::draw_separators(std::size_t rows) {
    drawn_.reserve(rows);
    NumpyChoice::Held held(separators_);
    for (std::size_t row = 0; row < rows; ++row) {
        held.let_signals_in(row);
        drawn_.push_back(static_cast<std::uint8_t>(separators_.below(kSeparators.size())));
    }
}

void Usernames::append_number(std::uint32_t number, std::string& text) const {
    std::array<char, kAdded> digits{};
    const auto [end, error] = std::to_chars(digits.begin(), digits.end(), number);
    text.append(digits.begin(), end);
}

void Usernames::append_without_blanks(std::string_view text) {
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t blank = std::min(text.find(' ', start), text.size());
        data_.append(text, start, blank - start);
        start = blank + 1;
    }
}

/// Every copy of a username that occurs more than once gets a number of its own, until all are distinct.
void Usernames::settle_clashes() {
    Clashes clashes(usernames_, source_);
    for (std::uint32_t row = 0; row < usernames_.size(); ++row) {
        clashes.add(row);
        source_.breathe();
    }
    for (auto rows = clashes.take(); !rows.empty(); rows = clashes.take()) {
        for (const std::uint32_t row : rows) {
            clashes.remove(row);
            source_.breathe();
        }
        for (const std::uint32_t row : rows) {
            std::string& renamed = renamed_.emplace_back(usernames_[row]);
            append_number(source_.engine().below(kNumbers), renamed);
            usernames_[row] = renamed;
            source_.breathe();
        }
        for (const std::uint32_t row : rows) {
            clashes.add(row);
            source_.breathe();
        }
    }
}

void Usernames::lower_row(std::size_t row) {
    const std::string_view username = usernames_[row];
    if (!is_ascii(username)) {
        usernames_[row] = renamed_.emplace_back(lower_case(username));
        return;
    }
    for (std::size_t i = 0; i < username.size(); ++i) {
        char& c = const_cast<char*>(username.data())[i];  // NOLINT(*-const-cast): the text is in this object
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
}

void Usernames::lower(const Layout& layout) {
    if (layout.kind != Layout::Kind::arrow || std::ranges::all_of(usernames_, has_common_letters)) {
        for (std::size_t row = 0; row < size(); ++row) {
            let_signals_in(row);
            lower_row(row);
        }
        return;
    }
    TextColumn mixed(layout, size());
    for (const std::string_view username : usernames_) mixed.add(username);
    lowered_ = Texts::read(call_method(attr(mixed.series(), names::str), names::lower));
    if (!lowered_) raise(PyExc_SystemError, "usernames are no texts");
    for (std::size_t row = 0; row < size(); ++row) usernames_[row] = (*lowered_)[row];
}

}  // namespace bulk

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

/// The small letters of common ones, which do not depend on the letters around.
class SmallLetters {
  public:
    SmallLetters() {
        for (std::size_t i = 0; i < small_.size(); ++i) small_[i] = lower_case(letter(i));
    }

    /// `text.lower()` but for the letters of ASCII, which stay as they are.
    [[nodiscard]] std::string of(std::string_view text) const {
        std::string lower;
        for (std::size_t i = 0; i < text.size(); ++i) {
            const auto byte = static_cast<unsigned char>(text[i]);
            if (byte < 0x80)
                lower += text[i];
            else
                lower += small_[64 * (byte - kFirstLead) + (static_cast<unsigned char>(text[++i]) - kFirstTrail)];
        }
        return lower;
    }

  private:
    static constexpr unsigned char kFirstLead = 0xc2;  // of U+0080
    static constexpr unsigned char kFirstTrail = 0x80;

    static std::string letter(std::size_t i) {
        return {static_cast<char>(kFirstLead + i / 64), static_cast<char>(kFirstTrail + i % 64)};
    }

    std::array<std::string, 256> small_;
};

/// Puts the letters of ASCII in lower case.
void lower_ascii(std::string& text) {
    for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
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

char* Usernames::write_number(std::uint32_t number, char* to) { return std::to_chars(to, to + kAdded, number).ptr; }

char* Usernames::room_for(std::size_t bytes) {
    if (bytes > data_.size() - used_) data_.resize(2 * data_.size() + bytes);
    return data_.data() + used_;
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
            std::array<char, kAdded> number{};
            const char* const end = write_number(source_.engine().below(kNumbers), number.data());
            std::string& renamed = renamed_.emplace_back(usernames_[row]);
            renamed.append(number.data(), static_cast<std::size_t>(end - number.data()));
            usernames_[row] = renamed;
            source_.breathe();
        }
        for (const std::uint32_t row : rows) {
            clashes.add(row);
            source_.breathe();
        }
    }
}

void Usernames::lower(const Layout& layout) {
    const bool are_common =
        std::ranges::all_of(beyond_ascii_, [this](std::uint32_t row) { return has_common_letters(usernames_[row]); });
    if (layout.kind != Layout::Kind::arrow || are_common) {
        static const auto* const small_letters = new SmallLetters;
        for (const std::uint32_t row : beyond_ascii_) {
            let_signals_in(row);
            std::string_view& username = usernames_[row];
            username = renamed_.emplace_back(has_common_letters(username) ? small_letters->of(username)
                                                                          : lower_case(username));
        }
        lower_ascii(data_);
        for (std::string& renamed : renamed_) lower_ascii(renamed);
        return;
    }
    TextColumn mixed(layout, size());
    for (const std::string_view username : usernames_) mixed.add(username);
    lowered_ = Texts::read(call_method(attr(mixed.series(), names::str), names::lower));
    if (!lowered_) raise(PyExc_SystemError, "usernames are no texts");
    for (std::size_t row = 0; row < size(); ++row) usernames_[row] = (*lowered_)[row];
}

}  // namespace bulk

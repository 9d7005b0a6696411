#pragma once

// Domain names as Faker makes them: a word, a dot, and a top-level domain. In most locales the word is made of the
// first one or two of a company's name or of a last name, made fit for an address; every part of the company's name is
// drawn, though only its first words show. In one locale the word has formats of its own.

#include <Python.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "bulk/finished_words.hpp"
#include "bulk/mersenne.hpp"
#include "bulk/packed_texts.hpp"
#include "bulk/pieces.hpp"
#include "bulk/tables.hpp"

namespace bulk {

class Domains {
  public:
    /// A domain name that is drawn but whose word has yet to be finished.
    struct Drawn {
        std::uint32_t word = 0;
        std::uint32_t top_level = 0;

        Drawn() = default;
        explicit Drawn(std::uint32_t number, std::uint32_t top = 0) : word(number), top_level(top) {}
        explicit operator std::uint32_t() const { return word; }
    };

    /// Empty where a part of the way is not known.
    static std::optional<Domains> read(const KnownFaker& faker);

    Drawn draw(Source& source);

    /// Whether drawing calls methods of Faker's.
    [[nodiscard]] bool calls_methods() const;

    /// Leaves the tables as Faker would.
    void leave_as_drawn();

    /// Finishes the words that have been drawn; runs Faker's own code, so no source may be taken over.
    void finish_words();

    /// Appends the finished name.
    void append(const Drawn& drawn, std::string& text) const;

  private:
    bool read_first_words(const KnownFaker& faker, PyObject* domain_name);
    bool read_company_formats(const KnownFaker& faker);
    bool read_single_format(const KnownFaker& faker, const char* token);
    bool read_words_with_formats(const KnownFaker& faker, PyObject* domain_name);
    bool read_refused_words();
    bool read_formats(FormatReader& reader, const Table& texts, bool with_placeholders);
    void add_format(Format pieces);

    /// A format with the words that it has given.
    struct WordFormat {
        Format pieces;
        std::vector<std::uint32_t> words;  ///< by the first piece's element, where that alone decides; else empty
    };

    std::uint32_t draw_first_words(Source& source);
    std::uint32_t draw_whole_word(Source& source);
    std::uint32_t words_of_element(WordFormat& format, Table::Drawn element);

    python::Ref provider_;  ///< of the internet's names
    std::optional<Table> top_levels_;
    std::optional<Table> format_texts_;  ///< empty where there is but one format
    std::vector<WordFormat> formats_;
    std::deque<std::pair<std::string, Table>> tables_;  ///< what the formats draw from
    FinishedWords* finisher_ = nullptr;                 ///< null where words are drawn finished
    std::unordered_set<std::string> refused_;           ///< finished words that are drawn again
    std::size_t words_in_domain_ = 1;                   ///< so many first ones of what is drawn
    PackedTexts words_;
    PackedTexts finished_;
    bool is_lower_case_ = false;  ///< all that is finished
    std::string word_;
    std::string buffer_;
};

}  // namespace bulk

#pragma once

// Domain names as Faker makes them: the first word of a company's name, made fit for an address, a dot, and a top-level
// domain. Every part of the company's name is drawn, though only the first word shows.

#include <Python.h>

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "bulk/mersenne.hpp"
#include "bulk/tables.hpp"

namespace bulk {

class Domains {
  public:
    /// A domain name that is drawn but whose word has yet to be finished.
    struct Drawn {
        std::size_t word;
        std::size_t top_level;
    };

    /// Empty where a part of the way is not known.
    static std::optional<Domains> read(const KnownFaker& faker);

    Drawn draw(Mersenne& source);

    /// Finishes the words that have been drawn; runs Faker's own code, so no source may be taken over.
    void finish_words();

    /// Appends the finished name in lower case.
    void append(const Drawn& drawn, std::string& text) const;

  private:
    /// A literal text, then what is drawn from a table.
    struct Piece {
        std::string literal;
        const Table* table;
    };
    struct Format {
        std::vector<Piece> pieces;
        std::string rest;
    };

    bool read_formats(const KnownFaker& faker, PyObject* company_provider);
    bool read_format(const KnownFaker& faker, PyObject* tokens, std::string_view text);
    const Table* token_table(const KnownFaker& faker, const std::string& token);
    std::size_t word_number(std::string word);
    python::Ref finished_word(const std::string& word) const;

    std::optional<Table> format_texts_;
    std::optional<Table> top_levels_;
    std::vector<Format> formats_;
    std::deque<std::pair<std::string, Table>> tables_;   ///< by token
    python::Ref provider_;      ///< of the internet's names
    python::Ref domain_word_;   ///< the function that finishes a word
    std::unordered_map<std::string, std::size_t> numbers_;
    std::vector<const std::string*> words_;
    std::vector<std::string> finished_;
};

}  // namespace bulk

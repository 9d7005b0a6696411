#pragma once

// Formats such as "{{company_type}} {{last_name}}", as Faker fills them: piece by piece, from left to right.

#include <Python.h>

#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bulk/streams.hpp"
#include "bulk/tables.hpp"

namespace bulk {

/// A part of a format.
struct Piece {
    enum class Kind {
        literal,
        element,  ///< of a table
        acronym,  ///< two to four letters, in upper case
        digit,
        letter,
        called,  ///< what a method of Faker's gives
    };

    Kind kind;
    std::string text;        ///< of a literal
    Table* table = nullptr;  ///< of an element
    python::Ref method{};    ///< to be called

    /// What the piece comes to this time; the view holds until the next draw into the same buffer. The source is taken
    /// over, but not while a method is called, which may let signals and other threads in. Throws NoText where that
    /// gives none.
    std::string_view draw(Source& source, std::string& buffer) const;
};

using Format = std::vector<Piece>;

/// Reads formats whose every part is known.
class FormatReader {
  public:
    explicit FormatReader(const KnownFaker& faker) : faker_(faker) {}

    /// A format with `{{tokens}}`, each a method of the generator; empty where one is not known.
    std::optional<Format> tokens(PyObject* text);

    /// A format in which "#" is a digit and "?" a letter; empty where it is not that simple.
    [[nodiscard]] std::optional<Format> placeholders(std::string_view text) const;

    /// The tables that the pieces point to, for whoever keeps them.
    std::deque<std::pair<std::string, Table>> take_tables() { return std::move(tables_); }

  private:
    std::optional<Piece> token(const std::string& name);
    [[nodiscard]] bool is_acronym(const std::string& name) const;

    const KnownFaker& faker_;
    std::deque<std::pair<std::string, Table>> tables_;  ///< by token
};

/// `generator.format` and `generator.parse` are the class's own, so that a token is a call of the generator's
/// attribute.
bool formats_plainly(PyObject* generator);

}  // namespace bulk

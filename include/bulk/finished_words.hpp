#pragma once

#include <Python.h>

#include <string>
#include <string_view>
#include <unordered_map>

#include "python/ref.hpp"

namespace bulk {

/// How words of visible ASCII characters are finished.
enum class AsciiWords {
    slugged,  ///< by the slug's rules alone
    joined,   ///< likewise, after the blanks between them were left out
    called,   ///< by Faker's code, as others are
};

/// First words of companies' names and the like, made fit for an address by Faker's own code. That takes longer than
/// all the rest of a row, so each name in them goes through it once in the life of the process: what stands between
/// dashes is finished by itself, as dashes stay where they are.
class FinishedWords {
  public:
    /// Those of this provider of the internet's names by its method `domain_word`, which is one of Faker's: shared by
    /// all with the same replacements. Null where a word goes through anything that is not Faker's own.
    static FinishedWords* of(PyObject* provider, PyObject* domain_word, AsciiWords ascii);

    /// The finished words; runs Faker's code where a part of them is new and not plain.
    std::string finish(PyObject* provider, const std::string& words);

  private:
    FinishedWords(python::Ref replacements, python::Ref domain_word, AsciiWords ascii);

    [[nodiscard]] bool is_plain(std::string_view words) const;
    const std::string& finish_part(PyObject* provider, std::string part);

    python::Ref replacements_;  ///< kept, so that no other table can take its place
    python::Ref domain_word_;
    AsciiWords ascii_;  ///< where no replacement concerns them
    std::unordered_map<std::string, std::string> finished_;
};

/// What a slug is made of, for a word of visible ASCII characters: letters in lower case, digits, underscores, and a
/// single dash for each run of dashes.
std::string ascii_slug(const std::string& word);

/// Whether Faker makes slugs by its own rules.
bool slugs_plainly();

}  // namespace bulk

#pragma once

#include <Python.h>

#include <string>
#include <unordered_map>

#include "python/ref.hpp"

namespace bulk {

/// First words of company names, made fit for an address by Faker's own code: each once in the life of the process, for
/// it takes longer than all the rest of a row. Words of visible ASCII characters need no more than the slug's rules.
class FinishedWords {
  public:
    /// Those of this provider of the internet's names, whose method `domain_word` is Faker's base one: shared by all
    /// with the same replacements. Null where a word goes through anything that is not Faker's own.
    static FinishedWords* of(PyObject* provider, PyObject* domain_word);

    /// The finished word; runs Faker's code where the word is new and not plain.
    std::string finish(PyObject* provider, const std::string& word);

  private:
    FinishedWords(python::Ref replacements, python::Ref domain_word);

    python::Ref replacements_;  ///< kept, so that no other table can take its place
    python::Ref domain_word_;
    bool keeps_ascii_;  ///< no replacement concerns a word of visible ASCII characters
    std::unordered_map<std::string, std::string> finished_;
};

/// What a slug is made of, for a word of visible ASCII characters: letters in lower case, digits, underscores, and a
/// single dash for each run of dashes.
std::string ascii_slug(const std::string& word);

/// Whether Faker makes slugs by its own rules.
bool slugs_plainly();

}  // namespace bulk

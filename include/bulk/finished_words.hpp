#pragma once

#include <Python.h>

#include <array>
#include <string>
#include <unordered_map>

#include "python/ref.hpp"

namespace bulk {

/// First words of company names, made fit for an address by Faker's own code: each once in the life of the process, for
/// it takes longer than all the rest of a row. Words of visible ASCII characters need no more than the slug's rules.
class FinishedWords {
  public:
    /// Those of this provider of the internet's names, whose method `domain_word` is Faker's base one. They are shared by
    /// all providers that finish words with the very same objects.
    static FinishedWords& of(PyObject* provider, PyObject* domain_word);

    /// The finished word; runs Faker's code where the word is new and not plain.
    std::string finish(PyObject* provider, const std::string& word);

  private:
    /// The functions and the table that a word goes through; kept, so that no other object can take their place.
    static constexpr std::size_t kParts = 5;
    using Parts = std::array<python::Ref, kParts>;

    explicit FinishedWords(Parts parts);

    static Parts parts_of(PyObject* provider, PyObject* domain_word);

    Parts parts_;
    bool keeps_ascii_;   ///< nothing but the slug's own rules changes a word of visible ASCII characters
    std::unordered_map<std::string, std::string> finished_;
};

/// What a slug is made of, for a word of visible ASCII characters: letters in lower case, digits, underscores, and a
/// single dash for each run of dashes.
std::string ascii_slug(const std::string& word);

}  // namespace bulk

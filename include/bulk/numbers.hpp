#pragma once

// Passwords and telephone numbers: nothing but chance and a template.

#include <Python.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "bulk/streams.hpp"
#include "bulk/text_column.hpp"
#include "bulk/texts.hpp"
#include "python/ref.hpp"

namespace bulk {

/// What a model's passwords are drawn from.
class Passwords {
  public:
    /// The bounds of `randint`, as a lowest length and how many lengths there are.
    struct Lengths {
        std::uint32_t lowest;
        std::uint32_t count;
    };

    /// Empty where single calls must make them.
    static std::optional<Passwords> read(PyObject* self);

    [[nodiscard]] PyObject* random() const { return random_; }

    /// The source is that of `random()`; it stays taken over.
    void draw(Source& source, std::size_t rows, TextColumn& column) const;

  private:
    Passwords(python::Ref random, Lengths lengths, std::string characters)
        : random_(std::move(random)), lengths_(lengths), characters_(std::move(characters)) {}

    python::Ref random_;
    Lengths lengths_;
    std::string characters_;
};

/// What telephone numbers of one template are drawn from.
class PhoneNumbers {
  public:
    /// Empty where single calls must make them.
    static std::optional<PhoneNumbers> read(PyObject* number_format);

    [[nodiscard]] PyObject* random() const { return random_; }

    /// Draws a number for each row that is not flagged as missing. The source is that of `random()`; it stays taken
    /// over.
    void draw(Source& source, std::size_t rows, const Flags* missing, PyObject* no_number, TextColumn& column) const;

  private:
    PhoneNumbers(python::Ref random, std::string format, std::vector<std::size_t> places)
        : random_(std::move(random)), format_(std::move(format)), places_(std::move(places)) {}

    python::Ref random_;
    std::string format_;
    std::vector<std::size_t> places_;
};

}  // namespace bulk

#pragma once

#include <Python.h>

#include <array>
#include <cstddef>
#include <optional>

#include "python/ref.hpp"

namespace bulk {

/// What a person has, in the order in which the columns are made.
enum class Attribute : unsigned char {
    gender,
    title,
    country,
    firstname,
    lastname,
    fullname,
    email,
    username,
    password,
    mobile_number,
    home_number,
    work_number,
};

inline constexpr std::size_t kAttributes = 12;

constexpr std::size_t index_of(Attribute attribute) { return static_cast<std::size_t>(attribute); }

/// The columns of a model's attributes, each a text of its own.
class Labels {
  public:
    /// Empty where there are none, or they are anything else.
    static std::optional<Labels> read(PyObject* self);

    [[nodiscard]] bool has(Attribute attribute) const { return static_cast<bool>(columns_[index_of(attribute)]); }
    [[nodiscard]] PyObject* column(Attribute attribute) const { return columns_[index_of(attribute)]; }

  private:
    std::array<python::Ref, kAttributes> columns_;
};

}  // namespace bulk

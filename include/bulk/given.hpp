#pragma once

#include <Python.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "bulk/codes.hpp"
#include "python/ref.hpp"

namespace bulk {

/// The genders or countries of rows to make: a Series, or what a hidden model of the host has drawn, which it keeps as
/// positions among its values and can make a Series of.
class Given {
  public:
    [[nodiscard]] static Given series(python::Ref series) { return {std::move(series), {}}; }
    [[nodiscard]] static Given drawn(python::Ref drawn) { return {{}, std::move(drawn)}; }

    /// What the model's `sample` would give, where the host offers that in such a form; else empty. (docs/contract.md)
    [[nodiscard]] static std::optional<Given> draw(PyObject* model, PyObject* rows, PyObject* produce_nans);

    /// All rows as a Series.
    [[nodiscard]] python::Ref series() const;

    /// The rows at these positions, with a new index.
    [[nodiscard]] python::Ref few(const std::vector<std::size_t>& positions) const;

    /// The rows, counted from 0; empty for anything but so many texts and missing values.
    [[nodiscard]] std::optional<Codes> codes(std::size_t rows) const;

    /// What decides how pandas holds them.
    [[nodiscard]] std::string form() const;

  private:
    Given(python::Ref series, python::Ref drawn) : series_(std::move(series)), drawn_(std::move(drawn)) {}

    python::Ref series_;
    python::Ref drawn_;
};

}  // namespace bulk

#pragma once

#include <Python.h>

#include <cstddef>

#include "python/error.hpp"

namespace bulk {

/// Lets pending signals be handled every so many rows. Only where no source is taken over: a handler may draw.
inline void let_signals_in(std::size_t row) {
    constexpr std::size_t kRowsBetween = 1U << 16U;   // some milliseconds
    if (row % kRowsBetween == kRowsBetween - 1) python::require(PyErr_CheckSignals());
}

}  // namespace bulk

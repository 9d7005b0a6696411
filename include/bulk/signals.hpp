#pragma once

#include <Python.h>

#include <cstddef>

#include "python/error.hpp"

namespace bulk {

/// Lets pending signals be handled, and other threads run. Only where no source is taken over: either may draw.
inline void let_others_in() {
    PyEval_RestoreThread(PyEval_SaveThread());
    python::require(PyErr_CheckSignals());
}

/// The same every so many rows.
inline void let_signals_in(std::size_t row) {
    constexpr std::size_t kRowsBetween = 1U << 16U;  // some milliseconds
    if (row % kRowsBetween == kRowsBetween - 1) let_others_in();
}

}  // namespace bulk

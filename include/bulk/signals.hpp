#pragma once

#include <Python.h>

#include <chrono>
#include <cstddef>
#include <thread>

#include "python/error.hpp"

namespace bulk {

/// Lets pending signals be handled, and other threads run, for a while where one is given. Only where no source is
/// taken over: either may draw.
inline void let_others_in(std::chrono::microseconds pause = {}) {
    PyThreadState* state = PyEval_SaveThread();
    std::this_thread::sleep_for(pause);
    PyEval_RestoreThread(state);
    python::require(PyErr_CheckSignals());
}

/// Whether so many rows have gone by.
constexpr bool is_time_for_signals(std::size_t row) {
    constexpr std::size_t kRowsBetween = 1U << 16U;  // some milliseconds
    return row % kRowsBetween == kRowsBetween - 1;
}

/// Lets them in every so many rows.
inline void let_signals_in(std::size_t row) {
    if (is_time_for_signals(row)) let_others_in();
}

}  // namespace bulk

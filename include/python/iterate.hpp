#pragma once

#include <Python.h>

#include <cstddef>
#include <utility>

#include "python/error.hpp"
#include "python/ref.hpp"

namespace python {

/// Lets a range-for walk any Python iterable: `for (Ref value : iterate(values))`.
class Iteration {
  public:
    explicit Iteration(PyObject* iterable) : iterator_(owned(PyObject_GetIter(iterable))) {}

    struct End {};

    class Cursor {
      public:
        explicit Cursor(PyObject* iterator) : iterator_(iterator) { advance(); }
        Ref operator*() { return std::move(value_); }
        Cursor& operator++() {
            advance();
            return *this;
        }
        bool operator!=(End /*end*/) const { return !done_; }

      private:
        void advance() {
            if (++passed_ % kBetweenSignals == 0) require(PyErr_CheckSignals());
            value_ = Ref::steal(PyIter_Next(iterator_));
            done_ = !value_;
            if (done_ && PyErr_Occurred() != nullptr) throw PythonError{};
        }

        // A loop that never comes back to the interpreter must still let itself be interrupted.
        static constexpr std::size_t kBetweenSignals = 1024;

        PyObject* iterator_;
        Ref value_;
        std::size_t passed_ = 0;
        bool done_ = false;
    };

    [[nodiscard]] Cursor begin() const { return Cursor(iterator_); }
    [[nodiscard]] static End end() { return {}; }

  private:
    Ref iterator_;
};

inline Iteration iterate(PyObject* iterable) { return Iteration(iterable); }

}  // namespace python

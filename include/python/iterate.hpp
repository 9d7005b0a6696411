#pragma once

#include <Python.h>

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
            value_ = Ref::steal(PyIter_Next(iterator_));
            done_ = !value_;
            if (done_ && PyErr_Occurred() != nullptr) throw PythonError{};
        }

        PyObject* iterator_;
        Ref value_;
        bool done_ = false;
    };

    [[nodiscard]] Cursor begin() const { return Cursor(iterator_); }
    [[nodiscard]] static End end() { return {}; }

  private:
    Ref iterator_;
};

inline Iteration iterate(PyObject* iterable) { return Iteration(iterable); }

}  // namespace python

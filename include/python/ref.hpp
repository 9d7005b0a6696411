#pragma once

// Ownership of Python objects.
//
//   1. A Ref owns exactly one reference, or is empty. It can be moved, not copied; share() makes a second owner.
//   2. A function that gives an object away returns a Ref. A parameter that only looks is a plain PyObject*.
//   3. A plain PyObject* never outlives the Ref (or the container) it was taken from; so none is ever initialised from
//   a
//      temporary Ref.
//   4. Only steal() and release() cross the border to the C interface's own conventions.

#include <Python.h>

#include <utility>

namespace python {

class Ref {
  public:
    Ref() noexcept = default;
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Ref& operator=(Ref&& other) noexcept {
        Ref(std::move(other)).swap(*this);
        return *this;
    }
    Ref(const Ref&) = delete;
    Ref& operator=(const Ref&) = delete;
    ~Ref() { Py_XDECREF(object_); }

    /// Takes over a reference that the caller owns.
    [[nodiscard]] static Ref steal(PyObject* object) noexcept { return Ref(object); }

    /// Adds an owner to an object that somebody else owns.
    [[nodiscard]] static Ref share(PyObject* object) noexcept { return Ref(Py_XNewRef(object)); }

    [[nodiscard]] PyObject* get() const noexcept { return object_; }
    [[nodiscard]] PyObject* release() noexcept { return std::exchange(object_, nullptr); }
    operator PyObject*() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    void swap(Ref& other) noexcept { std::swap(object_, other.object_); }

  private:
    explicit Ref(PyObject* object) noexcept : object_(object) {}

    PyObject* object_ = nullptr;
};

static_assert(sizeof(Ref) == sizeof(PyObject*));

}  // namespace python

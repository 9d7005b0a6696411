#pragma once

#include <Python.h>

namespace python {

/// An identifier or text of the source as one interned Python string, made when the module is executed.
struct Name {
    const char* text = nullptr;
    PyObject* object = nullptr;

    operator PyObject*() const noexcept { return object; }
};

}  // namespace python

#pragma once

#include <Python.h>

namespace python {

/// A builtin that is looked up once, when the module is executed, and used as it was then.
struct Builtin {
    const char* name = nullptr;
    PyObject* object = nullptr;

    operator PyObject*() const noexcept { return object; }
};

#define PYTHON_BUILTINS(X) \
    X(property)            \
    X(staticmethod)        \
    X(super)               \
    X(object)              \
    X(ValueError)          \
    X(range)               \
    X(zip)                 \
    X(all)                 \
    X(AssertionError)      \
    X(sum)

namespace builtins {
#define PYTHON_DECLARE(name) inline constinit Builtin name{#name};
PYTHON_BUILTINS(PYTHON_DECLARE)
#undef PYTHON_DECLARE
}  // namespace builtins

}  // namespace python

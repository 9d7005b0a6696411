#pragma once

#include <Python.h>

#include <cstddef>
#include <span>

#include "python/function.hpp"
#include "python/ref.hpp"

namespace python {

/// What one call brings, in the vectorcall form.
struct CallSite {
    PyObject* const* arguments;
    Py_ssize_t positional_count;
    PyObject* keyword_names;  ///< a tuple, or null
};

/// Binds a call to the function's parameters, one borrowed value each, taking what is missing from `defaults` (a tuple
/// or null). Counts and keywords are checked first, then the exact types in parameter order.
void bind(const Function& function, const CallSite& site, PyObject* defaults, std::span<PyObject*> values);

}  // namespace python

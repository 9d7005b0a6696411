#pragma once

// What every bulk way asks first: is the module's namespace what it was, and the model one that the class made?

#include <Python.h>

#include "python/ref.hpp"

namespace bulk {

/// Keeps what the module's names are bound to; called once, when the module's body has run.
void remember_namespace();

/// Whether every name of the module is still bound to the same object, and GenderModel to its keys.
bool namespace_is_untouched();

/// The model's own providers by country: an exact dict that its property would give; else null. Borrowed.
PyObject* plain_provider_map(PyObject* self);

/// `pd.name`, where pandas itself defines the function; else empty.
bool has_pandas_function(const char* name, const char* module);

}  // namespace bulk

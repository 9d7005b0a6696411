#pragma once

// What every bulk way asks first: is the module's namespace what it was, and the model one that the class made?

#include <Python.h>

#include "python/ref.hpp"

namespace bulk {

/// Keeps what the module's names are bound to; called once, when the module's body has run.
void remember_namespace();

/// Whether every name of the module is still bound to the same object, GenderModel to its keys, and pandas is made of
/// its own code.
bool namespace_is_untouched();

/// The model's own providers by country: an exact dict that its property would give; else empty.
python::Ref plain_provider_map(PyObject* self);

}  // namespace bulk

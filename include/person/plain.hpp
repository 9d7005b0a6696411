#pragma once

// The plain ways of what also comes as whole columns: call by call, which is what the methods mean. From a few rows
// made so, the ways to whole columns learn what pandas makes of them.

#include <Python.h>

#include "python/ref.hpp"

namespace person {

python::Ref plain_values(PyObject* self, PyObject* conditions, PyObject* collections);
python::Ref plain_usernames(PyObject* firstnames, PyObject* lastnames);
python::Ref plain_frame(PyObject* self, PyObject* num_rows, PyObject* gender_conditions, PyObject* country_conditions,
                        PyObject* produce_nans);

}  // namespace person

#pragma once

// The `typing.cast` calls of the source. They change no value; like every module-level name, `cast` and `Dict` are
// looked up when they are used.

#include <Python.h>

#include "python/ref.hpp"

namespace person {

inline PyObject* str_type() { return reinterpret_cast<PyObject*>(&PyUnicode_Type); }
inline PyObject* int_type() { return reinterpret_cast<PyObject*>(&PyLong_Type); }
inline PyObject* float_type() { return reinterpret_cast<PyObject*>(&PyFloat_Type); }

/// `cast(type, value)`
python::Ref cast(PyObject* type, PyObject* value);

/// `cast(Dict[str, value_type], value)`
python::Ref cast_to_dict_of(PyObject* value_type, PyObject* value);

}  // namespace person

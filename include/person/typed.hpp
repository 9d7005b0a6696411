#pragma once

// The `typing.cast` calls of the source. They change no value; like every module-level name, `cast` and `Dict` are
// looked up when they are used.

#include <Python.h>

#include "person/names.hpp"
#include "python/call.hpp"
#include "python/module.hpp"
#include "python/ref.hpp"

namespace person {

inline PyObject* str_type() { return reinterpret_cast<PyObject*>(&PyUnicode_Type); }
inline PyObject* int_type() { return reinterpret_cast<PyObject*>(&PyLong_Type); }
inline PyObject* float_type() { return reinterpret_cast<PyObject*>(&PyFloat_Type); }

/// `cast(type, value)`, with the value made after `cast` was looked up.
template <class Value>
python::Ref cast(PyObject* type, Value value) {
    python::Ref function = python::global(names::cast);
    return python::call(function, {type, value()});
}

/// `cast(Dict[str, value_type], value)`, evaluated from left to right.
template <class ValueType, class Value>
python::Ref cast_to_dict_of(ValueType value_type, Value value) {
    python::Ref function = python::global(names::cast);
    python::Ref dict_type = python::global(names::Dict);
    python::Ref type = python::item(dict_type, python::tuple({str_type(), value_type()}));
    return python::call(function, {type, value()});
}

}  // namespace person

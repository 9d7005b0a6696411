#pragma once

// Whole columns may be made at once only while everything that the single calls would have gone through is what it
// was. A function is recognised by its very code, however many wrappers bear its name; no answer is remembered, so none
// can be out of date.

#include <Python.h>

#include "python/function.hpp"
#include "python/ref.hpp"

namespace bulk {

/// Whether the object is a str of just this ASCII text.
bool text_equals(PyObject* text, const char* ascii);

/// A function as its module defines it.
struct Original {
    const char* module;
    const char* qualname;
};

/// Whether the object is that very Python function.
bool is_original(PyObject* function, const Original& original);

/// Whether the module, named `re`, substitutes as the standard library's does.
bool substitutes_plainly(PyObject* re);

/// Whether `object.name` is that method of a base class, not covered by another.
bool has_base_method(PyObject* object, const char* name, const Original& original);

/// The method's object, where the attribute is that very function bound to an object; else null. Borrowed from
/// `method`.
PyObject* bound_to(PyObject* method, const Original& original);

/// Whether the object is the function of this row.
bool is_ours(PyObject* function, const python::Entry& entry);

/// Whether reading the object's attributes runs no code of its own class.
bool reads_plainly(PyObject* object);

/// Whether `object.name` is this row's function, bound to the object unless the row is a static method.
bool has_our_method(PyObject* object, PyObject* name, const python::Entry& entry);

/// Whether the property of that name on the object's class is the one whose getter is this row.
bool has_our_property(PyObject* object, PyObject* name, const python::Entry& entry);

/// `object.name`, or empty (and no error) where it cannot be read. An interrupt or want of memory is no reason for
/// that.
python::Ref quiet_attr(PyObject* object, const char* name);
python::Ref quiet_attr(PyObject* object, PyObject* name);

/// `function()`, or empty likewise.
python::Ref quiet_call(PyObject* function);

/// `object.name` where it is a value that stands in the object or its class, and no descriptor makes it; else empty.
python::Ref plain_value(PyObject* object, PyObject* name);

/// The module of that name, or empty (and no error) where there is none.
python::Ref quiet_import(const char* name);

}  // namespace bulk

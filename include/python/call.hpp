#pragma once

// The object protocol as expressions: each function is one operation of the language, and throws PythonError where
// the operation would raise.

#include <Python.h>

#include <initializer_list>
#include <string_view>
#include <utility>

#include "python/error.hpp"
#include "python/ref.hpp"

namespace python {

struct Keyword {
    PyObject* name;
    PyObject* value;
};

using Positionals = std::initializer_list<PyObject*>;
using Keywords = std::initializer_list<Keyword>;

/// The interned text: a type finds an attribute by it at once, and by any other text only along all its bases.
inline Ref identifier(const char* name) { return owned(PyUnicode_InternFromString(name)); }

Ref call(PyObject* callable, Positionals positionals = {}, Keywords keywords = {});

/// Calls `object.name(...)`.
Ref call_method(PyObject* object, PyObject* name, Positionals positionals = {}, Keywords keywords = {});

inline Ref attr(PyObject* object, PyObject* name) { return owned(PyObject_GetAttr(object, name)); }
inline Ref attr(PyObject* object, const char* name) { return attr(object, identifier(name)); }

/// Reads a chain of attributes: `attr(o, a, b)` is `o.a.b`.
template <class... Names>
Ref attr(PyObject* object, PyObject* name, PyObject* next, const Names&... rest) {
    return attr(attr(object, name), next, rest...);
}

/// The attribute; empty where reading it raises AttributeError.
Ref optional_attr(PyObject* object, PyObject* name);

inline void set_attr(PyObject* object, PyObject* name, PyObject* value) {
    require(PyObject_SetAttr(object, name, value));
}

inline Ref item(PyObject* object, PyObject* key) { return owned(PyObject_GetItem(object, key)); }

/// Holds the object as the interpreter's stack does: pandas tells by the number of its owners whether a frame is a mere
/// intermediate, and warns of assigning to one.
inline void set_item(PyObject* object, PyObject* key, PyObject* value) {
    Ref held = Ref::share(object);
    require(PyObject_SetItem(held, key, value));
}

/// The value of a key in a plain dict, borrowed from it; null where there is none.
inline PyObject* find(PyObject* dict, PyObject* key) {
    PyObject* found = PyDict_GetItemWithError(dict, key);
    if (found == nullptr && PyErr_Occurred() != nullptr) throw PythonError{};
    return found;
}

inline bool truth(PyObject* object) { return require(PyObject_IsTrue(object)) != 0; }

inline bool equal(PyObject* left, PyObject* right) { return truth(owned(PyObject_RichCompare(left, right, Py_EQ))); }

inline bool contains(PyObject* container, PyObject* value) {
    return require(PySequence_Contains(container, value)) != 0;
}

inline Py_ssize_t length(PyObject* object) { return require(PyObject_Size(object)); }

inline bool is_instance(PyObject* object, PyObject* type) { return require(PyObject_IsInstance(object, type)) != 0; }

/// `left + right`
inline Ref add(PyObject* left, PyObject* right) { return owned(PyNumber_Add(left, right)); }

inline Ref none() { return Ref::share(Py_None); }
inline Ref boolean(bool value) { return Ref::share(value ? Py_True : Py_False); }
inline Ref string(const char* text) { return owned(PyUnicode_FromString(text)); }
inline Ref string(std::string_view utf8) {
    return owned(PyUnicode_DecodeUTF8(utf8.data(), static_cast<Py_ssize_t>(utf8.size()), nullptr));
}
inline Ref integer(Py_ssize_t value) { return owned(PyLong_FromSsize_t(value)); }
inline Ref list_of(PyObject* iterable) { return owned(PySequence_List(iterable)); }

/// `find` for a key that is given as text. (PyDict_GetItemString takes want of memory for a key that is not there.)
inline PyObject* find(PyObject* dict, const char* key) { return find(dict, string(key)); }

Ref list(Positionals elements = {});
Ref tuple(Positionals elements);
Ref dict(Keywords entries = {});

inline void append(const Ref& list, PyObject* value) { require(PyList_Append(list, value)); }

/// Unpacks an iterable into exactly two values, as `first, second = pair` does.
std::pair<Ref, Ref> unpack_pair(PyObject* pair);

/// Looks a special method up on the object's type, as the interpreter does, and binds it; empty when there is none.
Ref special_method(PyObject* object, PyObject* name);

}  // namespace python

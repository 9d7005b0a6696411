#include "python/call.hpp"

#include <array>
#include <cstddef>

namespace python {

namespace {

constexpr std::size_t kMaxValues = 8;

/// Positional values, then keyword values, as the vectorcall protocol wants them. The slot before them is the
/// callee's to use.
struct Stack {
    Stack(Positionals positionals, Keywords keywords) : positional_count(positionals.size()) {
        if (positionals.size() + keywords.size() > kMaxValues) raise(PyExc_SystemError, "too many values in one call");
        PyObject** next = values();
        for (PyObject* value : positionals) *next++ = value;
        if (keywords.size() == 0) return;
        names = owned(PyTuple_New(static_cast<Py_ssize_t>(keywords.size())));
        Py_ssize_t index = 0;
        for (const Keyword& keyword : keywords) {
            *next++ = keyword.value;
            PyTuple_SET_ITEM(names.get(), index++, Py_NewRef(keyword.name));
        }
    }

    PyObject** values() { return slots.data() + 1; }

    std::size_t positional_count;
    std::array<PyObject*, kMaxValues + 1> slots{};
    Ref names;
};

}  // namespace

Ref call(PyObject* callable, Positionals positionals, Keywords keywords) {
    Stack stack(positionals, keywords);
    return owned(PyObject_Vectorcall(callable, stack.values(), stack.positional_count | PY_VECTORCALL_ARGUMENTS_OFFSET,
                                     stack.names));
}

Ref call_method(PyObject* object, PyObject* name, Positionals positionals, Keywords keywords) {
    return call(attr(object, name), positionals, keywords);
}

Ref optional_attr(PyObject* object, PyObject* name) {
    PyObject* value = PyObject_GetAttr(object, name);
    if (value == nullptr) {
        if (PyErr_ExceptionMatches(PyExc_AttributeError) == 0) throw PythonError{};
        PyErr_Clear();
    }
    return Ref::steal(value);
}

Ref list(Positionals elements) {
    Ref made = owned(PyList_New(static_cast<Py_ssize_t>(elements.size())));
    Py_ssize_t index = 0;
    for (PyObject* element : elements) PyList_SET_ITEM(made.get(), index++, Py_NewRef(element));
    return made;
}

Ref tuple(Positionals elements) {
    Ref made = owned(PyTuple_New(static_cast<Py_ssize_t>(elements.size())));
    Py_ssize_t index = 0;
    for (PyObject* element : elements) PyTuple_SET_ITEM(made.get(), index++, Py_NewRef(element));
    return made;
}

Ref dict(Keywords entries) {
    Ref made = owned(PyDict_New());
    for (const Keyword& entry : entries) require(PyDict_SetItem(made, entry.name, entry.value));
    return made;
}

std::pair<Ref, Ref> unpack_pair(PyObject* pair) {
    Ref iterator = owned(PyObject_GetIter(pair));
    std::array<Ref, 3> values;
    Py_ssize_t count = 0;
    for (Ref& value : values) {
        value = Ref::steal(PyIter_Next(iterator));
        if (!value) break;
        ++count;
    }
    if (PyErr_Occurred() != nullptr) throw PythonError{};
    if (count < 2) raise(PyExc_ValueError, "not enough values to unpack (expected 2, got %zd)", count);
    if (count > 2) raise(PyExc_ValueError, "too many values to unpack (expected 2)");
    return {std::move(values[0]), std::move(values[1])};
}

Ref special_method(PyObject* object, PyObject* name) {
    PyObject* lineage = Py_TYPE(object)->tp_mro;
    for (Py_ssize_t i = 0; i < PyTuple_GET_SIZE(lineage); ++i) {
        auto* type = reinterpret_cast<PyTypeObject*>(PyTuple_GET_ITEM(lineage, i));
        Ref names = owned(PyType_GetDict(type));
        PyObject* found = find(names, name);
        if (found == nullptr) continue;
        Ref method = Ref::share(found);
        descrgetfunc bind = Py_TYPE(found)->tp_descr_get;
        if (bind == nullptr) return method;
        return owned(bind(method, object, reinterpret_cast<PyObject*>(Py_TYPE(object))));
    }
    return {};
}

}  // namespace python

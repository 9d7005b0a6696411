#include "bulk/originals.hpp"

#include <string_view>

#include "python/call.hpp"

namespace bulk {

using namespace python;

namespace {

/// The result, or empty where it could not be had for a reason that a single call may well meet, too.
Ref quietly(PyObject* result) {
    if (result != nullptr) return Ref::steal(result);
    if (PyErr_ExceptionMatches(PyExc_Exception) == 0 || PyErr_ExceptionMatches(PyExc_MemoryError) != 0)
        throw PythonError{};
    PyErr_Clear();
    return {};
}

PyObject* module_name(PyObject* function) { return find(PyFunction_GetGlobals(function), "__name__"); }

/// The code comes from the file of the module whose globals the function uses.
bool comes_from_its_module(PyObject* function, PyObject* code) {
    PyObject* file = find(PyFunction_GetGlobals(function), "__file__");
    Ref code_file = quiet_attr(code, "co_filename");
    return file != nullptr && code_file && PyUnicode_Check(file) && PyUnicode_Compare(file, code_file) == 0;
}

}  // namespace

bool text_equals(PyObject* text, const char* ascii) {
    return text != nullptr && PyUnicode_Check(text) && PyUnicode_CompareWithASCIIString(text, ascii) == 0;
}

Ref quiet_attr(PyObject* object, PyObject* name) { return quietly(PyObject_GetAttr(object, name)); }

Ref quiet_call(PyObject* function) { return quietly(PyObject_CallNoArgs(function)); }

Ref quiet_attr(PyObject* object, const char* name) { return quiet_attr(object, identifier(name)); }

Ref plain_value(PyObject* object, PyObject* name) {
    Ref value = quiet_attr(object, name);
    if (!value) return {};
    Ref own = quiet_attr(object, "__dict__");
    PyObject* lineage = Py_TYPE(object)->tp_mro;
    for (Py_ssize_t i = -1; i < PyTuple_GET_SIZE(lineage); ++i) {
        Ref names = i < 0 ? std::move(own)  // NOLINT(bugprone-use-after-move): i is below 0 but once
                          : owned(PyType_GetDict(reinterpret_cast<PyTypeObject*>(PyTuple_GET_ITEM(lineage, i))));
        PyObject* found = names && PyDict_CheckExact(names.get()) ? find(names, name) : nullptr;
        if (found != nullptr)
            return found == value.get() && Py_TYPE(found)->tp_descr_get == nullptr ? std::move(value) : Ref();
    }
    return {};
}

Ref quiet_import(const char* name) { return quietly(PyImport_ImportModule(name)); }

bool is_original(PyObject* function, const Original& original) {
    if (function == nullptr || !PyFunction_Check(function)) return false;
    PyObject* code = PyFunction_GetCode(function);
    return text_equals(quiet_attr(code, "co_qualname"), original.qualname) &&
           text_equals(module_name(function), original.module) && comes_from_its_module(function, code);
}

bool substitutes_plainly(PyObject* re) { return is_original(quiet_attr(re, "sub"), {"re", "sub"}); }

PyObject* bound_to(PyObject* method, const Original& original) {
    if (method == nullptr || !PyMethod_Check(method)) return nullptr;
    return is_original(PyMethod_GET_FUNCTION(method), original) ? PyMethod_GET_SELF(method) : nullptr;
}

bool is_ours(PyObject* function, const Entry& entry) {
    return function != nullptr && PyFunction_Check(function) && PyVectorcall_Function(function) == entry.vectorcall;
}

bool has_base_method(PyObject* object, const char* name, const Original& original) {
    return bound_to(quiet_attr(object, name), original) == object;
}

bool reads_plainly(PyObject* object) { return Py_TYPE(object)->tp_getattro == PyObject_GenericGetAttr; }

bool has_our_method(PyObject* object, PyObject* name, const Entry& entry) {
    if (!reads_plainly(object)) return false;
    Ref method = quiet_attr(object, name);
    if (entry.function.kind == Kind::static_method) return is_ours(method, entry);
    return method && PyMethod_Check(method.get()) && PyMethod_GET_SELF(method.get()) == object &&
           is_ours(PyMethod_GET_FUNCTION(method.get()), entry);
}

bool has_our_property(PyObject* object, PyObject* name, const Entry& entry) {
    if (!reads_plainly(object)) return false;
    Ref property = quiet_attr(reinterpret_cast<PyObject*>(Py_TYPE(object)), name);
    return property && Py_IS_TYPE(property, &PyProperty_Type) && is_ours(quiet_attr(property, "fget"), entry);
}

}  // namespace bulk

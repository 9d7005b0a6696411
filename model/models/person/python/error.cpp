#include "python/error.hpp"

#include <cstdarg>
#include <exception>
#include <new>
#include <utility>

namespace python {

void raise(PyObject* exception) {
    if (PyExceptionClass_Check(exception)) {
        PyErr_SetNone(exception);
    } else if (PyExceptionInstance_Check(exception)) {
        PyErr_SetObject(PyExceptionInstance_Class(exception), exception);
    } else {
        PyErr_SetString(PyExc_TypeError, "exceptions must derive from BaseException");
    }
    throw PythonError{};
}

// NOLINTNEXTLINE(modernize-avoid-variadic-functions): takes what PyErr_FormatV takes
void raise(PyObject* type, const char* format, ...) {
    std::va_list values;
    va_start(values, format);
    PyErr_FormatV(type, format, values);
    va_end(values);
    throw PythonError{};
}

Ref type_name(PyObject* object) { return owned(PyType_GetName(Py_TYPE(object))); }

void expect_exact(PyObject* object, PyTypeObject* type, const char* name) {
    if (object == Py_None || Py_IS_TYPE(object, type)) return;
    raise(PyExc_TypeError, "Expected %s, got %.200U", name, type_name(object).get());
}

bool RaisedException::is_caught_by(PyObject* type) const {
    if (!PyTuple_Check(type) && !PyExceptionClass_Check(type)) {
        raise(PyExc_TypeError, "catching classes that do not inherit from BaseException is not allowed");
    }
    return matches(type);
}

// PyErr_GetHandledException also finds what a caller is handling. Whose it is shows when the running generator's own is
// taken away: then only that loses an owner.
Ref Handling::take_handled() {
    Ref found = Ref::steal(PyErr_GetHandledException());
    const Py_ssize_t owners = found ? Py_REFCNT(found.get()) : 0;
    PyErr_SetHandledException(nullptr);
    return found && Py_REFCNT(found.get()) < owners ? std::move(found) : Ref();
}

void set_indicator_from_current_exception() noexcept {
    try {
        throw;
    } catch (const PythonError&) {  // NOLINT(bugprone-empty-catch): the indicator is set already
    } catch (const std::bad_alloc&) {
        PyErr_NoMemory();
    } catch (const std::exception& error) {
        PyErr_SetString(PyExc_SystemError, error.what());
    } catch (...) {
        PyErr_SetString(PyExc_SystemError, "unknown C++ exception");
    }
}

}  // namespace python

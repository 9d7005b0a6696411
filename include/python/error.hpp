#pragma once

#include <Python.h>

#include "python/ref.hpp"

namespace python {

/// The interpreter's error indicator is set; that indicator is all there is to know.
struct PythonError {};

/// A PythonError whose traceback already shows the function that it is passing through.
struct TracedError : PythonError {};

/// Owns the result of a C call that returns a new reference, or null with the indicator set.
inline Ref owned(PyObject* result) {
    if (result == nullptr) throw PythonError{};
    return Ref::steal(result);
}

/// Checks the result of a C call that returns a negative number with the indicator set.
template <class Number>
Number require(Number result) {
    if (result < 0) throw PythonError{};
    return result;
}

/// Raises as `raise exception` does: a class is called without arguments, an instance is raised as it is.
[[noreturn]] void raise(PyObject* exception);

/// Raises a new `type(message)`, the message formatted as PyUnicode_FromFormat does.
[[noreturn]] void raise(PyObject* type, const char* format, ...);

/// The `__name__` of the object's type.
Ref type_name(PyObject* object);

/// Raises TypeError unless the object is None or exactly of the type; `name` is what the message calls the type.
void expect_exact(PyObject* object, PyTypeObject* type, const char* name);

/// Turns the C++ exception being handled into the interpreter's error indicator.
void set_indicator_from_current_exception() noexcept;

/// The exception just raised, taken out of the error indicator so that Python code can run meanwhile.
class RaisedException {
  public:
    RaisedException() : exception_(Ref::steal(PyErr_GetRaisedException())) {}

    [[nodiscard]] bool matches(PyObject* type) const { return PyErr_GivenExceptionMatches(exception_, type) != 0; }
    /// The same as an except clause does it: raises TypeError for what is no exception class.
    [[nodiscard]] bool is_caught_by(PyObject* type) const;
    [[nodiscard]] PyObject* get() const { return exception_; }

    /// Puts the exception back and goes on unwinding.
    template <class Error = PythonError>
    [[noreturn]] void raise_again() {
        PyErr_SetRaisedException(exception_.release());
        throw Error{};
    }

  private:
    Ref exception_;
};

/// While it lives, the exception is the one being handled (`sys.exception()`), as inside an except block. What is put
/// back is what the running generator itself was handling, which may be nothing inside its caller's except block.
class Handling {
  public:
    explicit Handling(PyObject* exception) : before_(take_handled()) { PyErr_SetHandledException(exception); }
    Handling(const Handling&) = delete;
    Handling& operator=(const Handling&) = delete;
    ~Handling() { PyErr_SetHandledException(before_); }

  private:
    static Ref take_handled();

    Ref before_;
};

}  // namespace python

#pragma once

#include <Python.h>

#include "python/call.hpp"
#include "python/error.hpp"
#include "python/ref.hpp"

namespace python {

/// The iterator behind a generator expression `(element(x) for x in iterable)`: nothing runs before it is asked.
inline Ref lazy_map(PyObject* element, PyObject* iterable) {
    return call(reinterpret_cast<PyObject*>(&PyMap_Type), {element, iterable});
}

/// Goes on unwinding out of such an element. As in a generator, a StopIteration must not look like the end.
[[noreturn]] void raise_from_generator();

/// The body of such an element.
template <class Element>
Ref generated(Element element) {
    try {
        return element();
    } catch (const PythonError&) {
        raise_from_generator();
    }
}

}  // namespace python

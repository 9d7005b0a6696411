#include "python/module.hpp"

#include "python/error.hpp"

namespace python {

Ref global(PyObject* name) {
    for (PyObject* names : {module().globals, module().builtins}) {
        if (PyObject* found = PyDict_GetItemWithError(names, name)) return Ref::share(found);
        if (PyErr_Occurred() != nullptr) throw PythonError{};
    }
    raise(PyExc_NameError, "name '%U' is not defined", name);
}

}  // namespace python

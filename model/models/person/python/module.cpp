#include "python/module.hpp"

#include "python/call.hpp"
#include "python/error.hpp"

namespace python {

Ref global(PyObject* name) {
    for (PyObject* names : {module().globals, module().builtins}) {
        if (PyObject* found = find(names, name)) return Ref::share(found);
    }
    raise(PyExc_NameError, "name '%U' is not defined", name);
}

}  // namespace python

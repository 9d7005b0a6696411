#include "python/module.hpp"

#include <utility>

#include "python/call.hpp"
#include "python/error.hpp"

namespace python {

namespace {

thread_local PyObject* overlaid = nullptr;

}  // namespace

Ref global(PyObject* name) {
    for (PyObject* names : {overlaid, module().globals, module().builtins}) {
        PyObject* found = names == nullptr ? nullptr : find(names, name);
        if (found != nullptr) return Ref::share(found);
    }
    raise(PyExc_NameError, "name '%U' is not defined", name);
}

Overlay::Overlay(PyObject* names) : before_(std::exchange(overlaid, names)) {}

Overlay::~Overlay() { overlaid = before_; }

}  // namespace python

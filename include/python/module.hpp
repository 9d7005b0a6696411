#pragma once

#include <Python.h>

#include "python/ref.hpp"

namespace python {

/// What the layer has to know of the one module that it serves in this process.
struct Module {
    const char* name;    ///< the dotted name
    const char* file;    ///< the source path that tracebacks show
    PyObject* globals;   ///< the module's dict; owned
    PyObject* builtins;  ///< the dict behind `__builtins__`; owned
};

/// The served module; its last two fields are set while the module is executed.
Module& module();

/// Looks a name up in the module's namespace, then among the builtins, anew each time.
Ref global(PyObject* name);

/// While it lives, names of the module mean something else to this thread, as a dict of them says; none do by null.
class Overlay {
  public:
    explicit Overlay(PyObject* names);
    Overlay(const Overlay&) = delete;
    Overlay& operator=(const Overlay&) = delete;
    ~Overlay();

  private:
    PyObject* before_;
};

}  // namespace python

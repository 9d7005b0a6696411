#include "python/traceback.hpp"

#include <Python.h>
#include <frameobject.h>

#include <string>

#include "python/module.hpp"
#include "python/ref.hpp"

namespace python {

void add_traceback_entry(const char* shown, int line) noexcept {
    // The exception is put aside while the frame is made: making one runs code that must not see the indicator set.
    PyObject* exception = PyErr_GetRaisedException();
    Ref code = Ref::steal(reinterpret_cast<PyObject*>(PyCode_NewEmpty(module().file, shown, line)));
    Ref frame;
    if (code) {
        frame = Ref::steal(reinterpret_cast<PyObject*>(
            PyFrame_New(PyThreadState_Get(), reinterpret_cast<PyCodeObject*>(code.get()), module().globals, nullptr)));
    }
    PyErr_SetRaisedException(
        exception);  // also drops what making the frame may have raised: the entry is then left out
    if (frame) PyTraceBack_Here(reinterpret_cast<PyFrameObject*>(frame.get()));
}

void add_traceback(const char* name, int line) noexcept {
    try {
        add_traceback_entry((std::string(module().name) + "." + name).c_str(), line);
    } catch (...) {  // NOLINT(bugprone-empty-catch): without memory for the text, there is no entry
    }
}

}  // namespace python

#include "python/context.hpp"

#include "python/traceback.hpp"

namespace python {

namespace {

Ref protocol_method(PyObject* manager, const char* name, const char* missed) {
    if (Ref method = special_method(manager, string(name))) return method;
    raise(PyExc_TypeError, "'%.200U' object does not support the context manager protocol%s", type_name(manager).get(),
          missed);
}

}  // namespace

Context::Context(PyObject* manager) {
    Ref enter = protocol_method(manager, "__enter__", "");
    exit_ = protocol_method(manager, "__exit__", " (missed __exit__ method)");
    call(enter);
}

void Context::leave() { call(exit_, {Py_None, Py_None, Py_None}); }

void Context::leave_with_error(const Function& function) {
    add_traceback(function.qualname, function.line);
    RaisedException raised;
    PyObject* exception = raised.get();
    Ref traceback = Ref::steal(PyException_GetTraceback(exception));
    bool swallowed = false;
    {
        const Handling handling(exception);
        Ref type = Ref::share(reinterpret_cast<PyObject*>(Py_TYPE(exception)));
        swallowed = truth(call(exit_, {type, exception, traceback ? traceback.get() : Py_None}));
    }
    if (!swallowed) raised.raise_again<TracedError>();
}

}  // namespace python

#include "python/function.hpp"

#include <cstring>
#include <unordered_map>

#include "python/arguments.hpp"
#include "python/builtins.hpp"
#include "python/call.hpp"
#include "python/error.hpp"
#include "python/module.hpp"
#include "python/traceback.hpp"

namespace python {

namespace {

/// Guards against recursion that never passes through the interpreter's own loop.
class RecursionGuard {
  public:
    RecursionGuard() {
        if (Py_EnterRecursiveCall(" while calling a Python object") != 0) throw PythonError{};
    }
    RecursionGuard(const RecursionGuard&) = delete;
    RecursionGuard& operator=(const RecursionGuard&) = delete;
    ~RecursionGuard() { Py_LeaveRecursiveCall(); }
};

/// Code that is there to be looked at: run by itself, in a function that somebody else makes of it, it raises.
Ref empty_code(const Function& function) {
    return owned(reinterpret_cast<PyObject*>(PyCode_NewEmpty(module().file, function.name(), function.line)));
}

/// The parameters, then the locals.
Ref variable_names(const Function& function) {
    Ref names = list();
    for (const Parameter& parameter : function.parameters) append(names, parameter.name);
    for (const char* local : function.locals) append(names, string(local));
    return owned(PyList_AsTuple(names));
}

Ref make_code(const Function& function) {
    Ref changes = owned(PyDict_New());
    const auto change = [&changes](const char* field, const Ref& value) {
        require(PyDict_SetItemString(changes, field, value));
    };
    Ref names = variable_names(function);
    // A specialising interpreter runs the code of a simple function without asking for its vectorcall; one that is not
    // marked as optimised is not simple.
    change("co_flags", integer(CO_NEWLOCALS));
    change("co_qualname", string(function.qualname));
    change("co_argcount", integer(static_cast<Py_ssize_t>(function.parameters.size())));
    change("co_nlocals", integer(PyTuple_GET_SIZE(names.get())));
    change("co_varnames", names);
    change("co_freevars",
           function.free_variable == nullptr ? tuple({}) : tuple({string(function.free_variable).get()}));
    return owned(PyObject_VectorcallDict(attr(empty_code(function), "replace"), nullptr, 0, changes));
}

/// The function's code, made once: lambdas and generator expressions are made anew on each call.
Ref code_of(const Function& function) {
    static auto* const made = new std::unordered_map<const Function*, PyObject*>;
    PyObject*& code = (*made)[&function];
    if (code == nullptr) code = make_code(function).release();
    return Ref::share(code);
}

Ref make_annotations(const Function& function) {
    Ref annotations = owned(PyDict_New());
    for (const Parameter& parameter : function.parameters) {
        if (parameter.annotation == nullptr) continue;
        require(PyDict_SetItem(annotations, parameter.name, string(parameter.annotation)));
    }
    if (function.returns != nullptr) {
        require(PyDict_SetItemString(annotations, "return", string(function.returns)));
    }
    return annotations;
}

Ref make_defaults(const Function& function) {
    Ref defaults = list();
    for (const Parameter& parameter : function.parameters) {
        if (parameter.default_ != nullptr) append(defaults, parameter.default_());
    }
    return owned(PyList_AsTuple(defaults));
}

Ref run(const Function& function, PyObject* object, std::span<PyObject* const> values) {
    Ref result = function.body(Arguments(function, object, values));
    if (function.result.exact != nullptr) expect_exact(result, function.result.exact, function.result.name);
    return result;
}

}  // namespace

const char* Function::name() const {
    const char* dot = std::strrchr(qualname, '.');
    return dot == nullptr ? qualname : dot + 1;
}

Ref Arguments::free_variable() const {
    PyObject* content = PyCell_GET(PyTuple_GET_ITEM(PyFunction_GET_CLOSURE(object_), 0));
    if (content == nullptr) {
        raise(PyExc_NameError,
              "cannot access free variable '%s' where it is not associated with a value in enclosing scope",
              function_.free_variable);
    }
    return Ref::share(content);
}

Ref Arguments::parent(PyObject* self) const { return call(builtins::super, {free_variable(), self}); }

PyObject* enter(const Function& function, PyObject* object, PyObject* const* arguments, std::size_t flagged_count,
                PyObject* keyword_names) noexcept {
    std::array<PyObject*, kMaxParameters> slots{};
    const std::span<PyObject*> values(slots.data(), function.parameters.size());
    Ref defaults;  // kept for the whole call: the values bound from it are borrowed
    try {
        defaults = Ref::share(PyFunction_GET_DEFAULTS(object));
        bind(function, {arguments, PyVectorcall_NARGS(flagged_count), keyword_names}, defaults, values);
    } catch (...) {
        set_indicator_from_current_exception();
        return nullptr;
    }
    try {
        const RecursionGuard guard;
        return run(function, object, values).release();
    } catch (const TracedError&) {
        return nullptr;
    } catch (...) {
        set_indicator_from_current_exception();
        add_traceback(function.qualname, function.line);
        return nullptr;
    }
}

Ref make_function(const Entry& entry, PyObject* cell) {
    const Function& function = entry.function;
    if (function.parameters.size() > kMaxParameters)
        raise(PyExc_SystemError, "too many parameters: %s", function.qualname);
    Ref made = owned(PyFunction_NewWithQualName(code_of(function), module().globals, string(function.qualname)));
    Ref doc = function.doc == nullptr ? none() : string(function.doc);
    require(PyObject_SetAttrString(made, "__doc__", doc));
    require(PyFunction_SetAnnotations(made, make_annotations(function)));
    Ref defaults = make_defaults(function);
    if (PyTuple_GET_SIZE(defaults.get()) > 0) require(PyFunction_SetDefaults(made, defaults));
    if (cell != nullptr) require(PyFunction_SetClosure(made, tuple({cell})));
    PyFunction_SetVectorcall(reinterpret_cast<PyFunctionObject*>(made.get()), entry.vectorcall);
    return made;
}

}  // namespace python

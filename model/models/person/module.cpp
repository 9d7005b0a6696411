// The module itself: its definition, the guards of its creation and execution, and the statements of its body.

#include "python/module.hpp"

#include <Python.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <span>

#include "bulk/surroundings.hpp"
#include "person/names.hpp"
#include "person/state.hpp"
#include "person/typed.hpp"
#include "person/units.hpp"
#include "python/call.hpp"
#include "python/traceback.hpp"

namespace python {

Module& module() {
    static constinit Module served{
        .name = "vantrel.model.models.person",
        .file = R"(vantrel\model\models\person)",
        .globals = nullptr,
        .builtins = nullptr,
    };
    return served;
}

}  // namespace python

namespace person {

namespace {

using namespace python;

// --- the statements of the body
// ---------------------------------------------------------------------------------------

/// `import module as alias`, or `from module import names` with as many leading dots as the level says.
struct Import {
    int line = 0;
    const char* module = nullptr;
    const char* alias = nullptr;
    std::array<const char*, 7> names = {};
    int level = 0;
};

constexpr Import kImports[] = {
    {.line = 1, .module = "random", .alias = "random"},
    {.line = 2, .module = "re", .alias = "re"},
    {.line = 3, .module = "string", .alias = "string"},
    {.line = 4, .module = "dataclasses", .names = {"asdict"}},
    {.line = 5, .module = "typing", .names = {"Any", "Dict", "List", "Optional", "Sequence", "Union", "cast"}},
    {.line = 7, .module = "numpy", .alias = "np"},
    {.line = 8, .module = "pandas", .alias = "pd"},
    {.line = 9, .module = "faker", .names = {"Faker"}},
    {.line = 10, .module = "pandas._libs.missing", .names = {"NAType"}},
    {.line = 12, .module = "vantrel.metadata.rules.association", .names = {"Association"}},
    {.line = 14, .module = "config", .names = {"PersonLabels", "PersonModelConfig"}, .level = 3},
    {.line = 15, .module = "metadata", .names = {"MetaNotExtractedError", "Nominal"}, .level = 3},
    {.line = 16, .module = "metadata.value", .names = {"Person", "String"}, .level = 3},
    {.line = 17,
     .module = "util.locale.locale",
     .names = {"Provider", "get_country_to_provder_map", "get_supported_country_codes", "get_supported_country_names",
               "valid_locales"},
     .level = 3},
    {.line = 24, .module = "util.person", .names = {"collections_from_mapping"}, .level = 3},
    {.line = 25, .module = "base", .names = {"DiscreteModel"}, .level = 2},
    {.line = 26, .module = "exceptions", .names = {"ModelNotFittedError"}, .level = 2},
    {.line = 27, .module = "histogram", .names = {"Histogram"}, .level = 1},
};

/// Whether the module's spec says that its body is still running. What goes wrong while asking is a no.
bool is_initializing(PyObject* from) {
    Ref spec = Ref::steal(PyObject_GetAttrString(from, "__spec__"));
    Ref flag = Ref::steal(spec ? PyObject_GetAttrString(spec, "_initializing") : nullptr);
    const bool initializing = flag && PyObject_IsTrue(flag) > 0;
    PyErr_Clear();
    return initializing;
}

/// Raises the interpreter's own ImportError; `module_name` is null where the module has no name.
[[noreturn]] void raise_cannot_import(PyObject* from, PyObject* module_name, PyObject* name) {
    Ref path = Ref::steal(PyModule_Check(from) != 0 ? PyModule_GetFilenameObject(from) : nullptr);
    PyErr_Clear();
    const char* format = "cannot import name %R from %R (unknown location)";
    if (path) {
        format = is_initializing(from) ? "cannot import name %R from partially initialized module %R "
                                         "(most likely due to a circular import) (%S)"
                                       : "cannot import name %R from %R (%S)";
    }
    Ref shown = module_name == nullptr ? string("<unknown module name>") : Ref::share(module_name);
    Ref message = Ref::steal(PyUnicode_FromFormat(format, name, shown.get(), path.get()));
    PyErr_SetImportError(message, module_name, path);
    if (!message) throw PythonError{};  // the call before refuses that with a TypeError, as in the interpreter
    RaisedException raised;
    require(PyObject_SetAttrString(raised.get(), "name_from", name));
    raised.raise_again();
}

/// The attribute, or the submodule that is only on its way to becoming one.
Ref imported_name(PyObject* from, PyObject* name) {
    if (Ref value = optional_attr(from, name)) return value;
    Ref module_name = Ref::steal(PyObject_GetAttrString(from, "__name__"));
    if (!module_name || !PyUnicode_Check(module_name.get())) {
        PyErr_Clear();
        raise_cannot_import(from, nullptr, name);
    }
    Ref loaded = Ref::steal(PyImport_GetModule(owned(PyUnicode_FromFormat("%U.%U", module_name.get(), name))));
    if (loaded) return loaded;
    if (PyErr_Occurred() != nullptr) throw PythonError{};
    raise_cannot_import(from, module_name, name);
}

void bind_name(const char* name, PyObject* value) { require(PyDict_SetItemString(module().globals, name, value)); }

Ref import_module(const Import& statement, PyObject* from_names) {
    return owned(PyImport_ImportModuleLevel(statement.module, module().globals, nullptr, from_names, statement.level));
}

void run(const Import& statement) {
    if (statement.alias != nullptr) {
        bind_name(statement.alias, import_module(statement, nullptr));
        return;
    }
    Ref wanted = list();
    for (const char* name : statement.names) {
        if (name != nullptr) append(wanted, string(name));
    }
    Ref from = import_module(statement, wanted);
    for (Py_ssize_t i = 0; i < PyList_GET_SIZE(wanted.get()); ++i) {
        PyObject* name = PyList_GET_ITEM(wanted.get(), i);
        require(PyDict_SetItem(module().globals, name, imported_name(from, name)));
    }
}

/// A host function that is asked for the person provider's countries or locales.
Ref ask_for_person_provider(PyObject* name) {
    Ref function = global(name);
    return call(function, {attr(global(names::Provider), names::PERSON)});
}

Ref country_names_body(Arguments /*arguments*/) { return ask_for_person_provider(names::get_supported_country_names); }
Ref country_codes_body(Arguments /*arguments*/) { return ask_for_person_provider(names::get_supported_country_codes); }
Ref locales_body(Arguments /*arguments*/) { return ask_for_person_provider(names::valid_locales); }

constexpr Function all_supported_country_names{
    .qualname = "all_supported_country_names",
    .line = 760,
    .returns = "Dict[str, List[str]]",
    .doc =
        "Get all supported country names that can be used in the person model.\n\n"
        "    Returns:\n"
        "        A dictionary mapping country names to the locales that they are associated with.\n    ",
    .result = {&PyDict_Type, "dict"},
    .body = country_names_body,
};

constexpr Function all_supported_country_codes{
    .qualname = "all_supported_country_codes",
    .line = 769,
    .returns = "Dict[str, List[str]]",
    .doc =
        "Get all supported country codes that can be used in the person model.\n\n"
        "    Returns:\n"
        "        A dictionary mapping country codes to the locales that they are associated with.\n    ",
    .result = {&PyDict_Type, "dict"},
    .body = country_codes_body,
};

constexpr Function all_supported_locales{
    .qualname = "all_supported_locales",
    .line = 778,
    .returns = "List[str]",
    .doc =
        "Get all supported locales that can be used in the person model.\n\n"
        "    Returns:\n"
        "        A list of supported locales.\n    ",
    .result = {&PyList_Type, "list"},
    .body = locales_body,
};

constexpr Entry kFunctions[] = {
    entry<all_supported_country_names>,
    entry<all_supported_country_codes>,
    entry<all_supported_locales>,
};

Ref subscripted(PyObject* generic, PyObject* argument) { return item(global(generic), argument); }

Ref person_and_str() { return tuple({global(names::Person).get(), str_type()}); }

/// Runs the body. The line is kept up to date for the traceback of a failing statement.
void run_body(int& line) {
    for (const Import& statement : kImports) {
        line = statement.line;
        run(statement);
    }
    line = kGenderModel.line;
    bind_name(kGenderModel.name, make_class(kGenderModel, subscripted(names::Histogram, str_type())));
    line = kPersonModel.line;
    bind_name(kPersonModel.name, make_class(kPersonModel, subscripted(names::DiscreteModel, person_and_str())));
    line = kCountryModel.line;
    bind_name(kCountryModel.name, make_class(kCountryModel, subscripted(names::Histogram, str_type())));
    for (const Entry& entry : kFunctions) {
        line = entry.function.line;
        bind_name(entry.function.name(), make_function(entry));
    }
    line = 1;
    bind_name("__test__", dict());
    bulk::remember_namespace();
}

// --- execution
// ----------------------------------------------------------------------------------------------------------

/// Needs nothing of the state: it comes before all that another version could break.
void check_version() {
    const int major = static_cast<int>(Py_Version >> 24 & 0xff);
    const int minor = static_cast<int>(Py_Version >> 16 & 0xff);
    if (major == PY_MAJOR_VERSION && minor == PY_MINOR_VERSION) return;
    require(PyErr_WarnFormat(PyExc_RuntimeWarning, 1,
                             "compile time Python version %d.%d of module '%.100s' %s runtime version %d.%d",
                             PY_MAJOR_VERSION, PY_MINOR_VERSION, module().name, "does not match", major, minor));
}

void execute(PyObject* created, int& line) {
    Py_XSETREF(module().globals, Py_NewRef(PyModule_GetDict(created)));
    check_version();
    Ref builtins = owned(PyImport_ImportModule("builtins"));
    Py_XSETREF(module().builtins, Py_NewRef(PyModule_GetDict(builtins)));
    fill_state();
    bind_name("__builtins__", builtins);
    run_body(line);
}

int execute_module(PyObject* created) noexcept {
    if (state().module == created) return 0;
    if (state().module != nullptr) {
        PyErr_SetString(PyExc_RuntimeError,
                        "Module 'person' has already been imported. Re-initialisation is not supported.");
        return -1;
    }
    state().module = Py_NewRef(created);
    int line = 1;
    try {
        execute(created, line);
        return 0;
    } catch (...) {
        set_indicator_from_current_exception();
    }
    add_traceback_entry("init vantrel.model.models.person", line);
    Py_CLEAR(state().module);  // the next import may try again
    return -1;
}

// --- creation
// -------------------------------------------------------------------------------------------------------------

constexpr std::int64_t kNoInterpreter = -1;
constexpr std::int64_t kFinalised = -2;

/// The interpreter that the module was first created in. Interpreters with a lock of their own may come at the same
/// time.
std::atomic<std::int64_t> home_interpreter{kNoInterpreter};

/// False in another interpreter than the first, which includes one that is made after the first was finalised.
bool in_home_interpreter() {
    const std::int64_t current = PyInterpreterState_GetID(PyInterpreterState_Get());
    std::int64_t home = kNoInterpreter;
    if (home_interpreter.compare_exchange_strong(home, current)) {
        Py_AtExit([] { home_interpreter = kFinalised; });
        return true;
    }
    return home == current;
}

void copy_from_spec(PyObject* spec, const char* from, PyObject* names, const char* to, bool none_too) {
    Ref value = optional_attr(spec, string(from));
    if (value && (value.get() != Py_None || none_too)) require(PyDict_SetItemString(names, to, value));
}

PyObject* create_module(PyObject* spec, PyModuleDef* /*definition*/) noexcept {
    if (!in_home_interpreter()) {
        PyErr_SetString(
            PyExc_ImportError,
            "Interpreter change detected - this module can only be loaded into one interpreter per process.");
        return nullptr;
    }
    if (state().module != nullptr) {
        // The interpreter gives every module that it is handed a new piece of memory (here of no bytes), without
        // asking whether it has one.
        PyMem_Free(PyModule_GetState(state().module));
        return Py_NewRef(state().module);
    }
    try {
        Ref created = owned(PyModule_NewObject(attr(spec, "name")));
        PyObject* names = PyModule_GetDict(created);
        copy_from_spec(spec, "loader", names, "__loader__", true);
        copy_from_spec(spec, "origin", names, "__file__", true);
        copy_from_spec(spec, "parent", names, "__package__", true);
        copy_from_spec(spec, "submodule_search_locations", names, "__path__", false);
        return created.release();
    } catch (...) {
        set_indicator_from_current_exception();
        return nullptr;
    }
}

// --- definition
// -------------------------------------------------------------------------------------------------------------

PyModuleDef_Slot slots[] = {
    {Py_mod_create, reinterpret_cast<void*>(create_module)},
    {Py_mod_exec, reinterpret_cast<void*>(execute_module)},
    // Every interpreter may ask, so that the refusal is create_module's own.
    {Py_mod_multiple_interpreters, Py_MOD_PER_INTERPRETER_GIL_SUPPORTED},
    {0, nullptr},
};

PyModuleDef definition = {
    .m_base = PyModuleDef_HEAD_INIT,
    .m_name = "person",
    .m_doc = nullptr,
    .m_size = 0,
    .m_methods = nullptr,
    .m_slots = slots,
    .m_traverse = nullptr,
    .m_clear = nullptr,
    .m_free = nullptr,
};

}  // namespace

}  // namespace person

PyMODINIT_FUNC PyInit_person() { return PyModuleDef_Init(&person::definition); }

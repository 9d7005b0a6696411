#include "bulk/known_code.hpp"

#include <algorithm>
#include <array>
#include <unordered_map>

#include "bulk/originals.hpp"
#include "bulk/texts.hpp"
#include "person/state.hpp"
#include "python/call.hpp"
#include "python/error.hpp"

namespace bulk {

using namespace python;

namespace {

/// What the two packages take functions and classes from, beside the standard library.
constexpr std::array<std::string_view, 5> kImported{"numpy", "dateutil", "pytz", "pyarrow", "_cyutility"};

/// Types whose objects lead to no Python code but their own, by the first part of their modules' names.
constexpr std::array<std::string_view, 5> kPlainCallables{"typing", "types", "collections", "dateutil", "numpy"};

/// Functions that refer to each other through their closures have no end.
constexpr int kDeepestWrapping = 8;

std::string_view text_of(PyObject* object) { return utf8(object).value_or(std::string_view()); }

std::string_view top_level(std::string_view module) { return module.substr(0, module.find('.')); }

std::string_view module_of(PyTypeObject* type) {
    Ref names = owned(PyType_GetDict(type));
    PyObject* module = find(names, "__module__");
    if (module != nullptr && PyUnicode_Check(module)) return text_of(module);
    const std::string_view name = type->tp_name;  // of a class that C made
    const std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos ? "builtins" : name.substr(0, dot);
}

bool is_of_standard_library(std::string_view module) {
    PyObject* modules = PySys_GetObject("stdlib_module_names");
    if (module == "builtins" || modules == nullptr) return modules != nullptr;
    Ref name = string(module);
    return contains(modules, name);
}

/// The folder of the module's file, with a separator at its end; empty where there is none.
std::string folder_of(std::string_view module) {
    Ref name = string(module);
    Ref loaded = Ref::steal(PyImport_GetModule(name));
    if (!loaded || !PyModule_Check(loaded.get())) return {};
    PyObject* file = find(PyModule_GetDict(loaded), "__file__");
    const std::string_view path = file == nullptr ? std::string_view() : text_of(file);
    return std::string(path.substr(0, path.find_last_of("/\\") + 1));
}

bool is_below(std::string_view file, std::string_view folder) {
    return !folder.empty() && file.starts_with(folder) &&
           file.substr(folder.size()).find("-packages") == std::string_view::npos;
}

bool is_dunder(std::string_view name) { return name.starts_with("__") && name.ends_with("__"); }

/// Whether the code, or code inside it, bears the name as an identifier or as a text.
bool mentions(PyObject* code, std::string_view name) {
    for (const char* field : {"co_names", "co_consts"}) {
        Ref entries = attr(code, field);
        for (Py_ssize_t i = 0; i < PyTuple_GET_SIZE(entries.get()); ++i) {
            PyObject* entry = PyTuple_GET_ITEM(entries.get(), i);
            if (PyUnicode_Check(entry) ? text_of(entry) == name : PyCode_Check(entry) && mentions(entry, name))
                return true;
        }
    }
    return false;
}

// --- changes
// ----------------------------------------------------------------------------------------------------------------

/// The package of each dict that is watched.
std::unordered_map<PyObject*, Package*>& watched_dicts() {
    static auto* const dicts = new std::unordered_map<PyObject*, Package*>;
    return *dicts;
}

int note_dict_change(PyDict_WatchEvent event, PyObject* dict, PyObject* name, PyObject* value) {
    // A module's own new data, such as what it notes of its warnings, replaces nothing.
    const bool adds_data = event == PyDict_EVENT_ADDED && PyCallable_Check(value) == 0 && !PyModule_Check(value);
    const bool notes_warning = name != nullptr && text_equals(name, "__warningregistry__");
    const auto watched = watched_dicts().find(dict);
    if (!adds_data && !notes_warning && watched != watched_dicts().end()) watched->second->note_change();
    return 0;
}

int note_class_change(PyTypeObject* type) {
    (faker_code().has_class(type) ? faker_code() : pandas_code()).note_change();
    return 0;
}

struct Watchers {
    int dicts = PyDict_AddWatcher(note_dict_change);
    int classes = PyType_AddWatcher(note_class_change);

    Watchers() { PyErr_Clear(); }  // of there being none left
};

const Watchers& watchers() {
    static const Watchers both;
    return both;
}

void watch_dict(PyObject* dict, Package& package) {
    // Where the interpreter has no watcher left to give, every look is a change.
    if (watchers().dicts < 0) return package.note_change();
    watched_dicts()[dict] = &package;
    require(PyDict_Watch(watchers().dicts, dict));
}

void watch_class(PyTypeObject* type, Package& package) {
    if (watchers().classes >= 0) require(PyType_Watch(watchers().classes, reinterpret_cast<PyObject*>(type)));
    // Without a version there is no word of a change.
    if (watchers().classes < 0 || PyUnstable_Type_AssignVersionTag(type) == 0) package.note_change();
}

/// The options that decide what columns look like.
void watch_options_of_pandas() {
    Ref config = quiet_import("pandas._config.config");
    if (!config) return;  // no options, either
    Ref options = quiet_attr(config, "_global_config");
    for (const char* group : {"mode", "future"}) {
        PyObject* found = options && PyDict_CheckExact(options.get()) ? find(options, group) : nullptr;
        if (found != nullptr && PyDict_CheckExact(found)) {
            watch_dict(found, pandas_code());
        } else {
            pandas_code().note_change();  // options that are kept elsewhere cannot be watched
        }
    }
}

}  // namespace

// --- the look
// ---------------------------------------------------------------------------------------------------------------

bool Package::is_genuine() {
    if (looked_at_ != changes_) {
        const std::uint64_t known = changes_;
        genuine_ = look();
        looked_at_ = known;
    }
    return genuine_;
}

bool Package::look() {
    classes_.clear();
    functions_.clear();
    foreign_.clear();
    find_folders();
    Ref modules = list_of(owned(PyDict_Items(PyImport_GetModuleDict())));
    for (Py_ssize_t i = 0; i < PyList_GET_SIZE(modules.get()); ++i) {
        PyObject* entry = PyList_GET_ITEM(modules.get(), i);
        if (is_named_after_package(PyTuple_GET_ITEM(entry, 0))) look_at_module(PyTuple_GET_ITEM(entry, 1));
    }
    if (name_ == "pandas") watch_options_of_pandas();
    return std::ranges::none_of(foreign_, [this](const std::string& name) { return is_called(name); });
}

void Package::find_folders() {
    folders_ = {folder_of(name_), folder_of("os")};
    for (const std::string_view imported : kImported) folders_.push_back(folder_of(imported));
}

void Package::look_at_module(PyObject* module) {
    if (!PyModule_Check(module)) return foreign_.emplace_back("__module__"), void();
    PyObject* names = PyModule_GetDict(module);
    watch_dict(names, *this);
    PyObject* name = nullptr;
    PyObject* value = nullptr;
    Py_ssize_t position = 0;
    while (PyDict_Next(names, &position, &name, &value) != 0) {
        look_at(name, value);
        if (PyType_Check(value) && has_class(reinterpret_cast<PyTypeObject*>(value)))
            look_at_class(reinterpret_cast<PyTypeObject*>(value));
    }
}

void Package::look_at_class(PyTypeObject* type) {
    if (!classes_.insert(type).second || PyType_HasFeature(type, Py_TPFLAGS_IMMUTABLETYPE) != 0) return;
    watch_class(type, *this);
    Ref names = owned(PyType_GetDict(type));
    PyObject* name = nullptr;
    PyObject* value = nullptr;
    Py_ssize_t position = 0;
    while (PyDict_Next(names, &position, &name, &value) != 0) look_at(name, value);
}

void Package::look_at(PyObject* name, PyObject* value) {
    if (!is_known(value)) foreign_.emplace_back(text_of(name));
}

// --- what is known
// ----------------------------------------------------------------------------------------------------------------

bool Package::is_known(PyObject* value) {
    if (PyFunction_Check(value)) {
        const bool is_own = is_known_function(value);
        if (is_own) functions_.push_back(value);
        return is_own;
    }
    if (PyType_Check(value)) {
        auto* type = reinterpret_cast<PyTypeObject*>(value);
        const std::string_view package = top_level(module_of(type));
        return package == name_ || std::ranges::find(kImported, package) != kImported.end() ||
               is_of_standard_library(package);
    }
    const auto leads_to_known = [this, value](const char* attribute) {
        Ref inner = quiet_attr(value, attribute);
        return inner && (inner.get() == Py_None || is_known(inner));
    };
    if (Py_IS_TYPE(value, &PyStaticMethod_Type) || Py_IS_TYPE(value, &PyClassMethod_Type) || PyMethod_Check(value))
        return leads_to_known("__func__");
    if (Py_IS_TYPE(value, &PyProperty_Type))
        return leads_to_known("fget") && leads_to_known("fset") && leads_to_known("fdel");
    if (has_class(Py_TYPE(value)) && std::string_view(Py_TYPE(value)->tp_name).ends_with("Accessor"))
        return leads_to_known("_accessor");
    return PyCallable_Check(value) == 0 || is_known_callable(value);
}

bool Package::is_known_callable(PyObject* value) {
    PyTypeObject* type = Py_TYPE(value);
    const std::string_view package = top_level(module_of(type));
    if (package == "functools") {
        Ref wrapped = quiet_attr(value, "__wrapped__");
        return wrapped && is_known(wrapped);
    }
    return package == "builtins" || package == name_ || package.starts_with("_cython_") ||
           std::ranges::find(kPlainCallables, package) != kPlainCallables.end();
}

bool Package::is_known_function(PyObject* function, int depth) const {
    if (depth > kDeepestWrapping) return true;
    if (!comes_from_known_file(function)) return false;
    // What a wrapper wraps is in its closure.
    PyObject* closure = PyFunction_GetClosure(function);
    for (Py_ssize_t i = 0; closure != nullptr && i < PyTuple_GET_SIZE(closure); ++i) {
        PyObject* inner = PyCell_GET(PyTuple_GET_ITEM(closure, i));
        if (inner != nullptr && PyFunction_Check(inner) && !is_known_function(inner, depth + 1)) return false;
    }
    return true;
}

bool Package::comes_from_known_file(PyObject* function) const {
    Ref code_file = attr(PyFunction_GetCode(function), "co_filename");
    const std::string_view file = text_of(code_file);
    if (file.starts_with("<frozen ")) return true;
    if (file == "<string>") {  // of a named tuple or a data class
        PyObject* module = find(PyFunction_GetGlobals(function), "__name__");
        return module != nullptr && (text_of(module).starts_with("namedtuple_") || is_named_after_package(module));
    }
    return std::ranges::any_of(folders_, [file](const std::string& folder) { return is_below(file, folder); });
}

bool Package::is_named_after_package(PyObject* module_name) const {
    return PyUnicode_Check(module_name) && top_level(text_of(module_name)) == name_;
}

bool Package::defines(PyObject* function) const {
    if (function == nullptr || !PyFunction_Check(function)) return false;
    PyObject* module = find(PyFunction_GetGlobals(function), "__name__");
    return module != nullptr && is_named_after_package(module) && is_known_function(function);
}

bool Package::has_class(PyTypeObject* type) const { return top_level(module_of(type)) == name_; }

/// Special methods are called without being named.
bool Package::is_called(std::string_view name) const {
    return is_dunder(name) || person::uses_name(name) || std::ranges::any_of(functions_, [name](PyObject* function) {
               return mentions(PyFunction_GetCode(function), name);
           });
}

Package& pandas_code() {
    static auto* const package = new Package("pandas");
    return *package;
}

Package& faker_code() {
    static auto* const package = new Package("faker");
    return *package;
}

}  // namespace bulk

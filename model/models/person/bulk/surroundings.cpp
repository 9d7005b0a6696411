#include "bulk/surroundings.hpp"

#include "bulk/known_code.hpp"
#include "bulk/originals.hpp"
#include "person/names.hpp"
#include "person/units.hpp"
#include "python/call.hpp"
#include "python/module.hpp"

namespace bulk {

using namespace python;
namespace names = person::names;

namespace {

/// A copy of the module's dict, kept for the life of the process.
PyObject* remembered = nullptr;

/// Whoever draws from `random` checks the very functions (`module_random`), so that any module that has them will do:
/// a second instance of the standard one has a state of its own.
bool may_stand_for(PyObject* value, PyObject* current, PyObject* name) {
    return current == value ||
           (name == static_cast<PyObject*>(names::random) && current && PyModule_CheckExact(current));
}

bool has_key(PyObject* type, PyObject* name, PyObject* key) {
    Ref value = quiet_attr(type, name);
    return value && PyUnicode_CheckExact(value.get()) && PyUnicode_Compare(value, key) == 0;
}

}  // namespace

void remember_namespace() {
    Ref bindings = owned(PyDict_Copy(module().globals));
    // The import system sets these anew where the module is imported again, and no function reads them.
    for (const char* name : {"__spec__", "__loader__"}) {
        if (find(bindings, name) != nullptr) require(PyDict_DelItemString(bindings, name));
    }
    Py_XSETREF(remembered, bindings.release());
}

bool namespace_is_untouched() {
    PyObject* name = nullptr;
    PyObject* value = nullptr;
    Py_ssize_t position = 0;
    while (PyDict_Next(remembered, &position, &name, &value) != 0) {
        PyObject* current = find(module().globals, name);
        if (!may_stand_for(value, current, name)) return false;
    }
    Ref gender_model = global(names::GenderModel);
    return has_key(gender_model, names::key_female, names::female) &&
           has_key(gender_model, names::key_male, names::male) &&
           has_key(gender_model, names::key_non_binary, names::non_binary) &&
           has_key(gender_model, names::key_ambiguous, names::ambiguous) && pandas_code().is_genuine();
}

Ref plain_provider_map(PyObject* self) {
    if (!has_our_property(self, names::country_to_provider_map, entry<person::person_model::country_to_provider_map>)) {
        return {};
    }
    Ref type_attribute = quiet_attr(reinterpret_cast<PyObject*>(Py_TYPE(self)), names::_country_to_provider_map);
    if (type_attribute) return {};
    Ref map = quiet_attr(self, names::_country_to_provider_map);
    return map && PyDict_CheckExact(map.get()) && PyDict_Size(map) > 0 ? std::move(map) : Ref();
}

}  // namespace bulk

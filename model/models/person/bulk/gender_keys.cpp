// Gender keys for category values, whole columns at once.

#include <string_view>
#include <unordered_map>

#include "bulk/columns.hpp"
#include "bulk/signals.hpp"
#include "bulk/surroundings.hpp"
#include "bulk/texts.hpp"
#include "python/call.hpp"

namespace bulk {

using namespace python;
Ref keys_of_values(PyObject* values, PyObject* collections) {
    if (!namespace_is_untouched() || !PyDict_CheckExact(collections)) return {};
    const auto texts = Texts::read(values);
    if (!texts || texts->any_missing()) return {};
    std::unordered_map<std::string_view, PyObject*> key_of;
    PyObject* key = nullptr;
    PyObject* collection = nullptr;
    Py_ssize_t position = 0;
    while (PyDict_Next(collections, &position, &key, &collection) != 0) {
        if (!PyList_CheckExact(collection)) return {};
        for (Py_ssize_t i = 0; i < PyList_GET_SIZE(collection); ++i) {
            const auto text = utf8(PyList_GET_ITEM(collection, i));
            if (!text) return {};
            key_of.try_emplace(*text, key);  // the first collection that holds a value gives its key
        }
    }
    Ref keys = list();
    for (std::size_t row = 0; row < texts->size(); ++row) {
        let_signals_in(row);
        if (const auto found = key_of.find((*texts)[row]); found != key_of.end()) append(keys, found->second);
    }
    return keys;
}

}  // namespace bulk

#include "person/patterns.hpp"

#include "person/names.hpp"
#include "python/call.hpp"
#include "python/module.hpp"

namespace person {

using namespace python;

Ref pattern_mapping(PyObject* self, std::initializer_list<KeyPattern> pairs) {
    Ref mapping = dict();
    for (const auto& [key, setting] : pairs) {
        Ref gender_key = attr(global(names::GenderModel), key);
        Ref pattern = attr(self, names::config, setting);
        require(PyDict_SetItem(mapping, gender_key, pattern));
    }
    return mapping;
}

}  // namespace person

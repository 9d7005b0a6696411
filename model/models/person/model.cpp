#include "person/model.hpp"

namespace person {

using namespace python;

Ref pattern_mapping(PyObject* self, std::initializer_list<KeyPattern> patterns) {
    Ref mapping = dict();
    for (const auto& [key, setting] : patterns) {
        Ref gender_key = attr(global(names::GenderModel), key);
        Ref pattern = attr(self, names::config, setting);
        require(PyDict_SetItem(mapping, gender_key, pattern));
    }
    return mapping;
}

Ref sorted_categories(PyObject* categories, PyObject* mapping) {
    Ref sort = global(names::collections_from_mapping);
    return call(sort, {},
                {{names::seq, categories},
                 {names::mapping, mapping},
                 {names::ambiguous_key, attr(global(names::GenderModel), names::key_ambiguous)}});
}

Ref call_provider(PyObject* self, PyObject* country, PyObject* method) {
    Ref providers = attr(self, names::country_to_provider_map);
    return call_method(item(providers, country), method);
}

}  // namespace person

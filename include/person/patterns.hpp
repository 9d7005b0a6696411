#pragma once

#include <Python.h>

#include <initializer_list>

#include "python/name.hpp"
#include "python/ref.hpp"

namespace person {

/// A gender key, as the name of the class attribute that holds it, and the setting that holds its pattern.
struct KeyPattern {
    const python::Name& key;
    const python::Name& setting;
};

/// `{GenderModel.key: self.config.setting, ...}` in the given order.
python::Ref pattern_mapping(PyObject* self, std::initializer_list<KeyPattern> pairs);

}  // namespace person
